// Runs a fuzz target over files and folders of inputs, once each, so that
// every kept finding is replayed by the ordinary test runs (native,
// sanitizers, the device under emulation) without libFuzzer. An input that
// makes the process grow past kMaxResidentKiB fails the run: a finding that
// once asked for gigabytes stays bounded.
#include <dirent.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int *argc, char ***argv);

namespace {

// Far above what any kept input may need (a few MiB of pixels, plus what
// the sanitizers or the emulator add), far below the gigabytes of a
// decoder that trusts its header.
constexpr long kMaxResidentKiB = 1024L * 1024;

long peak_resident_kib() {
    struct rusage usage;
    return getrusage(RUSAGE_SELF, &usage) == 0 ? usage.ru_maxrss : 0;
}

bool read_file(const std::string &path, std::vector<uint8_t> &bytes) {
    FILE *file = std::fopen(path.c_str(), "rb");
    if (!file) return false;
    bytes.clear();
    uint8_t block[65536];
    for (size_t n; (n = std::fread(block, 1, sizeof block, file)) > 0;)
        bytes.insert(bytes.end(), block, block + n);
    std::fclose(file);
    return true;
}

// The files of a folder in name order (recursively), or the path itself.
void collect(const std::string &path, std::vector<std::string> &files) {
    struct stat info;
    if (stat(path.c_str(), &info) != 0) return;
    if (!S_ISDIR(info.st_mode)) {
        files.push_back(path);
        return;
    }
    DIR *dir = opendir(path.c_str());
    if (!dir) return;
    std::vector<std::string> names;
    while (const dirent *entry = readdir(dir))
        if (entry->d_name[0] != '.') names.emplace_back(entry->d_name);
    closedir(dir);
    std::sort(names.begin(), names.end());
    for (const std::string &name : names) collect(path + "/" + name, files);
}

}  // namespace

int main(int argc, char **argv) {
    if (LLVMFuzzerInitialize) LLVMFuzzerInitialize(&argc, &argv);
    std::vector<std::string> files;
    for (int i = 1; i < argc; ++i) collect(argv[i], files);
    std::vector<uint8_t> bytes;
    for (const std::string &file : files) {
        if (!read_file(file, bytes)) {
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
