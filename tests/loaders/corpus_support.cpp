// The shared corpus: manifest parsing, reference conversion, comparison.
#include "corpus_support.hpp"

#include <cctype>
#include <cstdio>
#include <fstream>
#include <sstream>

namespace fbc_test {
namespace {

std::vector<std::string> split_tabs(const std::string &line) {
    std::vector<std::string> fields;
    std::stringstream in(line);
    std::string field;
    while (std::getline(in, field, '\t')) fields.push_back(field);
    return fields;
}

int32_t number_or_unknown(const std::string &field) {
    return field == "-" || field.empty() ? -1 : std::stoi(field);
}

enum class Premultiply { kNone, kBelowOpaque, kAlways };

Premultiply rule_of(const CorpusRow &row) {
    if (row.format == "png") return row.has_alpha == "alpha" ? Premultiply::kBelowOpaque : Premultiply::kNone;
    if (row.format == "jpeg")
        return row.has_alpha.rfind("yes", 0) == 0 ? Premultiply::kAlways : Premultiply::kNone;
    if (row.format == "wbmp") return Premultiply::kNone;
    return Premultiply::kBelowOpaque;
}

uint32_t premultiplied(uint32_t r, uint32_t g, uint32_t b, uint32_t a) {
    return a << 24 | (r * a >> 8) << 16 | (g * a >> 8) << 8 | (b * a >> 8);
}

}  // namespace

std::string corpus_path(const std::string &relative) {
    return std::string(FBC_CORPUS_DIR) + "/" + relative;
}

const std::vector<CorpusRow> &corpus_rows() {
    static const std::vector<CorpusRow> rows = [] {
        std::vector<CorpusRow> parsed;
        std::ifstream in(corpus_path("MANIFEST.tsv"));
        std::string line;
        std::getline(in, line);  // header
        while (std::getline(in, line)) {
            const auto f = split_tabs(line);
            if (f.size() < 10) continue;
            CorpusRow row;
            row.path = f[0];
            row.format = f[1];
            row.width = number_or_unknown(f[2]);
            row.height = number_or_unknown(f[3]);
            row.frames = number_or_unknown(f[4]);
            row.has_alpha = f[5];
            row.expected = f[6];
            row.reference = f[9] == "-" ? "" : f[9];
            parsed.push_back(row);
        }
        return parsed;
    }();
    return rows;
}

std::string test_name(const std::string &path) {
    std::string name;
    for (char c : path) name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    return name;
}

std::vector<uint32_t> stored_reference(const CorpusRow &row, const std::string &reference) {
    std::vector<uint32_t> words;
    FILE *in = std::fopen(corpus_path(reference).c_str(), "rb");
    if (!in) {
        ADD_FAILURE() << "missing reference " << reference;
        return words;
    }
    const Premultiply rule = rule_of(row);
    uint8_t p[4];
    while (std::fread(p, 1, 4, in) == 4) {
        const uint32_t r = p[0], g = p[1], b = p[2], a = p[3];
        const bool apply = rule == Premultiply::kAlways || (rule == Premultiply::kBelowOpaque && a < 255);
        words.push_back(apply ? premultiplied(r, g, b, a) : a << 24 | r << 16 | g << 8 | b);
    }
    std::fclose(in);
    return words;
}

int tolerance_of(const CorpusRow &row) { return row.format == "bmp" ? 1 : 0; }

void expect_pixels(const xc_image *image, const std::vector<uint32_t> &expected, int tolerance) {
    int reported = 0, differing = 0;
    for (int32_t y = 0; y < image->height; ++y) {
        const auto *row = reinterpret_cast<const uint32_t *>(image->data + static_cast<size_t>(y) * image->rowstride);
        for (int32_t x = 0; x < image->width; ++x) {
            const uint32_t got = row[x];
            const uint32_t want = expected[static_cast<size_t>(y) * image->width + x];
            bool same = true;
            for (int shift = 0; shift < 32; shift += 8) {
                const int d = static_cast<int>((got >> shift) & 0xFF) - static_cast<int>((want >> shift) & 0xFF);
                if (d > tolerance || d < -tolerance) same = false;
            }
            if (same) continue;
            ++differing;
            if (reported++ < 5) {
                char text[96];
                std::snprintf(text, sizeof(text), "(%d, %d): got %08X, want %08X", x, y, got, want);
                ADD_FAILURE() << text;
            }
        }
    }
    EXPECT_EQ(differing, 0) << "pixels differing";
}

void expect_alpha_flags(const xc_image *image, const CorpusRow &row,
                        const std::vector<uint32_t> &expected) {
    bool translucent = false;
    for (uint32_t word : expected) translucent |= (word >> 24) != 255;
    if (!translucent || (row.format == "png" && row.has_alpha == "trns")) return;
    EXPECT_EQ(image->format, 0u);
    EXPECT_EQ(image->has_alpha, 1u);
}

}  // namespace fbc_test
