// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/About.h"

#include "kits/storage/ProgramFolder.h"

namespace vexa {

namespace fs = std::filesystem;

namespace {

/// As docs/LICENCES.md has them.
constexpr LinkedLibrary kLibraries[] = {
    {"zita-resampler", "GPL-3.0-or-later"},
    {"SLEEF", "BSL-1.0"},
    {"libsndfile", "LGPL-2.1-or-later"},
    {"libogg", "BSD-3-Clause"},
    {"libpng", "libpng"},
    {"libjpeg-turbo", "IJG, BSD-3-Clause, Zlib"},
    {"libmd", "BSD-3-Clause"},
    {"utf8proc", "MIT"},
    {"JACK's library", "LGPL-2.1-or-later"},
    {"alsa-lib", "LGPL-2.1-or-later"},
    {"RtAudio, RtMidi", "MIT"},
    {"Qt 6", "LGPL-3.0-only"},
    {"libxcb, libX11", "MIT"},
    {"liblo", "LGPL-2.1-or-later"},
    {"FFTW", "GPL-2.0-or-later"},
};

constexpr const char* kFirstPage = "README.md";
/// The number of parent folders to try. A build's program folder lies at most so deep in the source
/// tree.
constexpr int kMostSteps = 4;

} // namespace

std::string AboutText() {
    return "Vexa " VEXA_VERSION "\n"
           "a polyphonic wave-terrain synthesizer\n\n"
           "Free software under the GNU General Public License, version 3 or any later version; "
           "there is no warranty. What you make with it is yours.";
}

std::span<const LinkedLibrary> LinkedLibraries() {
    return kLibraries;
}

std::string LibrariesText() {
    std::string text = "It is linked with";
    for (const LinkedLibrary& library : kLibraries)
        text += std::string("\n") + library.name + " (" + library.licence + ")";
    return text;
}

std::optional<fs::path> FindManual() {
    std::error_code ignored;
    const fs::path installed = kits::ContentFolder() / "manual" / kFirstPage;
    if (fs::exists(installed, ignored))
        return installed;
    fs::path folder = kits::ProgramFile().parent_path();
    for (int step = 0; step <= kMostSteps; step++) {
        const fs::path page = folder / "docs/manual" / kFirstPage;
        if (fs::exists(page, ignored))
            return page;
        folder = folder.parent_path();
    }
    return std::nullopt;
}

} // namespace vexa
