// SPDX-License-Identifier: GPL-3.0-or-later
#include "documents/DocumentKind.h"

#include "documents/SoundDocument.h"
#include "support/Limits.h"
#include "support/SoundFiles.h"
#include "support/TemporaryFolder.h"

#include <array>
#include <cstring>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace {

using namespace vexa;
using test::TemporaryFolder;
using testing::HasSubstr;
using testing::Not;

TEST(DocumentKind, ContentDecidesAndTheTypeOnlyWhereThatTellsNothing) {
    const std::string wav = test::ShortWav({1, 2, 3}, 8000, 1);
    const std::string utf16("\xFF\xFE<\0a\0>\0", 8);
    const std::string png = "\x89PNG\r\n\x1A\n";
    const auto [sound, function, sample, picture] = std::array{
        DocumentKind::Sound, DocumentKind::Function, DocumentKind::Sample, DocumentKind::Picture};
    const struct {
        const char* name;
        std::string content;
        const char* type;
        DocumentKind kind;
    } cases[] = {
        {"a", "\xEF\xBB\xBF <vexasound></vexasound>", "", sound},
        {"b", "<vexafunction></vexafunction>", kSoundFileType, function},
        {"c", "<!-- --><vexasamplefunction></vexasamplefunction>", "", function},
        {"d", "<vexasound></vexasound>", kFunctionFileType, sound},
        {"e", wav, kSoundFileType, sample},
        {"f.xml", wav, "", sample},
        {"g", "<svg></svg>", kSoundFileType, sound},
        {"h", "<svg></svg>", "", function},
        {"i", "vexasound", kSoundFileType, sound},
        {"j.xml", "vexasound", "", sample},
        {"k", "", kSoundFileType, sound},
        {"l.xml", "", "", function},
        {"m.xml", " \n", "", function},
        {"n.xml", utf16, "", function},
        {"o.xml", utf16.substr(2), "", function},
        {"p.wav", "", "", sample},
        {"q", "<vexapicturefunction></vexapicturefunction>", kSoundFileType, function},
        {"r.xml", png, kSoundFileType, picture},
        {"s.wav", "\xFF\xD8\xFF\xE0", "", picture},
        {"t.png", "\x89PNG, says the text", "", sample},
    };
    const TemporaryFolder folder;
    const bool keepsTypes = ::setxattr(folder.Path().c_str(), "user.probe", "", 0, 0) == 0;
    for (const auto& [name, content, type, kind] : cases) {
        const auto path = folder.Write(name, content);
        if (*type && !keepsTypes)
            continue;
        if (*type)
            ::setxattr(path.c_str(), "user.mime_type", type, std::strlen(type), 0);
        EXPECT_EQ(KindOf(path), kind) << name;
        const bool isOfAKind = std::string("abcdefqrs").find(name[0]) != std::string::npos;
        EXPECT_EQ(IsOfAKind(path), isOfAKind) << name;
        // Who takes another kind for a sound is told what the file is instead.
        const char* const other = kind == function ? "function"
                                  : kind == sample ? "sample"
                                                   : "picture";
        const auto read = ReadSound(path);
        if (isOfAKind && kind != sound) {
            ASSERT_FALSE(read) << name;
            EXPECT_THAT(read.Fault().alerts, testing::ElementsAre(kInvalidSound)) << name;
            EXPECT_THAT(read.Fault().text, HasSubstr(std::string("the file is a ") + other + "; "));
        } else if (!read) {
            EXPECT_THAT(read.Fault().text, Not(HasSubstr("the file is"))) << name;
        }
    }
}

TEST(DocumentKind, WaitsForNobodyAndLetsNothingOut) {
    const TemporaryFolder folder;
    const auto pipe = folder.Path() / "pipe.xml";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(KindOf(pipe), DocumentKind::Function);
    for (const auto& path : {pipe, std::filesystem::path("/dev/zero"), folder.Path()})
        EXPECT_FALSE(IsOfAKind(path)) << path;
    EXPECT_EQ(KindOf("/dev/zero"), DocumentKind::Sample);
    EXPECT_EQ(KindOf(folder.Path() / "none"), DocumentKind::Sample);
    EXPECT_EQ(KindOf(""), DocumentKind::Sample);
    if (test::kSanitized)
        return;
    std::string large = "<vexasound>";
    while (large.size() < (8U << 20))
        large += "<a/>";
    const auto path = folder.Write("large.xml", large);
    test::WithMemoryLeft(16 << 20, [&] { EXPECT_NO_THROW(KindOf(path)); });
    test::WithMemoryLeft(16 << 20, [&] { EXPECT_NO_THROW(IsOfAKind(path)); });
}

} // namespace
