// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/ReadFile.h"

#include "kits/storage/Digest.h"
#include "support/TemporaryFolder.h"

#include <fstream>
#include <thread>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;

TEST(ReadFile, TakesRegularFilesUpToALengthAndRefusesTheRestAtOnce) {
    const test::TemporaryFolder folder;
    const std::string bytes = std::string(100'000, '\0') + "\r\n\n";
    const fs::path file = folder.Write("file", bytes);
    const fs::path link = folder.Path() / "link";
    fs::create_symlink("file", link);
    for (const fs::path& path : {file, link}) {
        const auto read = kits::ReadFile(path, bytes.size());
        ASSERT_TRUE(read) << read.Fault().text;
        EXPECT_TRUE(*read == bytes);
        EXPECT_EQ(*kits::DigestOfFile(path), kits::Digest(bytes));
    }

    const fs::path pipe = folder.Path() / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const fs::path sparse = folder.Write("sparse", "");
    fs::resize_file(sparse, 100'000'000'000);
    const std::pair<fs::path, std::string> cases[] = {
        {folder.Path() / "none", "No such file or directory"},
        {folder.Path(), "it is a folder, not a file"},
        {pipe, "it is a pipe, not a file"},
        {"/dev/zero", "it is a device, not a file"},
        {"/dev/random", "it is a device, not a file"},
        {sparse, "it is larger than 64 MB"},
    };
    for (const auto& [path, reason] : cases) {
        const auto read = kits::ReadFile(path);
        ASSERT_FALSE(read) << path;
        EXPECT_EQ(read.Fault().text, "could not read " + path.string() + ": " + reason);
    }
    // A stream may read from a pipe, with the same limit.
    std::thread writer([&] { std::ofstream(pipe) << bytes; });
    const auto piped = kits::ReadStream(pipe);
    writer.join();
    EXPECT_TRUE(piped && *piped == bytes);
    EXPECT_EQ(kits::ReadStream("/dev/zero").Fault().text,
              "could not read /dev/zero: it is larger than 64 MB");
    EXPECT_EQ(kits::ReadStream(folder.Path()).Fault().text,
              "could not read " + folder.Path().string() + ": Is a directory");
    // The system reports its length as 0.
    EXPECT_TRUE(kits::ReadFile("/proc/self/status"));
    EXPECT_FALSE(kits::ReadFile("/proc/self/status", 10));
}

} // namespace
