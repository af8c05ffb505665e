// SPDX-License-Identifier: GPL-3.0-or-later
// Loads the sounds that the program changes of a MIDI file choose.
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
    /// Sounds are loaded into `instrument`, whose consumer decides which channels are heard. It
    /// outlives this object.
    FilePrograms(Instrument& instrument, const kits::ProgramFolders& folders)
        : instrument(instrument), folders(folders) {}

    /// Reads all sounds that the file chooses. Returns one sentence for each fault, and for program
    /// numbers without a sound only one, about the first. A program whose sound cannot be read is
    /// ignored: the previous sound plays on.
    std::vector<std::string> Read(const MidiFile& file);
    /// Returns the sounds that play a note in the file, which may include the sound that was loaded
    /// before.
    const std::set<const Sound*>& Struck() const { return struck; }

    /// Loads the sound that the event chooses, if any.
    void Came(const kits::MidiEvent& event) override;
    /// Returns the first error of the compiler; empty if there is none.
    const std::string& Fault() const { return fault; }

  private:
    std::optional<Sound> Read(const std::filesystem::path& path,
                              std::vector<std::string>& remarks) const;

    Instrument& instrument;
    const kits::ProgramFolders& folders;
    ProgramSelector selector{instrument.Playing().consumer, BMessenger(), 0};
    /// The sounds by program number; no value if the sound cannot be read.
    std::map<int32, std::optional<Sound>> sounds;
    std::set<const Sound*> struck;
    std::string fault;
};

} // namespace vexa
