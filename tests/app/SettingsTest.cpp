// SPDX-License-Identifier: GPL-3.0-or-later
// Catches settings that are lost or damaged, in files of the tests.
#include "app/Settings.h"

#include "kits/storage/ReadFile.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <regex>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using vexa::Settings;
using vexa::TextList;

class SettingsTest : public testing::Test {
  protected:
    std::string Content() const { return *kits::ReadFile(file); }
    /// Returns the output on standard error when the settings are read and while `use` runs.
    template<class Use>
    std::string Said(Use use) const {
        testing::internal::CaptureStderr();
        {
            Settings settings(file);
            use(settings);
        }
        return testing::internal::GetCapturedStderr();
    }

    const test::TemporaryFolder folder;
    const std::filesystem::path file = folder.Path() / "new/vexa/settings";
    const vexa::SettingKey<int> number{"a-number", 7};
};

TEST_F(SettingsTest, AreAsTheyWereSetWhenTheyAreReadAgain) {
    const TextList sounds = {"/a b/c = d.xml", " # \\n\n\\", "last"};
    EXPECT_EQ(Said([&](Settings& settings) {
                  settings.Set(vexa::kAuthorSetting, std::string(" Zoë\t"));
                  settings.Set(vexa::kClassicSetting, true);
                  settings.Set(vexa::kA4Setting, 0.1);
                  settings.Set(number, -3);
                  settings.Set(vexa::kRecentSetting, sounds);
                  EXPECT_EQ(settings.Get(number), -3);
              }),
              "");
    Settings again(file);
    EXPECT_EQ(again.Get(vexa::kAuthorSetting), " Zoë\t");
    EXPECT_TRUE(again.Get(vexa::kClassicSetting));
    EXPECT_EQ(again.Get(vexa::kA4Setting), 0.1);
    EXPECT_EQ(again.Get(number), -3);
    EXPECT_EQ(again.Get(vexa::kRecentSetting), sounds);
    EXPECT_EQ(again.Get(vexa::kSourceSetting), "Computer keyboard");
    EXPECT_TRUE(again.Get(vexa::kFavouritesSetting).empty());

    again.PutFirst(vexa::kRecentSetting, "last", 2);
    EXPECT_THAT(again.Get(vexa::kRecentSetting), ElementsAre("last", sounds[0]));
}

TEST_F(SettingsTest, KeepWhatOthersHaveWrittenInTheFile) {
    folder.Write("new/vexa/settings", "# mine\nfrom-later = 1\n\nauthor = A\na4=432\nauthor = B\n");
    std::optional<Settings> first(file);
    {
        Settings second(file);
        second.Set(vexa::kA4Setting, 442.0);
        second.Set(vexa::kClassicSetting, true);
        second.Set(number, 1);
    }
    EXPECT_EQ(first->Get(vexa::kAuthorSetting), "B");
    first->Set(vexa::kAuthorSetting, std::string("C"));
    first->Set(vexa::kFavouritesSetting, {"x", "y"});
    first->Set(number, 2);
    first.reset();
    EXPECT_EQ(Content(), "# mine\nfrom-later = 1\n\nauthor = C\na4 = 442\na-number = 2\n"
                         "classic = true\nfavourite = x\nfavourite = y\n");
    // In a list, entries that another program adds meanwhile stay, and removed entries disappear.
    first.emplace(file);
    first->Set(vexa::kFavouritesSetting, {"y", "z"});
    Settings(file).Set(vexa::kFavouritesSetting, {"x", "y", "w"});
    first.reset();
    EXPECT_THAT(Settings(file).Get(vexa::kFavouritesSetting), ElementsAre("y", "z", "w"));
    // What another program removes does not come back, unless it is used again.
    Settings(file).Set(vexa::kFavouritesSetting, {"a", "b", "c"});
    Settings(file).Set(vexa::kRecentSetting, {"a", "b", "c"});
    first.emplace(file);
    Settings(file).Set(vexa::kFavouritesSetting, {"c"});
    Settings(file).Set(vexa::kRecentSetting, {"c"});
    first->Set(vexa::kFavouritesSetting, {"a", "b", "c", "d"});
    first->PutFirst(vexa::kRecentSetting, "b", 3);
    first.reset();
    EXPECT_THAT(Settings(file).Get(vexa::kFavouritesSetting), ElementsAre("c", "d"));
    EXPECT_THAT(Settings(file).Get(vexa::kRecentSetting), ElementsAre("b", "c"));
    // A file that is lost has removed nothing.
    first.emplace(file);
    std::filesystem::remove(file);
    first->Set(vexa::kFavouritesSetting, {"c", "d", "e"});
    first.reset();
    EXPECT_THAT(Settings(file).Get(vexa::kFavouritesSetting), ElementsAre("c", "d", "e"));
    // An empty list has no line.
    Settings(file).Set(vexa::kFavouritesSetting, {});
    EXPECT_THAT(Content(), testing::Not(HasSubstr("favourite")));
}

TEST_F(SettingsTest, OfAFileThatIsWrongTheyTellTheLinesAndKeepThem) {
    const std::string before = "author = A\nclassic = perhaps\n\x01\x02\nautor = B\nand so on\n";
    const auto at = [this](int line, const std::string& fault) {
        return "vexa: warning: " + file.string() + ':' + std::to_string(line) + ": " + fault + '\n';
    };
    folder.Write("new/vexa/settings", before);
    EXPECT_THAT(Said([&](Settings& settings) {
                    EXPECT_EQ(settings.Get(vexa::kAuthorSetting), "A");
                    EXPECT_FALSE(settings.Get(vexa::kClassicSetting));
                    EXPECT_FALSE(settings.Get(vexa::kClassicSetting));
                }),
                at(3, "\"??\" is no setting (name = value)") + at(4, "there is no setting autor") +
                    at(5, "\"and so on\" is no setting (name = value)") +
                    at(2, "classic cannot be \"perhaps\"; it is true or false"));
    EXPECT_EQ(Content(), before);
    Said([&](Settings& settings) { settings.Set(vexa::kStripSetting, false); });
    EXPECT_EQ(Content(), before + "strip = false\n");
    Said([&](Settings& settings) { settings.Set(vexa::kClassicSetting, true); });
    EXPECT_THAT(Content(), HasSubstr("\nclassic = true\n\x01\x02\n"));
    folder.Write("new/vexa/settings", "x=1\ny=1\nz=1\n1\n2\n3\nx=2\n");
    EXPECT_THAT(Said([](Settings&) {}),
                testing::AllOf(HasSubstr(at(5, "\"2\" is no setting (name = value)") +
                                         "vexa: warning: " + file.string() +
                                         ": 2 other lines are wrong too\n"),
                               testing::Not(HasSubstr(":6:"))));

    // A file that cannot be read, and a place where nothing can be written.
    std::filesystem::remove(file);
    std::filesystem::create_directory(file);
    EXPECT_THAT(Said([&](Settings& settings) { EXPECT_EQ(settings.Get(number), 7); }),
                HasSubstr("could not read " + file.string()));
    Said([&](Settings& settings) { settings.Set(number, 1); });
    EXPECT_EQ(Content(), "a-number = 1\n");
    EXPECT_TRUE(std::filesystem::is_directory(file.string() + ".broken"));
    std::filesystem::remove_all(folder.Path() / "new");
    folder.Write("new", "");
    EXPECT_THAT(Said([&](Settings& settings) { settings.Set(number, 1); }),
                HasSubstr("could not create the folder " + file.parent_path().string()));
}

/// A setting that is missing in the list of names would be reported when it is read again.
TEST_F(SettingsTest, KnowTheNamesOfAllSettings) {
    const std::string keys = *kits::ReadFile(VEXA_SOURCE_FOLDER "/src/app/SettingKeys.h");
    const std::regex key("SettingKey<[^>]*> *k\\w*\\{\"([^\"]*)\"");
    std::string lines;
    for (std::sregex_iterator found(keys.begin(), keys.end(), key), end; found != end; ++found)
        lines += found->str(1) + " = 1\n";
    EXPECT_EQ(std::ranges::count(lines, '\n'), std::ssize(vexa::kSettingNames));
    folder.Write("new/vexa/settings", lines);
    EXPECT_EQ(Said([](Settings&) {}), "");
}

TEST_F(SettingsTest, AreSavedAtRestAndNotAtEachPixel) {
    Settings settings(file);
    const auto start = Settings::Clock::now();
    for (int i = 0; i < 100; i++) {
        settings.Set(number, i);
        settings.Pulse(start);
    }
    EXPECT_FALSE(std::filesystem::exists(file));
    const auto pulseUntil = [&](const char* content) {
        while (!std::filesystem::exists(file) || Content() != content)
            settings.Pulse(Settings::Clock::now() + Settings::kRest);
    };
    pulseUntil("a-number = 99\n");
    settings.Set(number, 7);
    pulseUntil("a-number = 7\n");
}

} // namespace
