// SPDX-License-Identifier: GPL-3.0-or-later
// All settings are here, each with its name in the file, the value of somebody who has set nothing,
// and what it is for.
#pragma once

#include <string>
#include <vector>

namespace vexa {

using TextList = std::vector<std::string>;

/// A setting of type bool ("true" or "false" in the file), int, double, std::string or TextList,
/// which is empty unless set.
template<class T>
struct SettingKey {
    const char* name;
    T initial{};
};

// What is told nothing else, such as options, goes by these settings.

/// The author of what is edited here; empty for kDefaultAuthor.
inline const SettingKey<std::string> kAuthorSetting{"author"};
/// The MIDI source to connect, by the name in its menu; empty for none.
inline const SettingKey<std::string> kSourceSetting{"midi-source", "Computer keyboard"};

// The frequencies of the keys: paths of Scala files, empty for none, and that of key 69 in Hz, 0
// for what the files say.

inline const SettingKey<std::string> kScaleSetting{"tuning-scale"};
inline const SettingKey<std::string> kKeymapSetting{"tuning-keymap"};
inline const SettingKey<double> kA4Setting{"a4"};

/// Files by full path, the one that was opened last at the head.
inline const SettingKey<TextList> kRecentSetting{"recent"};
/// The most that are kept of them.
constexpr std::size_t kMostRecent = 10;
/// Sounds by the name of their file.
inline const SettingKey<TextList> kFavouritesSetting{"favourite"};

/// The window as it was before anything stood round the main view.
inline const SettingKey<bool> kClassicSetting{"classic", false};
/// True where the drawer of sounds, or the strip, is shown.
inline const SettingKey<bool> kDrawerSetting{"drawer", true};
inline const SettingKey<bool> kStripSetting{"strip", true};
/// Where the window is on the screen and how large, in pixels, as BRect counts them; the width is 0
/// where nobody has moved or sized it.
inline const SettingKey<int> kWindowLeftSetting{"window-left"};
inline const SettingKey<int> kWindowTopSetting{"window-top"};
inline const SettingKey<int> kWindowWidthSetting{"window-width"};
inline const SettingKey<int> kWindowHeightSetting{"window-height"};
/// How bright the plane is, by the key in BrightnessCurves(), and whether it is a landscape.
inline const SettingKey<std::string> kBrightnessSetting{"brightness", "linear"};
inline const SettingKey<bool> kLandscapeSetting{"landscape", false};
/// kLightColors or kDarkColors; empty to follow the desktop.
inline const SettingKey<std::string> kColorsSetting{"colors"};
constexpr const char* kLightColors = "light";
constexpr const char* kDarkColors = "dark";

} // namespace vexa
