// SPDX-License-Identifier: GPL-3.0-or-later
// The program changes of a MIDI file choose sounds by this.
#pragma once

#include "instrument/Instrument.h"
#include "kits/midi/EventGate.h"
#include "midi/ProgramSelector.h"
#include "render/MidiFile.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vexa {

/// Reads the sounds that a file's program changes choose, and loads each when its event comes.
class FilePrograms : public kits::EventWatcher {
  public:
    /// Loads into `instrument`, whose consumer says which channels are listened to. It outlives
    /// this.
    FilePrograms(Instrument& instrument, const kits::ProgramFolders& folders)
        : instrument(instrument), folders(folders) {}

    /// Reads all sounds that the file chooses. Answers what is wrong with them, each told once, and
    /// of those that there are not the first: where one cannot be had whole, the sound before plays
    /// on.
    std::vector<std::string> Read(const MidiFile& file);
    /// The sounds with which the file that was read strikes notes, the present one among them.
    const std::set<const Sound*>& Struck() const { return struck; }

    /// Loads the sound that the event chooses, if any.
    void Came(const kits::MidiEvent& event) override;
    /// Returns what the compiler has refused; empty if nothing.
    const std::string& Fault() const { return fault; }

  private:
    std::optional<Sound> Read(const std::filesystem::path& path,
                              std::vector<std::string>& remarks) const;

    Instrument& instrument;
    const kits::ProgramFolders& folders;
    ProgramSelector selector{instrument.Playing().consumer, BMessenger(), 0};
    /// The sounds by their programs; without a value where one cannot be had.
    std::map<int32, std::optional<Sound>> sounds;
    std::set<const Sound*> struck;
    std::string fault;
};

} // namespace vexa
