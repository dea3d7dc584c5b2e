# Settings shared by every target.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

if(NOT CMAKE_CXX_COMPILER_LAUNCHER)
    find_program(ORVANE_CCACHE ccache)
    mark_as_advanced(ORVANE_CCACHE)
    if(ORVANE_CCACHE)
        set(CMAKE_CXX_COMPILER_LAUNCHER "${ORVANE_CCACHE}")
    endif()
endif()

include(GNUInstallDirs)
set(CMAKE_INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)

# Generated sources and headers are written below this folder and included by the same names as if they
# were in the tree.
set(ORVANE_GENERATED_DIR "${PROJECT_BINARY_DIR}/generated")
file(MAKE_DIRECTORY "${ORVANE_GENERATED_DIR}")

# What every target of the project, but nobody outside it, is compiled with.
add_library(orvane_build_flags INTERFACE)
target_include_directories(orvane_build_flags INTERFACE "${PROJECT_SOURCE_DIR}" "${ORVANE_GENERATED_DIR}")
target_compile_definitions(orvane_build_flags INTERFACE ORVANE_INTERNAL ORVANE_VERSION="${PROJECT_VERSION}")
target_compile_options(orvane_build_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor> $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>
    $<$<BOOL:${ORVANE_WERROR}>:-Werror>)
target_link_libraries(orvane_build_flags INTERFACE Threads::Threads)
