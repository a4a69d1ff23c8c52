# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Build settings shared by every target of the project.
add_library(overlay_settings INTERFACE)
target_compile_options(overlay_settings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Wold-style-cast
    # Every float is computed as written: products are not fused into sums, so that results are the same
    # on every processor.
    -ffp-contract=off)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # With -O3 this compiler sees copies that overlap in its own std::string (GCC bug 105651).
    target_compile_options(overlay_settings INTERFACE $<$<CONFIG:Release>:-Wno-restrict>)
endif()
if(OVERLAY_WERROR)
    target_compile_options(overlay_settings INTERFACE -Werror)
endif()
if(OVERLAY_SANITIZE)
    add_compile_options(-fsanitize=${OVERLAY_SANITIZE} -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${OVERLAY_SANITIZE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # Among the sanitizers' own code this compiler sees unset values in a std::optional (GCC bug 80635).
        target_compile_options(overlay_settings INTERFACE -Wno-maybe-uninitialized)
    endif()
    if(OVERLAY_SANITIZE MATCHES "undefined")
        # "undefined" leaves out a floating-point number that does not fit the integer it is converted to.
        add_compile_options(-fsanitize=float-cast-overflow -fno-sanitize-recover=undefined,float-cast-overflow)
        add_link_options(-fsanitize=float-cast-overflow)
    endif()
endif()
if(OVERLAY_FUZZ)
    # Coverage of the libraries too: it is what leads the fuzzer through them.
    add_compile_options(-fsanitize=fuzzer-no-link)
    add_link_options(-fsanitize=fuzzer-no-link)
endif()
