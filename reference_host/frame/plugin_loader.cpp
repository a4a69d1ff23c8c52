// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Loading of the plugin through class_loader, as any host does it.
#include "frame/plugin_loader.h"

#include <class_loader/class_loader.hpp>
#include <console_bridge/console.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace frame {
namespace {

namespace fs = std::filesystem;

constexpr char const* kLibrary = "libstanag_overlay_plugin.so";
constexpr char const* kOverride = "STANAG_OVERLAY_PLUGIN";
constexpr char const* kClass = "StanagOverlayPlugin";

std::string findLibrary(std::vector<std::string> const& folders)
{
    std::vector<std::string> const candidates = pluginCandidates(folders);
    std::string places;
    for (std::string const& candidate : candidates) {
        std::error_code ignored;
        if (fs::exists(candidate, ignored)) {
            return candidate;
        }
        places += (places.empty() ? "" : ", ") + candidate;
    }
    throw std::runtime_error("the plugin's library was not found (" + places + "); build the target " +
                             "stanag_overlay_plugin or let " + kOverride + " name the file");
}

}  // namespace

std::vector<std::string> programFolders()
{
    std::error_code ignored;
    fs::path const folder = fs::read_symlink("/proc/self/exe", ignored).parent_path();
    return {folder / ".." / "lib", folder / ".." / OVERLAY_LIBRARY_FOLDER, folder};
}

std::vector<std::string> pluginCandidates(std::vector<std::string> const& folders)
{
    if (char const* const named = std::getenv(kOverride); named != nullptr && *named != '\0') {
        return {named};
    }
    std::vector<std::string> candidates;
    for (std::string const& folder : folders) {
        std::string const plain = (fs::path(folder) / kLibrary).lexically_normal().string();
        if (candidates.empty() || candidates.back() != plain) {
            candidates.push_back(plain);
        }
    }
    return candidates;
}

struct LoadedPlugin::Impl {
    class_loader::ClassLoader loader;
    // Ends before the loader: the instance's code lies in the library.
    class_loader::ClassLoader::UniquePtr<IRenderPlugin> plugin;

    explicit Impl(std::string const& library)
        : loader(library)
        , plugin(loader.createUniqueInstance<IRenderPlugin>(kClass))
    {
    }
};

LoadedPlugin::LoadedPlugin(std::vector<std::string> const& folders)
{
    // class_loader logs its own steps; a failure reaches us as an exception all the same.
    console_bridge::noOutputHandler();
    std::string const library = findLibrary(folders);
    try {
        impl_ = std::make_unique<Impl>(library);
    } catch (class_loader::ClassLoaderException const& failure) {
        throw std::runtime_error(library + ": cannot be loaded as the overlay plugin: " + failure.what() +
                                 "; build it for this program's libraries");
    }
}

LoadedPlugin::~LoadedPlugin() = default;

IRenderPlugin& LoadedPlugin::get()
{
    return *impl_->plugin;
}

}  // namespace frame
