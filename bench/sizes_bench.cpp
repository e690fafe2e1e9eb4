// For sizes.py: sizes_bench THREADS FOLDER adds up the tree and prints its bytes and items. 0 threads means one per
// core.

#include "platform/TWTreeSizes.h"
#include "platform/linux/TWLinuxFileSystem.h"

#include <cstdio>

int main(int count, char** arguments)
{
    if (count != 3)
        return 2;
    const auto threads = static_cast<unsigned>(std::stoul(arguments[1]));
    const auto sizes = TWAddUpTrees(TWLinuxFileSystem(), { arguments[2] }, TWCancellation(), threads);
    const auto total = sizes.total();
    std::printf("%lu %lu\n", total.bytes, total.items);
    return sizes.end == TWWalkEnd::Complete && total.unknown == 0 ? 0 : 1;
}
