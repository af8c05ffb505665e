// SPDX-License-Identifier: GPL-3.0-or-later
// The main window without a display, a server or a device, on a program folder of its own.
#pragma once

#include "app/VexaView.h"
#include "app/VexaWindow.h"
#include "kits/interface/Control.h"
#include "kits/interface/Menu.h"
#include "kits/media/AudioSystem.h"
#include "support/Content.h"
#include "support/TemporaryFolder.h"
#include "support/WindowStage.h"
#include "views/R2RFVTranslatorSavePanel.h"
#include "views/R2RFView.h"

#include <QApplication>
#include <QWidget>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace test {

/// No JACK server is found under this name. It is set before main, because later other threads may
/// read the environment.
inline const bool kWithoutServer = ::setenv("JACK_DEFAULT_SERVER", "vexa-test-none", 1) == 0 &&
                                   ::setenv("JACK_NO_START_SERVER", "1", 1) == 0;

/// A Scala file with a scale of two tones.
inline constexpr const char* kScale = "! s.scl\n!\ntwo\n 2\n!\n 700.\n 2/1\n";

class MainViewTest : public testing::Test {
  protected:
    MainViewTest() {
        EXPECT_TRUE(kWithoutServer);
        kits::ChooseAudioSystem(kits::AudioSystem::None);
        test::CopyContent(folder.Path());
    }
    ~MainViewTest() override { delete window; }

    /// Opens the window and waits until it is idle. Alerts that appear meanwhile are discarded.
    void Open(bool withDefaultSound = true) {
        window = new vexa::VexaWindow({64, 100, 999, 610}, folders,
                                      {.withDefaultSound = withDefaultSound, .settings = settings});
        view = &window->MainView();
        window->Show();
        window->Activate();
        Settle();
        alerts.texts.clear();
    }

    /// Replaces a field's text and presses Enter, as a user does.
    void Enter(const char* field, const char* text) {
        Field(field).Type(text);
        Field(field).Confirm();
        Settle();
    }
    /// Waits for the add-on of the last expression.
    void FinishAddon() {
        while (view->Compiling()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            view->Pulse();
        }
        Settle();
    }
    /// Finds controls by name, as a user sees them.
    BTextControl& Field(const std::string& name) const {
        return dynamic_cast<BTextControl&>(*window->FindView(name.c_str()));
    }
    std::string Text(const char* field) const { return Field(field).Text(); }
    std::filesystem::path In(const char* name) const { return folder.Path() / name; }
    /// Returns a pixel of the picture of the plane: the value of f and the marks on it.
    uint32 PixelAt(int column, int row) const {
        const BBitmap& picture = view->Plane().Picture();
        return static_cast<const uint32*>(picture.Bits())[row * picture.BytesPerRow() / 4 + column];
    }
    void Send(BHandler& to, const BMessage& message) {
        BMessenger(&to).SendMessage(message);
        Settle();
    }
    void PressButton(const char* label) {
        dynamic_cast<BButton&>(*window->FindView(label)).Press();
        Settle();
    }
    /// Saves the plane's picture as a user does; `size` is its width and height in pixels less one.
    void ExportPicture(const char* name, int32 size = 300) {
        view->Plane().SavePanel().SetPanelDirectory(folder.Path().c_str());
        view->Plane().SavePanel().Show();
        BMessage message = view->Plane().SavePanel().Message();
        const entry_ref ref{folder.Path().parent_path().string(),
                            folder.Path().filename().string()};
        message.AddRef("directory", &ref);
        message.AddString("name", name);
        message.ReplaceData("size", B_INT32_TYPE, 0, &size, sizeof size);
        Send(view->Plane(), message);
        view->Plane().SavePanel().Hide();
    }
    /// Returns the titles of the open windows except the main one.
    static std::vector<std::string> OpenTitles() {
        std::vector<std::string> titles;
        for (const QWidget* widget : QApplication::topLevelWidgets()) {
            if (widget->isVisible() && widget->windowTitle() != "Vexa")
                titles.push_back(widget->windowTitle().toStdString());
        }
        return titles;
    }
    /// Closes the panels as a user does.
    static void ClosePanels() {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (widget->isVisible() && widget->windowTitle() != "Vexa")
                widget->close();
        }
        Settle();
    }

    AlertLog alerts;
    TemporaryFolder folder;
    kits::ProgramFolders folders{folder.Path()};
    /// Settings without a file.
    std::shared_ptr<vexa::Settings> settings = std::make_shared<vexa::Settings>();
    vexa::VexaWindow* window = nullptr;
    vexa::VexaView* view = nullptr;
};

} // namespace test
