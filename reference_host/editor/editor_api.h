// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What the page can ask: the clip, the schema, the configuration's file, what is to be said about a text, and
// pictures. docs/editor.md lists the addresses.
#pragma once

#include "editor/config_store.h"
#include "editor/preview.h"
#include "editor/request_handler.h"

#include <mutex>
#include <vector>

namespace editor {

class EditorApi {
public:
    /// Neither is owned; both stay as long as the routes are used.
    EditorApi(Preview& preview, ConfigStore& store) : preview_(&preview), store_(&store) {}

    /// All addresses, those of the page's files included. Several threads may use them at once: the clip serves one at
    /// a time, all else does not wait for it.
    std::vector<Route> routes();

private:
    /// What is known of the clip's keys, asked for once.
    struct Keys {
        std::vector<std::string> delivered;
        std::vector<std::string> derivable;
        std::string schema;
    };

    Response clip_();
    Response schema_();
    Response keysAnswer_();
    Response loadConfig_();
    Response saveConfig_(SwJsonObject const& body);
    Response check_(SwJsonObject const& body);
    Response show_(SwJsonObject const& body);
    Keys const& keys_();
    /// {"error", "findings"} of a configuration's text.
    SwJsonObject findings_(std::string const& text);

    Preview* preview_;
    ConfigStore* store_;
    std::mutex previewMutex_;
    std::once_flag keysAsked_;
    Keys keysOfClip_;
};

}  // namespace editor
