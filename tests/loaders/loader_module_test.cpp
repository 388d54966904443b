// Loader modules named in CANVAS_IMAGE_LOADER. The registry is built once
// per process and every test case runs in its own, so each sets the
// variable before its first load.
#include "loader_test_support.hpp"

namespace {

using LoaderModule = ScratchDir;

TEST_F(LoaderModule, BadModulesAreSkippedAndTheRestKeepTheirOrder) {
    const std::string missing = "/nonexistent/loader.so", no_record = FBC_NO_RECORD_MODULE;
    const std::string list = missing + ",," + no_record + "," + FBC_TEST_LOADER_MODULE;
    setenv("CANVAS_IMAGE_LOADER", list.c_str(), 1);
    EXPECT_EQ(xc_image_new_from_file("warm.none"), nullptr);
    const std::string out = log_.take();
    // Each failure line ends with dlerror()'s text, which varies by system.
    EXPECT_TRUE(out.starts_with("loading dyn image loader:" + list + "\nloader = " + missing +
                                "\nmodule(" + missing + ") open failed:"))
        << out;
    EXPECT_NE(out.find("\nloader = " + no_record + "\nsymbol('image_loader') loading failed in " +
                       no_record + ":"),
              std::string::npos)
        << out;
    EXPECT_TRUE(out.ends_with(std::string("\nloader = ") + FBC_TEST_LOADER_MODULE +
                              "\nloaders[0] ext = mod\nloaders[1] ext = jpg\nloaders[2] ext = png\n"
                              "loaders[3] ext = bmp\nloaders[4] ext = wbmp\nloaders[5] ext = gif\n"
                              "file(warm.none) load failed: unsupported suffix none\n"))
        << out;
    // The environment is read once: a later change has no effect.
    unsetenv("CANVAS_IMAGE_LOADER");
    EXPECT_NE(Image{xc_image_new_from_file("image.mod")}, nullptr);
}

// The module also scales: the front end always returns 0 for a rescaled load.
TEST_F(LoaderModule, ModuleComesFirstForASharedSuffixScalesAndItsRefusalsFallThrough) {
    setenv("CANVAS_IMAGE_LOADER", FBC_TEST_LOADER_MODULE, 1);
    const Image photo{xc_image_new_from_file(path("photo.png").c_str())};  // builds the registry
    ASSERT_NE(photo, nullptr);
    EXPECT_STREQ(photo->type_name, "mod");
    EXPECT_EQ(xc_image_load_data_rescaled(photo.get(), 0, 4), 0);  // the module refuses 0 x 4
    EXPECT_EQ(photo->data, nullptr);
    EXPECT_EQ(xc_image_load_data_rescaled(photo.get(), 5, 4), 0);
    ASSERT_NE(photo->data, nullptr);
    EXPECT_EQ(at(photo.get(), 4, 3), 0xFF000504u);
    // Saving by name would ask the module, which lists the suffix first.
    const std::string name = path("refuse.png");
    ASSERT_EQ(png_loader.save(Image{xc_image_create(4, 3)}.get(), name.c_str(), nullptr, nullptr),
              0);
    log_.take();
    const Image image{xc_image_new_from_file(name.c_str())};
    // The module's line names the suffix as the module lists it.
    EXPECT_EQ(log_.take(), "PNG file(" + name + ") load failed\n");
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(std::make_pair(image->loader, image->width), std::make_pair(&png_loader, 4));
}

}  // namespace
