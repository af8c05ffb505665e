// SPDX-License-Identifier: GPL-3.0-or-later
// Loads the sounds that the program changes of a MIDI file choose.
#pragma once

#include "instrument/Instrument.h"
#include "kits/midi/EventGate.h"
#include "midi/ProgramSelector.h"
#include "render/MidiFile.h"

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vexa {

/// Returns the warning that a function, which is `what`, is not compiled in spite of --compile;
/// nothing if it is.
std::vector<std::string> NotCompiled(const std::string& what, const Function& function);
/// Returns what the function of a sound's file is called in that warning.
std::string FunctionOf(const std::filesystem::path& file);

/// Reads the sounds that a file's program changes choose, and loads each when its event comes.
class FilePrograms : public kits::EventWatcher {
  public:
    /// Sounds are loaded into `instrument`, whose consumer decides which channels are heard. It
    /// outlives this object. `compiles` is true if it is to compile functions.
    FilePrograms(Instrument& instrument, const kits::ProgramFolders& folders, bool compiles)
        : instrument(instrument), folders(folders), compiles(compiles) {}

    /// Reads all sounds that the file chooses. Returns one sentence for each fault and each
    /// function that is not compiled, and for program numbers without a sound only one, about the
    /// first. A program whose sound cannot be read is ignored: the previous sound plays on.
    std::vector<std::string> Read(const MidiFile& file);
    /// A sound that the file chooses: the path of its document, and what it holds, if it can be
    /// read.
    struct Chosen {
        std::filesystem::path path;
        std::optional<Sound> sound;
    };
    /// Returns these sounds by program number; a number without a sound has an empty path.
    const std::map<int32, Chosen>& All() const { return sounds; }
    /// Returns the sounds that play a note of the file that is heard, which may include the sound
    /// that was loaded before. If the file makes a zone of MPE, every note counts as heard.
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
    const bool compiles;
    ProgramSelector selector{instrument.Engine().consumer, BMessenger(), 0};
    std::map<int32, Chosen> sounds;
    std::set<const Sound*> struck;
    std::string fault;
};

} // namespace vexa
