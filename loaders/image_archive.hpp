// The archive index's internal controls, for programs that must see
// archives change within one process (the fuzz targets); the library itself
// reads each directory's archive once.
#pragma once

namespace fbc {

// Forgets every directory examined so far: the next lookup in each reads
// its archive again. Paths returned by earlier lookups become invalid.
void forget_image_archives();

}  // namespace fbc
