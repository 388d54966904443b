# Cross build for the device: 32-bit ARM EABI, armv5te, software floating
# point, with the dependencies taken from Debian's armel packages unpacked
# into FBC_SYSROOT (see armel-sysroot.sh), and tests run under qemu-user.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabi)
set(CMAKE_C_COMPILER arm-linux-gnueabi-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabi-g++)
set(CMAKE_C_FLAGS_INIT "-march=armv5te -mfloat-abi=soft")
set(CMAKE_CXX_FLAGS_INIT "-march=armv5te -mfloat-abi=soft")

# try_compile projects re-read this file; hand them the sysroot too.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES FBC_SYSROOT)
if(NOT FBC_SYSROOT)
  message(FATAL_ERROR "FBC_SYSROOT must name the armel sysroot folder")
endif()
# Debian's packages are fetched only into a folder that does not exist yet;
# a sysroot of the caller's own is used as it is.
if(NOT EXISTS ${FBC_SYSROOT})
  execute_process(COMMAND bash ${CMAKE_CURRENT_LIST_DIR}/armel-sysroot.sh ${FBC_SYSROOT}
                  RESULT_VARIABLE sysroot_result)
  if(NOT sysroot_result EQUAL 0)
    message(FATAL_ERROR "could not prepare the armel sysroot in ${FBC_SYSROOT}")
  endif()
endif()

# Debian's zlib1g-dev points libz.so at an absolute /lib path, which misses
# inside a sysroot; FindZLIB would then take libz.a and the library would
# carry a private copy of zlib. Name the shared object the device has.
# (The _RELEASE name also overrides what an older build folder cached.)
if(EXISTS ${FBC_SYSROOT}/lib/arm-linux-gnueabi/libz.so.1)
  set(ZLIB_LIBRARY ${FBC_SYSROOT}/lib/arm-linux-gnueabi/libz.so.1)
  set(ZLIB_LIBRARY_RELEASE ${ZLIB_LIBRARY})
endif()

set(FBC_SYSROOT_LIBS
  ${FBC_SYSROOT}/lib/arm-linux-gnueabi ${FBC_SYSROOT}/usr/lib/arm-linux-gnueabi)
set(CMAKE_FIND_ROOT_PATH ${FBC_SYSROOT} /usr/arm-linux-gnueabi)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Debian keeps architecture-specific headers (libjpeg's jconfig.h) in a
# multiarch folder that the cross compiler does not search by itself.
foreach(lang C CXX)
  set(CMAKE_${lang}_STANDARD_INCLUDE_DIRECTORIES
      ${FBC_SYSROOT}/usr/include/${CMAKE_LIBRARY_ARCHITECTURE})
endforeach()

# The libraries' own dependencies (brotli, bz2, ...) are found at link time
# through rpath-link, and at run time through the emulator's library path.
foreach(dir ${FBC_SYSROOT_LIBS})
  string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " -Wl,-rpath-link,${dir}")
  string(APPEND CMAKE_SHARED_LINKER_FLAGS_INIT " -Wl,-rpath-link,${dir}")
endforeach()

string(REPLACE ";" ":" FBC_SYSROOT_LIBPATH "${FBC_SYSROOT_LIBS}")
set(FBC_EMULATOR ${CMAKE_BINARY_DIR}/run-armel)
file(WRITE ${FBC_EMULATOR}
  "#!/bin/sh\n"
  "LD_LIBRARY_PATH=${FBC_SYSROOT_LIBPATH}\${LD_LIBRARY_PATH:+:\$LD_LIBRARY_PATH} "
  "exec qemu-arm -L /usr/arm-linux-gnueabi \"$@\"\n")
file(CHMOD ${FBC_EMULATOR} PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
     GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CMAKE_CROSSCOMPILING_EMULATOR ${FBC_EMULATOR})
