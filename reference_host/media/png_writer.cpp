// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// PNG output through libpng; used by the command that makes one annotated picture.
#include "media/png_writer.h"

#include "media/output_file.h"
#include "media/rgb_picture.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <png.h>
#include <stdexcept>

namespace media {
namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

bool writeRgb(AVFrame const& rgb, std::FILE* file)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(rgb.width);
    image.height = static_cast<png_uint_32>(rgb.height);
    image.format = PNG_FORMAT_RGB;
    // A third of the time for a file a little larger: compressing would cost as much as decoding half a second.
    image.flags = PNG_IMAGE_FLAG_FAST;
    return png_image_write_to_stdio(&image, file, 0, rgb.data[0], rgb.linesize[0], nullptr) != 0 &&
           std::fflush(file) == 0;
}

}  // namespace

void writePng(std::string const& path, MappedNV12 const& planes, ColorFormat color)
{
    FrameConverter converter;
    FramePtr const rgb = rgbOf(planes, color, converter);
    OutputFile output(path);
    std::unique_ptr<std::FILE, CloseFile> file(std::fopen(output.writePath().c_str(), "wb"));
    errno = 0;
    if (!file || !writeRgb(*rgb, file.get())) {
        int const reason = errno;
        throw std::runtime_error(
            writeFailure(path, reason == 0 ? "the picture is too large" : std::strerror(reason), reason));
    }
    file.reset();
    output.commit();
}

}  // namespace media
