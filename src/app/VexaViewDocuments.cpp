// SPDX-License-Identifier: GPL-3.0-or-later
// Function and sound documents into the main view, and out of it.
#include "app/Alerts.h"
#include "app/ExpressionFeedback.h"
#include "app/MessageCodes.h"
#include "app/PlaneControls.h"
#include "app/VexaView.h"
#include "documents/DocumentKind.h"
#include "documents/FunctionDocument.h"
#include "documents/SoundDocument.h"
#include "functions/FunctionCost.h"
#include "instrument/DefaultSound.h"
#include "instrument/InitialSound.h"
#include "instrument/PlayableFormula.h"
#include "instrument/Programs.h"
#include "kits/interface/Alert.h"
#include "kits/interface/Control.h"
#include "kits/interface/Menu.h"
#include "kits/storage/Digest.h"
#include "kits/storage/FileName.h"
#include "kits/storage/UserFolders.h"
#include "views/EnvView.h"
#include "views/R2RFView.h"

#include <cstdio>
#include <utility>

namespace vexa {

namespace {

/// Prints the warnings on standard error.
void Warn(const Warnings& warnings) {
    for (const kits::Error& warning : warnings)
        std::fprintf(stderr, "vexa: warning: %s\n", warning.text.c_str());
}

/// Shows an alert that does not block, so that what could be loaded is heard meanwhile.
void ShowWarning(const std::string& text, const std::string& details) {
    auto* alert = new BAlert("Warning", text.c_str(), "Ok", nullptr, nullptr, B_WIDTH_AS_USUAL,
                             B_WARNING_ALERT);
    alert->SetDetails(details);
    alert->Show();
}

/// Prints the warnings and shows them in one alert.
void Tell(const std::filesystem::path& path, const Warnings& warnings) {
    Warn(warnings);
    if (warnings.empty())
        return;
    std::string lines;
    for (const kits::Error& warning : warnings)
        lines += (lines.empty() ? "" : "\n") + warning.text;
    ShowWarning("Not all of \"" + path.filename().string() + "\" was understood.", lines);
}

enum class Answer { Cancel, Discard, Save };

/// Asks whether to save. `names`, if not empty, are the sounds concerned, one per line.
Answer AskToSave(const std::string& text, const std::string& names = "") {
    auto* alert = new BAlert("Unsaved changes", text.c_str(), "Cancel", "Discard", "Save",
                             B_WIDTH_AS_USUAL, B_WARNING_ALERT);
    alert->SetDetails(names);
    return static_cast<Answer>(alert->Go());
}

} // namespace

void VexaView::EnterNow(FieldId field, uint32 code, const std::string& text) {
    Field(field).SetText(text.c_str());
    BMessage message(code);
    MessageReceived(&message);
}

/// Applies the typed text of the field, as if the user had confirmed it.
void VexaView::Enter(BTextControl& field) {
    field.SetText(std::string(field.Text()).c_str());
    BMessage message = *field.Message();
    MessageReceived(&message);
}

/// Applies the typed text of all fields.
void VexaView::EnterTyped() {
    for (BTextControl* field : fields) {
        if (field->IsEdited())
            Enter(*field);
    }
}

void VexaView::EnterElsewhere() {
    if (enterElsewhere && busy == 0)
        enterElsewhere();
}

/// Enters a valid, unconfirmed expression, and what is typed elsewhere, before another sound
/// replaces it, so that Undo can restore it and closing asks about it.
void VexaView::KeepTyped() {
    EnterElsewhere();
    BTextControl& field = Field(FunctionField::Expression);
    if (field.IsEdited() && ReadPlayable(field.Text()).formula)
        Enter(field);
}

Function VexaView::ConstructFunction() const {
    Function function = instrument.State().function;
    for (const FunctionFieldRow& row : FunctionFields())
        row.text(function) = fields.TextOf(row.id);
    return function;
}

Sound VexaView::ConstructSound() const {
    Sound sound = instrument.State();
    sound.function = ConstructFunction();
    for (std::size_t i = 0; i < Parameters().size(); i++)
        sound.texts[i] = fields.TextOf(Parameters()[i].id);
    for (std::size_t i = 0; i < envelopes.size(); i++)
        sound.envelopes[i] = envelopes[i]->Points();
    return sound;
}

Sound VexaView::SoundToKeep() const {
    if (busy > 0)
        return Steps().Present();
    Sound sound = ConstructSound();
    const BTextControl& field = Field(FunctionField::Expression);
    if (field.IsEdited() && !ReadPlayable(field.Text()).formula)
        sound.function.expression = field.Confirmed();
    return sound;
}

/// Returns the sound of the confirmed texts and the envelopes, without unconfirmed typing.
Sound VexaView::ConfirmedSound() const {
    Sound sound = instrument.State();
    for (std::size_t i = 0; i < envelopes.size(); i++)
        sound.envelopes[i] = std::as_const(*envelopes[i]).Points();
    planeControls->GetConfirmed(sound.function);
    return sound;
}

/// Shows the function in all controls except the expression's field.
void VexaView::PutFunction(const Function& function) {
    planeControls->Put(function);
    if (function.kind == FunctionKind::Sample &&
        fields.Put(FunctionField::Frequency, function.frequency))
        fields.MarkNumber(FunctionField::Frequency);
}

/// Shows the sound in all controls except the expression's field.
void VexaView::PutSound(const Sound& sound) {
    PutFunction(sound.function);
    for (std::size_t i = 0; i < Parameters().size(); i++) {
        const Parameter& row = Parameters()[i];
        if (fields.Put(row.id, sound.texts[i]))
            fields.MarkNumber(row.id, row.controller);
    }
    for (std::size_t i = 0; i < envelopes.size(); i++)
        envelopes[i]->SetPoints(sound.envelopes[i]);
    ShowVoiceLimit();
}

void VexaView::InterpretFunction(const Function& function) {
    const bool isExpression = function.kind == FunctionKind::Expression;
    if (isExpression)
        Field(FunctionField::Expression).SetText(function.expression.c_str());
    instrument.SetMacros(function);
    fileMissing = !Install(function) && !isExpression;
    if (fileMissing)
        instrument.Silence();
    // The state keeps the file's name even if installing failed, because the file may be missing
    // only for a while, and saving must not lose its name.
    instrument.Adopt(function);
    ShowKind();
    PutFunction(function);
}

void VexaView::InterpretSound(const Sound& sound) {
    InterpretFunction(sound.function);
    instrument.LoadRest(sound);
    PutSound(sound);
}

/// Loads a sound as one step, which is named `step`. The sound then belongs to a file called
/// `name`.
void VexaView::LoadAs(const Sound& sound, const std::string& name, const std::string& step) {
    KeepTyped();
    NoteSteps();
    const Busy now(busy);
    InterpretSound(sound);
    Steps().Load(ConfirmedSound(), name, step);
    notedAt = Edits();
    TakeAsSaved();
    ChooseUser();
}

/// Returns the digest of the file's content; empty if it cannot be read.
std::string VexaView::DigestOf(const std::filesystem::path& path) {
    const kits::Result<std::string> digest = kits::DigestOfFile(path);
    return digest ? *digest : "";
}

/// Loads the sound of a file, whose usual path this is and whose digest was taken before the sound
/// was read: whatever changes the file after that counts as a change made elsewhere.
void VexaView::LoadFrom(const std::filesystem::path& path, const std::string& digest,
                        const Sound& sound) {
    const std::string name = path.stem().string();
    LoadAs(sound, name, "sound " + name);
    Steps().File().path = path;
    Steps().File().digest = digest;
}

/// Shows what is wrong with the file of a sample that plays. Program changes do not call it.
void VexaView::TellOfSource() {
    if (!sourceRemark.empty())
        ShowWarning("The sample \"" + SourceOf(instrument.State().function) +
                        "\" plays, but something is wrong with it.",
                    std::exchange(sourceRemark, ""));
}

void VexaView::ShowVoiceLimit() {
    if (BMenuItem* item = voicesMenu->FindItem(VoicesCode(instrument.VoiceLimit())))
        item->SetMarked(true);
}

bool VexaView::LoadFunction(const std::filesystem::path& path) {
    Warnings warnings;
    const auto function = ReadFunction(path, ConstructFunction(), &warnings);
    Tell(path, warnings);
    if (function) {
        NoteSteps();
        const Busy now(busy);
        InterpretFunction(*function);
        NoteStep("function " + path.stem().string());
        TellOfSource();
    } else {
        ShowError(function.Fault());
    }
    return bool(function);
}

bool VexaView::LoadSound(const std::filesystem::path& path) {
    Warnings warnings;
    const std::string digest = DigestOf(path);
    const auto sound = ReadSound(path, &warnings);
    Tell(path, warnings);
    if (sound) {
        programFault.clear();
        // Use the usual path of the file, as `path` may be relative or lead through links.
        LoadFrom(folders.Find("sounds", folders.NameOf("sounds", path)), digest, *sound);
        TellOfSource();
    } else {
        ShowError(sound.Fault());
    }
    return bool(sound);
}

/// Loads the sound of the last program change. As nobody can answer an alert while playing, a
/// failure is shown in the logo bar and on standard error, and the previous sound plays on.
void VexaView::LoadProgram() {
    const std::optional<int32> number = programs.Take();
    if (!number)
        return;
    Warnings warnings;
    const auto path = FindProgram(folders, *number);
    const std::string digest = path ? DigestOf(*path) : "";
    const auto sound =
        path ? ReadWhole(*path, instrument, warnings) : kits::Result<Sound>(path.Fault());
    Warn(warnings);
    programFault.clear();
    if (!sound) {
        programFault = path ? path->stem().string() + " is not loaded" : sound.Fault().text;
        Print(sound.Fault());
        return;
    }
    LoadFrom(*path, digest, *sound);
}

void VexaView::Open(const std::filesystem::path& path) {
    switch (KindOf(path)) {
    case DocumentKind::Sound:
        OpenSound(path);
        break;
    case DocumentKind::Function:
        OpenFunction(path);
        break;
    case DocumentKind::Sample:
    case DocumentKind::Picture:
        OpenSample(path);
        break;
    }
}

void VexaView::LoadDefaultSound() {
    const std::string file = std::string(kDefaultSoundName) + kits::kDocumentEnding;
    const std::string digest = DigestOf(folders.Find("sounds", file));
    const DefaultSound read = ReadDefaultSound(folders);
    if (!read.fault.empty()) {
        Print({read.fault});
        ShowWarning("The sound \"" + std::string(kDefaultSoundName) + "\" could not be read.",
                    read.fault);
    }
    Tell(read.path, read.warnings);
    if (read.path.empty())
        LoadAs(read.sound, kInitialSoundName, std::string("sound ") + kInitialSoundName);
    else
        LoadFrom(read.path, digest, read.sound);
    TellOfSource();
    BeginHistory();
}

void VexaView::SaveFunction(const std::string& name) {
    FollowMacros();
    Save(name, "functions", [this](const std::filesystem::path& path) {
        return WriteFunction(path, ConstructFunction());
    });
}

void VexaView::SaveSound(const std::string& name) {
    EnterElsewhere();
    FollowMacros();
    const std::string stem = std::filesystem::path(name).stem().string();
    // Saved as another file, a sound gets that file's name in place of the one that it came with,
    // but keeps a name that the person has entered since.
    const std::optional<std::string> former =
        stem == SoundName() ? std::nullopt : Steps().File().saved.info.name;
    std::string digest;
    const auto write = [&](const std::filesystem::path& path) {
        Sound sound = ConstructSound();
        if (former && sound.info.name == former)
            sound.info.name = stem;
        digest = kits::Digest(SoundText(sound));
        return WriteSound(path, sound);
    };
    const std::function<void()> then = std::exchange(afterSaving, nullptr);
    if (!Save(name, "sounds", write))
        return;
    const std::filesystem::path path = folders.Own("sounds") / name;
    Steps().File().name = stem;
    Steps().File().path = path;
    Steps().File().digest = digest;
    if (former) {
        NoteSteps();
        Steps().Rename(*former, stem);
        const Sound renamed = Steps().Present();
        instrument.Describe(renamed.author, renamed.info);
        notedAt = Edits();
    }
    Remember(path);
    TakeAsSaved();
    slots.ShareSaved();
    if (then)
        then();
}

void VexaView::SaveAgain(const std::function<void()>& then) {
    const std::filesystem::path path = Steps().File().path;
    if (path.empty() || !folders.IsOwn("sounds", path)) {
        BMessage show(kSaveSoundCode);
        MessageReceived(&show);
        afterSaving = then;
        return;
    }
    if (!MaySave() || !MayReplaceOwn())
        return;
    afterSaving = then;
    SaveSound(path.filename().string());
}

/// Loads the sound unless the user wants to keep the present one, and then calls `then`. If the
/// user chooses to save first, both happen once that is done.
void VexaView::OpenSound(const std::string& path, const std::function<void()>& then) {
    const auto load = [this, path, then] {
        // What has been typed is given up too.
        KeepTyped();
        NoteSteps();
        Steps().GiveUp(true);
        if (LoadSound(path)) {
            Remember(path);
            then();
        } else {
            Steps().GiveUp(false);
        }
    };
    if (MayGiveUp(load))
        load();
}

void VexaView::OpenFunction(const std::string& path) {
    if (LoadFunction(path))
        Remember(path);
}

void VexaView::DescribeSound(const std::string& author, const SoundInfo& info,
                             const std::string& step) {
    FollowMacros();
    const Busy now(busy);
    if (author != SoundAuthor())
        Steps().File().author = author;
    instrument.Describe(author, info);
    NoteStep(step);
    ChooseUser();
}

/// Sets the author of later edits: the one that the person has entered for the present sound, or
/// else the one of the settings.
void VexaView::ChooseUser() {
    const std::optional<std::string>& entered = Steps().File().author;
    instrument.SetUser(entered && SoundAuthor() == *entered ? *entered : UsualAuthor());
}

std::string VexaView::UsualAuthor() const {
    const std::string author = settings->Get(kAuthorSetting);
    return author.empty() ? kDefaultAuthor : author;
}

void VexaView::NameSound(const std::string& name) {
    Steps().File().name = name;
    Steps().File().path.clear();
}

/// Returns a count that grows with each possible change of ConstructSound's result.
uint64 VexaView::Edits() const {
    uint64 edits = instrument.Changes() + fields.Changes();
    for (const EnvView* envelope : envelopes)
        edits += envelope->Changes();
    return edits;
}

std::string VexaView::SavingRemark() const {
    const std::string file =
        (SampleMode() ? "sample \"" : "picture \"") + SourceOf(instrument.State().function) + '"';
    if (fileMissing)
        return "The " + file + " is " + FaultOfSource() +
               ", so that nothing sounds. Its name will be saved.";
    if (!feedback->IsRefused())
        return "";
    return Kind() != FunctionKind::Expression
               ? "The expression is wrong and will not be saved: the " + file +
                     ", which sounds, will."
               : "The expression is wrong. It will be saved as it stands, not the function "
                 "that sounds.";
}

bool VexaView::MayGiveUp(const std::function<void()>& then) {
    EnterElsewhere();
    FollowMacros();
    LookForFiles();
    if (!Changed())
        return true;
    const Answer answer = AskToSave(
        Steps().File().gone ? "The file of the sound \"" + SoundName() + "\" has been deleted."
                            : "The sound \"" + SoundName() + "\" has changes that are not saved.");
    if (answer == Answer::Save)
        SaveAgain(then);
    return answer == Answer::Discard;
}

/// Asks the same for the sounds of the present slot that were left for others. To save, shows the
/// last one, as Undo would, and saves it; `then` has to ask about the rest anew.
bool VexaView::MayGiveUpLeft(const std::function<void()>& then) {
    const std::vector<History::LeftSound> left = Steps().Left();
    if (left.empty())
        return true;
    std::string names;
    for (const History::LeftSound& sound : left)
        names += (names.empty() ? "" : "\n") + sound.name;
    const Answer answer =
        AskToSave(left.size() == 1 ? "A sound that you have left has changes that are not saved:"
                                   : "Sounds that you have left have changes that are not saved:",
                  names);
    if (answer == Answer::Save) {
        Become(Steps().UndoTo(left.front().place));
        SaveAgain(then);
    }
    return answer == Answer::Discard;
}

std::filesystem::path VexaView::SoundPath() const {
    if (!Steps().File().path.empty())
        return Steps().File().path;
    return SoundName().empty() ? "" : folders.Find("sounds", SoundName() + ".xml");
}

std::string VexaView::Caption() const {
    // A host keeps a sound without its file, so in a plug-in the sound's own name stands for it.
    const std::optional<std::string>& own = instrument.State().info.name;
    std::string caption = (plugin && own ? *own : SoundName()) + (Changed() ? " *" : "");
    if (slots.Other())
        caption = std::string{PresentSlot()} + ": " + caption;
    if (graph && !graph->IsConnected())
        caption += caption.empty() ? "no sound" : "  (no audio device: no sound)";
    if (!programFault.empty())
        caption += "  (" + programFault + ")";
    const int voices = VoicesOf(ShownFunction().Source().Cost());
    if (voices < kMostVoices)
        caption += "  (about " + std::to_string(voices) + (voices == 1 ? " voice)" : " voices)");
    return caption;
}

bool VexaView::Save(const std::string& name, const char* folder, const Writer& write) {
    if (const auto checked = kits::CheckFileName(name); !checked) {
        ErrorAlert(checked.Fault().text);
        return false;
    }
    const std::filesystem::path own = folders.Own(folder);
    // The user may have removed the folder since the start.
    kits::Result<void> saved = kits::MakeUserFolder(own);
    if (saved)
        saved = write(own / name);
    if (saved)
        return true;
    ShowError(saved.Fault());
    return false;
}

} // namespace vexa
