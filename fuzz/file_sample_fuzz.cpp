// What a preview makes of a file with any bytes, of which the first two say how the file changes while it is read.

#include "app/TWFileSample.h"
#include "support/TWText.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr std::size_t MostBytes = 2 << 20; // what may be held of a file at a time
constexpr std::size_t LongestShown = std::size_t{ 8 } << 20; // each byte may become a "<U+0080>"
constexpr std::size_t LongestLine = 1000;

void require(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "Does not hold: %s\n", what);
    std::abort();
}

class ChangingFile final : public TWOpenFile {
public:
    ChangingFile(std::string_view bytes, std::size_t later)
        : bytes_(bytes)
        , later_(later)
    {
    }

    TWFileFacts facts() const override
    {
        TWFileFacts facts;
        facts.size = bytes_.size();
        return facts;
    }
    int read(std::uint64_t place, std::size_t length, std::string& bytes) const override
    {
        require(length <= MostBytes, "no more is asked for than may be held");
        const auto now = bytes_.substr(0, reads_++ == 0 ? bytes_.size() : std::min(bytes_.size(), later_));
        bytes = now.substr(std::min<std::size_t>(place, now.size()), length);
        return reads_ == FailingRead && later_ % 2 == 1 ? 5 : 0;
    }

private:
    static constexpr int FailingRead = 3;

    const std::string_view bytes_;
    const std::size_t later_;
    mutable int reads_ = 0;
};

std::size_t longestLine(std::string_view text)
{
    std::size_t longest = 0;
    std::size_t length = 0;
    for (const char byte : text) {
        length = byte == '\n' ? 0 : length + ((byte & 0xC0) != 0x80);
        longest = std::max(longest, length);
    }
    return longest;
}

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    std::string_view input(reinterpret_cast<const char*>(bytes), size);
    if (size < 2)
        return 0;
    const std::size_t later = bytes[0] * std::size_t{ 256 } + bytes[1];
    input.remove_prefix(2);
    const ChangingFile file(input, later);
    const TWCancellation cancellation;
    const auto sample = TWFileSampler::sample(
        file, [](const auto&) { return false; }, cancellation);
    require(TWText::manyLines(sample.text) == sample.text, "what is shown does no harm");
    require(TWText::oneLine(sample.notice) == sample.notice, "what is said does no harm");
    require(sample.text.size() <= LongestShown, "what is shown is bounded");
    require(longestLine(sample.text) <= LongestLine, "lines are bounded");
    const bool isText = sample.kind == TWFileSample::Kind::Text; // of a mark for its encoding alone, nothing is shown
    const bool isBinary = sample.kind == TWFileSample::Kind::Binary;
    require(sample.text.empty() ? !isBinary : isText || isBinary, "only text and bytes are shown");
    return 0;
}
