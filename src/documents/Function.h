// SPDX-License-Identifier: GPL-3.0-or-later
// A plane function as a document holds it: the texts of the window's fields.
#pragma once

#include "synth/Macros.h"

#include <array>
#include <string>
#include <utility>

namespace vexa {

/// What a plane function is made from.
enum class FunctionKind { Expression, Sample, Picture };

/// The name of the author of what was edited since it was loaded.
constexpr const char* kDefaultAuthor = "Beta User";

/// Elements of a document that this version does not know, as XML. They are written back after
/// those that it knows.
struct KeptElements {
    /// The children of the document's element, and those of its element "info".
    std::string root;
    std::string info;
    bool operator==(const KeptElements&) const = default;
};

/// Where the plane function comes from and how the plane view shows it. The texts are as they were
/// typed, and none of them is known to be valid. The values here are those of a fresh window.
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
    /// The formula in x and y of a function of the kind Expression.
    std::string expression = "(5*(x*y*y-y*x*x)-3*(x-y))/((1+x*x+y*y)*(1+x*x+y*y))";
    /// The name of a file in the samples folder, or a path from "/", of a function of the kind
    /// Sample, and the frequency in Hz for which the sample is wound.
    std::string sampleFile;
    std::string frequency = "440";
    /// The name of a file in the pictures folder, or a path from "/", of a function of the kind
    /// Picture.
    std::string pictureFile;
    /// The width of the part of the plane that is shown.
    std::string width = "15";
    /// The point of the plane that is shown at the point of the view, which is relative to the
    /// view's size (0..1).
    Point linkFunction{"0", "0"};
    Point linkScreen{"0.5", "0.5"};
    /// The texts of the macros a to d.
    std::array<MacroTexts, kMacros> macros{
        {{"0.5", "16"}, {"0.5", "17"}, {"0.5", "18"}, {"0.5", "19"}}};
    KeptElements kept;

    bool operator==(const Function&) const = default;
};

/// Returns the text that the function of its kind is made from: the expression, or the name of the
/// file.
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
