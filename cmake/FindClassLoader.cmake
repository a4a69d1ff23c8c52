# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# class_loader and what it needs, without its own package configuration: that one runs a Python helper
# which fails when another python3 comes before the system's on the path.
#   ClassLoader::class_loader
find_path(ClassLoader_INCLUDE_DIR class_loader/class_loader.hpp PATH_SUFFIXES class_loader)
find_library(ClassLoader_LIBRARY class_loader)
find_library(ClassLoader_console_bridge_LIBRARY console_bridge)
find_library(ClassLoader_rcpputils_LIBRARY rcpputils)
find_path(ClassLoader_rcpputils_INCLUDE_DIR rcpputils/shared_library.hpp PATH_SUFFIXES rcpputils)
find_path(ClassLoader_rcutils_INCLUDE_DIR rcutils/macros.h PATH_SUFFIXES rcutils)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(ClassLoader REQUIRED_VARS
    ClassLoader_LIBRARY ClassLoader_INCLUDE_DIR ClassLoader_console_bridge_LIBRARY ClassLoader_rcpputils_LIBRARY
    ClassLoader_rcpputils_INCLUDE_DIR ClassLoader_rcutils_INCLUDE_DIR)

if(ClassLoader_FOUND AND NOT TARGET ClassLoader::class_loader)
    add_library(ClassLoader::class_loader SHARED IMPORTED)
    set_target_properties(ClassLoader::class_loader PROPERTIES
        IMPORTED_LOCATION "${ClassLoader_LIBRARY}"
        INTERFACE_INCLUDE_DIRECTORIES
            "${ClassLoader_INCLUDE_DIR};${ClassLoader_rcpputils_INCLUDE_DIR};${ClassLoader_rcutils_INCLUDE_DIR}"
        INTERFACE_LINK_LIBRARIES "${ClassLoader_console_bridge_LIBRARY};${ClassLoader_rcpputils_LIBRARY}")
endif()
mark_as_advanced(ClassLoader_INCLUDE_DIR ClassLoader_LIBRARY ClassLoader_console_bridge_LIBRARY
    ClassLoader_rcpputils_LIBRARY ClassLoader_rcpputils_INCLUDE_DIR ClassLoader_rcutils_INCLUDE_DIR)
