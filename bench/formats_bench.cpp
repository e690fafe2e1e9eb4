// One round for formats.py: removes the entries of a key from a copy of a file, as the cleaner does. With "copy"
// instead of a key it reads the file and writes what it read to the copy, which is flushed and renamed into place; with
// "expat" it also passes it to an Expat parser without handlers. Prints the seconds.

#include "cleaners/TWPreferenceFile.h"
#include "platform/TWRunLoop.h"
#include "platform/linux/TWLinuxFileSystem.h"
#include "platform/linux/TWLinuxPreferenceFiles.h"
#include "whole_file.h"

#include <chrono>
#include <cstdio>
#include <expat.h>
#include <string>

namespace {

double now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

bool parse(std::string_view bytes)
{
    constexpr std::size_t Piece = std::size_t{ 128 } * 1024;
    XML_Parser parser = XML_ParserCreate(nullptr);
    bool valid = true;
    for (std::size_t begin = 0; begin < bytes.size() && valid; begin += Piece) {
        const std::string_view piece = bytes.substr(begin, Piece);
        valid = XML_Parse(parser, piece.data(), int(piece.size()), begin + Piece >= bytes.size()) == XML_STATUS_OK;
    }
    XML_ParserFree(parser);
    return valid;
}

// Removes the entries from the file and returns whether there were any.
bool remove(const std::string& path, const std::string& key)
{
    const TWLinuxPreferenceFiles files;
    const auto end = path.rfind('/');
    int error = 0;
    const TWLinuxFileSystem fileSystem;
    const auto folder = fileSystem.holdFolder(path.substr(0, end), error);
    if (!folder)
        return false;
    const TWPreferenceFile file(files, fileSystem, *folder, path.substr(0, end), path.substr(end + 1));
    const auto removed = file.remove({ key }, nullptr, {});
    const bool found = removed.entries.problem.empty() && removed.problem.empty() && removed.entries.counts[0] > 0;
    if (!found)
        std::fprintf(stderr, "nothing was removed: %s\n", removed.entries.problem.c_str());
    return found;
}

}

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 4) {
        std::fprintf(stderr, "usage: formats_bench FILE COPY copy|expat|KEY\n");
        return 2;
    }
    const std::string task = arguments[3];
    const bool removes = task != "copy" && task != "expat";
    if (removes && !writeFile(arguments[2], fileBytes(arguments[1])))
        return 1;
    const double start = now();
    if (removes) {
        if (!remove(arguments[2], task))
            return 1;
    } else {
        const std::string bytes = fileBytes(arguments[1]);
        if ((task == "expat" && !parse(bytes)) || !writeFile(arguments[2], bytes))
            return 1;
    }
    std::printf("%.6f\n", now() - start);
}
