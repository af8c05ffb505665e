// SPDX-License-Identifier: GPL-3.0-or-later
// The main window and its parts.
#pragma once

#include "app/Project.h"
#include "app/Session.h"
#include "app/Settings.h"
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
class Drawer;
class Strip;
class VexaView;

/// These choices say how the window begins.
struct WindowChoices {
    /// The file "default" is loaded; else the caller does what there is to do.
    bool withDefaultSound = true;
    /// The plug-in that plays, as VexaView has it; null where none does.
    Attachment* plugin = nullptr;
    /// True where there are the logo bar and the main view alone.
    bool classic = false;
    /// What is remembered from one start to the next; the settings made here are forgotten.
    std::shared_ptr<Settings> settings = std::make_shared<Settings>();
};

/// The window has the logo bar at the top, below it the drawer at the left and the main view, below
/// these the strip; drawer and strip can be hidden. It can be made wider, not taller, and smaller:
/// then the strip has one row less and the main view scrolls. It is as large as it was left, and in
/// the same place, at the next start, as far as the screen has room, unless it is classic or a
/// plug-in's. Closing it ends the program. Window thread.
class VexaWindow : public BWindow, private SessionClient {
  public:
    /// Makes the window, not shown yet. The frame is that of the logo bar and the main view: with
    /// the other parts the window is larger, and wider where a font needs it; what does not fit on
    /// the screen is hidden or scrolls.
    VexaWindow(BRect frame, const kits::ProgramFolders& folders, const WindowChoices& choices = {});
    ~VexaWindow() override;

    VexaView& MainView() { return *mainView; }
    BarView& Bar() { return *bar; }
    Drawer* Sounds() { return sounds; }
    Strip& Playing() { return *playing; }

    /// The parts that can be hidden; the window becomes smaller or larger by them.
    enum class Part { Drawer, Strip };
    void ShowPart(Part part, bool show);
    bool IsShown(Part part) const;

    /// Shows the logo bar and the main view alone, in their first colours, with one-pixel lines.
    void SetClassic(bool on);
    bool IsClassic() const { return classic; }
    /// Dark or light colours, where it is not classic.
    void SetDark(bool on);
    bool IsDark() const { return dark; }

    /// Shows the window and has it do what the options ask for, with alerts where that fails.
    /// What they leave open is as it was remembered.
    void Begin(const AppOptions& options, kits::Recording* recording);
    /// Does the same in a session, whose manager is told how it went. From then on closing the
    /// window hides it, and what it shows is saved where the manager wants it.
    void Begin(std::unique_ptr<Session> session, const Project& project,
               kits::Recording* recording);
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

    /// The window's largest width and height, in pixels: all that a screen has.
    static constexpr float kHighest = 10000;

    /// A part that can be hidden, and the room that it takes, in pixels of the window's width or
    /// height.
    struct Pane {
        BView* view = nullptr;
        float room = 0;
        bool wanted = true;
    };

    Pane& PaneOf(Part part) { return part == Part::Drawer ? drawer : strip; }
    const Pane& PaneOf(Part part) const { return part == Part::Drawer ? drawer : strip; }
    bool Takes(const Pane& pane) const { return pane.view && pane.wanted && !classic; }
    float RoomOf(const Pane& pane) const { return Takes(pane) ? pane.room : 0; }
    /// Whether the window's frame is a person's to remember.
    bool KeepsFrame() const { return !attached && !classic; }
    void AddBar();
    void AddDrawer();
    void ShowManual();
    void ShowSounds();
    void ChooseClassic(bool on);
    void ChoosePart(Part part, bool show);
    void ChooseDark(bool on);
    float NeededWidth() const;
    float FullHeight() const;
    void Fit(float mainWidth, float wantedHeight = kHighest);
    void Arrange();
    void Remembered();
    void RememberFrame();
    void FoldWhatDoesNotFit();
    void ApplyColors();

    /// A plug-in has the sound, whatever becomes of the window.
    const bool attached;
    /// The height of the main view, with the logo bar, in pixels.
    const float mainHeight;
    bool classic;
    bool dark = false;
    /// The frame that is remembered, or was there at first.
    std::optional<BRect> knownFrame;
    BitmapBarView* logoBar = nullptr;
    /// What the logo bar holds beside its pictures, and the width of these in pixels.
    BarView* bar = nullptr;
    BMenuField* menu = nullptr;
    float barLeft = 0;
    float barRight = 0;
    /// The main view, null while it is being built, which may take an alert.
    VexaView* mainView = nullptr;
    std::unique_ptr<Session> session;
    /// The project as it was opened or saved last, with what the window cannot change.
    Project savedProject;
    /// Shows it where the window is too small for all of it.
    BScrollView* mainPane = nullptr;
    /// The drawer, null where there is none.
    Drawer* sounds = nullptr;
    Pane drawer;
    Pane strip;
    Strip* playing = nullptr;
};

} // namespace vexa
