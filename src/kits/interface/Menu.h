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

/// A line of a menu. It sends its message when the user chooses it. Window thread.
class BMenuItem : public BInvoker {
  public:
    /// Takes ownership of the message, which may be null.
    BMenuItem(const char* label, BMessage* message, char shortcut = 0);
    /// Makes an item that opens `submenu` beside itself. Takes ownership of the menu.
    explicit BMenuItem(BMenu* submenu);
    ~BMenuItem() override;

    const char* Label() const { return label.c_str(); }
    /// Sets the keys, such as "Ctrl+S", that do the same without the menu. The item only shows
    /// them.
    void SetKeys(std::string_view next) { keys = next; }
    const std::string& Keys() const { return keys; }
    bool IsMarked() const { return marked; }
    /// Sets or removes the mark. In a menu in radio mode, marking an item unmarks the others.
    void SetMarked(bool mark);
    BMenu* Menu() const { return menu; }
    /// Returns the submenu that the item opens, or null.
    BMenu* Submenu() const { return submenu.get(); }

    /// Has the effect of a choice by the user.
    void Choose();

  private:
    friend class BMenu;
    std::string label;
    std::string keys;
    bool marked = false;
    BMenu* menu = nullptr;
    std::unique_ptr<BMenu> submenu;
};

class BSeparatorItem : public BMenuItem {
  public:
    BSeparatorItem() : BMenuItem("", nullptr) {}
};

enum menu_layout { B_ITEMS_IN_ROW, B_ITEMS_IN_COLUMN };

/// A list of items, which the menu owns. Window thread.
class BMenu {
  public:
    explicit BMenu(const char* name, menu_layout layout = B_ITEMS_IN_COLUMN);
    virtual ~BMenu();
    BMenu(const BMenu&) = delete;
    BMenu& operator=(const BMenu&) = delete;

    const char* Name() const { return name.c_str(); }
    void SetName(std::string_view next);
    /// Sets a function that is called each time the user opens the menu, before it is shown, so
    /// that it can fill the menu with the present items.
    void SetOpening(std::function<void(BMenu& menu)> next) { opening = std::move(next); }

    /// Takes ownership of the item.
    void AddItem(BMenuItem* item);
    void RemoveAll();
    std::size_t CountItems() const { return items.size(); }
    BMenuItem* ItemAt(std::size_t index) const;
    /// Return the first item with that label, with a message of that code, or with a mark; null if
    /// there is none.
    BMenuItem* FindItem(std::string_view label) const;
    BMenuItem* FindItem(uint32 command) const;
    BMenuItem* FindMarked() const;

    void SetTargetForItems(const BHandler* handler);
    void SetTargetForItems(const BMessenger& messenger);

    /// In radio mode, choosing an item marks it and unmarks all others.
    void SetRadioMode(bool on) { radio = on; }
    bool IsRadioMode() const { return radio; }
    /// If on, the button or item that opens the menu shows the label of the marked item.
    void SetLabelFromMarked(bool on) { labelFromMarked = on; }
    /// Returns the label for the button or item that opens the menu.
    std::string Title() const;
    /// Returns the label of the marked item. While none is marked, returns the label set by
    /// SetUsual, initially empty.
    std::string Choice() const;
    /// Sets the label of what holds until the user chooses an item. It is not the menu's title, but
    /// screen readers read it out, and the item of that label has the mark.
    void SetUsual(std::string_view label) { usual = label; }

    /// Fill a menu of the toolkit, and set a function that is called when the title may have
    /// changed. Only the kits call them.
    void Fill(QMenu& toolkit);
    void SetObserver(std::function<void()> next) { observer = std::move(next); }

  private:
    friend class BMenuItem;
    void Changed() const;

    std::string name;
    bool radio = false;
    bool labelFromMarked = false;
    std::string usual;
    /// Shared only while one of them acts: an item of the toolkit's menu asks whether its own still
    /// exists.
    std::vector<std::shared_ptr<BMenuItem>> items;
    std::function<void()> observer;
    std::function<void(BMenu& menu)> opening;
};

/// A menu of choices.
class BPopUpMenu : public BMenu {
  public:
    explicit BPopUpMenu(const char* name, bool radioMode = true, bool autoRename = true,
                        menu_layout layout = B_ITEMS_IN_COLUMN);
};

/// A view that shows the title of a menu with an arrow, and opens the menu when pressed. An open
/// menu follows changes of its items.
class BMenuField : public BView {
  public:
    /// Takes ownership of the menu. The label, which may be empty, is shown left of the menu.
    BMenuField(BRect frame, const char* name, const char* label, BMenu* menu,
               uint32 resizingMode = B_FOLLOW_LEFT | B_FOLLOW_TOP,
               uint32 flags = B_WILL_DRAW | B_NAVIGABLE);
    ~BMenuField() override;

    BMenu* Menu() const { return menu.get(); }
    /// Sets the start of the menu's button, in pixels from the field's left edge.
    void SetDivider(float position);
    /// Adapts the field to a dark background, as BButton::SetOnDark does.
    void SetOnDark();

    /// Returns the shown part of the menu's title, which is cut if there is too little room.
    std::string ShownTitle() const;

    void SetEnabled(bool enabled);

    /// Returns the height of all menu fields, as BRect::Height counts it.
    static float PreferredHeight();

    void AttachedToWindow() override;
    void FrameResized(float width, float height) override;

  private:
    void ShowTitle();
    void Fill();
    void FillIfOpen();

    std::unique_ptr<BMenu> menu;
    /// True while the toolkit's menu is filled, or will be once the present event is handled.
    bool filling = false;
    std::string label;
    float divider = 0;
    QToolButton* button;
};

/// A bar of menus that share its width equally.
class BMenuBar : public BView {
  public:
    BMenuBar(BRect frame, const char* name, uint32 resizingMode = B_FOLLOW_LEFT | B_FOLLOW_TOP,
             menu_layout layout = B_ITEMS_IN_ROW, bool resizeToFit = true);

    /// Takes ownership of the menu.
    void AddItem(BMenu* menu);

  private:
    std::vector<BMenuField*> fields;
};
