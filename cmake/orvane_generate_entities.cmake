# orvane_generate_entities(TARGET <target> MODEL <folder.momd>
#     [OUTPUT_FOLDER <folder>]     # default: a folder of the target's own in the build folder
#     [NAMESPACE <name>]           # default: orvane
#     [EXPORT_MACRO <name>]
#     [INCLUDE_PREFIX <path>]      # folder that #include names before the files of the classes
#     [INTERNAL])                  # for the library's own build
#
# Adds the generated bases and key tables of the model's classes to TARGET, made anew whenever the model changes.
# The classes themselves are the target's own sources. The calling folder and OUTPUT_FOLDER, without the include prefix
# at its end, join the target's include path.
function(orvane_generate_entities)
    cmake_parse_arguments(PARSE_ARGV 0 arg "INTERNAL"
        "TARGET;MODEL;OUTPUT_FOLDER;NAMESPACE;EXPORT_MACRO;INCLUDE_PREFIX" "")
    if(arg_UNPARSED_ARGUMENTS OR NOT arg_TARGET OR NOT arg_MODEL)
        message(FATAL_ERROR "orvane_generate_entities: expected TARGET and MODEL, got ${ARGV}")
    endif()
    cmake_path(ABSOLUTE_PATH arg_MODEL BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}")
    if(NOT arg_OUTPUT_FOLDER)
        set(arg_OUTPUT_FOLDER "${CMAKE_CURRENT_BINARY_DIR}/${arg_TARGET}_entities")
        if(arg_INCLUDE_PREFIX)
            cmake_path(APPEND arg_OUTPUT_FOLDER "${arg_INCLUDE_PREFIX}")
        endif()
    endif()

    # Which files there will be has to be known before the generator is built: the model tells.
    file(READ "${arg_MODEL}/versions.json" versions)
    string(JSON current GET "${versions}" current)
    set(version_file "${arg_MODEL}/${current}.json")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${arg_MODEL}/versions.json" "${version_file}")
    file(READ "${version_file}" version)
    string(JSON count LENGTH "${version}" entities)
    set(outputs)
    math(EXPR last "${count} - 1")
    foreach(index RANGE ${last})
        string(JSON class ERROR_VARIABLE without_class GET "${version}" entities ${index} class)
        if(without_class)
            continue()
        endif()
        string(REGEX REPLACE "([A-Z]+)([A-Z][a-z])" "\\1_\\2" file "${class}")
        string(REGEX REPLACE "([a-z0-9])([A-Z])" "\\1_\\2" file "${file}")
        string(TOLOWER "${file}" file)
        list(APPEND outputs "${arg_OUTPUT_FOLDER}/_${file}.h" "${arg_OUTPUT_FOLDER}/_${file}.cpp"
                            "${arg_OUTPUT_FOLDER}/${file}_keys.h" "${arg_OUTPUT_FOLDER}/${file}_keys.cpp")
    endforeach()

    set(options)
    foreach(option IN ITEMS NAMESPACE EXPORT_MACRO INCLUDE_PREFIX)
        if(arg_${option})
            string(TOLOWER "--${option}" word)
            string(REPLACE "_" "-" word "${word}")
            list(APPEND options "${word}" "${arg_${option}}")
        endif()
    endforeach()
    if(arg_INTERNAL)
        list(APPEND options --internal)
    endif()
    cmake_path(GET arg_MODEL FILENAME name)
    add_custom_command(
        OUTPUT ${outputs}
        COMMAND Orvane::orvane-codegen "${arg_MODEL}" "${arg_OUTPUT_FOLDER}" ${options}
        DEPENDS Orvane::orvane-codegen "${arg_MODEL}/versions.json" "${version_file}"
        COMMENT "Generating the entities of ${name}"
        VERBATIM)
    # Whoever includes the headers can depend on this target.
    add_custom_target(${arg_TARGET}_entities DEPENDS ${outputs})
    target_sources(${arg_TARGET} PRIVATE ${outputs})
    add_dependencies(${arg_TARGET} ${arg_TARGET}_entities)
    set(include_folder "${arg_OUTPUT_FOLDER}")
    if(arg_INCLUDE_PREFIX)
        string(REGEX REPLACE "/*${arg_INCLUDE_PREFIX}/*$" "" include_folder "${include_folder}")
    endif()
    target_include_directories(${arg_TARGET} PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}" "${include_folder}")
endfunction()
