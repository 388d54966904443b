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
// Plain C++ that groups four pixels per test and writes only the pixels
// that change. It runs anywhere, so the host tests it too, but is picked
// only on the device: the host's compiler vectorises the reference, which
// beats it there.
#define FBC_SWAR(kernel) FBC_VARIANT(kPortable, kArmv5te, kernel)
namespace fbc::px::swar {
void blend_pixels_rgba_to_rgba(const void *src, void *dst, int32_t count, uint32_t color);
}  // namespace fbc::px::swar
#else
#define FBC_SWAR(kernel)
#endif
