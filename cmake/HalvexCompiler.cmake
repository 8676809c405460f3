# How every target of the project is compiled: C++20 without extensions, hidden symbols, warnings as errors.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(HALVEX_CCACHE ccache)
if(HALVEX_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${HALVEX_CCACHE})
endif()

if(HALVEX_SANITIZE)
  add_compile_options(-fsanitize=${HALVEX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${HALVEX_SANITIZE})
endif()
if(HALVEX_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()

# Warnings stay with our own targets: nobody who links the library inherits them.
add_library(halvex_warnings INTERFACE)
target_compile_options(halvex_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
