// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/FunctionSources.h"

namespace vexa {

namespace {

/// Returns what is kept under the key, else what `make` returns, which is kept if it is a success.
template<class Key, class Made, class Make>
Made KeptOr(std::map<Key, Made>& kept, const Key& key, const Make& make) {
    if (const auto found = kept.find(key); found != kept.end())
        return found->second;
    Made made = make();
    if (made)
        kept.emplace(key, made);
    return made;
}

} // namespace

CompileOutcome FunctionSources::Compile(const FunctionCompiler& compiler,
                                        const std::string& expression) {
    return KeptOr(compiled, expression, [&] { return compiler.Compile(expression); });
}

kits::Result<LoadedSample> FunctionSources::ReadSample(const std::filesystem::path& file) {
    return KeptOr(samples, file, [&] { return LoadSample(file); });
}

kits::Result<Picture> FunctionSources::ReadPicture(const std::filesystem::path& file) {
    return KeptOr(pictures, file, [&] { return LoadPicture(file); });
}

} // namespace vexa
