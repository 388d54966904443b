// The scalers' row passes built with -mavx2: the same registers, in the
// shorter encoding, picked where cpu_has(Isa::kAvx2).
#include "pixel/scale_x86.hpp"
