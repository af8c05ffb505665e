// SPDX-License-Identifier: GPL-3.0-or-later
// The main window and its parts.
#pragma once

#include "app/Project.h"
#include "app/Session.h"
#include "app/Settings.h"
#include "kits/application/Messenger.h"
#include "kits/interface/Window.h"
#include "kits/media/Recording.h"
#include "kits/storage/ProgramFolder.h"

#include <memory>
#include <optional>

class BMenuField;
class BScrollView;

namespace vexa {

class Attachment;
class BarView;
class BitmapBarView;
class DescriptionWindow;
class Drawer;
class Strip;
class VexaView;

/// The choices with which a window starts.
struct WindowChoices {
    /// Loads the sound "default"; else the caller loads a sound, if any.
    bool withDefaultSound = true;
    /// The plug-in that plays, as in VexaView; null if none does.
    Attachment* plugin = nullptr;
    /// Shows the logo bar and the main view alone.
    bool classic = false;
    /// The settings, which last from one start to the next. The default ones have no file, so they
    /// are forgotten.
    std::shared_ptr<Settings> settings = std::make_shared<Settings>();
};

/// The window has the logo bar at the top, the drawer below it at the left, the main view at its
/// right, and the strip below these. Drawer and strip can be hidden. The user can make the window
/// wider and smaller, but not taller than its parts. In a smaller window the strip has one row less
/// and the main view scrolls. The next start restores the size and place, as far as the screen has
/// room, except for a classic window and one of a plug-in. Closing the window ends the program.
/// Window thread.
class VexaWindow : public BWindow, private SessionClient {
  public:
    /// Makes the window without showing it. `frame` is the frame of the logo bar and the main view:
    /// the other parts enlarge the window, and a font can widen it. Parts that do not fit on the
    /// screen are hidden, and the main view scrolls.
    VexaWindow(BRect frame, const kits::ProgramFolders& folders, const WindowChoices& choices = {});
    ~VexaWindow() override;

    VexaView& MainView() { return *mainView; }
    BarView& Bar() { return *bar; }
    Drawer* Sounds() { return sounds; }
    vexa::Strip& Strip() { return *stripView; }
    /// Returns the window that describes the sound; null until it is first shown.
    DescriptionWindow* Description() const {
        return descriptionWindow.IsValid() ? description : nullptr;
    }

    /// The parts that can be hidden. ShowPart shrinks or enlarges the window by the part.
    enum class Part { Drawer, Strip };
    void ShowPart(Part part, bool show);
    bool IsShown(Part part) const;

    /// If `on`, shows the logo bar and the main view alone, in the classic colours and with
    /// one-pixel lines; else the whole window.
    void SetClassic(bool on);
    bool IsClassic() const { return classic; }
    /// Chooses dark or light colours, which apply while the window is not classic.
    void SetDark(bool on);
    bool IsDark() const { return dark; }

    /// Shows the window and carries out the options, with alerts for failures. The remembered
    /// settings apply to what the options leave open. The recording, if not null, receives the
    /// output.
    void Begin(const AppOptions& options, kits::Recording* recording);
    /// Does the same in a session and reports to its manager how opening went. From then on closing
    /// the window hides it, and SaveProject saves to the place that the manager has set.
    void Begin(std::unique_ptr<Session> session, const Project& project,
               kits::Recording* recording);
    /// Shows the window of a plug-in, and then the plug-in's sound.
    void BeginAttached();
    bool InSession() const { return session != nullptr; }

    void MessageReceived(BMessage* message) override;
    bool TakeShortcut(const kits::KeyPress& press) override;
    void FrameResized(float width, float height) override;
    bool QuitRequested() override;

  private:
    kits::Result<void> SaveProject() override;
    bool ProjectHasChanged() override;
    bool WindowIsShown() override { return !IsHidden(); }
    void ShowWindow(bool shown) override;
    Project PresentProject();
    void FollowSession();

    /// A height in pixels above that of any screen, for a window as high as its parts. The limit of
    /// the width is `kWidest`.
    static constexpr float kHighest = 10000;

    /// A part that can be hidden, and the room that it takes, in pixels of the window's width
    /// (drawer) or height (strip).
    struct Pane {
        BView* view = nullptr;
        float room = 0;
        bool wanted = true;
    };

    Pane& PaneOf(Part part) { return part == Part::Drawer ? drawer : strip; }
    const Pane& PaneOf(Part part) const { return part == Part::Drawer ? drawer : strip; }
    bool Takes(const Pane& pane) const { return pane.view && pane.wanted && !classic; }
    float RoomOf(const Pane& pane) const { return Takes(pane) ? pane.room : 0; }
    /// Returns whether the window's frame is remembered.
    bool KeepsFrame() const { return !attached && !classic; }
    void AddBar();
    void AddDrawer();
    void ShowDescription();
    void ShowManual();
    void ShowSounds();
    void ChooseClassic(bool on);
    void TogglePart(Part part);
    void ChooseDark(bool on);
    void ChooseSize(const BMessage& message);
    float NeededWidth() const;
    float FullHeight() const;
    void Fit(float mainWidth, float wantedHeight = kHighest);
    void Arrange();
    void ArrangeBar();
    void Remembered();
    void RememberFrame();
    void FoldWhatDoesNotFit();
    void ApplyColors();

    /// A plug-in plays, so closing the window loses no sound.
    const bool attached;
    /// The height of the main view, with the logo bar, in pixels.
    const float mainHeight;
    bool classic;
    bool dark = false;
    /// The frame that was last remembered, or the one at first.
    std::optional<BRect> knownFrame;
    BitmapBarView* logoBar = nullptr;
    /// The views in the logo bar between its pictures.
    BarView* bar = nullptr;
    BMenuField* menu = nullptr;
    /// The main view; null while it is being constructed, which may show an alert and so handle
    /// messages.
    VexaView* mainView = nullptr;
    /// Valid as long as the window that describes the sound exists. It is deleted with this one, or
    /// at the program's end before it.
    BMessenger descriptionWindow;
    DescriptionWindow* description = nullptr;
    std::unique_ptr<Session> session;
    /// The project as last opened or saved, with the parts that the window cannot change.
    Project savedProject;
    /// The session's project is being opened.
    bool opening = false;
    /// Scrolls the main view if the window is too small for all of it.
    BScrollView* mainPane = nullptr;
    /// The drawer; null if no thread could be had for it.
    Drawer* sounds = nullptr;
    Pane drawer;
    Pane strip;
    vexa::Strip* stripView = nullptr;
};

} // namespace vexa
