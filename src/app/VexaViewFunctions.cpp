// SPDX-License-Identifier: GPL-3.0-or-later
// The sources of the main view's plane function: an expression, a sample or a picture.
#include "app/Alerts.h"
#include "app/ExpressionFeedback.h"
#include "app/MessageCodes.h"
#include "app/VexaView.h"
#include "documents/DocumentKind.h"
#include "kits/interface/Control.h"
#include "views/R2RFView.h"

#include <cstdio>
#include <optional>

namespace vexa {

namespace {

constexpr const char* kNotPlayable =
    "The formula cannot be played: mend it in its field. What played before plays on.";

/// Disables the field during its lifetime.
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

/// Installs the function. If that fails, shows the error and keeps the previous function. A sample
/// whose frequency is none plays all the same; its field is marked.
bool VexaView::Install(const Function& function) {
    const bool isExpression = function.kind == FunctionKind::Expression;
    feedback->EndTyping();
    BTextControl& field = Field(FunctionField::Expression);
    std::optional<Pause> pause;
    if (isExpression)
        pause.emplace(field);
    const FunctionReport report = instrument.SetFunction(function);
    const bool installed = MarkInstalled(function, report);
    sourceRemark.clear();
    if (!installed) {
        ShowError(report, isExpression ? kNotPlayable : "");
    } else if (IsNews(report, function)) {
        Print(report);
        if (!isExpression)
            sourceRemark = report.text;
    }
    return installed;
}

/// Marks an expression that could not be installed, and shows what is said about it. Returns
/// whether the function was installed.
bool VexaView::MarkInstalled(const Function& function, const FunctionReport& report) {
    const bool installed = Plays(report);
    slip.reset();
    if (installed)
        fileMissing = false;
    if (function.kind == FunctionKind::Expression)
        installed ? feedback->Accept(report.text) : feedback->Refuse(report.text);
    return installed;
}

/// Adapts the fields to the kind of the function.
void VexaView::ShowKind() {
    Field(FunctionField::Frequency).SetEnabled(SampleMode());
    if (Kind() == FunctionKind::Expression)
        return ShowSource();
    Field(FunctionField::Expression).SetText("");
    feedback->Accept("");
    slip.reset();
    ShowSource();
}

/// Returns why the file of the sample or picture does not play; empty if it does.
std::string VexaView::FaultOfSource() const {
    if (!fileMissing)
        return "";
    const auto file = FileOf(instrument.State().function, folders);
    std::error_code ignored;
    return file && std::filesystem::is_regular_file(*file, ignored) ? "unreadable" : "missing";
}

/// Shows the file's name in the expression's field as long as that is empty.
void VexaView::ShowSource() {
    BTextControl& expression = Field(FunctionField::Expression);
    std::string text;
    if (namesSource && Kind() != FunctionKind::Expression) {
        const std::filesystem::path file = SourceOf(instrument.State().function);
        text = (SampleMode() ? "sample " : "picture ") + file.filename().string();
        if (const std::string fault = FaultOfSource(); !fault.empty())
            text += " (" + fault + ")";
        expression.SetToolTip(("The terrain is the " + text + ". What is typed here is " +
                               "a formula that takes its place")
                                  .c_str());
    }
    expression.SetPlaceholder(text);
}

bool VexaView::Compile(const char* expression) {
    Function function = ConstructFunction();
    if (function.kind != FunctionKind::Expression ||
        instrument.State().function.expression != expression)
        function.author = instrument.User();
    // Of several refused texts in a row, the first one has taken the place of a good one.
    const std::optional<std::string> before =
        feedback->IsRefused() ? slip : instrument.State().function.expression;
    function.kind = FunctionKind::Expression;
    function.expression = expression;
    const bool installed = Install(function);
    if (!installed)
        slip = before;
    // While the expression is wrong, a sample or picture that sounds remains the function to save.
    if (installed || Kind() == FunctionKind::Expression)
        instrument.Adopt(function);
    if (Kind() == FunctionKind::Expression)
        ShowKind();
    return installed;
}

/// Called for Escape in the expression's field. If its text was entered there and refused, restores
/// the text before and returns true.
bool VexaView::TakeBackSlip() {
    if (!slip)
        return false;
    const std::string before = *slip;
    if (Kind() == FunctionKind::Expression)
        EnterNow(FunctionField::Expression, kExpressionCode, before);
    else
        ShowKind();
    return true;
}

bool VexaView::LoadSample(const char* path) {
    NoteSteps();
    const Busy now(busy);
    Function function = ConstructFunction();
    function.kind = FunctionKind::Sample;
    function.sampleFile = folders.NameOf("samples", path);
    function.author = instrument.User();
    if (!Install(function))
        return false;
    ShowKind();
    fields.MarkNumber(FunctionField::Frequency);
    NoteStep("sample " + std::filesystem::path(path).stem().string());
    TellOfSource();
    return true;
}

bool VexaView::LoadPicture(const char* path) {
    NoteSteps();
    const Busy now(busy);
    Function function = ConstructFunction();
    function.kind = FunctionKind::Picture;
    function.pictureFile = folders.NameOf("pictures", path);
    function.author = instrument.User();
    if (!Install(function))
        return false;
    ShowKind();
    NoteStep("picture " + std::filesystem::path(path).stem().string());
    return true;
}

void VexaView::OpenSample(const std::string& path) {
    const bool loaded = KindOf(path) == DocumentKind::Picture ? LoadPicture(path.c_str())
                                                              : LoadSample(path.c_str());
    if (loaded)
        Remember(path);
}

void VexaView::TakeSampleFrequency() {
    fields.MarkNumber(FunctionField::Frequency);
    Function function = instrument.State().function;
    if (function.frequency != fields.TextOf(FunctionField::Frequency))
        function.author = instrument.User();
    instrument.Adopt(function);
    // A text that is no frequency leaves the spiral as it is; the picture is shown all the same.
    instrument.SetSampleFrequency(fields.TextOf(FunctionField::Frequency));
    plane->SetupBitmap();
    plane->Invalidate();
}

} // namespace vexa
