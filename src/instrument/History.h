// SPDX-License-Identifier: GPL-3.0-or-later
// A history keeps what has been done to a sound, step by step, and goes back again.
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
    /// Where it is; empty where the sound has come from no file.
    std::filesystem::path path{};
    /// The name that the document has been given in the place of the one that the sound came with,
    /// where it has been saved as another file.
    std::optional<std::string> title{};
};

/// The moment at which something was done, as far as it tells one gesture from the next.
struct GestureMoment {
    /// Counts the gestures so far; each begins with a press of the mouse or of a key that confirms.
    std::uint64_t number = 0;
    /// A button of the mouse is down.
    bool held = false;
    std::chrono::steady_clock::time_point time;
};

/// The sounds that a window has had, as steps from one to the next. A step is what one gesture has
/// done: all that changes while a button is held, or changes of one part of which each follows the
/// one before within kPause, as steps of a wheel do. There is no limit; a step takes 0.6 to 1.8
/// KB, as it shares with the one before what is the same in both, such as the formula and three of
/// the envelopes.
///
/// Controllers that move macros are playing, not steps: what a step has not changed itself of the
/// macros stays where the hands have put it. A value type without a thread of its own.
class History {
  public:
    static constexpr std::chrono::milliseconds kPause{600};
    /// What a held button has done may become known so much later than the button is let go.
    static constexpr std::chrono::milliseconds kDelay{150};

    /// Begins with a sound that its file holds.
    History(const Sound& sound, const std::string& name);

    /// Tells that the sound has become this one. What was undone can then not be redone. Nothing
    /// happens where it is the same as before.
    void Take(const Sound& sound, const GestureMoment& moment);
    /// Makes a step of its own, whatever comes before and after it, which is called so; the sound
    /// is that of a file from there on. Nothing happens where both are the same as before.
    void Load(const Sound& sound, const std::string& name, const std::string& step);
    /// Does the same without another file.
    void Do(const Sound& sound, const std::string& step);
    /// Tells that the hands have moved macros since the last call, and that this is all that
    /// differs.
    void Play(const Sound& sound);
    /// Ends the gesture: the next change is another one.
    void End();

    bool CanUndo() const { return place > 0; }
    bool CanRedo() const { return place < steps.size(); }
    /// The names of what Undo takes back and Redo does again; empty if there is nothing.
    std::string UndoName() const { return CanUndo() ? steps[place - 1].name : ""; }
    std::string RedoName() const { return CanRedo() ? steps[place].name : ""; }

    /// Goes a step back or on, and returns what the sound is to be now. They may be called only
    /// where CanUndo or CanRedo says so.
    Sound Undo();
    Sound Redo();

    Sound Present() const { return present.Get(); }
    /// Returns the file of the present sound. Whoever saves to it changes it: all the sounds since
    /// it was read are of the same file.
    SoundFile& File() { return *present.file; }
    const SoundFile& File() const { return *present.file; }

    std::size_t Steps() const { return steps.size(); }

    /// Sets whether the present sound may be lost, whatever has changed of it. The next one may
    /// not.
    void GiveUp(bool on) { present.givenUp = on; }
    /// The sounds that were left for that of another file, with changes that their own file does
    /// not hold, and may not be lost: their places among the steps, and their names. The last left
    /// first.
    struct LeftSound {
        std::size_t place;
        std::string name;
    };
    std::vector<LeftSound> Left() const;
    /// Undoes the steps behind a place, and returns what the sound is to be now.
    Sound UndoTo(std::size_t wanted);

  private:
    template<class T>
    using Part = std::shared_ptr<const T>;

    /// A sound in parts, which others may share.
    struct Version {
        /// Shares with `like`, if there is one, what is the same.
        Version(const Sound& sound, std::shared_ptr<SoundFile> file, const Version* like);
        Sound Get() const;

        Part<Function> function;
        Part<std::vector<std::string>> texts;
        std::array<Part<std::vector<EnvPoint>>, 4> envelopes;
        /// The rest of a sound, beside what is above.
        Part<Sound> rest;
        std::shared_ptr<SoundFile> file;
        bool givenUp = false;
    };
    struct Step {
        std::string name;
        Version before, after;
        GestureMoment last;
        /// True where the step began with a button held.
        bool held;
        /// It may still grow.
        bool open;
    };

    bool Grows(const Sound& from, const Sound& to, const GestureMoment& moment) const;
    void Push(const std::string& name, Version after, const GestureMoment& moment, bool open);
    Sound Move(const Version& from, const Version& to);

    Version present;
    std::vector<Step> steps;
    /// How many of the steps are done; the others are undone.
    std::size_t place = 0;
};

} // namespace vexa
