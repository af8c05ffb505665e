// SPDX-License-Identifier: GPL-3.0-or-later
// The grammar of expressions, a subset of C's.
//
// An expression consists of numbers and names; the unary operators + - ! ~; the operators
// * / % + - << >> < > <= >= == != & ^ | && || ?:; parentheses and casts to arithmetic types; and
// calls of functions. Blanks and tabs separate tokens. The actions define the meaning.
#pragma once

#include "formula/ExpressionFault.h"
#include "formula/ExpressionLimits.h"
#include "formula/ExpressionOperators.h"
#include "formula/ExpressionTokens.h"
#include "formula/ExpressionWords.h"
#include "kits/support/Quoted.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vexa {

/// A recursive-descent parser, which takes time proportional to the length, and bounded stack.
/// After the first fault it behaves as at the end of the text and calls no more actions.
///
/// `Actions` is a class with a type Part, which holds what is known of a part of the expression,
/// and the following functions, which may refuse an expression too. Positions are those of
/// operators, signs, names and arguments.
///
///     Part Number(const Token&)
///     std::optional<Part> Name(const Token&)       nothing if it does not name a number
///     const MathFunction* Function(std::string_view)  null if it does not name a function
///     void Argument(const MathFunction&, int index, const Part&, std::size_t position)
///     Part Call(const MathFunction&, const Token& name, const std::vector<Part>&)
///     Part Sign(const Token& sign, const Part&)
///     Part Binary(const BinaryOperator&, const Part&, const Part&, std::size_t position)
///     Part Choice(const Part& condition, const Part&, const Part&)
///     Part Cast(const ArithmeticType&, const Part&)
///     std::string NameFault(const Token&)          why a word is not a known name
template<class Actions>
class ExpressionGrammar {
  public:
    using Part = typename Actions::Part;

    ExpressionGrammar(std::string_view text, Actions& actions, Refusals& refusals)
        : text(text), tokens(text), actions(actions), refusals(refusals) {}

    /// Parses the whole text and returns the Part of the expression; the Part is meaningless after
    /// a fault.
    Part Run() {
        if (text.size() > kLongestExpression) {
            refusals.At(kLongestExpression, "the expression is longer than " +
                                                std::to_string(kLongestExpression) + " characters");
            return {};
        }
        Advance();
        const Part whole = Conditional();
        if (token.kind != Token::Kind::end)
            Refuse("an operator is expected before " + Here());
        return whole;
    }

  private:
    /// Counts one level of nesting as long as it lives.
    class Level {
      public:
        explicit Level(ExpressionGrammar& grammar) : grammar(grammar) {
            if (++grammar.depth > kDeepestExpression)
                grammar.Refuse("the expression is nested too deeply");
        }
        ~Level() { grammar.depth--; }
        Level(const Level&) = delete;
        Level& operator=(const Level&) = delete;

      private:
        ExpressionGrammar& grammar;
    };

    void RefuseAt(std::size_t position, std::string reason) {
        refusals.At(position, std::move(reason));
        token = {};
    }
    void Refuse(std::string reason) { RefuseAt(token.position, std::move(reason)); }

    void Advance() {
        if (refusals) {
            token = {};
            return;
        }
        token = tokens.Next();
        if (token.kind == Token::Kind::refused)
            Refuse(token.reason);
    }

    /// Returns the result of an action, or an empty Part after a fault.
    template<class Action>
    Part Act(const Action& action) {
        if (refusals)
            return {};
        Part part = action();
        if (refusals)
            token = {};
        return part;
    }

    bool At(std::string_view punctuator) const {
        return token.kind == Token::Kind::punctuator && token.text == punctuator;
    }
    bool Accept(std::string_view punctuator) {
        if (!At(punctuator))
            return false;
        Advance();
        return true;
    }
    void Expect(std::string_view punctuator) {
        if (!Accept(punctuator))
            Refuse(kits::Quoted(punctuator) + " is expected before " + Here());
    }
    /// Describes the current token for a message.
    std::string Here() const {
        return token.kind == Token::Kind::end ? "the end" : kits::Quoted(token.text);
    }

    Part Conditional() {
        const Part condition = Binary(1);
        if (!Accept("?"))
            return condition;
        const Level level(*this);
        const Part ifTrue = Conditional();
        Expect(":");
        const Part ifFalse = Conditional();
        return Act([&] { return actions.Choice(condition, ifTrue, ifFalse); });
    }

    Part Binary(int lowest) {
        Part left = Unary();
        while (token.kind == Token::Kind::punctuator) {
            const BinaryOperator* const found = FindBinaryOperator(token.text);
            if (!found || found->precedence < lowest)
                break;
            const std::size_t position = token.position;
            Advance();
            const Part right = Binary(found->precedence + 1);
            left = Act([&] { return actions.Binary(*found, left, right, position); });
        }
        return left;
    }

    Part Unary() {
        if (!At("+") && !At("-") && !At("!") && !At("~"))
            return Primary();
        const Level level(*this);
        const Token sign = token;
        Advance();
        const Part operand = Unary();
        return Act([&] { return actions.Sign(sign, operand); });
    }

    Part Primary() {
        if (token.kind == Token::Kind::number) {
            const Token number = token;
            Advance();
            return Act([&] { return actions.Number(number); });
        }
        if (token.kind == Token::Kind::word)
            return Word();
        if (Accept("("))
            return Parenthesis();
        Refuse("a number, x, y, a function or '(' is expected before " + Here());
        return {};
    }

    /// Reads the text after '(': either the type and the operand of a cast, or an expression.
    Part Parenthesis() {
        const Level level(*this);
        if (token.kind == Token::Kind::word && IsTypeWord(token.text)) {
            const std::optional<ArithmeticType> type = Type();
            const Part operand = Unary();
            return Act([&] { return actions.Cast(*type, operand); });
        }
        const Part inner = Conditional();
        Expect(")");
        return inner;
    }

    /// Reads a cast's type up to and including ')'.
    std::optional<ArithmeticType> Type() {
        const std::size_t position = token.position;
        std::vector<std::string_view> words;
        // No type has more words than "unsigned long long int".
        while (token.kind == Token::Kind::word && words.size() < 5) {
            words.push_back(token.text);
            Advance();
        }
        const auto type = TypeOfWords(words);
        if (!type)
            RefuseAt(position, "this is not an arithmetic type");
        Expect(")");
        return type;
    }

    Part Word() {
        const Token word = token;
        Advance();
        if (refusals)
            return {};
        if (const std::optional<Part> number = actions.Name(word))
            return *number;
        if (const MathFunction* function = actions.Function(word.text)) {
            if (At("("))
                return Call(*function, word);
            RefuseAt(word.position, "the arguments of " + std::string(word.text) + " are missing");
            return {};
        }
        RefuseAt(word.position, actions.NameFault(word));
        return {};
    }

    Part Call(const MathFunction& function, const Token& name) {
        const Level level(*this);
        Expect("(");
        std::vector<Part> arguments;
        for (int i = 0; i < function.arguments; i++) {
            if (i > 0)
                Expect(",");
            const std::size_t position = token.position;
            arguments.push_back(Conditional());
            Act([&] {
                actions.Argument(function, i, arguments.back(), position);
                return Part();
            });
        }
        if (At(",") || At(")"))
            Expect(")");
        else
            Refuse("an operator, ',' or ')' is expected before " + Here());
        return Act([&] { return actions.Call(function, name, arguments); });
    }

    const std::string_view text;
    ExpressionTokens tokens;
    Token token;
    Actions& actions;
    Refusals& refusals;
    int depth = 0;
};

} // namespace vexa
