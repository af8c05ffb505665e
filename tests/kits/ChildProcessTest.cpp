// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/kernel/ChildProcess.h"

#include "support/Environment.h"
#include "support/TemporaryFolder.h"

#include <array>
#include <csignal>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using End = kits::ChildResult::End;
using test::TemporaryFolder;

/// Runs a line of shell, which can imitate every behaviour of a program.
kits::ChildResult Shell(const std::string& line, kits::ChildLimits limits = {},
                        std::vector<std::string> more = {}, const fs::path& folder = {}) {
    std::vector<std::string> arguments{"/bin/sh", "-c", line, "sh"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return kits::RunProgram({arguments, folder, limits});
}

TEST(ChildProcess, TellsHowTheProgramEnded) {
    EXPECT_TRUE(Shell("exit 0").Succeeded());
    const kits::ChildResult failed = Shell("echo words >&2; exit 3");
    EXPECT_EQ(failed.end, End::exited);
    EXPECT_EQ(failed.number, 3);
    EXPECT_EQ(failed.standardError, "words\n");
    EXPECT_FALSE(failed.Succeeded());
    const kits::ChildResult killed = Shell("kill -s TERM $$");
    EXPECT_EQ(killed.end, End::signalled);
    EXPECT_EQ(killed.number, SIGTERM);
}

TEST(ChildProcess, TellsWhyTheProgramDidNotStart) {
    const TemporaryFolder folder;
    EXPECT_EQ(kits::RunProgram({{"/no/such/program"}, {}, {}}).end, End::notFound);
    EXPECT_EQ(kits::RunProgram({{"no-such-program"}, {}, {}}).end, End::notFound);
    EXPECT_EQ(kits::RunProgram({{}, {}, {}}).end, End::notFound);

    const kits::ChildResult noFolder = Shell("exit 0", {}, {}, folder.Path() / "none");
    EXPECT_EQ(noFolder.end, End::notStarted);
    EXPECT_EQ(noFolder.number, ENOENT);
    const fs::path text = folder.Write("text", "not a program");
    fs::permissions(text, fs::perms::owner_all);
    const kits::ChildResult noProgram = kits::RunProgram({{text.string()}, {}, {}});
    EXPECT_EQ(noProgram.end, End::notStarted);
    EXPECT_EQ(noProgram.number, ENOEXEC);
}

TEST(ChildProcess, LooksAPlainNameUpInTheFoldersOfThePathOnly) {
    const TemporaryFolder folder;
    const fs::path program = folder.Write("vexa-test-program", "#!/bin/sh\nexit 7\n");
    fs::permissions(program, fs::perms::owner_all);
    const test::CurrentFolder current(folder.Path());
    {
        const test::EnvironmentVariable path("PATH", ":.:/nowhere");
        EXPECT_EQ(kits::RunProgram({{"vexa-test-program"}, {}, {}}).end, End::notFound)
            << "the current folder is not searched";
    }
    const test::EnvironmentVariable path("PATH", ("/nowhere:" + folder.Path().string()).c_str());
    EXPECT_EQ(kits::RunProgram({{"vexa-test-program"}, {}, {}}).number, 7);
}

TEST(ChildProcess, PassesArgumentsAsTheyAreAndNothingElse) {
    EXPECT_EQ(Shell("printf %s \"$1$2\" >&2", {}, {"-a \"b\" $HOME; `id`", "\t'"}).standardError,
              "-a \"b\" $HOME; `id`\t'");
    EXPECT_EQ(Shell("cat; echo end >&2").standardError, "end\n") << "input is empty";

    const int open = ::open("/dev/null", O_RDONLY);
    const std::string check = "[ -e /proc/self/fd/" + std::to_string(open) + " ] && echo leak >&2";
    EXPECT_EQ(Shell(check).standardError, "");
    ::close(open);

    const TemporaryFolder folder;
    EXPECT_EQ(Shell("echo $PWD $TMPDIR >&2", {}, {}, folder.Path()).standardError,
              folder.Path().string() + " " + folder.Path().string() + "\n");
    // Signals that this process ignores or blocks still reach the program.
    auto* const handler = std::signal(SIGTERM, SIG_IGN);
    EXPECT_EQ(Shell("kill -s TERM $$").end, End::signalled);
    std::signal(SIGTERM, handler);
}

TEST(ChildProcess, WorksWithoutStandardInput) {
    const int saved = ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3);
    ::close(STDIN_FILENO);
    const kits::ChildResult result = Shell("cat; echo words >&2; exit 3");
    ::dup2(saved, STDIN_FILENO);
    ::close(saved);
    EXPECT_EQ(result.number, 3);
    EXPECT_EQ(result.standardError, "words\n");
}

TEST(ChildProcess, SetsTheLimits) {
    kits::ChildLimits limits;
    limits.processorTime = 9s;
    limits.memory = 512 << 20;
    limits.fileSize = 1 << 20;
    limits.standardError = 1000;
    const kits::ChildResult shown =
        Shell("for limit in t v f c; do ulimit -$limit; done >&2", limits);
    EXPECT_EQ(shown.standardError, "9\n524288\n2048\n0\n");

    const kits::ChildResult talkative = Shell("head -c 1000000 /dev/zero >&2", limits);
    EXPECT_TRUE(talkative.Succeeded()) << "what is not kept is read all the same";
    EXPECT_EQ(talkative.standardError.size(), 1000U);

    limits.processorTime = 1s;
    EXPECT_EQ(Shell("while :; do :; done", limits).end, End::signalled);
}

TEST(ChildProcess, KillsAllThatTheProgramStarted) {
    const TemporaryFolder folder;
    const fs::path fifo = folder.Path() / "fifo";
    for (const bool waits : {true, false}) {
        ::unlink(fifo.c_str());
        ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
        const int end = ::open(fifo.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        kits::ChildLimits limits;
        limits.time = waits ? 500ms : 30'000ms;
        const kits::ChildResult result =
            Shell(waits ? "exec 9>\"$1\"; sleep 60 & sleep 60" : "exec 9>\"$1\"; sleep 60 & exit 4",
                  limits, {fifo.string()});
        EXPECT_EQ(result.end, waits ? End::timedOut : End::exited);
        pollfd writers{end, POLLIN, 0};
        ::poll(&writers, 1, 20'000);
        EXPECT_NE(writers.revents & POLLHUP, 0) << "nobody has the pipe open any more";
        ::close(end);
    }
}

TEST(ChildProcess, EndsWithItsCaller) {
    const TemporaryFolder folder;
    const fs::path fifo = folder.Path() / "fifo";
    for (const bool killed : {true, false}) {
        ::unlink(fifo.c_str());
        ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
        const int end = ::open(fifo.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        const auto run = [&](std::function<bool()> stop) {
            return kits::RunProgram(
                {{"/bin/sh", "-c", "exec 9>\"$1\"; echo here >&9; sleep 60 & sleep 60", "sh",
                  fifo.string()},
                 {},
                 {},
                 std::move(stop)});
        };
        pollfd written{end, POLLIN, 0};
        if (killed) {
            const pid_t caller = ::fork();
            if (caller == 0) {
                run(nullptr);
                ::_exit(0);
            }
            EXPECT_EQ(::poll(&written, 1, 20'000), 1);
            ::kill(caller, SIGKILL);
            ::waitpid(caller, nullptr, 0);
        } else {
            const auto result = run([&written] { return ::poll(&written, 1, 0) == 1; });
            EXPECT_EQ(result.end, End::stopped);
        }
        std::array<char, 16> here;
        EXPECT_EQ(::read(end, here.data(), here.size()), 5);
        written.revents = 0;
        ::poll(&written, 1, 20'000);
        EXPECT_NE(written.revents & POLLHUP, 0) << "nobody has the pipe open any more";
        ::close(end);
    }
}

} // namespace
