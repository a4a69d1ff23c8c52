// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What the element's properties hold, take and tell.
#include "element_settings.h"

#include "check/config_text.h"

#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

namespace gst_overlay {
namespace {

enum Property : guint {
    kNoProperty,
    kConfig,
    kConfigFile,
    kTelemetryTimeout,
    kMaxAge,
    kFont,
    kOutline,
    kSchema,
    kAvailableKeys,
    kFramesDrawn,
};

/// Warns of a setting that cannot be used, or keeps that until there is a pipeline that hears it.
void warnOfSetting(GstStanagOverlay* self, std::string const& what)
{
    GstBus* const bus = gst_element_get_bus(elementOf(self));
    if (bus == nullptr) {
        std::lock_guard const hold(self->core->lock);
        self->core->warning = what;
        return;
    }
    gst_object_unref(bus);
    GST_ELEMENT_WARNING(self, RESOURCE, SETTINGS, ("%s", what.c_str()), ("the setting before stays"));
}

void useConfig(GstStanagOverlay* self, std::string config, std::string file)
{
    Core& core = *self->core;
    std::lock_guard const hold(core.lock);
    core.settings.config = std::move(config);
    core.settings.configFile = std::move(file);
    core.warning.clear();
    if (core.overlay) {
        core.overlay->setConfig(core.settings.config);
    }
}

void setConfig(GstStanagOverlay* self, char const* config)
{
    std::string const text = config == nullptr ? R"({"overlay":[]})" : config;
    if (check::ConfigText const read = check::readConfigText(text); read.fault) {
        warnOfSetting(self, "config: " + check::lineOf(*read.fault));
        return;
    }
    useConfig(self, text, "");
}

void setConfigFile(GstStanagOverlay* self, char const* path)
{
    if (path == nullptr) {
        return;
    }
    try {
        std::string text = check::readConfigFile(path);
        if (check::ConfigText const read = check::readConfigText(text); read.fault) {
            throw std::runtime_error(std::string(path) + ": " + check::lineOf(*read.fault));
        }
        useConfig(self, std::move(text), path);
    } catch (std::exception const& failure) {
        warnOfSetting(self, failure.what());
    }
}

void setLook(GstStanagOverlay* self, frame::Look look)
{
    Core& core = *self->core;
    try {
        std::lock_guard const hold(core.lock);
        if (core.overlay) {
            core.overlay->setLook(look);
        }
        core.settings.look = std::move(look);
        return;
    } catch (std::exception const& failure) {
        warnOfSetting(self, failure.what());
    }
}

frame::Look lookOf(Core& core)
{
    std::lock_guard const hold(core.lock);
    return core.settings.look;
}

void setProperty(GObject* object, guint id, GValue const* value, GParamSpec* spec)
{
    GstStanagOverlay* const self = overlayOf(object);
    Core& core = *self->core;
    switch (id) {
    case kConfig:
        setConfig(self, g_value_get_string(value));
        break;
    case kConfigFile:
        setConfigFile(self, g_value_get_string(value));
        break;
    case kTelemetryTimeout: {
        {
            std::lock_guard const hold(core.lock);
            core.settings.timeout = g_value_get_uint64(value);
        }
        gst_element_post_message(elementOf(self), gst_message_new_latency(GST_OBJECT_CAST(self)));
        break;
    }
    case kMaxAge: {
        std::lock_guard const hold(core.lock);
        core.settings.maxAge = g_value_get_uint64(value);
        break;
    }
    case kFont: {
        char const* const font = g_value_get_string(value);
        setLook(self, {font == nullptr ? "" : font, lookOf(core).outline});
        break;
    }
    case kOutline:
        setLook(self, {lookOf(core).font, g_value_get_double(value)});
        break;
    default:
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
        break;
    }
}

char** keysOf(PictureOverlay const* overlay)
{
    GPtrArray* const keys = g_ptr_array_new();
    if (overlay != nullptr) {
        for (std::string const& key : overlay->availableKeys()) {
            g_ptr_array_add(keys, g_strdup(key.c_str()));
        }
    }
    g_ptr_array_add(keys, nullptr);
    return reinterpret_cast<char**>(g_ptr_array_free(keys, FALSE));
}

void getProperty(GObject* object, guint id, GValue* value, GParamSpec* spec)
{
    Core& core = coreOf(object);
    // Held by its own reference: what draws is not to be waited for under the lock of the settings.
    std::shared_ptr<PictureOverlay> const overlay = picturesOf(core);
    std::unique_lock const hold(core.lock);
    switch (id) {
    case kConfig:
        g_value_set_string(value, core.settings.config.c_str());
        break;
    case kConfigFile:
        g_value_set_string(value, core.settings.configFile.c_str());
        break;
    case kTelemetryTimeout:
        g_value_set_uint64(value, core.settings.timeout);
        break;
    case kMaxAge:
        g_value_set_uint64(value, core.settings.maxAge);
        break;
    case kFont:
        g_value_set_string(value, core.settings.look.font.c_str());
        break;
    case kOutline:
        g_value_set_double(value, core.settings.look.outline);
        break;
    case kSchema:
        g_value_set_string(value, overlay ? overlay->schema().c_str() : "");
        break;
    case kAvailableKeys:
        g_value_take_boxed(value, keysOf(overlay.get()));
        break;
    case kFramesDrawn:
        g_value_set_uint64(value, core.drawn);
        break;
    default:
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
        break;
    }
}

}  // namespace

void installProperties(GObjectClass* object)
{
    object->set_property = setProperty;
    object->get_property = getProperty;
    auto const text = static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_PLAYING);
    auto const told = static_cast<GParamFlags>(G_PARAM_READABLE | G_PARAM_STATIC_STRINGS);
    g_object_class_install_property(
        object, kConfig,
        g_param_spec_string("config", "Configuration",
                            "What is drawn, as JSON text; the next picture has it. A text that is none leaves the "
                            "configuration before and posts a warning",
                            nullptr, text));
    g_object_class_install_property(
        object, kConfigFile,
        g_param_spec_string("config-file", "Configuration file",
                            "File of the configuration, read when this is set; set it again to read it again. A file "
                            "that cannot be used leaves the configuration before and posts a warning",
                            nullptr, text));
    g_object_class_install_property(
        object, kTelemetryTimeout,
        g_param_spec_uint64("telemetry-timeout", "Telemetry timeout",
                            "How long a live picture waits for telemetry that is due, in nanoseconds; a part of the "
                            "latency. Pictures of recordings wait a second, or longer if this is. 0: none waits",
                            0, G_MAXINT64, kDefaultTimeout, text));
    g_object_class_install_property(
        object, kMaxAge,
        g_param_spec_uint64("max-age", "Greatest age",
                            "Telemetry that is older than its picture by more than this counts as gone, in "
                            "nanoseconds. 0: none does",
                            0, G_MAXINT64, kDefaultMaxAge, text));
    g_object_class_install_property(object, kFont,
                                    g_param_spec_string("font", "Font",
                                                        "Font family of the texts; empty: DejaVu Sans. One that is "
                                                        "not installed leaves the font before and posts a warning",
                                                        nullptr, text));
    g_object_class_install_property(
        object, kOutline,
        g_param_spec_double("outline", "Outline",
                            "Width of a dark rim around texts, in pixels of a picture of 1080 lines. 0: none", 0.0,
                            frame::kWidestOutline, 0.0, text));
    g_object_class_install_property(
        object, kSchema,
        g_param_spec_string("schema", "Schema",
                            "Description of the configuration as JSON, with the keys of the telemetry so far; from "
                            "state READY on",
                            nullptr, told));
    g_object_class_install_property(object, kAvailableKeys,
                                    g_param_spec_boxed("available-keys", "Available keys",
                                                       "Keys that the telemetry has brought so far", G_TYPE_STRV,
                                                       told));
    g_object_class_install_property(object, kFramesDrawn,
                                    g_param_spec_uint64("frames-drawn", "Frames drawn",
                                                        "Pictures that had telemetry and were drawn on, since PAUSED",
                                                        0, G_MAXUINT64, 0, told));
}

bool loadOverlay(GstStanagOverlay* self)
{
    Core& core = *self->core;
    std::string warning;
    try {
        std::lock_guard const hold(core.lock);
        core.overlay = std::make_shared<PictureOverlay>(core.settings.look);
        if (!core.settings.config.empty()) {
            core.overlay->setConfig(core.settings.config);
        }
        warning.swap(core.warning);
    } catch (std::exception const& failure) {
        GST_ELEMENT_ERROR(self, LIBRARY, INIT, ("%s", failure.what()), (nullptr));
        return false;
    }
    if (!warning.empty()) {
        warnOfSetting(self, warning);
    }
    return true;
}

}  // namespace gst_overlay
