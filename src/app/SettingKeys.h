// SPDX-License-Identifier: GPL-3.0-or-later
// All settings, each with its name in the file, its default and its purpose.
#pragma once

#include <string>
#include <vector>

namespace vexa {

using TextList = std::vector<std::string>;

/// A setting of type bool ("true" or "false" in the file), int, double, std::string or TextList,
/// whose default is always empty.
template<class T>
struct SettingKey {
    const char* name;
    T initial{};
};

// These settings apply unless something else, such as an option, is given.

/// The author of sounds and functions that are edited here; empty for kDefaultAuthor.
inline const SettingKey<std::string> kAuthorSetting{"author"};
/// The MIDI source to connect, by the name in its menu; empty for none.
inline const SettingKey<std::string> kSourceSetting{"midi-source", "Computer keyboard"};

// The tuning of the keys: paths of Scala files, empty for none, and the frequency of key 69 in Hz,
// 0 for that of the files.

inline const SettingKey<std::string> kScaleSetting{"tuning-scale"};
inline const SettingKey<std::string> kKeymapSetting{"tuning-keymap"};
inline const SettingKey<double> kA4Setting{"a4"};

/// The full paths of files that were opened, the last one first.
inline const SettingKey<TextList> kRecentSetting{"recent"};
/// The maximum number of them.
constexpr std::size_t kMostRecent = 10;
/// The favourite sounds, by the names of their files.
inline const SettingKey<TextList> kFavouritesSetting{"favourite"};

/// True if the window shows only the logo bar and the main view, in their original colours.
inline const SettingKey<bool> kClassicSetting{"classic", false};
/// True if the drawer of sounds, or the strip, is shown.
inline const SettingKey<bool> kDrawerSetting{"drawer", true};
inline const SettingKey<bool> kStripSetting{"strip", true};
/// The place and size of the window on the screen, in pixels, as BRect counts them. The width is 0
/// if the user has never moved or sized it.
inline const SettingKey<int> kWindowLeftSetting{"window-left"};
inline const SettingKey<int> kWindowTopSetting{"window-top"};
inline const SettingKey<int> kWindowWidthSetting{"window-width"};
inline const SettingKey<int> kWindowHeightSetting{"window-height"};
/// The size of all that windows show, in percent of the size that the desktop asks for.
inline const SettingKey<int> kSizeSetting{"size", 100};
constexpr int kLeastSize = 50;
constexpr int kMostSize = 400;
/// The brightness of the plane, by its key in BrightnessCurves(), and whether the plane is shown as
/// a landscape.
inline const SettingKey<std::string> kBrightnessSetting{"brightness", "linear"};
inline const SettingKey<bool> kLandscapeSetting{"landscape", false};
/// The set of colours: kLightColors or kDarkColors; empty to follow the desktop.
inline const SettingKey<std::string> kColorsSetting{"colors"};
constexpr const char* kLightColors = "light";
constexpr const char* kDarkColors = "dark";

/// The names of all settings above. A line of the file with another name is reported.
inline const char* const kSettingNames[] = {
    kAuthorSetting.name,      kSourceSetting.name,       kScaleSetting.name,
    kKeymapSetting.name,      kA4Setting.name,           kRecentSetting.name,
    kFavouritesSetting.name,  kClassicSetting.name,      kDrawerSetting.name,
    kStripSetting.name,       kWindowLeftSetting.name,   kWindowTopSetting.name,
    kWindowWidthSetting.name, kWindowHeightSetting.name, kBrightnessSetting.name,
    kLandscapeSetting.name,   kColorsSetting.name,       kSizeSetting.name};

} // namespace vexa
