# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# The Debian packages: one for every component of the install rules. scripts/package runs this and finishes what CPack
# makes; the version is that of project(), the maintainer stands here and nowhere else.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SOURCE stanag-overlay)
set(CPACK_DEBIAN_PACKAGE_NAME stanag-overlay)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Stanag Overlay maintainers <maintainers@stanag-overlay.example.com>")
# Every package has a first line of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "${PROJECT_HOMEPAGE_URL}")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
if(CMAKE_SYSROOT)
    foreach(folder lib usr/lib)
        list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
            "${CMAKE_SYSROOT}/${folder}/${CMAKE_LIBRARY_ARCHITECTURE}")
    endforeach()
endif()
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Built for Debian 12 and its libraries.
set(CPACK_DEBIAN_PACKAGE_VERSION "${PROJECT_VERSION}-1~deb12")
set(CPACK_PACKAGE_VERSION "${CPACK_DEBIAN_PACKAGE_VERSION}")

if(NOT OVERLAY_SCDOC)
    message(FATAL_ERROR "scdoc is missing, which makes the manual page")
endif()

# For which machine: what the compiler builds for, which need not be this one.
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -dumpmachine
    OUTPUT_VARIABLE machine OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND dpkg-architecture -t${machine} -qDEB_HOST_ARCH
    OUTPUT_VARIABLE CPACK_DEBIAN_PACKAGE_ARCHITECTURE OUTPUT_STRIP_TRAILING_WHITESPACE
    ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)

# What every package holds about itself. The date is that of SOURCE_DATE_EPOCH.
string(TIMESTAMP overlay_package_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(overlay_package_files "${PROJECT_BINARY_DIR}/packaging")
configure_file(packaging/changelog.in ${overlay_package_files}/changelog.Debian @ONLY)
configure_file(CHANGELOG.md ${overlay_package_files}/changelog COPYONLY)
configure_file(packaging/shlibs.in ${overlay_package_files}/shlibs @ONLY)
configure_file(packaging/triggers ${overlay_package_files}/triggers COPYONLY)
foreach(file changelog changelog.Debian)
    execute_process(COMMAND gzip -9nf ${overlay_package_files}/${file} COMMAND_ERROR_IS_FATAL ANY)
endforeach()

# overlay_package(COMPONENT NAME SECTION [ARCHITECTURE all] [DEPENDS text] [RECOMMENDS text] [SUGGESTS text]
#     SUMMARY text TEXT text): the package NAME, with the dependencies of its binaries and those named.
function(overlay_package component name section)
    cmake_parse_arguments(ARG "" "ARCHITECTURE;DEPENDS;RECOMMENDS;SUGGESTS;SUMMARY;TEXT" "" ${ARGN})
    string(TOUPPER ${component} upper)
    set(prefix CPACK_DEBIAN_${upper})
    set(${prefix}_PACKAGE_NAME ${name} PARENT_SCOPE)
    set(${prefix}_PACKAGE_SECTION ${section} PARENT_SCOPE)
    set(${prefix}_PACKAGE_DEPENDS "${ARG_DEPENDS}" PARENT_SCOPE)
    set(${prefix}_PACKAGE_RECOMMENDS "${ARG_RECOMMENDS}" PARENT_SCOPE)
    set(${prefix}_PACKAGE_SUGGESTS "${ARG_SUGGESTS}" PARENT_SCOPE)
    set(${prefix}_DESCRIPTION "${ARG_SUMMARY}\n${ARG_TEXT}" PARENT_SCOPE)
    if(ARG_ARCHITECTURE)
        set(${prefix}_PACKAGE_ARCHITECTURE ${ARG_ARCHITECTURE} PARENT_SCOPE)
    else()
        set(${prefix}_PACKAGE_SHLIBDEPS ON PARENT_SCOPE)
    endif()
    set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${component} PARENT_SCOPE)
    install(FILES
        ${overlay_package_files}/changelog.gz ${overlay_package_files}/changelog.Debian.gz packaging/copyright
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
endfunction()

set(framework_package libsw-framework${PROJECT_VERSION_MAJOR})
set(same_version "(= ${CPACK_DEBIAN_PACKAGE_VERSION})")

overlay_package(framework ${framework_package} libs
    SUMMARY "strings, JSON and variants shared by video hosts and their plugins"
    TEXT "One shared library of strings, JSON of any depth, a variant with a registry of
conversions, and encryption of single values. Host and plugin use the same
one, so that both see one registry of types.")
set(CPACK_DEBIAN_FRAMEWORK_PACKAGE_CONTROL_EXTRA "${overlay_package_files}/shlibs;${overlay_package_files}/triggers")

overlay_package(framework_dev libsw-framework-dev libdevel
    DEPENDS "${framework_package} ${same_version}"
    SUMMARY "strings, JSON and variants shared by video hosts (development)"
    TEXT "Headers of libsw_framework, and the name by which programs are linked with it.")

overlay_package(plugin stanag-overlay-plugin video
    DEPENDS "${framework_package} ${same_version}, fonts-dejavu-core"
    SUMMARY "telemetry overlay for video hosts, a render plugin"
    TEXT "The render plugin StanagOverlayPlugin draws camera, gimbal, position, range
and time telemetry (STANAG, MISB) as configurable text blocks onto NV12
frames. A video host loads it by class_loader.

The package also holds the reference implementation of the imaging library by
which the plugin draws.")

overlay_package(program stanag-overlay video
    DEPENDS "${framework_package} ${same_version}, stanag-overlay-plugin ${same_version}"
    SUGGESTS "stanag-overlay-doc, bash-completion"
    SUMMARY "burns STANAG and MISB telemetry as text into video"
    TEXT "stanag-overlay reads video with KLV telemetry (MISB ST 0601) in any form
FFmpeg reads, files and live streams, and writes it again with the telemetry
as text on the pictures. It also lists telemetry, makes single pictures,
checks configurations, has an editor for them in the browser, and makes
flights to try it on.")

overlay_package(dev stanag-overlay-dev libdevel
    DEPENDS "libsw-framework-dev ${same_version}, stanag-overlay-plugin ${same_version}, libclass-loader-dev"
    SUMMARY "telemetry overlay for video hosts (development)"
    TEXT "Headers of the interface between a video host and its render plugins, and the
CMake package StanagOverlay, for hosts that load StanagOverlayPlugin. An
example host stands beside the documentation.")

overlay_package(doc stanag-overlay-doc doc
    ARCHITECTURE all
    SUMMARY "telemetry overlay for video (documentation)"
    TEXT "The pages of stanag-overlay: every member of a configuration with a picture of
what it does, every telemetry key, the editor, live work, GStreamer pipelines,
the plugin interface, and the examples.")

if(TARGET gststanagoverlay)
    overlay_package(gstreamer gstreamer1.0-stanag-overlay video
        DEPENDS "${framework_package} ${same_version}, stanag-overlay-plugin ${same_version}"
        SUMMARY "telemetry overlay for video, GStreamer element"
        TEXT "The element stanagoverlay draws STANAG and MISB telemetry as text onto the
pictures of GStreamer pipelines: one pad for video, any number of pads for
telemetry, and a configuration that may change while it runs.")
endif()

# Pages and examples keep their places to one another, so that the links between them work.
set(overlay_doc_dir ${CMAKE_INSTALL_DATADIR}/doc/stanag-overlay-doc)
install(FILES README.md DESTINATION ${overlay_doc_dir} COMPONENT doc)
install(DIRECTORY docs examples DESTINATION ${overlay_doc_dir} COMPONENT doc PATTERN man EXCLUDE)
install(DIRECTORY examples/minimal_host
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/stanag-overlay-dev/examples COMPONENT dev)

include(CPack)
