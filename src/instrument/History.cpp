// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/History.h"

#include "instrument/SoundParts.h"

#include <map>
#include <utility>

namespace vexa {

namespace {

template<class T>
std::shared_ptr<const T> Share(const T& value, const std::shared_ptr<const T>& like) {
    return like && *like == value ? like : std::make_shared<const T>(value);
}

/// Sets the macros of `sound` to their values in `played`, except for those that differ between
/// `from` and `to`.
void KeepPlayed(Sound& sound, const Function& from, const Function& to, const Function& played) {
    for (std::size_t i = 0; i < kMacros; i++) {
        if (from.macros[i].value == to.macros[i].value)
            sound.function.macros[i].value = played.macros[i].value;
    }
}

} // namespace

bool SoundFile::Holds(const Sound& sound) const {
    return !gone && Match(sound, saved);
}

bool SoundFile::Match(const Sound& a, const Sound& b) const {
    const bool entered =
        author && a.author != b.author && (author == a.author || author == b.author);
    return !entered && AreAlike(a, b);
}

History::Version::Version(const Sound& sound, std::shared_ptr<SoundFile> file, const Version* like)
    : function(Share(sound.function, like ? like->function : nullptr)),
      texts(Share(sound.texts, like ? like->texts : nullptr)),
      file(std::move(file)) {
    for (std::size_t i = 0; i < envelopes.size(); i++)
        envelopes[i] = Share(sound.envelopes[i], like ? like->envelopes[i] : nullptr);
    Sound others;
    others.author = sound.author;
    others.info = sound.info;
    others.playing = sound.playing;
    others.kept = sound.kept;
    rest = Share(others, like ? like->rest : nullptr);
}

Sound History::Version::Get() const {
    Sound sound = *rest;
    sound.function = *function;
    sound.texts = *texts;
    for (std::size_t i = 0; i < envelopes.size(); i++)
        sound.envelopes[i] = *envelopes[i];
    return sound;
}

History::History(const Sound& sound, const std::string& name)
    : present(sound, std::make_shared<SoundFile>(SoundFile{name, sound}), nullptr) {}

void History::Take(const Sound& sound, const GestureMoment& moment) {
    const Sound before = Present();
    if (sound == before)
        return;
    Version after(sound, present.file, &present);
    if (!Grows(before, sound, moment))
        return Push(Difference(before, sound), after, moment, true);
    Step& step = steps.back();
    step.after = present = std::move(after);
    step.last = moment;
    step.name = Difference(step.before.Get(), sound);
    // The gesture has returned to its start, so no step remains.
    if (step.name.empty()) {
        steps.pop_back();
        place--;
    }
}

/// Returns true if the change belongs to the last step.
bool History::Grows(const Sound& from, const Sound& to, const GestureMoment& moment) const {
    if (place == 0 || CanRedo() || !steps.back().open || steps.back().last.number != moment.number)
        return false;
    const Step& step = steps.back();
    const auto since = moment.time - step.last.time;
    if (step.held)
        return moment.held || since < kDelay;
    return since < kPause && Difference(from, to) == step.name;
}

void History::Push(const std::string& name, const Version& after, const GestureMoment& moment,
                   bool open) {
    steps.erase(steps.begin() + static_cast<std::ptrdiff_t>(place), steps.end());
    End();
    steps.push_back({name, std::exchange(present, after), after, moment, moment.held, open});
    place = steps.size();
}

void History::Load(const Sound& sound, const std::string& name, const std::string& step) {
    if (sound == Present() && name == File().name)
        return;
    auto file = std::make_shared<SoundFile>(SoundFile{name, sound});
    Push(step, Version(sound, std::move(file), &present), {}, false);
}

void History::Do(const Sound& sound, const std::string& step) {
    if (sound != Present())
        Push(step, Version(sound, present.file, &present), {}, false);
}

void History::Play(const Sound& sound) {
    present = Version(sound, present.file, &present);
    if (place == 0 || CanRedo() || !steps.back().open)
        return;
    // The step of a gesture under way must contain only the gesture's own changes, so the macros
    // move at both ends of the step.
    Step& step = steps.back();
    const Version from = step.before, to = step.after;
    for (Version* version : {&step.before, &step.after}) {
        Sound moved = version->Get();
        KeepPlayed(moved, *from.function, *to.function, sound.function);
        *version = Version(moved, version->file, &present);
    }
}

void History::Rename(const std::string& from, const std::string& to) {
    // The sounds share their parts afterwards as before.
    std::map<Part<Sound>, Part<Sound>> renamed;
    const auto rename = [&](Version& version) {
        if (version.file != present.file || version.rest->info.name != from)
            return;
        Part<Sound>& next = renamed[version.rest];
        if (!next) {
            Sound others = *version.rest;
            others.info.name = to;
            next = std::make_shared<const Sound>(std::move(others));
        }
        version.rest = next;
    };
    for (Step& step : steps) {
        rename(step.before);
        rename(step.after);
    }
    rename(present);
}

void History::End() {
    if (place > 0)
        steps[place - 1].open = false;
}

std::vector<Function> History::Functions() const {
    std::vector<Function> functions = {*present.function};
    for (std::size_t i = place; i-- > 0;)
        functions.push_back(*steps[i].before.function);
    return functions;
}

Sound History::Undo() {
    place--;
    steps[place].open = false;
    return Move(steps[place].after, steps[place].before);
}

Sound History::Redo() {
    place++;
    return Move(steps[place - 1].before, steps[place - 1].after);
}

std::vector<History::LeftSound> History::Left() const {
    std::vector<LeftSound> left;
    for (std::size_t i = place; i-- > 0;) {
        const Version& before = steps[i].before;
        if (before.file != steps[i].after.file && !before.givenUp &&
            !before.file->Holds(before.Get()))
            left.push_back({i, before.file->name});
    }
    return left;
}

Sound History::UndoTo(std::size_t wanted) {
    while (place > wanted)
        Undo();
    return Present();
}

Sound History::Move(const Version& from, const Version& to) {
    Sound next = to.Get();
    KeepPlayed(next, *from.function, *to.function, *present.function);
    present = Version(next, to.file, &to);
    return next;
}

} // namespace vexa
