// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DescriptionWindow.h"

#include "app/Shortcuts.h"
#include "app/VexaView.h"
#include "documents/PlayingElement.h"
#include "kits/interface/Menu.h"
#include "kits/interface/TextBox.h"
#include "kits/support/Trimmed.h"
#include "views/Theme.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace vexa {

namespace {

constexpr uint32 kPartCode = FourCC("DscP");

/// The time between two looks at the sound, in microseconds.
constexpr bigtime_t kLookRate = 100000;

// In pixels.

constexpr float kSheetWidth = 439;
constexpr float kSheetHeight = 279;
constexpr float kLeastSheetWidth = 300;
constexpr float kLeastSheetHeight = 210;
constexpr float kLargestSheet = 10000;
constexpr float kSheetMargin = 12;
constexpr float kRowGap = 8;
constexpr float kLabelGap = 10;

/// The labels of the parts, which are also the names of the steps that change them.
constexpr const char* kPartNames[] = {"name", "author", "category", "tags", "comment"};

constexpr const char* kNoCategory = "none";

/// The background of the window, with a label at the left of each control.
class DescriptionSheet : public BView {
  public:
    explicit DescriptionSheet(BRect frame)
        : BView(frame, "description", B_FOLLOW_ALL_SIDES, B_WILL_DRAW) {
        SetViewColor(Colors().panel);
        for (const char* label : kPartNames)
            labelWidth = std::max(labelWidth, std::ceil(StringWidth(label)));
    }

    /// Returns the frame of the next control, which is `height` pixels high.
    BRect NextRow(float height) {
        const BRect row{kSheetMargin + labelWidth + kLabelGap, nextTop,
                        Bounds().right - kSheetMargin, nextTop + height};
        font_height font;
        GetFontHeight(&font);
        const float line = std::min(height, BMenuField::PreferredHeight());
        baselines.push_back(std::floor(nextTop + (line + font.ascent - font.descent + 1) / 2));
        nextTop += height + 1 + kRowGap;
        return row;
    }
    float RoomBelow() const { return Bounds().bottom - kSheetMargin - nextTop; }

    void Draw(BRect) override {
        SetHighColor(Colors().text);
        for (std::size_t i = 0; i < baselines.size(); i++) {
            const float left = kSheetMargin + labelWidth - StringWidth(kPartNames[i]);
            DrawString(kPartNames[i], {std::floor(left), baselines[i]});
        }
    }
    void ColorsChanged() override { SetViewColor(Colors().panel); }

  private:
    float labelWidth = 0;
    float nextTop = kSheetMargin;
    std::vector<float> baselines;
};

/// Returns the category of an item; it is empty for none.
std::string WordOf(const BMenuItem& item) {
    std::string word;
    item.Message()->FindString("category", &word);
    return word;
}

} // namespace

DescriptionWindow::DescriptionWindow(BWindow& main, VexaView& view)
    : BWindow({0, 0, kSheetWidth, kSheetHeight}, "About This Sound", B_TITLED_WINDOW,
              B_NOT_ZOOMABLE),
      main(main),
      view(view) {
    SetPulseRate(kLookRate);
    auto* sheet = new DescriptionSheet(Bounds());
    AddChild(sheet);
    const auto addLine = [&](Part part, const char* words, const char* help) {
        const auto index = static_cast<std::size_t>(part);
        auto* line =
            new BTextControl(sheet->NextRow(BTextControl::PreferredHeight()), kPartNames[index],
                             nullptr, "", MessageFor(part), B_FOLLOW_LEFT_RIGHT | B_FOLLOW_TOP);
        line->SetAccessibleName(words);
        line->SetHelp(help);
        sheet->AddChild(line);
        lines[index] = line;
    };
    addLine(Part::Name, "name of the sound",
            "The name that lists show. Without one they show the name of the file");
    addLine(Part::Author, "author of the sound",
            "Who has made the sound. Your changes set the author of your settings, unless you have "
            "entered another one here");
    category = new BMenuField(sheet->NextRow(BMenuField::PreferredHeight()), "category", nullptr,
                              new BPopUpMenu("category"), B_FOLLOW_LEFT_RIGHT | B_FOLLOW_TOP);
    AddCategory(kNoCategory, "");
    for (const std::string_view word : kCategories)
        AddCategory(std::string(word), std::string(word));
    category->SetAccessibleName("category of the sound");
    category->SetHelp("The kind of sound with which the list shows it");
    sheet->AddChild(category);
    addLine(Part::Tags, "tags of the sound, separated by commas",
            "Words by which the search finds the sound, separated by commas");
    comment = new kits::TextBox(sheet->NextRow(sheet->RoomBelow()), "comment",
                                MessageFor(Part::Comment), B_FOLLOW_ALL_SIDES);
    comment->SetAccessibleName("comment on the sound");
    comment->SetHelp("What there is to say about the sound, such as what its macros do. The list "
                     "shows it where the pointer rests on the sound");
    sheet->AddChild(comment);
    SetSizeLimits(kLeastSheetWidth, kLargestSheet, kLeastSheetHeight, kLargestSheet);
    ShowAll();
    view.SetEnterElsewhere([this] {
        if (!IsHidden())
            EnterTyped();
    });
}

DescriptionWindow::~DescriptionWindow() {
    view.SetEnterElsewhere(nullptr);
}

BMessage* DescriptionWindow::MessageFor(Part part) {
    auto* message = new BMessage(kPartCode);
    message->AddInt32("part", static_cast<int32>(part));
    return message;
}

void DescriptionWindow::Open() {
    if (IsHidden()) {
        ShowAll();
        const BRect room = main.Room();
        const BRect below = main.Frame();
        const auto centered = [](float from, float to, float size, float least, float most) {
            return std::clamp(std::floor((from + to - size) / 2), least, std::max(least, most));
        };
        const BRect size = Bounds();
        MoveTo(
            centered(below.left, below.right, size.Width(), room.left, room.right - size.Width()),
            centered(below.top, below.bottom, size.Height(), room.top,
                     room.bottom - size.Height()));
        StayAbove(main);
        Show();
    }
    Activate();
    Line(Part::Name).MakeFocus();
    Line(Part::Name).SelectAll();
}

void DescriptionWindow::Close() {
    EnterTyped();
    Hide();
}

bool DescriptionWindow::QuitRequested() {
    Close();
    return false;
}

bool DescriptionWindow::TakeShortcut(const kits::KeyPress& press) {
    if (press.key == kits::Key::Escape ||
        (press.character == U'I' && press.modifiers == B_CONTROL_KEY)) {
        Close();
        return true;
    }
    // Any other key, such as Shift, leaves alone what is being typed.
    if (ShortcutCode(press))
        EnterTyped();
    return main.TakeShortcut(press);
}

void DescriptionWindow::MessageReceived(BMessage* message) {
    int32 part = 0;
    switch (message->what) {
    case B_PULSE:
        if (!IsHidden())
            Refresh();
        break;
    case kPartCode:
        // Another sound may have come since the message was sent.
        Refresh();
        if (message->FindInt32("part", &part) == B_OK)
            Enter(static_cast<Part>(part));
        break;
    default:
        BWindow::MessageReceived(message);
    }
}

DescriptionWindow::Shown DescriptionWindow::Present() const {
    return {view.SoundAuthor(), view.Played().State().info, view.SoundName()};
}

std::string DescriptionWindow::TextOf(const Shown& description, Part part) {
    switch (part) {
    case Part::Name:
        return description.info.name.value_or("");
    case Part::Author:
        return description.author;
    case Part::Category:
        return description.info.category.value_or("");
    case Part::Tags:
        return description.info.tags.value_or("");
    case Part::Comment:
        return description.info.comment.value_or("");
    }
    return "";
}

void DescriptionWindow::ShowAll() {
    shown = Present();
    Line(Part::Name).SetPlaceholder(shown.file);
    for (const Part part : kParts)
        ShowText(part, TextOf(shown, part));
}

/// Shows the parts that have changed, and all of another sound. What is being typed into another
/// part, or was refused there, stays.
void DescriptionWindow::Refresh() {
    if (view.SoundName() != shown.file)
        return ShowAll();
    const Shown former = std::exchange(shown, Present());
    for (const Part part : kParts) {
        if (const std::string text = TextOf(shown, part); text != TextOf(former, part))
            ShowText(part, text);
    }
}

void DescriptionWindow::AddCategory(const std::string& label, const std::string& word) {
    BMessage* message = MessageFor(Part::Category);
    message->AddString("category", word);
    auto* item = new BMenuItem(label.c_str(), message);
    item->SetTarget(this);
    category->Menu()->AddItem(item);
}

/// Returns the item of a category. A word that this version does not know gets an item of its own;
/// it may read as the label of no category does.
BMenuItem& DescriptionWindow::ItemOf(const std::string& word) {
    BMenu& menu = *category->Menu();
    std::size_t i = 0;
    while (i < menu.CountItems() && WordOf(*menu.ItemAt(i)) != word)
        i++;
    if (i == menu.CountItems())
        AddCategory(word, word);
    return *menu.ItemAt(i);
}

std::string DescriptionWindow::Typed(Part part) const {
    if (part == Part::Comment)
        return comment->Text();
    if (part != Part::Category)
        return Line(part).Text();
    return WordOf(*category->Menu()->FindMarked());
}

void DescriptionWindow::ShowText(Part part, const std::string& text) {
    Mark(part, "");
    if (part == Part::Comment)
        comment->SetText(text);
    else if (part == Part::Category)
        ItemOf(text).SetMarked(true);
    else
        Line(part).SetText(text.c_str());
}

/// Marks the control of a text that is refused; its tool tip gives the reason. Without a reason,
/// removes the mark.
void DescriptionWindow::Mark(Part part, const std::string& fault) {
    const std::string tip = fault.empty() ? "" : "This is not taken: " + fault;
    const auto mark = [&](auto& control) {
        control.MarkWrong(!fault.empty());
        control.SetToolTip(tip.c_str());
    };
    if (part == Part::Comment)
        mark(*comment);
    else if (part != Part::Category)
        mark(Line(part));
}

void DescriptionWindow::EnterTyped() {
    Refresh();
    for (const Part part : kParts) {
        if (Typed(part) != TextOf(shown, part))
            Enter(part);
    }
}

/// Makes the text in a part's control that part of the sound, or marks the control if it may not
/// be.
void DescriptionWindow::Enter(Part part) {
    const std::string typed = Typed(part);
    if (const std::string fault = InfoFault(typed); !fault.empty())
        return Mark(part, fault);
    // A document gives the text back without the blanks around it.
    const std::string text(kits::Trimmed(typed));
    if (text != TextOf(shown, part)) {
        const auto child = text.empty() ? std::nullopt : std::optional(text);
        Shown next = shown;
        switch (part) {
        case Part::Name:
            next.info.name = child;
            break;
        case Part::Author:
            next.author = child.value_or(view.UsualAuthor());
            break;
        case Part::Category:
            next.info.category = child;
            break;
        case Part::Tags:
            next.info.tags = child;
            break;
        case Part::Comment:
            next.info.comment = child;
            break;
        }
        view.DescribeSound(next.author, next.info, kPartNames[static_cast<std::size_t>(part)]);
        shown = next;
    }
    ShowText(part, TextOf(shown, part));
}

} // namespace vexa
