# Compiler settings shared by every target of the project: one warning list,
# the sanitizer switch of the asan/tsan/fuzz presets, ccache when present.

find_program(ZANTOR_CCACHE ccache)
if(ZANTOR_CCACHE)
  set(CMAKE_C_COMPILER_LAUNCHER ${ZANTOR_CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${ZANTOR_CCACHE})
endif()

set(ZANTOR_SANITIZE "" CACHE STRING "Sanitizers: address;undefined, thread, or empty")
if(ZANTOR_SANITIZE)
  string(REPLACE ";" "," _zantor_san "${ZANTOR_SANITIZE}")
  add_compile_options(-fsanitize=${_zantor_san} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${_zantor_san})
endif()

# __FILE__ relative to the source tree: exceptions and throw locations then
# name "source/File.cpp" rather than a path of the build machine, and builds
# are reproducible wherever the tree lies.
add_compile_options("-fmacro-prefix-map=${CMAKE_SOURCE_DIR}/=")

function(zantor_set_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow
    -Wnon-virtual-dtor -Wcast-align -Woverloaded-virtual -Wformat=2)
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    target_compile_options(${target} PRIVATE -Wthread-safety)
  endif()
  if(ZANTOR_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
