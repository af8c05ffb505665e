// SPDX-License-Identifier: GPL-3.0-or-later
// The main view's undo and redo, and the other operations that replace the whole sound.
#include "app/VexaView.h"
#include "instrument/InitialSound.h"
#include "instrument/Mutation.h"
#include "instrument/SoundParts.h"
#include "kits/interface/Control.h"
#include "kits/interface/Gesture.h"

#include <random>
#include <utility>

namespace vexa {

namespace {

/// Long enough for the media thread to have taken over the whole new sound.
constexpr int kPulsesOfJoining = 3;

} // namespace

void VexaView::BeginHistory() {
    SoundFile file = Steps().File();
    // A changed sound is written to a file only at the user's request.
    if (Changed())
        file.path.clear();
    slots[slot].emplace(ConfirmedSound(), file.name);
    Steps().File() = std::move(file);
    slots[1 - slot].reset();
    notedAt = Edits();
    TakeAsSaved();
}

void VexaView::NoteSteps() {
    const uint64 edits = Edits();
    if (busy > 0 || notedAt == edits)
        return;
    notedAt = edits;
    const kits::Gesture gesture = kits::PresentGesture();
    Steps().Take(ConfirmedSound(),
                 {gesture.number, gesture.held, std::chrono::steady_clock::now()});
}

/// Makes one step, named `name`, of all changes since NoteSteps.
void VexaView::NoteStep(const std::string& name) {
    Steps().Do(ConfirmedSound(), name);
    notedAt = Edits();
}

/// Takes over the macros that controllers have moved, which History counts as playing, not as a
/// step. With a plug-in only calls NoteSteps: its host may have moved them, and the host's
/// automation does not belong in the document.
void VexaView::FollowMacros() {
    NoteSteps();
    if (plugin)
        return;
    const uint64 before = instrument.Changes();
    instrument.FollowMacros();
    if (busy > 0 || instrument.Changes() == before)
        return;
    Steps().Play(ConfirmedSound());
    notedAt = Edits();
}

/// Replaces the present sound by `next`, which is in the steps already or will be. Parts that both
/// share play on, and sounding notes change over without a jump.
void VexaView::Become(const Sound& next) {
    const Busy now(busy);
    Playing().renderer.SetJoins(true);
    pulsesOfJoining = kPulsesOfJoining;
    EndTyping();
    const Function before = instrument.State().function;
    const Function& function = next.function;
    const bool isExpression = function.kind == FunctionKind::Expression;
    const FunctionReport report = instrument.Change(ConfirmedSound(), next);
    // The state takes the function even if it was wrong or its file was missing.
    instrument.Adopt(function);
    if (!HaveOneSource(before, function)) {
        // A wrong expression needs no alert: the user has seen its fault before.
        if (!MarkInstalled(function, report) && !isExpression) {
            fileMissing = true;
            ShowError(report);
        }
    }
    if (isExpression)
        Put(FunctionField::Expression, function.expression);
    ShowKind();
    PutSound(next);
    RestorePlane();
    notedAt = Edits();
    ChooseUser();
}

/// Counts down the pulses of joining.
void VexaView::EndJoining() {
    if (pulsesOfJoining > 0 && --pulsesOfJoining == 0)
        Playing().renderer.SetJoins(false);
}

void VexaView::Undo() {
    FollowMacros();
    if (CanUndo())
        Become(Steps().Undo());
}

void VexaView::Redo() {
    FollowMacros();
    if (CanRedo())
        Become(Steps().Redo());
}

void VexaView::InitialSound() {
    if (!plugin && !MayGiveUp([this] { InitialSound(); }))
        return;
    KeepTyped();
    FollowMacros();
    Steps().GiveUp(true);
    const Sound initial = vexa::InitialSound();
    Become(initial);
    Steps().Load(initial, kInitialSoundName, "initial sound");
    TakeAsSaved();
}

void VexaView::MutateSound() {
    MutateSound((uint64{std::random_device()()} << 32) + std::random_device()());
}

void VexaView::MutateSound(uint64 seed) {
    KeepTyped();
    FollowMacros();
    const Sound before = ConfirmedSound();
    Sound next = Mutate(before, playing, seed);
    if (next == before)
        return;
    next.author = next.function.author = instrument.User();
    Become(next);
    NoteStep("mutation");
}

/// Ends the gesture. If the other slot is empty, copies the present sound into it, with its file.
void VexaView::OpenOtherSlot() {
    FollowMacros();
    Steps().End();
    std::optional<History>& other = slots[1 - slot];
    if (other)
        return;
    other.emplace(ConfirmedSound(), "");
    other->File() = Steps().File();
    // Losing the copy needs no question: the original is still in its slot.
    other->GiveUp(true);
}

void VexaView::SwitchAB() {
    KeepTyped();
    OpenOtherSlot();
    slot = 1 - slot;
    comparedAt.reset();
    Become(Steps().Present());
}

void VexaView::CopyToOther() {
    OpenOtherSlot();
    History& other = *slots[1 - slot];
    const Sound sound = ConfirmedSound();
    if (other.Present() == sound)
        return;
    other.Load(sound, SoundName(), std::string("copy of ") + PresentSlot());
    other.File() = Steps().File();
    other.GiveUp(true);
}

/// Returns whether the file has what the other slot has read from it or written to it, and the
/// present one has not.
bool VexaView::OtherHas(const std::filesystem::path& path) const {
    const std::optional<History>& other = slots[1 - slot];
    if (!other || other->File().path != path)
        return false;
    const std::string digest = DigestOf(path);
    const SoundFile& own = Steps().File();
    return other->File().digest == digest && !(own.path == path && own.digest == digest);
}

bool VexaView::MayGiveUpAll(const std::function<void()>& then) {
    if (!MayGiveUp(then) || !MayGiveUpLeft(then))
        return false;
    const std::optional<History>& other = slots[1 - slot];
    if (!other)
        return true;
    // The changes of a sound that both slots have are saved or given up by now.
    const Sound sound = other->Present();
    const SoundFile& file = other->File();
    const bool saved = file.Holds(sound) || file.Match(sound, Steps().Present());
    if (saved && other->Left().empty())
        return true;
    SwitchAB();
    return (saved || MayGiveUp(then)) && MayGiveUpLeft(then);
}

} // namespace vexa
