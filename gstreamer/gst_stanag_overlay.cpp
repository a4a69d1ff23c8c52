// The element as GStreamer sees it: pads, events, queries, properties. Pictures pass through in the thread that brings
// them; what is drawn stands in picture_overlay.h, what telemetry they wait for in telemetry_inbox.h.
#include "gst_stanag_overlay.h"

#include "check/config_text.h"
#include "picture_overlay.h"
#include "telemetry_inbox.h"

#include <gst/video/video.h>

#include <atomic>
#include <cstdio>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

GST_DEBUG_CATEGORY_STATIC(stanag_overlay_debug);
#define GST_CAT_DEFAULT stanag_overlay_debug

namespace {

using gst_overlay::PictureOverlay;
using gst_overlay::TelemetryInbox;

constexpr guint64 kDefaultTimeout = 100 * GST_MSECOND;
constexpr guint64 kDefaultMaxAge = 5 * GST_SECOND;
constexpr double kNanoseconds = 1e9;
/// From so many lines on, pictures that do not name their colours have those of BT.709.
constexpr int kBt709FromLines = 720;

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

/// What properties say.
struct Settings {
    std::string config;
    std::string configFile;
    guint64 timeout = kDefaultTimeout;
    guint64 maxAge = kDefaultMaxAge;
    frame::Look look;
};

/// What the video's thread knows of its stream.
struct Video {
    GstVideoInfo info{};
    bool hasInfo = false;
    GstSegment segment{};
    std::uint64_t lastNs = 0;  ///< running time of the last picture
    bool any = false;          ///< there has been one
    GstClockTime lastDuration = 0;
};

struct Core {
    std::mutex lock;  ///< of the settings, the warning and the pointer to the overlay
    Settings settings;
    std::string warning;  ///< could not be posted yet
    std::shared_ptr<PictureOverlay> overlay;
    TelemetryInbox inbox;
    Video video;
    unsigned nextPad = 0;
    std::atomic<bool> live = false;
    std::atomic<guint64> drawn = 0;
};

}  // namespace

struct GstStanagOverlay {
    GstElement element;
    GstPad* sink;
    GstPad* src;
    Core* core;
};

struct GstStanagOverlayClass {
    GstElementClass parent;
};

/// A pad that telemetry comes through.
struct GstStanagOverlayPad {
    GstPad pad;
    guint id;
    GstSegment segment;
};

struct GstStanagOverlayPadClass {
    GstPadClass parent;
};

// The macros cast as C does.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"
G_DEFINE_TYPE(GstStanagOverlayPad, gst_stanag_overlay_pad, GST_TYPE_PAD)
G_DEFINE_TYPE(GstStanagOverlay, gst_stanag_overlay, GST_TYPE_ELEMENT)
#pragma GCC diagnostic pop

namespace {

GstStanagOverlay* overlayOf(gpointer instance)
{
    return static_cast<GstStanagOverlay*>(instance);
}

Core& coreOf(gpointer instance)
{
    return *overlayOf(instance)->core;
}

GstStanagOverlayPad& telemetryPad(gpointer pad)
{
    return *static_cast<GstStanagOverlayPad*>(pad);
}

std::shared_ptr<PictureOverlay> pictures(Core& core)
{
    std::lock_guard const hold(core.lock);
    return core.overlay;
}

/// Running time in nanoseconds, negative before the segment's beginning; empty without a time.
std::optional<gint64> runningTime(GstSegment const& segment, GstClockTime time)
{
    if (!GST_CLOCK_TIME_IS_VALID(time) || segment.format != GST_FORMAT_TIME) {
        return std::nullopt;
    }
    guint64 running = 0;
    int const sign = gst_segment_to_running_time_full(&segment, GST_FORMAT_TIME, time, &running);
    return sign == 0 ? std::nullopt : std::optional(sign * static_cast<gint64>(running));
}

double secondsOf(gint64 nanoseconds)
{
    return static_cast<double>(nanoseconds) / kNanoseconds;
}

// Settings

/// Warns of a setting that cannot be used, or keeps that until there is a pipeline that hears it.
void warnOfSetting(GstStanagOverlay* self, std::string const& what)
{
    GstBus* const bus = gst_element_get_bus(&self->element);
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
        gst_element_post_message(&self->element, gst_message_new_latency(GST_OBJECT_CAST(self)));
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
    std::shared_ptr<PictureOverlay> const overlay = pictures(core);
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

// What was drawn, for those who ask

/// One text: what it says, where its first line begins, how high it is, and the box around it.
GstStructure* structureOf(imaging::DrawnText const& draw)
{
    return gst_structure_new("draw", "text", G_TYPE_STRING, draw.text.c_str(), "x", G_TYPE_INT, draw.x, "y", G_TYPE_INT,
                             draw.y, "size", G_TYPE_INT, draw.pixelSize, "left", G_TYPE_INT, draw.left, "top",
                             G_TYPE_INT, draw.top, "right", G_TYPE_INT, draw.right, "bottom", G_TYPE_INT, draw.bottom,
                             nullptr);
}

/// The handler of the action signal "get-draws".
GstStructure* getDraws(GstElement* element)
{
    GValue draws = G_VALUE_INIT;
    g_value_init(&draws, GST_TYPE_LIST);
    if (auto const overlay = pictures(coreOf(element))) {
        for (imaging::DrawnText const& draw : overlay->draws()) {
            GValue value = G_VALUE_INIT;
            g_value_init(&value, GST_TYPE_STRUCTURE);
            g_value_take_boxed(&value, structureOf(draw));
            gst_value_list_append_and_take_value(&draws, &value);
        }
    }
    GstStructure* const all = gst_structure_new_empty("stanag-overlay-draws");
    gst_structure_take_value(all, "draws", &draws);
    return all;
}

// Video

gst_overlay::PictureColor colorOf(GstVideoInfo const& info, GstCaps const* caps)
{
    bool const isNamed = gst_structure_has_field(gst_caps_get_structure(caps, 0), "colorimetry") != FALSE &&
                         info.colorimetry.matrix != GST_VIDEO_COLOR_MATRIX_UNKNOWN;
    return {isNamed ? info.colorimetry.matrix == GST_VIDEO_COLOR_MATRIX_BT709 : info.height >= kBt709FromLines,
            info.colorimetry.range == GST_VIDEO_COLOR_RANGE_0_255};
}

void takeCaps(Core& core, GstCaps const* caps)
{
    core.video.hasInfo = gst_video_info_from_caps(&core.video.info, caps) != FALSE;
    if (auto const overlay = pictures(core); overlay && core.video.hasInfo) {
        overlay->setColor(colorOf(core.video.info, caps));
    }
}

/// Pictures without a time follow the one before.
std::uint64_t pictureTime(Video& video, GstBuffer const& buffer)
{
    GstClockTime const time = GST_BUFFER_PTS_IS_VALID(&buffer) ? GST_BUFFER_PTS(&buffer) : GST_BUFFER_DTS(&buffer);
    std::optional<gint64> const running = runningTime(video.segment, time);
    std::uint64_t const follows = video.any ? video.lastNs + video.lastDuration : 0;
    // A picture before the segment's beginning is not shown, so that no better time is needed.
    video.lastNs = running ? static_cast<std::uint64_t>(std::max<gint64>(*running, 0)) : follows;
    video.lastDuration = GST_BUFFER_DURATION_IS_VALID(&buffer) ? GST_BUFFER_DURATION(&buffer) : 0;
    video.any = true;
    return video.lastNs;
}

/// The planes of a buffer while they are mapped.
class MappedPicture {
public:
    MappedPicture(GstVideoInfo const& info, GstBuffer*& buffer) : info_(info), buffer_(buffer) {}
    ~MappedPicture()
    {
        if (mapped_) {
            gst_video_frame_unmap(&frame_);
        }
    }
    MappedPicture(MappedPicture const&) = delete;
    MappedPicture& operator=(MappedPicture const&) = delete;

    /// A buffer that others read too is copied first; null planes when it cannot be mapped.
    MappedNV12 planes()
    {
        buffer_ = gst_buffer_make_writable(buffer_);
        mapped_ = gst_video_frame_map(&frame_, &info_, buffer_, GST_MAP_READWRITE) != FALSE;
        if (!mapped_) {
            failed_ = true;
            return {};
        }
        return {static_cast<std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame_, 0)),
                static_cast<std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame_, 1)),
                GST_VIDEO_FRAME_WIDTH(&frame_),
                GST_VIDEO_FRAME_HEIGHT(&frame_),
                GST_VIDEO_FRAME_PLANE_STRIDE(&frame_, 0),
                GST_VIDEO_FRAME_PLANE_STRIDE(&frame_, 1)};
    }
    bool failed() const { return failed_; }

private:
    GstVideoInfo const& info_;
    GstBuffer*& buffer_;
    GstVideoFrame frame_{};
    bool mapped_ = false;
    bool failed_ = false;
};

/// Draws on the buffer, which may be replaced by a copy. Throws what the plugin throws. Returns false when the planes
/// cannot be had.
bool annotate(Core& core, PictureOverlay& overlay, GstBuffer*& buffer, std::uint64_t runningNs,
              std::optional<double> maxAge)
{
    gst_overlay::PictureMoment moment;
    moment.runningNs = runningNs;
    moment.choices = core.inbox.choose(secondsOf(static_cast<gint64>(runningNs)), overlay.nextIndex(), maxAge);
    moment.producers = core.inbox.producers();
    moment.newestSeconds = core.inbox.newestSeconds();
    MappedPicture picture(core.video.info, buffer);
    if (overlay.draw(std::move(moment), [&picture] { return picture.planes(); })) {
        ++core.drawn;
    }
    return !picture.failed();
}

GstFlowReturn pushPicture(GstPad*, GstObject* parent, GstBuffer* buffer)
{
    GstStanagOverlay* const self = overlayOf(parent);
    Core& core = *self->core;
    std::shared_ptr<PictureOverlay> const overlay = pictures(core);
    if (!core.video.hasInfo || !overlay) {
        gst_buffer_unref(buffer);
        return GST_FLOW_NOT_NEGOTIATED;
    }
    std::unique_lock settings(core.lock);
    auto const timeout = std::chrono::nanoseconds(core.settings.timeout);
    std::optional<double> const maxAge = core.settings.maxAge == 0
                                             ? std::nullopt
                                             : std::optional(static_cast<double>(core.settings.maxAge) / kNanoseconds);
    settings.unlock();
    std::uint64_t const runningNs = pictureTime(core.video, *buffer);
    auto const source = core.live ? TelemetryInbox::Source::Live : TelemetryInbox::Source::Recording;
    if (!core.inbox.waitFor(secondsOf(static_cast<gint64>(runningNs)), timeout, source)) {
        gst_buffer_unref(buffer);
        return GST_FLOW_FLUSHING;
    }
    try {
        if (!annotate(core, *overlay, buffer, runningNs, maxAge)) {
            GST_ELEMENT_ERROR(self, RESOURCE, WRITE, ("a picture's memory cannot be written to"),
                              ("put videoconvert or the decoder's download element before this one"));
            gst_buffer_unref(buffer);
            return GST_FLOW_ERROR;
        }
    } catch (std::exception const& failure) {
        GST_ELEMENT_ERROR(self, LIBRARY, FAILED, ("%s", failure.what()), (nullptr));
        gst_buffer_unref(buffer);
        return GST_FLOW_ERROR;
    }
    return gst_pad_push(self->src, buffer);
}

void learnWhetherLive(GstStanagOverlay* self)
{
    GstQuery* const query = gst_query_new_latency();
    if (gst_pad_peer_query(self->sink, query) != FALSE) {
        gboolean live = FALSE;
        gst_query_parse_latency(query, &live, nullptr, nullptr);
        self->core->live = live != FALSE;
    }
    gst_query_unref(query);
}

gboolean takeVideoEvent(GstPad* pad, GstObject* parent, GstEvent* event)
{
    GstStanagOverlay* const self = overlayOf(parent);
    Core& core = *self->core;
    switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_CAPS: {
        GstCaps* caps = nullptr;
        gst_event_parse_caps(event, &caps);
        takeCaps(core, caps);
        break;
    }
    case GST_EVENT_SEGMENT:
        gst_event_copy_segment(event, &core.video.segment);
        core.inbox.beginPictures();
        learnWhetherLive(self);
        break;
    case GST_EVENT_EOS:
        core.inbox.endPictures();
        break;
    case GST_EVENT_FLUSH_START:
        core.inbox.startPictureFlush();
        break;
    case GST_EVENT_FLUSH_STOP:
        core.inbox.finishPictureFlush();
        gst_segment_init(&core.video.segment, GST_FORMAT_TIME);
        core.video.any = false;
        if (auto const overlay = pictures(core)) {
            overlay->restart();
        }
        break;
    default:
        break;
    }
    return gst_pad_event_default(pad, parent, event);
}

// Telemetry

GstFlowReturn pushTelemetry(GstPad* pad, GstObject* parent, GstBuffer* buffer)
{
    Core& core = coreOf(parent);
    GstStanagOverlayPad const& own = telemetryPad(pad);
    std::optional<gint64> const running = runningTime(own.segment, GST_BUFFER_PTS(buffer));
    std::optional<double> const seconds = running ? std::optional(secondsOf(*running)) : std::nullopt;
    auto taken = TelemetryInbox::Taken::Yes;
    GstMapInfo map;
    if (GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_GAP)) {
        if (seconds) {
            core.inbox.advance(own.id, *seconds);
        }
    } else if (gst_buffer_map(buffer, &map, GST_MAP_READ) != FALSE) {
        taken = core.inbox.add(own.id, {map.data, map.size}, seconds);
        gst_buffer_unmap(buffer, &map);
    }
    gst_buffer_unref(buffer);
    switch (taken) {
    case TelemetryInbox::Taken::Flushing:
        return GST_FLOW_FLUSHING;
    case TelemetryInbox::Taken::Ended:
        return GST_FLOW_EOS;
    default:
        return GST_FLOW_OK;
    }
}

/// Nothing comes up to the end of the gap.
void takeGap(Core& core, GstStanagOverlayPad const& pad, GstEvent* event)
{
    GstClockTime begin = GST_CLOCK_TIME_NONE;
    GstClockTime duration = GST_CLOCK_TIME_NONE;
    gst_event_parse_gap(event, &begin, &duration);
    GstClockTime const end = GST_CLOCK_TIME_IS_VALID(duration) ? begin + duration : begin;
    if (auto const running = runningTime(pad.segment, end)) {
        core.inbox.advance(pad.id, secondsOf(*running));
    }
}

/// Events of telemetry end here: what follows the element is video.
gboolean takeTelemetryEvent(GstPad* pad, GstObject* parent, GstEvent* event)
{
    Core& core = coreOf(parent);
    GstStanagOverlayPad& own = telemetryPad(pad);
    switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_STREAM_START:
        core.inbox.begin(own.id);
        break;
    case GST_EVENT_SEGMENT:
        gst_event_copy_segment(event, &own.segment);
        core.inbox.begin(own.id);
        break;
    case GST_EVENT_GAP:
        takeGap(core, own, event);
        break;
    case GST_EVENT_EOS:
        core.inbox.end(own.id);
        break;
    case GST_EVENT_FLUSH_START:
        core.inbox.startFlush(own.id);
        break;
    case GST_EVENT_FLUSH_STOP:
        gst_segment_init(&own.segment, GST_FORMAT_TIME);
        core.inbox.finishFlush(own.id);
        break;
    default:
        break;
    }
    gst_event_unref(event);
    return TRUE;
}

// Both ends

/// Video goes from sink to src; telemetry goes nowhere.
GstIterator* linksOf(GstPad* pad, GstObject* parent)
{
    GstStanagOverlay* const self = overlayOf(parent);
    GValue value = G_VALUE_INIT;
    g_value_init(&value, GST_TYPE_PAD);
    g_value_set_object(&value, pad == self->src ? self->sink : self->src);
    GstIterator* const links = gst_iterator_new_single(GST_TYPE_PAD, &value);
    g_value_unset(&value);
    return links;
}

GstIterator* noLinks(GstPad*, GstObject*)
{
    return nullptr;
}

/// Live pictures may wait here for their telemetry.
void addLatency(GstStanagOverlay* self, GstQuery* query)
{
    gboolean live = FALSE;
    GstClockTime least = 0;
    GstClockTime most = 0;
    gst_query_parse_latency(query, &live, &least, &most);
    Core& core = *self->core;
    core.live = live != FALSE;
    if (live == FALSE || core.inbox.producers().empty()) {
        return;
    }
    std::lock_guard const hold(core.lock);
    // What waits is not kept here: it holds up who brings it, so that more cannot be delayed than before.
    gst_query_set_latency(query, live, least + core.settings.timeout, most);
}

gboolean answer(GstPad* pad, GstObject* parent, GstQuery* query)
{
    gboolean const answered = gst_pad_query_default(pad, parent, query);
    if (answered != FALSE && GST_QUERY_TYPE(query) == GST_QUERY_LATENCY) {
        addLatency(overlayOf(parent), query);
    }
    return answered;
}

gboolean sendSeekToTelemetry(GstElement*, GstPad* pad, gpointer event)
{
    if (GST_PAD_PAD_TEMPLATE(pad) != nullptr &&
        GST_PAD_TEMPLATE_PRESENCE(GST_PAD_PAD_TEMPLATE(pad)) == GST_PAD_REQUEST) {
        gst_pad_push_event(pad, gst_event_ref(static_cast<GstEvent*>(event)));
    }
    return TRUE;
}

/// A seek goes to the telemetry's sources too. Demuxers that have had it from the video know it by its number.
gboolean takeUpstreamEvent(GstPad* pad, GstObject* parent, GstEvent* event)
{
    if (GST_EVENT_TYPE(event) != GST_EVENT_SEEK) {
        return gst_pad_event_default(pad, parent, event);
    }
    GstEvent* const seek = gst_event_ref(event);
    gboolean const done = gst_pad_event_default(pad, parent, event);
    gst_element_foreach_sink_pad(&overlayOf(parent)->element, sendSeekToTelemetry, seek);
    gst_event_unref(seek);
    return done;
}

// Pads and states

GstPad* requestPad(GstElement* element, GstPadTemplate* offered, gchar const* name, GstCaps const*)
{
    Core& core = coreOf(element);
    unsigned id = 0;
    {
        std::lock_guard const hold(core.lock);
        id = name != nullptr && std::sscanf(name, "klv_%u", &id) == 1 ? id : core.nextPad;
        core.nextPad = std::max(core.nextPad, id + 1);
    }
    std::string const padName = "klv_" + std::to_string(id);
    auto* const pad = static_cast<GstPad*>(g_object_new(gst_stanag_overlay_pad_get_type(), "name", padName.c_str(),
                                                        "direction", offered->direction, "template", offered, nullptr));
    telemetryPad(pad).id = id;
    gst_pad_set_chain_function(pad, pushTelemetry);
    gst_pad_set_event_function(pad, takeTelemetryEvent);
    gst_pad_set_iterate_internal_links_function(pad, noLinks);
    if (gst_element_add_pad(element, pad) == FALSE) {
        return nullptr;
    }
    core.inbox.addProducer(id, padName);
    gst_pad_set_active(pad, TRUE);
    gst_element_post_message(element, gst_message_new_latency(GST_OBJECT_CAST(element)));
    return pad;
}

void releasePad(GstElement* element, GstPad* pad)
{
    coreOf(element).inbox.removeProducer(telemetryPad(pad).id);
    gst_pad_set_active(pad, FALSE);
    gst_element_remove_pad(element, pad);
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

void beginWork(Core& core)
{
    core.inbox.open();
    core.video = Video{};
    gst_segment_init(&core.video.segment, GST_FORMAT_TIME);
    core.drawn = 0;
    if (auto const overlay = pictures(core)) {
        overlay->restart();
    }
}

GstStateChangeReturn changeState(GstElement* element, GstStateChange change)
{
    GstStanagOverlay* const self = overlayOf(element);
    Core& core = *self->core;
    if (change == GST_STATE_CHANGE_NULL_TO_READY && !loadOverlay(self)) {
        return GST_STATE_CHANGE_FAILURE;
    }
    if (change == GST_STATE_CHANGE_READY_TO_PAUSED) {
        beginWork(core);
    }
    if (change == GST_STATE_CHANGE_PAUSED_TO_READY) {
        core.inbox.close();
    }
    GstStateChangeReturn const done = GST_ELEMENT_CLASS(gst_stanag_overlay_parent_class)->change_state(element, change);
    if (change == GST_STATE_CHANGE_READY_TO_NULL) {
        std::lock_guard const hold(core.lock);
        core.overlay.reset();
    }
    return done;
}

void finalize(GObject* object)
{
    delete overlayOf(object)->core;
    G_OBJECT_CLASS(gst_stanag_overlay_parent_class)->finalize(object);
}

GstStaticPadTemplate sinkTemplate = GST_STATIC_PAD_TEMPLATE(const_cast<char*>("sink"), GST_PAD_SINK, GST_PAD_ALWAYS,
                                                            GST_STATIC_CAPS(GST_VIDEO_CAPS_MAKE("NV12")));
GstStaticPadTemplate srcTemplate = GST_STATIC_PAD_TEMPLATE(const_cast<char*>("src"), GST_PAD_SRC, GST_PAD_ALWAYS,
                                                           GST_STATIC_CAPS(GST_VIDEO_CAPS_MAKE("NV12")));
GstStaticPadTemplate klvTemplate =
    GST_STATIC_PAD_TEMPLATE(const_cast<char*>("klv_%u"), GST_PAD_SINK, GST_PAD_REQUEST, GST_STATIC_CAPS("meta/x-klv"));

void installProperties(GObjectClass* object)
{
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

}  // namespace

static void gst_stanag_overlay_pad_class_init(GstStanagOverlayPadClass*) {}

static void gst_stanag_overlay_pad_init(GstStanagOverlayPad* pad)
{
    gst_segment_init(&pad->segment, GST_FORMAT_TIME);
}

static void gst_stanag_overlay_class_init(GstStanagOverlayClass* type)
{
    GST_DEBUG_CATEGORY_INIT(stanag_overlay_debug, "stanagoverlay", 0, "telemetry overlay");
    GObjectClass* const object = G_OBJECT_CLASS(type);
    object->set_property = setProperty;
    object->get_property = getProperty;
    object->finalize = finalize;
    installProperties(object);
    /**
     * GstStanagOverlay::get-draws:
     *
     * Returns: (transfer full): the structure "stanag-overlay-draws", whose list "draws" has a structure for each text
     * on the last picture: "text", its anchor "x" and "y", its height "size", and the box around it by "left", "top",
     * "right" and "bottom", all in pixels
     */
    g_signal_new_class_handler("get-draws", G_TYPE_FROM_CLASS(type),
                               static_cast<GSignalFlags>(G_SIGNAL_RUN_LAST | G_SIGNAL_ACTION), G_CALLBACK(getDraws),
                               nullptr, nullptr, nullptr, GST_TYPE_STRUCTURE, 0);

    GstElementClass* const element = GST_ELEMENT_CLASS(type);
    element->change_state = changeState;
    element->request_new_pad = requestPad;
    element->release_pad = releasePad;
    // First: "queue ! o." in a described pipeline, where nothing tells yet what the queue will bring, takes the first
    // that fits, while the other sink is there already and taken by video.
    gst_element_class_add_static_pad_template(element, &klvTemplate);
    gst_element_class_add_static_pad_template(element, &sinkTemplate);
    gst_element_class_add_static_pad_template(element, &srcTemplate);
    gst_element_class_set_static_metadata(
        element, "STANAG telemetry overlay", "Filter/Editor/Video",
        "Draws STANAG 4609 telemetry (MISB ST 0601 KLV) as configured texts onto NV12 pictures",
        "the stanag_overlay developers");
}

static void gst_stanag_overlay_init(GstStanagOverlay* self)
{
    self->core = new Core;
    self->sink = gst_pad_new_from_static_template(&sinkTemplate, "sink");
    gst_pad_set_chain_function(self->sink, pushPicture);
    gst_pad_set_event_function(self->sink, takeVideoEvent);
    gst_pad_set_iterate_internal_links_function(self->sink, linksOf);
    GST_PAD_SET_PROXY_CAPS(self->sink);
    GST_PAD_SET_PROXY_ALLOCATION(self->sink);
    GST_PAD_SET_PROXY_SCHEDULING(self->sink);
    gst_element_add_pad(&self->element, self->sink);
    self->src = gst_pad_new_from_static_template(&srcTemplate, "src");
    gst_pad_set_event_function(self->src, takeUpstreamEvent);
    gst_pad_set_query_function(self->src, answer);
    gst_pad_set_iterate_internal_links_function(self->src, linksOf);
    GST_PAD_SET_PROXY_CAPS(self->src);
    GST_PAD_SET_PROXY_SCHEDULING(self->src);
    gst_element_add_pad(&self->element, self->src);
}
