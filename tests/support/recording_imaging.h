// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A second implementation of the imaging library: it draws nothing and writes down every call with its
// arguments, one line each, so that a frame can be compared as text. Controls make single calls fail.
#pragma once

#include "Painter.h"
#include "Picture.h"
#include "RenderBackend.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace recording {

/// What a host call throws when the journal was told so.
struct HostFailure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Everything the host was asked for, in order. Safe from several threads.
class Journal {
public:
    /// Forgets lines and failures.
    void clear();
    /// Call number `number`, counted from 1 since the last clear(), throws HostFailure; 0: none does.
    void throwAtCall(std::size_t number);
    /// Writes a call down; throws HostFailure when it is its turn.
    void call(std::string const& line);
    /// Writes down what is no call and cannot fail: the end of a mapping or of a target.
    void note(std::string const& line);
    /// Calls since the last clear(), notes not counted.
    std::size_t calls() const;
    /// All lines, each ended by a line feed.
    std::string text() const;
    /// Only the lines that start with one of the prefixes.
    std::string text(std::vector<std::string> const& prefixes) const;
    std::size_t count(std::string const& prefix) const;

private:
    mutable std::mutex lock_;
    std::vector<std::string> lines_;
    std::size_t calls_ = 0;
    std::size_t throwAt_ = 0;
};

/// The one journal of the process.
Journal& journal();

struct Box {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

struct PainterControls {
    bool measureFails = false;
    /// The box that measuring gives. Without one a line of n bytes at (x, y) in size p measures
    /// n * (p / 2) by p, and lines stand below each other.
    std::optional<Box> box;
    Pen pen;
};
PainterControls& controls(Painter& painter);

struct PictureControls {
    bool givesNoTarget = false;
};
PictureControls& controls(zelvo::ZelvoPicture& picture);

struct PoolControls {
    bool givesNothing = false;
    bool copiesGiveNoTarget = false;
    /// Called inside clone(), before the copy is made.
    std::function<void()> duringClone;
    int clones = 0;
};
PoolControls& controls(zelvo::ZelvoPicturePool& pool);

/// Maps every target onto planes of its own; numbers its mappings from 1.
class Backend : public IRenderBackend {
public:
    explicit Backend(std::string name = "recording") : name_(std::move(name)) {}
    char const* name() const override { return name_.c_str(); }
    Guard map(IRenderTarget& target) override;

    /// What the next mappings look like instead of planes in the picture's size.
    std::optional<MappedNV12> mapsTo;

private:
    std::string name_;
    int mappings_ = 0;
};

/// A byte to stand for a plane where only its address matters.
std::uint8_t* anyPlane();

}  // namespace recording
