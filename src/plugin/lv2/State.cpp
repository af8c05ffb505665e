// SPDX-License-Identifier: GPL-3.0-or-later
// Saves and restores the state of the plug-in in a host's session.
#include "plugin/lv2/Plugin.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string_view>

namespace vexa::lv2 {

namespace {

constexpr uint32_t kFlags = LV2_STATE_IS_POD | LV2_STATE_IS_PORTABLE;

/// Maps file paths between a session and this machine.
class Paths {
  public:
    Paths(const LV2_State_Map_Path* map, const LV2_State_Free_Path* freePath)
        : map(map), freePath(freePath) {}

    std::optional<std::string> InSession(const std::string& path) const {
        return map ? Taken(map->abstract_path(map->handle, path.c_str())) : path;
    }
    std::string Here(const std::string& path) const {
        return map ? Taken(map->absolute_path(map->handle, path.c_str())).value_or(path) : path;
    }

  private:
    std::optional<std::string> Taken(char* path) const {
        if (!path)
            return std::nullopt;
        std::string text = path;
        freePath ? freePath->free_path(freePath->handle, path) : std::free(path);
        return text;
    }

    const LV2_State_Map_Path* map;
    const LV2_State_Free_Path* freePath;
};

} // namespace

LV2_State_Status Plugin::Save(LV2_State_Store_Function store, LV2_State_Handle handle,
                              const LV2_State_Map_Path* map,
                              const LV2_State_Free_Path* freePath) try {
    const Paths paths(map, freePath);
    const auto put = [&](LV2_URID key, LV2_URID type, const std::string& text) {
        return store(handle, key, text.c_str(), text.size() + 1, type, kFlags);
    };
    /// A missing file is stored as an empty text.
    const auto putPath = [&](LV2_URID key, const std::optional<std::filesystem::path>& path) {
        if (!path)
            return put(key, urids.string, "");
        const std::optional<std::string> mapped = paths.InSession(path->string());
        return mapped ? put(key, urids.path, *mapped) : LV2_STATE_ERR_UNKNOWN;
    };
    const auto [document, file, tuning] = instrument.Keep();
    LV2_State_Status status = put(urids.soundState, urids.string, document);
    if (file && status == LV2_STATE_SUCCESS)
        status = putPath(urids.fileState, file);
    for (const auto& [request, path] :
         {std::pair{Request::Tuning, tuning.scale}, {Request::Keymap, tuning.keymap}}) {
        if (status == LV2_STATE_SUCCESS)
            status = putPath(urids.properties[static_cast<std::size_t>(request)], path);
    }
    return status;
} catch (const std::exception& fault) {
    std::fprintf(stderr, "vexa: the state could not be saved: %s\n", fault.what());
    return LV2_STATE_ERR_UNKNOWN;
}

LV2_State_Status Plugin::Restore(LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle,
                                 const LV2_State_Map_Path* map,
                                 const LV2_State_Free_Path* freePath) try {
    const Paths paths(map, freePath);
    const std::lock_guard lock(working);
    std::size_t size = 0;
    uint32_t type = 0, flags = 0;
    const auto text = [&](LV2_URID key) -> std::optional<std::string> {
        type = 0;
        const void* value = retrieve(handle, key, &size, &type, &flags);
        if (!value || (type != urids.string && type != urids.path))
            return std::nullopt;
        const auto* characters = static_cast<const char*>(value);
        const std::string found(characters, strnlen(characters, size));
        return type == urids.path ? paths.Here(found) : found;
    };
    const std::optional<std::string> document = text(urids.soundState);
    // Hosts first restore an empty state.
    if (!document && type == 0)
        return LV2_STATE_ERR_NO_PROPERTY;
    bool taken = false;
    std::string faults =
        document ? instrument.Restore(*document, text(urids.fileState).value_or(""), taken)
                 : "The state holds no sound of Vexa; what played before plays on.";
    const auto scale = text(urids.properties[static_cast<std::size_t>(Request::Tuning)]);
    const auto keymap = text(urids.properties[static_cast<std::size_t>(Request::Keymap)]);
    // A preset holds only a sound; the tuning is the player's and stays.
    if (taken && (scale || keymap)) {
        const auto path = [](const std::optional<std::string>& file) {
            return file && !file->empty() ? std::optional<std::filesystem::path>(*file)
                                          : std::nullopt;
        };
        const std::string untuned = instrument.RestoreTuning({path(scale), path(keymap), {}});
        faults += (faults.empty() || untuned.empty() ? "" : "\n") + untuned;
    }
    Tell(faults);
    TellChanges(0);
    return taken ? LV2_STATE_SUCCESS : LV2_STATE_ERR_UNKNOWN;
} catch (const std::exception& fault) {
    std::fprintf(stderr, "vexa: %s\n", fault.what());
    return LV2_STATE_ERR_UNKNOWN;
}

} // namespace vexa::lv2
