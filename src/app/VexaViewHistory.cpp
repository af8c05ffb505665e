// SPDX-License-Identifier: GPL-3.0-or-later
// The main view's undo and redo, and the other operations that replace the whole sound.
#include "app/Alerts.h"
#include "app/ExpressionFeedback.h"
#include "app/PlaneControls.h"
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
    slots.Begin(ConfirmedSound(), std::move(file));
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
    Engine().renderer.SetJoins(true);
    pulsesOfJoining = kPulsesOfJoining;
    feedback->EndTyping();
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
        fields.Put(FunctionField::Expression, function.expression);
    ShowKind();
    PutSound(next);
    planeControls->Restore(Steps());
    notedAt = Edits();
    ChooseUser();
}

/// Counts down the pulses of joining.
void VexaView::EndJoining() {
    if (pulsesOfJoining > 0 && --pulsesOfJoining == 0)
        Engine().renderer.SetJoins(false);
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
    Sound next = Mutate(before, feedback->Sounding(), seed);
    if (next == before)
        return;
    next.author = next.function.author = instrument.User();
    Become(next);
    NoteStep("mutation");
}

void VexaView::SwitchAB() {
    KeepTyped();
    FollowMacros();
    slots.Switch(ConfirmedSound());
    Become(Steps().Present());
}

void VexaView::CopyToOther() {
    FollowMacros();
    slots.CopyToOther(ConfirmedSound());
}

bool VexaView::MayGiveUpAll(const std::function<void()>& then) {
    if (!MayGiveUp(then) || !MayGiveUpLeft(then))
        return false;
    const History* const other = slots.Other();
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
