// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/ProgramFolder.h"

#include "kits/storage/Digest.h"
#include "kits/storage/Entry.h"
#include "kits/storage/Path.h"
#include "kits/storage/ReadFile.h"
#include "kits/storage/UserFolders.h"

#include <cstdint>
#include <set>
#include <string_view>

#include <unistd.h>

namespace kits {

namespace fs = std::filesystem;

namespace {

constexpr const char* kFolders[] = {"functions", "sounds", "samples", "pictures"};
constexpr const char* kList = "shipped-content";
/// The folder of an installed program's content, as a path from the program's folder.
constexpr const char* kInstalledContent = KITS_INSTALLED_CONTENT;
/// An upper bound, in bytes, of the size of each shipped file (scripts/shipped-content.py).
constexpr std::uintmax_t kLargest = 1 << 20;

bool IsFile(const fs::path& path) {
    std::error_code ignored;
    const fs::file_status status = fs::status(path, ignored);
    return fs::exists(status) && !fs::is_directory(status);
}

/// Returns a name without its ending, and without differences of case (ASCII), blanks, dashes and
/// underscores.
std::string Plain(std::string_view name) {
    if (name.ends_with(kDocumentEnding))
        name.remove_suffix(std::string_view(kDocumentEnding).size());
    std::string plain;
    for (const char c : name) {
        if (c >= 'A' && c <= 'Z')
            plain += static_cast<char>(c | 0x20);
        else if (c != ' ' && c != '-' && c != '_')
            plain += c;
    }
    return plain;
}

} // namespace

fs::path ProgramFile() {
    std::error_code ignored;
    return fs::read_symlink("/proc/self/exe", ignored);
}

fs::path ContentFolder() {
    const fs::path beside = ProgramFile().parent_path();
    const fs::path installed = (beside / kInstalledContent).lexically_normal();
    return IsFile(installed / kList) ? installed : beside;
}

ProgramFolders::ProgramFolders(fs::path both) : own(both), shipped(std::move(both)) {}

ProgramFolders::ProgramFolders(const fs::path& own, fs::path shipped)
    : own(own.lexically_normal()), shipped(std::move(shipped)) {}

bool ProgramFolders::IsCopy(const fs::path& file) const {
    return own != shipped && IsListed(file);
}

bool ProgramFolders::IsOwn(const char* folder, const fs::path& file) const {
    return file.parent_path() == Own(folder) && !(own == shipped && IsListed(file));
}

bool ProgramFolders::IsListed(const fs::path& file) const {
    std::error_code error;
    if (fs::file_size(file, error) > kLargest || error)
        return false;
    const Result<std::string> list = ReadFile(shipped / kList);
    const std::string entry = "  " + file.lexically_relative(own).string() + '\n';
    // Most names are not in the list; their files need not be read.
    if (!list || list->find(entry) == std::string::npos)
        return false;
    const Result<std::string> digest = DigestOfFile(file);
    return digest && list->find(*digest + entry) != std::string::npos;
}

Result<void> ProgramFolders::MakeOwn() const {
    for (const char* folder : kFolders) {
        if (Result<void> made = MakeUserFolder(Own(folder)); !made)
            return made;
    }
    return {};
}

fs::path ProgramFolders::Find(const char* folder, const fs::path& name) const {
    const fs::path ownFile = Own(folder) / name;
    const fs::path shippedFile = Shipped(folder) / name;
    // IsCopy takes long, so it is called only where both folders have a file of the name.
    const bool isOwn = !IsFile(shippedFile) || (IsFile(ownFile) && !IsCopy(ownFile));
    return isOwn ? ownFile : shippedFile;
}

std::string ProgramFolders::NameOf(const char* folder, const fs::path& file) const {
    BPath path;
    BPath parent;
    if (BEntry(file.c_str()).GetPath(&path) != B_OK || path.GetParent(&parent) != B_OK)
        return file.string();
    BPath place;
    const fs::path found = Find(folder, path.Leaf());
    if (BEntry(found.parent_path().c_str(), true).GetPath(&place) == B_OK && parent == place)
        return path.Leaf();
    return path.Path();
}

std::vector<std::string> ProgramFolders::Documents(const char* folder) const {
    std::set<std::string> names;
    for (const fs::path& place : {Own(folder), Shipped(folder)}) {
        std::error_code error;
        for (fs::directory_iterator entry(place, error), end; !error && entry != end;
             entry.increment(error)) {
            const std::string name = entry->path().filename();
            if (!name.starts_with('.') && name.ends_with(kDocumentEnding) && IsFile(entry->path()))
                names.insert(name);
        }
    }
    return {names.begin(), names.end()};
}

Result<fs::path> ProgramFolders::FindDocument(const char* folder, const fs::path& word) const {
    if (IsFile(word))
        return word;
    const fs::path withEnding = word.string() + kDocumentEnding;
    // The person's folder comes before the program's, under either of the names.
    for (const auto& place : {Own(folder), Shipped(folder)}) {
        for (const auto& name : {word, withEnding}) {
            if (const fs::path found = Find(folder, name); IsFile(found) && found == place / name)
                return found;
        }
    }
    // Lists show "Wood block", whose file is woodblock.xml.
    const std::string plain = Plain(word.string());
    for (const std::string& name : Documents(folder)) {
        if (Plain(name) == plain)
            return Find(folder, name);
    }
    std::string text = "there is no file " + word.string();
    if (word.is_relative()) {
        text += ", and neither it nor " + withEnding.string() + " is in " + Own(folder).string();
        if (own != shipped)
            text += " or " + Shipped(folder).string();
    }
    return Error{text};
}

Result<ProgramFolders> FindProgramFolders(const fs::path& name, bool inUserFolder) {
    const fs::path beside = ProgramFile().parent_path();
    const fs::path shipped = ContentFolder();
    const auto mayWrite = [&beside](const char* folder) {
        return ::access((beside / folder).c_str(), W_OK | X_OK) == 0;
    };
    if (!inUserFolder && shipped == beside && mayWrite(kFolders[0]) && mayWrite(kFolders[1]))
        return ProgramFolders(beside);
    const Result<fs::path> data = UserDataFolder();
    if (!data)
        return data.Fault();
    const fs::path own = *data / name;
    // File panels return paths without links. Where the user may not even look, nothing is found
    // whatever its path.
    std::error_code error;
    const fs::path direct = fs::weakly_canonical(own, error);
    return ProgramFolders(error ? own : direct, shipped);
}

} // namespace kits
