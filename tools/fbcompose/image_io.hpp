// Loading a whole image for a subcommand, with the file named on failure.
#pragma once

#include <fbcompose/fbcompose.h>

#include <string>

namespace fbctool {

// The image with its pixels decoded (caller unrefs), or null with `problem`
// naming the file.
xc_image *load_image(const std::string &path, std::string &problem);

// The image drawn over opaque black on a canvas of its own size, so that
// images with alpha convert as they would show on an empty screen.
xc_image *flatten(xc_image *image);

}  // namespace fbctool
