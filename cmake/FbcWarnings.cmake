# Warning and sanitizer flags shared by the library, the tests and the tools.
function(fbc_target_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow
                         $<$<BOOL:${FBC_WERROR}>:-Werror>)
endfunction()

if(FBC_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

# Coverage feedback for libFuzzer in everything the fuzz targets link.
if(FBC_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
