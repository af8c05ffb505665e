#include "documents/FunctionDocument.h"

#include "documents/DocumentKind.h"

namespace vexa {

namespace {

std::unique_ptr<MXFragment> ConstructPoint(const char* name, const Function::Point& point) {
    auto element = std::make_unique<MXFragment>(MX_ELEMENT, name);
    element->Adopt(ConstructTextElement("x", point.x));
    element->Adopt(ConstructTextElement("y", point.y));
    return element;
}

void ReadPoint(const MXFragment* element, Function::Point& point, Warnings& warnings) {
    const ElementScope scope(element, {"x", "y"}, warnings);
    scope.ReadText("x", point.x);
    scope.ReadText("y", point.y);
}

} // namespace

const char* RootName(const Function& function) {
    return function.kind == FunctionKind::Expression ? kExpressionFunction : kSampleFunction;
}

std::unique_ptr<MXFragment> ConstructFunctionElement(const Function& function) {
    auto root = std::make_unique<MXFragment>(MX_ELEMENT, RootName(function));
    root->Adopt(ConstructInfoElement(function.author));
    if (function.kind == FunctionKind::Expression) {
        root->Adopt(ConstructTextElement("expression", function.expression));
    } else {
        root->Adopt(ConstructTextElement("samplefile", function.sampleFile));
        root->Adopt(ConstructTextElement("frequency", function.frequency));
    }
    MXFragment& display = root->Adopt(std::make_unique<MXFragment>(MX_ELEMENT, "display"));
    display.Adopt(ConstructTextElement("width", function.width));
    display.Adopt(ConstructPoint("linkfunction", function.linkFunction));
    display.Adopt(ConstructPoint("linkscreenrel", function.linkScreen));
    return root;
}

kits::Result<void> InterpretFunction(const MXFragment& root, Function& function,
                                     Warnings& warnings) {
    if (root.name == kExpressionFunction) {
        function.kind = FunctionKind::Expression;
        ElementScope(&root, {"expression"}, warnings).ReadText("expression", function.expression);
    } else if (root.name == kSampleFunction) {
        function.kind = FunctionKind::Sample;
        const ElementScope sample(&root, {"samplefile", "frequency"}, warnings);
        sample.ReadText("samplefile", function.sampleFile);
        sample.ReadText("frequency", function.frequency);
    } else {
        return kits::Error{kInvalidFunction};
    }
    const ElementScope parts(&root, {"info", "display"}, warnings);
    ElementScope(parts.Element("info"), {"author"}, warnings).ReadText("author", function.author);
    const ElementScope display(parts.Element("display"), {"width", "linkfunction", "linkscreenrel"},
                               warnings);
    display.ReadText("width", function.width);
    ReadPoint(display.Element("linkfunction"), function.linkFunction, warnings);
    ReadPoint(display.Element("linkscreenrel"), function.linkScreen, warnings);
    return {};
}

kits::Result<Function> ReadFunction(const std::filesystem::path& path, const Function& startFrom,
                                    ReadReport& report) {
    return ReadValue(path, startFrom, InterpretFunction, report);
}

kits::Result<void> WriteFunction(const std::filesystem::path& path, const Function& function) {
    MXDocument document = ConstructDocumentTemplate(RootName(function));
    document.root = ConstructFunctionElement(function);
    return SaveDocument(path, document, kFunctionFileType);
}

} // namespace vexa
