// SPDX-License-Identifier: GPL-3.0-or-later
// vexa-lv2-describe [--ui] BUNDLE SOUND...: writes the description of the plug-in for hosts, with
// its user interface if there is one, and a preset per sound.
#include "documents/SoundDocument.h"
#include "plugin/lv2/Ports.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <string_view>

using namespace vexa;

namespace {

constexpr const char* kPrefixes = R"(@prefix atom: <http://lv2plug.in/ns/ext/atom#> .
@prefix doap: <http://usefulinc.com/ns/doap#> .
@prefix foaf: <http://xmlns.com/foaf/0.1/> .
@prefix lv2: <http://lv2plug.in/ns/lv2core#> .
@prefix midi: <http://lv2plug.in/ns/ext/midi#> .
@prefix patch: <http://lv2plug.in/ns/ext/patch#> .
@prefix pprops: <http://lv2plug.in/ns/ext/port-props#> .
@prefix pset: <http://lv2plug.in/ns/ext/presets#> .
@prefix rdf: <http://www.w3.org/1999/02/22-rdf-syntax-ns#> .
@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .
@prefix rsz: <http://lv2plug.in/ns/ext/resize-port#> .
@prefix state: <http://lv2plug.in/ns/ext/state#> .
@prefix units: <http://lv2plug.in/ns/extensions/units#> .
@prefix ui: <http://lv2plug.in/ns/extensions/ui#> .
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

/// The identifier consists of letters, digits and "_" only: jalv's commands accept no other
/// characters.
std::string UriOf(const char* kind, const std::string& word) {
    std::string name = kind + word;
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
    const std::vector<ControlPoint> points = Points(control);
    for (const ControlPoint& point : points)
        out << "    lv2:scalePoint [ rdfs:label \"" << point.label << "\" ; rdf:value "
            << Number(point.value) << " ] ;\n";
    if (points.size() > 1)
        out << "    lv2:portProperty lv2:enumeration , lv2:integer\n";
    else if (control.whole)
        out << "    lv2:portProperty lv2:integer\n";
    out << "  ]";
}

void WritePlugin(std::ostream& out) {
    out << kPrefixes;
    for (const lv2::Property& row : lv2::kProperties)
        out << "<" << row.uri << ">\n  a lv2:Parameter ;\n  rdfs:label \"" << row.label
            << "\" ;\n  rdfs:range atom:" << (row.isPath ? "Path" : "String") << " .\n\n";
    out << "<" << lv2::kSoundState << ">\n  a lv2:Parameter ;\n  rdfs:label \"Sound document\" ;\n"
        << "  rdfs:range atom:String .\n\n";
    out << "<" << lv2::kUri << R"(>
  a lv2:Plugin , lv2:InstrumentPlugin , doap:Project ;
  doap:name "Vexa" ;
  doap:shortdesc "Polyphonic wave-terrain synthesizer" ;
  doap:maintainer [ foaf:name "Vexa maintainers" ] ;
  lv2:minorVersion 2 ;
  lv2:microVersion 0 ;
  lv2:requiredFeature urid:map ;
  lv2:optionalFeature lv2:hardRTCapable , work:schedule , log:log , state:mapPath , state:freePath ,
    state:threadSafeRestore ;
  lv2:extensionData state:interface , work:interface ;
)";
    for (const lv2::Property& row : lv2::kProperties)
        out << (&row == &lv2::kProperties[lv2::kMessage] ? "  patch:readable <"
                                                         : "  patch:writable <")
            << row.uri << "> ;\n";
    out << R"(  lv2:port [
    a lv2:InputPort , atom:AtomPort ;
    lv2:index 0 ;
    lv2:symbol "events" ;
    lv2:name "Events" ;
    lv2:designation lv2:control ;
    atom:bufferType atom:Sequence ;
    atom:supports midi:MidiEvent , patch:Message ;
    rsz:minimumSize )"
        << lv2::kEventBytes << R"(
  ] , [
    a lv2:OutputPort , atom:AtomPort ;
    lv2:index 1 ;
    lv2:symbol "notifications" ;
    lv2:name "Notifications" ;
    lv2:designation lv2:control ;
    atom:bufferType atom:Sequence ;
    atom:supports patch:Message ;
    rsz:minimumSize )"
        << lv2::kEventBytes << R"(
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

/// The user interface accesses the instance, so it cannot serve a plug-in in another process.
constexpr const char* kUi = R"( a ui:X11UI ;
  lv2:binary <vexa-ui.so> ;
  lv2:requiredFeature <http://lv2plug.in/ns/ext/instance-access> ,
    <http://lv2plug.in/ns/ext/data-access> , ui:parent , ui:idleInterface ;
  lv2:optionalFeature ui:resize , log:log ;
  lv2:extensionData ui:idleInterface .

)";

} // namespace

int main(int argc, char** argv) {
    const bool hasUi = argc > 1 && std::string_view(argv[1]) == "--ui";
    if (hasUi) {
        argc--;
        argv++;
    }
    if (argc < 2) {
        std::fprintf(stderr, "usage: vexa-lv2-describe [--ui] BUNDLE SOUND...\n");
        return 2;
    }
    const std::filesystem::path bundle = argv[1];
    std::ostringstream manifest, presets, plugin;
    /// The names of the banks to which the sounds belong.
    std::map<std::string, std::string> banks;
    WritePlugin(plugin);
    manifest << kPrefixes << "<" << lv2::kUri
             << ">\n  a lv2:Plugin ;\n  lv2:binary <vexa.so> ;\n  rdfs:seeAlso <vexa.ttl> .\n\n";
    if (hasUi)
        manifest << "<" << lv2::kUri << "> ui:ui <" << lv2::kUiUri << "> .\n\n<" << lv2::kUiUri
                 << ">\n " << kUi;
    presets << kPrefixes;
    for (int i = 2; i < argc; i++) {
        const kits::Result<Sound> sound = ReadSound(argv[i]);
        if (!sound) {
            std::fprintf(stderr, "%s\n", sound.Fault().text.c_str());
            return 1;
        }
        const std::string file = std::filesystem::path(argv[i]).stem().string();
        std::ostringstream opening;
        opening << "<" << UriOf("#preset_", file) << ">\n  a pset:Preset ;\n  lv2:appliesTo <"
                << lv2::kUri << "> ;\n";
        const std::string category = sound->info.category.value_or("");
        if (!category.empty())
            opening << "  pset:bank <" << UriOf("#bank_", category) << "> ;\n";
        const std::string head = opening.str();
        manifest << head << "  rdfs:seeAlso <presets.ttl> .\n\n";
        if (!category.empty())
            banks[category] = UriOf("#bank_", category);
        presets << head << "  rdfs:label \"" << Escaped(sound->info.name.value_or(file))
                << "\" ;\n  state:state [\n    <" << lv2::kSoundState << "> \"\"\""
                << Escaped(SoundText(*sound)) << "\"\"\"\n  ] .\n\n";
    }
    for (const auto& [category, uri] : banks)
        presets << "<" << uri << ">\n  a pset:Bank ;\n  rdfs:label \"" << Escaped(category)
                << "\" .\n\n";
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
