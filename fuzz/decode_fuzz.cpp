// One decoder through the file front end: the input becomes a file named
// with the decoder's suffix (FBC_FUZZ_SUFFIX, one program per decoder), is
// loaded as a program loads it, every frame advanced, every pixel read. The
// same bytes decoded from memory must give the file's first frame.
#include <algorithm>

#include "file_support.hpp"

#ifndef FBC_FUZZ_SUFFIX
#error "FBC_FUZZ_SUFFIX names the decoder's suffix"
#endif

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    // The type guess reads a header of up to 6 bytes or up to a zero byte.
    char header[8] = {};
    std::copy_n(data, std::min(size, sizeof header - 1), header);
    xc_image_guess_image_type(header);
    // Compared pixel for pixel with the file's, so every pixel of it is read.
    xc_image *memory = xc_image_new_from_memory(data, size, FBC_FUZZ_SUFFIX);
    fuzz::load_every_frame(fuzz::write_scratch("input." FBC_FUZZ_SUFFIX, data, size), &memory);
    if (memory) xc_image_unref(memory);
    return 0;
}
