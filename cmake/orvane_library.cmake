# The shared library, made of all object libraries, and the public headers as a host sees them.

include(public_headers)

set(ORVANE_INCLUDE_DIR "${PROJECT_BINARY_DIR}/include")

function(orvane_stage_headers)
    set(sources)
    set(staged)
    foreach(header IN LISTS ORVANE_PUBLIC_HEADERS)
        if(EXISTS "${PROJECT_SOURCE_DIR}/${header}")
            list(APPEND sources "${PROJECT_SOURCE_DIR}/${header}")
        else()
            message(WARNING "Public header ${header} does not exist")
        endif()
    endforeach()
    list(TRANSFORM ORVANE_PUBLIC_GENERATED_HEADERS PREPEND "${ORVANE_GENERATED_DIR}/" OUTPUT_VARIABLE generated)
    list(APPEND sources ${generated})
    foreach(source IN LISTS sources)
        cmake_path(GET source FILENAME name)
        list(APPEND staged "${ORVANE_INCLUDE_DIR}/orvane/${name}")
    endforeach()
    set(unique ${staged})
    list(REMOVE_DUPLICATES unique)
    list(LENGTH staged count)
    list(LENGTH unique unique_count)
    if(NOT count EQUAL unique_count)
        message(FATAL_ERROR "Two public headers have the same name")
    endif()

    # The list changes only when a header comes or goes, so it can be a dependency of the staging.
    set(list_file "${PROJECT_BINARY_DIR}/public_headers.list")
    list(JOIN sources "\n" lines)
    file(CONFIGURE OUTPUT "${list_file}" CONTENT "${lines}\n" @ONLY)
    set(stamp "${PROJECT_BINARY_DIR}/public_headers.stamp")
    add_custom_command(
        OUTPUT "${stamp}"
        BYPRODUCTS ${staged}
        COMMAND ${CMAKE_COMMAND} -DLIST=${list_file} -DDESTINATION=${ORVANE_INCLUDE_DIR}/orvane
                -P ${PROJECT_SOURCE_DIR}/cmake/stage_headers.cmake
        COMMAND ${CMAKE_COMMAND} -E touch "${stamp}"
        DEPENDS ${sources} "${list_file}" "${PROJECT_SOURCE_DIR}/cmake/stage_headers.cmake"
        COMMENT "Staging public headers"
        VERBATIM)
    add_custom_target(orvane_headers ALL DEPENDS "${stamp}")
endfunction()

get_property(orvane_object_libraries GLOBAL PROPERTY ORVANE_OBJECT_LIBRARIES)
if(orvane_object_libraries)
    orvane_stage_headers()

    add_library(orvane SHARED)
    add_library(Orvane::orvane ALIAS orvane)
    orvane_link_objects(orvane)
    # With objects only, CMake cannot tell the language.
    set_target_properties(orvane PROPERTIES
        LINKER_LANGUAGE CXX
        VERSION ${PROJECT_VERSION}
        SOVERSION 0
        LINK_DEPENDS "${PROJECT_SOURCE_DIR}/packaging/orvane.map")
    target_link_options(orvane PRIVATE "LINKER:--version-script=${PROJECT_SOURCE_DIR}/packaging/orvane.map")
    target_include_directories(orvane INTERFACE
        $<BUILD_INTERFACE:${ORVANE_INCLUDE_DIR}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    target_compile_features(orvane INTERFACE cxx_std_20)
    add_dependencies(orvane orvane_headers)
endif()
