#include "outputs.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "cli.hpp"
#include "diagnostics.hpp"

namespace fbctool {
namespace {

bool saver_suffix(const std::string &path) {
    const std::string suffix = std::filesystem::path(path).extension().string();
    for (const char *known : {".png", ".jpg", ".jpeg"})
        if (strcasecmp(suffix.c_str(), known) == 0) return true;
    return false;
}

// Why the system would refuse to write `path`, or null.
const char *unwritable(const std::string &path) {
    struct stat info {};
    if (stat(path.c_str(), &info) == 0) {
        if (S_ISDIR(info.st_mode)) return std::strerror(EISDIR);
        return access(path.c_str(), W_OK) == 0 ? nullptr : std::strerror(errno);
    }
    if (errno != ENOENT) return std::strerror(errno);
    const std::filesystem::path parent = std::filesystem::path(path).parent_path();
    const std::string folder = parent.empty() ? "." : parent.string();
    if (stat(folder.c_str(), &info) != 0) return std::strerror(errno);
    if (!S_ISDIR(info.st_mode)) return std::strerror(ENOTDIR);
    return access(folder.c_str(), W_OK | X_OK) == 0 ? nullptr : std::strerror(errno);
}

bool is_regular(const std::string &path) {
    struct stat info {};
    return lstat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

}  // namespace

outputs::~outputs() {
    for (const std::string &path : written_) std::remove(path.c_str());
}

int outputs::check(const std::string &path, output_kind kind) const {
    if (int bad = check_name(path, kind)) return bad;
    if (is_stdout(path)) return 0;
    if (const char *why = unwritable(path)) return fail(cat({"cannot write '", path, "': ", why}));
    return 0;
}

int outputs::check_name(const std::string &path, output_kind kind) const {
    if (kind == output_kind::image && is_stdout(path))
        return usage_error(command_,
                           "cannot write an image to standard output ('-'): the savers "
                           "write named files");
    if (kind == output_kind::image && !saver_suffix(path))
        return usage_error(command_, cat({"cannot write '", path,
                                          "': the library saves images as .png, .jpg or .jpeg"}));
    return 0;
}

bool outputs::failed(const std::string &path, const std::string &why) {
    fail(cat({"cannot write '", path, "': ", why}));
    return false;
}

FILE *outputs::open(const std::string &path) {
    if (is_stdout(path)) return stdout;
    FILE *file = std::fopen(path.c_str(), "wb");
    if (!file) {
        failed(path, std::strerror(errno));
        return nullptr;
    }
    if (is_regular(path)) written_.push_back(path);
    return file;
}

bool outputs::finish(const std::string &path, FILE *file, bool wrote) {
    int error = errno;  // of the failed write, if one failed
    const bool flushed = wrote && std::fflush(file) == 0;
    if (wrote && !flushed) error = errno;
    const bool closed = file == stdout || std::fclose(file) == 0;
    if (flushed && !closed) error = errno;
    return (flushed && closed) || failed(path, std::strerror(error));
}

bool outputs::write_bytes(const std::string &path, const void *data, size_t size) {
    FILE *file = open(path);
    return file && finish(path, file, std::fwrite(data, 1, size, file) == size);
}

bool outputs::save_image(const std::string &path, xc_image *image, const char *options) {
    clear_cause();
    errno = 0;
    if (xc_image_save(image, path.c_str(), nullptr, options) >= 0) {
        if (is_regular(path)) written_.push_back(path);
        return true;
    }
    const int error = errno;
    // The check before the work found the file writable, so the saver got to
    // open it: what it left there is at best part of an image.
    if (is_regular(path)) std::remove(path.c_str());
    std::string why = cause();
    if (why.empty()) why = error ? std::strerror(error) : "the image could not be saved";
    return failed(path, why);
}

}  // namespace fbctool
