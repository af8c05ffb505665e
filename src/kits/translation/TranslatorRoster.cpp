// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/translation/TranslatorRoster.h"

#include "kits/interface/Colors.h"
#include "kits/interface/Slider.h"
#include "kits/interface/backends/ViewWidget.h"
#include "kits/support/DataIO.h"
#include "kits/translation/BitmapStream.h"

#include <QBuffer>
#include <QImageWriter>
#include <algorithm>

namespace {

/// A number that the user chooses for a format.
struct Setting {
    /// Null if the format has no setting.
    const char* label = nullptr;
    int32 minimum = 0;
    int32 maximum = 0;
    int32 initial = -1;
    /// Converts the user's number to the quality that the toolkit's writer expects.
    int (*writerQuality)(int32 value) = nullptr;
};

struct Translator {
    /// The toolkit's name of the format.
    const char* writer;
    Setting setting;
    translation_format formats[2];
};

constexpr translation_format kNeutral = {B_TRANSLATOR_BITMAP, B_TRANSLATOR_BITMAP, 1,
                                         "image/x-bitmap", "Bitmap in memory"};

int AsIs(int32 value) {
    return value;
}

/// Inverts the toolkit's rule that a PNG quality q means the compression level (100 - q) * 9 / 91.
int QualityOfCompression(int32 level) {
    return 100 - (level * 91 + 8) / 9;
}

constexpr Setting kQuality = {"Quality", 0, 100, 90, AsIs};
constexpr Setting kCompression = {"Compression", 0, 9, 6, QualityOfCompression};

constexpr translation_format File(const char (&type)[5], float quality, const char* mime,
                                  const char* name) {
    return {FourCC(type), B_TRANSLATOR_BITMAP, quality, mime, name};
}

/// All translators. The id of one is its row, counted from 1.
constexpr Translator kTranslators[] = {
    {"png", kCompression, {kNeutral, File("PNG ", 1, "image/png", "PNG image")}},
    {"jpeg", kQuality, {kNeutral, File("JPEG", 0.8F, "image/jpeg", "JPEG image")}},
    {"webp", kQuality, {kNeutral, File("WEBP", 0.8F, "image/webp", "WebP image")}},
    {"tiff", {}, {kNeutral, File("TIFF", 1, "image/tiff", "TIFF image")}},
    {"bmp", {}, {kNeutral, File("BMP ", 1, "image/bmp", "BMP image")}},
    {"ppm", {}, {kNeutral, File("PPM ", 1, "image/x-portable-pixmap", "PPM image")}},
    {"xpm", {}, {kNeutral, File("XPM ", 1, "image/x-xpixmap", "XPM image")}},
};

const Translator* Find(translator_id id) {
    return id >= 1 && id <= std::size(kTranslators) ? &kTranslators[id - 1] : nullptr;
}

/// The present value of a translator's setting.
int32& SettingOf(const Translator& translator) {
    static std::vector<int32> values = [] {
        std::vector<int32> initial;
        for (const Translator& each : kTranslators)
            initial.push_back(each.setting.initial);
        return initial;
    }();
    return values[static_cast<std::size_t>(&translator - kTranslators)];
}

constexpr uint32 kMoved = FourCC("movd");
constexpr float kInset = 12;
constexpr float kSliderHeight = 43;

class ConfigurationView : public BView {
  public:
    ConfigurationView(BRect frame, const Translator& translator)
        : BView(frame, translator.formats[1].name, B_FOLLOW_ALL_SIDES, B_WILL_DRAW),
          translator(translator) {
        ConfigurationView::ColorsChanged();
        const Setting& setting = translator.setting;
        slider = new BSlider({kInset, kInset, frame.Width() - kInset, kInset + kSliderHeight},
                             setting.label, setting.label, new BMessage(kMoved), setting.minimum,
                             setting.maximum, B_FOLLOW_LEFT_RIGHT | B_FOLLOW_TOP);
        slider->SetValue(SettingOf(translator));
        AddChild(slider);
    }

    void AttachedToWindow() override { slider->SetTarget(this); }
    void ColorsChanged() override { SetViewColor(kits::PresentControlColors().sheet); }

    void MessageReceived(BMessage* message) override {
        if (message->what == kMoved)
            message->FindInt32("be:value", &SettingOf(translator));
        else
            BView::MessageReceived(message);
    }

  private:
    const Translator& translator;
    BSlider* slider;
};

} // namespace

BTranslatorRoster* BTranslatorRoster::Default() {
    static BTranslatorRoster roster;
    return &roster;
}

BTranslatorRoster::BTranslatorRoster() {
    const QList<QByteArray> writers = QImageWriter::supportedImageFormats();
    for (translator_id id = 1; const Translator* translator = Find(id); id++) {
        if (writers.contains(translator->writer))
            translators.push_back(id);
    }
}

status_t BTranslatorRoster::GetAllTranslators(translator_id** list, int32* count) const {
    *list = new translator_id[translators.size()];
    std::copy(translators.begin(), translators.end(), *list);
    *count = static_cast<int32>(translators.size());
    return B_OK;
}

std::string BTranslatorRoster::FileEnding(translator_id id) const {
    const Translator* translator = Find(id);
    return translator ? std::string(".") + translator->writer : "";
}

status_t BTranslatorRoster::GetOutputFormats(translator_id id, const translation_format** formats,
                                             int32* count) const {
    const Translator* translator = Find(id);
    if (!translator)
        return B_NO_TRANSLATOR;
    *formats = translator->formats;
    *count = static_cast<int32>(std::size(translator->formats));
    return B_OK;
}

status_t BTranslatorRoster::MakeConfigurationView(translator_id id, BMessage*, BView** view,
                                                  BRect* extent) {
    const Translator* translator = Find(id);
    if (!translator)
        return B_NO_TRANSLATOR;
    if (!translator->setting.label)
        return B_NO_CONFIGURATION;
    *extent = {0, 0, 239, 2 * kInset + kSliderHeight};
    *view = new ConfigurationView(*extent, *translator);
    return B_OK;
}

status_t BTranslatorRoster::Translate(translator_id id, BBitmapStream* source, const BMessage*,
                                      BDataIO* destination, uint32 type) const {
    const Translator* translator = Find(id);
    if (!translator || translator->formats[1].type != type)
        return B_NO_TRANSLATOR;
    const BBitmap* bitmap = source->Bitmap();
    if (!bitmap || !bitmap->IsValid())
        return B_BAD_VALUE;
    if (bitmap->ColorSpace() == B_CMAP8)
        return B_BAD_TYPE;
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, translator->writer);
    if (const Setting& setting = translator->setting; setting.label)
        writer.setQuality(setting.writerQuality(SettingOf(*translator)));
    if (!writer.write(kits::ToQt(*bitmap)))
        return B_ERROR;
    const ssize_t written = destination->Write(bytes.constData(), std::size_t(bytes.size()));
    return written < 0 ? static_cast<status_t>(written) : B_OK;
}
