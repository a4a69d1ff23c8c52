// PNG output through libpng; used by the command that makes one annotated picture.
#include "media/png_writer.h"

#include "media/output_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <png.h>
#include <stdexcept>

namespace media {
namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

FramePtr toRgb(MappedNV12 const& planes, ColorFormat color)
{
    FramePtr rgb = makeFrame();
    rgb->format = AV_PIX_FMT_RGB24;
    rgb->width = planes.width;
    rgb->height = planes.height;
    if (av_frame_get_buffer(rgb.get(), 0) < 0) {
        throw std::bad_alloc();
    }
    FrameConverter converter;
    converter.fromNv12(planes, *rgb, color);
    return rgb;
}

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
    FramePtr const rgb = toRgb(planes, color);
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
