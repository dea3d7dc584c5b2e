# cmake -DLIST=<file with the headers' paths, one a line> -DDESTINATION=<folder>
#       -P stage_headers.cmake
#
# Copies the public headers flat into one folder, with #include "folder/name.h" turned into
# #include <orvane/name.h>. The chief header, orvane.h, also gets an include of every other one: it lies below
# some of them in the tree and cannot name them there, but a host shall need no second include.

cmake_minimum_required(VERSION 3.22)

file(STRINGS "${LIST}" sources)
set(names)
foreach(source IN LISTS sources)
    cmake_path(GET source FILENAME name)
    list(APPEND names "${name}")
endforeach()

foreach(source IN LISTS sources)
    cmake_path(GET source FILENAME name)
    file(READ "${source}" content)
    string(REGEX REPLACE "#include \"([^\"\n]*/)?([^\"/\n]+)\"" "#include <orvane/\\2>" content "${content}")
    if(name STREQUAL "orvane.h")
        string(APPEND content "\n")
        foreach(other IN LISTS names)
            if(NOT other STREQUAL "orvane.h")
                string(APPEND content "#include <orvane/${other}>\n")
            endif()
        endforeach()
    endif()
    set(target "${DESTINATION}/${name}")
    set(present "")
    if(EXISTS "${target}")
        file(READ "${target}" present)
    endif()
    # An unchanged header keeps its time, so that what includes it is not built again.
    if(NOT present STREQUAL content)
        file(WRITE "${target}" "${content}")
    endif()
endforeach()

file(GLOB staged RELATIVE "${DESTINATION}" "${DESTINATION}/*.h")
foreach(name IN LISTS staged)
    if(NOT name IN_LIST names)
        file(REMOVE "${DESTINATION}/${name}")
    endif()
endforeach()
