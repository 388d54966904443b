// fbcompose for C++17 and later: value and RAII types over the C interface.
//
// Header-only; everything forwards to the C functions of fbcompose.h, so a
// C++ program links the same libfbcompose. Nothing here throws: failures
// come back as empty handles (operator bool) or negative results, exactly as
// from the C functions. Rows of pixels are std::spans from C++20 on, and a
// view with the same basic members (data, size, begin, end, []) before.
#ifndef FBCOMPOSE_FBCOMPOSE_HPP
#define FBCOMPOSE_FBCOMPOSE_HPP

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fbcompose.h"

#if __cplusplus >= 202002L && __has_include(<span>)
#include <span>
#endif

namespace fbcompose {

#if defined(__cpp_lib_span)
template <typename Pixel>
using pixel_row = std::span<Pixel>;
#else
// What the rows need of std::span, for C++17 callers.
template <typename Pixel>
class pixel_row {
public:
    constexpr pixel_row(Pixel *data, size_t size) noexcept
        : data_(data), size_(size) {}
    constexpr Pixel *data() const noexcept { return data_; }
    constexpr size_t size() const noexcept { return size_; }
    constexpr bool empty() const noexcept { return size_ == 0; }
    constexpr Pixel *begin() const noexcept { return data_; }
    constexpr Pixel *end() const noexcept { return data_ + size_; }
    constexpr Pixel &operator[](size_t i) const noexcept { return data_[i]; }

private:
    Pixel *data_;
    size_t size_;
};
#endif

// A counted reference to an xc_image. Copies share the image (one more
// reference each); destruction and reassignment release it.
class image {
public:
    image() noexcept = default;

    // Takes over a reference the caller owns (what every C constructor
    // returns).
    static image adopt(xc_image *raw) noexcept { return image(raw); }
    // Adds a reference of its own to an image someone else owns.
    static image share(xc_image *raw) noexcept {
        return image(xc_image_ref(raw));
    }

    // An opaque canvas; empty when the pixels could not be allocated.
    static image create(int32_t width, int32_t height) noexcept {
        image result = adopt(xc_image_create(width, height));
        if (result && !result->data) result.reset();
        return result;
    }
    // Size and flags only, through the image cache; pixels come with load().
    static image from_file(std::string_view path) {
        return adopt(xc_image_new_from_file(std::string(path).c_str()));
    }
    // Decoded at once from bytes in memory; type null recognises the format.
    static image from_memory(const void *bytes, size_t size,
                             const char *type = nullptr) noexcept {
        return adopt(xc_image_new_from_memory(bytes, size, type));
    }

    image(const image &other) noexcept : raw_(xc_image_ref(other.raw_)) {}
    image(image &&other) noexcept : raw_(std::exchange(other.raw_, nullptr)) {}
    image &operator=(image other) noexcept {
        std::swap(raw_, other.raw_);
        return *this;
    }
    ~image() { reset(); }

    void reset() noexcept { xc_image_unref(std::exchange(raw_, nullptr)); }
    // Hands the reference back to C code that will unref it.
    [[nodiscard]] xc_image *release() noexcept {
        return std::exchange(raw_, nullptr);
    }

    explicit operator bool() const noexcept { return raw_ != nullptr; }
    xc_image *get() const noexcept { return raw_; }
    xc_image *operator->() const noexcept { return raw_; }

    int32_t width() const noexcept { return raw_->width; }
    int32_t height() const noexcept { return raw_->height; }
    bool has_alpha() const noexcept { return raw_->has_alpha != 0; }

    // Decodes the pixels of a file image; true when they are there.
    bool load() const noexcept {
        return xc_image_load_data(raw_) >= 0 && raw_->data;
    }

    // Row y of a 32-bit image as colour words.
    pixel_row<uint32_t> row(int32_t y) const noexcept {
        return {static_cast<uint32_t *>(xc_image_pointer(raw_, 0, y)),
                static_cast<size_t>(raw_->width)};
    }
    // Row y of a 16-bit (RGB565) image.
    pixel_row<uint16_t> row16(int32_t y) const noexcept {
        return {static_cast<uint16_t *>(xc_image_pointer(raw_, 0, y)),
                static_cast<size_t>(raw_->width)};
    }

    // The whole image as an area, for clips.
    xg_area area() const noexcept { return {0, 0, raw_->width, raw_->height}; }

private:
    explicit image(xc_image *raw) noexcept : raw_(raw) {}
    xc_image *raw_ = nullptr;
};

// A font handle. Move-only: each handle holds one reference, released on
// destruction (the handle then stays in the font cache while its budget
// allows).
class font {
public:
    font() noexcept = default;
    font(std::string_view path, int32_t size, int32_t bold_x = 0,
         int32_t bold_y = 0)
        : raw_(xc_font_load(std::string(path).c_str(), size, bold_x, bold_y)) {}
    font(font &&other) noexcept : raw_(std::exchange(other.raw_, nullptr)) {}
    font &operator=(font &&other) noexcept {
        if (this != &other) {
            xc_font_free(raw_);
            raw_ = std::exchange(other.raw_, nullptr);
        }
        return *this;
    }
    font(const font &) = delete;
    font &operator=(const font &) = delete;
    ~font() { xc_font_free(raw_); }

    explicit operator bool() const noexcept { return raw_ != nullptr; }
    xc_font *get() const noexcept { return raw_; }

    int32_t ascent() const noexcept { return xc_font_get_ascent(raw_); }
    int32_t descent() const noexcept { return xc_font_get_descent(raw_); }

private:
    xc_font *raw_ = nullptr;
};

// A zero-terminated wide string as the text functions take it.
inline std::u16string widen(std::string_view utf8) {
    std::string copy(utf8);
    uint16_t *wide = xg_unicode_new_from_utf8(copy.c_str());
    std::u16string result;
    for (const uint16_t *p = wide; p && *p; ++p)
        result.push_back(static_cast<char16_t>(*p));
    std::free(wide);
    return result;
}

inline const uint16_t *units(const std::u16string &text) noexcept {
    return reinterpret_cast<const uint16_t *>(text.c_str());
}

// Damage manager for one screen.
class damage {
public:
    damage(int32_t width, int32_t height) : raw_(xc_dm_new(width, height)) {}
    damage(damage &&other) noexcept
        : raw_(std::exchange(other.raw_, nullptr)) {}
    damage &operator=(damage &&other) noexcept {
        if (this != &other) {
            if (raw_) xc_dm_free(raw_);
            raw_ = std::exchange(other.raw_, nullptr);
        }
        return *this;
    }
    damage(const damage &) = delete;
    damage &operator=(const damage &) = delete;
    ~damage() {
        if (raw_) xc_dm_free(raw_);
    }

    int32_t add(xg_rect rect) noexcept { return xc_dm_add_area(raw_, &rect); }
    void reset() noexcept { xc_dm_reset(raw_); }

    // The merged rectangles, leaving every tile clean.
    std::vector<xg_rect> take_rects() {
        std::vector<xg_rect> rects;
        xg_list *list = xc_dm_get_rects(raw_);
        for (xg_list_item *item = xg_list_first(list); item; item = item->next)
            rects.push_back(*static_cast<xg_rect *>(item->data));
        xg_list_free_with_data(list);
        return rects;
    }

    xc_dm *get() const noexcept { return raw_; }

private:
    xc_dm *raw_;
};

// A panel (panel.h): the frame buffer the canvas is converted into, in the
// caller's memory or on a frame-buffer device. Move-only; freed (a device
// unmapped and closed) on destruction.
class panel {
public:
    panel() noexcept = default;

    // Over the caller's frame buffer, which must outlive the panel.
    static panel in_memory(void *pixels, int32_t width, int32_t height,
                           int32_t stride, int depth, int rotation) noexcept {
        return panel(
            xc_panel_new(pixels, width, height, stride, depth, rotation));
    }
    // A Linux frame-buffer device such as "/dev/fb0".
    static panel open_fbdev(std::string_view path, int rotation) {
        return panel(xc_panel_open_fbdev(std::string(path).c_str(), rotation));
    }

    panel(panel &&other) noexcept : raw_(std::exchange(other.raw_, nullptr)) {}
    panel &operator=(panel &&other) noexcept {
        if (this != &other)
            xc_panel_free(
                std::exchange(raw_, std::exchange(other.raw_, nullptr)));
        return *this;
    }
    panel(const panel &) = delete;
    panel &operator=(const panel &) = delete;
    ~panel() { xc_panel_free(raw_); }

    explicit operator bool() const noexcept { return raw_ != nullptr; }
    xc_panel *get() const noexcept { return raw_; }

    // The canvas the panel shows: its own size turned back upright.
    int32_t canvas_width() const noexcept {
        int32_t width, height;
        xc_panel_get_canvas_size(raw_, &width, &height);
        return width;
    }
    int32_t canvas_height() const noexcept {
        int32_t width, height;
        xc_panel_get_canvas_size(raw_, &width, &height);
        return height;
    }

    // Converts the whole canvas; the number of rectangles converted, or -1.
    int update(const image &canvas) noexcept {
        return xc_panel_update(raw_, canvas.get(), nullptr);
    }
    // Converts these canvas rectangles (damage::take_rects gives them);
    // none converts nothing.
    int update(const image &canvas, const std::vector<xg_rect> &rects) {
        // The list's items live here for the call; the library only reads them.
        std::vector<xg_list_item> items(rects.size());
        for (size_t i = 0; i < items.size(); ++i)
            items[i] = {i > 0 ? &items[i - 1] : nullptr,
                        i + 1 < items.size() ? &items[i + 1] : nullptr,
                        const_cast<xg_rect *>(&rects[i])};
        const xg_list list{items.empty() ? nullptr : &items.front(),
                           items.empty() ? nullptr : &items.back(),
                           static_cast<int32_t>(items.size())};
        return xc_panel_update(raw_, canvas.get(), &list);
    }

private:
    explicit panel(xc_panel *raw) noexcept : raw_(raw) {}
    xc_panel *raw_ = nullptr;
};

}  // namespace fbcompose

#endif
