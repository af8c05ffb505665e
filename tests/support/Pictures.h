// SPDX-License-Identifier: GPL-3.0-or-later
// Makes picture files for tests with the formats' own libraries.
#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <jpeglib.h>
#include <png.h>

namespace test {

/// The form of a PNG file, whose rows are written unchanged. `colours` is PNG_COLOR_TYPE_...; a
/// palette has 16 entries, of which `transparent` ones are transparent, and so are pixels of grey
/// level 0 if there are any. `exif` is a chunk of that name, `text` is compressed into a chunk
/// zTXt.
struct PngForm {
    int colours = PNG_COLOR_TYPE_GRAY;
    int depth = 8;
    bool interlaced = false;
    int transparent = 0;
    std::string exif = {};
    std::string text = {};
};
inline png_color PaletteColour(int i) {
    return {png_byte(i * 16), png_byte(255 - i * 3), png_byte(i * i)};
}
inline std::string Png(unsigned width, unsigned height, const PngForm& form,
                       const std::vector<png_byte>& rows) {
    std::string file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(
        png, &file,
        [](png_structp writer, png_bytep bytes, std::size_t count) {
            static_cast<std::string*>(png_get_io_ptr(writer))
                ->append(reinterpret_cast<char*>(bytes), count);
        },
        nullptr);
    png_set_IHDR(png, info, width, height, form.depth, form.colours,
                 form.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, 0, 0);
    png_color palette[16];
    for (int i = 0; i < 16; i++)
        palette[i] = PaletteColour(i);
    if (form.colours == PNG_COLOR_TYPE_PALETTE)
        png_set_PLTE(png, info, palette, 1 << std::min(form.depth, 4));
    if (form.transparent > 0) {
        png_byte opacities[16] = {};
        png_color_16 level{};
        png_set_tRNS(png, info, opacities, form.transparent, &level);
    }
    std::string exif = form.exif;
    if (!exif.empty())
        png_set_eXIf_1(png, info, png_uint_32(exif.size()),
                       reinterpret_cast<png_bytep>(exif.data()));
    png_text text{};
    std::string key = "Comment", content = form.text;
    text.compression = PNG_TEXT_COMPRESSION_zTXt;
    text.key = key.data();
    text.text = content.data();
    text.text_length = content.size();
    if (!content.empty())
        png_set_text(png, info, &text, 1);
    png_write_info(png, info);
    const std::size_t stride = png_get_rowbytes(png, info);
    for (int pass = png_set_interlace_handling(png); pass > 0; pass--) {
        for (std::size_t y = 0; y < height; y++)
            png_write_row(png, &rows[y * stride]);
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return file;
}

/// The form of a JPEG file of the best quality. `space` is the colour space of the pixels and of
/// the file, except that RGB is stored as YCbCr unless it is `kept`.
struct JpegForm {
    J_COLOR_SPACE space = JCS_GRAYSCALE;
    int channels = 1;
    bool progressive = false;
    /// For inks: true if the file has Adobe's marker.
    bool adobe = true;
    /// The bytes of a marker APP1.
    std::string app1 = {};
};
inline std::string Jpeg(unsigned width, unsigned height, const JpegForm& form,
                        std::vector<JSAMPLE> pixels) {
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &bytes, &size);
    info.image_width = width;
    info.image_height = height;
    info.input_components = form.channels;
    info.in_color_space = form.space;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 100, TRUE);
    if (form.progressive)
        jpeg_simple_progression(&info);
    info.write_Adobe_marker = boolean(form.space == JCS_CMYK && form.adobe);
    jpeg_start_compress(&info, TRUE);
    if (!form.app1.empty())
        jpeg_write_marker(&info, JPEG_APP0 + 1, reinterpret_cast<const JOCTET*>(form.app1.data()),
                          unsigned(form.app1.size()));
    while (info.next_scanline < height) {
        JSAMPROW row = &pixels[std::size_t(info.next_scanline) * width * unsigned(form.channels)];
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    const std::string file(reinterpret_cast<char*>(bytes), size);
    jpeg_destroy_compress(&info);
    std::free(bytes);
    return file;
}

} // namespace test
