// From a decoded picture to what the encoder is told; the pictures themselves go through the frame converter.
#include "media/picture_traits.h"

namespace media {

PictureTraits traitsOf(AVFrame const& frame)
{
    PictureTraits traits;
    traits.width = frame.width;
    traits.height = frame.height;
    traits.color = nv12ColorOf(frame);
    traits.colorSpace = frame.colorspace;
    if (frame.colorspace == AVCOL_SPC_RGB) {
        traits.colorSpace = traits.color.bt709 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
    }
    traits.primaries = frame.color_primaries;
    traits.transfer = frame.color_trc;
    traits.chromaLocation = frame.chroma_location;
    traits.sampleAspect = frame.sample_aspect_ratio;
    traits.interlaced = frame.interlaced_frame != 0;
    traits.topFieldFirst = frame.top_field_first != 0;
    return traits;
}

}  // namespace media
