// One round for formats.py: reads a file, removes the entries of a key and writes what remains to another file, which
// is flushed and renamed into place. With "copy" instead of a key it writes what it read; with "expat" it also passes
// it to an Expat parser without handlers. Prints the seconds.

#include "formats/TWFileFormats.h"
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

// Removes the entries and returns whether there were any.
bool cut(std::string& bytes, const std::string& key)
{
    std::optional<std::string> remaining;
    const TWFoundEntries found = TWFileFormats::cut(bytes, { key }, remaining);
    if (!remaining) {
        std::fprintf(stderr, "nothing was found: %s\n", found.problem.c_str());
        return false;
    }
    bytes = std::move(*remaining);
    return true;
}

}

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 4) {
        std::fprintf(stderr, "usage: formats_bench FILE COPY copy|expat|KEY\n");
        return 2;
    }
    const std::string task = arguments[3];
    const double start = now();
    std::string bytes = fileBytes(arguments[1]);
    if ((task == "expat" && !parse(bytes)) || (task != "expat" && task != "copy" && !cut(bytes, task)))
        return 1;
    if (!writeFile(arguments[2], bytes))
        return 1;
    std::printf("%.6f\n", now() - start);
}
