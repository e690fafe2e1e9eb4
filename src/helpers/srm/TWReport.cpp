#include "TWReport.h"

#include <unistd.h>

namespace {

constexpr char FailurePrefix[] = "srm: ";
constexpr char NoticePrefix[] = "srm: note: ";
constexpr char MoreFailures[] = " more: kept or not overwritten\n";
constexpr char MoreNotices[] = " more\n";

// The limits of each kind. Twice as much and two lines with the counts of the rest fit into 4 KiB.
constexpr int MostLines = 20;
constexpr std::size_t MostBytes = 1900;
constexpr std::size_t LongestPath = 400; // bytes
constexpr char Cut[] = "...";

std::string withoutControlCharacters(const std::string& path)
{
    constexpr char Digits[] = "0123456789abcdef";
    std::string shown;
    for (const char letter : path) {
        const auto byte = static_cast<unsigned char>(letter);
        if (byte >= 0x20 && byte != 0x7f)
            shown += letter;
        else
            shown += { '\\', 'x', Digits[byte >> 4], Digits[byte & 15] };
    }
    return shown;
}

bool isInsideCharacter(const std::string& text, std::size_t at)
{
    return at < text.size() && (static_cast<unsigned char>(text[at]) & 0xc0) == 0x80;
}

std::string shortened(const std::string& path)
{
    if (path.size() <= LongestPath)
        return path;
    std::size_t head = LongestPath / 2 - std::size(Cut);
    while (head > 0 && isInsideCharacter(path, head))
        --head;
    std::size_t tail = path.size() - LongestPath / 2;
    while (isInsideCharacter(path, tail))
        ++tail;
    return path.substr(0, head) + Cut + path.substr(tail);
}

std::string makeLine(const char* prefix, const std::string& path, const char* text)
{
    return prefix + TWReport::shown(path) + ": " + text + "\n";
}

std::string countLine(const char* prefix, long count, const char* text)
{
    return count == 0 ? std::string() : prefix + ("and " + std::to_string(count)) + text;
}

// Ignores errors: if standard error fails, there is nobody to tell.
void writeOut(const std::string& lines)
{
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, lines.data(), lines.size());
}

}

bool TWReport::Tally::admits(const std::string& line)
{
    // Once a line is omitted, all further ones are, even shorter ones, or the list would look complete.
    if (omitted > 0 || lines == MostLines || bytes + line.size() > MostBytes) {
        ++omitted;
        return false;
    }
    ++lines;
    bytes += line.size();
    return true;
}

std::string TWReport::shown(const std::string& path)
{
    return shortened(withoutControlCharacters(path));
}

void TWReport::failure(const std::string& path, const char* text)
{
    const std::string line = makeLine(FailurePrefix, path, text);
    if (failures_.admits(line))
        writeOut(line);
}

void TWReport::notice(const std::string& path, const char* text)
{
    const std::string line = makeLine(NoticePrefix, path, text);
    if (notices_.admits(line))
        heldNotices_ += line;
}

void TWReport::finish()
{
    const std::string rest = countLine(FailurePrefix, failures_.omitted, MoreFailures) + heldNotices_
        + countLine(NoticePrefix, notices_.omitted, MoreNotices);
    if (!rest.empty())
        writeOut(rest);
}
