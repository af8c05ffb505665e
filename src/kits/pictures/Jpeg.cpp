// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/pictures/Decoders.h"
#include "kits/pictures/Orientation.h"

#include <algorithm>
// jpeglib.h requires it.
#include <cstdio>

#include <jpeglib.h>
// Included after jpeglib.h, which it requires.
#include <jerror.h>

namespace kits {

namespace {

constexpr int kExifMarker = JPEG_APP0 + 1;
constexpr std::string_view kExifBeginning{"Exif\0\0", 6};
/// The most scans of a progressive picture. Each takes time, however short it is in the file;
/// encoders write about ten.
constexpr int kMostScans = 100;

/// The library's warnings that do not affect the picture: bytes between the parts of the file,
/// unknown versions and colour transforms, an unusual order of scans.
constexpr int kHarmless[] = {JWRN_EXTRANEOUS_DATA, JWRN_JFIF_MAJOR, JWRN_ADOBE_XFORM,
                             JWRN_BOGUS_PROGRESSION};

/// Decodes one file with libjpeg.
class JpegDecoder {
  public:
    explicit JpegDecoder(std::string_view bytes) : bytes(bytes) {
        info.err = jpeg_std_error(&errors);
        info.client_data = this;
        errors.error_exit = GiveUp;
        errors.emit_message = Judge;
        progress.progress_monitor = LimitScans;
    }
    ~JpegDecoder() { jpeg_destroy_decompress(&info); }
    JpegDecoder(const JpegDecoder&) = delete;
    JpegDecoder& operator=(const JpegDecoder&) = delete;

    Result<Decoded> Decode() {
        if (!landing.Try([this] { ReadHeader(); }))
            return landing.Fault();
        Result<BrightnessMap> room = MapOf(info.image_width, info.image_height);
        if (!room)
            return room.Fault();
        map = *std::move(room);
        const bool isInk = info.jpeg_color_space == JCS_CMYK || info.jpeg_color_space == JCS_YCCK;
        info.out_color_space = isInk ? JCS_CMYK : JCS_GRAYSCALE;
        // This DCT gives the same bits on every processor.
        info.dct_method = JDCT_ISLOW;
        row.resize(std::size_t{4} * info.image_width);
        // Read now, because the library discards the markers with the last row.
        const int orientation = Orientation();
        if (!landing.Try([this] { ReadRows(); }))
            return landing.Fault();
        return Decoded{std::move(map), orientation};
    }

  private:
    static JpegDecoder& Of(j_common_ptr info) {
        return *static_cast<JpegDecoder*>(info->client_data);
    }
    static void GiveUp(j_common_ptr info) {
        char text[JMSG_LENGTH_MAX];
        info->err->format_message(info, text);
        JpegDecoder& self = Of(info);
        const std::size_t left = self.info.src ? self.info.src->bytes_in_buffer : 0;
        // At a premature end the library feeds itself a substitute end marker, which is not part of
        // the file.
        const std::size_t read = self.bytes.size() - std::min(left, self.bytes.size());
        self.landing.GiveUp(text, info->err->msg_code == JWRN_JPEG_EOF ? self.bytes.size() : read);
    }
    /// Treats warnings about damage as errors; the library would fill the missing parts with grey.
    static void Judge(j_common_ptr info, int level) {
        if (level < 0 && std::ranges::count(kHarmless, info->err->msg_code) == 0)
            GiveUp(info);
    }
    static void LimitScans(j_common_ptr info) {
        JpegDecoder& self = Of(info);
        if (self.info.input_scan_number > kMostScans)
            self.landing.GiveUp("it has too many scans",
                                self.bytes.size() - self.info.src->bytes_in_buffer);
    }

    void ReadHeader() {
        jpeg_create_decompress(&info);
        info.progress = &progress;
        jpeg_mem_src(&info, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
        jpeg_save_markers(&info, kExifMarker, 0xFFFF);
        jpeg_read_header(&info, TRUE);
    }

    void ReadRows() {
        jpeg_start_decompress(&info);
        while (info.output_scanline < info.output_height) {
            float* const values =
                map.values.data() + std::size_t{info.output_scanline} * info.output_width;
            JSAMPROW target = row.data();
            jpeg_read_scanlines(&info, &target, 1);
            for (std::size_t x = 0; x < info.output_width; x++)
                values[x] = Brightness(x);
        }
        jpeg_finish_decompress(&info);
    }

    /// Returns the brightness of a pixel of the row. An ink absorbs the light of one colour, and
    /// black that of all. Adobe's programs, recognised by their marker, store the inks inverted.
    float Brightness(std::size_t x) const noexcept {
        constexpr double kMost = MAXJSAMPLE;
        if (info.out_color_space == JCS_GRAYSCALE)
            return static_cast<float>(Luma(row[x], row[x], row[x], kMost));
        const JSAMPLE* const ink = &row[4 * x];
        const auto light = [&](int i) {
            return double(info.saw_Adobe_marker ? ink[i] : MAXJSAMPLE - ink[i]);
        };
        const auto channel = [&](int i) { return light(i) * light(3) / kMost; };
        return static_cast<float>(Luma(channel(0), channel(1), channel(2), kMost));
    }

    int Orientation() const {
        for (jpeg_saved_marker_ptr marker = info.marker_list; marker; marker = marker->next) {
            const std::string_view data(reinterpret_cast<const char*>(marker->data),
                                        marker->data_length);
            if (marker->marker == kExifMarker && data.starts_with(kExifBeginning))
                return OrientationOf(data.substr(kExifBeginning.size()));
        }
        return 1;
    }

    const std::string_view bytes;
    Landing landing;
    jpeg_error_mgr errors{};
    jpeg_progress_mgr progress{};
    jpeg_decompress_struct info{};
    std::vector<JSAMPLE> row;
    BrightnessMap map;
};

} // namespace

Result<Decoded> DecodeJpeg(std::string_view bytes) {
    return JpegDecoder(bytes).Decode();
}

} // namespace kits
