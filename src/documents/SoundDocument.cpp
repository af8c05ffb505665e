#include "documents/SoundDocument.h"

#include "documents/DocumentKind.h"
#include "documents/FunctionDocument.h"
#include "kits/support/NumberText.h"
#include "kits/support/Quoted.h"
#include "synth/ParameterTable.h"
#include "xml/FragmentWalk.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

constexpr const char* kRootName = "vexasound";
constexpr const char* kPoint = "envpoint";
constexpr const char* kPoints = "envdata";
/// The attribute "fku" of a release point; with any other text it is a key-down point.
constexpr const char* kReleased = "true";
constexpr const char* kKeyDown = "false";

/// The groups of coefficients, in order.
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

/// The sound's envelope that belongs to a group; null if it has none.
template<class SoundType>
auto* EnvelopeOf(std::string_view group, SoundType& sound) {
    const auto places = EnvelopePlaces();
    const auto place = std::find_if(places.begin(), places.end(),
                                    [group](const auto& row) { return row.group == group; });
    const auto index = static_cast<std::size_t>(place - places.begin());
    return place == places.end() ? nullptr : &sound.envelopes[index];
}

void InterpretGroup(const MXFragment* element, std::string_view group, Sound& sound,
                    Warnings& warnings) {
    std::vector<std::string_view> names{kPoints};
    for (const Parameter& row : ParametersOf(group))
        names.push_back(row.element);
    const ElementScope scope(element, std::move(names), warnings);
    for (const Parameter& row : ParametersOf(group))
        scope.ReadText(row.element, sound.texts[IndexOf(row)]);
    if (auto* points = EnvelopeOf(group, sound)) {
        if (const MXFragment* envdata = scope.Element(kPoints))
            InterpretEnvdataElement(*envdata, group, *points, warnings);
    }
}

} // namespace

std::unique_ptr<MXFragment> ConstructSoundElement(const Sound& sound) {
    auto root = std::make_unique<MXFragment>(MX_ELEMENT, kRootName);
    root->Adopt(ConstructInfoElement(sound.author));
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

kits::Result<void> InterpretSound(const MXFragment& root, Sound& sound, Warnings& warnings) {
    std::vector<std::string_view> names = Groups();
    names.insert(names.end(), {"info", kExpressionFunction, kSampleFunction});
    const ElementScope parts(&root, std::move(names), warnings);

    const MXFragment* function = parts.Find(kExpressionFunction);
    if (!function)
        function = parts.Find(kSampleFunction);
    if (!function)
        return kits::Error{kInvalidFunction};
    if (auto read = InterpretFunction(*function, sound.function, warnings); !read)
        return read;

    for (const std::string_view group : Groups()) {
        const Parameter& row = ParametersOf(group).front();
        if (row.element.empty())
            parts.ReadText(group, sound.texts[IndexOf(row)]);
        else
            InterpretGroup(parts.Element(group), group, sound, warnings);
    }
    ElementScope(parts.Element("info"), {"author"}, warnings).ReadText("author", sound.author);
    return {};
}

void InterpretEnvdataElement(const MXFragment& envdata, std::string_view group,
                             std::vector<EnvPoint>& points, Warnings& warnings) {
    points.clear();
    std::size_t faults = 0;
    std::string firstFault;
    const auto read = [&](const MXFragment& point, const char* name) {
        const MXString text = point.attributes.GetValue(name);
        const auto number = static_cast<float>(kits::NumberOf(text.String()));
        if (std::isfinite(number))
            return number;
        if (faults++ == 0)
            firstFault = "point " + std::to_string(points.size() + 1) + ", " + name + "=" +
                         kits::Quoted(text);
        return 0.0F;
    };
    WalkFragments(envdata, [&](const MXFragment& fragment) {
        if (fragment.Type() == MX_EMPTY_ELEMENT && fragment.name == kPoint) {
            const float t = read(fragment, "t");
            const float val = read(fragment, "val");
            points.push_back({t, fragment.attributes.GetValue("fku") == kReleased, val});
        }
        return WalkStep::Into;
    });
    if (faults > 0)
        warnings.push_back(kits::Quoted(kPoints) + " in " + kits::Quoted(group) + ": " +
                           std::to_string(faults) + (faults == 1 ? " number is" : " numbers are") +
                           " not finite and read as 0 (" + firstFault + ")");
}

kits::Result<Sound> ReadSound(const std::filesystem::path& path, const Sound& startFrom,
                              ReadReport& report) {
    return ReadValue(path, startFrom, InterpretSound, report);
}

kits::Result<void> WriteSound(const std::filesystem::path& path, const Sound& sound) {
    MXDocument document = ConstructDocumentTemplate(kRootName);
    document.root = ConstructSoundElement(sound);
    return SaveDocument(path, document, kSoundFileType);
}

} // namespace vexa
