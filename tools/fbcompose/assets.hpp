// Where the demo's image files are: $FBCOMPOSE_ASSETS, else beside an
// installed program (PREFIX/share/fbcompose/assets), else the source tree.
#pragma once

#include <string>

namespace fbctool {

std::string find_assets();

}  // namespace fbctool
