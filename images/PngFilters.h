#pragma once

#include <cstddef>
#include <cstdint>

namespace Corvadine {

// Turns the bytes of a PNG row back into samples (https://www.w3.org/TR/png-3/#9Filters). `filter` is the
// number in front of the row, and `above` the samples of the row above, or zeros for the first row. Returns
// false for an unknown filter. REQUIRES: FilterOverRead more bytes can be read behind `row` and `above`.
using TUndoFilter = bool (*)(int filter, std::uint8_t* row, const std::uint8_t* above, std::size_t bytes);

constexpr std::size_t FilterOverRead = 3;

// Returns the function for rows with pixels of this size. REQUIRES: a size that PNG allows.
TUndoFilter UndoFilterFor(int bitsPerPixel);

} // namespace Corvadine
