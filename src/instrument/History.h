// SPDX-License-Identifier: GPL-3.0-or-later
// The history of a sound: the steps of its changes, for undo and redo.
#pragma once

#include "documents/Sound.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vexa {

/// The file that a sound belongs to, as it was read from there or saved to it.
struct SoundFile {
    /// The file's name without its extension.
    std::string name;
    /// The sound that the file holds.
    Sound saved;
    /// The file's path; empty if the sound does not come from a file.
    std::filesystem::path path{};
    /// The digest of the file's content when it was read or written here, to notice what other
    /// programs make of it; empty if it could not be read.
    std::string digest{};
    /// The author that the person has entered since the file was read, if any.
    std::optional<std::string> author{};
    /// True if the file has been deleted, so that the sound is only here.
    bool gone = false;

    /// Returns true if the file has this sound, whose author may be another unless the person has
    /// entered it.
    bool Holds(const Sound& sound) const;
    /// Returns whether two sounds of this file are alike (see AreAlike) and differ in their authors
    /// at most by what edits have set, not by what the person has entered.
    bool Match(const Sound& a, const Sound& b) const;
};

/// The moment of a change, with the data that distinguish one gesture from the next.
struct GestureMoment {
    /// The number of gestures so far; each begins with a press of a mouse button or of a key that
    /// confirms.
    std::uint64_t number = 0;
    /// True while a mouse button is down.
    bool held = false;
    std::chrono::steady_clock::time_point time;
};

/// The sounds of a window, as steps from one to the next. A step is the effect of one gesture: all
/// changes while a button is held, or changes of one part that follow each other within kPause,
/// such as steps of a mouse wheel. The number of steps is unlimited. A step takes 0.6 to 1.8 KB,
/// because it shares equal parts with the step before, such as the formula and three of the
/// envelopes.
///
/// Moving a macro with a controller is playing, not a step: Undo and Redo leave macros that the
/// step has not changed where the controllers have put them. A value type without a thread of its
/// own.
class History {
  public:
    static constexpr std::chrono::milliseconds kPause{600};
    /// The effect of a held button may become known this long after its release.
    static constexpr std::chrono::milliseconds kDelay{150};

    /// Begins with a sound that equals the contents of its file.
    History(const Sound& sound, const std::string& name);

    /// Records that the sound has become this one, after which undone steps cannot be redone. Does
    /// nothing if it is the same as before.
    void Take(const Sound& sound, const GestureMoment& moment);
    /// Records a step of its own with the name `step`, which never merges with its neighbours; from
    /// then on the sound belongs to the file `name`. Does nothing if both are the same as before.
    void Load(const Sound& sound, const std::string& name, const std::string& step);
    /// Does the same without a change of file.
    void Do(const Sound& sound, const std::string& step);
    /// Records that controllers have moved macros since the last call, and that nothing else has
    /// changed.
    void Play(const Sound& sound);
    /// Ends the gesture: the next change begins another step.
    void End();

    bool CanUndo() const { return place > 0; }
    bool CanRedo() const { return place < steps.size(); }
    /// Return the names of the steps that Undo and Redo would apply; empty if there is none.
    std::string UndoName() const { return CanUndo() ? steps[place - 1].name : ""; }
    std::string RedoName() const { return CanRedo() ? steps[place].name : ""; }

    /// Go one step back or on, and return the new sound. Require CanUndo or CanRedo.
    Sound Undo();
    Sound Redo();

    Sound Present() const { return present.Get(); }
    /// Returns the file of the present sound. All sounds since it was read share it, so saving to
    /// it may change it here.
    SoundFile& File() { return *present.file; }
    const SoundFile& File() const { return *present.file; }

    /// Returns the functions of the present sound and of all before it, the present one first.
    std::vector<Function> Functions() const;

    std::size_t Steps() const { return steps.size(); }

    /// Gives all sounds of the present file that are named `from` the name `to`, which is not a
    /// step.
    void Rename(const std::string& from, const std::string& to);

    /// Sets whether the present sound may be lost although it has unsaved changes. Later sounds may
    /// not.
    void GiveUp(bool on) { present.givenUp = on; }
    /// A sound that was left for one of another file, with changes that its own file does not have,
    /// and that may not be lost: its place among the steps, and its name.
    struct LeftSound {
        std::size_t place;
        std::string name;
    };
    /// Returns these sounds, the last one left first.
    std::vector<LeftSound> Left() const;
    /// Undoes the steps after a place, and returns the new sound.
    Sound UndoTo(std::size_t wanted);

  private:
    template<class T>
    using Part = std::shared_ptr<const T>;

    /// A sound in parts, which other versions may share.
    struct Version {
        /// Shares equal parts with `like`, if that is not null.
        Version(const Sound& sound, std::shared_ptr<SoundFile> file, const Version* like);
        Sound Get() const;

        Part<Function> function;
        Part<std::vector<std::string>> texts;
        std::array<Part<std::vector<EnvPoint>>, 4> envelopes;
        /// The parts of a sound that are not above.
        Part<Sound> rest;
        std::shared_ptr<SoundFile> file;
        bool givenUp = false;
    };
    struct Step {
        std::string name;
        Version before, after;
        GestureMoment last;
        /// True if the step began while a button was held.
        bool held;
        /// True while the step may still grow.
        bool open;
    };

    bool Grows(const Sound& from, const Sound& to, const GestureMoment& moment) const;
    void Push(const std::string& name, const Version& after, const GestureMoment& moment,
              bool open);
    Sound Move(const Version& from, const Version& to);

    Version present;
    std::vector<Step> steps;
    /// The number of steps that are done; the others are undone.
    std::size_t place = 0;
};

} // namespace vexa
