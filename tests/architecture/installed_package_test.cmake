# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Installs the project into a folder of its own, builds the example host against that package alone, and runs it.
#   cmake -DBUILD_DIR=... -DSOURCE_DIR=... -DWORK_DIR=... -DGENERATOR=... -DCXX=... -DFLAGS=... -P this
function(run)
    execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
    if(NOT result EQUAL 0)
        string(REPLACE ";" " " command "${ARGV}")
        message(FATAL_ERROR "failed (${result}): ${command}\n${output}${errors}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

set(prefix "${WORK_DIR}/prefix")
file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${prefix}")

# The example is copied, so that nothing beside it in the source tree can help.
file(COPY "${SOURCE_DIR}/examples/minimal_host" DESTINATION "${WORK_DIR}")
run("${CMAKE_COMMAND}" -G "${GENERATOR}" -S "${WORK_DIR}/minimal_host" -B "${WORK_DIR}/build"
    "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_CXX_COMPILER=${CXX}" "-DCMAKE_CXX_FLAGS=${FLAGS}"
    -DCMAKE_CXX_STANDARD=17 -DCMAKE_CXX_STANDARD_REQUIRED=ON)
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/build")

file(GLOB plugin "${prefix}/lib*/libstanag_overlay_plugin.so" "${prefix}/lib*/*/libstanag_overlay_plugin.so")
run("${WORK_DIR}/build/minimal_host" "${plugin}")
if(NOT output MATCHES "^StanagOverlayPlugin changed [1-9][0-9]* of 921600 pixels\n$")
    message(FATAL_ERROR "unexpected output: ${output}")
endif()
if(EXISTS "${prefix}/bin/stanag-overlay")
    run("${prefix}/bin/stanag-overlay" schema)
    if(NOT output MATCHES "StanagOverlayPlugin configuration")
        message(FATAL_ERROR "the installed program does not find the plugin: ${output}")
    endif()
endif()

# The element, found in the prefix alone; below READY nothing is drawn, so the plugin is loaded by a pipeline.
file(GLOB element "${prefix}/lib*/gstreamer-1.0/libgststanagoverlay.so" "${prefix}/lib*/*/gstreamer-1.0/libgststanagoverlay.so")
find_program(inspect gst-inspect-1.0)
find_program(launch gst-launch-1.0)
if(element AND inspect AND launch)
    get_filename_component(folder "${element}" DIRECTORY)
    set(ENV{GST_PLUGIN_PATH_1_0} "${folder}")
    set(ENV{GST_REGISTRY_1_0} "${WORK_DIR}/registry.bin")
    unset(ENV{STANAG_OVERLAY_PLUGIN})
    run("${inspect}" stanagoverlay)
    if(NOT output MATCHES "Filename +${element}\n" OR NOT output MATCHES "klv_%u")
        message(FATAL_ERROR "gst-inspect-1.0 does not find the installed element: ${output}")
    endif()
    run("${launch}" -q videotestsrc num-buffers=2 ! video/x-raw,format=NV12,width=64,height=48 ! stanagoverlay
        ! fakesink)
endif()
