// Transforms into new images over images of every kind: fit to a size in
// every mode, the colour matrix with any floats and bounds, rotation by any
// angle, the box reductions and the one-dimensional resampler with any
// steps. Target sizes stay small, or are absurd enough to be refused.
#include <vector>

#include "fuzz_images.hpp"

namespace {

// A small target side, or one so large (2^27 or more) or negative that the
// result is refused: sizes in between are honoured, and would only take
// time.
int32_t target(fuzz::Input &in) {
    const int32_t v = fuzz::coord(in);
    if (v >= -4 && v <= 40) return v;
    return in.take<uint8_t>() & 1 ? v | (1 << 27) : v & 0x3F;
}

void fit(fuzz::Input &in, xc_image *src) {
    static const char *const kModes[] = {nullptr,   "crop",  "matte", "matte-both",
                                         "distort", "Matte", ""};
    const int32_t w = target(in), h = target(in);
    xc_image_unref(xc_image_fit_size(src, w, h, kModes[in.take<uint8_t>() % 7]));
}

void colour_matrix(fuzz::Input &in, xc_image *src) {
    float matrix[16];
    int32_t lower[3], upper[3];
    for (float &m : matrix)
        m = in.take<uint8_t>() & 1 ? in.take<float>() : float(in.take<int8_t>()) / 16;
    for (int c = 0; c < 3; ++c) {
        lower[c] = in.take<uint8_t>() & 1 ? 0 : fuzz::coord(in);
        upper[c] = in.take<uint8_t>() & 1 ? 255 : fuzz::coord(in);
    }
    const bool copy = in.take<uint8_t>() % 4 == 0;
    xc_image_unref(
        xc_image_new_from_color_transformed_image(src, copy ? nullptr : matrix, lower, upper));
}

void reduce(fuzz::Input &in, xc_image *src) {
    switch (in.take<uint8_t>() % 3) {
        case 0: xc_image_unref(xc_image_scale_down_2x(src)); break;
        case 1: xc_image_unref(xc_image_scale_down_4x(src)); break;
        default: {
            const int32_t w = target(in), h = target(in);
            xc_image_unref(xc_image_scale_down_xy_2(src, w, h));
        }
    }
}

// Runs of up to 64 pixels with steps from -4 to 4, in arrays that hold
// exactly what the counts and steps reach.
void resample(fuzz::Input &in) {
    const int32_t src_count = in.take<uint8_t>() % 66 - 1, dst_count = in.take<uint8_t>() % 66 - 1;
    const int32_t src_step = in.take<uint8_t>() % 9 - 4, dst_step = in.take<uint8_t>() % 9 - 4;
    auto reach = [](int32_t count, int32_t step) {
        return count > 0 ? size_t(std::abs(step)) * size_t(count - 1) + 1 : 1;
    };
    std::vector<uint32_t> src(reach(src_count, src_step)), dst(reach(dst_count, dst_step));
    for (size_t i = 0; i < src.size(); ++i) src[i] = uint32_t(i * 0x01030507u);
    // A negative step walks back from the last element.
    uint32_t *s = src.data() + (src_step < 0 ? src.size() - 1 : 0);
    uint32_t *d = dst.data() + (dst_step < 0 ? dst.size() - 1 : 0);
    xc_image_scale_1d(s, src_count, src_step, d, dst_count, dst_step);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::Input in(data, size);
    fuzz::Images images;
    xc_image *src = images.make(in);
    switch (in.take<uint8_t>() % 5) {
        case 0: fit(in, src); break;
        case 1: colour_matrix(in, src); break;
        case 2: xc_image_unref(xc_image_new_from_rotated_image(src, fuzz::coord(in))); break;
        case 3: reduce(in, src); break;
        default: resample(in); break;
    }
    return 0;
}
