#include "ui/parts/TWColumnWidths.h"

#include <algorithm>
#include <numeric>

namespace {

// Raises the widths towards the wanted ones, serving the columns that want least first. Returns what is left over.
int share(int left, const std::vector<int>& wanted, std::vector<int>& widths)
{
    std::vector<std::size_t> modestFirst(wanted.size());
    std::iota(modestFirst.begin(), modestFirst.end(), 0U);
    std::sort(modestFirst.begin(), modestFirst.end(), [&](auto a, auto b) { return wanted[a] < wanted[b]; });
    auto columnsLeft = static_cast<int>(wanted.size());
    for (const auto column : modestFirst) {
        const int given = std::min(wanted[column], left / columnsLeft--);
        widths[column] += given;
        left -= given;
    }
    return left;
}

}

std::vector<int> TWColumnWidths(int width, const std::vector<TWColumnWish>& wishes)
{
    std::vector<int> typical;
    std::vector<int> rest;
    for (const auto& wish : wishes) {
        typical.push_back(wish.typical);
        rest.push_back(wish.full - wish.typical);
    }
    std::vector<int> widths(wishes.size());
    int left = share(std::max(width, 0), typical, widths);
    left = share(left, rest, widths);
    if (!widths.empty())
        widths.back() += left;
    return widths;
}
