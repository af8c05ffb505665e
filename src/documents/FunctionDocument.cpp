// SPDX-License-Identifier: GPL-3.0-or-later
#include "documents/FunctionDocument.h"

#include "documents/DocumentKind.h"
#include "documents/NumberDoubt.h"
#include "documents/SoundDocument.h"
#include "kits/support/NumberText.h"
#include "kits/support/Quoted.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace vexa {

namespace {

/// The known children of the elements of expressions and samples, and of pictures. A child that
/// only the other list has is unknown, and is kept: for example "picturefile" in a sample's
/// element.
constexpr std::string_view kKnown[] = {"info",      "expression", "samplefile",
                                       "frequency", "display",    "macros"};
constexpr std::string_view kKnownOfPicture[] = {"info", "picturefile", "display", "macros"};

std::span<const std::string_view> Known(FunctionKind kind) {
    if (kind == FunctionKind::Picture)
        return kKnownOfPicture;
    return kKnown;
}

/// Returns the names of the children that the reader of a function of that kind looks for.
std::vector<std::string_view> Read(FunctionKind kind) {
    switch (kind) {
    case FunctionKind::Expression:
        return {"info", "expression", "display", "macros"};
    case FunctionKind::Sample:
        return {"info", "samplefile", "frequency", "display", "macros"};
    case FunctionKind::Picture:
        break;
    }
    return {std::begin(kKnownOfPicture), std::end(kKnownOfPicture)};
}

/// Returns a scope for all the names that the element may have as children, and tells of others.
ElementScope WholeScope(const MXFragment* element, std::vector<std::string_view> names,
                        Remarks& remarks) {
    if (element)
        TellUnreadChildren(*element, names, remarks);
    return {element, std::move(names), remarks};
}

std::unique_ptr<MXFragment> ConstructPoint(const char* name, const Function::Point& point) {
    auto element = std::make_unique<MXFragment>(MX_ELEMENT, name);
    element->Adopt(ConstructTextElement("x", point.x));
    element->Adopt(ConstructTextElement("y", point.y));
    return element;
}

void ReadPoint(const MXFragment* element, Function::Point& point, Remarks& remarks) {
    const ElementScope scope = WholeScope(element, {"x", "y"}, remarks);
    scope.ReadNumber("x", point.x);
    scope.ReadNumber("y", point.y);
}

/// The names of the elements of a macro's value and of its controller.
struct MacroNames {
    const char* value;
    const char* controller;
};
constexpr std::array<MacroNames, kMacros> kMacroNames{
    {{"a", "actl"}, {"b", "bctl"}, {"c", "cctl"}, {"d", "dctl"}}};

/// Appends the element "macros" with the texts that differ from those of a new function; no element
/// if all texts are equal.
void AdoptMacros(MXFragment& root, const Function& function) {
    const Function fresh;
    if (function.macros == fresh.macros)
        return;
    MXFragment& element = root.Adopt(std::make_unique<MXFragment>(MX_ELEMENT, "macros"));
    for (std::size_t i = 0; i < kMacros; i++) {
        if (function.macros[i].value != fresh.macros[i].value)
            element.Adopt(ConstructTextElement(kMacroNames[i].value, function.macros[i].value));
        if (function.macros[i].controller != fresh.macros[i].controller)
            element.Adopt(
                ConstructTextElement(kMacroNames[i].controller, function.macros[i].controller));
    }
}

void ReadMacros(const MXFragment* element, Function& function, Remarks& remarks) {
    function.macros = Function().macros;
    std::vector<std::string_view> names;
    for (const MacroNames& row : kMacroNames)
        names.insert(names.end(), {row.value, row.controller});
    const ElementScope scope = WholeScope(element, names, remarks);
    for (std::size_t i = 0; i < kMacros; i++) {
        if (const MXFragment* value = scope.Optional(kMacroNames[i].value)) {
            std::string& text = function.macros[i].value;
            scope.ReadNumber(kMacroNames[i].value, text);
            const double number = kits::NumberOf(text);
            if (number < 0 || number > 1)
                remarks.Add(value->TextLeft(), Tag(value->name) + ": " + kits::Quoted(text) +
                                                   " counts as " + (number < 0 ? "0" : "1"));
        }
        if (scope.Optional(kMacroNames[i].controller))
            scope.ReadNumber(kMacroNames[i].controller, function.macros[i].controller, true);
    }
}

} // namespace

const FunctionElement* FunctionElementNamed(std::string_view name) {
    const auto* const row = std::ranges::find_if(
        kFunctionElements, [&](const FunctionElement& each) { return name == each.name; });
    return row == std::end(kFunctionElements) ? nullptr : row;
}

std::string FunctionTags() {
    std::vector<std::string_view> names;
    for (const FunctionElement& row : kFunctionElements)
        names.emplace_back(row.name);
    return Tags(names);
}

const char* RootName(const Function& function) {
    return std::ranges::find(kFunctionElements, function.kind, &FunctionElement::kind)->name;
}

std::unique_ptr<MXFragment> ConstructFunctionElement(const Function& function) {
    auto root = std::make_unique<MXFragment>(MX_ELEMENT, RootName(function));
    AdoptChildren(root->Adopt(ConstructInfoElement(function.author)), function.kept.info);
    switch (function.kind) {
    case FunctionKind::Expression:
        root->Adopt(ConstructTextElement("expression", function.expression));
        break;
    case FunctionKind::Sample:
        root->Adopt(ConstructTextElement("samplefile", function.sampleFile));
        root->Adopt(ConstructTextElement("frequency", function.frequency));
        break;
    case FunctionKind::Picture:
        root->Adopt(ConstructTextElement("picturefile", function.pictureFile));
        break;
    }
    MXFragment& display = root->Adopt(std::make_unique<MXFragment>(MX_ELEMENT, "display"));
    display.Adopt(ConstructTextElement("width", function.width));
    display.Adopt(ConstructPoint("linkfunction", function.linkFunction));
    display.Adopt(ConstructPoint("linkscreenrel", function.linkScreen));
    AdoptMacros(*root, function);
    AdoptChildren(*root, function.kept.root);
    return root;
}

kits::Result<void> InterpretFunction(const MXFragment& root, Function& function, Remarks& remarks) {
    const FunctionElement* const row = FunctionElementNamed(root.name);
    if (!row) {
        const std::string sound =
            root.name == kSoundElement ? "" : ", or " + Tag(kSoundElement) + " for a sound";
        return Refusal(kInvalidFunction, "(expected a root element " + FunctionTags() + sound +
                                             ", found " + Tag(root.name) + ")");
    }
    function.kind = row->kind;
    switch (function.kind) {
    case FunctionKind::Expression:
        ElementScope(&root, {"expression"}, remarks).ReadText("expression", function.expression);
        break;
    case FunctionKind::Sample: {
        const ElementScope sample(&root, {"samplefile", "frequency"}, remarks);
        sample.ReadText("samplefile", function.sampleFile);
        sample.ReadNumber("frequency", function.frequency, FrequencyDoubt);
        break;
    }
    case FunctionKind::Picture:
        ElementScope(&root, {"picturefile"}, remarks).ReadText("picturefile", function.pictureFile);
        break;
    }
    const ElementScope parts(&root, {"info", "display"}, remarks);
    function.kept.root = ChildrenBut(root, Known(function.kind));
    TellUnreadChildren(root, Read(function.kind), remarks);
    InterpretInfoElement(parts.Element("info"), function.author, function.kept, remarks);
    const ElementScope display =
        WholeScope(parts.Element("display"), {"width", "linkfunction", "linkscreenrel"}, remarks);
    display.ReadNumber("width", function.width, WidthDoubt);
    ReadPoint(display.Element("linkfunction"), function.linkFunction, remarks);
    ReadPoint(display.Element("linkscreenrel"), function.linkScreen, remarks);
    // Only a child of the root counts, because unknown elements may contain any element.
    ReadMacros(ChildNamed(root, "macros"), function, remarks);
    return {};
}

kits::Result<Function> ReadFunction(const std::filesystem::path& path, const Function& startFrom,
                                    Warnings* warnings) {
    return ReadValue(path, startFrom, InterpretFunction, warnings);
}

kits::Result<void> WriteFunction(const std::filesystem::path& path, const Function& function) {
    MXDocument document = ConstructDocumentTemplate(RootName(function));
    document.root = ConstructFunctionElement(function);
    return SaveDocument(path, document, kFunctionFileType);
}

} // namespace vexa
