// Loaders whose codecs have not landed yet: they take no file.
#include "fbcompose/loader.h"

namespace fbc {
namespace {

int refuse(xc_image *, const char *) { return -1; }

const char *const kJpeg[] = {"jpg", "jpeg", nullptr};
const char *const kPng[] = {"png", nullptr};
const char *const kBmp[] = {"bmp", nullptr};
const char *const kGif[] = {"gif", nullptr};

}  // namespace
}  // namespace fbc

extern "C" {
xc_image_loader jpeg_loader = {fbc::kJpeg, "jpg", fbc::refuse, fbc::refuse, nullptr,
                               nullptr, nullptr, nullptr, nullptr};
xc_image_loader png_loader = {fbc::kPng, "png", fbc::refuse, fbc::refuse, nullptr,
                              nullptr, nullptr, nullptr, nullptr};
xc_image_loader bmp_loader = {fbc::kBmp, "bmp", fbc::refuse, fbc::refuse, nullptr,
                              nullptr, nullptr, nullptr, nullptr};
xc_image_loader gif_loader = {fbc::kGif, "gif", fbc::refuse, fbc::refuse, nullptr,
                              nullptr, nullptr, nullptr, nullptr};
}
