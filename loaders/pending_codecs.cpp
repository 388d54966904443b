// Loaders whose codecs have not landed yet: they take no file.
#include "fbcompose/loader.h"

namespace fbc {
namespace {

int refuse(xc_image *, const char *) { return -1; }

const char *const kGif[] = {"gif", nullptr};

}  // namespace
}  // namespace fbc

extern "C" {
xc_image_loader gif_loader = {fbc::kGif, "gif", fbc::refuse, fbc::refuse, nullptr,
                              nullptr, nullptr, nullptr, nullptr};
}
