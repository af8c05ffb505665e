// Where the main view's plane function comes from: an expression or a sample.
#include "app/VexaView.h"
#include "functions/SampleFunction.h"
#include "kits/interface/Control.h"
#include "views/R2RFView.h"

#include <cstdio>

namespace vexa {

namespace {

/// While it lives, the field takes no text.
class Pause {
  public:
    explicit Pause(BTextControl& field) : field(field), focused(field.IsFocus()) {
        field.SetEnabled(false);
    }
    ~Pause() {
        field.SetEnabled(true);
        if (focused)
            field.MakeFocus();
    }
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;

  private:
    BTextControl& field;
    const bool focused;
};

} // namespace

bool VexaView::Compile(const char* expression) {
    BTextControl* field = Field("Fxy");
    const Pause pause(*field);
    CompileOutcome outcome = FunctionCompiler(folders).Compile(expression);
    if (outcome) {
        field->SetText(outcome.addon->Expression()->c_str());
        field->SetToolTip(nullptr);
        functions.Install(*std::move(outcome.addon));
        sampleMissing = false;
    }
    expressionWrong = !outcome;
    field->MarkWrong(!outcome);
    if (!outcome)
        ShowFailure(outcome);
    return bool(outcome);
}

/// What went wrong, in alerts; why and where, on standard error and in the field's tool tip.
void VexaView::ShowFailure(const CompileReport& report) {
    if (!report.details.empty())
        std::fprintf(stderr, "vexa: %s\n", report.details.c_str());
    Field("Fxy")->SetToolTip(report.details.c_str());
    for (const std::string& alert : report.alerts)
        ErrorAlert(alert, &alert == &report.alerts.back() ? report.details : "");
}

bool VexaView::LoadSample(const char* path) {
    const kits::Result<LoadedSample> sample = vexa::LoadSample(path);
    if (!sample) {
        std::fprintf(stderr, "vexa: %s\n", sample.Fault().text.c_str());
        ErrorAlert(kSampleAlert, sample.Fault().text);
        return false;
    }
    sampleFormat = sample->format;
    sampleFile = SampleFileName(sample->path, folders);
    functions.Install(SampleFunction());
    TakeSampleMode();
    sampleMissing = false;
    BTextControl* frequency = Field("SFreq");
    frequency->SetEnabled(true);
    frequency->Invoke();
    return true;
}

/// It is a sample, not an expression, that is the function.
void VexaView::TakeSampleMode() {
    sampleMode = true;
    BTextControl* expression = Field("Fxy");
    expression->SetText("");
    expression->SetToolTip(nullptr);
    expression->MarkWrong(false);
    expressionWrong = false;
}

void VexaView::OpenSample(const std::string& path) {
    LoadSample(path.c_str());
    functionAuthor = kDefaultAuthor;
}

} // namespace vexa
