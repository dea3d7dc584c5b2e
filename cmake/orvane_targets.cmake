# orvane_object_library(NAME
#     [DEPENDS <target>...]   # object libraries and imported targets whose headers the sources use
#     SOURCES <file>...)
#
# Declares one folder of the library. Include paths and system libraries named in DEPENDS reach whatever
# later links NAME; the objects themselves are gathered by orvane_link_objects().
function(orvane_object_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "DEPENDS;SOURCES")
    if(arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "orvane_object_library(${name}): unexpected ${arg_UNPARSED_ARGUMENTS}")
    endif()
    add_library(${name} OBJECT ${arg_SOURCES})
    target_link_libraries(${name} PUBLIC orvane_build_flags)
    foreach(dependency IN LISTS arg_DEPENDS)
        # A folder that is not part of this checkout must not turn into "-lorvane_folder".
        if(dependency MATCHES "^orvane_" AND NOT TARGET ${dependency})
            message(STATUS "${name}: ${dependency} is not part of this build")
        else()
            target_link_libraries(${name} PUBLIC ${dependency})
        endif()
    endforeach()
    set_property(GLOBAL APPEND PROPERTY ORVANE_OBJECT_LIBRARIES ${name})
endfunction()

# Links the objects of every object library declared so far into TARGET, with their system libraries.
function(orvane_link_objects target)
    get_property(libraries GLOBAL PROPERTY ORVANE_OBJECT_LIBRARIES)
    target_link_libraries(${target} PRIVATE orvane_build_flags ${libraries})
endfunction()

# orvane_test(NAME SOURCES <file>... [DEPENDS <target>...] [LABEL <label>] [TIMEOUT <seconds>])
#
# Declares a GoogleTest program over all object libraries. Each of its tests runs through tools/fresh-home:
# with an empty home of its own and without the user's desktop.
function(orvane_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "LABEL;TIMEOUT" "DEPENDS;SOURCES")
    if(arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "orvane_test(${name}): unexpected ${arg_UNPARSED_ARGUMENTS}")
    endif()
    find_package(GTest REQUIRED)
    include(GoogleTest)
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 120)
    endif()
    add_executable(${name} ${arg_SOURCES})
    orvane_link_objects(${name})
    target_link_libraries(${name} PRIVATE ${arg_DEPENDS} GTest::gtest GTest::gtest_main)
    target_compile_definitions(${name} PRIVATE ORVANE_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
                                               ORVANE_BINARY_DIR="${PROJECT_BINARY_DIR}")
    # The only place where CMake lets a command stand before a test program, in all versions we support.
    set_target_properties(${name} PROPERTIES CROSSCOMPILING_EMULATOR "${PROJECT_SOURCE_DIR}/tools/fresh-home")
    gtest_discover_tests(${name}
        DISCOVERY_MODE PRE_TEST
        DISCOVERY_TIMEOUT 60
        TEST_PREFIX "${name}."
        PROPERTIES TIMEOUT "${arg_TIMEOUT}" LABELS "${arg_LABEL}")
endfunction()

# orvane_fuzz_target(NAME SOURCES <file>...)
#
# Declares a libFuzzer program over all object libraries; the target "fuzz" builds them all.
function(orvane_fuzz_target name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES")
    add_executable(${name} ${arg_SOURCES})
    orvane_link_objects(${name})
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    if(NOT TARGET fuzz)
        add_custom_target(fuzz)
    endif()
    add_dependencies(fuzz ${name})
endfunction()
