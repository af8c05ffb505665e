// SPDX-License-Identifier: GPL-3.0-or-later
#include "functions/FunctionCompiler.h"

#include "functions/FunctionCost.h"
#include "functions/LongDouble.h"
#include "functions/ProgramFolder.h"
#include "support/Environment.h"

#include <array>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using vexa::CompileOutcome;
using vexa::FunctionCompiler;

using Files = std::set<std::string>;
using Folder = test::ProgramFolder;

std::string CompilerAlert(const Folder& folder) {
    return "There was an error while trying to compile \n" + folder.Function("recent.c") +
           " \nto \n" + folder.Function("recent") + " \nwith gcc";
}

TEST(FunctionCompiler, GivesTheFunctionItsBlockFormAndItsText) {
    const Folder folder;
    const std::string expression = "x<0 ?\t 2*x- -y : sqrt(x*x+y)/3";
    const CompileOutcome outcome = FunctionCompiler(folder.Path()).Compile(expression);
    ASSERT_TRUE(outcome) << outcome.text;
    EXPECT_TRUE(outcome.alerts.empty());
    EXPECT_EQ(outcome.addon->Expression(), expression);
    EXPECT_EQ(test::Contents(folder.Function("recent.c")),
              "#define EXPRESSION\t  " + expression + "\n#define EXPRESSION_STR \"" + expression +
                  "\"\n\n" + Folder::OriginalTemplate());
    EXPECT_EQ(folder.Files(), (Files{"addon.c", "recent", "recent.c"}));

    const vexa::PlaneFunction function = outcome.addon;
    EXPECT_EQ(function(-2, 1), -3.0F);
    EXPECT_EQ(function(4, 9), 5.0F / 3);
    ASSERT_TRUE(outcome.addon->HasBlockForm());
    std::vector<float> x(100);
    std::vector<float> y(100);
    std::vector<float> values(100);
    for (std::size_t i = 0; i < x.size(); i++) {
        x[i] = 0.37F * static_cast<float>(i) - 20;
        y[i] = 30 - 0.11F * static_cast<float>(i);
    }
    function.Evaluate(x.data(), y.data(), values.data(), x.size());
    for (std::size_t i = 0; i < x.size(); i++)
        EXPECT_EQ(values[i], function(x[i], y[i])) << i;
}

TEST(FunctionCompiler, ComputesLongDoubleInDouble) {
    const Folder folder;
    const std::string expression = "(long  double) fmodl(x + 1.5L, 0x1p-3l) + sizeless(1L)";
    EXPECT_EQ(vexa::WithoutLongDouble(expression),
              "(  double) fmod(x + 1.5, 0x1p-3) + sizeless(1L)");
    EXPECT_EQ(vexa::WithoutLongDouble("(double long)ceil(x)*ceill(y)-HUGE_VALL+(long)x"),
              "(double )ceil(x)*ceil(y)-HUGE_VAL+(long)x");
    // An operation that takes the x87 unit milliseconds.
    const std::string slow = "fmodl((x+1)*1e4900L,3e-4930L)+fmodl((y+1)*1e4900L,3e-4930L)";
    const CompileOutcome outcome = FunctionCompiler(folder.Path()).Compile(slow);
    ASSERT_TRUE(outcome) << outcome.text;
    EXPECT_EQ(outcome.addon->Expression(), slow);
}

TEST(FunctionCompiler, RefusesWhatCostsTooMuchToBePlayed) {
    const Folder folder;
    std::string expression = "x";
    for (int i = 0; i < 40; i++)
        expression += "+fmod((x+" + std::to_string(i) + ")*1e300,3e-308)";
    const CompileOutcome outcome = FunctionCompiler(folder.Path()).Compile(expression);
    EXPECT_FALSE(outcome);
    EXPECT_FALSE(outcome.addon);
    EXPECT_THAT(outcome.alerts, ElementsAre(CompilerAlert(folder)));
    EXPECT_THAT(outcome.text, HasSubstr("microseconds for a point"));
    // Expensive only far from the origin.
    EXPECT_THAT(FunctionCompiler(folder.Path())
                    .Compile("x>900 ? fmod(exp(500+x-1000),3e-308)*0" + expression.substr(1) + ":x")
                    .text,
                HasSubstr("microseconds"));
    EXPECT_LT(vexa::MeasureCost({vexa::dummyfunction}), 10000);
}

TEST(FunctionCompiler, CopiesTheTemplateByteForByteAndTheTextUnescaped) {
    const Folder folder;
    std::string bytes = "/* \r\n\t\xff */ no line end, and a line of " + std::string(5000, 'x');
    bytes += '\0';
    bytes += "after";
    folder.WriteTemplate(bytes);
    const fs::path source = folder.Path() / "made.c";
    ASSERT_TRUE(FunctionCompiler(folder.Path()).MakeSourceFile("\"%s\\n\" \"", source));
    EXPECT_EQ(test::Contents(source),
              "#define EXPRESSION\t  \"%s\\n\" \"\n#define EXPRESSION_STR \"\"%s\\n\" \"\"\n\n" +
                  bytes);
}

TEST(FunctionCompiler, ReportsWhatTheCompilerSays) {
    const Folder folder;
    const CompileOutcome outcome = FunctionCompiler(folder.Path()).Compile("x % 2");
    EXPECT_THAT(outcome.alerts, ElementsAre(CompilerAlert(folder)));
    EXPECT_THAT(outcome.text, HasSubstr("recent.c:1:"));
    EXPECT_THAT(outcome.text, HasSubstr("invalid operands to binary %"));
    EXPECT_EQ(folder.Files(), (Files{"addon.c", "recent.c"}));
}

TEST(FunctionCompiler, ReportsAMissingTemplate) {
    const Folder folder;
    const auto report = [&folder] {
        const CompileOutcome outcome = FunctionCompiler(folder.Path()).Compile("x");
        EXPECT_EQ(outcome.status, B_ENTRY_NOT_FOUND);
        EXPECT_THAT(
            outcome.alerts,
            ElementsAre("The template file \n" + folder.Function("addon.c") + " \nis missing.",
                        "Could not create source file \n" + folder.Function("recent.c")));
        EXPECT_THAT(outcome.text, HasSubstr("addon.c: "));
    };
    fs::remove(folder.Function("addon.c"));
    report();
    EXPECT_EQ(folder.Files(), Files{});
    fs::create_directory(folder.Function("addon.c"));
    report();
    fs::remove_all(folder.Functions());
    report();
    std::ofstream(folder.Functions()) << "a file in the folder's place";
    report();
}

TEST(FunctionCompiler, ReportsFilesThatCannotBeWritten) {
    const Folder folder;
    const FunctionCompiler compiler(folder.Path());
    fs::create_directory(folder.Function("recent.c"));
    const CompileOutcome noSource = compiler.Compile("x");
    EXPECT_NE(noSource.status, B_OK);
    EXPECT_NE(noSource.status, B_ENTRY_NOT_FOUND);
    EXPECT_THAT(
        noSource.alerts,
        ElementsAre("The temporary file " + folder.Function("recent.c") + " could not be opened.",
                    "Could not create source file \n" + folder.Function("recent.c")));
    EXPECT_THAT(noSource.text, HasSubstr("it is a folder, not a file"));
    EXPECT_EQ(folder.Files(), (Files{"addon.c", "recent.c"}));

    const auto elsewhere = compiler.MakeSourceFile("x", folder.Path() / "none" / "made.c");
    EXPECT_THAT(elsewhere.alerts,
                ElementsAre("The temporary file " + (folder.Path() / "none/made.c").string() +
                            " could not be opened."));

    fs::remove(folder.Function("recent.c"));
    fs::create_directory(folder.Function("recent"));
    const CompileOutcome noAddon = compiler.Compile("x");
    EXPECT_THAT(noAddon.alerts, ElementsAre(CompilerAlert(folder)));
    EXPECT_THAT(noAddon.text, HasSubstr("recent: Is a directory"));
    EXPECT_EQ(folder.Files(), (Files{"addon.c", "recent", "recent.c"}));
    EXPECT_EQ(test::LoadedAddOns(), 0);
}

TEST(FunctionCompiler, ReportsSourcesThatCannotBeCopied) {
    const Folder folder;
    const fs::path source = folder.Path() / "none.c";
    const auto alert = "There was an error while trying to copy\n" + source.string() + " \nto \n" +
                       folder.Function("recent") + ".c";
    const FunctionCompiler compiler(folder.Path());
    EXPECT_THAT(compiler.IncludeFunction(source).alerts, ElementsAre(alert));
    std::ofstream(source) << "int x;";
    fs::create_directory(folder.Function("recent.c"));
    EXPECT_THAT(compiler.IncludeFunction(source).alerts, ElementsAre(alert));
}

TEST(FunctionCompiler, ReportsAddOnsThatLackSomething) {
    const Folder folder;
    const std::string point = "float r2rfun(float x, float y) { return EXPRESSION; }\n";
    const std::string text = "const char* r2rfunstr(void) { return EXPRESSION_STR; }\n";
    const std::string file = folder.Function("recent");
    const FunctionCompiler compiler(folder.Path());

    folder.WriteTemplate("float missing(float);\n" + text +
                         "float r2rfun(float x, float y) { return missing(EXPRESSION); }\n");
    const CompileOutcome unresolved = compiler.Compile("x");
    EXPECT_THAT(unresolved.alerts, ElementsAre("The addon \n" + file + " \ncould not be loaded"));
    EXPECT_THAT(unresolved.text, HasSubstr("undefined symbol: missing"));

    folder.WriteTemplate(text);
    EXPECT_THAT(compiler.Compile("x").alerts,
                ElementsAre("The function r2rfun could not be found in addon \n" + file));
    folder.WriteTemplate(point);
    EXPECT_THAT(compiler.Compile("x").alerts,
                ElementsAre("The function r2rfunstr could not be found in addon \n" + file));
    EXPECT_EQ(test::LoadedAddOns(), 0);

    folder.WriteTemplate(point + text);
    const CompileOutcome plain = compiler.Compile("x+2*y");
    ASSERT_TRUE(plain) << plain.text;
    const vexa::PlaneFunction function = plain.addon;
    EXPECT_FALSE(plain.addon->HasBlockForm());
    const std::array<float, 3> x{1, 2, 3};
    const std::array<float, 3> y{10, 20, 30};
    std::array<float, 3> values{};
    function.Evaluate(x.data(), y.data(), values.data(), values.size());
    EXPECT_THAT(values, ElementsAre(21, 42, 63));
    EXPECT_EQ(folder.Files(), (Files{"addon.c", "recent", "recent.c"}));
}

TEST(FunctionCompiler, ReportsACompilerThatIsMissingOrStopped) {
    const Folder folder;
    {
        const test::EnvironmentVariable path("PATH", "");
        const CompileOutcome outcome = FunctionCompiler(folder.Path()).Compile("x");
        EXPECT_THAT(outcome.alerts, ElementsAre(CompilerAlert(folder)));
        EXPECT_THAT(outcome.text, HasSubstr("sudo apt install gcc"));
    }
    kits::ChildLimits slow;
    slow.time = 1ms;
    const CompileOutcome late = FunctionCompiler(folder.Path(), slow).Compile("x");
    EXPECT_THAT(late.alerts, ElementsAre(CompilerAlert(folder)));
    EXPECT_THAT(late.text, HasSubstr("longer than 1 ms"));
    kits::ChildLimits small;
    small.memory = 24 << 20;
    EXPECT_THAT(FunctionCompiler(folder.Path(), small).Compile("x").alerts,
                ElementsAre(CompilerAlert(folder)));
    EXPECT_EQ(folder.Files(), (Files{"addon.c", "recent.c"}));
}

TEST(FunctionCompiler, ReportsACompilerThatIsKilled) {
    const Folder folder;
    folder.WriteTemplate(Folder::OriginalTemplate());
    const fs::path compiler = folder.Path() / "path/gcc";
    fs::create_directories(compiler.parent_path());
    std::ofstream(compiler) << "#!/bin/sh\n: > recent\nkill -9 $$\n";
    fs::permissions(compiler, fs::perms::owner_all);
    {
        const test::EnvironmentVariable path("PATH", compiler.parent_path().c_str());
        const CompileOutcome outcome = FunctionCompiler(folder.Path()).Compile("x");
        EXPECT_THAT(outcome.alerts, ElementsAre(CompilerAlert(folder)));
        EXPECT_THAT(outcome.text, HasSubstr("gcc was stopped: Killed"));
    }
    EXPECT_EQ(folder.Files(), (Files{"addon.c", "recent.c"}));
    EXPECT_TRUE(FunctionCompiler(folder.Path()).Compile("x"));
}

TEST(FunctionCompiler, ReportsATemplateThatMisbehaves) {
    const Folder folder;
    kits::ChildLimits limits;
    limits.time = 5s;
    const FunctionCompiler compiler(folder.Path(), limits);
    for (const char* text : {
             "#error no\n",
             "#include \"recent.c\"\n",     // itself, without end
             "#include \"/dev/zero\"\n",    // no file of text
             "char big[1L << 28] = {1};\n", // more than a file may hold
             "char huge[1L << 62];\n",      // more than there is
             "#define A x x x x x x x x x x\n#define B A A A A A A A A A A\n"
             "#define C B B B B B B B B B B\n#define D C C C C C C C C C C\n"
             "#define E D D D D D D D D D D\n#define F E E E E E E E E E E\n"
             "#define G F F F F F F F F F F\nG G G G G G G G G G\n", // text without end
             "\xff\xfe no C",
         }) {
        folder.WriteTemplate(text);
        const CompileOutcome outcome = compiler.Compile("x");
        EXPECT_FALSE(outcome) << text;
        EXPECT_THAT(outcome.alerts, testing::SizeIs(1)) << text;
        EXPECT_FALSE(outcome.text.empty()) << text;
        EXPECT_LE(outcome.text.size(), limits.standardError + 1000) << text;
    }
    EXPECT_EQ(test::LoadedAddOns(), 0);
    folder.WriteTemplate(Folder::OriginalTemplate());
    EXPECT_TRUE(compiler.Compile("x"));
}

TEST(FunctionCompiler, WorksInAnyFolder) {
    for (const char* name : {"a b", "it's \"here\"; `id`", "$HOME", "-o", "\xc3\xa4\n%s"}) {
        const Folder folder(name);
        EXPECT_TRUE(FunctionCompiler(folder.Path()).Compile("x")) << name;
        const test::CurrentFolder current(folder.Path().parent_path());
        const CompileOutcome relative = FunctionCompiler(fs::path(name)).Compile("y");
        EXPECT_TRUE(relative) << name << "\n" << relative.text;
        fs::remove(folder.Function("addon.c"));
        EXPECT_THAT(FunctionCompiler(folder.Path()).Compile("x").alerts,
                    testing::Contains(HasSubstr(folder.Function("addon.c") + " \nis missing.")));
    }
}

TEST(FunctionCompiler, CompilesLongAndDeepExpressions) {
    std::string longest = "x";
    while (longest.size() < 10'000)
        longest += "+y";
    std::string deepest;
    for (int i = 0; i < 128; i++)
        deepest += "-(";
    deepest += "x" + std::string(128, ')');
    const Folder folder;
    const FunctionCompiler compiler(folder.Path());
    const CompileOutcome sum = compiler.Compile(longest);
    ASSERT_TRUE(sum) << sum.text;
    EXPECT_EQ(sum.addon->At(1, 2, nullptr), static_cast<float>(longest.size()));
    EXPECT_EQ(sum.addon->Expression(), longest);
    const CompileOutcome sign = compiler.Compile(deepest);
    ASSERT_TRUE(sign) << sign.text;
    EXPECT_EQ(sign.addon->At(3, 0, nullptr), 3);
}

TEST(FunctionCompiler, GivesEachOfTwoAtATimeItsOwnFunction) {
    const Folder folder;
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; i++) {
        threads.emplace_back([&folder, i] {
            const FunctionCompiler compiler(folder.Path());
            for (int k = 0; k < 12; k++) {
                const std::string expression = "x+" + std::to_string(100 * i + k);
                const CompileOutcome outcome = compiler.Compile(expression);
                ASSERT_TRUE(outcome) << outcome.text;
                EXPECT_EQ(outcome.addon->Expression(), expression);
                EXPECT_EQ(outcome.addon->At(0, 0, nullptr), static_cast<float>(100 * i + k));
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(folder.Files(), (Files{"addon.c", "recent", "recent.c"}));
    EXPECT_EQ(test::LoadedAddOns(), 0);
}

} // namespace
