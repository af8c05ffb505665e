#include "functions/ExpressionCheck.h"

#include "functions/ExpressionTokens.h"
#include "functions/ExpressionWords.h"
#include "kits/support/Quoted.h"

#include <algorithm>
#include <array>
#include <vector>

namespace vexa {

namespace {

/// What is known of a part of the expression.
struct Part {
    /// C computes it in integers.
    bool integer = false;
    /// Its value, if it is a whole number written out.
    std::optional<unsigned long long> written;
};

/// Recursive descent along the C grammar. After the first fault it sees the end of the text.
class Checker {
  public:
    explicit Checker(std::string_view text) : tokens(text) { Advance(); }

    std::optional<ExpressionFault> Run() {
        Conditional();
        if (token.kind != Token::Kind::end)
            Refuse("an operator is expected before " + Here());
        return std::move(fault);
    }

  private:
    /// One level of nesting.
    class Level {
      public:
        explicit Level(Checker& checker) : checker(checker) {
            if (++checker.depth > kDeepestExpression)
                checker.Refuse("the expression is nested too deeply");
        }
        ~Level() { checker.depth--; }
        Level(const Level&) = delete;
        Level& operator=(const Level&) = delete;

      private:
        Checker& checker;
    };

    void RefuseAt(std::size_t position, std::string reason) {
        if (!fault)
            fault = {position, std::move(reason)};
        token = {};
    }
    void Refuse(std::string reason) { RefuseAt(token.position, std::move(reason)); }

    void Advance() {
        if (fault)
            return;
        token = tokens.Next();
        if (token.kind == Token::Kind::refused)
            Refuse(token.reason);
    }

    bool At(std::string_view text) const {
        return token.kind == Token::Kind::punctuator && token.text == text;
    }
    bool Accept(std::string_view text) {
        if (!At(text))
            return false;
        Advance();
        return true;
    }
    void Expect(std::string_view text) {
        if (!Accept(text))
            Refuse(kits::Quoted(text) + " is expected before " + Here());
    }
    /// The token in words.
    std::string Here() const {
        return token.kind == Token::Kind::end ? "the end" : kits::Quoted(token.text);
    }

    Part Conditional();
    Part Binary(int lowest);
    Part Unary();
    Part Primary();
    Part Parenthesis();
    Part Word();
    Part Call(const MathFunction& function);
    /// A cast's type up to and including ')'; true if it is an integer type.
    bool Type();
    void CheckDivisor(const Part& dividend, const Part& divisor, std::size_t position);

    ExpressionTokens tokens;
    Token token;
    std::optional<ExpressionFault> fault;
    int depth = 0;
};

struct BinaryOperator {
    std::string_view text;
    /// The higher, the closer it binds.
    int precedence;
    /// Its result is an integer whatever its operands are.
    bool integer;
};

constexpr auto kBinaryOperators = std::to_array<BinaryOperator>({
    {"*", 10, false},
    {"/", 10, false},
    {"%", 10, false},
    {"+", 9, false},
    {"-", 9, false},
    {"<<", 8, true},
    {">>", 8, true},
    {"<", 7, true},
    {">", 7, true},
    {"<=", 7, true},
    {">=", 7, true},
    {"==", 6, true},
    {"!=", 6, true},
    {"&", 5, true},
    {"^", 4, true},
    {"|", 3, true},
    {"&&", 2, true},
    {"||", 1, true},
});

Part Checker::Conditional() {
    const Part condition = Binary(1);
    if (!Accept("?"))
        return condition;
    const Level level(*this);
    const Part ifTrue = Conditional();
    Expect(":");
    const Part ifFalse = Conditional();
    return {ifTrue.integer && ifFalse.integer, {}};
}

Part Checker::Binary(int lowest) {
    Part left = Unary();
    while (token.kind == Token::Kind::punctuator) {
        const auto found =
            std::find_if(kBinaryOperators.begin(), kBinaryOperators.end(),
                         [this](const BinaryOperator& row) { return row.text == token.text; });
        if (found == kBinaryOperators.end() || found->precedence < lowest)
            break;
        const std::size_t position = token.position;
        Advance();
        const Part right = Binary(found->precedence + 1);
        if (found->text == "/" || found->text == "%")
            CheckDivisor(left, right, position);
        left = {found->integer || (left.integer && right.integer), {}};
    }
    return left;
}

void Checker::CheckDivisor(const Part& dividend, const Part& divisor, std::size_t position) {
    if (dividend.integer && divisor.integer && divisor.written.value_or(0) == 0)
        RefuseAt(position, "a whole number is divided by one that could be 0, which would end the "
                           "program; write the divisor out, or cast one side to float");
}

Part Checker::Unary() {
    if (!At("+") && !At("-") && !At("!") && !At("~"))
        return Primary();
    const Level level(*this);
    const bool logical = At("!");
    Advance();
    return {Unary().integer || logical, {}};
}

Part Checker::Primary() {
    if (token.kind == Token::Kind::number) {
        const Part number{token.integer, token.written};
        Advance();
        return number;
    }
    if (token.kind == Token::Kind::word)
        return Word();
    if (Accept("("))
        return Parenthesis();
    Refuse("a number, x, y, a function or '(' is expected before " + Here());
    return {};
}

/// What follows '(': a cast's type and operand, or an expression.
Part Checker::Parenthesis() {
    const Level level(*this);
    if (token.kind == Token::Kind::word && IsTypeWord(token.text)) {
        const bool integer = Type();
        Unary();
        return {integer, {}};
    }
    const Part inner = Conditional();
    Expect(")");
    return inner;
}

bool Checker::Type() {
    const std::size_t position = token.position;
    std::vector<std::string_view> words;
    // No type has more words than "unsigned long long int".
    while (token.kind == Token::Kind::word && words.size() < 5) {
        words.push_back(token.text);
        Advance();
    }
    const std::optional<bool> integer = IsIntegerType(words);
    if (!integer)
        RefuseAt(position, "this is not an arithmetic type");
    Expect(")");
    return integer.value_or(false);
}

Part Checker::Word() {
    const Token word = token;
    Advance();
    if (word.text == "x" || word.text == "y")
        return {};
    if (const MathConstant* constant = FindMathConstant(word.text))
        return {constant->integer, {}};
    if (const MathFunction* function = FindMathFunction(word.text)) {
        if (At("("))
            return Call(*function);
        RefuseAt(word.position, "the arguments of " + std::string(word.text) + " are missing");
        return {};
    }
    RefuseAt(word.position, kits::Quoted(word.text) +
                                " is neither x or y nor a function or constant of "
                                "the maths library that takes and gives numbers");
    return {};
}

Part Checker::Call(const MathFunction& function) {
    const Level level(*this);
    Expect("(");
    for (int i = 0; i < function.arguments; i++) {
        if (i > 0)
            Expect(",");
        const std::size_t position = token.position;
        const Part argument = Conditional();
        if (i == 0 && function.order &&
            argument.written.value_or(kHighestOrder + 1) > kHighestOrder)
            RefuseAt(position, "the order of " + std::string(function.name) +
                                   " must be a whole number up to " +
                                   std::to_string(kHighestOrder) + ", written out");
    }
    if (At(",") || At(")"))
        Expect(")");
    else
        Refuse("an operator, ',' or ')' is expected before " + Here());
    return {function.integer, {}};
}

} // namespace

std::optional<ExpressionFault> CheckExpression(std::string_view expression) {
    if (expression.size() > kLongestExpression)
        return ExpressionFault{kLongestExpression, "the expression is longer than " +
                                                       std::to_string(kLongestExpression) +
                                                       " characters"};
    return Checker(expression).Run();
}

} // namespace vexa
