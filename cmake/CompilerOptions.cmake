# ccache, where there is one, makes a second build of the same sources a matter of seconds.
if(NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER AND NOT DEFINED ENV{CMAKE_CXX_COMPILER_LAUNCHER})
  find_program(RADIAL_BLUR_CCACHE ccache)
  mark_as_advanced(RADIAL_BLUR_CCACHE)
  if(RADIAL_BLUR_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${RADIAL_BLUR_CCACHE})
  endif()
endif()

# One target that carries the warnings and the arithmetic rules of every target of ours.
find_package(Threads REQUIRED)
add_library(radial_blur_options INTERFACE)
target_link_libraries(radial_blur_options INTERFACE Threads::Threads)

if(MSVC)
  target_compile_options(radial_blur_options INTERFACE /W4 /WX /fp:precise /utf-8 /Zc:__cplusplus)
else()
  # Results are promised to the bit: no contraction into fused operations, no fast-math.
  target_compile_options(radial_blur_options INTERFACE
    -Wall -Wextra -Wconversion -Wsign-conversion -Wshadow -Wvla -Wnon-virtual-dtor -Werror
    -ffp-contract=off -fno-fast-math)
  # Builds in two folders are to be equal: no absolute source path goes into the objects.
  target_compile_options(radial_blur_options INTERFACE
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 warns of overlaps inside std::string's own operators at -O3 (its bug 105651).
    target_compile_options(radial_blur_options INTERFACE -Wno-restrict)
  endif()
  if(RADIAL_BLUR_SANITIZE)
    target_compile_options(radial_blur_options INTERFACE
      -fsanitize=${RADIAL_BLUR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(radial_blur_options INTERFACE -fsanitize=${RADIAL_BLUR_SANITIZE})
  endif()
endif()

if(MINGW)
  # Foreign DLLs beside the module would keep hosts from loading it; two builds are to be equal:
  # no time of day, and no image base that hangs on the name of the output file.
  target_link_options(radial_blur_options INTERFACE
    -static -Wl,--no-insert-timestamp -Wl,--disable-auto-image-base $<$<CONFIG:Release>:-s>)
  target_compile_definitions(radial_blur_options INTERFACE
    WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0601)
endif()
