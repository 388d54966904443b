// The files a command writes: each checked before the work starts, written
// with the system's reason on failure, and removed again when the command
// fails after it began writing them (no half-written results).
#pragma once

#include <fbcompose/fbcompose.h>

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace fbctool {

enum class output_kind {
    bytes,  // any file name, or "-" for standard output
    image,  // a name ending in .png, .jpg or .jpeg: written by the library's savers
};

class outputs {
public:
    explicit outputs(std::string_view command) : command_(command) {}
    ~outputs();
    outputs(const outputs &) = delete;
    outputs &operator=(const outputs &) = delete;

    // 0, or the exit status after a one-line message: kUsage for a name the
    // command cannot write to (another suffix, "-" for an image), kFailed
    // for a file or folder the system will not let it write.
    int check(const std::string &path, output_kind kind) const;
    // The name alone (kUsage only), for an output whose folder is made later.
    int check_name(const std::string &path, output_kind kind) const;

    // A file to write in steps ("-": standard output); null after a
    // one-line message with the cause. finish() closes it; `wrote` is false
    // when a write failed (errno then holds why).
    FILE *open(const std::string &path);
    bool finish(const std::string &path, FILE *file, bool wrote);

    // False after a one-line message with the cause.
    bool write_bytes(const std::string &path, const void *data, size_t size);
    bool save_image(const std::string &path, xc_image *image, const char *options = nullptr);

    // The command succeeded: everything written stays.
    void keep() { written_.clear(); }

private:
    bool failed(const std::string &path, const std::string &why);

    std::string command_;
    std::vector<std::string> written_;
};

// True for "-", standard output.
inline bool is_stdout(const std::string &path) { return path == "-"; }

}  // namespace fbctool
