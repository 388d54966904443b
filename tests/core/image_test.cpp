#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "fbcompose/image.h"
#include "fbcompose/loader.h"

namespace {

// The library's munmap calls land here first, so the tests can see them.
struct {
    void *address;
    size_t length;
} unmapped;

}  // namespace

extern "C" int munmap(void *address, size_t length) noexcept {
    unmapped.address = address;
    unmapped.length = length;
    static auto *real = reinterpret_cast<int (*)(void *, size_t)>(dlsym(RTLD_NEXT, "munmap"));
    return real(address, length);
}

namespace {

TEST(ImageCreate, IsAnOpaqueCanvasWithItsOwnPixels) {
    xc_image *image = xc_image_create(3, 2);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->ref, 1);
    EXPECT_EQ(image->width, 3);
    EXPECT_EQ(image->height, 2);
    EXPECT_EQ(image->rowstride, 12);
    EXPECT_EQ(image->format, 1u);
    EXPECT_EQ(image->depth, 24u);
    EXPECT_EQ(image->has_alpha, 0u);
    EXPECT_EQ(image->foreign_data, 0u);
    EXPECT_EQ(image->filename, nullptr);
    ASSERT_NE(image->data, nullptr);
    std::memset(image->data, 0xAB, 24);  // the whole block is writable
    xc_image_unref(image);
}

TEST(ImageNew, IsZeroExceptTheCount) {
    xc_image *image = xc_image_new();
    EXPECT_EQ(image->ref, 1);
    EXPECT_EQ(image->data, nullptr);
    EXPECT_EQ(image->format, 0u);
    EXPECT_EQ(image->depth, 0u);
    EXPECT_EQ(image->width, 0);
    EXPECT_EQ(image->rowstride, 0);
    xc_image_unref(image);
}

TEST(ImageAllocData, DefaultsRowstrideAndKeepsAGivenOne) {
    xc_image *image = xc_image_new();
    image->width = 5;
    image->height = 3;
    ASSERT_NE(xc_image_alloc_data(image), nullptr);
    EXPECT_EQ(image->rowstride, 20);
    std::free(image->data);

    image->rowstride = 64;
    ASSERT_NE(xc_image_alloc_data(image), nullptr);
    EXPECT_EQ(image->rowstride, 64);
    std::memset(image->data, 0, 64 * 3);
    xc_image_unref(image);
}

TEST(ImageNewFromData, SixteenBitForeignBufferIsWrappedNotOwned) {
    std::vector<uint16_t> buffer(8 * 4, 0x1234);
    xc_image *image = xc_image_new_from_data(8, 4, buffer.data(), 16, 0, 1);
    EXPECT_EQ(image->data, reinterpret_cast<uint8_t *>(buffer.data()));
    EXPECT_EQ(image->format, 3u);
    EXPECT_EQ(image->rowstride, 16);
    EXPECT_EQ(image->depth, 16u);
    EXPECT_EQ(image->foreign_data, 1u);
    EXPECT_EQ(image->no_cache, 1u);
    EXPECT_EQ(image->has_alpha, 0u);
    xc_image_unref(image);  // must leave the vector's block alone
    EXPECT_EQ(buffer[31], 0x1234);
}

TEST(ImageNewFromData, NullDataAllocatesAndDepth32MeansAlpha) {
    xc_image *image = xc_image_new_from_data(4, 5, nullptr, 32, 0, 0);
    ASSERT_NE(image->data, nullptr);
    EXPECT_EQ(image->has_alpha, 1u);
    EXPECT_EQ(image->format, 0u);
    EXPECT_EQ(image->depth, 32u);
    EXPECT_EQ(image->rowstride, 16);
    EXPECT_EQ(image->foreign_data, 0u);
    std::memset(image->data, 1, 4 * 5 * 4);
    xc_image_unref(image);
}

TEST(ImageNewFromData, CopyTakesPrivatePixelsAndStoresDepthAsGiven) {
    std::vector<uint32_t> pixels{1, 2, 3, 4, 5, 6};
    xc_image *copy = xc_image_new_from_data(3, 2, pixels.data(), 1, 1, 0);
    ASSERT_NE(copy->data, reinterpret_cast<uint8_t *>(pixels.data()));
    EXPECT_EQ(0, std::memcmp(copy->data, pixels.data(), 24));
    EXPECT_EQ(copy->has_alpha, 1u);  // depth 1 counts as alpha...
    EXPECT_EQ(copy->format, 0u);
    EXPECT_EQ(copy->depth, 1u);      // ...and is stored, not interpreted
    EXPECT_EQ(copy->foreign_data, 0u);
    EXPECT_EQ(copy->no_cache, 1u);
    xc_image_unref(copy);

    xc_image *other = xc_image_new_from_data(3, 2, pixels.data(), 24, 1, 0);
    EXPECT_EQ(other->format, 1u);
    EXPECT_EQ(other->has_alpha, 0u);
    EXPECT_EQ(other->depth, 24u);
    xc_image_unref(other);
}

TEST(ImageNewWithData, RowLengthFollowsFormatUnlessGiven) {
    struct Case {
        uint32_t format;
        int32_t rowstride_arg;
        int32_t rowstride;
        uint32_t depth;
        uint32_t has_alpha;
    };
    const Case cases[] = {
        {0, 0, 40, 32, 1}, {1, 0, 40, 32, 0}, {2, 0, 30, 24, 0}, {3, 0, 20, 16, 0},
        {5, 0, 40, 32, 0}, {8, 0, 40, 18, 0}, {9, 0, 40, 32, 0}, {2, 100, 100, 24, 0},
        {3, 100, 100, 16, 0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << "format " << c.format << " rowstride "
                                        << c.rowstride_arg);
        xc_image *image = xc_image_new_with_data(10, 3, nullptr, c.format, 0, 0, c.rowstride_arg);
        EXPECT_EQ(image->format, c.format);
        EXPECT_EQ(image->rowstride, c.rowstride);
        EXPECT_EQ(image->depth, c.depth);
        EXPECT_EQ(image->has_alpha, c.has_alpha);
        EXPECT_EQ(image->no_cache, 1u);
        ASSERT_NE(image->data, nullptr);
        std::memset(image->data, 0, static_cast<size_t>(c.rowstride) * 3);
        xc_image_unref(image);
    }
}

TEST(ImageNewWithData, CopyMarkedForeignIsNeverFreedByTheImage) {
    std::vector<uint8_t> pixels(12 * 2, 7);
    xc_image *image = xc_image_new_with_data(4, 2, pixels.data(), 2, 1, 1, 0);
    ASSERT_NE(image->data, pixels.data());
    EXPECT_EQ(image->rowstride, 12);
    EXPECT_EQ(image->data[23], 7);
    EXPECT_EQ(image->foreign_data, 1u);
    uint8_t *block = image->data;
    xc_image_unref(image);
    std::free(block);  // the record left it to us
}

TEST(ImageConstructors, AbsurdSizesGiveNoPixelsRatherThanAWrappedBlock) {
    xc_image *wide = xc_image_create(0x40000000, 2);
    EXPECT_EQ(wide->data, nullptr);
    xc_image_unref(wide);

    xc_image *tall = xc_image_new_from_data(70000, 70000, nullptr, 32, 0, 0);
    EXPECT_EQ(tall->data, nullptr);
    xc_image_unref(tall);

    xc_image *negative = xc_image_new_with_data(-5, 4, nullptr, 0, 1, 0, 0);
    EXPECT_EQ(negative->data, nullptr);
    xc_image_unref(negative);
}

TEST(ImagePointer, StepsTwoBytesAtDepth16AndFourOtherwise) {
    xc_image *wide = xc_image_new_from_data(10, 10, nullptr, 32, 0, 0);
    EXPECT_EQ(static_cast<uint8_t *>(xc_image_pointer(wide, 3, 2)), wide->data + 2 * 40 + 12);
    xc_image_unref(wide);

    xc_image *narrow = xc_image_new_from_data(10, 10, nullptr, 16, 0, 0);
    EXPECT_EQ(static_cast<uint8_t *>(xc_image_pointer(narrow, 3, 2)),
              narrow->data + 2 * 20 + 6);
    xc_image_unref(narrow);

    // Format 2 is addressed as four bytes per pixel too.
    xc_image *packed = xc_image_new_with_data(10, 10, nullptr, 2, 0, 0, 0);
    EXPECT_EQ(static_cast<uint8_t *>(xc_image_pointer(packed, 3, 2)),
              packed->data + 2 * 30 + 12);
    xc_image_unref(packed);
}

TEST(ImageRef, CountsUpAndUnrefDestroysAtZero) {
    xc_image *image = xc_image_create(2, 2);
    EXPECT_EQ(xc_image_ref(image), image);
    EXPECT_EQ(image->ref, 2);
    xc_image_unref(image);
    EXPECT_EQ(image->ref, 1);
    EXPECT_EQ(xc_image_ref(nullptr), nullptr);
    xc_image_unref(image);  // the sanitizer build would report a leak otherwise
}

TEST(ImageUnref, ReleasingTooOftenPrintsAndKeepsTheRecord) {
    std::vector<uint32_t> pixels(4);
    xc_image *image = xc_image_new_from_data(2, 2, pixels.data(), 32, 0, 1);
    image->ref = 0;
    testing::internal::CaptureStdout();
    xc_image_unref(image);
    const std::string out = testing::internal::GetCapturedStdout();
    char expected[128];
    std::snprintf(expected, sizeof expected,
                  "!!!!!!!!!!!!!!!!!!!!!!!!!!!! image ref(%p) is negative: -1\n",
                  static_cast<void *>(image));
    EXPECT_EQ(out, expected);
    EXPECT_EQ(image->ref, -1);  // still a live record we can read
    image->ref = 1;
    xc_image_unref(image);
}

TEST(ImageUnref, MappedForeignPixelsAreUnmappedWithRowstrideTimesHeight) {
    const size_t length = 4096;
    void *map = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(map, MAP_FAILED);
    xc_image *image = xc_image_new_with_data(16, 8, map, 0, 0, 1, 256);
    image->mapped = 1;
    unmapped = {};
    xc_image_unref(image);
    EXPECT_EQ(unmapped.address, map);
    EXPECT_EQ(unmapped.length, 256u * 8u);
    munmap(map, length);
}

TEST(ImageUnref, ForeignUnmappedPixelsAreLeftToTheirOwner) {
    std::vector<uint32_t> pixels(64, 5);
    xc_image *image = xc_image_new_with_data(8, 8, pixels.data(), 0, 0, 1, 0);
    unmapped = {};
    xc_image_unref(image);
    EXPECT_EQ(unmapped.address, nullptr);
    EXPECT_EQ(pixels[63], 5u);  // the sanitizer build catches a free of it
}

int released = 0;
void count_release(xc_image *image) {
    ++released;
    std::free(image->loader_data);
}

TEST(ImageUnref, CallsTheLoaderReleaseOperation) {
    static const char *const ext[] = {"test", nullptr};
    xc_image_loader loader{};
    loader.ext = ext;
    loader.name = "test";
    loader.release = count_release;
    xc_image *image = xc_image_create(1, 1);
    image->loader = &loader;
    image->loader_data = std::malloc(16);
    xc_image_unref(image);
    EXPECT_EQ(released, 1);
}

TEST(ImageHasAlpha, ReadsTheFlag) {
    xc_image *image = xc_image_new_from_data(1, 1, nullptr, 32, 0, 0);
    EXPECT_EQ(xc_image_has_alpha(image), 1);
    image->has_alpha = 0;
    EXPECT_EQ(xc_image_has_alpha(image), 0);
    xc_image_unref(image);
}

}  // namespace
