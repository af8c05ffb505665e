// SPDX-License-Identifier: GPL-3.0-or-later
// vexa-lv2-describe BUNDLE SOUND...: writes what hosts read of the plug-in, and a preset per sound.
#include "documents/SoundDocument.h"
#include "plugin/lv2/Ports.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

using namespace vexa;

namespace {

constexpr const char* kPrefixes = R"(@prefix atom: <http://lv2plug.in/ns/ext/atom#> .
@prefix doap: <http://usefulinc.com/ns/doap#> .
@prefix lv2: <http://lv2plug.in/ns/lv2core#> .
@prefix midi: <http://lv2plug.in/ns/ext/midi#> .
@prefix patch: <http://lv2plug.in/ns/ext/patch#> .
@prefix pprops: <http://lv2plug.in/ns/ext/port-props#> .
@prefix pset: <http://lv2plug.in/ns/ext/presets#> .
@prefix rdf: <http://www.w3.org/1999/02/22-rdf-syntax-ns#> .
@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .
@prefix rsz: <http://lv2plug.in/ns/ext/resize-port#> .
@prefix state: <http://lv2plug.in/ns/ext/state#> .
@prefix time: <http://lv2plug.in/ns/ext/time#> .
@prefix units: <http://lv2plug.in/ns/extensions/units#> .
@prefix urid: <http://lv2plug.in/ns/ext/urid#> .
@prefix work: <http://lv2plug.in/ns/ext/worker#> .
@prefix log: <http://lv2plug.in/ns/ext/log#> .

)";

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '"' || c == '\\')
            escaped += '\\';
        escaped += c;
    }
    return escaped;
}

std::string Number(double number) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << number;
    const std::string digits = text.str();
    return digits.find('.') == std::string::npos ? digits + ".0" : digits;
}

/// Of letters, digits and "_" alone: jalv's commands read no others.
std::string PresetUri(const std::string& file) {
    std::string name = "#preset_" + file;
    std::replace_if(
        name.begin() + 1, name.end(), [](unsigned char c) { return c > 127 || !std::isalnum(c); },
        '_');
    return std::string(lv2::kUri) + name;
}

void WriteControl(std::ostream& out, std::uint32_t index, const Control& control) {
    out << " , [\n    a lv2:InputPort , lv2:ControlPort ;\n    lv2:index " << index
        << " ;\n    lv2:symbol \"" << control.symbol << "\" ;\n    lv2:name \"" << control.label
        << "\" ;\n    lv2:default " << Number(control.asSound) << " ;\n    lv2:minimum "
        << Number(control.asSound) << " ;\n    lv2:maximum " << Number(control.maximum) << " ;\n";
    if (control.unit)
        out << "    units:unit units:" << control.unit << " ;\n";
    const auto point = [&](const std::string& label, double value) {
        out << "    lv2:scalePoint [ rdfs:label \"" << label << "\" ; rdf:value " << Number(value)
            << " ] ;\n";
    };
    point("as the sound", control.asSound);
    if (control.target == &Playing::oversample) {
        for (int factor = 1; factor <= 16; factor *= 2)
            point(std::to_string(factor), factor);
    }
    for (const PlayingRow& row : PlayingRows()) {
        if (row.target != control.target)
            continue;
        for (std::size_t i = 0; control.target == &Playing::mode && i < row.words.size(); i++)
            point(std::string(row.words[i]), static_cast<double>(i));
    }
    const bool isChoice =
        control.target == &Playing::mode || control.target == &Playing::oversample;
    if (isChoice)
        out << "    lv2:portProperty lv2:enumeration , lv2:integer\n";
    else if (control.whole)
        out << "    lv2:portProperty lv2:integer\n";
    out << "  ]";
}

void WritePlugin(std::ostream& out) {
    out << kPrefixes;
    for (const lv2::Writable& row : lv2::kWritables)
        out << "<" << row.uri << ">\n  a lv2:Parameter ;\n  rdfs:label \"" << row.label
            << "\" ;\n  rdfs:range atom:" << (row.isPath ? "Path" : "String") << " .\n\n";
    out << "<" << lv2::kSoundState << ">\n  a lv2:Parameter ;\n  rdfs:label \"Sound document\" ;\n"
        << "  rdfs:range atom:String .\n\n";
    out << "<" << lv2::kUri << R"(>
  a lv2:Plugin , lv2:InstrumentPlugin , doap:Project ;
  doap:name "Vexa" ;
  doap:shortdesc "Polyphonic wave-terrain synthesizer" ;
  lv2:minorVersion 2 ;
  lv2:microVersion 0 ;
  lv2:requiredFeature urid:map ;
  lv2:optionalFeature lv2:hardRTCapable , work:schedule , log:log , state:mapPath , state:freePath ;
  lv2:extensionData state:interface , work:interface ;
)";
    for (const lv2::Writable& row : lv2::kWritables)
        out << "  patch:writable <" << row.uri << "> ;\n";
    out << R"(  lv2:port [
    a lv2:InputPort , atom:AtomPort ;
    lv2:index 0 ;
    lv2:symbol "events" ;
    lv2:name "Events" ;
    lv2:designation lv2:control ;
    atom:bufferType atom:Sequence ;
    atom:supports midi:MidiEvent , patch:Message , time:Position ;
    rsz:minimumSize 65536
  ] , [
    a lv2:OutputPort , atom:AtomPort ;
    lv2:index 1 ;
    lv2:symbol "notifications" ;
    lv2:name "Notifications" ;
    lv2:designation lv2:control ;
    atom:bufferType atom:Sequence ;
    atom:supports patch:Message
  ] , [
    a lv2:OutputPort , lv2:AudioPort ;
    lv2:index 2 ;
    lv2:symbol "left" ;
    lv2:name "Left"
  ] , [
    a lv2:OutputPort , lv2:AudioPort ;
    lv2:index 3 ;
    lv2:symbol "right" ;
    lv2:name "Right"
  ] , [
    a lv2:InputPort , lv2:ControlPort ;
    lv2:index 4 ;
    lv2:symbol "freewheel" ;
    lv2:name "Freewheel" ;
    lv2:default 0.0 ;
    lv2:minimum 0.0 ;
    lv2:maximum 1.0 ;
    lv2:designation lv2:freeWheeling ;
    lv2:portProperty lv2:toggled , pprops:notOnGUI
  ] , [
    a lv2:OutputPort , lv2:ControlPort ;
    lv2:index 5 ;
    lv2:symbol "latency" ;
    lv2:name "Latency" ;
    lv2:default 0.0 ;
    lv2:minimum 0.0 ;
    lv2:maximum 8192.0 ;
    lv2:designation lv2:latency ;
    lv2:portProperty lv2:reportsLatency , lv2:integer , pprops:notOnGUI ;
    units:unit units:frame
  ])";
    for (std::size_t i = 0; i < kControls; i++)
        WriteControl(out, lv2::kFirstControl + static_cast<std::uint32_t>(i), Controls()[i]);
    out << " .\n";
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: vexa-lv2-describe BUNDLE SOUND...\n");
        return 2;
    }
    const std::filesystem::path bundle = argv[1];
    std::ostringstream manifest, presets, plugin;
    WritePlugin(plugin);
    manifest << kPrefixes << "<" << lv2::kUri
             << ">\n  a lv2:Plugin ;\n  lv2:binary <vexa.so> ;\n  rdfs:seeAlso <vexa.ttl> .\n\n";
    presets << kPrefixes;
    for (int i = 2; i < argc; i++) {
        ReadReport report;
        const kits::Result<Sound> sound = ReadSound(argv[i], report);
        if (!sound) {
            std::fprintf(stderr, "%s\n", report.reason.c_str());
            return 1;
        }
        const std::string file = std::filesystem::path(argv[i]).stem().string();
        std::ostringstream opening;
        opening << "<" << PresetUri(file) << ">\n  a pset:Preset ;\n  lv2:appliesTo <" << lv2::kUri
                << "> ;\n";
        const std::string head = opening.str();
        manifest << head << "  rdfs:seeAlso <presets.ttl> .\n\n";
        presets << head << "  rdfs:label \"" << Escaped(sound->info.name.value_or(file))
                << "\" ;\n  state:state [\n    <" << lv2::kSoundState << "> \"\"\""
                << Escaped(SoundText(*sound)) << "\"\"\"\n  ] .\n\n";
    }
    std::filesystem::create_directories(bundle);
    const std::pair<const char*, std::string> files[] = {{"manifest.ttl", manifest.str()},
                                                         {"vexa.ttl", plugin.str()},
                                                         {"presets.ttl", presets.str()}};
    for (const auto& [name, text] : files) {
        std::ofstream out(bundle / name, std::ios::binary);
        if (!out.write(text.data(), static_cast<std::streamsize>(text.size())).flush()) {
            std::fprintf(stderr, "could not write %s\n", (bundle / name).c_str());
            return 1;
        }
    }
    return 0;
}
