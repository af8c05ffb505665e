// SPDX-License-Identifier: GPL-3.0-or-later
// Expressions that try to do more than arithmetic. Catches any of them that reaches the compiler.

#include "functions/ExpressionCheck.h"
#include "functions/ProgramFolder.h"
#include "support/Environment.h"

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

struct Hostile {
    std::string_view expression;
    /// Its effect if it were compiled.
    const char* aim;
};

// clang-format off
constexpr Hostile kHostile[] = {
    // Running a program.
    {R"(({system("id"); x;}))", "a statement expression runs a command"},
    {R"(system("id"))", "calls into the C library"}, {"((int(*)())0)()", "calls an address"},
    {"(*(int(*)(void))x)()", "calls an address"}, {"exit(1)", "ends the program"},
    {"abort()", "ends the program"}, {"fork()", "starts a process"},
    {"__builtin_trap()", "ends the program"},
    {"__builtin_unreachable()", "takes every promise back"},
    {"__builtin_alloca(1000000000)", "uses the stack up"},
    {"__builtin_longjmp(x, 1)", "leaves the function"},
    {"__builtin_va_arg(x, int)", "reads the stack"},
    {"__builtin_return_address(0)", "tells where the program lies"},
    {"__sync_synchronize()", "a built-in function under another prefix"},
    {"__atomic_load_n(x, 0)", "reads an address"}, {"dlopen(x, y)", "loads a library"},
    {"malloc(1e9)", "uses the memory up"}, {"printf(x)", "writes"},
    {"sleep(1000)", "stops the music"}, {"rand()", "has a state"},
    // The assembler and attributes.
    {R"(asm("ud2"))", "assembly"}, {R"(__asm__ volatile("syscall"))", "assembly"},
    {R"(x; __asm__(".section .init_array"))", "code that runs when the add-on is loaded"},
    {"__attribute__((constructor)) x", "code that runs when the add-on is loaded"},
    {"[[gnu::constructor]] x", "code that runs when the add-on is loaded"},
    {"__extension__ ({x;})", "a statement expression in disguise"}, {"__label__ a", "a label"},
    {"&&a", "the address of a label"},
    // Leaving the macro, the function or the line.
    {"x; } int main() { return 0", "closes the function"},
    {"x;} static void __attribute__((constructor)) f(void) {", "closes the function"},
    {"x\n#include </etc/passwd>", "includes a file"},
    {"x\n#undef EXPRESSION\n#define EXPRESSION y", "defines the macro anew"},
    {"x\r#include </etc/passwd>", "includes a file after a carriage return"},
    {"x \\\n#include </etc/passwd>", "a line splice"},
    {"x ?\?/\n y", "a trigraph that is a backslash"},
    {"?\?=include </etc/passwd>", "a trigraph that is a number sign"},
    {"x ?\?( 0 ?\?)", "trigraphs that are brackets"},
    {"%:include </etc/passwd>", "a digraph that is a number sign"},
    {"<% x; %>", "digraphs that are braces"}, {"x<:0:>", "digraphs that are brackets"},
    {"_Pragma(\"GCC poison x\")", "a directive as an operator"},
    {"#pragma GCC optimize 0", "a directive"}, {"x // y", "hides what follows in the line"},
    {"x /* y", "hides the template"}, {"*/ x /*", "ends a comment"},
    {"x\" \"y", "ends the text of the second macro"}, {"x\\", "joins the next line to the macro"},
    {"x\f+y", "a form feed"}, {"x\v+y", "a vertical tab"}, {"x\x1a", "the end of a file, to some"},
    {"\xef\xbb\xbfx", "a byte order mark"}, {"\xc2\xa0x", "a blank that is none"},
    {"\xe2\x80\xaex", "text that reads backwards"}, {"\xd1\x85", "a letter that looks like x"},
    {"\xff\xfe", "no text at all"}, {R"(\u0078)", "x as a Unicode escape"},
    {R"(\U00000078 + y)", "x as a Unicode escape"}, {R"(x + \x79)", "an escape outside of a text"},
    // Names of the compiler, the template and other libraries.
    {"EXPRESSION", "the macro itself"}, {"EXPRESSION_STR", "the other macro"},
    {"value(x, y)", "the template's function, endlessly"},
    {"r2rfun(x, y)", "the add-on's function, endlessly"},
    {"r2rfunblock(x, y, x, 1)", "another function of the add-on"}, {"NULL", "a pointer"},
    {"size_t", "a type's name"}, {"(size_t)x", "a type that is not built in"},
    {"__FILE__", "a text that tells the path"}, {"__DATE__", "a text"},
    {"__COUNTER__", "has a state"}, {"__func__", "a text"},
    {"defined x", "a word of the preprocessor"}, {"__has_include(x)", "a word of the preprocessor"},
    {"environ", "a variable of the C library"}, {"stdin", "a variable of the C library"},
    {"signgam", "a variable that functions set"},
    {"math_errhandling", "a macro that may call something"}, {"cexp(x)", "another library"},
    {"_Complex_I", "another library"}, {"qsort(x, y, 1, 1)", "calls back"},
    // Assigning, counting, addresses.
    {"x=0", "assigns"}, {"x+=y", "assigns"}, {"(x)=(y)", "assigns"},
    {"x ? y : x = 1", "assigns at the end of a conditional"}, {"x++", "counts up"},
    {"--y", "counts down"}, {"x, y", "a comma"}, {"sin((x, y))", "a comma in a call"},
    {"*&x", "goes through an address"}, {"&x", "an address"}, {"*(float*)0", "reads an address"},
    {"(char*)x", "makes a pointer"}, {"x[y]", "reads an address"}, {"x.y", "a structure"},
    {"x->y", "a structure"},
    // String literals, types and other parts of C.
    {"\"a\"[0]", "reads a text"}, {"'a'", "a character"}, {"L'a'", "a wide character"},
    {"u8\"a\"", "a text with a prefix"}, {"R\"(x)\"", "a raw text"},
    {"(float){x}", "a compound literal"}, {"(int[]){1, 2}[0]", "a compound literal"},
    {"(struct a {int b;}){1}.b", "defines a type"}, {"(enum {a}) x", "defines a constant"},
    {"(union {int i;}) x", "defines a type"}, {"sizeof x", "asks for a size"},
    {"sizeof(char[1000000000000])", "asks for a size"}, {"_Alignof(int)", "asks for an alignment"},
    {"_Generic(x, float: y, default: x)", "chooses by the type"}, {"typeof(x) y", "declares"},
    {"(typeof(x))y", "a type from a value"},
    {"(__int128)x", "a type that needs a library of the compiler's"},
    {"(_Float128)x", "a type that needs a library of the compiler's"},
    {"(_Complex double)x", "a complex type"}, {"(_Atomic int)x", "an atomic type"},
    {"(volatile int)x", "a qualified type"}, {"(register int)x", "a storage class"},
    {"_Static_assert(0, \"x\")", "a declaration"}, {"goto a", "a jump"},
    {"return x", "a statement"}, {"if (x) y", "a statement"}, {"while (1)", "never ends"},
    {"1.0i", "an imaginary number"}, {"0b101010", "a number that compilers add to C"},
    {"1.0q", "a number of a type that needs a library of the compiler's"},
    {"1.0dd", "a decimal number"}, {"0x1p", "no number"},
    {"1/0", "ends the program when it is computed"}, {"1%(int)y", "ends the program where y is 0"},
    {"(int)x/(int)y", "ends the program where y is 0"}, {"(int)x/0x0", "ends the program"},
    {"(long long)x/-1", "ends the program for the smallest x"},
    {"jn(2147483647, x)", "computes for minutes"}, {"yn((int)x, y)", "computes for minutes"},
    {"x `id`", "a command to a shell"}, {"$(id)", "a command to a shell"},
    {"x; rm -rf ~", "a command to a shell"}, {"-o/tmp/x", "an option of the compiler"},
    {"@/etc/passwd", "a file of options"}, {"%n%s", "a format"},
};
// clang-format on

std::string Repeated(std::string_view text, std::size_t count) {
    std::string all;
    for (std::size_t i = 0; i < count; i++)
        all += text;
    return all;
}

TEST(HostileExpressions, NoneReachesTheCompiler) {
    const test::ProgramFolder folder;
    // A compiler that reports that it was started.
    const fs::path started = folder.Path() / "started";
    const fs::path compiler = folder.Path() / "path/gcc";
    fs::create_directories(compiler.parent_path());
    std::ofstream(compiler) << "#!/bin/sh\n: >'" << started.string() << "'\n";
    fs::permissions(compiler, fs::perms::owner_all);
    const test::EnvironmentVariable path("PATH", compiler.parent_path().c_str());
    const vexa::FunctionCompiler functions(folder.Path());

    for (const auto& [expression, aim] : kHostile) {
        EXPECT_TRUE(vexa::CheckExpression(expression)) << expression << ": " << aim;
        EXPECT_FALSE(functions.Compile(expression)) << expression << ": " << aim;
        // As a part of a larger expression it is refused as well.
        const std::string inside = "sin(x) + (" + std::string(expression) + ")";
        EXPECT_TRUE(vexa::CheckExpression(inside)) << inside << ": " << aim;
    }
    EXPECT_FALSE(fs::exists(started));
    EXPECT_EQ(folder.Files(), (std::set<std::string>{"addon.c"}));

    EXPECT_FALSE(functions.Compile("x")) << "this compiler makes no add-on";
    EXPECT_TRUE(fs::exists(started)) << "but it is the one that is started";
}

/// Some are harmless except for their size.
TEST(HostileExpressions, SizeCostsNothing) {
    constexpr std::size_t kSize = 2'000'000;
    for (const std::string_view text : {"(", ")", "-", "- ", "x+", "1", "sin(", "(int)", "x?",
                                        "x?x:", "x,", " ", "\t", "\\", "\n", "?\?/", "a"})
        EXPECT_TRUE(vexa::CheckExpression(Repeated(text, kSize / text.size()))) << text;
    EXPECT_TRUE(vexa::CheckExpression(std::string(kSize, '\0')));
}

} // namespace
