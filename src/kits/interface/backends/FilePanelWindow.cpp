// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/backends/FilePanelWindow.h"

#include "kits/interface/Alert.h"
#include "kits/interface/Colors.h"
#include "kits/interface/Control.h"
#include "kits/interface/backends/CompletingField.h"
#include "kits/interface/backends/FileList.h"
#include "kits/interface/backends/ViewWidget.h"
#include "kits/interface/backends/WindowWidget.h"
#include "kits/storage/Entry.h"
#include "kits/storage/FileName.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QScreen>
#include <QScrollBar>
#include <QShortcut>
#include <algorithm>

namespace fs = std::filesystem;

namespace kits {

namespace {

// Positions and sizes in pixels. The window's content initially spans (0, 0) to (kRight, kBottom).

constexpr float kRight = 579;
constexpr float kBottom = 399;
constexpr float kMargin = 10;
constexpr float kButtonHeight = 23;
constexpr float kButtonWidth = 75;
constexpr float kListTop = 2 * kMargin + kButtonHeight;
/// The scroll bars' thickness, as BRect counts it.
constexpr float kBar = 14;
constexpr float kBarBottom = kBottom - 52;
constexpr float kCountWidth = 90;
constexpr float kChoicesTop = kBottom - 40;
constexpr float kNameTop = kBottom - 35;
constexpr float kNameRight = 248;
constexpr float kNameLabelWidth = 53;
constexpr float kMinimumWidth = 460;
constexpr float kMinimumHeight = 250;

// Every action of the user, by mouse or keyboard, arrives as one of these messages. While an alert
// waits for an answer no message is handled, so nothing in the panel changes meanwhile.

constexpr uint32 kCancel = FourCC("cncl");
constexpr uint32 kDefault = FourCC("dflt");
constexpr uint32 kParent = FourCC("prnt");
constexpr uint32 kHome = FourCC("home");
constexpr uint32 kHidden = FourCC("hidn");
constexpr uint32 kActivate = FourCC("actv");
constexpr uint32 kReload = FourCC("reld");
constexpr uint32 kEditPath = FourCC("path");
constexpr uint32 kGoToPath = FourCC("goto");

fs::path PathOf(const QString& text) {
    return QFile::encodeName(text).toStdString();
}

QString TextOf(const fs::path& path) {
    return QFile::decodeName(path.c_str());
}

/// A view filled with a widget of the toolkit.
class HolderView : public BView {
  public:
    HolderView(BRect frame, const char* name, uint32 resizingMode, QWidget* content)
        : BView(frame, name, resizingMode, B_WILL_DRAW) {
        Widget().SetContent(content);
    }
};

/// Returns a scroll bar outside the list that works like the list's own, hidden one.
QScrollBar* TwinOf(QScrollBar& original) {
    auto* twin = new QScrollBar(original.orientation());
    twin->setFocusPolicy(Qt::NoFocus);
    const auto copyRange = [twin, &original] {
        twin->setPageStep(original.pageStep());
        twin->setSingleStep(original.singleStep());
        twin->setRange(original.minimum(), original.maximum());
    };
    QObject::connect(&original, &QScrollBar::rangeChanged, twin, copyRange);
    QObject::connect(&original, &QScrollBar::valueChanged, twin, &QScrollBar::setValue);
    QObject::connect(twin, &QScrollBar::valueChanged, &original, &QScrollBar::setValue);
    copyRange();
    return twin;
}

} // namespace

/// A view in the colour of file panels.
class SheetView : public BView {
  public:
    SheetView(BRect frame, const char* name, uint32 resizingMode)
        : BView(frame, name, resizingMode, B_WILL_DRAW) {
        SheetView::ColorsChanged();
    }

    void ColorsChanged() override {
        SetViewColor(PresentControlColors().sheet);
        SetHighColor(PresentControlColors().text);
    }
};

/// A line of text, clipped where there is no room.
class TextView : public SheetView {
  public:
    using SheetView::SheetView;

    void SetText(const std::string& next) {
        text = next;
        Invalidate();
    }

    void Draw(BRect) override {
        font_height height;
        GetFontHeight(&height);
        const float middle = (Bounds().Height() + height.ascent - height.descent) / 2;
        DrawString(text, {2, middle});
    }

  private:
    std::string text;
};

FilePanelWindow::FilePanelWindow(FilePanelOwner& panel, file_panel_mode mode, uint32 nodeFlavors,
                                 bool multipleSelection, BRefFilter* filter, bool modal)
    : BWindow({100, 100, 100 + kRight, 100 + kBottom}, mode == B_SAVE_PANEL ? "Save" : "Open",
              modal ? B_MODAL_WINDOW : B_TITLED_WINDOW, 0),
      panel(&panel),
      flavors(nodeFlavors == 0 ? B_FILE_NODE : nodeFlavors),
      folder(PathOf(QDir::homePath())),
      model([this, filter](const entry_ref& file, const struct stat& status) {
          return (flavors & B_FILE_NODE) && (!filter || filter->Filter(&file, &status));
      }) {
    auto* background = new SheetView(Bounds(), "background", B_FOLLOW_ALL_SIDES);
    AddChild(background);
    list = new FileList(model, multipleSelection && mode == B_OPEN_PANEL);
    AddNavigation(*background);
    AddList(*background);
    AddChoices(*background, mode);
    AddShortcuts();
    SetSizeLimits(kMinimumWidth, 10000, kMinimumHeight, 10000);
    list->onActivated = [this] { PostMessage(kActivate); };
    list->onParent = [this] { PostMessage(kParent); };
    list->onSelection = [this] { SelectionChanged(); };
    QObject::connect(&watcher, &QFileSystemWatcher::directoryChanged, list,
                     [this] { PostMessage(kReload); });
    ShowState();
}

// Deletes the views first, because the list refers to the model.
FilePanelWindow::~FilePanelWindow() {
    if (panel)
        panel->WindowGone();
    path = nullptr;
    while (BView* child = ChildAt(0))
        delete child;
}

void FilePanelWindow::AddNavigation(BView& background) {
    const float bottom = kMargin + kButtonHeight;
    float left = kMargin;
    const auto add = [&](const char* name, const char* label, uint32 what, const char* tip) {
        auto* button = new BButton({left, kMargin, left + 59, bottom}, name, label,
                                   new BMessage(what), B_FOLLOW_LEFT | B_FOLLOW_TOP);
        button->SetToolTip(tip);
        background.AddChild(button);
        left += 66;
        return button;
    };
    parentButton = add("parent button", "Parent", kParent,
                       "The folder that this one is in (Backspace, or Alt and the up key)");
    add("home button", "Home", kHome, "Your home folder (Alt and the Home key)");
    auto* hidden =
        new BButton({kRight - kMargin - 59, kMargin, kRight - kMargin, bottom}, "hidden button",
                    "Hidden", new BMessage(kHidden), B_FOLLOW_RIGHT | B_FOLLOW_TOP);
    hidden->SetToolTip("Show or hide the files whose names begin with a dot (Ctrl H)");
    path = new CompletingField({left, kMargin, kRight - kMargin - 66, bottom}, "path view",
                               "Folder", 0, B_FOLLOW_LEFT_RIGHT | B_FOLLOW_TOP);
    path->SetToolTip(
        "The folder that is listed; the path of another one, or of a file, can be typed here "
        "(Ctrl L)");
    path->onConfirmed = [this] { PostMessage(kGoToPath); };
    // A typed path that could not be opened stays for correction until the field is left.
    QObject::connect(qApp, &QApplication::focusChanged, list,
                     [this](const QWidget* from, const QWidget* to) {
                         if (path && from == &path->Line() && to && to->window() == &Widget())
                             path->SetText(TextOf(folder));
                     });
    path->completions = [this](const QString& text) { return FoldersLike(text); };
    background.AddChild(path);
    background.AddChild(hidden);
}

void FilePanelWindow::AddList(BView& background) {
    const BRect frame{kMargin, kListTop, kRight - kMargin - kBar - 1, kBarBottom - kBar - 1};
    const float bar = frame.right + 1;
    background.AddChild(new HolderView(frame, "PoseView", B_FOLLOW_ALL_SIDES, list));
    background.AddChild(new HolderView({bar, frame.top, bar + kBar, frame.bottom}, "VScrollBar",
                                       B_FOLLOW_RIGHT | B_FOLLOW_TOP_BOTTOM,
                                       TwinOf(*list->verticalScrollBar())));
    const float below = frame.bottom + 1;
    count = new TextView({frame.left, below, frame.left + kCountWidth, kBarBottom}, "CountVw",
                         B_FOLLOW_LEFT | B_FOLLOW_BOTTOM);
    background.AddChild(count);
    background.AddChild(new HolderView(
        {frame.left + kCountWidth + 1, below, frame.right, kBarBottom}, "HScrollBar",
        B_FOLLOW_LEFT_RIGHT | B_FOLLOW_BOTTOM, TwinOf(*list->horizontalScrollBar())));
}

void FilePanelWindow::AddChoices(BView& background, file_panel_mode mode) {
    if (mode == B_SAVE_PANEL) {
        const float bottom = kNameTop + BTextControl::PreferredHeight();
        name = new CompletingField({kMargin, kNameTop, kNameRight, bottom}, "text view",
                                   "Name:", kNameLabelWidth, B_FOLLOW_LEFT | B_FOLLOW_BOTTOM);
        name->onConfirmed = [this] { PostMessage(kDefault); };
        name->completions = [this](const QString&) { return NamesListed(); };
        QObject::connect(&name->Line(), &QLineEdit::textChanged, list, [this] { ShowState(); });
        background.AddChild(name);
    }
    const BRect right{kRight - kMargin - kButtonWidth, kChoicesTop, kRight - kMargin,
                      kChoicesTop + kButtonHeight};
    auto* cancel = new BButton(right.OffsetByCopy(-kButtonWidth - kMargin, 0), "cancel button",
                               "Cancel", new BMessage(kCancel), B_FOLLOW_RIGHT | B_FOLLOW_BOTTOM);
    background.AddChild(cancel);
    defaultButton = new BButton(right, "default button", SaveMode() ? "Save" : "Open",
                                new BMessage(kDefault), B_FOLLOW_RIGHT | B_FOLLOW_BOTTOM);
    defaultButton->MakeDefault();
    background.AddChild(defaultButton);
}

void FilePanelWindow::AddShortcuts() {
    const std::pair<QKeySequence, uint32> shortcuts[] = {
        {Qt::Key_Escape, kCancel},         {Qt::ALT | Qt::Key_Up, kParent},
        {Qt::ALT | Qt::Key_Home, kHome},   {Qt::CTRL | Qt::Key_H, kHidden},
        {Qt::CTRL | Qt::Key_L, kEditPath}, {Qt::Key_F5, kReload},
    };
    for (const auto& [keys, what] : shortcuts) {
        auto* shortcut = new QShortcut(keys, &Widget());
        QObject::connect(shortcut, &QShortcut::activated, list, [this, what = what] {
            // Escape first closes the list of completions.
            QWidget* popup = QApplication::activePopupWidget();
            if (what == kCancel && popup)
                popup->hide();
            else
                PostMessage(what);
        });
    }
}

bool FilePanelWindow::QuitRequested() {
    Dismiss();
    return false;
}

void FilePanelWindow::MessageReceived(BMessage* message) {
    // The message was still in the queue when the panel was deleted.
    if (!panel)
        return;
    switch (message->what) {
    case kCancel:
        return Dismiss();
    case kDefault:
        return Confirm();
    case kParent:
        return EnterParent();
    case kHome:
        Enter(PathOf(QDir::homePath()));
        return;
    case kHidden:
        return ToggleHidden();
    case kActivate:
        return ListActivated();
    case kReload:
        // A hidden list is read again when it is shown.
        if (!IsHidden())
            Reload();
        return;
    case kEditPath:
        return EditPath();
    case kGoToPath:
        return GoToTypedPath();
    default:
        BWindow::MessageReceived(message);
    }
}

void FilePanelWindow::Abandon() {
    panel = nullptr;
    Quit();
}

void FilePanelWindow::SetFolder(const fs::path& next) {
    if (IsHidden())
        folder = next;
    else
        Enter(next);
}

void FilePanelWindow::SetName(const QString& text) {
    if (!name)
        return;
    name->SetText(text);
    SelectName();
}

/// Selects the name, except an ending that is to stay. An ending that the panel appends is not
/// there yet.
void FilePanelWindow::SelectName() {
    if (name->Text().ends_with(panel->Ending()))
        name->SelectStem();
    else
        name->Line().selectAll();
}

std::string FilePanelWindow::NameText() const {
    return name ? PathOf(name->Line().text()).string() : std::string();
}

std::vector<entry_ref> FilePanelWindow::SelectedRefs() const {
    std::vector<entry_ref> refs;
    for (const FolderModel::Entry* entry : list->Selected()) {
        if (flavors & (entry->folder ? B_DIRECTORY_NODE : B_FILE_NODE))
            refs.push_back({entry->home.string(), entry->name});
    }
    return refs;
}

void FilePanelWindow::Present() {
    if (IsHidden()) {
        if (const BWindow* const asker = panel ? panel->Asker() : nullptr)
            StayAbove(*asker);
        const QWidget* behind = QApplication::activeWindow();
        const QRect area =
            behind ? behind->frameGeometry() : QApplication::primaryScreen()->availableGeometry();
        // Shrinks to the screen, so that the controls at the lower edge can be seen.
        const BRect room = Room();
        const float width = std::min(Bounds().Width(), room.Width());
        const float height = std::min(Bounds().Height(), room.Height());
        ResizeTo(width, height);
        const QPoint corner = area.center() - Widget().rect().center();
        MoveTo(std::clamp(float(corner.x()), room.left, room.right - width),
               std::clamp(float(corner.y()), room.top, room.bottom - height));
        Show();
    } else {
        SetWorkspaces(B_CURRENT_WORKSPACE);
    }
    Activate();
    if (name) {
        name->Line().setFocus();
        SelectName();
    } else {
        list->setFocus();
    }
    // Last, so that the alert about an unreadable folder appears on top of the panel.
    Reload();
}

void FilePanelWindow::Dismiss() {
    if (IsHidden())
        return;
    Hide();
    if (panel)
        panel->WasHidden();
}

bool FilePanelWindow::Enter(const fs::path& next, const std::string& select) {
    const fs::path before = folder;
    folder = BPath(next.c_str()).Path();
    if (const Result<void> read = model.Read(folder); !read) {
        const fs::path failed = folder;
        folder = before;
        Complain("Could not read the folder \"" + failed.string() + "\": " + read.Fault().text +
                 ".");
        return false;
    }
    if (!watcher.directories().isEmpty())
        watcher.removePaths(watcher.directories());
    watcher.addPath(TextOf(folder));
    path->SetText(TextOf(folder));
    if (folder != before || !select.empty())
        list->Select(select);
    else if (!list->currentIndex().isValid())
        list->Select("");
    ShowState();
    return true;
}

void FilePanelWindow::EnterParent() {
    if (folder.has_relative_path())
        Enter(folder.parent_path(), folder.filename().string());
}

// If the folder cannot be read any more, lists the nearest folder above it that can be.
void FilePanelWindow::Reload() {
    fs::path next = folder;
    if (Enter(next))
        return;
    while (next.has_relative_path()) {
        next = next.parent_path();
        if (model.Read(next)) {
            Enter(next);
            return;
        }
    }
}

void FilePanelWindow::ToggleHidden() {
    model.ShowHidden(!model.ShowsHidden());
    ShowState();
}

void FilePanelWindow::EditPath() {
    path->Line().setFocus();
    path->Line().selectAll();
}

void FilePanelWindow::GoToTypedPath() {
    QString text = path->Line().text();
    if (text == "~" || text.startsWith("~/"))
        text.replace(0, 1, QDir::homePath());
    // A relative path starts in the listed folder.
    const fs::path typed = BPath((folder / PathOf(text)).c_str()).Path();
    std::error_code error;
    const fs::file_status status = fs::status(typed, error);
    if (status.type() == fs::file_type::not_found)
        return Complain("There is no file or folder \"" + typed.string() + "\".");
    if (fs::is_directory(status) || !fs::status_known(status)) {
        if (Enter(typed))
            list->setFocus();
        return;
    }
    GoToFile(typed);
}

/// Selects the file in its folder and, in open mode, confirms it.
void FilePanelWindow::GoToFile(const fs::path& file) {
    const std::string entry = file.filename().string();
    if (entry.starts_with('.'))
        model.ShowHidden(true);
    if (!Enter(file.parent_path(), entry))
        return;
    const std::vector<const FolderModel::Entry*> entries = list->Selected();
    if (entries.size() != 1 || entries.front()->name != entry)
        return Complain("The file \"" + file.string() + "\" is none that can be chosen here.");
    list->setFocus();
    if (!SaveMode())
        Confirm();
}

QStringList FilePanelWindow::FoldersLike(const QString& text) const {
    const QString above = text.left(text.lastIndexOf('/') + 1);
    if (!above.startsWith('/'))
        return {};
    QStringList folders;
    std::error_code error;
    for (fs::directory_iterator item(PathOf(above), error), end; !error && item != end;
         item.increment(error)) {
        std::error_code ignored;
        if (item->is_directory(ignored))
            folders.push_back(above + TextOf(item->path().filename()));
    }
    folders.sort();
    return folders;
}

QStringList FilePanelWindow::NamesListed() const {
    QStringList names;
    for (int row = 0; row < model.rowCount(); row++)
        names.push_back(model.At(row).label);
    return names;
}

void FilePanelWindow::ListActivated() {
    const std::vector<const FolderModel::Entry*> entries = list->Selected();
    if (entries.size() == 1 && entries.front()->folder)
        Enter(folder / entries.front()->name);
    else if (!entries.empty())
        Confirm();
}

void FilePanelWindow::SelectionChanged() {
    const std::vector<const FolderModel::Entry*> entries = list->Selected();
    if (name && entries.size() == 1 && !entries.front()->folder)
        name->SetText(entries.front()->label);
    ShowState();
    if (panel)
        panel->SelectionChanged();
}

void FilePanelWindow::ShowState() {
    const int rows = model.rowCount();
    count->SetText(std::to_string(rows) + (rows == 1 ? " item" : " items"));
    parentButton->SetEnabled(folder.has_relative_path());
    defaultButton->SetEnabled(name ? !name->Text().empty() : !list->Selected().empty());
}

void FilePanelWindow::Confirm() {
    if (SaveMode())
        return ConfirmName();
    const std::vector<entry_ref> refs = SelectedRefs();
    if (refs.empty()) {
        const std::vector<const FolderModel::Entry*> entries = list->Selected();
        if (entries.size() == 1)
            Enter(folder / entries.front()->name);
        return;
    }
    BMessage message = panel->NewResult();
    for (const entry_ref& ref : refs)
        message.AddRef("refs", &ref);
    Send(std::move(message));
}

void FilePanelWindow::ConfirmName() {
    std::error_code ignored;
    std::string chosen = NameText();
    if (!chosen.empty() && !chosen.ends_with(panel->Ending()) &&
        !fs::exists(fs::symlink_status(folder / chosen, ignored)))
        chosen += panel->Ending();
    if (const Result<void> checked = CheckFileName(chosen); !checked)
        return Complain(checked.Fault().text);
    const fs::path file = folder / chosen;
    if (fs::is_directory(file, ignored)) {
        if (Enter(file))
            name->SetText("");
        return;
    }
    if (panel->AsksIn(folder) && fs::exists(fs::symlink_status(file, ignored))) {
        const std::string question =
            "\"" + chosen + "\" already exists. Do you want to replace it?";
        auto* alert = new BAlert("Replace", question.c_str(), "Cancel", "Replace", nullptr,
                                 B_WIDTH_AS_USUAL, B_WARNING_ALERT);
        // Cancel is the default, so that the Enter that has confirmed the name does not also
        // confirm the replacement.
        alert->SetDefaultButton(0);
        if (alert->Go() != 1)
            return;
    }
    BMessage message = panel->NewResult();
    entry_ref directory;
    get_ref_for_path(folder.c_str(), &directory);
    message.AddRef("directory", &directory);
    message.AddString("name", chosen);
    Send(std::move(message));
}

void FilePanelWindow::Send(BMessage message) {
    if (panel->Deliver(std::move(message)))
        Dismiss();
}

void FilePanelWindow::Complain(const std::string& text) {
    (new BAlert("", text.c_str(), "Ok", nullptr, nullptr, B_WIDTH_AS_USUAL, B_WARNING_ALERT))->Go();
}

} // namespace kits
