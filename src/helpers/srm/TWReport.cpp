#include "TWReport.h"

#include <unistd.h>

void report(const std::string& subject, const char* text)
{
    constexpr char Digits[] = "0123456789abcdef";
    std::string line = "srm: ";
    for (const char letter : subject) {
        const auto byte = static_cast<unsigned char>(letter);
        if (byte >= 0x20 && byte != 0x7f)
            line += letter;
        else
            line += { '\\', 'x', Digits[byte >> 4], Digits[byte & 15] };
    }
    line += std::string(": ") + text + "\n";
    // Nobody is left to be told when standard error cannot be written to.
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
}
