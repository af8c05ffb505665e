// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/backends/FileList.h"

#include "kits/interface/backends/ViewWidget.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QScrollBar>
#include <algorithm>

namespace kits {

namespace {

/// The widths of the columns for size and date, in pixels.
constexpr int kSizeWidth = 84;
constexpr int kDateWidth = 130;

constexpr auto kWholeRow = QItemSelectionModel::Select | QItemSelectionModel::Rows;

} // namespace

FileList::FileList(FolderModel& model, bool multipleSelection) : model(model) {
    // Connected before setModel(), so that the selection is saved before the view handles the reset
    // and drops it.
    connect(&model, &QAbstractItemModel::modelAboutToBeReset, this, [this] { Remember(); });
    setModel(&model);
    connect(&model, &QAbstractItemModel::modelReset, this, [this] { Restore(); });
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        if (!restoring && onSelection)
            onSelection();
    });
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setAlternatingRowColors(true);
    setTabKeyNavigation(false);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSelectionMode(multipleSelection ? ExtendedSelection : SingleSelection);
    setAccessibleName("Files");
    setFont(ToQt(*be_plain_font()));
    header()->setFont(font());
    header()->setStretchLastSection(false);
    header()->setSectionsMovable(false);
    header()->setSectionResizeMode(FolderModel::kName, QHeaderView::Stretch);
    header()->resizeSection(FolderModel::kSize, kSizeWidth);
    header()->resizeSection(FolderModel::kDate, kDateWidth);
    header()->setMinimumSectionSize(60);
    setSortingEnabled(true);
    sortByColumn(FolderModel::kName, Qt::AscendingOrder);
}

std::vector<const FolderModel::Entry*> FileList::Selected() const {
    const QModelIndexList selected = selectionModel()->selectedRows();
    std::vector<int> rows;
    rows.reserve(static_cast<std::size_t>(selected.size()));
    for (const QModelIndex& index : selected)
        rows.push_back(index.row());
    std::sort(rows.begin(), rows.end());
    std::vector<const FolderModel::Entry*> entries;
    for (const int row : rows)
        entries.push_back(&model.At(row));
    return entries;
}

void FileList::Select(const std::string& name) {
    const QModelIndex found = model.Find(name);
    if (found.isValid()) {
        selectionModel()->setCurrentIndex(found, QItemSelectionModel::ClearAndSelect |
                                                     QItemSelectionModel::Rows);
        scrollTo(found);
    } else {
        selectionModel()->setCurrentIndex(model.index(0, 0), QItemSelectionModel::Clear);
        scrollToTop();
    }
}

void FileList::Remember() {
    names.clear();
    for (const FolderModel::Entry* entry : Selected())
        names.push_back(entry->name);
    current = currentIndex().isValid() ? model.At(currentIndex().row()).name : "";
}

void FileList::Restore() {
    restoring = true;
    for (const std::string& name : names)
        selectionModel()->select(model.Find(name), kWholeRow);
    if (const QModelIndex index = model.Find(current); index.isValid()) {
        selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
        scrollTo(index);
    }
    restoring = false;
    if (onSelection && selectionModel()->selectedRows().size() != qsizetype(names.size()))
        onSelection();
}

void FileList::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        // If nothing is selected, the current entry is meant.
        if (selectionModel()->selectedRows().isEmpty() && currentIndex().isValid())
            selectionModel()->select(currentIndex(), kWholeRow);
        onActivated();
        break;
    case Qt::Key_Backspace:
        onParent();
        break;
    default:
        QTreeView::keyPressEvent(event);
    }
}

void FileList::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && indexAt(event->pos()).isValid())
        onActivated();
}

} // namespace kits
