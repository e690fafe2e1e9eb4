#pragma once

#include <vector>

// The widths, in pixels, that one column of a table would like to have.
struct TWColumnWish {
    int typical = 0; // enough for most cells
    int full = 0; // enough for every cell; at least the typical width
    int share = 1; // of a width that is not enough; a column with 2 gets twice as much as one with 1
};

// Divides a width among columns, first up to their typical widths, then up to their full widths. If the width is not
// enough, it is shared: columns that want less than their share get what they want, the others divide the rest. What is
// left over goes to the last column.
std::vector<int> TWColumnWidths(int width, const std::vector<TWColumnWish>&);
