// SPDX-License-Identifier: GPL-3.0-or-later
// A window of the desktop, which holds views.
#pragma once

#include "kits/application/Handler.h"
#include "kits/interface/View.h"

#include <memory>
#include <string_view>
#include <vector>

class QObject;

namespace kits {
class Embedding;
class WindowWidget;
} // namespace kits

enum window_type { B_TITLED_WINDOW, B_MODAL_WINDOW };

constexpr uint32 B_NOT_RESIZABLE = 1U << 1;
constexpr uint32 B_NOT_ZOOMABLE = 1U << 6;
constexpr uint32 B_CURRENT_WORKSPACE = 0;

/// A window is created by `new`, hidden, and deletes itself when it quits. Ctrl+Q and Ctrl+W close
/// it as its close button does. Its views are in the coordinates of its content area, in pixels.
/// Window thread.
class BWindow : public BLooper {
  public:
    /// `frame` is the content area in screen coordinates, edges included.
    BWindow(BRect frame, const char* title, window_type type, uint32 flags,
            uint32 workspaces = B_CURRENT_WORKSPACE);
    /// Deletes the views.
    ~BWindow() override;

    // Hooks.

    /// Called when the user closes the window. If it returns false, the window stays open.
    virtual bool QuitRequested() { return true; }
    /// Called when the content area has changed its size, after the views have followed.
    virtual void FrameResized(float /*width*/, float /*height*/) {}

    /// Called for a key that no view of the window has used, if Ctrl or Alt is held or the key
    /// writes no character. Returns false if the window ignores it too; then it is sent as
    /// B_KEY_DOWN, unless Ctrl, Alt or Meta is held.
    virtual bool TakeShortcut(const kits::KeyPress& /*press*/) { return false; }

    /// From now on the window accepts dropped files everywhere, and dropped texts except on text
    /// fields, which take those themselves. A drop arrives as a message B_SIMPLE_DATA. It is always
    /// a copy: the dragged originals stay where they are.
    void TakeDrops();

    /// Calls ColorsChanged of all views and redraws them.
    void ColorsChanged();

    /// Hides the window at once, and deletes it as soon as none of its code is running.
    virtual void Quit();

    /// Handles B_QUIT_REQUESTED: calls QuitRequested and, if that returns true, Quit. Further
    /// requests have no effect then.
    void MessageReceived(BMessage* message) override;

    void AddChild(BView* child);
    bool RemoveChild(BView* child);
    BView* ChildAt(std::size_t index) const;
    BView* FindView(std::string_view name) const;

    /// Embeds the window into the window `host` of the X server, which may belong to another
    /// program. The host is resized to this window's size, and gets its limits as size hints; from
    /// then on this window follows the host's size. It must be called before Show, and has no
    /// effect on another kind of display.
    void EmbedInto(uint32 host);
    /// Makes the window one that window managers keep above the other. It must be called while the
    /// window is hidden.
    void StayAbove(const BWindow& other);
    void Show();
    void Hide();
    bool IsHidden() const;
    void Activate();
    const char* Title() const { return title.c_str(); }
    void SetTitle(const char* next);

    /// Returns the content area in screen coordinates, in pixels.
    BRect Frame() const { return frame; }
    BRect Bounds() const { return frame.OffsetToCopy(0, 0); }
    /// A window may be smaller than it has asked for by this many pixels, because it consists of
    /// whole pixels of the screen, also where the screen's scale is no whole number.
    static constexpr float kRounding = 1;
    void ResizeTo(float width, float height);
    void MoveTo(float x, float y);
    /// Sets the limits of width and height, in pixels as BRect::Width counts them.
    void SetSizeLimits(float minWidth, float maxWidth, float minHeight, float maxHeight);
    /// Returns the area of its screen that the content of the window may fill: the screen without
    /// the window's title bar and the areas that the desktop reserves, such as its panels.
    BRect Room() const;
    /// Moves the window to the user's current desktop, if it is shown. The argument is ignored.
    void SetWorkspaces(uint32 workspaces);

    /// Sets the time between the pulses of the views in microseconds, at least 1000. The default is
    /// 500000.
    void SetPulseRate(bigtime_t rate);

    /// Returns the toolkit's widget of the window. Only the kits call it.
    kits::WindowWidget& Widget() const { return *widget; }

  private:
    friend class kits::WindowWidget;
    void Resized(float width, float height);

    BRect frame;
    std::string title;
    uint32 flags;
    std::vector<BView*> children;
    std::unique_ptr<kits::WindowWidget> widget;
    std::unique_ptr<kits::Embedding> embedding;
    /// To this the deletion is posted once the window quits.
    std::unique_ptr<QObject> leaving;
};
