// SPDX-License-Identifier: GPL-3.0-or-later
// The compiler makes a loaded function of an expression.
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

/// A report tells how a step went. It converts to true if the step did what it should. The error's
/// text is what its alerts do not say, for standard error and the expression field's tool tip: the
/// compiler's diagnostics, or why and where the expression was refused. After a success it is the
/// compiler's warnings.
struct CompileReport : kits::Error {
    status_t status = B_OK;

    explicit operator bool() const { return status == B_OK; }
};

/// A report and, after a success, the add-on, which has its point function and its expression.
struct CompileOutcome : CompileReport {
    std::shared_ptr<const FunctionAddon> addon;
};

/// Compiles expressions with the system's C compiler. Of the program's folders "functions" has the
/// template "addon.c" and, where a person's own lie, after a compilation its source "recent.c" and
/// the add-on "recent"; nothing else is left there. Each compilation takes place in a private
/// folder below "functions" (CompileFolder), so several at a time, in one program or in several,
/// never get each other's function. All calls wait for the compiler: the window thread, or any
/// other that may wait.
class FunctionCompiler {
  public:
    explicit FunctionCompiler(const kits::ProgramFolders& folders,
                              kits::ChildLimits limits = kits::ChildLimits());

    /// Checks the expression, makes the source file and includes its function. Only an expression
    /// that CheckExpression accepts reaches a file or the compiler, which computes its long double
    /// in double. A request to end the program (kits::Interrupt) stops the compiler, and so does
    /// `stop`, which is asked several times a second. Where the template, the compiler or the C
    /// library's headers are missing the status is B_ENTRY_NOT_FOUND.
    CompileOutcome Compile(std::string_view expression,
                           const std::function<bool()>& stop = nullptr) const;

    /// The report on an expression that is refused for a reason.
    CompileReport Refusal(std::string details) const {
        return CompilerFailure(SourcePath(), std::move(details));
    }

    /// Writes the source for an expression, which is not checked: two macro definitions with the
    /// expression as it stands, and the template. The file is the user's alone. B_ENTRY_NOT_FOUND:
    /// there is no template.
    CompileReport MakeSourceFile(std::string_view expression,
                                 const std::filesystem::path& sourcePath) const;

    /// Compiles a C source, whose author is trusted, and loads the add-on. A source that is not
    /// "functions/recent.c" is copied there first.
    CompileOutcome IncludeFunction(const std::filesystem::path& sourcePath) const;

    /// Returns the compiler and its arguments, for a source and an add-on in the folder that it
    /// runs in. Any thread.
    static std::vector<std::string> Command(const char* source, const char* addon);

    /// Returns the path of "functions/recent.c", the source as it was last compiled.
    std::filesystem::path SourcePath() const { return functions / "recent.c"; }

  private:
    CompileReport MakeSource(std::string_view expression, std::string_view computed,
                             const std::filesystem::path& sourcePath, std::string& source) const;
    CompileOutcome Build(std::string_view source, const std::filesystem::path& sourcePath,
                         const std::function<bool()>& stop) const;
    CompileReport RunCompiler(const std::filesystem::path& folder,
                              const std::filesystem::path& sourcePath,
                              const std::function<bool()>& stop) const;
    CompileReport CompilerFailure(const std::filesystem::path& sourcePath,
                                  std::string details) const;

    std::filesystem::path functions;
    std::filesystem::path templatePath;
    /// The file "functions/recent".
    std::filesystem::path addonPath;
    kits::ChildLimits limits;
};

} // namespace vexa
