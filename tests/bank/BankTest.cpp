// SPDX-License-Identifier: GPL-3.0-or-later
// Catches faults in the list of all sounds: its entries, its search, and its updates when files
// change.
#include "bank/Bank.h"

#include "bank/Thumbnail.h"
#include "kits/support/ThreadTime.h"
#include "support/Content.h"
#include "support/Pictures.h"
#include "support/SoundFiles.h"
#include "support/TemporaryFolder.h"
#include "synth/ParameterTable.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using namespace vexa;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

Sound Named(const char* name, const char* category, const char* tags, const char* expression) {
    Sound sound;
    sound.author = "Zoë Ångström";
    sound.info = {name, category, tags, "Opens slowly."};
    sound.function.expression = expression;
    return sound;
}

/// A bank of two folders, with helpers to wait for its results.
class BankTest : public testing::Test {
  protected:
    BankTest() {
        for (const char* name : {"own/sounds", "own/samples", "shipped/sounds", "shipped/samples",
                                 "own/pictures", "shipped/pictures"})
            fs::create_directories(folder.Path() / name);
        Save("shipped/sounds/bell.xml", Named("Bell", "bell", "bright", "sin(x) * cos(y)"));
        Save("shipped/sounds/bass.xml", Named("Bass", "bass", "warm, Élan", "x*y"));
    }

    fs::path Save(const fs::path& name, const Sound& sound) const {
        EXPECT_TRUE(WriteSound(folder.Path() / name, sound));
        return folder.Path() / name;
    }

    /// Returns the view for which the condition holds, which must appear within 20 s.
    template<class Predicate>
    std::shared_ptr<const BankView> Await(Predicate predicate) {
        if (!bank)
            bank = std::make_unique<Bank>(folders, 48, [this] {
                const std::lock_guard lock(mutex);
                changes++;
                changed.notify_all();
            });
        std::unique_lock lock(mutex);
        std::shared_ptr<const BankView> view;
        const bool came = changed.wait_for(lock, std::chrono::seconds(20), [&] {
            view = bank->View();
            return view->pictured && predicate(*view);
        });
        EXPECT_TRUE(came);
        return view;
    }
    std::shared_ptr<const BankView> AwaitSounds(std::size_t count) {
        return Await([count](const BankView& view) { return view.sounds.size() == count; });
    }

    static std::vector<std::string> Names(const BankView& view, const SoundQuery& query,
                                          const Favourites& favourites = {}) {
        std::vector<std::string> names;
        for (const std::size_t i : Search(view.sounds, query, favourites))
            names.push_back(view.sounds[i]->name);
        return names;
    }

    test::TemporaryFolder folder;
    const kits::ProgramFolders folders{folder.Path() / "own", folder.Path() / "shipped"};
    std::mutex mutex;
    std::condition_variable changed;
    std::atomic<int> changes = 0;
    std::unique_ptr<Bank> bank;
};

/// Returns a pixel's blue, green and red.
std::array<int, 3> Pixel(const BBitmap& picture, int column, int row) {
    const auto* at =
        static_cast<const uint8*>(picture.Bits()) + row * picture.BytesPerRow() + column * 4;
    return {at[0], at[1], at[2]};
}

TEST_F(BankTest, TellsOfEachSoundInTheOrderOfNamesAsPeopleRead) {
    const fs::path own = Save("own/sounds/bass.xml", Named("Öl bass", "bass", "", "y"));
    Sound sampled;
    sampled.function.kind = FunctionKind::Sample;
    sampled.function.sampleFile = "tone.wav";
    Save("own/sounds/sampled.xml", sampled);
    folder.Write("shipped/samples/tone.wav", test::ShortWav(std::vector<int>(4000, 9000), 8000, 1));
    Sound pictured;
    pictured.function.kind = FunctionKind::Picture;
    pictured.function.pictureFile = "slope.png";
    Save("own/sounds/pictured.xml", pictured);
    // White on the left, black on the right.
    folder.Write("shipped/pictures/slope.png", test::Png(2, 1, {}, {255, 0}));
    const auto view = AwaitSounds(4);
    EXPECT_THAT(Names(*view, {}), ElementsAre("Bell", "Öl bass", "pictured", "sampled"));

    const SoundEntry& bass = *view->sounds[1];
    EXPECT_EQ(bass.path, own);
    EXPECT_TRUE(bass.own);
    const SoundEntry& bell = *view->sounds[0];
    EXPECT_FALSE(bell.own);
    EXPECT_EQ(bell.category, "bell");
    EXPECT_EQ(bell.tags, "bright");
    EXPECT_EQ(bell.author, "Zoë Ångström");
    EXPECT_EQ(bell.comment, "Opens slowly.");
    EXPECT_EQ(bell.formula, "sin(x) * cos(y)");
    const SoundEntry& third = *view->sounds[2];
    EXPECT_EQ(third.name, "pictured") << "that of the file";
    EXPECT_EQ(third.formula, "slope.png");
    EXPECT_EQ(Pixel(*third.picture, 2, 2), (std::array{255, 0, 0}));
    EXPECT_EQ(Pixel(*third.picture, 45, 45), (std::array{0, 0, 255}));
    EXPECT_EQ(view->sounds[3]->formula, "tone.wav");
    for (const auto& entry : view->sounds) {
        EXPECT_EQ(entry->fault, "");
        ASSERT_TRUE(entry->picture) << entry->name;
        EXPECT_EQ(entry->picture->BytesPerRow(), 4 * 48);
    }
}

TEST_F(BankTest, FindsAllWordsAnywhereWithoutCaseAndAccents) {
    const auto view = AwaitSounds(2);
    EXPECT_THAT(Names(*view, {}), ElementsAre("Bass", "Bell"));
    for (const char* text : {"elan", "ÉLAN x*y", "angstrom  WARM", "zoe bass slowly", "BASS.xml"})
        EXPECT_THAT(Names(*view, {.text = text}), ElementsAre("Bass")) << text;
    EXPECT_THAT(Names(*view, {.text = "sin(x)*cos"}), ElementsAre("Bell")) << "blanks in it";
    EXPECT_THAT(Names(*view, {.text = "warm bright"}), IsEmpty()) << "not in one sound";
    EXPECT_THAT(Names(*view, {.text = "\xff"}), IsEmpty()) << "no UTF-8";
    EXPECT_THAT(Names(*view, {.category = "bell"}), ElementsAre("Bell"));
    EXPECT_THAT(Names(*view, {.text = "warm", .category = "bell"}), IsEmpty());
    EXPECT_THAT(Names(*view, {.favourite = true}, {"bass.xml"}), ElementsAre("Bass"));
    EXPECT_THAT(Names(*view, {.own = true}), IsEmpty());
}

/// A document's tree takes sixty times as much memory as its text.
TEST_F(BankTest, ReadsNothingUnaskedThatIsLargerThanSoundsAre) {
    const std::string text = SoundText(Named("Large", "pad", "", "x*y"));
    for (const std::size_t more : {std::size_t{0}, std::size_t{1} << 20}) {
        folder.Write("own/sounds/large.xml", text + std::string(more, ' '));
        const ReadEntry read = ReadSoundEntry(folder.Path() / "own/sounds/large.xml", true);
        EXPECT_EQ(read.sound.has_value(), more == 0);
        EXPECT_EQ(read.entry.fault,
                  more == 0 ? "" : "large.xml: it is larger than 1 MB; open it from the menu");
    }
}

TEST_F(BankTest, SaysInALineWhatIsWrongWithASound) {
    folder.Write("own/sounds/cut.xml", "<vexasound>\n <info/>\n");
    folder.Write("own/sounds/empty.xml", "");
    Save("own/sounds/formula.xml", Named("F", "pad", "", "sin(x"));
    Sound sampled;
    sampled.function.kind = FunctionKind::Sample;
    sampled.function.sampleFile = "gone.wav";
    Save("own/sounds/sampled.xml", sampled);
    Sound pictured;
    pictured.function.kind = FunctionKind::Picture;
    pictured.function.pictureFile = "gone.png";
    Save("own/sounds/pictured.xml", pictured);
    const auto view = AwaitSounds(7);
    std::vector<std::string> faults;
    for (const auto& entry : view->sounds) {
        faults.push_back(entry->fault);
        EXPECT_EQ(entry->picture == nullptr, !entry->fault.empty()) << entry->name;
    }
    EXPECT_THAT(faults, ElementsAre("", "", HasSubstr("cut.xml:1:1: This is not a valid sound."),
                                    "empty.xml: expected a root element, found nothing",
                                    HasSubstr("formula: character 6"), HasSubstr("gone.png"),
                                    HasSubstr("gone.wav")));
    for (const std::string& fault : faults)
        EXPECT_THAT(fault, testing::Not(HasSubstr("\n")));

    // The missing files appear, and the picture is drawn; a file that takes precedence is drawn
    // instead.
    folder.Write("own/samples/gone.wav", test::ShortWav({1, 2, 3}, 8000, 1));
    folder.Write("shipped/pictures/gone.png", test::Png(1, 1, {}, {255}));
    const auto blue = [](const BankView& now, int value) {
        const auto& picture = now.sounds.at(5)->picture;
        return picture && Pixel(*picture, 2, 2)[0] == value;
    };
    const auto later =
        Await([&](const BankView& now) { return now.sounds.at(6)->picture && blue(now, 255); });
    EXPECT_EQ(later->sounds[5]->fault + later->sounds[6]->fault, "");
    folder.Write("own/pictures/gone.png", test::Png(1, 1, {}, {0}));
    Await([&](const BankView& now) { return blue(now, 0); });
}

TEST_F(BankTest, FollowsTheFilesAndReadsOnlyWhatHasChanged) {
    const auto first = AwaitSounds(2);
    const fs::path mine = Save("own/sounds/mine.xml", Named("Mine", "pad", "", "x"));
    const auto second = AwaitSounds(3);
    EXPECT_THAT(Names(*second, {.own = true}), ElementsAre("Mine"));
    EXPECT_EQ(second->sounds[0], first->sounds[0]) << "not read again";
    EXPECT_EQ(second->sounds[0]->picture, first->sounds[0]->picture);
    Save("own/sounds/mine.xml", Named("Mine too", "pad", "", "y"));
    const auto third =
        Await([](const BankView& view) { return view.sounds.at(2)->name == "Mine too"; });
    EXPECT_NE(third->sounds[2]->picture, second->sounds[2]->picture);
    // A scan that finds nothing new is not news. What was new is told just after it can be seen.
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    const int before = changes;
    folder.Write("own/sounds/notes.txt", "");
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(changes, before);
    // Neither the length nor the time of writing tells of a change in place, nor of new rights.
    const auto written = fs::last_write_time(mine);
    folder.Write(mine, SoundText(Named("Mine two", "pad", "", "x")));
    fs::last_write_time(mine, written);
    const auto fourth =
        Await([](const BankView& view) { return view.sounds.at(2)->name == "Mine two"; });
    fs::permissions(mine, fs::perms::owner_read);
    Await([&](const BankView& view) { return view.sounds.at(2) != fourth->sounds[2]; });
    fs::remove(mine);
    AwaitSounds(2);
    // The whole folder disappears and comes back.
    Save("own/sounds/mine.xml", Named("Mine", "pad", "", "x"));
    AwaitSounds(3);
    fs::remove_all(folder.Path() / "own/sounds");
    AwaitSounds(2);
    fs::create_directories(folder.Path() / "own/sounds");
    Save("own/sounds/bell.xml", Named("Own bell", "bell", "", "x"));
    const auto last =
        Await([](const BankView& view) { return view.sounds.size() == 2 && view.sounds[1]->own; });
    EXPECT_THAT(Names(*last, {}), ElementsAre("Bass", "Own bell"));
}

TEST_F(BankTest, DrawsThePlaneAndTheOrbitInIt) {
    // Blue right of the centre, red left of it; a circle of radius 4 around (2, 0), with 15 units
    // in the picture.
    Sound sound = Named("", "", "", "x > 0 ? 1 : -0.25");
    sound.texts[static_cast<std::size_t>(ParameterId::C0x0)] = "2";
    for (const ParameterId id : {ParameterId::Ax0, ParameterId::Ay0})
        sound.texts[static_cast<std::size_t>(id)] = "4";
    for (const std::size_t i : {2U, 3U})
        sound.envelopes[i] = {{0, false, 0}, {0.5F, false, 1}, {0.6F, false, 0.2F}, {1, true, 0}};
    const Thumbnail drawn = DrawThumbnail(sound, folders, 48);
    ASSERT_TRUE(drawn.picture) << drawn.fault;
    EXPECT_EQ(Pixel(*drawn.picture, 46, 2), (std::array{255, 0, 0}));
    EXPECT_EQ(Pixel(*drawn.picture, 1, 24), (std::array{0, 0, 110}));
    // A width that is none is that of a new sound.
    sound.function.width = "0";
    const Thumbnail usual = DrawThumbnail(sound, folders, 48);
    ASSERT_TRUE(usual.picture) << usual.fault;
    EXPECT_EQ(Pixel(*usual.picture, 46, 2), (std::array{255, 0, 0}));
    EXPECT_EQ(Pixel(*usual.picture, 1, 24), (std::array{0, 0, 110}));
    // The circle's right and left end, and its centre.
    const auto column = [](double x) { return static_cast<int>((x + 7.5) / 15 * 48); };
    for (const auto& [x, green] : {std::pair{6.0, true}, {-2.0, true}, {2.0, false}}) {
        int most = 0;
        for (const int c : {column(x) - 1, column(x), column(x) + 1})
            most = std::max(most, Pixel(*drawn.picture, c, 24)[1]);
        EXPECT_EQ(most > 150, green) << x << ": " << most;
    }

    // A function that takes long is drawn coarsely, within a bounded time.
    std::string dear = "j0(x)";
    for (int i = 0; i < 24; i++)
        dear += "+jn(" + std::to_string(i + 20) + ",3*x+y)";
    const auto start = kits::ThreadTime();
    const Thumbnail coarse = DrawThumbnail(Named("", "", "", dear.c_str()), folders, 192);
    const std::chrono::duration<double> taken = kits::ThreadTime() - start;
    ASSERT_TRUE(coarse.picture) << coarse.fault;
    EXPECT_EQ(Pixel(*coarse.picture, 100, 4), Pixel(*coarse.picture, 103, 7));
    EXPECT_LT(taken.count(), 0.25);
}

} // namespace
