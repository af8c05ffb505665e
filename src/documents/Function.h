// SPDX-License-Identifier: GPL-3.0-or-later
// A plane function as a document stores it: the texts of the window's fields.
#pragma once

#include "synth/Macros.h"

#include <array>
#include <string>
#include <utility>

namespace vexa {

/// The source that a plane function is made from.
enum class FunctionKind { Expression, Sample, Picture };

/// The author of what is made or edited here by a person whose settings name no author.
constexpr const char* kDefaultAuthor = "Beta User";

/// The elements of a document that this version does not know, as XML. They are written back after
/// the known ones.
struct KeptElements {
    /// The unknown children of the document's element, and of its element "info".
    std::string root;
    std::string info;
    bool operator==(const KeptElements&) const = default;
};

/// The source of the plane function, and the part of the plane that the plane view shows. The texts
/// are kept as typed and may be invalid. The initial values are those of a new window.
struct Function {
    /// The texts of a point's two fields.
    struct Point {
        std::string x;
        std::string y;
        bool operator==(const Point&) const = default;
    };

    /// The texts of a macro's value (0..1) and of the controller that moves it.
    struct MacroTexts {
        std::string value;
        std::string controller;
        bool operator==(const MacroTexts&) const = default;
    };

    FunctionKind kind = FunctionKind::Expression;
    std::string author = kDefaultAuthor;
    /// The formula in x and y; for the kind Expression.
    std::string expression = "(5*(x*y*y-y*x*x)-3*(x-y))/((1+x*x+y*y)*(1+x*x+y*y))";
    /// For the kind Sample: the name of a file in the samples folder or an absolute path, and the
    /// frequency in Hz whose period is one turn of the sample's spiral (SampleFunction.h).
    std::string sampleFile;
    std::string frequency = "440";
    /// For the kind Picture: the name of a file in the pictures folder or an absolute path.
    std::string pictureFile;
    /// The width of the visible part of the plane.
    std::string width = "15";
    /// The point `linkFunction` of the plane is shown at the point `linkScreen` of the view, which
    /// is in fractions (0..1) of the view's width from the left and of its height from the bottom.
    Point linkFunction{"0", "0"};
    Point linkScreen{"0.5", "0.5"};
    /// The texts of the macros a to d.
    std::array<MacroTexts, kMacros> macros{
        {{"0.5", "16"}, {"0.5", "17"}, {"0.5", "18"}, {"0.5", "19"}}};
    KeptElements kept;

    bool operator==(const Function&) const = default;
};

/// Returns the text of the function's source, depending on its kind: the expression, or the name of
/// the file.
inline const std::string& SourceOf(const Function& function) {
    switch (function.kind) {
    case FunctionKind::Sample:
        return function.sampleFile;
    case FunctionKind::Picture:
        return function.pictureFile;
    case FunctionKind::Expression:
        break;
    }
    return function.expression;
}
inline std::string& SourceOf(Function& function) {
    return const_cast<std::string&>(SourceOf(std::as_const(function)));
}
/// Returns whether both functions are computed from the same expression or file.
inline bool HaveOneSource(const Function& a, const Function& b) {
    return a.kind == b.kind && SourceOf(a) == SourceOf(b);
}

} // namespace vexa
