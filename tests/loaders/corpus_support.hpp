// The shared corpus: its manifest, reference dumps (straight R, G, B, A
// bytes) turned into the colour words a loader stores, and comparison.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "fbcompose/image.h"

namespace fbc_test {

struct CorpusRow {
    std::string path, format, has_alpha, expected, reference;
    int32_t width = -1, height = -1;
    int32_t frames = -1;
};

// gtest names a row by its path.
inline void PrintTo(const CorpusRow &row, std::ostream *out) { *out << row.path; }

std::string corpus_path(const std::string &relative);
const std::vector<CorpusRow> &corpus_rows();
// A test name made of the path's letters and digits.
std::string test_name(const std::string &path);

// The reference as stored words: premultiplied where the loader
// premultiplies (PNG alpha channels, BMP and GIF below full alpha, every
// four-component JPEG pixel), straight elsewhere.
std::vector<uint32_t> stored_reference(const CorpusRow &row, const std::string &reference);

// Largest per-channel difference allowed: 16-bit and bit-field BMPs widen
// narrow channels in ways that differ by 1.
int tolerance_of(const CorpusRow &row);

// Reports the first few differing pixels.
void expect_pixels(const xc_image *image, const std::vector<uint32_t> &expected, int tolerance);

// An image holding non-opaque pixels must say so (format 0, has_alpha),
// except PNG palette and grey images with tRNS, which stay marked opaque.
void expect_alpha_flags(const xc_image *image, const CorpusRow &row,
                        const std::vector<uint32_t> &expected);

}  // namespace fbc_test
