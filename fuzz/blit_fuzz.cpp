// The blit and every scanline drawer called directly: arbitrary int32
// rectangles, areas and clips over images of every kind, the source and
// destination sometimes one image.
#include "fuzz_images.hpp"

namespace {

const xc_scale_func kDrawers[] = {xc_scale_noscale,
                                  xc_scale_sample,
                                  xc_scale_sample_rgb16_to_rgb16,
                                  xc_scale_h,
                                  xc_scale_v,
                                  xc_scale_smooth,
                                  xc_scale_linear,
                                  xc_image_scale_down_x,
                                  xc_image_scale_down_y,
                                  xc_image_scale_down_xy};
constexpr size_t kDrawerCount = sizeof kDrawers / sizeof kDrawers[0];

void blit(fuzz::Input &in, xc_image *src, xc_image *dst, const xg_area &clip) {
    int32_t r[8];
    for (int32_t &v : r) v = fuzz::coord(in);
    const int smooth = in.take<uint8_t>() & 1;
    xc_image_blit(src, dst, &clip, r[0], r[1], r[2], r[3], r[4], r[5], r[6], r[7], smooth,
                  fuzz::colour(in));
}

void draw_directly(fuzz::Input &in, xc_image *src, xc_image *dst, const xg_area &clip,
                   uint8_t which) {
    xg_area s = fuzz::area(in), d = fuzz::area(in), c = clip;
    const uint32_t colour = fuzz::colour(in);
    if (which == kDrawerCount) {
        // The clipping step, then the drawer the blit would pick after it.
        if (xc_scale_handle_clip(src, dst, &c, &s, &d))
            xc_scale_sample(src, dst, &c, &s, &d, colour);
        return;
    }
    kDrawers[which](src, dst, &c, &s, &d, colour);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::Input in(data, size);
    fuzz::Images images;
    xc_image *src = images.make(in);
    xc_image *dst = in.take<uint8_t>() % 4 == 0 ? src : images.make(in);
    const xg_area clip = fuzz::area(in);
    // A few calls per input, so that one image sees drawings pile up.
    for (int calls = 1 + in.take<uint8_t>() % 3; calls > 0; --calls) {
        const auto which = static_cast<uint8_t>(in.take<uint8_t>() % (kDrawerCount + 2));
        if (which == kDrawerCount + 1) blit(in, src, dst, clip);
        else draw_directly(in, src, dst, clip, which);
    }
    return 0;
}
