// SPDX-License-Identifier: GPL-3.0-or-later
// Keeps what functions are made of, for sounds that change often.
#pragma once

#include "functions/FunctionCompiler.h"
#include "functions/PictureFunction.h"
#include "functions/SampleFunction.h"

#include <filesystem>
#include <map>
#include <string>

namespace vexa {

/// Compiles each expression and reads each file once. What has failed is tried again. All calls
/// wait for the compiler or the disk; one thread.
class FunctionSources {
  public:
    CompileOutcome Compile(const FunctionCompiler& compiler, const std::string& expression);
    kits::Result<LoadedSample> ReadSample(const std::filesystem::path& file);
    kits::Result<Picture> ReadPicture(const std::filesystem::path& file);

  private:
    std::map<std::string, CompileOutcome> compiled;
    std::map<std::filesystem::path, kits::Result<LoadedSample>> samples;
    std::map<std::filesystem::path, kits::Result<Picture>> pictures;
};

} // namespace vexa
