// SPDX-License-Identifier: GPL-3.0-or-later
#include "functions/FunctionCompiler.h"

#include "functions/CompileFolder.h"
#include "functions/ExpressionCheck.h"
#include "functions/FunctionCost.h"
#include "functions/LongDouble.h"
#include "kits/application/Interrupt.h"
#include "kits/storage/FileReplacement.h"
#include "kits/storage/ReadFile.h"
#include "kits/storage/UserFolders.h"

#include <cstring>
#include <initializer_list>
#include <new>
#include <utility>

namespace vexa {

namespace fs = std::filesystem;

namespace {

// The names of a compilation's files, in its private folder and in "functions" above it.
constexpr const char* kSource = "recent.c";
constexpr const char* kAddon = "recent";

constexpr const char* kNoTemplate = "The template file \n%s \nis missing.";
constexpr const char* kNotOpened = "The temporary file %s could not be opened.";
constexpr const char* kNoSource = "Could not create source file \n%s";
constexpr const char* kNotCopied = "There was an error while trying to copy\n%s \nto \n%s.c";
constexpr const char* kNotCompiled =
    "There was an error while trying to compile \n%s \nto \n%s \nwith gcc";
constexpr const char* kNotLoaded = "The addon \n%s \ncould not be loaded";
constexpr const char* kNoFunction = "The function r2rfun could not be found in addon \n%s";
constexpr const char* kNoText = "The function r2rfunstr could not be found in addon \n%s";

/// Returns the alert with one of the paths in place of each %s.
std::string Alert(std::string text, std::initializer_list<fs::path> paths) {
    std::size_t position = 0;
    for (const fs::path& path : paths) {
        position = text.find("%s", position);
        text.replace(position, 2, path.string());
        position += path.string().size();
    }
    return text;
}

/// Makes the file readable and writable for the user only, whatever the umask is.
void KeepToUser(const fs::path& path) {
    std::error_code error;
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write, error);
}

CompileReport Failure(status_t status, std::string alert, std::string details) {
    return {{std::move(details), {std::move(alert)}}, status};
}

/// Returns the reason why the compiler made no add-on.
std::string Describe(const kits::ChildResult& result, const kits::ChildLimits& limits) {
    using End = kits::ChildResult::End;
    switch (result.end) {
    case End::notFound:
        return "gcc was not found; install it with: sudo apt install gcc libc6-dev";
    case End::notStarted:
        return std::string("gcc could not be started: ") + std::strerror(result.number);
    case End::timedOut:
        return "gcc was stopped, because it took longer than " +
               std::to_string(limits.time.count()) + " ms\n" + result.standardError;
    case End::stopped:
        return "gcc was stopped, because the program was asked to end";
    case End::signalled:
        return std::string("gcc was stopped: ") + ::strsignal(result.number) + "\n" +
               result.standardError;
    case End::exited:
        break;
    }
    return result.standardError;
}

/// Returns true if the compiler finds the headers of the C library, which are a separate package. A
/// trial run shows it whatever the language of the compiler's messages. It writes no file.
bool HasHeaders(const fs::path& folder, const kits::ChildLimits& limits) {
    return kits::RunProgram({{"gcc", "-fsyntax-only", "-include", "math.h", "-x", "c", "/dev/null"},
                             folder,
                             limits})
        .Succeeded();
}

} // namespace

// The options from -march=native to -fno-trapping-math let the compiler use the vector instructions
// of this machine, but keep every result as C defines it: no fused operations and no reordering.
// Only errno and the floating-point exception flags, which nobody reads, are given up. -fwrapv
// defines the overflow of integers. An add-on has no initialisation and calls only the maths
// library. Without the other libraries and start files, and without the plugin for link-time
// optimisation, linking takes half the time.
std::vector<std::string> FunctionCompiler::Command(const char* source, const char* addon) {
    return {"gcc",
            "-shared",
            "-fPIC",
            "-O3",
            "-march=native",
            "-ffp-contract=off",
            "-fno-math-errno",
            "-fno-trapping-math",
            "-fwrapv",
            "-nostdlib",
            "-fno-use-linker-plugin",
            "-o",
            addon,
            source,
            "-lm",
            "-lgcc"};
}

FunctionCompiler::FunctionCompiler(const kits::ProgramFolders& folders,
                                   kits::ChildLimits childLimits)
    : functions(folders.Own("functions")),
      templatePath(folders.Find("functions", "addon.c")),
      addonPath(functions / kAddon),
      limits(childLimits) {}

CompileOutcome FunctionCompiler::Compile(std::string_view expression,
                                         const std::function<bool()>& stop) const try {
    if (const auto fault = CheckExpression(expression))
        return {Refusal(Text(*fault)), {}};
    std::string source;
    if (CompileReport made =
            MakeSource(expression, WithoutLongDouble(expression), SourcePath(), source);
        !made) {
        made.alerts.push_back(Alert(kNoSource, {SourcePath()}));
        return {std::move(made), {}};
    }
    return Build(source, SourcePath(), stop);
} catch (const std::bad_alloc&) {
    return {Refusal("there is not enough memory"), {}};
}

CompileReport FunctionCompiler::MakeSourceFile(std::string_view expression,
                                               const fs::path& sourcePath) const {
    std::string source;
    return MakeSource(expression, expression, sourcePath, source);
}

/// `computed` is the expression that the function evaluates, `expression` the one that it reports.
CompileReport FunctionCompiler::MakeSource(std::string_view expression, std::string_view computed,
                                           const fs::path& sourcePath, std::string& source) const {
    const kits::Result<std::string> body = kits::ReadFile(templatePath);
    if (!body) {
        std::error_code error;
        const bool missing = !fs::is_regular_file(templatePath, error);
        return Failure(missing ? B_ENTRY_NOT_FOUND : B_IO_ERROR, Alert(kNoTemplate, {templatePath}),
                       body.Fault().text);
    }
    source.append("#define EXPRESSION\t  ").append(computed).append("\n");
    source.append("#define EXPRESSION_STR \"").append(expression).append("\"\n\n");
    source.append(*body);
    kits::Result<void> written;
    if (sourcePath.parent_path() == functions)
        written = kits::MakeUserFolder(functions);
    if (written)
        written = kits::ReplaceFile(sourcePath, source);
    if (!written)
        return Failure(B_IO_ERROR, Alert(kNotOpened, {sourcePath}), written.Fault().text);
    KeepToUser(sourcePath);
    return {};
}

CompileOutcome FunctionCompiler::IncludeFunction(const fs::path& sourcePath) const {
    const kits::Result<std::string> source = kits::ReadFile(sourcePath);
    std::string fault = source ? "" : source.Fault().text;
    if (source && sourcePath.native() != SourcePath().native()) {
        kits::Result<void> copied = kits::MakeUserFolder(functions);
        if (copied)
            copied = kits::ReplaceFile(SourcePath(), *source);
        if (!copied)
            fault = copied.Fault().text;
        else
            KeepToUser(SourcePath());
    }
    if (!fault.empty())
        return {Failure(B_IO_ERROR, Alert(kNotCopied, {sourcePath, addonPath}), std::move(fault)),
                {}};
    return Build(*source, sourcePath, nullptr);
}

/// `source` is the content of the file at `sourcePath`, which may have been replaced since then.
CompileOutcome FunctionCompiler::Build(std::string_view source, const fs::path& sourcePath,
                                       const std::function<bool()>& stop) const {
    const kits::Result<CompileFolder> created = CompileFolder::Create(functions);
    if (!created)
        return {CompilerFailure(sourcePath, created.Fault().text), {}};
    const fs::path& folder = created->Path();
    if (const auto written = kits::ReplaceFile(folder / kSource, source); !written)
        return {CompilerFailure(sourcePath, written.Fault().text), {}};
    CompileReport compiled = RunCompiler(folder, sourcePath, stop);
    if (!compiled)
        return {std::move(compiled), {}};

    // A user who may write to a loaded file could change the code that runs. The add-on is loaded
    // before it moves to a place where another program might replace it.
    KeepToUser(folder / kAddon);
    const image_id image = load_add_on((folder / kAddon).c_str());
    std::shared_ptr<const FunctionAddon> addon;
    if (image > 0)
        addon = std::make_shared<FunctionAddon>(image);
    std::error_code error;
    fs::rename(folder / kAddon, addonPath, error);
    if (!addon)
        return {Failure(B_ERROR, Alert(kNotLoaded, {addonPath}), kits::AddOnFault()), {}};
    if (error)
        return {CompilerFailure(sourcePath,
                                "could not write " + addonPath.string() + ": " + error.message()),
                {}};
    if (!addon->HasPointForm())
        return {Failure(B_NAME_NOT_FOUND, Alert(kNoFunction, {addonPath}), {}), {}};
    if (!addon->Expression())
        return {Failure(B_NAME_NOT_FOUND, Alert(kNoText, {addonPath}), {}), {}};
    if (auto tooCostly = TooCostly(MeasureCost(addon)))
        return {CompilerFailure(sourcePath, std::move(*tooCostly), B_BAD_VALUE), {}};
    return {std::move(compiled), std::move(addon)};
}

CompileReport FunctionCompiler::RunCompiler(const fs::path& folder, const fs::path& sourcePath,
                                            const std::function<bool()>& stop) const {
    const kits::ChildResult result =
        kits::RunProgram({Command(kSource, kAddon), folder, limits,
                          [&] { return kits::Interrupt::Pending() || (stop && stop()); }});
    if (result.Succeeded())
        return {{result.standardError}};
    std::string details = Describe(result, limits);
    const bool complete =
        result.end != kits::ChildResult::End::exited || HasHeaders(folder, limits);
    if (!complete)
        details = "gcc has no headers of the C library; install them with: "
                  "sudo apt install libc6-dev\n" +
                  details;
    CompileReport failure = CompilerFailure(sourcePath, std::move(details));
    if (result.end == kits::ChildResult::End::notFound || !complete)
        failure.status = B_ENTRY_NOT_FOUND;
    return failure;
}

CompileReport FunctionCompiler::CompilerFailure(const fs::path& sourcePath, std::string details,
                                                status_t status) const {
    return Failure(status, Alert(kNotCompiled, {sourcePath, addonPath}), std::move(details));
}

} // namespace vexa
