// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/pictures/Decoders.h"
#include "kits/pictures/Orientation.h"

#include <bit>
#include <new>

#include <png.h>

namespace kits {

namespace {

/// Decodes one file with libpng.
class PngDecoder {
  public:
    explicit PngDecoder(std::string_view bytes) : bytes(bytes) {}
    ~PngDecoder() { png_destroy_read_struct(&png, &info, nullptr); }
    PngDecoder(const PngDecoder&) = delete;
    PngDecoder& operator=(const PngDecoder&) = delete;

    Result<Decoded> Decode() {
        if (!landing.Try([this] { ReadHeader(); }))
            return landing.Fault();
        if (!png || !info)
            throw std::bad_alloc();
        Result<BrightnessMap> room = MapOf(png_get_image_width(png, info), Height());
        if (!room)
            return room.Fault();
        map = *std::move(room);
        // From here on the sides are known to be within the limit.
        if (!landing.Try([this] { ChooseForm(); }))
            return landing.Fault();
        row.resize(png_get_rowbytes(png, info));
        if (!landing.Try([this] { ReadRows(); }))
            return landing.Fault();
        return Decoded{std::move(map), Orientation()};
    }

  private:
    static PngDecoder& Of(png_structp png) {
        return *static_cast<PngDecoder*>(png_get_error_ptr(png));
    }
    static void GiveUp(png_structp png, png_const_charp reason) {
        Of(png).landing.GiveUp(reason, Of(png).position);
    }
    static void Overlook(png_structp, png_const_charp) {}
    static void Take(png_structp png, png_bytep target, std::size_t count) {
        PngDecoder& self = Of(png);
        if (count > self.bytes.size() - self.position)
            png_error(png, "the file ends too early");
        std::memcpy(target, self.bytes.data() + self.position, count);
        self.position += count;
    }

    void ReadHeader() {
        png = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, GiveUp, Overlook);
        info = png ? png_create_info_struct(png) : nullptr;
        if (!info)
            return;
        png_set_read_fn(png, this, Take);
        // The library's own limits are lifted; MapOf checks the size and has a better message.
        png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        // All chunks that do not affect the pixels are skipped, except the orientation: texts and
        // profiles may unpack to far more than the size of the file.
        png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
        png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_AS_DEFAULT,
                                    reinterpret_cast<png_const_bytep>("eXIf"), 1);
        png_read_info(png, info);
    }

    /// Chooses the form of the rows: channels of 8 or 16 bits, grey or colours, with or without
    /// alpha.
    void ChooseForm() {
        png_set_expand(png);
        if constexpr (std::endian::native == std::endian::little)
            png_set_swap(png);
        png_read_update_info(png, info);
    }

    /// Reads all rows. Each pass over an interlaced picture has only some of the rows and columns
    /// (ISO/IEC 15948, 8.2), stored without gaps.
    void ReadRows() {
        const bool interlaced = png_get_interlace_type(png, info) == PNG_INTERLACE_ADAM7;
        const std::size_t width = png_get_image_width(png, info);
        const std::size_t channels = png_get_channels(png, info);
        const bool isLong = png_get_bit_depth(png, info) == 16;
        for (int pass = 0; pass < (interlaced ? PNG_INTERLACE_ADAM7_PASSES : 1); pass++) {
            const std::size_t left = interlaced ? PNG_PASS_START_COL(pass) : 0;
            const std::size_t top = interlaced ? PNG_PASS_START_ROW(pass) : 0;
            const std::size_t across = interlaced ? PNG_PASS_COL_OFFSET(pass) : 1;
            const std::size_t down = interlaced ? PNG_PASS_ROW_OFFSET(pass) : 1;
            // A pass without columns has no rows either.
            for (std::size_t y = top; left < width && y < Height(); y += down) {
                png_read_row(png, row.data(), nullptr);
                float* const values = map.values.data() + y * width;
                for (std::size_t x = left, i = 0; x < width; x += across, i += channels)
                    values[x] = isLong ? Brightness<png_uint_16>(i, channels)
                                       : Brightness<png_byte>(i, channels);
            }
        }
        png_read_end(png, info);
    }

    /// Returns the brightness of the pixel whose first channel has the index `at` in the row.
    template<class Channel>
    float Brightness(std::size_t at, std::size_t channels) const noexcept {
        constexpr double kMost = Channel(-1);
        Channel c[4];
        std::memcpy(c, row.data() + at * sizeof(Channel), channels * sizeof(Channel));
        const bool isColoured = channels > 2;
        const double luma =
            isColoured ? Luma(c[0], c[1], c[2], kMost) : Luma(c[0], c[0], c[0], kMost);
        const bool isOpaque = channels % 2 == 1;
        return static_cast<float>(isOpaque ? luma : luma * c[channels - 1] / kMost);
    }

    std::size_t Height() const noexcept { return png_get_image_height(png, info); }

    int Orientation() {
        png_uint_32 size = 0;
        png_bytep exif = nullptr;
        if (png_get_eXIf_1(png, info, &size, &exif) == 0)
            return 1;
        return OrientationOf({reinterpret_cast<const char*>(exif), size});
    }

    const std::string_view bytes;
    std::size_t position = 0;
    Landing landing;
    png_structp png = nullptr;
    png_infop info = nullptr;
    std::vector<png_byte> row;
    BrightnessMap map;
};

} // namespace

Result<Decoded> DecodePng(std::string_view bytes) {
    return PngDecoder(bytes).Decode();
}

} // namespace kits
