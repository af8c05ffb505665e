// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/lv2/News.h"

namespace vexa::lv2 {

namespace {

/// An upper bound of the bytes of an event besides its text.
constexpr std::size_t kAround = 128;

} // namespace

News::News(const Urids& urids) : urids(urids) {
    lv2_atom_forge_init(&forge, &urids.map);
}

bool News::Put(std::size_t property, std::string_view value) {
    if (value.size() > text.size())
        return true;
    const Header header{static_cast<std::uint32_t>(property),
                        static_cast<std::uint32_t>(value.size())};
    return ring.Write(
        {{reinterpret_cast<const char*>(&header), sizeof header}, {value.data(), value.size()}});
}

void News::Write(LV2_Atom_Sequence& port) noexcept {
    const std::size_t room = sizeof(LV2_Atom) + port.atom.size;
    if (port.atom.size < sizeof(LV2_Atom_Sequence_Body))
        return;
    LV2_Atom_Forge_Frame sequence, object;
    lv2_atom_forge_set_buffer(&forge, reinterpret_cast<uint8_t*>(&port), room);
    lv2_atom_forge_sequence_head(&forge, &sequence, 0);
    const auto empty = forge.offset;
    for (;;) {
        Header header;
        if (!next && ring.Read(reinterpret_cast<char*>(&header), sizeof header) == sizeof header)
            next = header;
        if (!next)
            break;
        const bool fits = forge.offset + kAround + next->size <= room;
        if (!fits && forge.offset > empty)
            break;
        ring.Read(text.data(), next->size);
        if (fits) {
            lv2_atom_forge_frame_time(&forge, 0);
            lv2_atom_forge_object(&forge, &object, 0, urids.set);
            lv2_atom_forge_key(&forge, urids.property);
            lv2_atom_forge_urid(&forge, urids.properties[next->property]);
            lv2_atom_forge_key(&forge, urids.value);
            lv2_atom_forge_typed_string(
                &forge, kProperties[next->property].isPath ? urids.path : urids.string, text.data(),
                next->size);
            lv2_atom_forge_pop(&forge, &object);
        }
        next.reset();
    }
    lv2_atom_forge_pop(&forge, &sequence);
}

} // namespace vexa::lv2
