// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/backends/FolderModel.h"

#include "kits/interface/backends/ViewWidget.h"

#include <QApplication>
#include <QFile>
#include <QLocale>
#include <QStyle>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <set>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace kits {

namespace {

constexpr const char* kTitles[FolderModel::kColumns] = {"Name", "Size", "Changed"};

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

} // namespace

// If the system sets no language, there are no rules for sorting numbers either, so English is
// used.
FolderModel::FolderModel(Filter filter)
    : filter(std::move(filter)),
      collator(QLocale().language() == QLocale::C ? QLocale(QLocale::English) : QLocale()) {
    // "take 9" comes before "take 10".
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
}

Result<std::vector<FolderModel::Entry>>
FolderModel::EntriesOf(const std::filesystem::path& place) const {
    const std::unique_ptr<DIR, CloseFolder> open(::opendir(place.c_str()));
    if (!open)
        return Error{std::strerror(errno)};
    std::vector<Entry> found;
    // An entry may vanish before it is looked at, which sets errno too.
    for (errno = 0; const dirent* item = ::readdir(open.get()); errno = 0) {
        const std::string name = item->d_name;
        if (name == "." || name == "..")
            continue;
        struct stat status {};
        // A dangling symbolic link is listed as the link itself.
        if (::fstatat(::dirfd(open.get()), item->d_name, &status, 0) != 0 &&
            ::fstatat(::dirfd(open.get()), item->d_name, &status, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        const bool isFolder = S_ISDIR(status.st_mode);
        if (isFolder || filter({place.string(), name}, status))
            found.push_back({name, place, QFile::decodeName(name.c_str()), isFolder, status.st_size,
                             QDateTime::fromSecsSinceEpoch(status.st_mtime)});
    }
    if (errno != 0)
        return Error{std::strerror(errno)};
    return found;
}

void FolderModel::SetBeneath(std::filesystem::path newUpper, std::filesystem::path newLower) {
    upper = std::move(newUpper);
    lower = std::move(newLower);
}

void FolderModel::AddBeneath(std::vector<Entry>& found) const {
    const Result<std::vector<Entry>> beneath = EntriesOf(lower);
    if (!beneath)
        return;
    std::set<std::string> names;
    for (const Entry& entry : found)
        names.insert(entry.name);
    for (const Entry& entry : *beneath) {
        if (!entry.folder && !names.contains(entry.name))
            found.push_back(entry);
    }
}

Result<void> FolderModel::Read(const std::filesystem::path& next) {
    Result<std::vector<Entry>> found = EntriesOf(next);
    if (!found)
        return found.Fault();
    if (next == upper)
        AddBeneath(*found);
    beginResetModel();
    folder = next;
    entries = *std::move(found);
    Arrange();
    endResetModel();
    return {};
}

void FolderModel::ShowHidden(bool show) {
    beginResetModel();
    showsHidden = show;
    Arrange();
    endResetModel();
}

void FolderModel::sort(int column, Qt::SortOrder order) {
    beginResetModel();
    sortColumn = column;
    sortOrder = order;
    Arrange();
    endResetModel();
}

void FolderModel::Arrange() {
    rows.clear();
    for (std::size_t i = 0; i < entries.size(); i++) {
        if (showsHidden || !entries[i].name.starts_with('.'))
            rows.push_back(i);
    }
    std::sort(rows.begin(), rows.end(),
              [this](std::size_t a, std::size_t b) { return Before(entries[a], entries[b]); });
}

bool FolderModel::Before(const Entry& a, const Entry& b) const {
    if (a.folder != b.folder)
        return a.folder;
    const bool down = sortOrder == Qt::DescendingOrder;
    if (sortColumn == kSize && !a.folder && a.size != b.size)
        return (a.size < b.size) != down;
    if (sortColumn == kDate && a.changed != b.changed)
        return (a.changed < b.changed) != down;
    // Entries that are equal in size or date are sorted by ascending name in either direction.
    const bool namesDown = down && sortColumn == kName;
    if (const int order = collator.compare(a.label, b.label); order != 0)
        return (order < 0) != namesDown;
    return a.name != b.name && (a.name < b.name) != namesDown;
}

QModelIndex FolderModel::Find(const std::string& name) const {
    for (std::size_t i = 0; i < rows.size(); i++) {
        if (entries[rows[i]].name == name)
            return index(static_cast<int>(i), kName);
    }
    return {};
}

int FolderModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows.size());
}

int FolderModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(kColumns);
}

QVariant FolderModel::data(const QModelIndex& index, int role) const {
    // The view asks for the current entry when a key is to copy it, and there may be none.
    if (!index.isValid())
        return {};
    const Entry& entry = At(index.row());
    if (role == Qt::DecorationRole && index.column() == kName)
        return QApplication::style()->standardIcon(entry.folder ? QStyle::SP_DirIcon
                                                                : QStyle::SP_FileIcon);
    if (role == Qt::TextAlignmentRole && index.column() == kSize)
        return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    if (role == Qt::ToolTipRole)
        return TipText(entry.label);
    if (role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case kName:
        return entry.label;
    case kSize:
        return entry.folder ? QString() : QLocale().formattedDataSize(entry.size);
    default:
        return entry.changed.toString("yyyy-MM-dd hh:mm");
    }
}

QVariant FolderModel::headerData(int section, Qt::Orientation orientation, int role) const {
    // Screen readers ask for any section.
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount())
        return {};
    if (role == Qt::DisplayRole)
        return kTitles[section];
    if (role == Qt::TextAlignmentRole)
        return QVariant((section == kSize ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    return {};
}

} // namespace kits
