// The main view: every control of the window, and what each does.
#pragma once

#include "app/ComputerKeyboard.h"
#include "app/FormulaPanel.h"
#include "audio/AudioGraph.h"
#include "documents/Sound.h"
#include "functions/FunctionCompiler.h"
#include "functions/FunctionSwitch.h"
#include "kits/interface/FilePanel.h"
#include "kits/interface/View.h"
#include "kits/media/MediaFormats.h"
#include "kits/storage/ProgramFolder.h"
#include "synth/ParameterTable.h"
#include "synth/SoundParam.h"
#include "synth/Voice.h"

#include <array>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class BButton;
class BMenu;
class BMenuBar;
class BPopUpMenu;
class BTextControl;

namespace vexa {

class EnvView;
class R2RFView;

/// Owns the records that all threads share, the audio graph and the installed function. All that
/// the user does arrives at MessageReceived: from controls by way of the window, from panels, menus
/// and the MIDI roster directly. Window thread, like all views; the records of a voice and of a
/// controller are written by the MIDI and the media thread.
class VexaView : public BView {
  public:
    /// `folders` are where documents and samples are found and saved. Builds the view and starts
    /// the audio graph; failures are shown by alerts and leave the rest working.
    VexaView(BRect frame, const char* name, const kits::ProgramFolders& folders);
    ~VexaView() override;

    void Draw(BRect update) override;
    void Pulse() override;
    /// As AudioGraph::Watch: shows what has become of the sound, and goes on.
    void WatchSound();
    void MessageReceived(BMessage* message) override;

    /// The width, as BRect::Width counts it, that no text needs more of.
    float PreferredWidth() const;

    // Documents. Each reports its failures by alerts, with the reason on standard error, and then
    // changes nothing.

    /// "sounds/default.xml"; what is wrong with it goes to standard error only.
    void LoadDefaultSound();
    bool LoadSound(const std::filesystem::path& path);
    /// Loads a sound, a function or a sample, whichever the file is.
    void Open(const std::filesystem::path& path);
    bool LoadFunction(const std::filesystem::path& path);
    /// Into the folder sounds or functions, under a plain file name.
    void SaveSound(const std::string& name);
    void SaveFunction(const std::string& name);

    /// What the fields, the envelopes and the installed function say at present.
    Function ConstructFunction() const;
    Sound ConstructSound() const;

    // Functions.

    /// Compiles the expression and installs its function; a failure is shown and the function
    /// before stays. The field is disabled meanwhile.
    void Compile(const char* expression);
    /// Winds a sound file onto the plane.
    void LoadSample(const char* path);

    // MIDI.

    /// Lists the sources anew. The one that the user has chosen is connected again when it has come
    /// back.
    void SetupMidiMenu();
    /// Chooses a source by its name, now or whenever it appears; empty for none.
    void ChooseSource(const std::string& name);
    /// The keyboard's keys and the window's focus.
    ComputerKeyboard& Keyboard() { return keyboard; }

    /// A modal stop alert titled "Error" with the button "Ok". Waits for the answer.
    static void ErrorAlert(const char* text);

    // The parts, for the window and for tests.

    R2RFView& Plane() { return *plane; }
    EnvView& EnvelopeEditor(std::size_t index) { return *envelopes[index]; }
    /// The field of that name; null if there is none. "Fxy", "Sc", "LFx", "LFy", "LSx", "LSy",
    /// "SFreq", and those of Parameters().
    BTextControl* Field(std::string_view name) const;
    BMenu& VoicesMenu() { return *voicesMenu; }
    BMenu& ChannelMenu() { return *channelMenu; }
    BMenu& DeviceMenu() { return *deviceMenu; }
    AudioGraph& Graph() { return *graph; }
    const sound_param& SoundParam() const { return soundParam; }
    VoiceTable& Voices() { return voices; }
    const ControllerTable& Controllers() const { return ctlvalue; }
    const FormulaPanel& Formulas() const { return formulas; }
    bool SampleMode() const { return sampleMode; }
    const std::string& SoundAuthor() const { return soundAuthor; }
    const std::string& FunctionAuthor() const { return functionAuthor; }

  private:
    // Layout.
    void AddPlaneControls();
    void AddFileButtons();
    void AddMenus();
    void AddEnvelopes();
    void AddCoefficients(std::string_view group);
    BTextControl* AddField(const char* name, const char* text, uint32 code, BRect frame);
    void StartGraph();
    void ShowSound();

    // Messages.
    bool TakeParameter(uint32 code);
    bool TakePlaneControl(uint32 code);
    bool TakeMenuChoice(uint32 code);
    bool TakePanelCommand(const BMessage& message);
    bool TakeSource(uint32 code);

    // File panels.
    void ShowPanel(file_panel_mode mode, uint32 result, const char* folder, const char* title);
    void RemovePanel(const BMessage& message);
    static std::string ChosenPath(const BMessage& message);
    bool MayReplace(const BMessage& message, const char* folder, const std::string& name);
    void OpenFunction(const std::string& path) { LoadFunction(path); }
    void OpenSound(const std::string& path) { LoadSound(path); }
    void OpenSample(const std::string& path);

    // Functions.
    void ShowFailure(const CompileReport& report);
    void TakeSampleFrequency();

    // Documents.
    void InterpretFunction(const Function& function);
    void InterpretSound(const Sound& sound);
    using Writer = std::function<kits::Result<void>(const std::filesystem::path&)>;
    void Save(const std::string& name, const char* folder, const Writer& write);
    void SetAndInvoke(std::string_view field, const std::string& text);
    std::string TextOf(std::string_view field) const;
    void ConnectChosenSource();

    kits::ProgramFolders folders;
    std::string soundAuthor;
    std::string functionAuthor;
    /// Of the documents that were loaded last, for saving.
    KeptElements soundKept;
    KeptElements functionKept;
    /// The sample as a function document names it.
    std::string sampleFile;
    media_format sampleFormat;
    bool sampleMode = false;

    ControllerTable ctlvalue;
    VoiceTable voices;
    sound_param soundParam;

    FormulaPanel formulas;

    // Views, which go with this one.
    R2RFView* plane = nullptr;
    std::array<EnvView*, 4> envelopes{};
    std::vector<BTextControl*> fields;
    BMenu* voicesMenu = nullptr;
    BMenu* channelMenu = nullptr;
    BMenu* deviceMenu = nullptr;

    ComputerKeyboard keyboard;
    /// The source that the user wants, and the number of the one that is connected (0 for none).
    std::string chosenSource;
    int32 connectedSource = 0;

    // Outlives the graph, whose threads call an add-on's function to their end.
    FunctionSwitch functions;
    std::unique_ptr<AudioGraph> graph;

    /// Outlives the panels.
    std::unique_ptr<BRefFilter> panelFilter;
    std::vector<std::unique_ptr<BFilePanel>> panels;
};

} // namespace vexa
