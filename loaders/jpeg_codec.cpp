// JPEG reading into 32-bit colour words and writing of baseline RGB files,
// on libjpeg's 6b interface.
//
// libjpeg reports errors through error_exit, which prints libjpeg's message
// and long-jumps back: the functions that set the jump point hold no
// objects with destructors, and their buffers come from libjpeg's own pools,
// which jpeg_destroy_* releases.
#include <cerrno>
#include <climits>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>

// jpeglib.h needs FILE and size_t declared before it.
#include <jpeglib.h>

#include "core/log.hpp"
#include "core/pixel_format.hpp"
#include "fbcompose/loader.h"
#include "loaders/codec_support.hpp"
#include "loaders/decode_limits.hpp"
#include "loaders/decoders.hpp"

namespace fbc {
namespace {

// One decompressor for the process: the codec is not reentrant, like the
// rest of the library.
jpeg_decompress_struct decoder;
jpeg_error_mgr decoder_errors;
jpeg_progress_mgr decoder_progress;
jmp_buf decoder_jump;
const char *decoder_file = nullptr;

// libjpeg hands its row batches over in groups of at most this many rows.
constexpr JDIMENSION kMaxBatchRows = 16;
// The densest Huffman-coded JPEG spends a bit or two on each 8 x 8 block of
// each component (a grey progressive one: 512 pixels a byte); libjpeg would
// pad a cut file's missing rows, so without this check a header alone could
// make it decode an image of any size.
constexpr int64_t kPixelsPerByte = 1024;
// Progressive files take about ten scans, and libjpeg passes over the whole
// image for each: a file of a few bytes per scan could keep it busy for a
// time out of all proportion to its size.
constexpr int kMaxScans = 100;

// libjpeg's own text and stream (standard error), through the library's
// diagnostics so that a program's handler sees it.
void print_message(j_common_ptr cinfo) {
    char text[JMSG_LENGTH_MAX];
    (*cinfo->err->format_message)(cinfo, text);
    fbc::log_err("%s\n", text);
}

[[noreturn]] void jump_on_error(j_common_ptr cinfo) {
    (*cinfo->err->output_message)(cinfo);
    std::longjmp(*static_cast<jmp_buf *>(cinfo->client_data), 1);
}

// Called by libjpeg as it works through each scan.
void refuse_endless_scans(j_common_ptr) {
    if (decoder.input_scan_number <= kMaxScans) return;
    fbc::log_err("jpeg: file(%s) has more than %d scans\n", decoder_file, kMaxScans);
    std::longjmp(decoder_jump, 1);
}

void create_decoder(FILE *file, const char *filename) {
    decoder.err = jpeg_std_error(&decoder_errors);
    decoder_errors.error_exit = jump_on_error;
    decoder_errors.output_message = print_message;
    decoder.client_data = &decoder_jump;
    jpeg_create_decompress(&decoder);
    decoder_file = filename;
    decoder_progress.progress_monitor = refuse_endless_scans;
    decoder.progress = &decoder_progress;
    jpeg_stdio_src(&decoder, file);
}

// Fancy upsampling and block smoothing cost too much on the device.
void fixed_decoder_settings() {
    decoder.do_fancy_upsampling = FALSE;
    decoder.do_block_smoothing = FALSE;
}

int jpeg_load_info(xc_image *image, const char *filename) {
    if (!filename) return -1;
    FILE *const file = std::fopen(filename, "rb");
    if (!file) return -1;
    volatile int result = -1;
    if (setjmp(decoder_jump) == 0) {
        create_decoder(file, filename);
        // Accepted from here on: a stream libjpeg rejects surfaces when the
        // pixels are loaded, with the size left as it was.
        result = 1;
        jpeg_read_header(&decoder, TRUE);
        fixed_decoder_settings();
        jpeg_calc_output_dimensions(&decoder);
        if (image_size_fits("jpeg", filename, decoder.output_width, decoder.output_height)) {
            image->width = static_cast<int32_t>(decoder.output_width);
            image->height = static_cast<int32_t>(decoder.output_height);
        } else {
            result = -1;
        }
    }
    std::fclose(file);
    jpeg_destroy_decompress(&decoder);
    return result;
}

// One decoded row of `components` bytes per pixel into colour words.
void convert_row(const JSAMPLE *src, uint32_t *dst, JDIMENSION width, int components) {
    if (components == 3) {
        for (JDIMENSION x = 0; x < width; ++x, src += 3)
            dst[x] = 0xFF000000u | uint32_t{src[0]} << 16 | uint32_t{src[1]} << 8 | src[2];
    } else if (components == 1) {
        for (JDIMENSION x = 0; x < width; ++x) dst[x] = 0xFF000000u | uint32_t{src[x]} * 0x010101u;
    } else if (components == 4) {
        // The components are taken as R, G, B, A and premultiplied by >> 8.
        for (JDIMENSION x = 0; x < width; ++x, src += 4) {
            const uint32_t a = src[3];
            dst[x] =
                a << 24 | (src[0] * a >> 8) << 16 | ((src[1] * a) & 0xFF00u) | (src[2] * a >> 8);
        }
    }
}

// Rows decode straight into the image: libjpeg writes B, G, R, 255, which
// is the colour word in memory.
void read_rows_in_place(xc_image *image) {
    JSAMPROW rows[kMaxBatchRows];
    while (decoder.output_scanline < decoder.output_height) {
        JDIMENSION batch = decoder.output_height - decoder.output_scanline;
        if (batch > static_cast<JDIMENSION>(decoder.rec_outbuf_height))
            batch = static_cast<JDIMENSION>(decoder.rec_outbuf_height);
        for (JDIMENSION i = 0; i < batch; ++i)
            rows[i] = image->data + static_cast<size_t>(decoder.output_scanline + i) *
                                        static_cast<size_t>(image->rowstride);
        if (jpeg_read_scanlines(&decoder, rows, batch) == 0) break;
    }
}

void read_rows_converted(xc_image *image) {
    const int components = decoder.output_components;
    JSAMPARRAY batch =
        (*decoder.mem->alloc_sarray)(reinterpret_cast<j_common_ptr>(&decoder), JPOOL_IMAGE,
                                     decoder.output_width * static_cast<JDIMENSION>(components),
                                     static_cast<JDIMENSION>(decoder.rec_outbuf_height));
    while (decoder.output_scanline < decoder.output_height) {
        const JDIMENSION first = decoder.output_scanline;
        const JDIMENSION got = jpeg_read_scanlines(
            &decoder, batch, static_cast<JDIMENSION>(decoder.rec_outbuf_height));
        if (got == 0) break;
        for (JDIMENSION i = 0; i < got; ++i) {
            auto *dst = reinterpret_cast<uint32_t *>(image->data +
                                                     static_cast<size_t>(first + i) *
                                                         static_cast<size_t>(image->rowstride));
            convert_row(batch[i], dst, decoder.output_width, components);
        }
    }
    if (components == 4) {
        image->format = pixel_format::kRgba;
        image->has_alpha = 1;
    }
}

// Decodes an opened stream; 1 on success, -1 on failure with no pixels kept.
int decode_stream(xc_image *image, const char *filename, FILE *file) {
    uint8_t *const pixels_before = image->data;
    if (setjmp(decoder_jump) != 0) {
        if (image->data != pixels_before) {
            std::free(image->data);
            image->data = pixels_before;
        }
        jpeg_destroy_decompress(&decoder);
        return -1;
    }
    create_decoder(file, filename);
    jpeg_read_header(&decoder, TRUE);
    fixed_decoder_settings();
    jpeg_calc_output_dimensions(&decoder);
    if (!image_size_fits("jpeg", filename, decoder.output_width, decoder.output_height) ||
        !image_fits_file("jpeg", filename, decoder.output_width, decoder.output_height,
                         bytes_after(file, 0), kPixelsPerByte)) {
        jpeg_destroy_decompress(&decoder);
        return -1;
    }
#ifdef JCS_EXTENSIONS
    if (decoder.out_color_space == JCS_RGB) decoder.out_color_space = JCS_EXT_BGRA;
#endif
    jpeg_start_decompress(&decoder);
    image->width = static_cast<int32_t>(decoder.output_width);
    image->height = static_cast<int32_t>(decoder.output_height);
    if (decoder.rec_outbuf_height > static_cast<int>(kMaxBatchRows)) {
        fbc::log_out("%s: jpeg decoding failed\n", "load_image_file_data_jpeg_internal");
        jpeg_destroy_decompress(&decoder);
        return -1;
    }
    image->format = pixel_format::kRgb;
    image->depth = 32;
    image->rowstride = image->width * 4;
    if (!xc_image_alloc_data(image)) {
        jpeg_destroy_decompress(&decoder);
        return -1;
    }
#ifdef JCS_EXTENSIONS
    if (decoder.out_color_space == JCS_EXT_BGRA) read_rows_in_place(image);
    else read_rows_converted(image);
#else
    read_rows_converted(image);
#endif
    jpeg_finish_decompress(&decoder);
    jpeg_destroy_decompress(&decoder);
    return 1;
}

int jpeg_load_data(xc_image *image, const char *filename) {
    if (!filename) return -1;
    return decode_jpeg(image, Source{filename});
}

// The compressor lives on the saving call's stack; its jump restores the
// signal mask.
struct JpegEncoder {
    jpeg_compress_struct cinfo;
    jpeg_error_mgr errors;
    sigjmp_buf jump;
};

[[noreturn]] void jump_on_encode_error(j_common_ptr cinfo) {
    (*cinfo->err->output_message)(cinfo);
    siglongjmp(*static_cast<sigjmp_buf *>(cinfo->client_data), 1);
}

// "quality=N" anywhere in the options, parsed base 10 without a range check
// (libjpeg clamps it); otherwise 80 for small images and 60 for others.
int quality_of(const char *options, JDIMENSION width, JDIMENSION height) {
    const char *given = options ? std::strstr(options, "quality=") : nullptr;
    if (!given) return width < 300 && height < 300 ? 80 : 60;
    const long value = std::strtol(given + 8, nullptr, 10);
    return value > INT_MAX ? INT_MAX : value < INT_MIN ? INT_MIN : static_cast<int>(value);
}

int encode_jpeg(JpegEncoder *e, const xc_image *image, const xg_area &area, FILE *file,
                const char *options) {
    if (sigsetjmp(e->jump, 1) != 0) {
        jpeg_destroy_compress(&e->cinfo);
        return -1;
    }
    e->cinfo.err = jpeg_std_error(&e->errors);
    e->errors.error_exit = jump_on_encode_error;
    e->errors.output_message = print_message;
    e->cinfo.client_data = &e->jump;
    jpeg_create_compress(&e->cinfo);
    fbc::log_out("cinfo.in_color_space = %d\n", static_cast<int>(e->cinfo.in_color_space));
    jpeg_stdio_dest(&e->cinfo, file);
    const auto width = static_cast<JDIMENSION>(area.x2 - area.x1);
    const auto height = static_cast<JDIMENSION>(area.y2 - area.y1);
    e->cinfo.image_width = width;
    e->cinfo.image_height = height;
    e->cinfo.input_components = 3;
    e->cinfo.in_color_space = JCS_RGB;
    jpeg_set_defaults(&e->cinfo);
    jpeg_set_quality(&e->cinfo, quality_of(options, width, height), TRUE);
    jpeg_start_compress(&e->cinfo, TRUE);
    JSAMPARRAY batch = (*e->cinfo.mem->alloc_sarray)(reinterpret_cast<j_common_ptr>(&e->cinfo),
                                                     JPOOL_IMAGE, width * 3, kMaxBatchRows);
    // Source rows advance by the image's full width.
    const auto *src = reinterpret_cast<const uint32_t *>(image->data) +
                      static_cast<size_t>(area.y1) * static_cast<size_t>(image->width) +
                      static_cast<size_t>(area.x1);
    while (e->cinfo.next_scanline < height) {
        JDIMENSION rows = height - e->cinfo.next_scanline;
        if (rows > kMaxBatchRows) rows = kMaxBatchRows;
        for (JDIMENSION i = 0; i < rows; ++i, src += image->width)
            pack_rgb_row(src, batch[i], static_cast<int32_t>(width));
        jpeg_write_scanlines(&e->cinfo, batch, rows);
    }
    jpeg_finish_compress(&e->cinfo);
    jpeg_destroy_compress(&e->cinfo);
    return 0;
}

int jpeg_save(xc_image *image, const char *filename, const xg_area *area, const char *options) {
    const xg_area rect = save_area_of(image, area);
    if (!save_area_is_valid(image, rect)) return -1;
    FILE *file = std::fopen(filename, "wb");
    if (!file) return -1;
    JpegEncoder encoder;
    const int result = encode_jpeg(&encoder, image, rect, file, options);
    std::fclose(file);
    return result;
}

const char *const kExtensions[] = {"jpg", "jpeg", nullptr};

}  // namespace

int decode_jpeg(xc_image *image, const Source &source) {
    FILE *file = open_source(source);
    if (!file) {
        fbc::log_err("Couldn't load '%s' image:%s\n", source.name, std::strerror(errno));
        return -1;
    }
    const int result = decode_stream(image, source.name, file);
    std::fclose(file);
    return result;
}

}  // namespace fbc

extern "C" {
xc_image_loader jpeg_loader = {fbc::kExtensions,
                               "jpg",
                               fbc::jpeg_load_data,
                               fbc::jpeg_load_info,
                               fbc::jpeg_save,
                               nullptr,
                               nullptr,
                               nullptr,
                               nullptr};
}
