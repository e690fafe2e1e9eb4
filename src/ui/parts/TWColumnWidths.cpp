#include "ui/parts/TWColumnWidths.h"

#include <algorithm>
#include <numeric>

namespace {

// Raises the widths towards the wanted ones, serving first the columns that want least for their share. Returns what is
// left over.
int raise(int left, const std::vector<TWColumnWish>& wishes, const std::vector<int>& wanted, std::vector<int>& widths)
{
    std::vector<std::size_t> modestFirst(wanted.size());
    std::iota(modestFirst.begin(), modestFirst.end(), 0U);
    std::sort(modestFirst.begin(), modestFirst.end(),
        [&](auto a, auto b) { return wanted[a] * wishes[b].share < wanted[b] * wishes[a].share; });
    int shares = 0;
    for (const auto& wish : wishes)
        shares += wish.share;
    for (const auto column : modestFirst) {
        const int given = std::min(wanted[column], left * wishes[column].share / shares);
        shares -= wishes[column].share;
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
    int left = raise(std::max(width, 0), wishes, typical, widths);
    left = raise(left, wishes, rest, widths);
    if (!widths.empty())
        widths.back() += left;
    return widths;
}
