#pragma once

#include <vector>

// What one column of a table would like to have.
struct TWColumnWish {
    int typical = 0; // enough for most cells
    int full = 0; // enough for every cell; at least the typical width
};

// Divides a width among columns: first up to their typical widths, then up to their full ones. While there is too
// little, none gets more than it wishes for as long as another gets less than a fair share. What is left goes to the
// last column.
std::vector<int> TWColumnWidths(int width, const std::vector<TWColumnWish>&);
