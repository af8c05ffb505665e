// SPDX-License-Identifier: GPL-3.0-or-later
#include "documents/SoundDocument.h"

#include "documents/DocumentKind.h"
#include "documents/FunctionDocument.h"
#include "documents/NumberDoubt.h"
#include "documents/PlayingElement.h"
#include "kits/support/NumberText.h"
#include "kits/support/Quoted.h"
#include "synth/ParameterTable.h"
#include "xml/FragmentWalk.h"
#include "xml/MXStatus.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

constexpr const char* kPoint = "envpoint";
constexpr const char* kPoints = "envdata";
/// The values of a point's attribute "fku" for a release point and for a key-down point. Any text
/// except "true" is read as a key-down point.
constexpr const char* kReleased = "true";
constexpr const char* kKeyDown = "false";

/// Returns the names of the groups of coefficients, in the order of Parameters().
std::vector<std::string_view> Groups() {
    std::vector<std::string_view> groups;
    for (const Parameter& row : Parameters()) {
        if (groups.empty() || groups.back() != row.group)
            groups.push_back(row.group);
    }
    return groups;
}

std::size_t IndexOf(const Parameter& row) {
    return static_cast<std::size_t>(&row - Parameters().data());
}

/// Returns the envelope points of a group in the sound; null if the group has no envelope.
template<class SoundType>
auto* EnvelopeOf(std::string_view group, SoundType& sound) {
    const auto places = EnvelopePlaces();
    const auto place = std::find_if(places.begin(), places.end(),
                                    [group](const auto& row) { return row.group == group; });
    const auto index = static_cast<std::size_t>(place - places.begin());
    return place == places.end() ? nullptr : &sound.envelopes[index];
}

void InterpretGroup(const MXFragment* element, std::string_view group, Sound& sound,
                    Remarks& remarks) {
    auto* points = EnvelopeOf(group, sound);
    std::vector<std::string_view> names;
    for (const Parameter& row : ParametersOf(group))
        names.push_back(row.element);
    if (points)
        names.emplace_back(kPoints);
    if (element)
        TellUnreadChildren(*element, names, remarks);
    const ElementScope scope(element, std::move(names), remarks);
    for (const Parameter& row : ParametersOf(group))
        scope.ReadNumber(row.element, sound.texts[IndexOf(row)], row.controller);
    if (points) {
        if (const MXFragment* envdata = scope.Element(kPoints))
            InterpretEnvdataElement(*envdata, *points, remarks);
    }
}

std::string AttributeOf(const MXFragment& element, const char* name) {
    return std::string(std::string_view(element.attributes.GetValue(name)));
}

EnvPoint PointOf(const MXFragment& element) {
    const auto number = [&](const char* name) {
        const auto value = static_cast<float>(kits::NumberOf(AttributeOf(element, name)));
        return std::isfinite(value) ? value : 0.0F;
    };
    return {number("t"), AttributeOf(element, "fku") == kReleased, number("val")};
}

/// Returns the fault of the text of a numeric attribute of a point; empty if it has none.
std::string NumberFault(const std::string& text) {
    if (!std::isfinite(static_cast<float>(kits::NumberOf(text))))
        return kits::Quoted(text) + " is not finite and counts as 0";
    return NumberDoubt(text, false);
}

std::string ReleaseFault(const std::string& text) {
    if (text == kReleased || text == kKeyDown)
        return "";
    return "expected \"true\" or \"false\", found " + kits::Quoted(text) +
           ", which counts as \"false\"";
}

/// Returns the probable mistakes in a point, in the order t, val, fku and other attributes; empty
/// if there are none.
std::string FaultsOf(const MXFragment& element) {
    if (element.Type() == MX_ELEMENT)
        return "expected an element that ends in \"/>\"; this one is not read";
    if (element.Type() != MX_EMPTY_ELEMENT)
        return "";
    struct Attribute {
        const char* name;
        const char* form;
        std::string (*fault)(const std::string&);
    };
    constexpr Attribute kAttributes[] = {{"t", "\"SECONDS\"", NumberFault},
                                         {"val", "\"VALUE\"", NumberFault},
                                         {"fku", "\"true\" or \"false\"", ReleaseFault}};
    std::string faults;
    for (const auto& [name, form, faultOf] : kAttributes) {
        const std::string text = AttributeOf(element, name);
        std::string fault;
        if (text.empty())
            fault = std::string("expected ") + name + "=" + form;
        else if (fault = faultOf(text); !fault.empty())
            fault.insert(0, std::string(name) + ": ");
        if (!fault.empty())
            faults += (faults.empty() ? "" : "; ") + fault;
    }
    for (const MXAttribute& attribute : element.attributes.All()) {
        // A blank at its end has been told by the parser.
        MXString name = attribute.name;
        name.RemoveTrailingSpace();
        if (std::ranges::find(kAttributes, std::string_view(name), &Attribute::name) ==
            std::end(kAttributes))
            faults += (faults.empty() ? "" : "; ") +
                      ("expected t, val or fku, found " + kits::Quoted(std::string_view(name)));
    }
    return faults;
}

/// Returns what a file that is no document is instead, by the name of the option that takes it;
/// empty for a document and for what cannot be opened at all.
std::string OtherKind(const std::filesystem::path& path) {
    const DocumentKind kind = IsOfAKind(path) ? KindOf(path) : DocumentKind::Sound;
    if (kind == DocumentKind::Sample)
        return "sample";
    return kind == DocumentKind::Picture ? "picture" : "";
}

} // namespace

std::unique_ptr<MXFragment> ConstructSoundElement(const Sound& sound) {
    auto root = std::make_unique<MXFragment>(MX_ELEMENT, kSoundElement);
    MXFragment& info = root->Adopt(ConstructInfoElement(sound.author));
    AdoptSoundInfo(info, sound.info);
    AdoptChildren(info, sound.kept.info);
    root->Adopt(ConstructFunctionElement(sound.function));
    for (const std::string_view name : Groups()) {
        const auto rows = ParametersOf(name);
        if (rows.front().element.empty()) {
            root->Adopt(ConstructTextElement(name, sound.texts[IndexOf(rows.front())]));
            continue;
        }
        MXFragment& group = root->Adopt(std::make_unique<MXFragment>(MX_ELEMENT, MXString(name)));
        for (const Parameter& row : rows)
            group.Adopt(ConstructTextElement(row.element, sound.texts[IndexOf(row)]));
        if (const auto* points = EnvelopeOf(name, sound))
            group.Adopt(ConstructEnvdataElement(*points));
    }
    if (sound.playing)
        root->Adopt(ConstructPlayingElement(*sound.playing));
    AdoptChildren(*root, sound.kept.root);
    return root;
}

std::unique_ptr<MXFragment> ConstructEnvdataElement(const std::vector<EnvPoint>& points) {
    auto envdata = std::make_unique<MXFragment>(MX_ELEMENT, kPoints);
    for (const EnvPoint& point : points) {
        const std::string attributes = " t=\"" + kits::FixedText(double(point.t)) + "\" val=\"" +
                                       kits::FixedText(double(point.val)) + "\" fku=\"" +
                                       (point.fku ? kReleased : kKeyDown) + "\"";
        envdata->Adopt(std::make_unique<MXFragment>(MX_EMPTY_ELEMENT, kPoint,
                                                    MXString(std::string_view(attributes))));
    }
    return envdata;
}

kits::Result<void> InterpretSound(const MXFragment& root, Sound& sound, Remarks& remarks) {
    // Read as a sound it would have neither radii nor envelopes, and so be silent.
    if (FunctionElementNamed(root.name))
        return Refusal(kInvalidSound,
                       "(expected a root element " + Tag(kSoundElement) + ", found " +
                           Tag(root.name) +
                           ": the file is a function; it is opened by \"Load f(x,y)\" or by "
                           "dropping it onto the window, and vexa-render takes what a function "
                           "is made from by --function, --sample or --picture)");
    std::vector<std::string_view> names = Groups();
    names.emplace_back("info");
    for (const FunctionElement& row : kFunctionElements)
        names.emplace_back(row.name);
    const ElementScope parts(&root, names, remarks);

    const MXFragment* function = nullptr;
    for (const FunctionElement& row : kFunctionElements)
        function = function ? function : parts.Find(row.name);
    if (!function)
        return Refusal(kInvalidSound,
                       "(expected an element " + FunctionTags() + " in " + Tag(root.name) + ")");
    if (auto taken = InterpretFunction(*function, sound.function, remarks); !taken)
        return taken;
    for (const FunctionElement& row : kFunctionElements) {
        const MXFragment* const other = ChildNamed(root, row.name);
        if (other && row.name != function->name)
            remarks.Add(other->TextLeft(), "expected one element " + FunctionTags() + " in " +
                                               Tag(root.name) + ", found also " + Tag(row.name) +
                                               ", which is not read");
    }

    for (const std::string_view group : Groups()) {
        const Parameter& row = ParametersOf(group).front();
        if (row.element.empty())
            parts.ReadNumber(group, sound.texts[IndexOf(row)]);
        else
            InterpretGroup(parts.Element(group), group, sound, remarks);
    }
    const MXFragment* info = parts.Element("info");
    InterpretInfoElement(info, sound.author, sound.kept, remarks, kSoundInfoNames);
    sound.info = info ? ReadSoundInfo(*info, remarks) : SoundInfo();
    sound.kept.root = "";
    sound.playing.reset();
    if (root.name != kSoundElement)
        return {};
    names.emplace_back(kPlaying);
    sound.kept.root = ChildrenBut(root, names);
    TellUnreadChildren(root, names, remarks);
    if (const MXFragment* playing = ChildNamed(root, kPlaying))
        sound.playing = ReadPlaying(*playing, remarks);
    return {};
}

void InterpretEnvdataElement(const MXFragment& envdata, std::vector<EnvPoint>& points,
                             Remarks& remarks) {
    points.clear();
    const std::string expected =
        "expected " + Tag(kPoint) + " in " + Tag(envdata.name) + ", found ";
    for (const auto& child : envdata.children) {
        if (child->Type() == MX_TEXT)
            remarks.Add(child->TextLeft(), expected + "the text " + kits::Quoted(child->name));
    }
    WalkFragments(envdata, [&](const MXFragment& fragment) {
        if (fragment.name != kPoint) {
            if (IsElement(fragment) && &fragment != &envdata)
                remarks.Add(fragment.TextLeft(), expected + "an element " + Tag(fragment.name));
            return WalkStep::Into;
        }
        if (fragment.Type() == MX_EMPTY_ELEMENT)
            points.push_back(PointOf(fragment));
        if (const std::string faults = FaultsOf(fragment); !faults.empty())
            remarks.Add(fragment.TextLeft(), Tag(kPoint) + ": " + faults);
        return WalkStep::Into;
    });
}

kits::Result<Sound> ReadSound(const std::filesystem::path& path, Warnings* warnings) {
    kits::Result<Sound> read = ReadValue(path, Sound(), InterpretSound, warnings);
    const std::string other = read ? "" : OtherKind(path);
    if (other.empty())
        return read;
    return kits::At({path.string()},
                    Refusal(kInvalidSound, "(the file is a " + other +
                                               "; it is opened by \"vexa FILE\" or by dropping it "
                                               "onto the window, and vexa-render takes it by --" +
                                               other + ")"));
}

kits::Result<void> WriteSound(const std::filesystem::path& path, const Sound& sound) {
    MXDocument document = ConstructDocumentTemplate(kSoundElement);
    document.root = ConstructSoundElement(sound);
    return SaveDocument(path, document, kSoundFileType);
}

kits::Result<Sound> SoundOfText(const std::string& text) try {
    Remarks remarks;
    MXString unread{std::string_view(text)};
    const MXDocument document(unread, &remarks);
    if (document.Status() != MX_OK)
        return kits::At(PlaceOf("sound", text, document.FaultLeft()),
                        {StatusText(document.Status())});
    if (!document.root)
        return kits::At({"sound"}, {"expected a root element, found none"});
    // In files an element without an end tag is accepted; here it means that the text is
    // incomplete.
    const std::string end = "</" + std::string(std::string_view(document.root->name)) + ">";
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    if (!std::string_view(text).substr(0, last + 1).ends_with(end))
        return kits::At({"sound"}, {"the text ends before " + end});
    Sound sound;
    if (const kits::Result<void> taken = InterpretSound(*document.root, sound, remarks); !taken)
        return taken.Fault();
    return sound;
} catch (const std::bad_alloc&) {
    return kits::Error{"there is not enough memory for the sound"};
}

std::string SoundText(const Sound& sound) {
    MXDocument document = ConstructDocumentTemplate(kSoundElement);
    document.root = ConstructSoundElement(sound);
    return std::string(std::string_view(document.AssembleString(MXString(std::string_view("  ")))));
}

} // namespace vexa
