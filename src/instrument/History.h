// SPDX-License-Identifier: GPL-3.0-or-later
// What has been done to a sound, step by step, and back again.
#pragma once

#include "documents/Sound.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace vexa {

/// Where a sound belongs: the file that it was read from or saved to.
struct SoundFile {
    /// Without its extension.
    std::string name;
    /// What it holds.
    Sound saved;
};

/// When something was done, as far as it tells one gesture from the next.
struct GestureMoment {
    /// Of the gestures so far, a press of the mouse or of a key that confirms.
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
    /// What a button has done that was let go may be known so much later.
    static constexpr std::chrono::milliseconds kDelay{150};

    /// Begins with a sound that its file holds.
    History(const Sound& sound, const std::string& name);

    /// The sound has become this one. What was undone can then not be redone. Nothing happens where
    /// it is the same as before.
    void Take(const Sound& sound, const GestureMoment& moment);
    /// A step of its own, whatever comes before and after it, which is called so; the sound is that
    /// of a file from there on. Nothing happens where both are the same as before.
    void Load(const Sound& sound, const std::string& name, const std::string& step);
    /// The same without another file.
    void Do(const Sound& sound, const std::string& step);
    /// The hands have moved macros since the last call, and that is all that differs.
    void Play(const Sound& sound);
    /// The next change is another gesture.
    void End();

    bool CanUndo() const { return place > 0; }
    bool CanRedo() const { return place < steps.size(); }
    /// What Undo takes back and Redo does again; empty if nothing.
    std::string UndoName() const { return CanUndo() ? steps[place - 1].name : ""; }
    std::string RedoName() const { return CanRedo() ? steps[place].name : ""; }

    /// What the sound is to be now. Only where CanUndo or CanRedo says so.
    Sound Undo();
    Sound Redo();

    Sound Present() const { return present.Get(); }
    /// That of the present sound. Those who save to it change it: all the sounds since it was read
    /// are of the same.
    SoundFile& File() { return *present.file; }
    const SoundFile& File() const { return *present.file; }

    std::size_t Steps() const { return steps.size(); }

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
        /// All but what is above.
        Part<Sound> rest;
        std::shared_ptr<SoundFile> file;
    };
    struct Step {
        std::string name;
        Version before, after;
        GestureMoment last;
        /// It began with a button held.
        bool held;
        /// It may still grow.
        bool open;
    };

    bool Grows(const Sound& from, const Sound& to, const GestureMoment& moment) const;
    void Push(const std::string& name, Version after, const GestureMoment& moment, bool open);
    Sound Move(const Version& from, const Version& to);

    Version present;
    std::vector<Step> steps;
    /// So many of them are done.
    std::size_t place = 0;
};

} // namespace vexa
