// SPDX-License-Identifier: GPL-3.0-or-later
// A whole instrument: a sound as the user edits it, and the engine that plays it.
#pragma once

#include "documents/ApplySound.h"
#include "documents/Sound.h"
#include "functions/AddonThread.h"
#include "functions/FunctionCompiler.h"
#include "functions/PictureFunction.h"
#include "functions/SampleFunction.h"
#include "instrument/FunctionSources.h"
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

/// Reports the installation of a function. Converts to true if it succeeded completely. A sample
/// whose frequency is invalid plays with the previous winding; that is reported without an alert. A
/// sample whose file is cut short plays too; the text of a success says so.
using FunctionReport = CompileReport;

/// Returns whether the function plays, which a sample does even if its frequency is invalid.
bool Plays(const FunctionReport& report);
/// Returns whether the report has a text that is not among the warnings of the function's document,
/// which name the line of a frequency that is none.
bool IsNews(const FunctionReport& report, const Function& function);

/// Selects how an expression is computed. An expression that uses notes or macros, or that is
/// undefined in C, is always a formula (functions/ExpressionCheck.h).
enum class Addons {
    /// Formulas only.
    None,
    /// Add-ons compiled by gcc; Load and SetFunction wait for the compiler.
    Awaited,
    /// A formula at once, replaced by an add-on when that is compiled.
    Following,
};

/// Returns the alerts and the text, a line each. An alert about the compiler is left out if the
/// function itself is at fault, because then the text says all.
std::string Text(const FunctionReport& report);
/// Returns the same as the fault of a sound's file, in which the function is.
kits::Error FaultIn(const std::filesystem::path& file, const Function& function,
                    const FunctionReport& report);

/// Returns the file that a sample or picture function names; nothing for an expression. A name that
/// does not begin with "/" is looked up in the folder "samples" or "pictures", first the user's,
/// then the program's.
std::optional<std::filesystem::path> FileOf(const Function& function,
                                            const kits::ProgramFolders& folders);

/// A sound's settings of how it is played, and of its macros.
struct SoundsSay {
    Playing playing;
    Macros macros;
};

/// The sound as the user edits it, and the engine that plays it. Instruments in one process share
/// nothing but what KeepSources says. All calls come from one thread, the window thread, except for
/// those that the engine's consumer and renderer allow to the MIDI and the media thread.
class Instrument {
  public:
    /// Receives the function that is to be shown from now on.
    using Watcher = std::function<void(const PlaneFunction& f)>;

    /// Makes an instrument that looks for functions, samples and pictures in `folders`. If `apart`
    /// is null, a sound's settings go directly into the engine's records. Otherwise they are stored
    /// in `apart`, which outlives the instrument, and its owner sets the records and the voice
    /// limit from there; this is for hosts, which also set these values.
    Instrument(kits::ProgramFolders folders, Addons addons, SoundsSay* apart = nullptr);

    /// From now on takes add-ons that it awaits, samples and pictures from `sources`, which
    /// outlives the instrument and may be that of several. Without this each is compiled or read
    /// anew.
    void KeepSources(FunctionSources& sources) { kept = &sources; }

    /// Replaces the present sound. If its function fails, the previous function plays on with the
    /// rest of the new sound. Waits for the compiler or the disk.
    FunctionReport Load(const Sound& sound);
    /// Loads all of the sound except its function. A lower voice limit does not cut off held keys.
    void LoadRest(const Sound& sound);

    /// Compiles the expression or loads the sample or picture, and installs it. Changes nothing if
    /// that fails. Waits as Load does.
    FunctionReport SetFunction(const Function& function);
    /// Returns the report that SetFunction would give, without installing anything.
    FunctionReport Try(const Function& function) const;
    /// Installs the add-on that was compiled since the last call, if any. To be called about ten
    /// times a second with Addons::Following. A missing template or compiler is not reported; other
    /// faults are, and the formula plays on.
    FunctionReport Collect();
    /// Returns true while an add-on is being compiled for Collect.
    bool Compiling() const { return thread.Pending(); }
    /// Sets the macros, which controllers may have moved, to the values of the function's document.
    void SetMacros(const Function& function);
    /// Makes State contain this function, whatever plays, so that a function that could not be
    /// installed is not lost when the sound is saved.
    void Adopt(const Function& function);
    /// Installs silence in place of a missing sample or picture.
    void Silence();

    /// Sets the author of sounds and functions that are edited here; kDefaultAuthor unless set.
    void SetUser(const std::string& name) { user = name; }
    const std::string& User() const { return user; }

    /// Sets the user's choices of how this and all later sounds are played. A text that is given
    /// here overrides the sound's own.
    void Prefer(const PlayingTexts& choices);
    const PlayingTexts& Preferred() const { return preferred; }
    /// Sets the voice limit that the user or an option has chosen. It overrides that of any sound.
    void ChooseVoices(int32 limit);
    std::optional<int32> ChosenVoices() const { return chosenVoices; }
    /// Sets the voice limit for sounds without one, unless ChooseVoices was called; 1 unless set.
    void SetUsualVoices(int32 limit);
    /// Returns the voice limit that the consumer has from LoadRest and the calls above.
    int32 VoiceLimit() const;

    /// Sets the frequency (Hz), given as a text, at which the playing sample was recorded. Returns
    /// false, and keeps the winding, if the text is no frequency or no sample is loaded.
    bool SetSampleFrequency(const std::string& text);

    /// Sets a coefficient's text, by the rules of ApplyText. If it differs, the sound's author
    /// becomes the user.
    TextFault Edit(const Parameter& row, const std::string& text);

    /// Applies the difference between `from` and `to` to the present sound. Equal parts are left
    /// alone, so that they play on. An expression that cannot be installed is left out; a sample or
    /// picture that cannot be installed is silent, and State still names it. Reports as SetFunction
    /// does.
    FunctionReport Change(const Sound& from, const Sound& to);

    /// Sets the sound's text of one playing parameter; no text means the default. If the text
    /// differs, the sound's author becomes the user. Once the voice limit is set here, a previous
    /// ChooseVoices no longer applies. Returns false, and changes nothing, if the row does not
    /// allow the text.
    bool EditPlaying(const PlayingRow& row, const std::optional<std::string>& text);

    /// Sets the sound's author and description. How it is played stays as it is, and it does not
    /// get an element "playing" by this.
    void Describe(const std::string& author, const SoundInfo& info);

    /// Sets a macro's value, by the rules of ApplyMacroValue, or its controller, by those of
    /// ApplyMacroController. If the text differs, the function's author becomes the user. A faulty
    /// text becomes part of the sound all the same, but the macro keeps its value.
    TextFault EditMacroValue(std::size_t macro, const std::string& text);
    TextFault EditMacroController(std::size_t macro, const std::string& text);
    /// Writes the positions to which controllers have moved the macros since the last call into
    /// State. To be called about ten times a second and before the sound is saved, so that the
    /// audible values are saved.
    void FollowMacros();

    /// Returns the file from which the playing sample or picture was read; empty if neither plays.
    /// A function given to Adopt may name another one.
    const std::filesystem::path& File() const { return file; }

    /// Returns the sound as changed by the calls so far, with the envelopes' points as they were
    /// loaded.
    const Sound& State() const { return sound; }
    /// Counts the changes that State may have had.
    uint64 Changes() const { return changes; }

    /// Sets the watcher that is called with each new function before the engine gets it, except
    /// with add-ons that replace a formula of the same values. PlaneFollower shows functions with
    /// more inputs than x and y.
    void Watch(Watcher next) { watcher = std::move(next); }

    VEXA_REALTIME vexa::Engine& Engine() { return engine; }
    const vexa::Engine& Engine() const { return engine; }

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
    kits::Result<LoadedSample> SampleOf(const Function& function) const;
    kits::Result<Picture> PictureOf(const Function& function) const;
    bool Wind(const std::string& frequency);
    void Install(const PlaneFunction& f);

    vexa::Engine engine;
    const kits::ProgramFolders folders;
    std::string user = kDefaultAuthor;
    Sound sound;
    uint64 changes = 0;
    bool replaces = false;
    const bool isApart;
    /// The macros' values according to the sound's texts.
    std::array<float, kMacros> toldMacros{kInitialMacro, kInitialMacro, kInitialMacro,
                                          kInitialMacro};
    PlayingTexts preferred;
    std::optional<int32> chosenVoices;
    int32 usualVoices = 1;
    const Addons addons;
    FunctionSources* kept = nullptr;
    /// The sample that was loaded last.
    std::optional<LoadedSample> sample;
    Winding winding;
    Watcher watcher;
    AddonThread thread;
    Playing& saidPlaying;
    Macros& saidMacros;
    /// The file from which the playing sample or picture was read.
    std::filesystem::path file;
};

} // namespace vexa
