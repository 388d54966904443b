// Box reductions into new images, and the one-dimensional resampler.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "core/log.hpp"
#include "core/pixel_bounds.hpp"
#include "core/size_check.hpp"
#include "fbcompose/loader.h"
#include "fbcompose/transform.h"
#include "transform/scale_common.hpp"
#include "transform/scale_smooth.hpp"

namespace fbc {
namespace {

bool usable(xc_image *src, const char *caller) {
    if (src && !src->data && src->loader) xc_image_load_data(src);
    if (src && rows_addressable(src, pointer_step(src)) && src->width > 0 && src->height > 0)
        return true;
    fbc::log_out("%s: no pixels to scale\n", caller);
    return false;
}

// An empty result like the source: transparent with alpha, else a canvas.
xc_image *result_like(const xc_image *src, int32_t width, int32_t height) {
    xc_image *result = src->has_alpha ? xc_image_new_from_data(width, height, nullptr, 32, 0, 0)
                                      : xc_image_create(width, height);
    result->no_cache = 1;
    if (result->data)
        std::memset(result->data, 0,
                    static_cast<size_t>(result->rowstride) * static_cast<size_t>(height));
    return result;
}

// The whole source drawn into a new width x height image; drawing onto
// zeroed pixels copies (blends over transparent black add nothing).
xc_image *scaled_into(const xc_image *src, int32_t width, int32_t height, xc_scale_func drawer) {
    xc_image *result = result_like(src, width, height);
    const xg_area whole{0, 0, width, height};
    const xg_area source{0, 0, src->width, src->height};
    if (result->data) drawer(src, result, &whole, &source, &whole, kNoModulation);
    return result;
}

xc_image *reduce(xc_image *src, int32_t factor, const char *caller) {
    if (!usable(src, caller)) return nullptr;
    return scaled_into(src, std::max(src->width / factor, 1), std::max(src->height / factor, 1),
                       xc_image_scale_down_xy);
}

}  // namespace
}  // namespace fbc

extern "C" {

xc_image *xc_image_scale_down_2x(xc_image *src) {
    return fbc::reduce(src, 2, "xc_image_scale_down_2x");
}

xc_image *xc_image_scale_down_4x(xc_image *src) {
    return fbc::reduce(src, 4, "xc_image_scale_down_4x");
}

xc_image *xc_image_scale_down_xy_2(xc_image *src, int32_t width, int32_t height) {
    if (!fbc::usable(src, "xc_image_scale_down_xy_2")) return nullptr;
    if (width < 1 || height < 1) {
        fbc::log_out("xc_image_scale_down_xy_2: bad size %d x %d\n", width, height);
        return nullptr;
    }
    if (!fbc::made_size_fits(width, height)) {
        fbc::log_out("xc_image_scale_down_xy_2: refused size %d x %d\n", width, height);
        return nullptr;
    }
    xc_image *current = xc_image_ref(src);
    // Each pass halves the image, so the loop ends whatever the target.
    while (current->data && current->width >= 2 * int64_t{width} &&
           current->height >= 2 * int64_t{height}) {
        xc_image *half = fbc::scaled_into(current, current->width / 2, current->height / 2,
                                          xc_image_scale_down_xy);
        xc_image_unref(current);
        current = half;
    }
    xc_image *result =
        current->data ? fbc::scaled_into(current, width, height, xc_scale_smooth) : nullptr;
    xc_image_unref(current);
    if (!result || !result->data) {
        fbc::log_out("xc_image_scale_down_xy_2: no memory for %d x %d\n", width, height);
        xc_image_unref(result);
        return nullptr;
    }
    return result;
}

void xc_image_scale_1d(const uint32_t *src, int32_t src_count, int32_t src_step, uint32_t *dst,
                       int32_t dst_count, int32_t dst_step) {
    if (src_count < 1 || dst_count < 1) return;
    const fbc::Filter filter = dst_count < src_count / 2 ? fbc::Filter::box : fbc::Filter::linear;
    // Taps a block at a time: the memory stays small whatever the counts.
    constexpr int32_t kBlock = 1024;
    for (int32_t first = 0, end = 0; first < dst_count; first = end) {
        end = first + std::min(kBlock, dst_count - first);
        const auto taps = fbc::make_taps(filter, src_count, dst_count, first, end);
        for (int32_t i = first; i < end; ++i) {
            const fbc::Tap &t = taps[static_cast<size_t>(i - first)];
            const uint32_t *p = src + static_cast<intptr_t>(int64_t{t.first} * src_step);
            dst[static_cast<intptr_t>(int64_t{i} * dst_step)] =
                filter == fbc::Filter::box
                    ? fbc::px::box_average(reinterpret_cast<const uint8_t *>(p),
                                           intptr_t{4} * src_step, t.count,
                                           fbc::px::Divider(static_cast<uint32_t>(t.count)))
                    : fbc::lerp_word(p[0], t.count == 2 ? p[src_step] : p[0], t.f, true, 0);
        }
    }
}

}  // extern "C"
