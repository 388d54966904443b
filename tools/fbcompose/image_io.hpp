// Loading a whole image for a subcommand, with the file and the cause named
// on failure.
#pragma once

#include <fbcompose/fbcompose.hpp>

#include <functional>
#include <string>

namespace fbctool {

// The image with its pixels decoded; empty after printing
// "fbcompose: cannot load 'PATH': CAUSE". An image without pixels or with a
// size of 0 counts as a failure.
fbcompose::image load_image(const std::string &path);

// Plays an animation once round: calls `frame` with each frame's delay in
// milliseconds, the pixels of that frame in the image, starting with the
// frame it holds now. Returns the number of frames (an animation that never
// comes back to its first frame is cut off at 10000).
int play_once(const fbcompose::image &animation, const std::function<void(int32_t)> &frame);

// The image drawn over opaque black on a canvas of its own size, so that
// images with alpha convert as they would show on an empty screen.
fbcompose::image flatten(const fbcompose::image &image);

}  // namespace fbctool
