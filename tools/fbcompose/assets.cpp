#include "assets.hpp"

#include <cstdlib>
#include <filesystem>

namespace fbctool {

std::string find_assets() {
    namespace fs = std::filesystem;
    std::error_code error;
    auto usable = [&](const fs::path &dir) { return fs::exists(dir / "spinner.gif", error); };
    if (const char *env = std::getenv("FBCOMPOSE_ASSETS"); env && usable(env)) return env;
    const fs::path exe = fs::read_symlink("/proc/self/exe", error);
    if (!error) {
        const fs::path installed = exe.parent_path().parent_path() / "share/fbcompose/assets";
        if (usable(installed)) return installed.string();
    }
    if (usable(FBC_SOURCE_ASSETS)) return FBC_SOURCE_ASSETS;
    return {};
}

}  // namespace fbctool
