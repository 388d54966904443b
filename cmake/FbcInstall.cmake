# Install rules: both libraries, the headers, a CMake package
# (find_package(fbcompose) -> fbcompose::fbcompose) and fbcompose.pc. The
# build folder holds a working package too (fbcompose_DIR=<build folder>),
# whose targets point into the build and source trees.
include(CMakePackageConfigHelpers)

install(TARGETS fbcompose fbcompose_static
  EXPORT fbcomposeTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(FBC_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/fbcompose)
install(EXPORT fbcomposeTargets NAMESPACE fbcompose::
        DESTINATION ${FBC_CMAKE_DIR})
export(EXPORT fbcomposeTargets NAMESPACE fbcompose::
       FILE ${PROJECT_BINARY_DIR}/fbcomposeTargets.cmake)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/fbcompose-config.cmake.in
  ${PROJECT_BINARY_DIR}/fbcompose-config.cmake
  INSTALL_DESTINATION ${FBC_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/fbcompose-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/fbcompose-config.cmake
              ${PROJECT_BINARY_DIR}/fbcompose-config-version.cmake
        DESTINATION ${FBC_CMAKE_DIR})

# The .pc file finds its prefix from its own place, so the installed tree
# can be moved (the install test puts it in a scratch folder). It is of use
# only installed, so the build folder keeps it out of pkg-config's sight.
file(RELATIVE_PATH FBC_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${PROJECT_SOURCE_DIR}/cmake/fbcompose.pc.in
               ${PROJECT_BINARY_DIR}/CMakeFiles/fbcompose.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/CMakeFiles/fbcompose.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
