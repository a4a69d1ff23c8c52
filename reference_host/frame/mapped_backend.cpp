// Mapping of render targets for the plugin; see the header.
#include "mapped_backend.h"

#include "imaging_access.h"

namespace frame {

IRenderBackend::Guard MappedBackend::map(IRenderTarget& target)
{
    return Guard(imaging::planesOf(target), nullptr);
}

}  // namespace frame
