// Each picture on its own, by the way of the command that makes one annotated picture.
#include "editor/preview.h"

#include "clip/clip_seek.h"
#include "clip/host_keys.h"
#include "clip/placed_blocks.h"
#include "clip/telemetry_source.h"
#include "frame/frame_renderer.h"
#include "imaging/imaging_access.h"
#include "media/frame_converter.h"
#include "telemetry/derived_keys.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <stdexcept>
#include <utility>

namespace editor {
namespace {

constexpr char const* kNoBlocks = "{\"overlay\":[]}";

std::string withoutHidden(std::string const& text, SwJsonObject root, std::vector<std::size_t> const& hidden)
{
    if (hidden.empty()) {
        return text;
    }
    SwJsonArray shown;
    SwJsonArray const& items = std::as_const(root)["overlay"].toArray();
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (std::find(hidden.begin(), hidden.end(), i) == hidden.end()) {
            shown.append(items[i]);
        }
    }
    root["overlay"] = SwJsonValue(std::move(shown));
    SwString written;
    SwJsonDocument::generateJson(SwJsonValue(root), written, false, 0, SwString());
    return written;
}

std::vector<std::uint8_t> rgbOf(MappedNV12 const& planes, media::ColorFormat color)
{
    media::FramePtr const frame = media::makeFrame();
    frame->format = AV_PIX_FMT_RGB24;
    frame->width = planes.width;
    frame->height = planes.height;
    if (av_frame_get_buffer(frame.get(), 0) < 0) {
        throw std::bad_alloc();
    }
    media::FrameConverter converter;
    converter.fromNv12(planes, *frame, color);
    std::size_t const row = static_cast<std::size_t>(planes.width) * 3;
    std::vector<std::uint8_t> rgb(row * static_cast<std::size_t>(planes.height));
    for (int y = 0; y < planes.height; ++y) {
        std::copy_n(frame->data[0] + static_cast<std::ptrdiff_t>(y) * frame->linesize[0], row,
                    rgb.begin() + static_cast<std::ptrdiff_t>(row) * y);
    }
    return rgb;
}

}  // namespace

struct Preview::Impl {
    clip::ClipSource source;
    ClipFacts facts;
    std::vector<std::string> keys;
    std::vector<std::string> derivable;
    std::string schema;

    void readFacts();
    void readKeys();
};

void Preview::Impl::readFacts()
{
    clip::AnnotatedClip opened(source);
    std::optional<clip::ClipFrame> const first = opened.next();
    if (!first) {
        throw clip::noPictures(source.input);
    }
    facts.name = std::filesystem::path(source.input).filename().string();
    facts.width = opened.traits().width;
    facts.height = opened.traits().height;
    facts.seconds = opened.demuxer().durationSeconds();
    facts.frameSeconds = 1.0 / av_q2d(opened.demuxer().frameRate());
}

void Preview::Impl::readKeys()
{
    if (!schema.empty()) {
        return;
    }
    SwJsonObject payload;
    clip::forEachPacket(source.input, source.telemetry, [&payload](clip::FoundPacket const& found) {
        for (auto const& [key, value] : found.packet.payload) {
            payload.insertOrAssign(key, value);
        }
    });
    if (!payload.empty()) {
        for (auto const& [key, value] : clip::hostKeys(0.0, 0.0, 0)) {
            payload.insertOrAssign(key, value);
        }
    }
    keys = payload.keys();
    for (telemetry::DerivedKey const& each : telemetry::derivableFrom({keys.begin(), keys.end()})) {
        derivable.push_back(each.key);
    }
    std::sort(derivable.begin(), derivable.end());
    telemetry::DerivedKeyMaker(telemetry::KeySelection::withDerived()).addTo(payload);
    frame::FrameRenderer renderer;
    frame::Choice const choice{"schema", std::make_shared<SwJsonObject const>(std::move(payload)), 1, false};
    renderer.render(1, renderer.takePicture(16, 16), {choice.producer}, {choice});
    schema = renderer.plugin().getConfigList();
}

Preview::Preview(clip::ClipSource source) : impl_(std::make_unique<Impl>())
{
    impl_->source = std::move(source);
    impl_->source.config = kNoBlocks;
    impl_->readFacts();
}

Preview::~Preview() = default;

ClipFacts Preview::facts() const
{
    return impl_->facts;
}

std::vector<std::string> const& Preview::keys()
{
    impl_->readKeys();
    return impl_->keys;
}

std::vector<std::string> const& Preview::derivableKeys()
{
    impl_->readKeys();
    return impl_->derivable;
}

std::string const& Preview::schema()
{
    impl_->readKeys();
    return impl_->schema;
}

Shown Preview::show(std::string const& configText, Place const& place, std::vector<std::size_t> const& hidden)
{
    check::ConfigText const config = check::readConfigText(configText);
    clip::ClipSource source = impl_->source;
    source.config = config.fault ? kNoBlocks : withoutHidden(configText, config.root, hidden);
    double const seconds =
        place.frame ? static_cast<double>(*place.frame - 1) * impl_->facts.frameSeconds : place.seconds;
    auto const opened = clip::openShownAt(source, seconds);
    std::optional<clip::ClipFrame> const frame = opened->next();
    if (!frame) {
        throw clip::noPictures(source.input);
    }
    auto const picture = opened->annotate(*frame);
    Shown shown;
    shown.frame = frame->number + 1;
    shown.seconds = opened->sinceFirst(*frame);
    shown.last = !opened->peek();
    shown.width = static_cast<int>(picture->width());
    shown.height = static_cast<int>(picture->height());
    shown.rgb = rgbOf(imaging::planesOf(*picture), opened->traits().color);
    shown.fault = config.fault;
    for (frame::Choice const& choice : frame->telemetry) {
        shown.values.addMissing(SwJsonObject(*choice.payload));
    }
    if (!config.fault) {
        for (auto const& [block, text] : clip::blocksShownAt(impl_->source, config.root, seconds).blocks) {
            if (std::find(hidden.begin(), hidden.end(), block) == hidden.end()) {
                shown.boxes.push_back({block, text.left, text.top, text.right, text.bottom, text.x, text.y});
            }
        }
    }
    return shown;
}

}  // namespace editor
