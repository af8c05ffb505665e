// SPDX-License-Identifier: GPL-3.0-or-later
// Fails if a document gives neither a sound that can be applied nor a reason, or if the sound
// changes by saving and reading.

#include "documents/ApplySound.h"
#include "documents/SoundDocument.h"
#include "fuzz/Fuzzing.h"
#include "synth/SoundRecords.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8* data, std::size_t size) {
    vexa::MXString text(fuzz::Text(data, size));
    vexa::Remarks remarks;
    const vexa::MXDocument document(text, &remarks);
    vexa::Sound sound;
    if (!document.root || !vexa::InterpretSound(*document.root, sound, remarks))
        return 0;
    for (const std::string& line : kits::Texts(remarks.Located("name", fuzz::Text(data, size))))
        fuzz::Require(line.starts_with("name:") && line.find('\n') == line.npos,
                      "a remark is a line that names the file");

    static vexa::SoundRecords records;
    vexa::ApplyParameters(sound, records.parameters);
    vexa::ApplyEnvelopes(sound, records.parameters);
    vexa::ApplyPlaying(sound, {}, records.playing);
    for (const vexa::PlayingRow& row : vexa::PlayingRows()) {
        const float value = records.playing.*row.target;
        fuzz::Require(value == row.absent || (value >= row.minimum && value <= row.maximum),
                      "what is not in its range is as if it were not there");
    }

    // The first save brings texts and numbers into their written form.
    const auto saved = [](const vexa::Sound& value) {
        vexa::MXDocument copy = vexa::ConstructDocumentTemplate("vexasound");
        copy.root = vexa::ConstructSoundElement(value);
        vexa::MXString bytes = copy.AssembleString("\t");
        const vexa::MXDocument again(bytes);
        vexa::Sound read;
        vexa::Remarks ignored;
        fuzz::Require(again.root && vexa::InterpretSound(*again.root, read, ignored),
                      "a saved sound can be read");
        return read;
    };
    const vexa::Sound once = saved(sound);
    fuzz::Require(saved(once) == once, "a saved sound reads the same");
    return 0;
}
