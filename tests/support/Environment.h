// SPDX-License-Identifier: GPL-3.0-or-later
// Changes inherited by a process, such as environment variables, for the duration of a test.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

namespace test {

/// Sets an environment variable and restores it.
class EnvironmentVariable {
  public:
    EnvironmentVariable(const char* name, const char* value) : name(name) {
        if (const char* const old = std::getenv(name))
            before = old;
        ::setenv(name, value, 1);
    }
    ~EnvironmentVariable() {
        if (before)
            ::setenv(name, before->c_str(), 1);
        else
            ::unsetenv(name);
    }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

  private:
    const char* name;
    std::optional<std::string> before;
};

/// Makes a folder the current one, and restores the previous one.
class CurrentFolder {
  public:
    explicit CurrentFolder(const std::filesystem::path& folder)
        : before(std::filesystem::current_path()) {
        std::filesystem::current_path(folder);
    }
    ~CurrentFolder() { std::filesystem::current_path(before); }
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;

  private:
    std::filesystem::path before;
};

} // namespace test
