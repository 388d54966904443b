// The faster kernels, by instruction set, and for each set the macro that
// enters one of its kernels in a row of kernel_table.cpp. A set's sources
// are built only with FBC_SIMD and only for the processors they suit; where
// they are not, its macro is empty and the rows keep the reference.
//
// A new set adds a section below (macro, namespace, declarations), its
// sources to pixel/CMakeLists.txt, and its macro to the rows it serves,
// best set first. An SSE2 section, for instance:
//   #if FBC_SIMD && defined(__x86_64__)
//   #define FBC_SSE2(kernel) FBC_VARIANT(kSse2, kSse2, kernel)
//   namespace fbc::px::sse2 { void blend_pixels_rgba_to_rgba(...); }
//   #else
//   #define FBC_SSE2(kernel)
//   #endif
// A variant may hand a short tail to the reference by its exported name:
// the exported names always run the reference.
#pragma once

#include "fbcompose/pixel.h"

// One entry of a row's variants, named by its kernel: it runs where `isa`
// is, and is picked where `chosen_on` is too.
#define FBC_VARIANT(isa, chosen_on, kernel) {#kernel, Isa::isa, kernel, Isa::chosen_on},

#if FBC_SIMD
// Plain C++ for a CPU without a vector unit: two channels per multiply,
// aligned groups of four pixels tested at once, RGB565 two pixels to a
// word. It runs anywhere, so the host tests it too, but is picked only on
// the device: the host's compiler vectorises the references, which beat it
// there.
#define FBC_SWAR(kernel) FBC_VARIANT(kPortable, kArmv5te, kernel)
// One that beats the reference everywhere, where the host's compiler cannot
// widen the reference's loop either (the box rows' byte sums, row by row).
#define FBC_SWAR_EVERYWHERE(kernel) FBC_VARIANT(kPortable, kPortable, kernel)
namespace fbc::px::swar {
void blend_color_rgba_to_rgb(uint32_t color, void *dst, int32_t count);
void blend_color_rgba_to_rgba(uint32_t color, void *dst, int32_t count);
void blend_pixels_rgba_to_rgb(const void *src, void *dst, int32_t count, uint32_t color);
void blend_pixels_rgba_to_rgba(const void *src, void *dst, int32_t count, uint32_t color);
void copy_pixels_rgb_to_rgba(const void *src, void *dst, int32_t count, uint32_t color);
void copy_pixels_rgba_to_16(const void *src, void *dst, int32_t count, uint32_t color);
void copy_pixels_16_to_rgb(const void *src, void *dst, int32_t count, uint32_t color);
void copy_pixels_16_to_16(const void *src, void *dst, int32_t count, uint32_t color);
void blend_alpha_color_rgba_to_rgb(const uint8_t *cov, void *dst, int32_t count, uint32_t color);
void blend_alpha_color_rgba_to_rgba(const uint8_t *cov, void *dst, int32_t count, uint32_t color);
void blend_alpha_texture_rgba_to_rgb(const uint8_t *cov, void *dst, int32_t count,
                                     const uint32_t *tex);
void blend_alpha_texture_rgba_to_rgba(const uint8_t *cov, void *dst, int32_t count,
                                      const uint32_t *tex);
void blend_pixels_mul_color_rgba_to_rgb(const void *src, void *dst, int32_t count, uint32_t color);
void blend_pixels_mul_color_rgba_to_rgba(const void *src, void *dst, int32_t count, uint32_t color);
void blend_pixels_mul_color_rgb_to_rgb(const void *src, void *dst, int32_t count, uint32_t color);
void blend_pixels_mul_color_rgb_to_rgba(const void *src, void *dst, int32_t count, uint32_t color);
void convert_rgba_to_16(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                        int32_t width, int32_t height, int32_t dither_x, int32_t dither_y);
void convert_rgba_to_16_90(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                           int32_t width, int32_t height, int32_t dither_x, int32_t dither_y);
void convert_rgba_to_16_270(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                            int32_t width, int32_t height, int32_t dither_x, int32_t dither_y);
void convert_rgba_to_18(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                        int32_t width, int32_t height, int32_t dither_x, int32_t dither_y);
void convert_rgba_to_18_90(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                           int32_t width, int32_t height, int32_t dither_x, int32_t dither_y);
void convert_rgba_to_18_270(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                            int32_t width, int32_t height, int32_t dither_x, int32_t dither_y);
void convert_rgba_to_32_90(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                           int32_t width, int32_t height, int32_t dither_x, int32_t dither_y);
void convert_rgba_to_32_270(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                            int32_t width, int32_t height, int32_t dither_x, int32_t dither_y);
}  // namespace fbc::px::swar
#else
#define FBC_SWAR(kernel)
#define FBC_SWAR_EVERYWHERE(kernel)
#endif

#if FBC_SIMD && defined(__x86_64__)
// The x86 kernels (spans_x86.hpp, convert_x86.hpp), built once for SSE2 and
// once for AVX2. FBC_X86 enters both builds of a kernel, the wider first.
#define FBC_SSE2(kernel) FBC_VARIANT(kSse2, kSse2, sse2::kernel)
#define FBC_AVX2(kernel) FBC_VARIANT(kAvx2, kAvx2, avx2::kernel)
#define FBC_X86(kernel) FBC_AVX2(kernel) FBC_SSE2(kernel)
#define FBC_X86_KERNELS                                                                            \
    void blend_color_rgba_to_rgb(uint32_t color, void *dst, int32_t count);                        \
    void blend_color_rgba_to_rgba(uint32_t color, void *dst, int32_t count);                       \
    void copy_color_rgba_to_rgba(uint32_t color, void *dst, int32_t count);                        \
    void copy_color_rgb_to_rgba(uint32_t color, void *dst, int32_t count);                         \
    void blend_pixels_rgba_to_rgb(const void *src, void *dst, int32_t count, uint32_t);            \
    void blend_pixels_rgba_to_rgba(const void *src, void *dst, int32_t count, uint32_t);           \
    void copy_pixels_rgb_to_rgba(const void *src, void *dst, int32_t count, uint32_t);             \
    void copy_pixels_rgba_to_16(const void *src, void *dst, int32_t count, uint32_t);              \
    void copy_pixels_16_to_rgb(const void *src, void *dst, int32_t count, uint32_t);               \
    void copy_pixels_16_to_16(const void *src, void *dst, int32_t count, uint32_t);                \
    void blend_pixels_mul_color_rgba_to_rgb(const void *src, void *dst, int32_t count,             \
                                            uint32_t color);                                       \
    void blend_pixels_mul_color_rgba_to_rgba(const void *src, void *dst, int32_t count,            \
                                             uint32_t color);                                      \
    void blend_pixels_mul_color_rgb_to_rgb(const void *src, void *dst, int32_t count,              \
                                           uint32_t color);                                        \
    void blend_pixels_mul_color_rgb_to_rgba(const void *src, void *dst, int32_t count,             \
                                            uint32_t color);                                       \
    void blend_alpha_color_rgba_to_rgb(const uint8_t *cov, void *dst, int32_t count,               \
                                       uint32_t color);                                            \
    void blend_alpha_color_rgba_to_rgba(const uint8_t *cov, void *dst, int32_t count,              \
                                        uint32_t color);                                           \
    void blend_alpha_texture_rgba_to_rgb(const uint8_t *cov, void *dst, int32_t count,             \
                                         const uint32_t *tex);                                     \
    void blend_alpha_texture_rgba_to_rgba(const uint8_t *cov, void *dst, int32_t count,            \
                                          const uint32_t *tex);                                    \
    void convert_rgba_to_16(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,        \
                            int32_t width, int32_t height, int32_t dither_x, int32_t dither_y);    \
    void convert_rgba_to_16_90(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,     \
                               int32_t width, int32_t height, int32_t dither_x, int32_t dither_y); \
    void convert_rgba_to_16_270(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,    \
                                int32_t width, int32_t height, int32_t dither_x,                   \
                                int32_t dither_y);                                                 \
    void convert_rgba_to_18(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,        \
                            int32_t width, int32_t height, int32_t dither_x, int32_t dither_y);    \
    void convert_rgba_to_18_90(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,     \
                               int32_t width, int32_t height, int32_t dither_x, int32_t dither_y); \
    void convert_rgba_to_18_270(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,    \
                                int32_t width, int32_t height, int32_t dither_x,                   \
                                int32_t dither_y);                                                 \
    void convert_rgba_to_32_90(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,     \
                               int32_t width, int32_t height, int32_t, int32_t);                   \
    void convert_rgba_to_32_270(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,    \
                                int32_t width, int32_t height, int32_t, int32_t);
namespace fbc::px::sse2 {
FBC_X86_KERNELS
}  // namespace fbc::px::sse2
namespace fbc::px::avx2 {
FBC_X86_KERNELS
}  // namespace fbc::px::avx2
#else
#define FBC_X86(kernel)
#endif
