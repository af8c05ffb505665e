// Function and sound documents into the main view, and out of it.
#include "app/VexaView.h"
#include "documents/DocumentKind.h"
#include "documents/FunctionDocument.h"
#include "documents/FunctionSource.h"
#include "documents/SoundDocument.h"
#include "kits/interface/Control.h"
#include "kits/storage/FileName.h"
#include "views/EnvView.h"
#include "views/R2RFView.h"

#include <cstdio>

namespace vexa {

namespace {

void Print(const ReadReport& report) {
    for (const std::string& warning : report.warnings)
        std::fprintf(stderr, "vexa: warning: %s\n", warning.c_str());
    if (!report.reason.empty())
        std::fprintf(stderr, "vexa: %s\n", report.reason.c_str());
}

} // namespace

std::string VexaView::TextOf(std::string_view field) const {
    return Field(field)->Text();
}

/// As if the user had put the text into the field and confirmed it: it takes effect when the
/// message is handled.
void VexaView::SetAndInvoke(std::string_view field, const std::string& text) {
    BTextControl* control = Field(field);
    control->SetText(text.c_str());
    control->Invoke();
}

Function VexaView::ConstructFunction() const {
    Function function;
    function.kind = sampleMode ? FunctionKind::Sample : FunctionKind::Expression;
    function.author = functionAuthor;
    function.expression = TextOf("Fxy");
    function.sampleFile = sampleFile;
    function.frequency = TextOf("SFreq");
    function.width = TextOf("Sc");
    function.linkFunction = {TextOf("LFx"), TextOf("LFy")};
    function.linkScreen = {TextOf("LSx"), TextOf("LSy")};
    function.kept = functionKept;
    return function;
}

Sound VexaView::ConstructSound() const {
    Sound sound;
    sound.author = soundAuthor;
    sound.function = ConstructFunction();
    for (std::size_t i = 0; i < Parameters().size(); i++)
        sound.texts[i] = TextOf(Parameters()[i].field);
    for (std::size_t i = 0; i < envelopes.size(); i++)
        sound.envelopes[i] = envelopes[i]->Points();
    sound.kept = soundKept;
    return sound;
}

void VexaView::InterpretFunction(const Function& function) {
    if (function.kind == FunctionKind::Expression) {
        Field("Fxy")->SetText(function.expression.c_str());
        Compile(function.expression.c_str());
        Field("SFreq")->SetEnabled(false);
        sampleMode = false;
    } else {
        SetAndInvoke("SFreq", function.frequency);
        LoadSample(SamplePath(function, folders).c_str());
    }
    functionAuthor = function.author;
    functionKept = function.kept;
    SetAndInvoke("Sc", function.width);
    SetAndInvoke("LFx", function.linkFunction.x);
    SetAndInvoke("LFy", function.linkFunction.y);
    SetAndInvoke("LSx", function.linkScreen.x);
    SetAndInvoke("LSy", function.linkScreen.y);
}

void VexaView::InterpretSound(const Sound& sound) {
    InterpretFunction(sound.function);
    for (std::size_t i = 0; i < Parameters().size(); i++)
        SetAndInvoke(Parameters()[i].field, sound.texts[i]);
    for (std::size_t i = 0; i < envelopes.size(); i++)
        envelopes[i]->SetPoints(sound.envelopes[i]);
    soundAuthor = sound.author;
    soundKept = sound.kept;
}

bool VexaView::LoadFunction(const std::filesystem::path& path) {
    ReadReport report;
    const auto function = ReadFunction(path, ConstructFunction(), report);
    Print(report);
    if (function)
        InterpretFunction(*function);
    else
        ErrorAlert(function.Fault().text.c_str());
    return bool(function);
}

bool VexaView::LoadSound(const std::filesystem::path& path) {
    ReadReport report;
    const auto sound = ReadSound(path, report);
    Print(report);
    if (sound)
        InterpretSound(*sound);
    else
        ErrorAlert(sound.Fault().text.c_str());
    return bool(sound);
}

void VexaView::Open(const std::filesystem::path& path) {
    switch (KindOf(path)) {
    case DocumentKind::Sound:
        LoadSound(path);
        break;
    case DocumentKind::Function:
        LoadFunction(path);
        break;
    case DocumentKind::Sample:
        OpenSample(path);
        break;
    }
}

void VexaView::LoadDefaultSound() {
    ReadReport report;
    const auto sound = ReadSound(folders.Find("sounds", "default.xml"), report);
    Print(report);
    if (sound)
        InterpretSound(*sound);
}

void VexaView::SaveFunction(const std::string& name) {
    Save(name, "functions", [this](const std::filesystem::path& path) {
        return WriteFunction(path, ConstructFunction());
    });
}

void VexaView::SaveSound(const std::string& name) {
    Save(name, "sounds",
         [this](const std::filesystem::path& path) { return WriteSound(path, ConstructSound()); });
}

void VexaView::Save(const std::string& name, const char* folder, const Writer& write) {
    if (const auto checked = kits::CheckFileName(name); !checked) {
        ErrorAlert(checked.Fault().text.c_str());
        return;
    }
    const std::filesystem::path path = folders.Own(folder) / name;
    const kits::Result<void> saved = write(path);
    if (saved)
        return;
    std::fprintf(stderr, "vexa: %s\n", saved.Fault().text.c_str());
    ErrorAlert(("Could not save \n" + path.string()).c_str());
}

} // namespace vexa
