// One span primitive or converter, or pixman doing the same job, run a
// given number of times over 800x480 buffers: the program that count.sh
// runs under qemu-arm with the instruction-counting plugin. Everything
// before the timed loop is the same for every iteration count, so the
// difference of two counts is the work alone.
//
//   device_count list                          one line per operation: its name, pixman's
//                                              dithering job (or -), then pixman's jobs
//   device_count OP SIDE CONTENT ITERATIONS    SIDE: ours, reference, dithered or pixman:N
//                                              (N-th job); CONTENT: icon or random
#include <pixman.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

#include "bench/content.hpp"
#include "fbcompose/pixel.h"
#include "fbcompose/transform.h"
#include "pixel/kernel_table.hpp"

namespace {

using bench::Canvas;
constexpr int kWidth = Canvas::kWidth, kHeight = Canvas::kHeight;
constexpr size_t kPixels = Canvas::kPixels;

constexpr uint32_t kOpaqueColor = 0xFF336699, kHalfColor = 0x80193350, kHalfWhite = 0x80FFFFFF;

// What the job reads, by pixel kind.
enum class Src { kNone, kArgb, kOpaque, k565, kTexture };

const void *source(const Canvas &c, Src s) {
    switch (s) {
        case Src::kArgb: return c.src.data();
        case Src::kOpaque: return c.opaque.data();
        case Src::k565: return c.src16.data();
        case Src::kTexture: return c.tex.data();
        default: return nullptr;
    }
}

using Kernel =
    std::variant<xc_fill_func, xc_draw_func, xc_alpha_func, xc_alpha_texture_func, xc_convert_func>;

// Ours: one call per row, as the drawing code makes them; a converter takes
// the whole canvas in one call, as for one damaged rectangle the panel's size.
std::function<void()> ours(const Kernel &k, Src src, bool dst16, uint32_t color, Canvas &c) {
    const auto *s32 = static_cast<const uint32_t *>(source(c, src));
    const uint16_t *s16 = c.src16.data();
    uint32_t *d32 = c.dst.data();
    uint16_t *d16 = c.dst16.data();
    const uint8_t *cov = c.cov.data();
    const uint32_t *tex = c.tex.data();
    // Row y's source and destination.
    const auto in = [=](int y) -> const void * {
        return src == Src::k565 ? static_cast<const void *>(s16 + y * kWidth) : s32 + y * kWidth;
    };
    const auto out = [=](int y) -> void * {
        return dst16 ? static_cast<void *>(d16 + y * kWidth) : d32 + y * kWidth;
    };
    return std::visit(
        [=](auto f) -> std::function<void()> {
            using F = decltype(f);
            if constexpr (std::is_same_v<F, xc_fill_func>)
                return [=] {
                    for (int y = 0; y < kHeight; ++y) f(color, out(y), kWidth);
                };
            else if constexpr (std::is_same_v<F, xc_draw_func>)
                return [=] {
                    for (int y = 0; y < kHeight; ++y) f(in(y), out(y), kWidth, color);
                };
            else if constexpr (std::is_same_v<F, xc_alpha_func>)
                return [=] {
                    for (int y = 0; y < kHeight; ++y) f(cov + y * kWidth, out(y), kWidth, color);
                };
            else if constexpr (std::is_same_v<F, xc_alpha_texture_func>)
                return [=] {
                    for (int y = 0; y < kHeight; ++y)
                        f(cov + y * kWidth, out(y), kWidth, tex + y * kWidth);
                };
            else return [=] { f(in(0), out(0), 0, 0, kWidth, kHeight, 0, 0); };
        },
        k);
}

// What stands in for the reference on this CPU: its row's pick.
Kernel chosen_for(const Kernel &k) {
    return std::visit([](auto f) -> Kernel { return fbc::px::chosen(f); }, k);
}

// pixman's side: images over the same pixels, made before the loop.

// kXbgr: the same words read with red and blue swapped, a format none of
// pixman's fast paths takes, so that its general path runs and dithers.
enum class Pix { kNone, kArgb, kXrgb, kXbgr, kRgb565, kA8, kSolid, kHalfSolid, kHalfMask };

using Image = std::shared_ptr<pixman_image_t>;

Image image(Canvas &c, Pix p, Src from, bool is_dst, bool rotated_out) {
    const auto release = [](pixman_image_t *i) { pixman_image_unref(i); };
    if (p == Pix::kNone) return nullptr;
    if (p == Pix::kSolid || p == Pix::kHalfSolid || p == Pix::kHalfMask) {
        const pixman_color_t color =
            p == Pix::kSolid       ? pixman_color_t{0x3333, 0x6666, 0x9999, 0xFFFF}
            : p == Pix::kHalfSolid ? pixman_color_t{0x1919, 0x3333, 0x5050, 0x8080}
                                   : pixman_color_t{0, 0, 0, 0x8080};
        return Image(pixman_image_create_solid_fill(&color), release);
    }
    const pixman_format_code_t format = p == Pix::kXrgb     ? PIXMAN_x8r8g8b8
                                        : p == Pix::kXbgr   ? PIXMAN_x8b8g8r8
                                        : p == Pix::kRgb565 ? PIXMAN_r5g6b5
                                        : p == Pix::kA8     ? PIXMAN_a8
                                                            : PIXMAN_a8r8g8b8;
    void *bits = p == Pix::kA8 ? static_cast<void *>(c.cov.data())
                 : is_dst ? (p == Pix::kRgb565 ? static_cast<void *>(c.dst16.data()) : c.dst.data())
                          : const_cast<void *>(source(c, from));
    const int w = rotated_out ? kHeight : kWidth, h = rotated_out ? kWidth : kHeight;
    const int bpp = PIXMAN_FORMAT_BPP(format) / 8;
    return Image(pixman_image_create_bits(format, w, h, static_cast<uint32_t *>(bits), w * bpp),
                 release);
}

// Nearest sampling turned by 90 or 270 degrees: the source's w x h into h x w.
void rotate(pixman_image_t *src, int rotation) {
    const pixman_fixed_t one = pixman_fixed_1;
    pixman_transform_t t;
    if (rotation == 90) {  // out(i, j) = src(j, h - 1 - i)
        t = {{{0, one, 0}, {-one, 0, pixman_int_to_fixed(kHeight)}, {0, 0, one}}};
    } else {  // out(i, j) = src(w - 1 - j, i)
        t = {{{0, -one, pixman_int_to_fixed(kWidth)}, {one, 0, 0}, {0, 0, one}}};
    }
    pixman_image_set_transform(src, &t);
    pixman_image_set_filter(src, PIXMAN_FILTER_NEAREST, nullptr, 0);
}

// A job for pixman, described; made into a run for a content.
struct Job {
    std::string name;
    std::function<std::function<void()>(Canvas &)> make;
};

Job composite(std::string name, pixman_op_t op, Pix src, Src from, Pix mask, Pix dst,
              int rotation = 0, bool dither = false) {
    return {std::move(name), [=](Canvas &c) -> std::function<void()> {
                Image s = image(c, src, from, false, false);
                Image m = image(c, mask, from, false, false);
                Image d = image(c, dst, from, true, rotation != 0);
                if (dither) pixman_image_set_dither(d.get(), PIXMAN_DITHER_ORDERED_BAYER_8);
                if (rotation) rotate(s.get(), rotation);
                const int w = rotation ? kHeight : kWidth, h = rotation ? kWidth : kHeight;
                return [=] {
                    pixman_image_composite32(op, s.get(), m.get(), d.get(), 0, 0, 0, 0, 0, 0, w, h);
                };
            }};
}

Job fill(uint32_t color) {
    return {"pixman_fill", [=](Canvas &c) -> std::function<void()> {
                return [&c, color] {
                    if (!pixman_fill(c.dst.data(), kWidth, 32, 0, 0, kWidth, kHeight, color))
                        std::abort();
                };
            }};
}

Job blt(int bpp) {
    return {"pixman_blt", [=](Canvas &c) -> std::function<void()> {
                auto *s = static_cast<uint32_t *>(
                    const_cast<void *>(source(c, bpp == 16 ? Src::k565 : Src::kArgb)));
                auto *d = bpp == 16 ? reinterpret_cast<uint32_t *>(c.dst16.data()) : c.dst.data();
                const int stride = kWidth * bpp / 32;
                return [=] {
                    if (!pixman_blt(s, d, stride, stride, bpp, bpp, 0, 0, 0, 0, kWidth, kHeight))
                        std::abort();
                };
            }};
}

struct Op {
    const char *name;
    Kernel reference;
    Src src;
    bool dst16;
    uint32_t color;
    std::vector<Job> pixman;  // the same job done by pixman, in each way a user might ask for it
    Job dithered = {};        // pixman's nearest dithering job, for the 565 converters
};

// pixman's ordered dither (Bayer 8x8) into RGB565, turned by `rotation`.
Job dithered_565(int rotation) {
    const std::string turn = rotation ? " rot " + std::to_string(rotation) : "";
    return composite("SRC x8b8g8r8" + turn + " -> r5g6b5, Bayer 8", PIXMAN_OP_SRC, Pix::kXbgr,
                     Src::kArgb, Pix::kNone, Pix::kRgb565, rotation, true);
}

std::vector<Op> ops() {
    const auto over = PIXMAN_OP_OVER, copy = PIXMAN_OP_SRC;
    using P = Pix;
    using S = Src;
    return {
        {"copy_color_rgba_to_rgba",
         xc_copy_color_rgba_to_rgba,
         S::kNone,
         false,
         kOpaqueColor,
         {fill(kOpaqueColor)}},
        {"copy_color_rgb_to_rgba",
         xc_copy_color_rgb_to_rgba,
         S::kNone,
         false,
         kOpaqueColor,
         {fill(kOpaqueColor)}},
        {"blend_color_rgba_to_rgb",
         xc_blend_color_rgba_to_rgb,
         S::kNone,
         false,
         kHalfColor,
         {composite("OVER solid -> x8r8g8b8", over, P::kHalfSolid, S::kNone, P::kNone, P::kXrgb),
          composite("OVER solid, solid mask -> x8r8g8b8", over, P::kSolid, S::kNone, P::kHalfMask,
                    P::kXrgb)}},
        {"blend_color_rgba_to_rgba",
         xc_blend_color_rgba_to_rgba,
         S::kNone,
         false,
         kHalfColor,
         {composite("OVER solid -> a8r8g8b8", over, P::kHalfSolid, S::kNone, P::kNone, P::kArgb),
          composite("OVER solid, solid mask -> a8r8g8b8", over, P::kSolid, S::kNone, P::kHalfMask,
                    P::kArgb)}},
        {"blend_pixels_rgba_to_rgb",
         xc_blend_pixels_rgba_to_rgb,
         S::kArgb,
         false,
         0,
         {composite("OVER a8r8g8b8 -> x8r8g8b8", over, P::kArgb, S::kArgb, P::kNone, P::kXrgb)}},
        {"blend_pixels_rgba_to_rgba",
         xc_blend_pixels_rgba_to_rgba,
         S::kArgb,
         false,
         0,
         {composite("OVER a8r8g8b8 -> a8r8g8b8", over, P::kArgb, S::kArgb, P::kNone, P::kArgb)}},
        {"copy_pixels_rgba_to_rgba",
         xc_copy_pixels_rgba_to_rgba,
         S::kArgb,
         false,
         0,
         {composite("SRC a8r8g8b8 -> a8r8g8b8", copy, P::kArgb, S::kArgb, P::kNone, P::kArgb),
          blt(32)}},
        {"copy_pixels_rgb_to_rgba",
         xc_copy_pixels_rgb_to_rgba,
         S::kOpaque,
         false,
         0,
         {composite("SRC x8r8g8b8 -> a8r8g8b8", copy, P::kXrgb, S::kOpaque, P::kNone, P::kArgb)}},
        {"copy_pixels_rgba_to_16",
         xc_copy_pixels_rgba_to_16,
         S::kOpaque,
         true,
         0,
         {composite("SRC x8r8g8b8 -> r5g6b5", copy, P::kXrgb, S::kOpaque, P::kNone, P::kRgb565)}},
        {"copy_pixels_16_to_rgb",
         xc_copy_pixels_16_to_rgb,
         S::k565,
         false,
         0,
         {composite("SRC r5g6b5 -> x8r8g8b8", copy, P::kRgb565, S::k565, P::kNone, P::kXrgb)}},
        {"copy_pixels_16_to_16",
         xc_copy_pixels_16_to_16,
         S::k565,
         true,
         0,
         {composite("SRC r5g6b5 -> r5g6b5", copy, P::kRgb565, S::k565, P::kNone, P::kRgb565),
          blt(16)}},
        {"blend_alpha_color_rgba_to_rgb",
         xc_blend_alpha_color_rgba_to_rgb,
         S::kNone,
         false,
         kOpaqueColor,
         {composite("OVER solid, a8 mask -> x8r8g8b8", over, P::kSolid, S::kNone, P::kA8,
                    P::kXrgb)}},
        {"blend_alpha_color_rgba_to_rgba",
         xc_blend_alpha_color_rgba_to_rgba,
         S::kNone,
         false,
         kOpaqueColor,
         {composite("OVER solid, a8 mask -> a8r8g8b8", over, P::kSolid, S::kNone, P::kA8,
                    P::kArgb)}},
        {"blend_alpha_texture_rgba_to_rgb",
         xc_blend_alpha_texture_rgba_to_rgb,
         S::kTexture,
         false,
         0,
         {composite("OVER a8r8g8b8, a8 mask -> x8r8g8b8", over, P::kArgb, S::kTexture, P::kA8,
                    P::kXrgb)}},
        {"blend_alpha_texture_rgba_to_rgba",
         xc_blend_alpha_texture_rgba_to_rgba,
         S::kTexture,
         false,
         0,
         {composite("OVER a8r8g8b8, a8 mask -> a8r8g8b8", over, P::kArgb, S::kTexture, P::kA8,
                    P::kArgb)}},
        {"blend_pixels_mul_color_rgba_to_rgb",
         xc_blend_pixels_mul_color_rgba_to_rgb,
         S::kArgb,
         false,
         kHalfWhite,
         {composite("OVER a8r8g8b8, solid mask -> x8r8g8b8", over, P::kArgb, S::kArgb, P::kHalfMask,
                    P::kXrgb)}},
        {"blend_pixels_mul_color_rgba_to_rgba",
         xc_blend_pixels_mul_color_rgba_to_rgba,
         S::kArgb,
         false,
         kHalfWhite,
         {composite("OVER a8r8g8b8, solid mask -> a8r8g8b8", over, P::kArgb, S::kArgb, P::kHalfMask,
                    P::kArgb)}},
        {"blend_pixels_mul_color_rgb_to_rgb",
         xc_blend_pixels_mul_color_rgb_to_rgb,
         S::kOpaque,
         false,
         kHalfColor,
         {composite("OVER x8r8g8b8, solid mask -> x8r8g8b8", over, P::kXrgb, S::kOpaque,
                    P::kHalfMask, P::kXrgb)}},
        {"blend_pixels_mul_color_rgb_to_rgba",
         xc_blend_pixels_mul_color_rgb_to_rgba,
         S::kOpaque,
         false,
         kHalfColor,
         {composite("OVER x8r8g8b8, solid mask -> a8r8g8b8", over, P::kXrgb, S::kOpaque,
                    P::kHalfMask, P::kArgb)}},
        // pixman does not dither on its fast paths: the dithering converters
        // are measured against its plain 565 copy, and beside its dithering
        // general path.
        {"convert_rgba_to_16",
         xc_convert_rgba_to_16,
         S::kArgb,
         true,
         0,
         {composite("SRC a8r8g8b8 -> r5g6b5", copy, P::kArgb, S::kArgb, P::kNone, P::kRgb565)},
         dithered_565(0)},
        {"convert_rgba_to_16_90",
         xc_convert_rgba_to_16_90,
         S::kArgb,
         true,
         0,
         {composite("SRC rot 90 -> r5g6b5", copy, P::kArgb, S::kArgb, P::kNone, P::kRgb565, 90)},
         dithered_565(90)},
        {"convert_rgba_to_16_270",
         xc_convert_rgba_to_16_270,
         S::kArgb,
         true,
         0,
         {composite("SRC rot 270 -> r5g6b5", copy, P::kArgb, S::kArgb, P::kNone, P::kRgb565, 270)},
         dithered_565(270)},
        {"convert_rgba_to_18", xc_convert_rgba_to_18, S::kArgb, false, 0, {}},
        {"convert_rgba_to_18_90", xc_convert_rgba_to_18_90, S::kArgb, false, 0, {}},
        {"convert_rgba_to_18_270", xc_convert_rgba_to_18_270, S::kArgb, false, 0, {}},
        {"convert_rgba_to_32",
         xc_convert_rgba_to_32,
         S::kArgb,
         false,
         0,
         {composite("SRC a8r8g8b8 -> x8r8g8b8", copy, P::kArgb, S::kArgb, P::kNone, P::kXrgb),
          blt(32)}},
        {"convert_rgba_to_32_90",
         xc_convert_rgba_to_32_90,
         S::kArgb,
         false,
         0,
         {composite("SRC rot 90 -> x8r8g8b8", copy, P::kArgb, S::kArgb, P::kNone, P::kXrgb, 90)}},
        {"convert_rgba_to_32_270",
         xc_convert_rgba_to_32_270,
         S::kArgb,
         false,
         0,
         {composite("SRC rot 270 -> x8r8g8b8", copy, P::kArgb, S::kArgb, P::kNone, P::kXrgb, 270)}},
    };
}

// Blits onto an 800x480 canvas from a source of the row's size, beside
// pixman's scaled composite of the same pixels (edges padded, so that
// neither side reads outside the source).
struct Blit {
    const char *name;
    int sw, sh;
    int smooth;
    bool over;  // an alpha source blended, else an opaque one copied
};

const Blit kBlits[] = {
    {"blit_nearest_copy_1.5x_up", 533, 320, 0, false},
    {"blit_nearest_over_1.5x_up", 533, 320, 0, true},
    {"blit_linear_2x_up", 400, 240, 1, false},
    {"blit_linear_1.5x_up", 533, 320, 1, false},
    {"blit_linear_0.5x_down", 1600, 960, 1, false},
    {"blit_box_0.25x_down", 3200, 1920, 1, false},
};

const char *pixman_blit_job(const Blit &b) {
    return b.over     ? "OVER nearest a8r8g8b8 -> x8r8g8b8"
           : b.smooth ? "SRC bilinear x8r8g8b8 -> x8r8g8b8"
                      : "SRC nearest x8r8g8b8 -> x8r8g8b8";
}

// The source's pixels: opaque noise, or premultiplied content of the kind asked for.
xc_image *blit_source(const Blit &b, bool icon) {
    xc_image *image = b.over ? xc_image_new_from_data(b.sw, b.sh, nullptr, 32, 0, 0)
                             : xc_image_create(b.sw, b.sh);
    std::mt19937 rng(1);
    uint32_t run_left = 0, run_kind = 0;
    auto *p = reinterpret_cast<uint32_t *>(image->data);
    for (int i = 0; i < b.sw * b.sh; ++i) {
        uint32_t a = 255;
        if (b.over && icon) {
            if (run_left == 0) run_left = 1 + rng() % 32, run_kind = rng() % 3;
            --run_left;
            a = run_kind == 0 ? 0u : run_kind == 1 ? 255u : 1 + rng() % 254;
        } else if (b.over) {
            a = rng() & 255;
        }
        uint32_t word = a << 24;
        for (int shift = 0; shift < 24; shift += 8) word |= ((rng() & 255) * a >> 8) << shift;
        p[i] = word;
    }
    return image;
}

std::function<void()> blit_run(const Blit &b, bool ours, bool icon) {
    xc_image *src = blit_source(b, icon);
    xc_image *dst = xc_image_create(kWidth, kHeight);
    if (ours)
        return [=] {
            const xg_area clip{0, 0, kWidth, kHeight};
            xc_image_blit(src, dst, &clip, 0, 0, b.sw, b.sh, 0, 0, kWidth, kHeight, b.smooth,
                          0xFFFFFFFF);
        };
    const auto wrap = [](xc_image *i, pixman_format_code_t f) {
        return pixman_image_create_bits(f, i->width, i->height,
                                        reinterpret_cast<uint32_t *>(i->data), i->rowstride);
    };
    pixman_image_t *s = wrap(src, b.over ? PIXMAN_a8r8g8b8 : PIXMAN_x8r8g8b8);
    pixman_image_t *d = wrap(dst, PIXMAN_x8r8g8b8);
    pixman_transform_t t;
    pixman_transform_init_scale(&t, pixman_double_to_fixed(double(b.sw) / kWidth),
                                pixman_double_to_fixed(double(b.sh) / kHeight));
    pixman_image_set_transform(s, &t);
    pixman_image_set_filter(s, b.smooth ? PIXMAN_FILTER_BILINEAR : PIXMAN_FILTER_NEAREST, nullptr,
                            0);
    pixman_image_set_repeat(s, PIXMAN_REPEAT_PAD);
    const pixman_op_t op = b.over ? PIXMAN_OP_OVER : PIXMAN_OP_SRC;
    return [=] { pixman_image_composite32(op, s, nullptr, d, 0, 0, 0, 0, 0, 0, kWidth, kHeight); };
}

int usage() {
    std::fprintf(stderr,
                 "usage: device_count list\n"
                 "       device_count OP ours|reference|dithered|pixman:N icon|random "
                 "ITERATIONS\n");
    return 2;
}

}  // namespace

int main(int argc, char **argv) {
    const std::vector<Op> list = ops();
    if (argc == 2 && std::string_view(argv[1]) == "list") {
        for (const Op &op : list) {
            std::printf("%s\t%s", op.name, op.dithered.make ? op.dithered.name.c_str() : "-");
            for (const Job &job : op.pixman) std::printf("\t%s", job.name.c_str());
            std::printf("\n");
        }
        // A blit has no dithering job: its one pixman job goes in the jobs' column.
        for (const Blit &b : kBlits) std::printf("%s\t-\t%s\n", b.name, pixman_blit_job(b));
        return 0;
    }
    if (argc != 5) return usage();
    const std::string_view name = argv[1], side = argv[2], content = argv[3];
    const int iterations = std::atoi(argv[4]);
    for (const Blit &b : kBlits)
        if (name == b.name && iterations >= 0 && (side == "ours" || side == "pixman:0")) {
            const std::function<void()> run = blit_run(b, side == "ours", content == "icon");
            for (int i = 0; i < iterations; ++i) run();
            return 0;
        }
    const Op *op = nullptr;
    for (const Op &o : list)
        if (name == o.name) op = &o;
    if (!op || (content != "icon" && content != "random") || iterations < 0) return usage();

    Canvas c(content == "icon" ? bench::Content::kIcons : bench::Content::kRandom);
    std::function<void()> run;
    if (side == "ours") run = ours(chosen_for(op->reference), op->src, op->dst16, op->color, c);
    else if (side == "reference") run = ours(op->reference, op->src, op->dst16, op->color, c);
    else if (side == "dithered" && op->dithered.make) run = op->dithered.make(c);
    else if (side.substr(0, 7) == "pixman:") {
        const size_t job = size_t(std::atoi(argv[2] + 7));
        if (job >= op->pixman.size()) return usage();
        run = op->pixman[job].make(c);
    } else {
        return usage();
    }
    for (int i = 0; i < iterations; ++i) run();
    // Keeps the stores: the output is read back once.
    uint32_t sum = 0;
    for (size_t i = 0; i < kPixels; ++i) sum += c.dst[i] + c.dst16[i];
    std::printf("%08x\n", unsigned(sum));
    return 0;
}
