// SPDX-License-Identifier: GPL-3.0-or-later
// A locale with a decimal comma, independent of the machine's locales.
#pragma once

#include "support/Command.h"
#include "support/TemporaryFolder.h"

#include <clocale>
#include <cstdlib>
#include <string>

namespace test {

/// Sets a German locale, made by localedef (package locales), for its lifetime. Throws if that
/// fails, because a test of the decimal comma could not fail without one.
class DecimalComma {
  public:
    DecimalComma() : before(std::setlocale(LC_ALL, nullptr)) {
        const std::string locale = (folder.Path() / "de_DE.UTF-8").string();
        // localedef warns, and exits with 1, about parts that the source leaves to other locales.
        RunCommand({"localedef", "-i", "de_DE", "-f", "UTF-8", locale});
        ::setenv("LOCPATH", folder.Path().c_str(), 1);
        if (!std::setlocale(LC_ALL, "de_DE.UTF-8") || *std::localeconv()->decimal_point != ',')
            throw std::runtime_error("no German locale: is the package locales installed?");
    }
    ~DecimalComma() {
        std::setlocale(LC_ALL, before.c_str());
        ::unsetenv("LOCPATH");
    }
    DecimalComma(const DecimalComma&) = delete;
    DecimalComma& operator=(const DecimalComma&) = delete;

  private:
    TemporaryFolder folder;
    std::string before;
};

} // namespace test
