// From wanted keys to rows of the table; mapping.cpp makes the keys.
#include "telemetry/wanted_rows.h"

#include <string_view>

namespace telemetry {
namespace {

/// The second key to which the row's item contributes; its own when there is none.
std::string_view secondKey(TableRow const& row)
{
    switch (row.tag) {
    case tag::kHeading:
        return kYawKey;
    case tag::kPitch:
    case tag::kFullPitch:
        return kShortPitchKey;
    case tag::kRoll:
    case tag::kFullRoll:
        return kShortRollKey;
    case tag::kGenericFlags:
        return kLaserKey;
    default:
        return row.key;
    }
}

}  // namespace

WantedRows::WantedRows(KeySelection const& keys)
{
    for (TableRow const& row : st0601Table()) {
        rows_.push_back(keys.wants(row.key) || keys.wants(secondKey(row)));
    }
}

}  // namespace telemetry
