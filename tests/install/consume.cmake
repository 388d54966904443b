# Run by CTest in script mode; see CMakeLists.txt beside it.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out
                  ERROR_VARIABLE out)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "failed (${result}): ${ARGN}\n${out}")
  endif()
  message(STATUS "${out}")
endfunction()

set(prefix ${SCRATCH}/prefix)
file(REMOVE_RECURSE ${SCRATCH})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

# 1. CMake package.
run(${CMAKE_COMMAND} -S ${CONSUMER} -B ${SCRATCH}/cmake-build -G ${GENERATOR}
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_C_COMPILER=${C_COMPILER}
    -DCMAKE_BUILD_TYPE=Release)
run(${CMAKE_COMMAND} --build ${SCRATCH}/cmake-build)
run(${SCRATCH}/cmake-build/consumer)

# 2. pkg-config, linking the shared library.
file(GLOB_RECURSE pc_files ${prefix}/*/fbcompose.pc)
list(GET pc_files 0 pc_file)
get_filename_component(pc_dir ${pc_file} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pc_dir})
execute_process(COMMAND pkg-config --cflags --libs fbcompose
                OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE
                RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "pkg-config does not know fbcompose")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
run(${C_COMPILER} -std=c99 -Wall -Werror ${CONSUMER}/main.c ${flags}
    -o ${SCRATCH}/pkg-consumer)
get_filename_component(lib_dir ${pc_dir} DIRECTORY)
set(ENV{LD_LIBRARY_PATH} ${lib_dir})
run(${SCRATCH}/pkg-consumer)

# 3. The installed tool finds its installed assets and runs the demo.
if(NOT EXISTS ${prefix}/share/fbcompose/assets/spinner.gif)
  message(FATAL_ERROR "the demo's assets were not installed")
endif()
run(${prefix}/bin/fbcompose demo -o ${SCRATCH}/demo/screen.png --size 160x120 --frames 2)
if(NOT EXISTS ${SCRATCH}/demo/screen.raw)
  message(FATAL_ERROR "the installed demo wrote no frame buffer")
endif()
