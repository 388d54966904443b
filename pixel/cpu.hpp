// The instruction sets a faster kernel may need, and whether this CPU has
// them. Kernels for x86 and NEON are asked at run time; the ARMv5TE device
// kernels are a choice of the build.
#pragma once

#include <cstdint>

namespace fbc::px {

enum class Isa : uint8_t {
    kPortable,  // plain C++, runs anywhere
    kArmv5te,   // the device: true exactly when the build targets 32-bit ARM
    kSse2,      // the x86-64 baseline
    kAvx2,
    kNeon,  // always on arm64; on 32-bit ARM as the kernel reports it
};

// True when this CPU runs code built for `isa`.
bool cpu_has(Isa isa);

const char *isa_name(Isa isa);

}  // namespace fbc::px
