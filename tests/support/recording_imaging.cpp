// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Pictures, pool and painter of the host interface as lines of a text; what a test has told to fail fails here.
#include "recording_imaging.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace recording {

namespace {

std::string quoted(std::string const& text)
{
    std::string out = "\"";
    for (char const c : text) {
        if (c == '\n') {
            out += "\\n";
        } else if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else {
            out += c;
        }
    }
    return out + "\"";
}

/// Nine digits tell every float from its neighbours.
std::string exact(float value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", static_cast<double>(value));
    return text;
}

std::string joined(std::initializer_list<int> numbers)
{
    std::string out;
    for (int const number : numbers) {
        out += (out.empty() ? "" : " ") + std::to_string(number);
    }
    return out;
}

std::string sizeOf(MappedNV12 const& planes)
{
    return " on " + std::to_string(planes.width) + "x" + std::to_string(planes.height);
}

class Target : public IRenderTarget {
public:
    Target(unsigned pictureWidth, unsigned pictureHeight) : width(pictureWidth), height(pictureHeight) {}
    ~Target() override { journal().note("end of target"); }
    Target(Target const&) = delete;
    Target& operator=(Target const&) = delete;

    unsigned width;
    unsigned height;
};

Box defaultBox(std::string const& text, int x, int y, int pixelSize)
{
    int lines = 1;
    int longest = 0;
    int current = 0;
    for (char const c : text) {
        current = c == '\n' ? 0 : current + 1;
        lines += c == '\n' ? 1 : 0;
        longest = std::max(longest, current);
    }
    return {x, y, x + longest * (pixelSize / 2), y + lines * pixelSize};
}

}  // namespace

void Journal::clear()
{
    std::lock_guard<std::mutex> const hold(lock_);
    lines_.clear();
    calls_ = 0;
    throwAt_ = 0;
}

void Journal::throwAtCall(std::size_t number)
{
    std::lock_guard<std::mutex> const hold(lock_);
    throwAt_ = number;
}

void Journal::call(std::string const& line)
{
    std::lock_guard<std::mutex> const hold(lock_);
    lines_.push_back(line);
    if (++calls_ == throwAt_) {
        throw HostFailure("host call " + std::to_string(calls_) + " failed: " + line);
    }
}

void Journal::note(std::string const& line)
{
    std::lock_guard<std::mutex> const hold(lock_);
    lines_.push_back(line);
}

std::size_t Journal::calls() const
{
    std::lock_guard<std::mutex> const hold(lock_);
    return calls_;
}

std::string Journal::text() const
{
    return text({""});
}

std::string Journal::text(std::vector<std::string> const& prefixes) const
{
    std::lock_guard<std::mutex> const hold(lock_);
    std::string out;
    for (std::string const& line : lines_) {
        auto const startsLine = [&line](std::string const& prefix) {
            return line.compare(0, prefix.size(), prefix) == 0;
        };
        if (std::any_of(prefixes.begin(), prefixes.end(), startsLine)) {
            out += line + "\n";
        }
    }
    return out;
}

std::size_t Journal::count(std::string const& prefix) const
{
    std::string const lines = text({prefix});
    return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), '\n'));
}

Journal& journal()
{
    static Journal instance;
    return instance;
}

std::uint8_t* anyPlane()
{
    static std::uint8_t byte = 0;
    return &byte;
}

IRenderBackend::Guard Backend::map(IRenderTarget& target)
{
    int const number = ++mappings_;
    std::string const label = name_ + " " + std::to_string(number);
    journal().call("map " + label);
    auto const& size = dynamic_cast<Target&>(target);
    MappedNV12 planes{anyPlane(), anyPlane(), static_cast<int>(size.width), static_cast<int>(size.height), 0, 0};
    return {mapsTo.value_or(planes), [label] { journal().note("unmap " + label); }};
}

}  // namespace recording

// The imaging library itself.

using recording::journal;

struct Painter::Impl {
    recording::PainterControls controls;
};

Painter::Painter() : impl_(std::make_unique<Impl>()) {}
Painter::~Painter() = default;

Pen Painter::getPen() const
{
    journal().call("getPen");
    return impl_->controls.pen;
}

void Painter::setPen(Pen const& pen)
{
    journal().call("setPen " + recording::joined({pen.r, pen.g, pen.b, pen.thickness}));
    impl_->controls.pen = pen;
}

void Painter::setPenThickness(unsigned char thickness)
{
    journal().call("setPenThickness " + std::to_string(thickness));
    impl_->controls.pen.thickness = thickness;
}

void Painter::setPenRGB(unsigned char r, unsigned char g, unsigned char b)
{
    journal().call("setPenRGB " + recording::joined({r, g, b}));
    impl_->controls.pen.r = r;
    impl_->controls.pen.g = g;
    impl_->controls.pen.b = b;
}

bool Painter::measureTextBBox(std::string const& text, int x, int y, int pixelSize, int reserved1, int reserved2,
                              int* left, int* top, int* right, int* bottom) const
{
    journal().call("measureText " + recording::joined({x, y, pixelSize, reserved1, reserved2}) + " " +
                   recording::quoted(text));
    recording::PainterControls const& controls = impl_->controls;
    if (controls.measureFails) {
        return false;
    }
    recording::Box const box = controls.box.value_or(recording::defaultBox(text, x, y, pixelSize));
    *left = box.left;
    *top = box.top;
    *right = box.right;
    *bottom = box.bottom;
    return true;
}

void Painter::drawBackgroundMapped(MappedNV12 const& target, int left, int top, int right, int bottom, float opacity,
                                   float cornerRadius, float margin)
{
    journal().call("drawBackground " + recording::joined({left, top, right, bottom}) + " " + recording::exact(opacity) +
                   " " + recording::exact(cornerRadius) + " " + recording::exact(margin) + recording::sizeOf(target));
}

void Painter::drawTextMapped(MappedNV12 const& target, int x, int y, std::string const& text, TextStyle const& style)
{
    journal().call("drawText " + recording::joined({x, y, style.pixelSize, style.reserved1, style.reserved2}) + " " +
                   recording::quoted(text) + recording::sizeOf(target));
}

namespace zelvo {

struct ZelvoPicture::Impl {
    unsigned width = 0;
    unsigned height = 0;
    recording::PictureControls controls;
};

ZelvoPicture::ZelvoPicture(unsigned width, unsigned height) : impl_(std::make_unique<Impl>())
{
    impl_->width = width;
    impl_->height = height;
}

ZelvoPicture::~ZelvoPicture() = default;

unsigned ZelvoPicture::width() const
{
    return impl_->width;
}

unsigned ZelvoPicture::height() const
{
    return impl_->height;
}

std::unique_ptr<IRenderTarget> ZelvoPicture::makeRenderTarget()
{
    journal().call("makeRenderTarget");
    if (impl_->controls.givesNoTarget) {
        return nullptr;
    }
    return std::make_unique<recording::Target>(impl_->width, impl_->height);
}

struct ZelvoPicturePool::Impl {
    std::mutex lock;
    recording::PoolControls controls;
};

ZelvoPicturePool::ZelvoPicturePool() : impl_(std::make_unique<Impl>()) {}
ZelvoPicturePool::~ZelvoPicturePool() = default;

std::shared_ptr<ZelvoPicture> ZelvoPicturePool::clone(ZelvoPicture const& source)
{
    journal().call("clone");
    if (impl_->controls.duringClone) {
        impl_->controls.duringClone();
    }
    std::lock_guard<std::mutex> const hold(impl_->lock);
    ++impl_->controls.clones;
    if (impl_->controls.givesNothing) {
        return nullptr;
    }
    auto copy = std::make_shared<ZelvoPicture>(source.width(), source.height());
    copy->impl().controls.givesNoTarget = impl_->controls.copiesGiveNoTarget;
    return copy;
}

}  // namespace zelvo

namespace recording {

PainterControls& controls(Painter& painter)
{
    return painter.impl().controls;
}

PictureControls& controls(zelvo::ZelvoPicture& picture)
{
    return picture.impl().controls;
}

PoolControls& controls(zelvo::ZelvoPicturePool& pool)
{
    return pool.impl().controls;
}

}  // namespace recording
