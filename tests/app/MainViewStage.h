// The main window without a display, a server or a device, on a program folder of its own.
#pragma once

#include "app/VexaView.h"
#include "app/VexaWindow.h"
#include "kits/interface/Control.h"
#include "kits/interface/Menu.h"
#include "kits/media/AudioSystem.h"
#include "support/TemporaryFolder.h"
#include "support/WindowStage.h"

#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

namespace test {

class MainViewTest : public testing::Test {
  protected:
    MainViewTest() {
        // No server is found under this name.
        ::setenv("JACK_DEFAULT_SERVER", "vexa-test-none", 1);
        ::setenv("JACK_NO_START_SERVER", "1", 1);
        kits::ChooseAudioSystem(kits::AudioSystem::None);
        for (const char* name : {"functions", "sounds", "samples"})
            std::filesystem::copy(std::filesystem::path(VEXA_PROGRAM_FOLDER) / name,
                                  folder.Path() / name, std::filesystem::copy_options::recursive);
    }
    ~MainViewTest() override { delete window; }

    /// Opens the window and lets it settle. What is alerted meanwhile is forgotten.
    void Open(bool withDefaultSound = true) {
        window = new vexa::VexaWindow({64, 100, 999, 610}, folder.Path(), withDefaultSound);
        view = &window->MainView();
        window->Show();
        window->Activate();
        Settle();
        alerts.texts.clear();
    }

    /// As a user does: replaces a field's text and presses Enter.
    void Enter(const char* field, const char* text) {
        view->Field(field)->Type(text);
        view->Field(field)->Confirm();
        Settle();
    }
    std::string Text(const char* field) const { return view->Field(field)->Text(); }

    AlertLog alerts;
    TemporaryFolder folder;
    vexa::VexaWindow* window = nullptr;
    vexa::VexaView* view = nullptr;
};

} // namespace test
