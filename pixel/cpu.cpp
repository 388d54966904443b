// What the running CPU offers, for the choice of kernels.
#include "pixel/cpu.hpp"

#if defined(__arm__)
#include <sys/auxv.h>
#endif

namespace fbc::px {

bool cpu_has(Isa isa) {
    switch (isa) {
        case Isa::kPortable: return true;
#if defined(__x86_64__) || defined(__i386__)
        // Reads what libgcc learnt from cpuid at start-up, the operating
        // system's support for the wider registers included.
        case Isa::kSse2: return __builtin_cpu_supports("sse2");
        case Isa::kAvx2: return __builtin_cpu_supports("avx2");
#endif
#if defined(__aarch64__)
        case Isa::kNeon: return true;
#elif defined(__arm__)
        case Isa::kArmv5te: return __ARM_ARCH >= 5;
        case Isa::kNeon: return (getauxval(AT_HWCAP) & (1u << 12)) != 0;  // HWCAP_NEON
#endif
        default: return false;
    }
}

const char *isa_name(Isa isa) {
    switch (isa) {
        case Isa::kPortable: return "portable";
        case Isa::kArmv5te: return "armv5te";
        case Isa::kSse2: return "sse2";
        case Isa::kAvx2: return "avx2";
        case Isa::kNeon: return "neon";
    }
    return "?";
}

}  // namespace fbc::px
