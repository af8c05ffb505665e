// SPDX-License-Identifier: GPL-3.0-or-later
// Random expressions of C's types, as trees.
#pragma once

#include "formula/ExpressionWords.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace test {

/// One operation, number or name of an expression.
struct TreeNode {
    /// Its C text, where $0, $1 and $2 stand for the operands.
    std::string pattern;
    /// C's precedence of the operation; calls and names have 15, signs and casts 14.
    int precedence = 15;
    /// The precedence below which an operand is put into parentheses.
    std::array<int, 3> needs{};
    std::vector<std::size_t> operands{};
    /// The condition that C requires of the operands, in the terms of NodeCompiler; otherwise the
    /// value is undefined.
    std::string demand{};
};

/// The nodes of an expression, operands before their operations; the last node is the root.
class Tree {
  public:
    std::size_t Add(TreeNode node) {
        std::string text;
        for (std::size_t i = 0; i < node.pattern.size(); i++) {
            if (node.pattern[i] != '$') {
                text += node.pattern[i];
                continue;
            }
            const auto which = static_cast<std::size_t>(node.pattern[++i] - '0');
            const std::size_t operand = node.operands[which];
            const bool bare = nodes[operand].precedence >= node.needs[which];
            text += bare ? texts[operand] : "(" + texts[operand] + ")";
        }
        nodes.push_back(std::move(node));
        texts.push_back(std::move(text));
        return nodes.size() - 1;
    }

    const std::vector<TreeNode>& Nodes() const { return nodes; }
    /// Returns for each node the text of the expression whose root it is.
    const std::vector<std::string>& Texts() const { return texts; }

  private:
    std::vector<TreeNode> nodes;
    std::vector<std::string> texts;
};

class RandomTrees {
  public:
    explicit RandomTrees(unsigned seed) : random(seed) {}

    /// Returns an expression of any type, with at most `depth` nested operations.
    Tree Any(int depth) {
        tree = {};
        Number(depth);
        return tree;
    }
    /// Returns a call of the function, whose name may have a suffix; a long double result is
    /// converted to double.
    Tree CallOf(const vexa::MathFunction& function, const std::string& ending, int depth) {
        tree = {};
        Call(function, ending, depth);
        return tree;
    }

  private:
    struct Operator {
        const char* text;
        int precedence;
    };
    static constexpr Operator kArithmetic[] = {{"+", 12}, {"-", 12}, {"*", 13}, {"/", 13}};
    static constexpr Operator kTruths[] = {{"<", 10}, {">", 10}, {"<=", 10}, {">=", 10},
                                           {"==", 9}, {"!=", 9}, {"&&", 5},  {"||", 4}};
    static constexpr Operator kWhole[] = {{"%", 13}, {"&", 8},   {"^", 7},  {"|", 6},
                                          {"/", 13}, {"<<", 11}, {">>", 11}};
    struct Cast {
        const char* type;
        const char* fits;
    };
    static constexpr Cast kCasts[] = {{"(int)", "FITS($0, -0x1p31 - 1, 0x1p31)"},
                                      {"(unsigned)", "FITS($0, -1, 0x1p32)"},
                                      {"(long)", "FITS($0, -0x1.0000000000001p63, 0x1p63)"},
                                      {"(unsigned long)", "FITS($0, -1, 0x1p64)"},
                                      {"(short)", "FITS($0, -32769, 32768)"},
                                      {"(unsigned short)", "FITS($0, -1, 65536)"},
                                      {"(signed char)", "FITS($0, -129, 128)"},
                                      {"(unsigned char)", "FITS($0, -1, 256)"},
                                      {"(long long)", "FITS($0, -0x1.0000000000001p63, 0x1p63)"},
                                      {"(_Bool)", ""}};

    unsigned Roll(std::size_t sides) { return static_cast<unsigned>(random() % sides); }
    template<class Rows>
    const auto& OneOf(const Rows& rows) {
        return rows[Roll(std::size(rows))];
    }

    std::size_t Binary(const Operator& op, std::size_t a, std::size_t b, std::string demand = "") {
        // Operators of equal precedence associate to the left.
        return tree.Add({std::string("$0 ") + op.text + " $1",
                         op.precedence,
                         {op.precedence, op.precedence + 1},
                         {a, b},
                         std::move(demand)});
    }

    std::size_t Number(int depth) {
        static constexpr const char* kInputs[] = {"x", "y",   "x",   "y", "a",      "b",       "c",
                                                  "d", "vel", "key", "t", "ctl(7)", "ctl(127)"};
        static constexpr const char* kNumbers[] = {"0.1",      "2.5f", "1e-3",  "3.0",    "7",
                                                   "0x1.8p4f", ".5",   "1e30f", "M_PI",   "M_PI_2",
                                                   "INFINITY", "NAN",  "0.0",   "1e-310", "1e308",
                                                   "08.5",     "5L",   "1e10",  "M_E",    "1.0"};
        if (depth == 0)
            return tree.Add({Roll(2) ? OneOf(kInputs) : OneOf(kNumbers)});
        switch (Roll(10)) {
        case 0:
        case 1:
        case 2: {
            const std::size_t a = Number(depth - 1), b = Number(depth - 1);
            return Binary(OneOf(kArithmetic), a, b);
        }
        case 3:
            return Truth(depth);
        case 4: {
            const std::size_t a = Roll(2) ? Number(depth - 1) : Truth(depth);
            return Choice(a, Number(depth - 1), Number(depth - 1));
        }
        case 5:
            return Prefixed(OneOf(std::to_array({"(float)", "(double)", "-", "+", "- "})),
                            Number(depth - 1));
        case 6:
            return Integer(depth);
        default:
            return Call(AnyFunction(), OneOf(std::to_array({"", "", "f", "f", "l"})), depth);
        }
    }

    std::size_t Integer(int depth) {
        static constexpr const char* kNumbers[] = {
            "1",   "7u",   "0x1fL", "2147483647",         "0xffffffff", "1000000007L",
            "010", "3ull", "0",     "0x7fffffffffffffff", "FP_NORMAL"};
        if (depth == 0)
            return tree.Add({OneOf(kNumbers)});
        switch (Roll(7)) {
        case 0:
        case 1: {
            const std::size_t a = Integer(depth - 1), b = Integer(depth - 1);
            return Binary(OneOf(kArithmetic), a, b);
        }
        case 2:
        case 3: {
            const Operator& op = OneOf(kWhole);
            const std::size_t a = Integer(depth - 1), b = Integer(depth - 1);
            return Binary(op, a, b, op.precedence == 11 ? "SHIFTS($0, $1)" : "");
        }
        case 4:
            return Truth(depth);
        case 5:
            return Prefixed(OneOf(std::to_array({"~", "-", "+", "!"})), Integer(depth - 1));
        default: {
            // Numbers near 0 are in the range of all types.
            const Cast& cast = OneOf(kCasts);
            return Prefixed(cast.type, Roll(3) ? Number(depth - 1) : Integer(depth - 1), cast.fits);
        }
        }
    }

    std::size_t Truth(int depth) {
        if (Roll(5) == 0)
            return Prefixed("!", Number(depth - 1));
        const std::size_t a = Number(depth - 1), b = Roll(6) ? Number(depth - 1) : a;
        return Binary(OneOf(kTruths), a, b);
    }
    std::size_t Choice(std::size_t condition, std::size_t a, std::size_t b) {
        return tree.Add({"$0 ? $1 : $2", 3, {4, 0, 3}, {condition, a, b}});
    }
    std::size_t Prefixed(const char* sign, std::size_t operand, const char* demand = "") {
        // Two equal signs in a row would form another operator.
        const bool sticks = (sign[0] == '-' || sign[0] == '+') && sign[1] == 0;
        return tree.Add({std::string(sign) + "$0", 14, {sticks ? 15 : 14}, {operand}, demand});
    }

    const vexa::MathFunction& AnyFunction() {
        return Roll(6) ? OneOf(vexa::MathFunctions()) : OneOf(vexa::MathMacros());
    }
    std::size_t Call(const vexa::MathFunction& function, const std::string& ending, int depth) {
        const auto is = [&function](std::initializer_list<std::string_view> names) {
            return std::ranges::find(names, function.name) != names.end();
        };
        const auto macros = vexa::MathMacros();
        const bool macro =
            std::ranges::find(macros, function.name, &vexa::MathFunction::name) != macros.end();
        // The neighbours of a long double differ from those of a double.
        const bool isLong = ending == "l" && !macro && !is({"nextafter", "nexttoward"});
        TreeNode node;
        if (isLong && !function.integer)
            node = {"(double)", 14};
        node.pattern += function.name;
        node.pattern += macro || (ending == "l" && !isLong) ? "" : ending;
        node.pattern += "(";
        if (function.order)
            node.pattern += OneOf(std::to_array({"0, ", "1, ", "2, ", "3, ", "17, ", "100, "}));
        for (int i = function.order ? 1 : 0; i < function.arguments; i++) {
            // The macros take floating-point arguments, and long double ones as double.
            std::size_t argument = Number(depth - 1);
            const bool wide = isLong || (i == 1 && is({"nexttoward"}));
            if (macro || wide)
                argument = Prefixed(wide || Roll(2) ? "(double)" : "(float)", argument);
            node.pattern += "$" + std::to_string(node.operands.size());
            node.pattern += i + 1 < function.arguments ? ", " : "";
            node.operands.push_back(argument);
        }
        node.pattern += ")";
        if (is({"ldexp", "scalbn"}))
            node.demand = "FITS($1, -0x1p31 - 1, 0x1p31)";
        else if (is({"scalbln"}))
            node.demand = "FITS($1, -0x1p63, 0x1p63)";
        else if (is({"lrint", "llrint", "lround", "llround"}))
            node.demand = ending == "f" ? "FITS((float)$0, -0x1p63, 0x1p63)"
                                        : "FITS((double)$0, -0x1p63, 0x1p63)";
        // The C library's powl treats powers from 2^63 on as odd.
        else if (is({"pow"}) && isLong)
            node.demand = "fabs((double)$1) < 0x1p63";
        // Processors differ in the signs of NaNs.
        else if (is({"copysign"}))
            node.demand = "$1 == $1";
        else if (is({"signbit"})) {
            node.demand = "$0 == $0";
            // C leaves open which nonzero number is returned for a set sign.
            node.pattern += " != 0";
            node.precedence = 9;
        }
        return tree.Add(std::move(node));
    }

    std::mt19937 random;
    Tree tree;
};

} // namespace test
