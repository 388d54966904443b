// PNG reading into 32-bit BGRA words (premultiplied only for colour types
// with an alpha channel) and writing of 24-bit RGB files, on libpng. Files
// that cannot be opened are looked for in their directory's image archive.
//
// libpng reports errors by longjmp: the functions that set the jump point
// hold no objects with destructors, and everything the cleanup needs lives
// in a session record outside them.
#include <png.h>

#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/log.hpp"
#include "core/pixel_format.hpp"
#include "fbcompose/loader.h"
#include "loaders/codec_support.hpp"
#include "loaders/decode_limits.hpp"
#include "loaders/decoders.hpp"

namespace fbc {
namespace {

// zlib inflates at most 1032 bytes from one, and a byte of 1-bit pixels
// holds 8: no PNG holds more than about 8300 pixels per byte of file.
constexpr int64_t kPixelsPerByte = 16384;

struct PngReadSession {
    FILE *file = nullptr;
    // From the PNG's start to the end of its file (in an archive, other
    // files may follow: an upper bound is enough).
    int64_t bytes = 0;
    png_structp png = nullptr;
    png_infop info = nullptr;
    png_bytep *rows = nullptr;
    bool allocated_pixels = false;
};

// The block or plain file, or the stored copy in the file's directory's
// archive.
FILE *open_png(const Source &source, long *offset) {
    *offset = 0;
    const char *filename = source.name;
    FILE *file = open_source(source);
    if (file || source.bytes) return file;
    const int open_error = errno;
    int32_t stored_at = 0;
    if (const char *archive = ar_img_lookup(filename, &stored_at)) {
        file = std::fopen(archive, "rb");
        *offset = stored_at;
    }
    if (!file) {
        fbc::log_err("Couldn't load '%s' image:%s\n", filename, std::strerror(open_error));
    }
    return file;
}

bool has_png_signature(FILE *file, long offset) {
    png_byte signature[4];
    if (std::fseek(file, offset, SEEK_SET) != 0) return false;
    if (std::fread(signature, 1, 4, file) != 4) return false;
    return png_sig_cmp(signature, 0, 4) == 0 && std::fseek(file, offset, SEEK_SET) == 0;
}

// The expansions that turn every colour type into B, G, R, A bytes.
void request_bgra(png_structp png, png_infop info, int color_type, int bit_depth) {
    if (color_type & PNG_COLOR_MASK_ALPHA) png_set_expand(png);
    png_set_bgr(png);
    png_set_filler(png, 255, PNG_FILLER_AFTER);
    png_set_strip_16(png);
    png_set_packing(png);
    if (png_get_valid(png, info, PNG_INFO_tRNS)) png_set_expand(png);
    if (!(color_type & PNG_COLOR_MASK_COLOR)) {
        png_set_gray_to_rgb(png);
        if (bit_depth < 8) png_set_expand_gray_1_2_4_to_8(png);
    }
}

// Below full alpha each colour byte becomes c x a >> 8 (not / 255): fully
// opaque pixels are skipped and the others lose a little brightness.
void premultiply(xc_image *image) {
    auto *pixels = reinterpret_cast<uint32_t *>(image->data);
    const size_t count = static_cast<size_t>(image->width) * static_cast<size_t>(image->height);
    for (size_t i = 0; i < count; ++i) pixels[i] = premultiply_below_opaque(pixels[i]);
}

// Returns the colour type's alpha bit (0 or 4), or -1.
int read_png(xc_image *image, const char *filename, PngReadSession *s, bool info_only) {
    if (setjmp(png_jmpbuf(s->png))) return -1;
    png_init_io(s->png, s->file);
    png_read_info(s->png, s->info);
    png_uint_32 width = 0, height = 0;
    int bit_depth = 0, color_type = 0;
    png_get_IHDR(s->png, s->info, &width, &height, &bit_depth, &color_type, nullptr, nullptr,
                 nullptr);
    if (!image_size_fits("png", filename, width, height)) return -1;
    image->width = static_cast<int32_t>(width);
    image->height = static_cast<int32_t>(height);
    if (color_type == PNG_COLOR_TYPE_PALETTE) png_set_expand(s->png);
    // compat: only a real alpha channel marks the image as having alpha: palette
    // and grey images with tRNS get alpha bytes but stay marked opaque.
    const int alpha = color_type & PNG_COLOR_MASK_ALPHA;
    if (alpha) {
        image->has_alpha = 1;
        image->depth = 32;
        image->format = pixel_format::kRgba;
    } else {
        image->depth = 24;
        image->format = pixel_format::kRgb;
    }
    if (info_only) return alpha;
    if (!image_fits_file("png", filename, width, height, s->bytes, kPixelsPerByte)) return -1;

    request_bgra(s->png, s->info, color_type, bit_depth);
    image->rowstride = image->width * 4;
    if (!xc_image_alloc_data(image)) return -1;
    s->allocated_pixels = true;
    s->rows = static_cast<png_bytep *>(std::malloc(sizeof(png_bytep) * height));
    for (png_uint_32 y = 0; y < height; ++y)
        s->rows[y] = image->data + static_cast<size_t>(y) * static_cast<size_t>(image->rowstride);
    png_read_image(s->png, s->rows);
    png_read_end(s->png, nullptr);
    if (alpha) premultiply(image);
    return alpha;
}

// libpng's own texts on standard error, as its default handlers print them,
// but through the library's diagnostics so that a program's handler sees them.
[[noreturn]] void report_error(png_structp png, png_const_charp message) {
    fbc::log_err("libpng error: %s\n", message ? message : "undefined");
    png_longjmp(png, 1);
}

void report_warning(png_structp, png_const_charp message) {
    fbc::log_err("libpng warning: %s\n", message);
}

int load_png(xc_image *image, const Source &source, bool info_only) {
    const char *filename = source.name;
    PngReadSession s;
    long offset = 0;
    s.file = open_png(source, &offset);
    if (!s.file) return -1;
    if (!has_png_signature(s.file, offset)) {
        std::fclose(s.file);
        return -1;
    }
    s.bytes = bytes_after(s.file, offset);
    s.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, report_error, report_warning);
    if (s.png) s.info = png_create_info_struct(s.png);
    const int result = s.info ? read_png(image, filename, &s, info_only) : -1;
    if (result < 0 && s.allocated_pixels) {
        std::free(image->data);
        image->data = nullptr;
    }
    std::free(s.rows);
    png_destroy_read_struct(&s.png, &s.info, nullptr);
    std::fclose(s.file);
    return result;
}

int png_load_info(xc_image *image, const char *filename) {
    return load_png(image, Source{filename}, true);
}

int png_load_data(xc_image *image, const char *filename) {
    return load_png(image, Source{filename}, false);
}

struct PngWriteSession {
    FILE *file = nullptr;
    png_structp png = nullptr;
    png_infop info = nullptr;
    png_bytep row = nullptr;
};

int write_png(const xc_image *image, const xg_area &area, PngWriteSession *s) {
    if (setjmp(png_jmpbuf(s->png))) return -1;
    const auto width = static_cast<png_uint_32>(area.x2 - area.x1);
    const auto height = static_cast<png_uint_32>(area.y2 - area.y1);
    png_init_io(s->png, s->file);
    png_set_IHDR(s->png, s->info, width, height, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_color_8 significant{8, 8, 8, 0, 0};
    png_set_sBIT(s->png, s->info, &significant);
    png_write_info(s->png, s->info);
    png_set_shift(s->png, &significant);
    png_set_packing(s->png);
    // The header is out already: libpng makes this second write a no-op.
    png_set_IHDR(s->png, s->info, width, height, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(s->png, s->info);
    // Source rows advance by the image's full width.
    const auto *src = reinterpret_cast<const uint32_t *>(image->data) +
                      static_cast<size_t>(area.y1) * static_cast<size_t>(image->width) +
                      static_cast<size_t>(area.x1);
    for (png_uint_32 y = 0; y < height; ++y, src += image->width) {
        pack_rgb_row(src, s->row, static_cast<int32_t>(width));
        png_write_rows(s->png, &s->row, 1);
    }
    png_write_end(s->png, nullptr);
    return 0;
}

int png_save(xc_image *image, const char *filename, const xg_area *area, const char *) {
    const xg_area rect = save_area_of(image, area);
    if (!save_area_is_valid(image, rect)) return -1;
    PngWriteSession s;
    s.file = std::fopen(filename, "wb");
    if (!s.file) return -1;
    s.row = static_cast<png_bytep>(std::malloc(static_cast<size_t>(rect.x2 - rect.x1) * 3));
    s.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, report_error, report_warning);
    if (s.png) s.info = png_create_info_struct(s.png);
    const int result = s.info && s.row ? write_png(image, rect, &s) : -1;
    png_destroy_write_struct(&s.png, &s.info);
    std::free(s.row);
    std::fclose(s.file);
    return result;
}

const char *const kExtensions[] = {"png", nullptr};

}  // namespace

int decode_png(xc_image *image, const Source &source) { return load_png(image, source, false); }

}  // namespace fbc

extern "C" {
xc_image_loader png_loader = {fbc::kExtensions,
                              "png",
                              fbc::png_load_data,
                              fbc::png_load_info,
                              fbc::png_save,
                              nullptr,
                              nullptr,
                              nullptr,
                              nullptr};
}
