// One round for plist.py: reads a property list from a file and writes it to another one, which is flushed and renamed
// into place. Prints the seconds that reading and writing took.

#include "plist/TWPropertyList.h"
#include "whole_file.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

double now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 3) {
        std::fprintf(stderr, "usage: plist_bench FILE COPY\n");
        return 2;
    }
    const double start = now();
    TWPropertyListResult list = TWPropertyList::read(fileBytes(arguments[1]));
    const double readUntil = now();
    if (!list.value) {
        std::fprintf(stderr, "%s\n", list.problem.c_str());
        return 1;
    }
    const double writeFrom = now();
    const auto bytes = TWPropertyList::write(*list.value, list.format);
    if (!bytes || !writeFile(arguments[2], *bytes))
        return 1;
    const double writeUntil = now();
    list.value.reset();
    const double freeing = now() - writeUntil; // counts as well
    std::printf("%.6f %.6f\n", readUntil - start + freeing, writeUntil - writeFrom);
}
