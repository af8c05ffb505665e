// SPDX-License-Identifier: GPL-3.0-or-later
// Compiles an expression into an add-on and loads it.
#pragma once

#include "functions/FunctionAddon.h"
#include "kits/kernel/ChildProcess.h"
#include "kits/storage/ProgramFolder.h"
#include "kits/support/Error.h"
#include "kits/support/SupportDefs.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vexa {

/// The report on a step. It converts to true if the step succeeded. The error's text, for standard
/// error and the tool tip of the expression's field, holds the details that the alerts do not give:
/// the compiler's diagnostics, or why and where the expression was refused. After a success it
/// holds the compiler's warnings, or what is doubtful in the expression.
struct CompileReport : kits::Error {
    status_t status = B_OK;

    explicit operator bool() const { return status == B_OK; }
};

/// A report and, after a success, the add-on, which exports the point function and the expression.
struct CompileOutcome : CompileReport {
    std::shared_ptr<const FunctionAddon> addon;
};

/// Compiles expressions with the system's C compiler. The program's folder "functions" holds the
/// template "addon.c". The user's own folder "functions" holds, after a compilation, the source
/// "recent.c" and the add-on "recent", and nothing else is left there. Each compilation runs in a
/// private folder below "functions" (CompileFolder), so that simultaneous compilations, in one
/// program or in several, never get each other's function. All calls wait for the compiler: the
/// window thread, or any other that may wait.
class FunctionCompiler {
  public:
    explicit FunctionCompiler(const kits::ProgramFolders& folders,
                              kits::ChildLimits limits = kits::ChildLimits());

    /// Checks the expression, makes the source file, compiles it and loads the function. Only an
    /// expression that CheckExpression accepts reaches a file or the compiler; its long double is
    /// computed in double. A request to end the program (kits::Interrupt) stops the compiler, and
    /// so does `stop` when it returns true; it is called several times a second. If the template,
    /// the compiler or the C library's headers are missing, the status is B_ENTRY_NOT_FOUND.
    CompileOutcome Compile(std::string_view expression,
                           const std::function<bool()>& stop = nullptr) const;

    /// Returns the report on an expression that is refused for the reason in `details`, which says
    /// all. Its status is B_BAD_VALUE.
    CompileReport Refusal(std::string details) const {
        return CompilerFailure(SourcePath(), std::move(details), B_BAD_VALUE);
    }

    /// Writes the source for an expression, without checking it: two macro definitions with the
    /// expression as it is, and the template. Only the user may read and write the file. Returns
    /// B_ENTRY_NOT_FOUND if the template is missing.
    CompileReport MakeSourceFile(std::string_view expression,
                                 const std::filesystem::path& sourcePath) const;

    /// Compiles a C source, whose author is trusted, and loads the add-on. The source is first
    /// copied to "functions/recent.c", unless it is that file.
    CompileOutcome IncludeFunction(const std::filesystem::path& sourcePath) const;

    /// Returns the compiler's command line, for a source and an add-on in the folder in which it
    /// runs. Any thread.
    static std::vector<std::string> Command(const char* source, const char* addon);

    /// Returns the path of "functions/recent.c", the source that was compiled last.
    std::filesystem::path SourcePath() const { return functions / "recent.c"; }

  private:
    CompileReport MakeSource(std::string_view expression, std::string_view computed,
                             const std::filesystem::path& sourcePath, std::string& source) const;
    CompileOutcome Build(std::string_view source, const std::filesystem::path& sourcePath,
                         const std::function<bool()>& stop) const;
    CompileReport RunCompiler(const std::filesystem::path& folder,
                              const std::filesystem::path& sourcePath,
                              const std::function<bool()>& stop) const;
    CompileReport CompilerFailure(const std::filesystem::path& sourcePath, std::string details,
                                  status_t status = B_ERROR) const;

    std::filesystem::path functions;
    std::filesystem::path templatePath;
    /// The path of "functions/recent".
    std::filesystem::path addonPath;
    kits::ChildLimits limits;
};

} // namespace vexa
