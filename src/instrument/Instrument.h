// SPDX-License-Identifier: GPL-3.0-or-later
// An instrument is one as a whole: what it plays, and what it plays with.
#pragma once

#include "documents/ApplySound.h"
#include "documents/Sound.h"
#include "functions/AddonThread.h"
#include "functions/FunctionCompiler.h"
#include "functions/PictureFunction.h"
#include "functions/SampleFunction.h"
#include "kits/storage/ProgramFolder.h"
#include "kits/support/RealtimeMark.h"
#include "midi/Engine.h"

#include <array>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vexa {

/// A report says what became of a function that was to be installed. It converts to true where all
/// is as it was wanted. A sample whose frequency means nothing plays in the winding before, and is
/// reported without an alert.
using FunctionReport = CompileReport;

/// This chooses what computes an expression. One in which notes or macros have a say, or which is
/// dangerous in C, is a formula in any case (functions/ExpressionCheck.h).
enum class Addons {
    /// The program's own formulas alone.
    None,
    /// Add-ons of gcc, which Load and SetFunction wait for.
    Awaited,
    /// A formula at once, and an add-on in its place when it is compiled.
    Following,
};

/// Returns the alerts and the text, a line each.
std::string Text(const FunctionReport& report);

/// Returns the file that a sample or a picture function names: what does not begin with "/" lies in
/// the folder "samples" or "pictures", a person's own or the program's. Nothing for an expression.
std::optional<std::filesystem::path> FileOf(const Function& function,
                                            const kits::ProgramFolders& folders);

/// The things that sounds say of how they are played and of their macros.
struct SoundsSay {
    Playing playing;
    Macros macros;
};

/// The sound as a person edits it, and the engine that plays it. Nothing of it is shared with other
/// instruments of the process. All calls belong to one thread, the window thread, but for what the
/// engine's consumer and renderer allow to the MIDI and the media thread.
class Instrument {
  public:
    /// Takes the function that is from now on to be shown.
    using Watcher = std::function<void(const PlaneFunction& f)>;

    /// Makes an instrument that looks for functions, samples and pictures in `folders`. Where
    /// `apart` is null what sounds say goes into the engine's own records. Where others have a say
    /// in these too it is put down in `apart`, which outlives the instrument, and the records and
    /// the voice limit are left to who takes it up from there.
    Instrument(kits::ProgramFolders folders, Addons addons, SoundsSay* apart = nullptr);

    /// Puts the sound in the place of the present one; where its function fails, the function
    /// before plays on, with all else of the sound. It waits for the compiler or the disk.
    FunctionReport Load(const Sound& sound);
    /// Loads all of the sound but its function. A lower voice limit does not cut keys off that are
    /// held.
    void LoadRest(const Sound& sound);

    /// Compiles the expression or loads the sample or picture, and installs it. Where that fails
    /// all stays as it was. It waits as Load does.
    FunctionReport SetFunction(const Function& function);
    /// Reports what SetFunction would, with nothing installed: its alerts where it would fail.
    FunctionReport Try(const Function& function) const;
    /// Installs the add-on that was compiled since the last call, if any; to be called some ten
    /// times a second where they follow. Where there is none because the template or the compiler
    /// is missing there is nothing to report; of other faults there is, and the formula plays on.
    FunctionReport Collect();
    /// True where Collect has something to wait for.
    bool Compiling() const { return thread.Pending(); }
    /// Sets the macros, which controllers move, to what the function's document says.
    void SetMacros(const Function& function);
    /// Has State say the function, whatever sounds: one that could not be installed is not lost
    /// when the sound is saved.
    void Adopt(const Function& function);
    /// Installs silence in the place of a sample or picture that is missing.
    void Silence();

    /// Sets the author of sounds and functions that are edited here, who is kDefaultAuthor unless
    /// set.
    void SetUser(const std::string& name) { user = name; }
    const std::string& User() const { return user; }

    /// Has this and all later sounds played as a person has chosen: where a text is given, as if
    /// the sound said so itself.
    void Prefer(const PlayingTexts& choices);
    const PlayingTexts& Preferred() const { return preferred; }
    /// Sets the voice limit from now on, whatever a sound says, as a person or an option has chosen
    /// it.
    void ChooseVoices(int32 limit);
    std::optional<int32> ChosenVoices() const { return chosenVoices; }
    /// Sets the voice limit where neither a person nor the sound says one; it is 1 unless set.
    void SetUsualVoices(int32 limit);
    /// Returns the voice limit that LoadRest and the calls before have given the consumer.
    int32 VoiceLimit() const;

    /// Gives the sample that plays another pitch: the text is the frequency (Hz) that it was played
    /// at. False, and the winding stays, where the text is no frequency or no sample is loaded.
    bool SetSampleFrequency(const std::string& text);

    /// A coefficient's text, by the rules of ApplyText; where it is another one the sound is the
    /// user's own from then on.
    TextFault Edit(const Parameter& row, const std::string& text);

    /// Does to the present sound what a person has done to `from` to make `to` of it: what is the
    /// same in both is left alone, so that what plays goes on. An expression that cannot be
    /// installed is left out; a sample or picture that cannot be is silent, and State says which it
    /// was. It reports as SetFunction does.
    FunctionReport Change(const Sound& from, const Sound& to);

    /// Sets what the sound says of one row of how it is played, which is its own from then on. A
    /// voice limit that was chosen before counts no longer. Without a text it is the default again.
    /// False, and nothing happens, where the row allows no such text.
    bool EditPlaying(const PlayingRow& row, const std::optional<std::string>& text);

    /// Sets a macro's value, by the rules of ApplyMacroValue, or its controller, by those of
    /// ApplyMacroController; where it is another one the function is the user's own from then on.
    /// Where there is a fault the sound has the text all the same, and the macro stays as it was.
    TextFault EditMacroValue(std::size_t macro, const std::string& text);
    TextFault EditMacroController(std::size_t macro, const std::string& text);
    /// Has State say where controllers have moved the macros since the last call. It is to be
    /// called some ten times a second and before the sound is saved, so that what is saved is what
    /// one hears.
    void FollowMacros();

    /// The file that the sample or picture which plays was read from; empty where none plays. A
    /// function that was adopted may name another one.
    const std::filesystem::path& File() const { return file; }

    /// The sound as the calls so far have made it, with the points of envelopes as they were
    /// loaded.
    const Sound& State() const { return sound; }
    /// Counts how often State may have become another one.
    uint64 Changes() const { return changes; }

    /// Called with each new function before the engine has it, but for add-ons that follow a
    /// formula of the same values. PlaneFollower shows those that hear more than x and y.
    void Watch(Watcher next) { watcher = std::move(next); }

    VEXA_REALTIME Engine& Playing() { return engine; }
    const Engine& Playing() const { return engine; }

  private:
    class Replacing;

    void SetPlaying(const std::optional<PlayingTexts>& next);
    void LimitVoices();
    void LimitNewVoices();
    void EditMacro(std::string& present, const std::string& text);
    FunctionReport ChangeFunction(const Function& from, const Function& to);
    FunctionReport InstallKind(const Function& function);
    FunctionReport InstallExpression(const std::string& expression);
    FunctionReport Follow(const std::string& expression);
    FunctionReport InstallSample(const Function& function);
    FunctionReport InstallPicture(const Function& function);
    bool Wind(const std::string& frequency);
    void Install(const PlaneFunction& f);

    Engine engine;
    const kits::ProgramFolders folders;
    std::string user = kDefaultAuthor;
    Sound sound;
    uint64 changes = 0;
    bool replaces = false;
    const bool isApart;
    /// The values of the macros that the sound's texts say.
    std::array<float, kMacros> toldMacros{kInitialMacro, kInitialMacro, kInitialMacro,
                                          kInitialMacro};
    PlayingTexts preferred;
    std::optional<int32> chosenVoices;
    int32 usualVoices = 1;
    const Addons addons;
    /// The last one that was loaded.
    std::optional<LoadedSample> sample;
    Winding winding;
    Watcher watcher;
    AddonThread thread;
    vexa::Playing& saidPlaying;
    Macros& saidMacros;
    /// Where the sample or picture that plays was read from.
    std::filesystem::path file;
};

} // namespace vexa
