// SPDX-License-Identifier: GPL-3.0-or-later
// This tells where the program finds what lies beside it, and where it keeps what a person makes.
#pragma once

#include "kits/support/Result.h"

#include <filesystem>
#include <string>
#include <vector>

namespace kits {

/// The file that the running program was started from.
std::filesystem::path ProgramFile();

/// The folder of what came with the program: its own, or for a program that is installed the one
/// that the installation has put content into (share/vexa/shipped beside bin, cmake/Install.cmake).
std::filesystem::path ContentFolder();

/// How the names of documents end. Files with another ending are no documents by themselves.
constexpr const char* kDocumentEnding = ".xml";

/// The two places of functions/, sounds/, samples/ and pictures/: what a person makes is in his own
/// folder, what came with the program is read from the program's. A name of the person's stands
/// before the same name of the program's, unless his file is no more than a copy of it in some
/// version of the program, by the list "shipped-content" there (`DIGEST  FOLDER/NAME`, SHA-256 as
/// sha256sum writes it). `folder` is the name of one of the four in all calls. Any thread.
class ProgramFolders {
  public:
    /// Takes one folder for both, in which every file is the person's.
    ProgramFolders(std::filesystem::path both); // NOLINT: a path is the simple case of this
    ProgramFolders(const std::filesystem::path& own, std::filesystem::path shipped);

    /// Returns the folder in which what a person makes is written.
    std::filesystem::path Own(const char* folder) const { return own / folder; }
    std::filesystem::path Shipped(const char* folder) const { return shipped / folder; }

    /// The file of that name, the person's before the program's; where there is none, the one that
    /// he would make. A full path is itself.
    std::filesystem::path Find(const char* folder, const std::filesystem::path& name) const;
    /// Returns the name by which a document refers to a file that it needs: its leaf where that
    /// name, looked up directly in the folder, finds this file, else its full path.
    std::string NameOf(const char* folder, const std::filesystem::path& file) const;
    /// The names of all documents there are, a person's and the program's, each once, in byte
    /// order.
    std::vector<std::string> Documents(const char* folder) const;
    /// Finds the file that a person means by a word on a command line: the file at that path, else
    /// the file of that name, with or without ".xml". The error says where it was looked for.
    Result<std::filesystem::path> FindDocument(const char* folder,
                                               const std::filesystem::path& word) const;
    /// True where a file, given by its normal path, counts as absent from the person's folder, as
    /// it is a copy of shipped content.
    bool IsCopy(const std::filesystem::path& file) const;
    /// Whether the file of that path, as Find gives it, is a person's work. Where one folder is
    /// both, a file there is his unless the list tells that it came with the program.
    bool IsOwn(const char* folder, const std::filesystem::path& file) const;

  private:
    /// Whether the list has the file of that path in the person's folder, with what it contains.
    bool IsListed(const std::filesystem::path& file) const;

    std::filesystem::path own;
    std::filesystem::path shipped;
};

/// The folders of the running program. It keeps what a person makes beside itself or, where that
/// cannot be written, where it is installed, or if `inUserFolder`, in the folder `name` of the
/// user's data ($XDG_DATA_HOME, else ~/.local/share), which is made if it is not there. Both are
/// without links. Fails when that cannot be had.
Result<ProgramFolders> FindProgramFolders(const std::filesystem::path& name, bool inUserFolder);

} // namespace kits
