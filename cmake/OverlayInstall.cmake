# Install rules and the exported package StanagOverlay: what a host needs to be built (headers, framework,
# reference imaging library) and to run (the plugin, the program). Nobody links against the plugin; the package
# tells where its library is.
include(CMakePackageConfigHelpers)

set(overlay_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/StanagOverlay")
set(overlay_include_dir "${CMAKE_INSTALL_INCLUDEDIR}/stanag_overlay")

install(TARGETS sw_framework host_api EXPORT StanagOverlayTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
# Headers in lower case are the framework's own affair.
file(GLOB overlay_public_headers CONFIGURE_DEPENDS framework/Sw*.h host_api/*.h)
install(FILES ${overlay_public_headers} DESTINATION ${overlay_include_dir})
install(TARGETS stanag_overlay_plugin LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})

if(OVERLAY_HOST)
    install(TARGETS zelvo_tools EXPORT StanagOverlayTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
    target_include_directories(zelvo_tools INTERFACE $<INSTALL_INTERFACE:${overlay_include_dir}>)
    install(FILES reference_host/imaging/imaging_access.h DESTINATION ${overlay_include_dir}/imaging)
    if(TARGET stanag-overlay)
        install(TARGETS stanag-overlay RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    endif()
endif()

# Apart, for those who package: it needs GStreamer. With the prefix /usr this is GStreamer's own folder.
if(TARGET gststanagoverlay)
    install(TARGETS gststanagoverlay
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/gstreamer-1.0 COMPONENT gstreamer)
endif()

install(EXPORT StanagOverlayTargets NAMESPACE StanagOverlay:: DESTINATION ${overlay_package_dir})
configure_package_config_file(cmake/StanagOverlayConfig.cmake.in
    ${PROJECT_BINARY_DIR}/StanagOverlayConfig.cmake INSTALL_DESTINATION ${overlay_package_dir}
    PATH_VARS CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/StanagOverlayConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/StanagOverlayConfig.cmake
    ${PROJECT_BINARY_DIR}/StanagOverlayConfigVersion.cmake
    cmake/FindClassLoader.cmake
    DESTINATION ${overlay_package_dir})
