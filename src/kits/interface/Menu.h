// SPDX-License-Identifier: GPL-3.0-or-later
// Menus and the controls that open them.
#pragma once

#include "kits/application/Invoker.h"
#include "kits/interface/View.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

class BMenu;
class QMenu;
class QToolButton;

/// A line of a menu, which sends its message when a person chooses it. Window thread.
class BMenuItem : public BInvoker {
  public:
    /// Takes the message, which may be null.
    BMenuItem(const char* label, BMessage* message, char shortcut = 0);
    /// Opens that menu, which it takes, beside itself.
    explicit BMenuItem(BMenu* submenu);
    ~BMenuItem() override;

    const char* Label() const { return label.c_str(); }
    bool IsMarked() const { return marked; }
    /// Marks the item or not. In a menu of radio mode the other items lose their mark.
    void SetMarked(bool mark);
    BMenu* Menu() const { return menu; }
    /// Returns the menu that the item opens, or null.
    BMenu* Submenu() const { return submenu.get(); }

    /// Does what a choice by a person does.
    void Choose();

  private:
    friend class BMenu;
    std::string label;
    bool marked = false;
    BMenu* menu = nullptr;
    std::unique_ptr<BMenu> submenu;
};

class BSeparatorItem : public BMenuItem {
  public:
    BSeparatorItem() : BMenuItem("", nullptr) {}
};

enum menu_layout { B_ITEMS_IN_ROW, B_ITEMS_IN_COLUMN };

/// A menu is a list of items, which it owns. Window thread.
class BMenu {
  public:
    explicit BMenu(const char* name, menu_layout layout = B_ITEMS_IN_COLUMN);
    virtual ~BMenu();
    BMenu(const BMenu&) = delete;
    BMenu& operator=(const BMenu&) = delete;

    const char* Name() const { return name.c_str(); }
    void SetName(std::string_view next);
    /// Sets a function that is called each time when a person opens the menu, before it is shown,
    /// to fill it with what there is by then.
    void SetOpening(std::function<void(BMenu& menu)> next) { opening = std::move(next); }

    /// Takes the item over.
    void AddItem(BMenuItem* item);
    /// Gives the item back; null if there is none.
    BMenuItem* RemoveItem(std::size_t index);
    void RemoveAll();
    std::size_t CountItems() const { return items.size(); }
    BMenuItem* ItemAt(std::size_t index) const;
    /// Returns the item of that label, null if there is none.
    BMenuItem* FindItem(std::string_view label) const;
    BMenuItem* FindItem(uint32 command) const;
    BMenuItem* FindMarked() const;

    void SetTargetForItems(const BHandler* handler);
    void SetTargetForItems(const BMessenger& messenger);

    /// Where on, choosing an item marks it, and it alone.
    void SetRadioMode(bool on) { radio = on; }
    bool IsRadioMode() const { return radio; }
    /// Where on, the button or line that opens the menu shows the marked item's label.
    void SetLabelFromMarked(bool on) { labelFromMarked = on; }
    /// Returns the label of what opens the menu.
    std::string Title() const;

    /// Fills a toolkit's menu, and tells it when the title may have changed. Only the kits call it.
    void Fill(QMenu& toolkit);
    void SetObserver(std::function<void()> next) { observer = std::move(next); }

  private:
    friend class BMenuItem;
    void Changed() const;

    std::string name;
    bool radio = false;
    bool labelFromMarked = false;
    std::vector<std::unique_ptr<BMenuItem>> items;
    std::function<void()> observer;
    std::function<void(BMenu& menu)> opening;
};

/// A menu of choices.
class BPopUpMenu : public BMenu {
  public:
    explicit BPopUpMenu(const char* name, bool radioMode = true, bool autoRename = true,
                        menu_layout layout = B_ITEMS_IN_COLUMN);
};

/// A view that shows a menu's title with an arrow, and opens it.
class BMenuField : public BView {
  public:
    /// Takes the menu over. The label, which may be empty, stands left of it.
    BMenuField(BRect frame, const char* name, const char* label, BMenu* menu,
               uint32 resizingMode = B_FOLLOW_LEFT | B_FOLLOW_TOP,
               uint32 flags = B_WILL_DRAW | B_NAVIGABLE);
    ~BMenuField() override;

    BMenu* Menu() const { return menu.get(); }
    /// Sets where the menu begins, in pixels from the field's left edge.
    void SetDivider(float position);
    float Divider() const { return divider; }
    /// Does what BButton::SetOnDark does.
    void SetOnDark();

    /// Returns the part of the menu's title that is shown: all of it, unless there is no room.
    std::string ShownTitle() const;

    void SetEnabled(bool enabled);

    /// Returns the height of what opens a menu, as BRect::Height counts it.
    static float PreferredHeight();

    void AttachedToWindow() override;
    void FrameResized(float width, float height) override;

  private:
    void ShowTitle();

    std::unique_ptr<BMenu> menu;
    std::string label;
    float divider = 0;
    QToolButton* button;
};

/// A bar of menus, each as wide as there is room: here of one that fills the bar's frame.
class BMenuBar : public BView {
  public:
    BMenuBar(BRect frame, const char* name, uint32 resizingMode = B_FOLLOW_LEFT | B_FOLLOW_TOP,
             menu_layout layout = B_ITEMS_IN_ROW, bool resizeToFit = true);

    /// Takes the menu over. The menus of a bar share its width.
    void AddItem(BMenu* menu);

  private:
    std::vector<BMenuField*> fields;
};
