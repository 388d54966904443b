// The scalers' row passes: one row each, the reference and, best first, the
// variants that may stand in for it (entered as in kernel_table.cpp).
#include "pixel/scale_rows.hpp"
#include "pixel/variants.hpp"

#if FBC_SIMD
namespace fbc::px::swar {
void nearest_words(const uint32_t *row, const ColumnWalk &walk, uint32_t *out, int32_t n);
void nearest_halfwords(const uint16_t *row, const ColumnWalk &walk, uint16_t *out, int32_t n);
void nearest_over_rgb(const uint32_t *row, const ColumnWalk &walk, uint32_t *dst, int32_t n);
void nearest_over_rgba(const uint32_t *row, const ColumnWalk &walk, uint32_t *dst, int32_t n);
void lerp_rows(const uint32_t *top, const uint32_t *bottom, uint32_t *out, int32_t n, uint32_t f);
void lerp_words(const uint32_t *row, const WordTap *taps, uint32_t *out, int32_t n);
void box_row(const uint32_t *top, intptr_t stride, int32_t rows, const BoxTap *taps, uint32_t *out,
             int32_t n);
}  // namespace fbc::px::swar
#endif
#if FBC_SIMD && defined(__x86_64__)
namespace fbc::px::sse2 {
void lerp_rows(const uint32_t *top, const uint32_t *bottom, uint32_t *out, int32_t n, uint32_t f);
void lerp_words(const uint32_t *row, const WordTap *taps, uint32_t *out, int32_t n);
}  // namespace fbc::px::sse2
namespace fbc::px::avx2 {
void lerp_rows(const uint32_t *top, const uint32_t *bottom, uint32_t *out, int32_t n, uint32_t f);
void lerp_words(const uint32_t *row, const WordTap *taps, uint32_t *out, int32_t n);
}  // namespace fbc::px::avx2
#endif

namespace fbc::px {

constinit const Kernel<NearestWordsFn> kNearestWords{
    "nearest_words", nearest_words, {FBC_SWAR_EVERYWHERE(swar::nearest_words)}};
constinit const Kernel<NearestHalfwordsFn> kNearestHalfwords{
    "nearest_halfwords", nearest_halfwords, {FBC_SWAR_EVERYWHERE(swar::nearest_halfwords)}};
constinit const Kernel<NearestOverFn> kNearestOverRgb{
    "nearest_over_rgb", nearest_over_rgb, {FBC_SWAR(swar::nearest_over_rgb)}};
constinit const Kernel<NearestOverFn> kNearestOverRgba{
    "nearest_over_rgba", nearest_over_rgba, {FBC_SWAR(swar::nearest_over_rgba)}};
constinit const Kernel<LerpRowsFn> kLerpRows{
    "lerp_rows", lerp_rows, {FBC_X86(lerp_rows) FBC_SWAR(swar::lerp_rows)}};
constinit const Kernel<LerpWordsFn> kLerpWords{
    "lerp_words", lerp_words, {FBC_X86(lerp_words) FBC_SWAR(swar::lerp_words)}};
constinit const Kernel<BoxRowFn> kBoxRow{"box_row", box_row, {FBC_SWAR_EVERYWHERE(swar::box_row)}};

}  // namespace fbc::px
