// SPDX-License-Identifier: GPL-3.0-or-later
// A display that belongs to the test, with a window manager, a mouse and a keyboard.
#pragma once

#include "live/JackStage.h"
#include "support/Command.h"
#include "support/TemporaryFolder.h"

#include <QImage>
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <xcb/xcb.h>

namespace test {

/// Xvfb with openbox. It sets DISPLAY for every program that is started later.
class Desktop {
  public:
    explicit Desktop(int width = 1600, int height = 900)
        : number(folder.Path() / "display"),
          server({"sh", "-c",
                  "exec Xvfb -displayfd 3 -screen 0 " + std::to_string(width) + 'x' +
                      std::to_string(height) + "x24 -nolisten tcp 3>\"$0\"",
                  number.string()}) {
        std::string display;
        WaitFor("Xvfb", [&] {
            std::ifstream(number) >> display;
            return !display.empty();
        });
        ::setenv("DISPLAY", (':' + display).c_str(), 1);
        // The test's settings go to its own folder. The drawer is closed, so that all controls have
        // fixed positions.
        ::setenv("XDG_CONFIG_HOME", folder.Path().c_str(), 1);
        std::filesystem::create_directories(folder.Path() / "vexa");
        std::ofstream(folder.Path() / "vexa/settings") << "drawer = false\n";
        ::unsetenv("WAYLAND_DISPLAY");
        ::unsetenv("QT_QPA_PLATFORM");
        manager = std::make_unique<Companion>(std::vector<std::string>{"openbox"});
    }
    ~Desktop() {
        manager.reset();
        // An X server loses a signal that comes just as it goes to sleep, so it is repeated.
        for (int times = 0; times < 10 && server.Runs(); times++)
            server.AskToEnd();
    }

    /// Waits for a visible window with that title and selects it for Do.
    void UseWindow(const std::string& title) {
        window.clear();
        WaitFor(title.c_str(), [&] {
            window = WindowOf(title);
            return !window.empty();
        });
        Do({"windowactivate", "--sync", window});
    }
    /// Returns the id of the selected window.
    std::uint32_t WindowId() const { return std::uint32_t(std::stoul(window)); }
    bool HasWindow(const std::string& title) const { return !WindowOf(title).empty(); }

    /// Adds a line to the settings of programs that are started later.
    void Remember(const std::string& line) const {
        std::ofstream(folder.Path() / "vexa/settings", std::ios::app) << line << '\n';
    }

    /// Runs an xdotool command.
    void Do(std::vector<std::string> command) const { Run(std::move(command)); }
    void Move(int x, int y) const {
        Do({"mousemove", "--window", window, std::to_string(x), std::to_string(y)});
    }
    void Click(int x, int y, const char* button = "1") const {
        Move(x, y);
        Do({"click", button});
    }
    void Drag(int fromX, int fromY, int toX, int toY) const {
        Move(fromX, fromY);
        Do({"mousedown", "1"});
        // A drag of several moves, like that of a hand.
        Move((fromX + toX) / 2, (fromY + toY) / 2);
        Move(toX, toY);
    }
    void Drop() const { Do({"mouseup", "1"}); }
    void Type(const std::string& text) const { Do({"type", "--delay", "5", text}); }
    void Key(const std::string& name) const { Do({"key", name}); }
    void Minimize() const { Do({"windowminimize", window}); }
    /// Closes the window through the window manager, as a user does in a list of windows, whichever
    /// window has the focus. The manager's key depends on the focus, and may do nothing while
    /// another window opens.
    void Close() const {
        const std::unique_ptr<xcb_connection_t, decltype(&::xcb_disconnect)> display(
            ::xcb_connect(nullptr, nullptr), ::xcb_disconnect);
        const std::string name = "_NET_CLOSE_WINDOW";
        const xcb_intern_atom_cookie_t asked =
            ::xcb_intern_atom(display.get(), 0, std::uint16_t(name.size()), name.c_str());
        const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> atom(
            ::xcb_intern_atom_reply(display.get(), asked, nullptr), std::free);
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = WindowId();
        message.type = atom->atom;
        const xcb_window_t root =
            ::xcb_setup_roots_iterator(::xcb_get_setup(display.get())).data->root;
        const xcb_void_cookie_t sent = ::xcb_send_event_checked(
            display.get(), 0, root,
            XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
            reinterpret_cast<const char*>(&message));
        // This also waits until the server has received it.
        if (::xcb_request_check(display.get(), sent))
            throw std::runtime_error("the display refuses to tell the window manager");
    }

    /// Returns the picture of the window.
    QImage Picture() const {
        const std::string path = (folder.Path() / "picture.png").string();
        RunCommand({"import", "-window", window, path});
        return QImage(QString::fromStdString(path));
    }

  private:
    /// Returns the id of a visible window with that title; empty if there is none.
    static std::string WindowOf(const std::string& title) {
        // A window that closes during the search makes xdotool print an error into its output.
        std::string pattern = '^' + title + '$';
        std::replace_if(
            pattern.begin(), pattern.end(), [](char c) { return c == '(' || c == ')'; }, '.');
        std::string found = Run({"search", "--onlyvisible", "--name", pattern});
        found = found.substr(0, found.find('\n'));
        const bool number = found.find_first_not_of("0123456789") == std::string::npos;
        return number ? found : std::string();
    }
    static std::string Run(std::vector<std::string> command) {
        command.insert(command.begin(), "xdotool");
        return RunCommand(std::move(command)).text;
    }

    TemporaryFolder folder;
    std::filesystem::path number;
    Companion server;
    std::unique_ptr<Companion> manager;
    std::string window;
};

} // namespace test
