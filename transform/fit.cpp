// Fitting an image into a size: crop, matte (with or without enlarging) or
// distort, then one smoothed blit onto an opaque black result.
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "core/log.hpp"
#include "core/size_check.hpp"
#include "fbcompose/draw.h"
#include "fbcompose/transform.h"

namespace fbc {
namespace {

enum class Mode { crop, matte, matte_both, distort };

Mode mode_of(const char *mode) {
    if (!mode || std::strcmp(mode, "crop") == 0) return Mode::crop;
    if (std::strcmp(mode, "matte") == 0) return Mode::matte;
    if (std::strcmp(mode, "matte-both") == 0) return Mode::matte_both;
    if (std::strcmp(mode, "distort") == 0) return Mode::distort;
    return Mode::crop;
}

struct Plan {
    xg_rect src;
    xg_rect dst;
    bool zero_first = false;
};

// The wider case divides W0 x H by W like the taller one, not H0 x W by H:
// a true crop only when H equals H0. compat: kept as designed.
Plan crop(int64_t w0, int64_t h0, int64_t w, int64_t h) {
    Plan p{{0, 0, int32_t(w0), int32_t(h0)}, {0, 0, int32_t(w), int32_t(h)}};
    if (w0 * h < h0 * w) {
        p.src.h = int32_t((w0 * h) / w);
        p.src.y = int32_t((h0 - p.src.h) / 2);
    } else if (h0 * w < w0 * h) {
        p.src.w = int32_t((w0 * h) / w);
        p.src.x = int32_t((w0 - p.src.w) / 2);
    }
    return p;
}

Plan matte(int64_t w0, int64_t h0, int64_t w, int64_t h) {
    Plan p{{0, 0, int32_t(w0), int32_t(h0)}, {0, 0, int32_t(w), int32_t(h)}};
    if (w0 * h < h0 * w) {
        p.dst.w = int32_t((w0 * h) / h0);
        p.dst.x = int32_t((w - p.dst.w) / 2);
        p.zero_first = true;
    } else if (h0 * w < w0 * h) {
        p.dst.h = int32_t((h0 * w) / w0);
        p.dst.y = int32_t((h - p.dst.h) / 2);
        p.zero_first = true;
    }
    return p;
}

// Centred without scaling when the source fits, as matte otherwise.
Plan matte_both(int32_t w0, int32_t h0, int32_t w, int32_t h) {
    if (w0 <= w && h0 <= h) return {{0, 0, w0, h0}, {(w - w0) / 2, (h - h0) / 2, w0, h0}, true};
    return matte(w0, h0, w, h);
}

Plan plan(Mode mode, int32_t w0, int32_t h0, int32_t w, int32_t h) {
    switch (mode) {
        case Mode::matte: return matte(w0, h0, w, h);
        case Mode::matte_both: return matte_both(w0, h0, w, h);
        case Mode::distort: return {{0, 0, w0, h0}, {0, 0, w, h}};
        case Mode::crop: break;
    }
    return crop(w0, h0, w, h);
}

}  // namespace
}  // namespace fbc

extern "C" {

xc_image *xc_image_fit_size(xc_image *src, int32_t width, int32_t height, const char *mode) {
    // A zero size would divide by zero in the geometry.
    if (!src || width < 1 || height < 1 || src->width < 1 || src->height < 1) {
        fbc::log_out("xc_image_fit_size: bad size: %d x %d from %d x %d\n", width, height,
                     src ? src->width : 0, src ? src->height : 0);
        return nullptr;
    }
    if (!fbc::made_size_fits(width, height)) {
        fbc::log_out("xc_image_fit_size: refused size %d x %d: more than %lld pixels\n", width,
                     height, static_cast<long long>(fbc::kMaxMadePixels));
        return nullptr;
    }
    xc_image *result = xc_image_create(width, height);
    if (!result->data) {
        fbc::log_out("xc_image_fit_size: no memory for %d x %d\n", width, height);
        xc_image_unref(result);
        return nullptr;
    }
    result->has_alpha = 0;
    result->no_cache = 1;
    const fbc::Plan p = fbc::plan(fbc::mode_of(mode), src->width, src->height, width, height);
    if (p.zero_first)
        std::memset(result->data, 0,
                    static_cast<size_t>(result->rowstride) * static_cast<size_t>(height));
    fbc::log_out("%s: src: x = %d y = %d w = %d h = %d dst: x = %d y = %d w = %d h = %d\n",
                 "xc_image_fit_size", p.src.x, p.src.y, p.src.w, p.src.h, p.dst.x, p.dst.y, p.dst.w,
                 p.dst.h);
    const xg_area whole{0, 0, width, height};
    xg_area fill = whole;
    xc_rectangle_draw(result, &whole, &fill, 0xFF000000u);
    xc_image_blit(src, result, &whole, p.src.x, p.src.y, p.src.w, p.src.h, p.dst.x, p.dst.y,
                  p.dst.w, p.dst.h, 1, 0xFFFFFFFFu);
    return result;
}

}  // extern "C"
