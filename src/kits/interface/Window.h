// SPDX-License-Identifier: GPL-3.0-or-later
// A window of the desktop, which holds views.
#pragma once

#include "kits/application/Handler.h"
#include "kits/interface/View.h"

#include <memory>
#include <string_view>
#include <vector>

namespace kits {
class Embedding;
class WindowWidget;
} // namespace kits

enum window_type { B_TITLED_WINDOW, B_MODAL_WINDOW };

constexpr uint32 B_NOT_RESIZABLE = 1U << 1;
constexpr uint32 B_NOT_ZOOMABLE = 1U << 6;
constexpr uint32 B_CURRENT_WORKSPACE = 0;

/// A window is made hidden, by new, and deletes itself when it quits. Ctrl+Q and Ctrl+W close it as
/// its button does. Its views are in the coordinates of its content area, in pixels. Window thread.
class BWindow : public BLooper {
  public:
    /// The frame, on the screen, is that of the content area, edges included.
    BWindow(BRect frame, const char* title, window_type type, uint32 flags,
            uint32 workspaces = B_CURRENT_WORKSPACE);
    /// Deletes the views.
    ~BWindow() override;

    // Hooks.

    /// Called when a person closes the window; where it answers false the window stays.
    virtual bool QuitRequested() { return true; }
    /// The content area has changed its size; the views have followed.
    virtual void FrameResized(float /*width*/, float /*height*/) {}

    /// Called for a key that nothing in the window wanted, beside Ctrl or Alt or of those that
    /// write nothing. It answers false where the window has no use for it: then it becomes
    /// B_KEY_DOWN, unless Ctrl or Alt is held.
    virtual bool TakeShortcut(const kits::KeyPress& /*press*/) { return false; }

    /// From now on files can be dropped anywhere in the window, and texts where no field is. They
    /// come as a message B_SIMPLE_DATA. The dragged files and texts themselves stay where they
    /// were.
    void TakeDrops();

    /// Has all views take their colours anew.
    void ColorsChanged();

    /// Hides the window now, and deletes it as soon as nothing of it is running.
    virtual void Quit();

    /// B_QUIT_REQUESTED asks QuitRequested and quits.
    void MessageReceived(BMessage* message) override;

    void AddChild(BView* child);
    bool RemoveChild(BView* child);
    BView* ChildAt(std::size_t index) const;
    BView* FindView(std::string_view name) const;

    /// Makes the window the content of the window `host` of the X server, which another program may
    /// own. It gives that its size and follows it from then on. It must be called before Show, and
    /// has no effect on another display.
    void EmbedInto(uint32 host);
    void Show();
    void Hide();
    bool IsHidden() const;
    void Activate();
    const char* Title() const { return title.c_str(); }
    void SetTitle(const char* next);

    /// Returns the place of the window on the screen, in pixels.
    BRect Frame() const { return frame; }
    BRect Bounds() const { return frame.OffsetToCopy(0, 0); }
    void ResizeTo(float width, float height);
    void MoveTo(float x, float y);
    /// Sets the limits of width and height, in pixels as BRect::Width counts them.
    void SetSizeLimits(float minWidth, float maxWidth, float minHeight, float maxHeight);
    /// The part of its screen that the window may fill with its content, beside its title and what
    /// the desktop keeps for itself.
    BRect Room() const;
    /// Brings the window to the desktop that the user looks at.
    void SetWorkspaces(uint32 workspaces);

    /// Sets the microseconds between the pulses of the views, at least 1000. They are 500000 at
    /// first.
    void SetPulseRate(bigtime_t rate);

    /// The toolkit's widget of the window. Only the kits call it.
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
};
