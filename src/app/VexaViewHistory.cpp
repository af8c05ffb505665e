// SPDX-License-Identifier: GPL-3.0-or-later
// The main view's undo and redo, and what else makes another sound of the present one as a whole.
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

/// Long enough for the media thread to have taken all up.
constexpr int kPulsesOfJoining = 3;

} // namespace

void VexaView::BeginHistory() {
    SoundFile file = Steps().File();
    // What the file does not hold is put there only when a person says so.
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

/// All that has changed since NoteSteps is one step, which is called so.
void VexaView::NoteStep(const std::string& name) {
    Steps().Do(ConfirmedSound(), name);
    notedAt = Edits();
}

/// Controllers that move macros are playing. Those of a plug-in its host may have moved, and what
/// the host does is not for the document.
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

/// The present sound becomes another one, which is known to the steps already or will be. What is
/// the same plays on, and notes that sound go over to it without a step.
void VexaView::Become(const Sound& next) {
    const Busy now(busy);
    Playing().renderer.SetJoins(true);
    pulsesOfJoining = kPulsesOfJoining;
    EndTyping();
    const Function before = instrument.State().function;
    const Function& function = next.function;
    const bool isExpression = function.kind == FunctionKind::Expression;
    const FunctionReport report = instrument.Change(ConfirmedSound(), next);
    // The function is taken as it was, also where it was wrong or could not be found.
    instrument.Adopt(function);
    if (!HaveOneSource(before, function)) {
        // The person knows of an expression that is wrong.
        if (!MarkInstalled(function, report) && !isExpression) {
            fileMissing = true;
            ShowError(report);
        }
    }
    if (isExpression)
        Put(FunctionField::Expression, function.expression);
    ShowKind();
    PutSound(next);
    notedAt = Edits();
}

/// At a pulse.
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

/// Both are of a file then.
void VexaView::OpenOtherSlot() {
    FollowMacros();
    Steps().End();
    std::optional<History>& other = slots[1 - slot];
    if (other)
        return;
    other.emplace(ConfirmedSound(), "");
    other->File() = Steps().File();
    // The slot that it comes from has it.
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
    other.File().saved = Steps().File().saved;
    other.File().path = Steps().File().path;
    other.File().title = Steps().File().title;
    other.GiveUp(true);
}

bool VexaView::MayGiveUpAll(const std::function<void()>& then) {
    if (!MayGiveUp(then) || !MayGiveUpLeft(then))
        return false;
    const std::optional<History>& other = slots[1 - slot];
    if (!other)
        return true;
    // What both have is saved or given up by now.
    const Sound sound = other->Present();
    const bool saved = AreAlike(sound, other->File().saved) || AreAlike(sound, Steps().Present());
    if (saved && other->Left().empty())
        return true;
    SwitchAB();
    return (saved || MayGiveUp(then)) && MayGiveUpLeft(then);
}

} // namespace vexa
