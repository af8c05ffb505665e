// SPDX-License-Identifier: GPL-3.0-or-later
// The main view: all controls of the window and their effects.
#pragma once

#include "app/ComputerKeyboard.h"
#include "app/DocumentPanels.h"
#include "app/FieldLearn.h"
#include "app/FieldSet.h"
#include "app/FormulaPanel.h"
#include "app/KeyTuning.h"
#include "app/MessageCodes.h"
#include "app/ScreenPiano.h"
#include "app/Settings.h"
#include "app/SoundSlots.h"
#include "app/SourceMenu.h"
#include "audio/AudioGraph.h"
#include "instrument/Instrument.h"
#include "kits/interface/View.h"
#include "kits/storage/ProgramFolder.h"
#include "midi/ProgramSelector.h"
#include "synth/ParameterTable.h"

#include <array>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class BMenu;
class BTextControl;

namespace vexa {

class Attachment;
class EnvView;
class ExpressionFeedback;
struct DroppedFiles;
class FormulaHint;
class PlaneControls;
class PlaneDesk;
class PlaneOverlay;
class R2RFView;

/// Owns the instrument, which plays the envelopes of this view's editors, and the audio graph.
/// Every user action arrives at MessageReceived: from controls through the window, from panels,
/// menus and the MIDI roster directly. Window thread, like all views; the MIDI and the media thread
/// write the records of voices and controllers.
class VexaView : public BView {
  public:
    /// Builds the view and starts the audio graph; alerts report failures, and the rest works on.
    /// Documents, samples and pictures are found and saved in `folders`. If there is a `plugin`,
    /// which outlives the view, the plug-in plays instead of a graph: the view shows its sound and
    /// notes, and edits of the view take effect in it. The default `settings` have no file, so
    /// nothing is remembered.
    VexaView(BRect frame, const char* name, const kits::ProgramFolders& folders,
             Attachment* plugin = nullptr,
             std::shared_ptr<Settings> settings = std::make_shared<Settings>());
    ~VexaView() override;

    void Draw(BRect update) override;
    void Pulse() override;
    void ColorsChanged() override;
    /// See AudioGraph::Record.
    void Record(kits::Recording* recording) { graph->Record(recording); }

    /// With a plug-in, takes over its sound, and its news from then on. To be called once the
    /// window is shown, because alerts say what the sound lacks.
    void FollowPlugin();

    /// Calls AudioGraph::Watch and shows its news; with a plug-in, ends the program once the
    /// plug-in has gone. Also does the periodic work that a hidden window needs. To be called about
    /// ten times a second, like Pulse, whether the window is shown or not.
    void WatchSound();
    void MessageReceived(BMessage* message) override;

    /// Returns the width, as BRect::Width counts it, that has room for every text.
    float PreferredWidth() const;
    /// Returns the same without the right margin. The view scrolls horizontally only if it is
    /// narrower than this.
    float LeastWidth() const;

    /// If `on`, hides the overlay of the plane, as the picture then shows the orbits itself, and no
    /// longer names the file of a sample or picture in the expression's field.
    void SetClassic(bool on);

    // The following load and save documents. If one fails, it changes nothing and reports the
    // reason in alerts and on standard error. Parts of a document that were not understood are
    // reported in the same ways.

    /// Loads the default sound and begins the history. If it cannot be read, prints the fault,
    /// shows it in an alert, and loads the sound that stands in for it.
    void LoadDefaultSound();
    bool LoadSound(const std::filesystem::path& path);
    /// Loads a sound, function, sample or picture, depending on the file. Asks before it replaces a
    /// changed sound.
    void Open(const std::filesystem::path& path);
    bool LoadFunction(const std::filesystem::path& path);
    /// Saves the sound in the user's folder "sounds"; `name` is a plain file name. SaveFunction
    /// does the same for the function, in "functions".
    void SaveSound(const std::string& name);
    /// Saves to the user's own file that the sound belongs to. If there is none, shows the panel
    /// that asks for a name. Asks before it replaces a file that has changed since it was read or
    /// written here. Calls `then` once the sound is saved.
    void SaveAgain(const std::function<void()>& then = nullptr);
    void SaveFunction(const std::string& name);

    /// Returns whether the sound differs, apart from authors that edits have set, from the one that
    /// was last loaded or saved, or its file has been deleted.
    bool Changed() const {
        return slots.Differs(Edits(), [this] { return ConstructSound(); });
    }
    /// Returns whether two states of the present sound differ as little as Changed overlooks.
    bool Match(const Sound& a, const Sound& b) const { return Steps().File().Match(a, b); }
    /// Notices whether the files of the sounds in both slots are still there. To be called after
    /// changes in the folders.
    void LookForFiles() { slots.LookForFiles(); }
    /// Takes this sound as the saved one.
    void TakeAsSaved(const Sound& sound) { slots.TakeAsSaved(sound); }
    /// Takes the present sound as the saved one, so that Changed returns false.
    void TakeAsSaved() { TakeAsSaved(ConstructSound()); }
    /// Makes the present sound the unchanged start of a new history, so that Undo cannot go back
    /// beyond it, and discards the other slot. If the sound has changed, it no longer belongs to
    /// its file.
    void BeginHistory();
    /// Returns whether the sound may be discarded; asks the user if it has changed. If the user
    /// chooses to save it first, calls SaveAgain(then) and returns false.
    bool MayGiveUp(const std::function<void()>& then);
    /// Asks the same for the sounds of both slots, and for the unsaved ones that were left for
    /// another sound there.
    bool MayGiveUpAll(const std::function<void()>& then);
    /// Returns the sound's name, after that of its slot if both are in use, with a mark if it has
    /// changed, and notices: that there is no audio device, why the last program change failed,
    /// and the number of voices of the shown function that there is time for, if that is less than
    /// kMostVoices.
    std::string Caption() const;
    /// Returns the file that the sound was loaded from or saved to. If there is none, returns the
    /// path in "sounds" that the sound's name leads to; empty without a name.
    std::filesystem::path SoundPath() const;
    /// Returns the name of the file, without its extension.
    const std::string& SoundName() const { return Steps().File().name; }
    const kits::ProgramFolders& Folders() const { return folders; }

    /// Describes the sound anew, as one step that is named `step`. An author that differs is one
    /// that the person has entered: later edits of this sound keep it.
    void DescribeSound(const std::string& author, const SoundInfo& info, const std::string& step);
    /// Sets a function that enters what is being typed about the sound outside of this view. It is
    /// called before the sound is saved and before another one replaces it. Null removes it.
    void SetEnterElsewhere(std::function<void()> next) { enterElsewhere = std::move(next); }
    /// Calls that function, unless the sound is just being replaced.
    void EnterElsewhere();
    /// Returns the author of what is edited here, unless the person has entered another one.
    std::string UsualAuthor() const;

    /// Sets the sound's name and detaches the sound from any file.
    void NameSound(const std::string& name);

    /// See Instrument::Prefer.
    void Prefer(const PlayingTexts& choices) { instrument.Prefer(choices); }
    /// Marks the present voice limit in the menu.
    void ShowVoiceLimit();

    /// Return the function and the sound as they would be saved: with the texts of the fields and
    /// the points of the envelopes, and the rest from the instrument.
    Function ConstructFunction() const;
    Sound ConstructSound() const;
    /// Returns the sound to be saved without asking anybody: not a formula that is being typed and
    /// cannot be played yet and, while an alert holds up the change to another sound, not a part of
    /// that one.
    Sound SoundToKeep() const;

    // The following undo and redo all changes of the sound; History defines a step. Another sound
    // takes effect at once, and the parts that both sounds share play on.

    bool CanUndo() const { return Steps().CanUndo(); }
    bool CanRedo() const { return Steps().CanRedo(); }
    /// Return the name of the step that Undo or Redo would apply, such as "envelope of radius x";
    /// empty if there is none.
    std::string UndoName() const { return Steps().UndoName(); }
    std::string RedoName() const { return Steps().RedoName(); }
    /// Have no effect if there is no step.
    void Undo();
    void Redo();
    /// Makes a step of the changes since the last call. The view itself calls it around each
    /// message, at pulses and before each press, so code that changes the sound need not.
    void NoteSteps();

    /// Starts over with a minimal sound. Asks before it replaces a changed one.
    void InitialSound();
    /// Changes the sound slightly as one step, either randomly or as determined by `seed` (see
    /// Mutate).
    void MutateSound();
    void MutateSound(uint64 seed);

    /// There are two slots, A and B, each with a sound, its steps, file and name. The present one
    /// is played and edited; the other starts as a copy of it when it is first chosen.
    char PresentSlot() const { return slots.Letter(); }
    /// Makes the other slot the present one.
    void SwitchAB();
    /// Copies the present sound and its file to the other slot, as one step there.
    void CopyToOther();

    // Functions.

    /// Compiles the expression and installs its function; the expression's field is disabled
    /// meanwhile. Returns false if that fails: the failure is shown, and the previous function
    /// stays. An add-on follows in the background.
    bool Compile(const char* expression);
    /// Returns whether the add-on of the last expression is still being made.
    bool Compiling() const { return instrument.Compiling(); }
    /// Winds a sound file onto the plane. Returns false, after an alert, if that fails.
    bool LoadSample(const char* path);
    /// Lays the brightness of a picture file on the plane. Returns false, after an alert, if that
    /// fails.
    bool LoadPicture(const char* path);

    // MIDI.

    /// Chooses a source by its name, to be connected now or when it appears; empty for none.
    void ChooseSource(const std::string& name) { sources.Choose(name); }
    const std::string& ChosenSource() const { return sources.Chosen(); }
    /// Sets whether program changes load sounds. They load without a question, because nobody could
    /// answer it while playing; Undo restores unsaved changes of the previous sound.
    void FollowPrograms(bool on);
    bool FollowsPrograms() const { return followsPrograms; }
    /// Returns the computer keyboard as a piano. Its owner passes it the key events and the changes
    /// of the window's focus.
    ComputerKeyboard& Keyboard() { return keyboard; }
    /// Returns the piano on the screen, which is always connected, whatever source is chosen.
    ScreenPiano& Piano() { return piano; }
    /// Ends all notes at once, without their release.
    void SilenceAll();

    /// Puts the text into the field and applies it at once, as if the user had confirmed it. `code`
    /// is the code of the field's message.
    void EnterNow(FieldId field, uint32 code, const std::string& text);

    // The parts, for the window and for tests.

    R2RFView& Plane() { return *plane; }
    PlaneOverlay& Overlay() { return *overlay; }
    const FormulaHint& Hint() const;
    EnvView& EnvelopeEditor(std::size_t index) { return *envelopes[index]; }
    BTextControl& Field(FieldId id) const { return fields[id]; }
    BMenu& VoicesMenu() { return *voicesMenu; }
    BMenu& ChannelMenu() { return *channelMenu; }
    BMenu& DeviceMenu() { return sources.Menu(); }
    /// Returns whether there is an audio graph, which is so unless a plug-in plays.
    bool HasGraph() const { return graph != nullptr; }
    /// Returns true if a host sets the macro in place of the sound.
    bool HostSetsMacro(std::size_t macro) const;
    AudioGraph& Graph() { return *graph; }
    Instrument& Played() { return instrument; }
    vexa::KeyTuning& KeyTuning() { return keyTuning; }
    const vexa::KeyTuning& KeyTuning() const { return keyTuning; }
    /// Returns the settings, which last from one start to the next.
    Settings& Remembered() const { return *settings; }
    /// Returns the function that the plane shows: the one that plays or, in a preview, the one
    /// being typed.
    const PlaneFunction& ShownFunction() const;
    vexa::Engine& Engine() { return instrument.Engine(); }
    const vexa::Engine& Engine() const { return instrument.Engine(); }
    const sound_param& SoundParam() const { return Engine().parameters; }
    const FormulaPanel& Formulas() const { return formulas; }
    /// Returns a warning of one or two sentences if the document saved now would differ from what
    /// is heard; else an empty text.
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
    void AddFeedback();
    void StartGraph();
    void ShowSound();

    // The sound of a plug-in, in place of the audio graph.
    void StartAttached();
    void TakeNews();
    void OfferEdits();
    void WatchPlugin();
    void FollowMacros();

    void Tend();

    // Messages.
    void Take(BMessage* message);
    bool TakeParameter(uint32 code);
    bool TakeMenuChoice(uint32 code);
    void SetChannel(int32 channel);
    bool TakePanelCommand(const BMessage& message);
    bool TakeSource(uint32 code);
    void LoadProgram();

    // File panels.
    bool MaySave();
    bool MayReplace(const BMessage& message, const char* folder, const std::string& name);
    bool MayReplaceOwn();
    bool TakeOpening(const BMessage& message);
    void TakeDrop(const BMessage& message);
    void OpenBesideSound(const DroppedFiles& dropped);
    void Remember(const std::filesystem::path& file);
    void OpenAny(const std::string& path) { Open(path); }
    void OpenScale(const std::string& path);
    void OpenKeymap(const std::string& path);
    void OpenFunction(const std::string& path);
    void OpenSound(const std::string& path) {
        OpenSound(path, [] {});
    }
    void OpenSound(const std::string& path, const std::function<void()>& then);
    void OpenSample(const std::string& path);

    // Functions.
    bool Install(const Function& function);
    bool MarkInstalled(const Function& function, const FunctionReport& report);
    void ShowKind();
    bool TakeBackSlip();
    void ShowSource();
    std::string FaultOfSource() const;
    void TellOfSource();
    void TakeSampleFrequency();

    // Documents.
    uint64 Edits() const;
    void InterpretFunction(const Function& function);
    void InterpretSound(const Sound& sound);
    void LoadAs(const Sound& sound, const std::string& name, const std::string& step);
    static std::string DigestOf(const std::filesystem::path& path);
    void LoadFrom(const std::filesystem::path& path, const std::string& digest, const Sound& sound);
    Sound ConfirmedSound() const;
    void ChooseUser();
    void PutFunction(const Function& function);
    void PutSound(const Sound& sound);
    using Writer = std::function<kits::Result<void>(const std::filesystem::path&)>;
    bool Save(const std::string& name, const char* folder, const Writer& write);
    bool MayGiveUpLeft(const std::function<void()>& then);
    void Enter(BTextControl& field);
    void EnterTyped();
    void KeepTyped();

    // Undo and redo.

    /// While an object exists, NoteSteps does nothing: the changes belong to a step in progress.
    class Busy {
      public:
        explicit Busy(int& count) : count(count) { count++; }
        ~Busy() { count--; }
        Busy(const Busy&) = delete;
        Busy& operator=(const Busy&) = delete;

      private:
        int& count;
    };
    History& Steps() { return slots.Present(); }
    const History& Steps() const { return slots.Present(); }
    void NoteStep(const std::string& name);
    void Become(const Sound& next);
    void EndJoining();

    kits::ProgramFolders folders;
    Attachment* const plugin;
    const std::shared_ptr<Settings> settings;
    /// The number of edits at which the plug-in was last offered the sound, and the pulses since
    /// the plug-in has gone.
    uint64 offeredAt = 0;
    int pulsesAlone = 0;
    SoundSlots slots;
    /// The number of edits up to which steps have been noted.
    uint64 notedAt = 0;
    /// The pulses for which sounding notes still carry over from the previous sound without a jump.
    int pulsesOfJoining = 0;
    /// The number of existing Busy objects.
    int busy = 0;
    std::function<void()> enterElsewhere;
    /// Called once the sound is saved, if set.
    std::function<void()> afterSaving;
    /// The file of the sample or picture is missing or unreadable: nothing sounds, and only its
    /// name can be saved.
    bool fileMissing = false;
    /// What is wrong with the file of the sample although it plays, until TellOfSource shows it.
    std::string sourceRemark;
    /// The expression's field names the file of a sample or picture.
    bool namesSource = true;
    /// The expression before the refused one that the user has entered; empty if there is none.
    std::optional<std::string> slip;
    /// The view is being destroyed.
    bool closing = false;

    Instrument instrument;
    FormulaPanel formulas;

    // Views, which this view owns as its children.
    R2RFView* plane = nullptr;
    PlaneOverlay* overlay = nullptr;
    std::array<EnvView*, 4> envelopes{};
    FieldSet fields;
    FieldLearn learn;
    BMenu* voicesMenu = nullptr;
    BMenu* channelMenu = nullptr;
    std::vector<BView*> menuBars;

    std::unique_ptr<PlaneControls> planeControls;
    std::unique_ptr<ExpressionFeedback> feedback;

    ComputerKeyboard keyboard;
    std::unique_ptr<PlaneDesk> desk;
    ScreenPiano piano;
    SourceMenu sources{BMessenger(this), keyboard};

    vexa::KeyTuning keyTuning{Engine().consumer, *settings, plugin != nullptr};

    bool followsPrograms = false;
    ProgramSelector programs{Engine().consumer, BMessenger(this), kProgramCode};
    /// The reason why the last program change loaded no sound; empty if it did.
    std::string programFault;

    std::unique_ptr<AudioGraph> graph;

    DocumentPanels panels{folders, BMessenger(this)};
};

} // namespace vexa
