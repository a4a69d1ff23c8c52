# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Install rules and the exported package StanagOverlay: what a host needs to be built (headers, framework,
# reference imaging library) and to run (the plugin, the program). Nobody links against the plugin; the package
# tells where its library is.
#
# Every rule has its component, and every component is one Debian package (OverlayPackage.cmake):
#   framework        libsw_framework.so.N
#   framework_dev    its headers, and the name to link against
#   plugin           the plugin and the reference imaging library
#   program          stanag-overlay with its manual page, completions and example configurations
#   dev              the plugin interface's headers and the package StanagOverlay
#   gstreamer        the element
#   doc              the pages
include(CMakePackageConfigHelpers)

set(overlay_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/StanagOverlay")
set(overlay_include_dir "${CMAKE_INSTALL_INCLUDEDIR}/stanag_overlay")

install(TARGETS sw_framework EXPORT StanagOverlayTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT framework NAMELINK_COMPONENT framework_dev)
install(TARGETS host_api EXPORT StanagOverlayTargets)
# Headers in lower case are the framework's own affair.
file(GLOB overlay_framework_headers CONFIGURE_DEPENDS framework/Sw*.h)
install(FILES ${overlay_framework_headers} DESTINATION ${overlay_include_dir} COMPONENT framework_dev)
file(GLOB overlay_interface_headers CONFIGURE_DEPENDS host_api/*.h)
install(FILES ${overlay_interface_headers} DESTINATION ${overlay_include_dir} COMPONENT dev)
install(TARGETS stanag_overlay_plugin LIBRARY DESTINATION ${OVERLAY_PRIVATE_LIBDIR} COMPONENT plugin)

if(OVERLAY_HOST)
    install(TARGETS zelvo_tools EXPORT StanagOverlayTargets
        LIBRARY DESTINATION ${OVERLAY_PRIVATE_LIBDIR} COMPONENT plugin)
    target_include_directories(zelvo_tools INTERFACE $<INSTALL_INTERFACE:${overlay_include_dir}>)
    install(FILES reference_host/imaging/imaging_access.h DESTINATION ${overlay_include_dir}/imaging COMPONENT dev)
    install(TARGETS stanag-overlay RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT program)
    file(GLOB overlay_examples CONFIGURE_DEPENDS examples/*.json)
    install(FILES ${overlay_examples} DESTINATION ${CMAKE_INSTALL_DATADIR}/stanag-overlay/examples COMPONENT program)
    install(FILES completions/stanag-overlay.bash COMPONENT program
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME stanag-overlay)
    install(FILES completions/_stanag-overlay COMPONENT program
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
    install(FILES completions/stanag-overlay.fish COMPONENT program
        DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

    find_program(OVERLAY_SCDOC scdoc DOC "Makes the manual page")
    if(OVERLAY_SCDOC)
        set(manual ${PROJECT_BINARY_DIR}/stanag-overlay.1.gz)
        add_custom_command(OUTPUT ${manual} DEPENDS docs/man/stanag-overlay.1.scd
            COMMAND ${OVERLAY_SCDOC} < ${PROJECT_SOURCE_DIR}/docs/man/stanag-overlay.1.scd | gzip -9n > ${manual})
        add_custom_target(manual_page ALL DEPENDS ${manual})
        install(FILES ${manual} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)
    endif()
endif()

# Recipes for many clips and for services, beside the program.
if(TARGET stanag-overlay)
    install(DIRECTORY fleet/ DESTINATION ${CMAKE_INSTALL_DATADIR}/stanag-overlay/fleet
        COMPONENT program USE_SOURCE_PERMISSIONS PATTERN systemd EXCLUDE)
    configure_file(fleet/systemd/stanag-overlay@.service.in stanag-overlay@.service @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/stanag-overlay@.service DESTINATION lib/systemd/system COMPONENT program)
endif()

# Apart, for those who package: it needs GStreamer. With the prefix /usr this is GStreamer's own folder.
if(TARGET gststanagoverlay)
    install(TARGETS gststanagoverlay
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/gstreamer-1.0 COMPONENT gstreamer)
endif()

install(EXPORT StanagOverlayTargets NAMESPACE StanagOverlay:: DESTINATION ${overlay_package_dir} COMPONENT dev)
configure_package_config_file(cmake/StanagOverlayConfig.cmake.in
    ${PROJECT_BINARY_DIR}/StanagOverlayConfig.cmake INSTALL_DESTINATION ${overlay_package_dir}
    PATH_VARS OVERLAY_PRIVATE_LIBDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/StanagOverlayConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/StanagOverlayConfig.cmake
    ${PROJECT_BINARY_DIR}/StanagOverlayConfigVersion.cmake
    cmake/FindClassLoader.cmake
    DESTINATION ${overlay_package_dir} COMPONENT dev)
