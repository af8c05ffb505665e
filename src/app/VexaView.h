// SPDX-License-Identifier: GPL-3.0-or-later
// The main view: every control of the window, and what each does.
#pragma once

#include "app/ComputerKeyboard.h"
#include "app/ControllerLearn.h"
#include "app/FieldId.h"
#include "app/FormulaPanel.h"
#include "app/MessageCodes.h"
#include "app/NumberStep.h"
#include "app/ScreenPiano.h"
#include "app/Settings.h"
#include "audio/AudioGraph.h"
#include "instrument/History.h"
#include "instrument/Instrument.h"
#include "instrument/PlaneFollower.h"
#include "kits/interface/FilePanel.h"
#include "kits/interface/View.h"
#include "kits/storage/ProgramFolder.h"
#include "midi/ProgramSelector.h"
#include "synth/ParameterTable.h"
#include "tuning/TuningChoice.h"

#include <array>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class BButton;
class BMenu;
class BMenuBar;
class BMidiRoster;
class BPopUpMenu;
class BTextControl;

namespace vexa {

class Attachment;
class EnvView;
class Formula;
class FormulaHint;
class PlaneDesk;
class PlaneOverlay;
class R2RFView;

/// Owns the instrument, whose envelopes are its editors', and the audio graph. All that the user
/// does arrives at MessageReceived: from controls by way of the window, from panels, menus
/// and the MIDI roster directly. Window thread, like all views; the records of a voice and of a
/// controller are written by the MIDI and the media thread.
class VexaView : public BView {
  public:
    /// Builds the view and starts the audio graph; failures are shown by alerts and leave the rest
    /// working. Documents, samples and pictures are found and saved in `folders`. Where there is a
    /// `plugin`, which outlives the view, it is that which plays: there is no graph, the view shows
    /// the plug-in's sound and notes, and what is done here is done there. Without `settings`
    /// nothing is remembered.
    VexaView(BRect frame, const char* name, const kits::ProgramFolders& folders,
             Attachment* plugin = nullptr,
             std::shared_ptr<Settings> settings = std::make_shared<Settings>());
    ~VexaView() override;

    void Draw(BRect update) override;
    void Pulse() override;
    void ColorsChanged() override;
    /// Does what AudioGraph::Record does.
    void Record(kits::Recording* recording) { graph->Record(recording); }

    /// Does what AudioGraph::Watch does: shows what has become of the sound, and goes on. The
    /// program ends where the plug-in has gone. It is to be called some ten times a second, as
    /// Pulse, whether the window is shown or not.
    void WatchSound();
    void MessageReceived(BMessage* message) override;

    /// The width, as BRect::Width counts it, that no text needs more of.
    float PreferredWidth() const;
    /// The same without the margin on the right: where the screen has no more, nothing is scrolled
    /// for that.
    float LeastWidth() const;

    /// Where on, nothing lies over the plane, as the picture shows the orbits itself, and the file
    /// that is the function is not named.
    void SetClassic(bool on);

    // The following are about documents. Each reports its failures by alerts, with the reason there
    // and on standard error, and then changes nothing; what was read over is told likewise.

    /// Loads "sounds/default.xml". Where it is not there that is told on standard error only.
    void LoadDefaultSound();
    bool LoadSound(const std::filesystem::path& path);
    /// Loads a sound, a function, a sample or a picture, whichever the file is. Asks before another
    /// sound takes the place of one that has changed.
    void Open(const std::filesystem::path& path);
    bool LoadFunction(const std::filesystem::path& path);
    /// Tunes the keys; where that fails it is shown, and the tuning stays.
    bool Tune(const TuningChoice& choice);
    /// Does the same from now on, and at the next start.
    bool ChooseTuning(const TuningChoice& choice);
    const TuningChoice& Tuned() const { return tuned; }
    /// Returns the tuning that plays.
    const Tuning& PresentTuning() const { return tuning; }
    /// They save into the folder sounds or functions, under a plain file name.
    void SaveSound(const std::string& name);
    /// Saves to the person's own file that the sound is of; shows the panel, which asks for a name,
    /// where there is none. Once it is saved, `then` is called.
    void SaveAgain(const std::function<void()>& then = nullptr);
    void SaveFunction(const std::string& name);

    /// True where what would be saved differs, but for authors, from the sound that was loaded or
    /// saved.
    bool Changed() const;
    /// The sound as it is counts as saved.
    void TakeAsSaved();
    /// Takes the present sound for unchanged; what was before cannot be brought back by Undo. It is
    /// of a file no longer where that holds another one.
    void BeginHistory();
    /// True where the sound may be given up: asks the person where it has changed. A person who
    /// wants to save it first gets what SaveAgain does, with `then`.
    bool MayGiveUp(const std::function<void()>& then);
    /// Asks the same for the sounds of both slots, and for those there that were left for others
    /// with changes that are not saved.
    bool MayGiveUpAll(const std::function<void()>& then);
    /// The sound's name, a mark where it has changed, and what is worth knowing: that there is no
    /// audio device, or for how many voices of the function on the plane there is time where those
    /// are fewer than may be chosen.
    std::string Caption() const;
    /// The file that the sound was loaded from or saved to; empty where there is none.
    std::filesystem::path SoundPath() const;
    /// Returns the name of the file, without its extension.
    const std::string& SoundName() const { return Steps().File().name; }
    const kits::ProgramFolders& Folders() const { return folders; }

    /// Sets the name that the sound has from now on, wherever it has come from.
    void NameSound(const std::string& name);

    /// Does what Instrument::Prefer does.
    void Prefer(const PlayingTexts& choices) { instrument.Prefer(choices); }
    /// Marks in the menu how many voices there may be.
    void ShowVoiceLimit();

    /// Return what the fields, the envelopes and the installed function say at present.
    Function ConstructFunction() const;
    Sound ConstructSound() const;

    // The following undo and redo all that changes the sound; History says what a step is. What
    // becomes another sound so does it at once, and what is the same in both plays on.

    bool CanUndo() const { return Steps().CanUndo(); }
    bool CanRedo() const { return Steps().CanRedo(); }
    /// Return what they would take back or do again, such as "envelope of radius x"; empty if there
    /// is nothing.
    std::string UndoName() const { return Steps().UndoName(); }
    std::string RedoName() const { return Steps().RedoName(); }
    /// They have no effect where there is nothing.
    void Undo();
    void Redo();
    /// Makes a step of what has changed since the last call. Is called after messages, at pulses
    /// and before each press, and need not be called by those who change something.
    void NoteSteps();

    /// Begins anew, with a sound of little. Asks before it takes the place of one that has changed.
    void InitialSound();
    /// Changes a little of the sound by chance, or as a seed says (see Mutate), which is one step.
    void MutateSound();
    void MutateSound(uint64 seed);

    /// There are two slots for a sound, each with its own steps, file and name. One of them is
    /// played and edited; the other one is a copy of it when it is chosen for the first time.
    char PresentSlot() const { return static_cast<char>('A' + slot); }
    /// Plays the other one of the two slots.
    void SwitchAB();
    /// Puts the present sound and its file into the other slot, which is one step there.
    void CopyToOther();

    // Functions.

    /// Compiles the expression and installs its function; a failure is shown and the function
    /// before stays. The field is disabled meanwhile.
    /// True if it is installed. An add-on follows in the background.
    bool Compile(const char* expression);
    /// The add-on of the last expression has not come yet.
    bool Compiling() const { return instrument.Compiling(); }
    /// Winds a sound file onto the plane; false, with an alert, where that fails.
    bool LoadSample(const char* path);
    /// Lays the brightness of a picture file on the plane; false, with an alert, where that fails.
    bool LoadPicture(const char* path);

    // MIDI.

    /// Lists the sources anew. The one that the user has chosen is connected again when it has come
    /// back.
    void SetupMidiMenu();
    /// Chooses a source by its name, now or whenever it appears; empty for none.
    void ChooseSource(const std::string& name);
    const std::string& ChosenSource() const { return chosenSource; }
    /// Sets whether program changes choose sounds. Nothing is asked then, as nobody could answer
    /// while playing: Undo brings back what has changed of the sound before.
    void FollowPrograms(bool on);
    bool FollowsPrograms() const { return followsPrograms; }
    /// Returns the piano that the computer's keyboard plays; it is told of keys and of the window's
    /// focus.
    ComputerKeyboard& Keyboard() { return keyboard; }
    /// Always connected, whichever source is chosen.
    ScreenPiano& Piano() { return piano; }
    /// Ends all that sounds, at once.
    void SilenceAll();

    /// Shows a modal stop alert titled "Error" with the button "Ok", and waits for the answer.
    /// `details`, if any, say why.
    static void ErrorAlert(const std::string& text, const std::string& details = "");
    /// The error on standard error, as Print says it, and then in such alerts, of which the last
    /// one has the text as its details.
    static void ShowError(const kits::Error& error);
    /// The error's text, if any, as a line on standard error.
    static void Print(const kits::Error& error);

    /// Puts the text into the field, and has it take effect at once, as if a person had confirmed
    /// it. `code` is that of the field's message.
    void EnterNow(FieldId field, uint32 code, const std::string& text);

    // The parts, for the window and for tests.

    R2RFView& Plane() { return *plane; }
    PlaneOverlay& Overlay() { return *overlay; }
    const FormulaHint& Hint() const { return *hint; }
    EnvView& EnvelopeEditor(std::size_t index) { return *envelopes[index]; }
    BTextControl& Field(FieldId id) const { return *fields[id.Index()]; }
    BMenu& VoicesMenu() { return *voicesMenu; }
    BMenu& ChannelMenu() { return *channelMenu; }
    BMenu& DeviceMenu() { return *deviceMenu; }
    /// True where there is an audio graph, which there is unless a plug-in plays.
    bool HasGraph() const { return graph != nullptr; }
    AudioGraph& Graph() { return *graph; }
    Instrument& Played() { return instrument; }
    /// Returns what is remembered from one start to the next.
    Settings& Remembered() const { return *settings; }
    /// Returns what the plane shows: what plays, or what is being typed.
    const PlaneFunction& ShownFunction() const { return shown.Function(); }
    Engine& Playing() { return instrument.Playing(); }
    const Engine& Playing() const { return instrument.Playing(); }
    const sound_param& SoundParam() const { return Playing().parameters; }
    const FormulaPanel& Formulas() const { return formulas; }
    /// Returns a sentence on what nobody would expect of what is saved at this moment; empty if
    /// there is nothing.
    std::string SavingRemark() const;
    /// Returns the kind of the function that would be saved.
    FunctionKind Kind() const { return instrument.State().function.kind; }
    bool SampleMode() const { return Kind() == FunctionKind::Sample; }
    const std::string& SoundAuthor() const { return instrument.State().author; }
    const std::string& FunctionAuthor() const { return instrument.State().function.author; }

  private:
    // Layout.
    void AddPlaneControls();
    void AddOverlay();
    void AddFileButtons();
    void AddMenus();
    void AddEnvelopes();
    void AddCoefficients(std::string_view group);
    void AddField(FieldId id, std::string_view name, std::string_view text, uint32 code,
                  BRect frame);
    void AddField(FunctionField id, BRect frame);
    void MakeTurn(FieldId id, std::string_view reset, const NumberRange& range);
    void AddHint();
    void StartGraph();
    void ShowSound();

    // Begins the view of a plug-in's sound, in the place of the audio graph.
    void StartAttached();
    void TakeNews();
    void WatchPlugin();
    static void Leave();
    void FollowMacros();
    void LearnController();

    void Tend();

    // Messages.
    void Take(BMessage* message);
    bool TakeParameter(uint32 code);
    bool TakePlaneControl(uint32 code);
    void MarkNumber(FieldId id, bool controller = false);
    bool TakeMenuChoice(uint32 code);
    void SetChannel(int32 channel);
    bool TakePanelCommand(const BMessage& message);
    bool TakeSource(uint32 code);
    void LoadProgram();

    // File panels.
    void ShowPanel(file_panel_mode mode, uint32 result, const char* folder, const char* title);
    void RemovePanel(const BMessage& message);
    static std::string ChosenPath(const BMessage& message);
    bool MaySave();
    bool MayReplace(const BMessage& message, const char* folder, const std::string& name);
    bool TakeOpening(const BMessage& message);
    void TakeDrop(const BMessage& message);
    void Remember(const std::filesystem::path& file);
    void OpenAny(const std::string& path) { Open(path); }
    void OpenScale(const std::string& path);
    void OpenKeymap(const std::string& path);
    void OpenFunction(const std::string& path);
    void OpenSound(const std::string& path);
    void OpenSample(const std::string& path);

    // What the plane shows, and what is typed.
    void ShowFunction(const PlaneFunction& f);
    void ShowPlaying(const PlaneFunction& f);
    void TakeTyping();
    std::optional<float> PlaceOfFault() const;
    void EndTyping();
    void ShowWhatChanges();

    // Functions.
    bool Install(const Function& function);
    bool MarkInstalled(const Function& function, const FunctionReport& report);
    void ShowKind();
    void ShowSource();
    void TakeSampleFrequency();

    // Documents.
    uint64 Edits() const;
    void InterpretFunction(const Function& function);
    void InterpretSound(const Sound& sound);
    void LoadAs(const Sound& sound, const std::string& name, const std::string& step);
    Sound ConfirmedSound() const;
    bool Put(FieldId field, const std::string& text);
    void PutPlaneFields(const Function& function);
    void PutSound(const Sound& sound);
    using Writer = std::function<kits::Result<void>(const std::filesystem::path&)>;
    bool Save(const std::string& name, const char* folder, const Writer& write);
    std::string TextOf(FieldId field) const;
    bool MayGiveUpLeft(const std::function<void()>& then);
    void Enter(BTextControl& field);
    void EnterTyped();
    void KeepTyped();
    void ConnectChosenSource();

    // Undo and redo.

    /// While one lives, changes are parts of a step that is being made.
    class Busy {
      public:
        explicit Busy(int& count) : count(count) { count++; }
        ~Busy() { count--; }
        Busy(const Busy&) = delete;
        Busy& operator=(const Busy&) = delete;

      private:
        int& count;
    };
    History& Steps() { return *slots[slot]; }
    const History& Steps() const { return *slots[slot]; }
    void NoteStep(const std::string& name);
    void Become(const Sound& next);
    void EndJoining();
    void OpenOtherSlot();

    kits::ProgramFolders folders;
    Attachment* const plugin;
    const std::shared_ptr<Settings> settings;
    /// The number of edits at which the sound was last offered to it, and the pulses since it went.
    uint64 offeredAt = 0;
    int pulsesAlone = 0;
    /// It has sent one.
    bool hasPluginSound = false;
    /// The present one is never empty.
    std::array<std::optional<History>, 2> slots;
    std::size_t slot = 0;
    /// The number of edits that the steps know.
    uint64 notedAt = 0;
    /// For so many pulses more, notes that sound go on from where the sound before had them.
    int pulsesOfJoining = 0;
    /// How many objects of Busy there are.
    int busy = 0;
    /// True where the sound has changed; then the number of edits at which that was found.
    mutable bool changed = false;
    mutable std::optional<uint64> comparedAt;
    /// This is called after the sound has been saved, if it is set.
    std::function<void()> afterSaving;
    /// There is no file of that name: nothing sounds, and the name is all that can be saved.
    bool fileMissing = false;
    /// The file that is the function is named in the field of the expression.
    bool namesSource = true;
    /// The field has an expression that is not installed, as it is wrong, and why.
    bool expressionWrong = false;
    std::string refusal;
    /// The view is on its way out.
    bool closing = false;

    Instrument instrument;
    /// The function that plays, but for an add-on of the same values, and what the plane shows.
    PlaneFunction playing{nullfunc};
    PlaneFollower shown{instrument.Playing()};
    /// The plane shows what is typed, not what plays.
    bool previewing = false;
    /// The formula that is typed and not shown yet, and for how many pulses it has been there.
    std::shared_ptr<const Formula> typed;
    /// The byte of the fault in what is typed, if it has one.
    std::optional<std::size_t> faultPlace;
    int pulsesOfRest = 0;

    /// The field that has the keyboard, and the controllers when it got that.
    struct Learning {
        FieldId field;
        ControllerLearn from;
    };
    std::optional<Learning> learning;

    FormulaPanel formulas;

    // Views, which go with this one.
    R2RFView* plane = nullptr;
    PlaneOverlay* overlay = nullptr;
    FormulaHint* hint = nullptr;
    std::array<EnvView*, 4> envelopes{};
    std::array<BTextControl*, FieldId::kCount> fields{};
    BMenu* voicesMenu = nullptr;
    BMenu* channelMenu = nullptr;
    BMenu* deviceMenu = nullptr;
    std::vector<BView*> menuBars;

    ComputerKeyboard keyboard;
    std::unique_ptr<PlaneDesk> desk;
    ScreenPiano piano;
    /// The source that the user wants, and the number of the one that is connected (0 for none).
    std::string chosenSource;
    int32 connectedSource = 0;

    TuningChoice tuned;
    Tuning tuning = EqualTemperament();

    bool followsPrograms = false;
    ProgramSelector programs{Playing().consumer, BMessenger(this), kProgramCode};
    /// The reason why the last program did not become the sound.
    std::string programFault;

    std::unique_ptr<AudioGraph> graph;

    /// Outlives the panels.
    std::unique_ptr<BRefFilter> panelFilter;
    std::vector<std::unique_ptr<BFilePanel>> panels;
};

} // namespace vexa
