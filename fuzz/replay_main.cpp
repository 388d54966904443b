// Runs a fuzz target over files and folders of inputs, once each, so that
// every kept finding is replayed by the ordinary test runs (native,
// sanitizers, the device under emulation) without libFuzzer. An input that
// makes the process grow past kMaxResidentKiB fails the run: a finding that
// once asked for gigabytes stays bounded.
#include <sys/resource.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);

namespace {

namespace fs = std::filesystem;

// Far above what any kept input may need (a few MiB of pixels, plus what
// the sanitizers or the emulator add), far below the gigabytes of a
// decoder that trusts its header.
constexpr long kMaxResidentKiB = 1024L * 1024;

long peak_resident_kib() {
    struct rusage usage;
    return getrusage(RUSAGE_SELF, &usage) == 0 ? usage.ru_maxrss : 0;
}

// The files of a folder in name order, hidden ones left out, or the path
// itself; nothing for a path that does not exist.
void collect(const fs::path &path, std::vector<fs::path> &files) {
    std::error_code error;
    if (!fs::is_directory(path, error)) {
        if (fs::exists(path, error)) files.push_back(path);
        return;
    }
    const size_t first = files.size();
    for (const auto &entry : fs::directory_iterator(path, error))
        if (entry.path().filename().string()[0] != '.') files.push_back(entry.path());
    std::sort(files.begin() + std::ptrdiff_t(first), files.end());
}

}  // namespace

int main(int argc, char **argv) {
    LLVMFuzzerInitialize(&argc, &argv);
    std::vector<fs::path> files;
    for (int i = 1; i < argc; ++i) collect(argv[i], files);
    for (const fs::path &file : files) {
        std::ifstream in(file, std::ios::binary);
        const std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(in), {}};
        if (!in) {
            std::fprintf(stderr, "replay: cannot read %s\n", file.c_str());
            return 1;
        }
        // An empty vector's data() may be null; libFuzzer never passes null.
        static const uint8_t nothing = 0;
        LLVMFuzzerTestOneInput(bytes.empty() ? &nothing : bytes.data(), bytes.size());
        if (peak_resident_kib() > kMaxResidentKiB) {
            std::fprintf(stderr, "replay: %s made the process grow to %ld MiB\n", file.c_str(),
                         peak_resident_kib() / 1024);
            return 1;
        }
    }
    std::fprintf(stderr, "replay: %zu inputs\n", files.size());
    return 0;
}
