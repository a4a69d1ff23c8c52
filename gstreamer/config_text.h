// The configuration of an element: read from a file and looked through before the plugin gets it.
#pragma once

#include <string>

namespace gst_overlay {

/// The file's text. Throws std::runtime_error with one line when it cannot be read or is no configuration.
std::string readConfigFile(std::string const& path);

/// What makes the text no configuration, in one line with its place; empty when nothing does.
std::string faultOf(std::string const& config);

}  // namespace gst_overlay
