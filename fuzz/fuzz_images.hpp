// What the drawing targets share: images of every kind the constructors
// make, and coordinates, areas and colours taken off the input. Sizes stay
// small so that each run is quick; coordinates range over all of int32,
// with the values near 0 and near the limits that matter most picked
// often.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "fuzz_support.hpp"

namespace fuzz {

// Anywhere in int32: near the images, near either limit, or any value.
inline int32_t coord(Input &in) {
    const auto pick = in.take<uint8_t>();
    const auto near = static_cast<int32_t>(static_cast<int8_t>(pick & 0xFC)) >> 2;
    switch (pick & 3) {
        case 0: return near;
        case 1: return INT32_MAX - (near & 0x1F);
        case 2: return INT32_MIN + (near & 0x1F);
        default: return in.take<int32_t>();
    }
}

// A braced list takes its values in order.
inline xg_area area(Input &in) { return {coord(in), coord(in), coord(in), coord(in)}; }

// No modulation, opaque, transparent, or any word.
inline uint32_t colour(Input &in) {
    static constexpr uint32_t kCommon[] = {0xFFFFFFFFu, 0xFF336699u, 0x80FF0000u, 0x00FFFFFFu};
    const auto pick = in.take<uint8_t>();
    return pick < 192 ? kCommon[pick % 4] : in.take<uint32_t>();
}

// A side from -2 to 29: empty and negative sizes included.
inline int32_t side(Input &in) { return int32_t{in.take<uint8_t>() % 32} - 2; }

// Owns the images it makes and the caller buffers they wrap. Every block
// is allocated at exactly the size the image record claims, so a read or
// write past it is caught.
class Images {
public:
    ~Images() {
        for (xc_image *image : images_) xc_image_unref(image);
    }

    xc_image *make(Input &in) {
        const int32_t w = side(in), h = side(in);
        const auto kind = in.take<uint8_t>();
        const bool copy = kind & 0x10, with_data = kind & 0x20;
        // Only a buffer of ours is foreign: a block the constructor makes
        // (copied or not) and is told is foreign is never freed, by design.
        auto foreign = [copy](const void *data) { return data && !copy ? 1 : 0; };
        xc_image *image = nullptr;
        switch (kind % 4) {
            case 0: image = xc_image_create(w, h); break;
            case 1: {
                static constexpr int32_t kDepths[] = {32, 16, 1, 24, 8, 0, 18, 255};
                const int32_t depth = kDepths[(kind >> 6) | (in.take<uint8_t>() & 4)];
                const int64_t pitch = int64_t{w} * (depth == 16 && !copy ? 2 : 4);
                void *data = with_data ? buffer(pitch * h) : nullptr;
                image = xc_image_new_from_data(w, h, data, depth, copy, foreign(data));
                break;
            }
            case 2: {
                static constexpr uint32_t kFormats[] = {0, 1, 2, 3, 8, 4, 9, 0x80000000u};
                const uint32_t format = kFormats[(kind >> 6) | (in.take<uint8_t>() & 4)];
                const int32_t bpp = format == 2 ? 3 : format == 3 ? 2 : 4;
                const int32_t rowstride = pitch(in, w, bpp);
                const int64_t bytes = int64_t{rowstride >= 1 ? rowstride : w * bpp} * h;
                void *data = with_data ? buffer(bytes) : nullptr;
                image = xc_image_new_with_data(w, h, data, format, copy, foreign(data), rowstride);
                break;
            }
            default:
                image = xc_image_new();
                image->width = w;
                image->height = h;
                image->depth = kind >> 4;
                break;
        }
        images_.push_back(image);
        paint(image, in.take<uint8_t>());
        return image;
    }

private:
    // The default, a padded or odd one, a short one, or any small value.
    static int32_t pitch(Input &in, int32_t w, int32_t bpp) {
        const auto pick = in.take<uint8_t>();
        switch (pick & 3) {
            case 0: return 0;
            case 1: return w * bpp + (pick >> 2) % 9;
            case 2: return (pick >> 2) % 8;
            default: return (pick >> 2) - 8;
        }
    }

    void *buffer(int64_t bytes) {
        return bytes > 0 ? buffers_.emplace_back(static_cast<size_t>(bytes)).data() : nullptr;
    }

    // Known pixels, with alpha bytes of 0, 255 and in between.
    static void paint(xc_image *image, uint8_t seed) {
        if (!image->data || image->rowstride <= 0 || image->height <= 0) return;
        const size_t bytes = size_t(image->rowstride) * size_t(image->height);
        for (size_t i = 0; i < bytes; ++i) image->data[i] = uint8_t(seed + i * 77 + (i >> 3));
    }

    std::vector<xc_image *> images_;
    std::vector<std::vector<uint8_t>> buffers_;  // zeroed, freed after the images
};

}  // namespace fuzz
