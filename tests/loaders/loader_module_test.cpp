// Loader modules named in CANVAS_IMAGE_LOADER. The registry is built once
// per process and every test case runs in its own, so each sets the
// variable before its first load.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "fbcompose/image.h"
#include "fbcompose/loader.h"
#include "loader_test_support.hpp"

namespace {

class LoaderModule : public fbc_test::ScratchDir {
protected:
    void SetUp() override {
        ScratchDir::SetUp();
        setenv("CANVAS_IMAGE_LOADER", FBC_TEST_LOADER_MODULE, 1);
        xc_image_init();
        testing::internal::CaptureStdout();
        xc_image_new_from_file("warm.none");  // builds the registry
        testing::internal::GetCapturedStdout();
    }
};

TEST(LoaderModuleRegistry, BadModulesAreSkippedAndTheRestKeepTheirOrder) {
    const std::string missing = "/nonexistent/loader.so";
    const std::string list = missing + ",," + FBC_NO_RECORD_MODULE + "," + FBC_TEST_LOADER_MODULE;
    setenv("CANVAS_IMAGE_LOADER", list.c_str(), 1);
    testing::internal::CaptureStdout();
    EXPECT_EQ(xc_image_new_from_file("warm.none"), nullptr);
    const std::string out = testing::internal::GetCapturedStdout();

    const std::string expected_start = "loading dyn image loader:" + list + "\nloader = " + missing +
                                       "\nmodule(" + missing + ") open failed:";
    EXPECT_EQ(out.rfind(expected_start, 0), 0u) << out;
    const std::string no_record = std::string("loader = ") + FBC_NO_RECORD_MODULE +
                                  "\nsymbol('image_loader') loading failed in " +
                                  FBC_NO_RECORD_MODULE + ":";
    EXPECT_NE(out.find(no_record), std::string::npos) << out;
    const std::string tail = std::string("loader = ") + FBC_TEST_LOADER_MODULE +
                             "\nloaders[0] ext = mod\nloaders[1] ext = jpg\n"
                             "loaders[2] ext = png\nloaders[3] ext = bmp\n"
                             "loaders[4] ext = wbmp\nloaders[5] ext = gif\n"
                             "file(warm.none) load failed: unsupported suffix none\n";
    ASSERT_GE(out.size(), tail.size());
    EXPECT_EQ(out.substr(out.size() - tail.size()), tail) << out;

    // The environment is read once: a later change has no effect.
    unsetenv("CANVAS_IMAGE_LOADER");
    testing::internal::CaptureStdout();
    xc_image *image = xc_image_new_from_file("image.mod");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    ASSERT_NE(image, nullptr);
    EXPECT_STREQ(image->type_name, "mod");
    xc_image_unref(image);
}

TEST_F(LoaderModule, ModuleTakesPrecedenceForASharedSuffix) {
    xc_image *image = xc_image_new_from_file(path("photo.png").c_str());
    ASSERT_NE(image, nullptr);
    EXPECT_STREQ(image->type_name, "mod");
    EXPECT_NE(image->loader, &png_loader);
    EXPECT_EQ(image->width, 3);
    EXPECT_EQ(xc_image_load_data(image), 0);
    ASSERT_NE(image->data, nullptr);
    EXPECT_EQ(fbc_test::pixel(image, 2, 1), 0xFF000302u);
    xc_image_unref(image);
}

TEST_F(LoaderModule, RefusingModuleFallsThroughToTheBuiltIn) {
    const std::string name = path("refuse.png");
    xc_image *canvas = xc_image_create(4, 3);
    // Saving by name would ask the module, which lists the suffix first.
    ASSERT_EQ(png_loader.save(canvas, name.c_str(), nullptr, nullptr), 0);
    xc_image_unref(canvas);
    testing::internal::CaptureStdout();
    xc_image *image = xc_image_new_from_file(name.c_str());
    // The module's line names the suffix as the module lists it.
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "PNG file(" + name + ") load failed\n");
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->loader, &png_loader);
    EXPECT_EQ(image->width, 4);
    xc_image_unref(image);
}

TEST_F(LoaderModule, RescaledLoadUsesTheModuleOperationAndAlwaysReturnsZero) {
    xc_image *image = xc_image_new_from_file("scaled.mod");
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(xc_image_load_data_rescaled(image, 0, 4), 0);  // the module refuses 0 x 4
    EXPECT_EQ(image->data, nullptr);
    EXPECT_EQ(xc_image_load_data_rescaled(image, 5, 4), 0);
    ASSERT_NE(image->data, nullptr);
    EXPECT_EQ(image->width, 5);
    EXPECT_EQ(fbc_test::pixel(image, 4, 3), 0xFF000504u);
    xc_image_unref(image);
}

TEST_F(LoaderModule, FramesAndDelayAreTheModules) {
    xc_image *image = xc_image_new_from_file("frames.mod");
    ASSERT_NE(image, nullptr);
    int32_t delay = 0, x = 0, y = -1, w = 0, h = 0;
    EXPECT_EQ(xc_image_next_frame(image, &delay, &x, &y, &w, &h), 7);
    EXPECT_EQ(delay, 40);
    EXPECT_EQ(x, 1);
    EXPECT_EQ(y, 0);
    EXPECT_EQ(w, 2);
    EXPECT_EQ(h, 2);
    EXPECT_EQ(xc_image_get_delay(image), 40);
    xc_image_unref(image);
}

TEST_F(LoaderModule, AnimationsAreNeverCached) {
    xc_set_image_cache_size(1 << 20);
    xc_image *first = xc_image_new_from_file("anim.mod");
    xc_image *second = xc_image_new_from_file("anim.mod");
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
    EXPECT_EQ(first->no_cache, 1u);
    EXPECT_EQ(first->ref, 1);
    xc_image_unref(first);
    EXPECT_EQ(xc_image_lookup_in_cache("anim.mod"), nullptr);
    xc_image_unref(second);

    xc_image *still = xc_image_new_from_file("still.mod");
    ASSERT_NE(still, nullptr);
    EXPECT_EQ(still->no_cache, 0u);
    EXPECT_EQ(xc_image_lookup_in_cache("still.mod"), still);
    xc_image_unref(still);
    xc_image_unref(still);
    xc_set_image_cache_size(0);
}

}  // namespace
