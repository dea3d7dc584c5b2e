# What `cmake --install` puts in place: library, headers, pkg-config file, CMake package, data model, what other
# programs load, program.

if(NOT TARGET orvane)
    return()
endif()
include(CMakePackageConfigHelpers)

install(TARGETS orvane-codegen EXPORT OrvaneTargets RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(TARGETS orvane EXPORT OrvaneTargets
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(DIRECTORY "${ORVANE_INCLUDE_DIR}/orvane" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
        FILES_MATCHING PATTERN "*.h")

set(ORVANE_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/Orvane")
install(EXPORT OrvaneTargets NAMESPACE Orvane:: DESTINATION "${ORVANE_PACKAGE_DIR}")
configure_package_config_file(packaging/OrvaneConfig.cmake.in "${PROJECT_BINARY_DIR}/OrvaneConfig.cmake"
    INSTALL_DESTINATION "${ORVANE_PACKAGE_DIR}" NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/OrvaneConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/OrvaneConfig.cmake" "${PROJECT_BINARY_DIR}/OrvaneConfigVersion.cmake"
              cmake/orvane_generate_entities.cmake
        DESTINATION "${ORVANE_PACKAGE_DIR}")

# The prefix is written relative to the file, so that an installed tree may be moved.
cmake_path(SET pkgconfig_dir "${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig")
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY "${pkgconfig_dir}" OUTPUT_VARIABLE ORVANE_PC_PREFIX)
configure_file(packaging/orvane.pc.in "${PROJECT_BINARY_DIR}/orvane.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/orvane.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

set(model "${PROJECT_SOURCE_DIR}/store/Orvane.momd")
if(IS_DIRECTORY "${model}")
    install(DIRECTORY "${model}" DESTINATION "${CMAKE_INSTALL_DATADIR}/orvane")
elseif(EXISTS "${model}")
    install(FILES "${model}" DESTINATION "${CMAKE_INSTALL_DATADIR}/orvane")
endif()

install(DIRECTORY platform/linux/gnome/Windows.shell-extension DESTINATION "${CMAKE_INSTALL_DATADIR}/orvane")

if(TARGET orvane_draw_icon)
    install(TARGETS orvane_draw_icon RUNTIME DESTINATION libexec/orvane)
endif()
if(TARGET orvane_host)
    install(TARGETS orvane_host RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
    # A service manager looks for programs in its own folders only.
    configure_file(packaging/orvane.service.in "${PROJECT_BINARY_DIR}/orvane.service" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/orvane.service" DESTINATION lib/systemd/user)
    # KWin tells its windows only to programs with such an entry.
    configure_file(packaging/orvane.desktop.in "${PROJECT_BINARY_DIR}/orvane.desktop" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/orvane.desktop" DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")
endif()
