// SPDX-License-Identifier: GPL-3.0-or-later
// Catches the wrong choice between two files of one name: the user's, or the shipped one.
#include "kits/storage/ProgramFolder.h"

#include "support/Environment.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

/// The digest of "abc" as FIPS 180-4's examples give it.
constexpr const char* kAbc = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";

class ProgramFoldersTest : public testing::Test {
  protected:
    ProgramFoldersTest() {
        folder.Write("shipped/shipped-content",
                     std::string(kAbc) + "  sounds/bell.xml\n" + kAbc + "  sounds/gone.xml\n");
        for (const char* name : {"bell.xml", "bass.xml", "plain"})
            folder.Write(fs::path("shipped/sounds") / name, "newest");
    }

    /// Returns the path found, relative to the temporary folder.
    std::string Found(const char* name) const {
        return folders.Find("sounds", name).lexically_relative(folder.Path()).string();
    }
    std::string Meant(const fs::path& word) const {
        const auto found = folders.FindDocument("sounds", word);
        return found ? found->lexically_proximate(folder.Path()).string() : found.Fault().text;
    }

    test::TemporaryFolder folder;
    // The trailing slash is that of a user's $XDG_DATA_HOME.
    kits::ProgramFolders folders{folder.Path() / "own/", folder.Path() / "shipped"};
};

TEST_F(ProgramFoldersTest, APersonsNamesStandBeforeTheProgramsAndCopiesDoNot) {
    EXPECT_EQ(Found("bass.xml"), "shipped/sounds/bass.xml");
    EXPECT_EQ(Found("new.xml"), "own/sounds/new.xml");
    for (const char* name : {"bass.xml", "bell.xml", "gone.xml", "mine.xml"})
        folder.Write(fs::path("own/sounds") / name, "abc");
    EXPECT_EQ(Found("bass.xml"), "own/sounds/bass.xml") << "no version of that name";
    EXPECT_EQ(Found("bell.xml"), "shipped/sounds/bell.xml");
    EXPECT_EQ(Found("mine.xml"), "own/sounds/mine.xml");
    EXPECT_EQ(Found("gone.xml"), "own/sounds/gone.xml") << "there is no other one";
    folder.Write("own/sounds/bell.xml", "abcd");
    EXPECT_EQ(Found("bell.xml"), "own/sounds/bell.xml");
    folder.Write("own/sounds/.hidden.xml", "abcd");
    folder.Write("own/sounds/Zebra.xml/in.xml", "abcd");
    EXPECT_EQ(folders.Documents("sounds"),
              (std::vector<std::string>{"bass.xml", "bell.xml", "gone.xml", "mine.xml"}));
    folder.Write("shipped/sounds/bell.xml", "abc");
    const kits::ProgramFolders one(folder.Path() / "shipped");
    EXPECT_EQ(one.Own("sounds"), one.Shipped("sounds"));
    EXPECT_FALSE(one.IsCopy(one.Own("sounds") / "bell.xml"));
    // If one folder serves as both, the list of shipped files tells whose a file is.
    EXPECT_FALSE(one.IsOwn("sounds", one.Own("sounds") / "bell.xml"));
    EXPECT_TRUE(one.IsOwn("sounds", one.Own("sounds") / "bass.xml"));
    EXPECT_FALSE(folders.IsOwn("sounds", folders.Find("sounds", "plain")));
    EXPECT_TRUE(folders.IsOwn("sounds", folders.Find("sounds", "mine.xml")));
}

TEST_F(ProgramFoldersTest, AWordIsAPathThenAPersonsThenAShippedName) {
    EXPECT_EQ(Meant("bell"), "shipped/sounds/bell.xml");
    EXPECT_EQ(Meant("bell.xml"), "shipped/sounds/bell.xml");
    folder.Write("own/sounds/bell.xml", "abc");
    EXPECT_EQ(Meant("bell"), "shipped/sounds/bell.xml");
    folder.Write("own/sounds/bell.xml", "mine");
    EXPECT_EQ(Meant("bell"), "own/sounds/bell.xml");
    folder.Write("own/sounds/plain.xml", "mine");
    EXPECT_EQ(Meant("plain"), "own/sounds/plain.xml") << "a person's, under whichever name";
    folder.Write("here/bass", "at hand");
    fs::create_directory(folder.Path() / "here/bell");
    const test::CurrentFolder current(folder.Path() / "here");
    EXPECT_EQ(Meant("bass"), "bass");
    EXPECT_EQ(Meant("bell"), "own/sounds/bell.xml") << "a folder is no document";
    EXPECT_THAT(Meant("none"), testing::AllOf(HasSubstr("none.xml"), HasSubstr("own/sounds"),
                                              HasSubstr("shipped/sounds")));
    EXPECT_EQ(Meant("/none/bell"), "there is no file /none/bell");
}

TEST_F(ProgramFoldersTest, TheUsersFolderIsMadeForTheUserAlone) {
    const test::EnvironmentVariable data("XDG_DATA_HOME", (folder.Path() / "new/data").c_str());
    const auto found = kits::FindProgramFolders("vexa", true);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->Own("samples"), folder.Path() / "new/data/vexa/samples");
    EXPECT_FALSE(fs::exists(folder.Path() / "new")) << "finding a place makes nothing";
    ASSERT_TRUE(found->MakeOwn());
    for (const char* made : {"new", "new/data/vexa/functions", "new/data/vexa/pictures"})
        EXPECT_EQ(fs::status(folder.Path() / made).permissions(), fs::perms::owner_all) << made;
    // A file panel, which gives paths without links, shows the same files.
    fs::create_directory_symlink(folder.Path() / "new", folder.Path() / "link");
    const test::EnvironmentVariable linked("XDG_DATA_HOME", (folder.Path() / "link/data").c_str());
    EXPECT_EQ(kits::FindProgramFolders("vexa", true)->Own("samples"), found->Own("samples"));
    folder.Write("taken", "");
    const test::EnvironmentVariable taken("XDG_DATA_HOME", (folder.Path() / "taken").c_str());
    const auto failed = kits::FindProgramFolders("vexa", true)->MakeOwn();
    ASSERT_FALSE(failed);
    EXPECT_THAT(failed.Fault().text, HasSubstr("taken/vexa/functions: Not a directory"));
    // A service may run without any of the variables.
    const test::EnvironmentVariable none("XDG_DATA_HOME", ""), homeless("HOME", "");
    const auto inHome = kits::FindProgramFolders("vexa", true);
    ASSERT_TRUE(inHome) << inHome.Fault().text;
    const fs::path home = ::getpwuid(::getuid())->pw_dir;
    EXPECT_EQ(inHome->Own("samples"), fs::weakly_canonical(home / ".local/share/vexa") / "samples");
}

TEST(ProgramFoldersNames, AFileIsNamedByItsLeafWhereThatFindsItAgain) {
    const test::TemporaryFolder folder;
    const fs::path program = fs::canonical(folder.Path());
    folder.Write("samples/a.wav", "");
    folder.Write("samples/more/a.wav", "");
    const auto name = [&](const char* path) {
        return kits::ProgramFolders(program).NameOf("samples", program / path);
    };
    EXPECT_EQ(name("samples/a.wav"), "a.wav");
    EXPECT_EQ(name("samples//a.wav"), "a.wav");
    EXPECT_EQ(name("samples/more/../a.wav"), "a.wav");
    EXPECT_EQ(name("samples/more/a.wav"), (program / "samples/more/a.wav").string());
    EXPECT_EQ(name("a.wav"), (program / "a.wav").string());
    EXPECT_EQ(kits::ProgramFolders(program / "none").NameOf("samples", "/usr/a.wav"), "/usr/a.wav");
    folder.Write("shipped/samples/a.wav", "");
    folder.Write("shipped/samples/b.wav", "");
    const kits::ProgramFolders both(program, program / "shipped");
    const auto shipped = [&](const char* leaf) {
        return both.NameOf("samples", program / "shipped/samples" / leaf);
    };
    EXPECT_EQ(shipped("b.wav"), "b.wav");
    EXPECT_EQ(shipped("a.wav"), (program / "shipped/samples/a.wav").string())
        << "one stands before";
    const test::CurrentFolder current(program);
    const kits::ProgramFolders here(".");
    EXPECT_EQ(here.NameOf("samples", "samples/a.wav"), "a.wav");
    EXPECT_EQ(here.NameOf("samples", "b.wav"), (program / "b.wav").string());
}

} // namespace
