// SPDX-License-Identifier: GPL-3.0-or-later
#include "functions/CompileFolder.h"

#include "functions/ProgramFolder.h"
#include "kits/storage/FileReplacement.h"
#include "support/Command.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;
using vexa::CompileFolder;

TEST(CompileFolder, IsTheOwnersAloneAndGoesWithItsObject) {
    const test::TemporaryFolder parent;
    {
        const auto folder = CompileFolder::Create(parent.Path());
        ASSERT_TRUE(folder) << folder.Fault().text;
        EXPECT_EQ(fs::status(folder->Path()).permissions(), fs::perms::owner_all);
        std::ofstream(folder->Path() / "recent.c") << "x";
        const auto second = CompileFolder::Create(parent.Path());
        ASSERT_TRUE(second);
        EXPECT_TRUE(fs::exists(folder->Path() / "recent.c")) << "what is in use stays";
        EXPECT_EQ(parent.Count(), 2U);
    }
    EXPECT_EQ(parent.Count(), 0U);
}

/// The next compilation removes the files of a program that was killed while it compiled, and
/// nothing else.
TEST(CompileFolder, RemovesWhatAKilledProgramHasLeft) {
    const test::TemporaryFolder parent;
    const fs::path precious = parent.Write("elsewhere/precious", "x");
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        const auto folder = CompileFolder::Create(parent.Path());
        std::ofstream(folder->Path() / "recent.c") << "x";
        fs::create_directory_symlink(precious.parent_path(), folder->Path() / "link");
        [[maybe_unused]] const ssize_t written = ::write(ends[1], "r", 1);
        for (;;)
            ::pause();
    }
    char ready = 0;
    ASSERT_EQ(::read(ends[0], &ready, 1), 1);
    ASSERT_TRUE(CompileFolder::Create(parent.Path()));
    EXPECT_EQ(parent.Count(), 2U) << "that of a living program stays";
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    ::close(ends[0]);
    ::close(ends[1]);
    EXPECT_EQ(parent.Count(), 2U);

    parent.Write(".compile-file", "a file of that name is none of ours");
    fs::create_directory_symlink(precious.parent_path(), parent.Path() / ".compile-link");
    ASSERT_TRUE(CompileFolder::Create(parent.Path()));
    EXPECT_EQ(parent.Count(), 3U);
    EXPECT_TRUE(fs::exists(precious));
}

TEST(CompileFolder, IsNeverWhereOthersCouldReplaceIt) {
    const test::ProgramFolder program;
    ::chmod(program.Functions().c_str(), 0777);
    const auto outcome = vexa::FunctionCompiler(program.Path()).Compile("x");
    EXPECT_FALSE(outcome);
    EXPECT_NE(outcome.text.find("chmod go-w " + program.Functions().string()), std::string::npos)
        << outcome.text;
    ::chmod(program.Functions().c_str(), 0755);
    ::chmod(program.Path().c_str(), 0777);
    const std::string above = vexa::FunctionCompiler(program.Path()).Compile("x").text;
    EXPECT_TRUE(above.ends_with("chmod go-w " + program.Path().string())) << above;
    ::chmod(program.Path().c_str(), 01777);
    const mode_t before = ::umask(0);
    EXPECT_TRUE(vexa::FunctionCompiler(program.Path()).Compile("x"));
    ::umask(before);
    for (const char* name : {"recent", "recent.c"})
        EXPECT_EQ(fs::status(program.Function(name)).permissions(),
                  fs::perms::owner_read | fs::perms::owner_write)
            << name;

    const auto missing = CompileFolder::Create(program.Path() / "none");
    ASSERT_FALSE(missing);
    EXPECT_NE(missing.Fault().text.find("none: No such file"), std::string::npos);
}

/// Many programs that compile and clean up at the same time leave each other's folders alone.
TEST(CompileFolder, ManyAtATimeKeepTheirs) {
    const test::TemporaryFolder parent;
    std::vector<pid_t> children;
    for (int i = 0; i < 4; i++) {
        children.push_back(::fork());
        if (children.back() != 0)
            continue;
        for (int k = 0; k < 100; k++) {
            const auto folder = CompileFolder::Create(parent.Path());
            if (!folder || !kits::ReplaceFile(folder->Path() / "a", "b") ||
                test::Contents(folder->Path() / "a") != "b")
                ::_exit(1);
        }
        ::_exit(0);
    }
    for (const pid_t child : children) {
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(test::ExitCode(status), 0);
    }
    EXPECT_EQ(parent.Count(), 0U);
}

} // namespace
