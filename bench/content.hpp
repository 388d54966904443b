// The pixels the span-primitive benchmarks read and write, the same for the
// host benchmark and the device counter, so that their tables compare like
// with like. Two contents: icon-like, as artwork and glyph masks have, runs
// of 1 to 32 pixels that are transparent, opaque or partly covered in equal
// shares; and random alpha, every value equally likely. Colour is
// premultiplied by alpha. The source, the texture and the coverage mask each
// have runs of their own. Buffers start on a 32-byte boundary, so that no
// side gains from where an allocator happens to place them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <random>

namespace bench {

enum class Content { kIcons, kRandom };
inline constexpr Content kContents[] = {Content::kIcons, Content::kRandom};
inline const char *content_name(Content c) { return c == Content::kIcons ? "icon" : "random"; }

// Alpha or coverage values along a run of pixels.
class Alphas {
public:
    Alphas(Content content, std::mt19937 &rng) : content_(content), rng_(rng) {}
    uint32_t operator()() {
        if (content_ == Content::kRandom) return rng_() & 255;
        if (left_ == 0) left_ = 1 + rng_() % 32, kind_ = rng_() % 3;
        --left_;
        return kind_ == 0 ? 0u : kind_ == 1 ? 255u : 1 + rng_() % 254;
    }

private:
    Content content_;
    std::mt19937 &rng_;
    uint32_t left_ = 0, kind_ = 0;
};

template <class T>
class Pixels {
public:
    explicit Pixels(size_t n)
        : data_(static_cast<T *>(std::aligned_alloc(32, (n * sizeof(T) + 31) & ~size_t{31}))) {
        if (!data_) std::abort();
    }
    T *data() const { return data_.get(); }
    T &operator[](size_t i) const { return data_.get()[i]; }

private:
    struct Free {
        void operator()(T *p) const { std::free(p); }
    };
    std::unique_ptr<T, Free> data_;
};

// An 800x480 canvas of one content, row after row without gaps.
struct Canvas {
    static constexpr int kWidth = 800, kHeight = 480;
    static constexpr size_t kPixels = size_t(kWidth) * kHeight;

    explicit Canvas(Content content) {
        std::mt19937 rng(1);
        Alphas src_alpha(content, rng), tex_alpha(content, rng), coverage(content, rng);
        const auto premultiplied = [&](uint32_t a) {
            uint32_t word = a << 24;
            for (int shift = 0; shift < 24; shift += 8) word |= ((rng() & 255) * a >> 8) << shift;
            return word;
        };
        for (size_t i = 0; i < kPixels; ++i) {
            src[i] = premultiplied(src_alpha());
            tex[i] = premultiplied(tex_alpha());
            opaque[i] = rng() | 0xFF000000u;
            dst[i] = rng() | 0xFF000000u;
            src16[i] = uint16_t(rng());
            dst16[i] = uint16_t(rng());
            cov[i] = uint8_t(coverage());
        }
    }

    Pixels<uint32_t> src{kPixels}, tex{kPixels}, opaque{kPixels}, dst{kPixels};
    Pixels<uint16_t> src16{kPixels}, dst16{kPixels};
    Pixels<uint8_t> cov{kPixels};
};

}  // namespace bench
