// Which items of a packet are worth decoding.
#pragma once

#include "telemetry/key_selection.h"
#include "telemetry/st0601_table.h"

#include <cstddef>
#include <vector>

namespace telemetry {

/// The rows of the table that give wanted keys.
class WantedRows {
public:
    explicit WantedRows(KeySelection const& keys);
    /// `row` is one of the table's.
    bool has(TableRow const& row) const { return rows_[static_cast<std::size_t>(&row - st0601Table().data())]; }

private:
    std::vector<bool> rows_;
};

}  // namespace telemetry
