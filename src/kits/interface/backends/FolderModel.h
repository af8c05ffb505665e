// SPDX-License-Identifier: GPL-3.0-or-later
// The content of a folder as the toolkit's lists show it.
#pragma once

#include "kits/support/EntryRef.h"
#include "kits/support/Result.h"

#include <QAbstractTableModel>
#include <QCollator>
#include <QDateTime>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

struct stat;

namespace kits {

/// A table with one row per entry, folders first. The columns are name, size and date of the last
/// change.
class FolderModel : public QAbstractTableModel {
  public:
    enum Column { kName, kSize, kDate, kColumns };

    struct Entry {
        /// The bytes of the name in the file system, which need not be valid text.
        std::string name;
        /// The folder that contains the entry.
        std::filesystem::path home;
        QString label;
        bool folder;
        qint64 size;
        QDateTime changed;
    };
    /// Returns true if a file is listed.
    using Filter = std::function<bool(const entry_ref& file, const struct stat& status)>;

    explicit FolderModel(Filter filter);

    /// Lists that folder. On failure the error is the system's reason, and the list stays
    /// unchanged.
    Result<void> Read(const std::filesystem::path& folder);
    /// From now on, whenever `upper` is read, the files of `lower` are listed too, except those
    /// whose names occur in `upper`. A `lower` that cannot be read is ignored.
    void SetBeneath(std::filesystem::path upper, std::filesystem::path lower);
    const std::filesystem::path& Folder() const { return folder; }

    void ShowHidden(bool show);
    bool ShowsHidden() const { return showsHidden; }

    const Entry& At(int row) const { return entries[rows[static_cast<std::size_t>(row)]]; }
    /// Returns the index of the entry with that name, or an invalid index if it is not listed.
    QModelIndex Find(const std::string& name) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    void sort(int column, Qt::SortOrder order) override;

  private:
    Result<std::vector<Entry>> EntriesOf(const std::filesystem::path& place) const;
    void AddBeneath(std::vector<Entry>& found) const;
    void Arrange();
    bool Before(const Entry& a, const Entry& b) const;

    Filter filter;
    std::filesystem::path folder;
    std::filesystem::path upper;
    std::filesystem::path lower;
    std::vector<Entry> entries;
    /// Indices of the entries that are listed, in their order.
    std::vector<std::size_t> rows;
    bool showsHidden = false;
    int sortColumn = kName;
    Qt::SortOrder sortOrder = Qt::AscendingOrder;
    QCollator collator;
};

} // namespace kits
