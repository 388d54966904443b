// What the decoders refuse before allocating: images above the program's
// decode limit, and headers declaring more pixels than the file can hold.
#include <zlib.h>

#include "loader_test_support.hpp"

namespace {

// A corpus file with bytes replaced at `at`, then padded with zeros (or
// cut) to `size` bytes when given.
Bytes patched(const std::string &file, size_t at, const Bytes &bytes, size_t size = 0) {
    Bytes out = file_bytes(corpus(file));
    std::copy(bytes.begin(), bytes.end(), out.begin() + static_cast<std::ptrdiff_t>(at));
    if (size) out.resize(size);
    return out;
}

// basn0g08.png as width x height, its header's CRC made right again.
Bytes png_sized(uint8_t w_hi, uint8_t h_hi) {
    Bytes out = patched("png/pngsuite/basn0g08.png", 16, {0, 0, w_hi, 0, 0, 0, h_hi, 0});
    const uLong crc = crc32(0, out.data() + 12, 17);
    for (int i = 0; i < 4; ++i) out[29 + i] = static_cast<uint8_t>(crc >> (24 - 8 * i));
    return out;
}

Bytes wbmp_2048x1024(size_t row_bytes) {
    const uint8_t header[] = {0, 0, 0x90, 0x00, 0x88, 0x00};
    Bytes out(sizeof header + row_bytes, 0x55);
    std::copy(std::begin(header), std::end(header), out.begin());
    return out;
}

// peacock.progressive.jpeg (ten scans) with its last scan repeated up to
// `scans` scans: libjpeg only warns of the odd progression.
Bytes jpeg_of_scans(int scans) {
    const Bytes in = file_bytes(corpus("jpeg/wuffs/peacock.progressive.jpeg"));
    const uint8_t sos[] = {0xFF, 0xDA};
    const auto last = std::find_end(in.begin(), in.end(), sos, sos + 2);
    Bytes out = in;
    for (int n = 10; n < scans; ++n) out.insert(out.end() - 2, last, in.end() - 2);
    return out;
}

using DecodeLimits = ScratchDir;

// At the limit an image loads. One pixel below it, the pixels of an image
// already known do not load, and an unknown image is refused at once.
TEST_F(DecodeLimits, EveryCodecRefusesImagesAboveTheLimitNamingTheFileAndBothSizes) {
    const std::tuple<std::string, int32_t, int32_t> files[] = {
        {"png/pngsuite/basn0g08.png", 32, 32},
        {"jpeg/wuffs/peacock.default.jpeg", 100, 75},
        {"gif/giflib/treescap.gif", 40, 40},
        {"bmp/bmpsuite/g/pal8rle.bmp", 127, 64},
        {"wbmp/generated/checker-128x16.wbmp", 128, 16}};
    for (const auto &[file, width, height] : files) {
        SCOPED_TRACE(file);
        const std::string name = corpus(file);
        const int64_t pixels = int64_t{width} * height;
        const std::string refusal = file.substr(0, file.find('/')) + ": file(" + name + ") is " +
                                    std::to_string(width) + "x" + std::to_string(height) + ", " +
                                    std::to_string(pixels) + " pixels, above the decode limit of " +
                                    std::to_string(pixels - 1) + " pixels\n";
        xc_image_set_decode_limit(pixels);
        Image image{xc_image_new_from_file(name.c_str())};
        ASSERT_NE(image, nullptr);
        xc_image_set_decode_limit(pixels - 1);
        EXPECT_EQ(std::make_pair(xc_image_load_data(image.get()), image->data),
                  std::make_pair(-1, static_cast<uint8_t *>(nullptr)));
        EXPECT_EQ(log_.take(1), refusal);
        xc_image_set_decode_limit(pixels);
        EXPECT_GE(xc_image_load_data(image.get()), 0);
        image.reset();
        xc_image_set_decode_limit(pixels - 1);
        EXPECT_EQ(xc_image_new_from_file(name.c_str()), nullptr);
        EXPECT_EQ(log_.take(1), refusal);
    }
}

// With no limit at all, a header still cannot claim more than its file holds.
// Images up to 1024 x 1024 pass whatever their file: a cut WBMP loads white.
TEST_F(DecodeLimits, HeadersDeclaringMorePixelsThanTheFileHoldsAreRefusedBeforeAllocating) {
    // The setter returns the limit it replaces; a negative value only reads it.
    EXPECT_EQ(xc_image_set_decode_limit(-1), int64_t{64} << 20);
    EXPECT_EQ(xc_image_set_decode_limit(0), int64_t{64} << 20);
    EXPECT_EQ(xc_image_set_decode_limit(INT64_MIN), 0);
    const struct {
        const char *name;
        Bytes bytes;
        const char *refusal;  // null: loads
    } rows[] = {
        {"a.png", png_sized(0x10, 0x10),
         "png: file(%) declares 4096x4096 pixels, more than its 138 bytes"},
        {"b.jpg", patched("jpeg/wuffs/peacock.default.jpeg", 163, {0x10, 0, 0x10, 0}),
         "jpeg: file(%) declares 4096x4096 pixels, more than its 2305 bytes"},
        {"c.gif", patched("gif/giflib/treescap.gif", 6, {0, 0x10, 0, 0x10}),
         "gif: file(%) declares 4096x4096 pixels, more than its 407 bytes"},
        // 256 pixels per run-length byte (pal8rle.bmp's start at 1062): 8192
        // bytes describe 2048 x 1024, 100 bytes only what needs no proportion.
        {"d.bmp", patched("bmp/bmpsuite/g/pal8rle.bmp", 18, {0, 8, 0, 0, 0, 4}, 1062 + 8191),
         "bmp: file(%) declares 2048x1024 pixels, more than its 8191 bytes"},
        {"e.bmp", patched("bmp/bmpsuite/g/pal8rle.bmp", 18, {0, 8, 0, 0, 0, 4}, 1062 + 8192),
         nullptr},
        {"f.bmp", patched("bmp/bmpsuite/g/pal8rle.bmp", 18, {0, 4, 0, 0, 0, 4}, 1062 + 100),
         nullptr},
        {"g.bmp", patched("bmp/bmpsuite/g/pal8rle.bmp", 18, {1, 4, 0, 0, 0, 4}, 1062 + 100),
         "bmp: file(%) declares 1025x1024 pixels, more than its 100 bytes"},
        // A WBMP must hold an eighth of its rows.
        {"h.wbmp", wbmp_2048x1024(32767),
         "wbmp: file(%) declares 2048x1024 pixels, more than its 32767 bytes"},
        {"i.wbmp", wbmp_2048x1024(32768), nullptr},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        const std::string name = write(row.name, row.bytes);
        const Image image{xc_image_new_from_file(name.c_str())};
        ASSERT_NE(image, nullptr);
        const int loaded = xc_image_load_data(image.get());
        std::string refusal = row.refusal ? row.refusal : "";
        if (row.refusal) refusal.replace(refusal.find('%'), 1, name);
        EXPECT_EQ(std::make_pair(loaded, image->data == nullptr),
                  std::make_pair(row.refusal ? -1 : 0, row.refusal != nullptr));
        const std::string err = log_.take(1);
        EXPECT_TRUE(row.refusal ? err.starts_with(refusal) : err.empty()) << err;
    }
}

// libjpeg passes over the whole image for each scan: a hundred is plenty.
TEST_F(DecodeLimits, JpegFilesOfMoreThanAHundredScansAreRefused) {
    for (const int scans : {100, 101}) {
        const std::string name = write(std::to_string(scans) + ".jpg", jpeg_of_scans(scans));
        const Image image{xc_image_new_from_file(name.c_str())};
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(xc_image_load_data(image.get()), scans <= 100 ? 1 : -1);
        EXPECT_EQ(log_.take(1).ends_with("jpeg: file(" + name + ") has more than 100 scans\n"),
                  scans > 100);
    }
}

}  // namespace
