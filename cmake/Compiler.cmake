# One list of warnings and flags for everything that is built here.

set(CMAKE_CXX_STANDARD 23)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Checked CACHE STRING "" FORCE)
endif()
# Release speed, with the library's own checks and assert() kept alive.
# Plain variables: project() has already put empty ones for a type of its own into the cache.
set(CMAKE_CXX_FLAGS_CHECKED "-O2 -g1 -D_GLIBCXX_ASSERTIONS")
set(CMAKE_EXE_LINKER_FLAGS_CHECKED "")
set(CMAKE_SHARED_LINKER_FLAGS_CHECKED "")
set(CMAKE_MODULE_LINKER_FLAGS_CHECKED "")
set(CMAKE_STATIC_LINKER_FLAGS_CHECKED "")

find_program(ZQ_CCACHE ccache)
if(ZQ_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # A base directory and no hashed working directory: a clone elsewhere hits the same cache.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR}
        CCACHE_NOHASHDIR=1 CCACHE_SLOPPINESS=time_macros ${ZQ_CCACHE})
endif()

add_library(zq_flags INTERFACE)
target_compile_options(zq_flags INTERFACE -Wall -Wextra -Werror -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
    -Wimplicit-fallthrough -Wunused -Wno-missing-field-initializers -fno-omit-frame-pointer
    -ffile-prefix-map=${CMAKE_SOURCE_DIR}/=)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC 12 sees overlapping copies in joining a literal and a std::string (its bug 105651).
    target_compile_options(zq_flags INTERFACE -Wno-restrict)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_compile_options(zq_flags INTERFACE -Wthread-safety -Wno-gnu-zero-variadic-macro-arguments)
endif()

find_program(ZQ_MOLD mold)
if(ZQ_MOLD)
    target_link_options(zq_flags INTERFACE -fuse-ld=mold)
endif()
target_link_options(zq_flags INTERFACE -Wl,--as-needed)

if(ZQ_SANITIZE)
    target_compile_options(zq_flags INTERFACE -fsanitize=${ZQ_SANITIZE} -fno-sanitize-recover=all)
    target_link_options(zq_flags INTERFACE -fsanitize=${ZQ_SANITIZE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # GCC 12 loses track of a variant's active member in instrumented code.
        target_compile_options(zq_flags INTERFACE -Wno-maybe-uninitialized)
    endif()
endif()
if(ZQ_COVERAGE)
    target_compile_options(zq_flags INTERFACE --coverage)
    target_link_options(zq_flags INTERFACE --coverage)
endif()
if(ZQ_FUZZ)
    target_compile_options(zq_flags INTERFACE -fsanitize=address,undefined,fuzzer-no-link -fno-sanitize-recover=all)
    target_link_options(zq_flags INTERFACE -fsanitize=address,undefined)
endif()
