// SPDX-License-Identifier: GPL-3.0-or-later
// The places of the content that comes with the program and of what a person makes.
#pragma once

#include "kits/support/Result.h"

#include <filesystem>
#include <string>
#include <vector>

namespace kits {

/// Returns the file that the running program was started from.
std::filesystem::path ProgramFile();

/// Returns the folder of the content that came with the program: the program's own folder or, for
/// an installed program, the one into which the installation has put the content
/// (share/vexa/shipped beside bin, cmake/Install.cmake).
std::filesystem::path ContentFolder();

/// The ending of documents' names. Files with another ending are not listed as documents.
constexpr const char* kDocumentEnding = ".xml";

/// The two places of functions/, sounds/, samples/ and pictures/: what a person makes is written to
/// the person's own folder, what came with the program is read from the program's. A name in the
/// person's folder takes precedence over the same name in the program's, unless the person's file
/// is a mere copy of that in some version of the program. The list "shipped-content" in the
/// program's folder tells which files are copies (`DIGEST  FOLDER/NAME`, SHA-256 as sha256sum
/// writes it). `folder` is the name of one of the four in all calls. Any thread.
class ProgramFolders {
  public:
    /// Uses one folder for both, in which every file counts as the person's.
    ProgramFolders(std::filesystem::path both); // NOLINT: a path is the simple case of this
    ProgramFolders(const std::filesystem::path& own, std::filesystem::path shipped);

    /// Makes the four folders of a person's files, those that do not exist, for the person alone.
    /// The error names the folder and the reason.
    Result<void> MakeOwn() const;

    /// Returns the folder into which a person's files are written. It may not exist yet: whoever
    /// writes makes it.
    std::filesystem::path Own(const char* folder) const { return own / folder; }
    std::filesystem::path Shipped(const char* folder) const { return shipped / folder; }

    /// Returns the file of that name, the person's before the program's; if there is none, the path
    /// at which the person would create it. An absolute path is returned as it is.
    std::filesystem::path Find(const char* folder, const std::filesystem::path& name) const;
    /// Returns the name by which a document refers to a file that it needs: the file's name without
    /// its folder if Find, given that name, finds this file directly in the folder, else its full
    /// path.
    std::string NameOf(const char* folder, const std::filesystem::path& file) const;
    /// Returns the names of all documents, a person's and the program's, each once, in byte order.
    std::vector<std::string> Documents(const char* folder) const;
    /// Finds the file that a word on a command line means: the file at that path, else the file of
    /// that name, with or without ".xml". The error says where it was looked for.
    Result<std::filesystem::path> FindDocument(const char* folder,
                                               const std::filesystem::path& word) const;
    /// Returns true if a file, given by its normal path, counts as absent from the person's folder
    /// because it is a copy of shipped content.
    bool IsCopy(const std::filesystem::path& file) const;
    /// Returns true if the file of that path, as Find returns it, is a person's work. If one folder
    /// serves as both, a file there is the person's unless the list says that it came with the
    /// program.
    bool IsOwn(const char* folder, const std::filesystem::path& file) const;

  private:
    /// Returns true if the list has an entry for that path, relative to the person's folder, with
    /// the file's present content.
    bool IsListed(const std::filesystem::path& file) const;

    std::filesystem::path own;
    std::filesystem::path shipped;
};

/// Returns the folders of the running program. What a person makes is kept beside the program. If
/// that folder cannot be written, if the program is installed, or with `inUserFolder`, it is kept
/// in the folder `name` of the user's data ($XDG_DATA_HOME, else ~/.local/share), whose path
/// contains no links. Nothing is made. Fails if the user has no home.
Result<ProgramFolders> FindProgramFolders(const std::filesystem::path& name, bool inUserFolder);

} // namespace kits
