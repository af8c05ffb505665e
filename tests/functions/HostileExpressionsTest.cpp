// SPDX-License-Identifier: GPL-3.0-or-later
// Expressions that try to do more than arithmetic. Catches any of them that reaches the compiler.

#include "functions/ExpressionCheck.h"
#include "functions/ProgramFolder.h"
#include "support/Environment.h"

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

/// Those of which tests of the check have no like.
// clang-format off
constexpr std::string_view kHostile[] = {
    R"(({system("id"); x;}))", "((int(*)())0)()", "(*(int(*)(void))x)()", R"(asm("ud2"))",
    R"(__asm__ volatile("syscall"))", "__attribute__((constructor)) x", "[[gnu::constructor]] x",
    "__extension__ ({x;})", "__label__ a", "x;} static void __attribute__((constructor)) f(void) {",
    "x\n#include </etc/passwd>", "x\n#undef EXPRESSION\n#define EXPRESSION y",
    "x\r#include </etc/passwd>", "x \\\n#include </etc/passwd>", "x ?\?/\n y",
    "?\?=include </etc/passwd>", "x ?\?( 0 ?\?)", "%:include </etc/passwd>", "<% x; %>",
    "_Pragma(\"GCC poison x\")", "*/ x /*", "x\" \"y", "x\f+y", "x\x1a", "\xe2\x80\xaex",
    "\xd1\x85", "\xff\xfe", R"(\u0078)", R"(\U00000078 + y)", R"(x + \x79)", "EXPRESSION_STR",
    "value(x, y)", "r2rfunblock(x, y, x, 1)", "NULL", "(size_t)x", "defined x", "__has_include(x)",
    "environ", "math_errhandling", "_Complex_I", "qsort(x, y, 1, 1)", "(x)=(y)", "x ? y : x = 1",
    "sin((x, y))", "*&x", "*(float*)0", "(char*)x", "\"a\"[0]", "L'a'", "u8\"a\"", "R\"(x)\"",
    "(int[]){1, 2}[0]", "(struct a {int b;}){1}.b", "(enum {a}) x", "(union {int i;}) x",
    "sizeof(char[1000000000000])", "_Generic(x, float: y, default: x)", "typeof(x) y",
    "(typeof(x))y", "(__int128)x", "(_Float128)x", "(_Complex double)x", "(_Atomic int)x",
    "(volatile int)x", "(register int)x", "_Static_assert(0, \"x\")", "return x", "if (x) y",
    "while (1)", "1.0dd", "0x1p", "1%(int)y", "(int)x/0x0", "(long long)x/-1",
    "jn(2147483647, x)", "yn((int)x, y)", "$(id)", "x; rm -rf ~", "-o/tmp/x", "@/etc/passwd",
    "%n%s",
};
// clang-format on

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

    for (const std::string_view expression : kHostile) {
        EXPECT_TRUE(vexa::CheckExpression(expression)) << expression;
        EXPECT_FALSE(functions.Compile(expression)) << expression;
        // As a part of a larger expression it is refused as well.
        const std::string inside = "sin(x) + (" + std::string(expression) + ")";
        EXPECT_TRUE(vexa::CheckExpression(inside)) << inside;
    }
    EXPECT_FALSE(fs::exists(started));
    EXPECT_EQ(folder.Files(), (std::set<std::string>{"addon.c"}));

    EXPECT_FALSE(functions.Compile("x")) << "this compiler makes no add-on";
    EXPECT_TRUE(fs::exists(started)) << "but it is the one that is started";
}

} // namespace
