// SPDX-License-Identifier: GPL-3.0-or-later
// A session manager that belongs to the test, to which programs announce themselves.
#pragma once

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <lo/lo.h>

namespace test {

/// Makes a program that announces itself open the project, unless told to refuse it. It keeps all
/// messages that it receives as lines: path and values, separated by blanks.
class SessionManager {
  public:
    explicit SessionManager(std::filesystem::path project, bool refuses = false)
        : project(std::move(project)), refuses(refuses), server(lo_server_new(nullptr, nullptr)) {
        const auto take = [](const char* path, const char* types, lo_arg** values, int count,
                             lo_message message, void* self) {
            std::string line = path;
            for (int i = 0; i < count; i++)
                line += types[i] == 's' ? std::string(" ") + &values[i]->s
                                        : ' ' + std::to_string(values[i]->i32);
            static_cast<SessionManager*>(self)->Take(line, lo_message_get_source(message));
            return 0;
        };
        lo_server_add_method(server, nullptr, nullptr, take, this);
        thread = std::jthread([this](const std::stop_token& stop) {
            while (!stop.stop_requested())
                lo_server_recv_noblock(server, 5);
        });
    }
    ~SessionManager() {
        thread = {};
        lo_server_free(server);
        lo_address_free(client);
    }

    std::string Url() const {
        return "osc.udp://localhost:" + std::to_string(lo_server_get_port(server)) + '/';
    }
    /// Sends to the program that was announced last.
    void Send(const char* path) {
        const std::lock_guard lock(mutex);
        lo_send_from(client, server, LO_TT_IMMEDIATE, path, "");
    }
    void SendOpen() {
        const std::lock_guard lock(mutex);
        lo_send_from(client, server, LO_TT_IMMEDIATE, "/nsm/client/open", "sss", project.c_str(),
                     "Tune", "Vexa.nTEST");
    }

    /// Returns true if a line with that text has come since the last successful call, or comes
    /// soon; `meanwhile` is called while waiting.
    bool Hears(
        const std::string& text, const std::function<void()>& meanwhile = [] {}) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (std::chrono::steady_clock::now() < end) {
            meanwhile();
            const std::lock_guard lock(mutex);
            const auto found = std::find_if(lines.begin(), lines.end(), [&](const auto& line) {
                return line.find(text) != std::string::npos;
            });
            if (found != lines.end()) {
                lines.erase(lines.begin(), found + 1);
                return true;
            }
        }
        return false;
    }

  private:
    /// Answers a program that announces itself.
    void Answer(lo_address source) {
        const std::lock_guard lock(mutex);
        lo_address_free(client);
        client = lo_address_new(lo_address_get_hostname(source), lo_address_get_port(source));
        if (refuses)
            lo_send_from(client, server, LO_TT_IMMEDIATE, "/error", "sis", "/nsm/server/announce",
                         -6, "No session is open");
        else
            lo_send_from(client, server, LO_TT_IMMEDIATE, "/reply", "ssss", "/nsm/server/announce",
                         "hello", "test", ":server-control:");
    }

    void Take(const std::string& line, lo_address source) {
        if (line == "/osc/ping")
            lo_send_from(source, server, LO_TT_IMMEDIATE, "/reply", "s", "/osc/ping");
        if (line.starts_with("/nsm/server/announce")) {
            Answer(source);
            SendOpen();
        }
        const std::lock_guard lock(mutex);
        lines.push_back(line);
    }

    const std::filesystem::path project;
    const bool refuses;
    lo_server server;
    /// Never freed.
    lo_address client = nullptr;
    /// Guards the address and the lines, which both threads use.
    std::mutex mutex;
    std::vector<std::string> lines;
    std::jthread thread;
};

} // namespace test
