// Every file of the shared corpus, one test per MANIFEST.tsv row: files that
// must decode load and match their reference pixels (animations with
// published frames frame by frame), files that must be rejected fail
// cleanly, and the others load or fail without harm (the sanitizer build
// checks the harm).

#include <cctype>
#include <sstream>

#include "loader_test_support.hpp"

namespace {

struct CorpusRow {
    std::string path, format, has_alpha, expected, reference;
    int32_t width, height, frames;
};

std::vector<CorpusRow> manifest() {
    std::vector<CorpusRow> rows;
    std::ifstream in(corpus("MANIFEST.tsv"));
    std::string line;
    std::getline(in, line);  // header
    auto number = [](const std::string &field) { return field == "-" ? -1 : std::stoi(field); };
    while (std::getline(in, line)) {
        std::vector<std::string> f;
        std::stringstream fields(line);
        for (std::string field; std::getline(fields, field, '\t');) f.push_back(field);
        if (f.size() < 10) continue;
        rows.push_back({f[0], f[1], f[5], f[6], f[9] == "-" ? "" : f[9], number(f[2]), number(f[3]),
                        number(f[4])});
    }
    return rows;
}

// A reference dump (straight R, G, B, A bytes) as the words the loader
// stores, c x a >> 8 where it premultiplies: PNG for alpha channels only,
// four-component JPEG every pixel, the others below full alpha.
Words reference_words(const CorpusRow &row, const std::string &reference) {
    const bool always = row.format == "jpeg" && row.has_alpha.starts_with("yes");
    const bool never = row.format == "png" && row.has_alpha != "alpha";
    const Bytes bytes = file_bytes(corpus(reference));
    Words words;
    for (size_t i = 0; i + 4 <= bytes.size(); i += 4) {
        const uint32_t a = bytes[i + 3], scale = always || (!never && a < 255) ? a : 256;
        words.push_back(a << 24 | (bytes[i] * scale >> 8) << 16 | (bytes[i + 1] * scale >> 8) << 8 |
                        (bytes[i + 2] * scale >> 8));
    }
    return words;
}

// Counts the differing pixels and shows the first.
void expect_pixels(const xc_image *image, const Words &expected, int tolerance) {
    const Words got = all(image);
    ASSERT_EQ(got.size(), expected.size());
    size_t differing = 0, first = 0;
    for (size_t i = 0; i < got.size(); ++i)
        if (!channels_within(got[i], expected[i], tolerance) && differing++ == 0) first = i;
    EXPECT_EQ(differing, 0u) << "first at (" << first % image->width << ", " << first / image->width
                             << "): got " << std::hex << got[first] << ", want " << expected[first];
}

// PNG marks alpha exactly for an alpha channel (tRNS adds alpha bytes but
// stays marked opaque); the others must mark images holding non-opaque pixels.
void expect_alpha_flags(const xc_image *image, const CorpusRow &row, const Words &expected) {
    bool marked =
        std::any_of(expected.begin(), expected.end(), [](uint32_t w) { return w >> 24 != 255; });
    if (row.format == "png") marked = row.has_alpha == "alpha";
    else if (!marked) return;
    EXPECT_EQ(alpha_marks(image), alpha_marks(marked));
}

// gtest names a row by its path.
void PrintTo(const CorpusRow &row, std::ostream *out) { *out << row.path; }

class CorpusFile : public testing::TestWithParam<CorpusRow> {};

TEST_P(CorpusFile, LoadsAsTheManifestSays) {
    const CorpusRow &row = GetParam();
    xc_image_init();
    Logged log;
    const Image image{xc_image_new_from_file(corpus(row.path).c_str())};
    const int loaded = image ? xc_image_load_data(image.get()) : -1;
    if (row.expected == "reject") {
        EXPECT_LT(loaded, 0) << "accepted a file it must refuse";
        // The JPEG size query accepts any stream; only the pixels fail.
        EXPECT_TRUE(image || row.format != "jpeg");
        EXPECT_TRUE(!image || !image->data);
    } else if (row.expected == "decode") {
        ASSERT_NE(image, nullptr);
        // Each codec's own success value: JPEG 1, PNG its alpha bit, others 0.
        EXPECT_EQ(loaded, row.format == "jpeg" ? 1 : row.has_alpha == "alpha" ? 4 : 0);
        ASSERT_NE(image->data, nullptr);
        EXPECT_EQ(image->depth, row.format == "png" && row.has_alpha != "alpha" ? 24u : 32u);
        EXPECT_TRUE(row.width < 0 ||
                    std::tie(image->width, image->height) == std::tie(row.width, row.height));
        if (!row.reference.empty()) {
            const auto expected = reference_words(row, row.reference);
            // 16-bit and bit-field BMPs widen narrow channels within 1 of the reference.
            expect_pixels(image.get(), expected, row.format == "bmp" ? 1 : 0);
            expect_alpha_flags(image.get(), row, expected);
        }
    } else if (image && image->data) {
        // Either outcome is fine; a decoded image must still be whole.
        EXPECT_TRUE(image->width > 0 && image->height > 0 && image->rowstride >= image->width * 4);
    }
    // Published frames, composited by another decoder: frame N after N calls
    // of next_frame, then frame 0 again.
    const std::string frames = "ref/" + row.path + ".frame";
    for (int n = 0; std::filesystem::exists(corpus(frames + "0.rgba")) && n <= row.frames; ++n) {
        SCOPED_TRACE(n);
        ASSERT_TRUE(image && image->data);
        int32_t delay = 20, x, y, w, h;
        EXPECT_EQ(n == 0 ? 0 : xc_image_next_frame(image.get(), &delay, &x, &y, &w, &h),
                  n % row.frames);
        EXPECT_GE(delay, 20);
        expect_pixels(image.get(),
                      reference_words(row, frames + std::to_string(n % row.frames) + ".rgba"), 0);
    }
}

// A block in memory decodes as its file does (first frame of an animation),
// by its suffix and, for the intact files that must decode, by its first
// bytes (a damaged copy may have lost its signature).
TEST_P(CorpusFile, DecodesFromMemoryAsFromDisk) {
    const CorpusRow &row = GetParam();
    xc_image_init();
    Logged log;
    const Image file{xc_image_new_from_file(corpus(row.path).c_str())};
    if (file) xc_image_load_data(file.get());
    const bool decoded = file && file->data;
    const Bytes bytes = file_bytes(corpus(row.path));
    const bool intact = row.expected == "decode" && !row.path.starts_with("bad/");
    std::vector<const char *> types = {row.format.c_str()};
    if (intact) types.push_back(nullptr);
    for (const char *type : types) {
        const Image memory{xc_image_new_from_memory(bytes.data(), bytes.size(), type)};
        ASSERT_EQ(memory != nullptr, decoded) << (type ? "by type" : "by first bytes");
        if (!decoded) continue;
        EXPECT_EQ(memory->filename, nullptr);
        EXPECT_STREQ(memory->type_name, file->type_name);
        EXPECT_EQ(std::tie(memory->width, memory->height), std::tie(file->width, file->height));
        EXPECT_EQ(alpha_marks(memory.get()), alpha_marks(file.get()));
        EXPECT_TRUE(all(memory.get()) == all(file.get()));
    }
}

INSTANTIATE_TEST_SUITE_P(Manifest, CorpusFile, testing::ValuesIn(manifest()),
                         [](const auto &param) {
                             std::string name = param.param.path;  // letters and digits only
                             for (char &c : name) c = std::isalnum(c & 0xFF) ? c : '_';
                             return name;
                         });

}  // namespace
