// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/kernel/Image.h"

#include "kits/kernel/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using test::TemporaryFolder;

/// Builds the source into `file`, replacing an older build.
void BuildAddOn(const TemporaryFolder& folder, const char* file, const char* source) {
    folder.Write("source.c", source);
    const auto built =
        kits::RunProgram({{"gcc", "-shared", "-fPIC", "-o", "new", "source.c"}, folder.Path(), {}});
    ASSERT_TRUE(built.Succeeded()) << built.standardError;
    fs::rename(folder.Path() / "new", folder.Path() / file);
}

int Call(image_id image) {
    void* address = nullptr;
    if (get_image_symbol(image, "number", B_SYMBOL_TYPE_TEXT, &address) != B_OK)
        return -1;
    return reinterpret_cast<int (*)()>(address)();
}

TEST(Image, LoadsWhatTheFileIsNowBesideWhatItWas) {
    const TemporaryFolder folder;
    const fs::path file = folder.Path() / "add on";
    BuildAddOn(folder, "add on", "int number(void) { return 1; }");
    const image_id first = load_add_on(file.c_str());
    ASSERT_GT(first, 0);
    BuildAddOn(folder, "add on", "int number(void) { return 2; }");
    const image_id second = load_add_on(file.c_str());
    ASSERT_GT(second, 0);
    EXPECT_EQ(Call(first), 1);
    EXPECT_EQ(Call(second), 2);
    EXPECT_EQ(unload_add_on(first), B_OK);
    EXPECT_EQ(Call(second), 2);
    EXPECT_EQ(Call(first), -1);
    EXPECT_EQ(unload_add_on(first), B_BAD_VALUE);

    void* address = nullptr;
    EXPECT_EQ(get_image_symbol(second, "none", B_SYMBOL_TYPE_TEXT, &address), B_NAME_NOT_FOUND);
    EXPECT_EQ(unload_add_on(second), B_OK);
}

TEST(Image, SaysWhyItDoesNotLoad) {
    const TemporaryFolder folder;
    EXPECT_EQ(load_add_on((folder.Path() / "none").c_str()), B_ENTRY_NOT_FOUND);
    EXPECT_NE(kits::AddOnFault().find("none: No such file"), std::string::npos);
    EXPECT_LT(load_add_on(folder.Write("text", "no object").c_str()), 0);
    EXPECT_NE(kits::AddOnFault().find("text: "), std::string::npos) << kits::AddOnFault();
    BuildAddOn(folder, "lost", "int lost(void); int number(void) { return lost(); }");
    EXPECT_LT(load_add_on((folder.Path() / "lost").c_str()), 0) << "all names are resolved at once";
    EXPECT_NE(kits::AddOnFault().find("undefined symbol: lost"), std::string::npos)
        << kits::AddOnFault();
}

} // namespace
