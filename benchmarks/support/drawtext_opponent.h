// The common way to burn text into video, as an opponent: FFmpeg's drawtext filter, one per block, on an
// NV12 picture of 1920x1080 that goes round in memory.
#pragma once

#include <memory>
#include <string>
#include <vector>

/// One block as drawtext gets it: white text on a half-opaque black box.
struct DrawtextBlock {
    std::string text;
    int x = 0;         ///< pixels
    int y = 0;         ///< pixels
    int fontSize = 0;  ///< pixels
};

/// Throws std::runtime_error when the filters cannot be had.
class DrawtextOpponent {
public:
    explicit DrawtextOpponent(std::vector<DrawtextBlock> const& blocks, std::string const& font = "DejaVu Sans");
    ~DrawtextOpponent();
    DrawtextOpponent(DrawtextOpponent const&) = delete;
    DrawtextOpponent& operator=(DrawtextOpponent const&) = delete;

    /// Sends the picture through the filters once. It is never copied: drawing is all that is paid for.
    void drawFrame();

private:
    struct Graph;
    std::unique_ptr<Graph> graph_;
};
