#include "app/TWFileSample.h"

#include "formats/TWByteText.h"
#include "formats/TWDecompressor.h"
#include "formats/TWStreamEnds.h"
#include "support/TWText.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace {

using Kind = TWFileSample::Kind;
using Encoding = TWByteText::Encoding;
using State = TWDecompressor::State;

constexpr std::size_t PieceSize = std::size_t{ 64 } * 1024;
constexpr std::size_t LongestPicture = 2'000'000;

// So much of each end is shown. A view of text becomes slow with the number of lines.
constexpr std::size_t LongestBytesEnd = std::size_t{ 64 } * 1024; // in hexadecimal
constexpr int MostLines = 10'000;

// What decompressing may cost, in bytes of each side. It takes about a second.
constexpr std::uint64_t MostDecompressed = std::uint64_t{ 64 } << 20;

constexpr auto LeftOut = "%@ in the middle are not shown.";
constexpr auto OnlyFirst = "Only the first part is shown, because decompressing the rest would take long.";
constexpr auto EndsEarly = "The compressed data ends in the middle.";
constexpr auto Damaged = "The compressed data is damaged after %@.";
constexpr auto NeedsMemory = "The compressed data asks for too much memory.";
constexpr auto NotDecompressed = "These are its bytes as they are in the file.";
constexpr auto HugePicture = "Pictures of more than 2 MB are not shown. These are its bytes.";
constexpr auto BadPicture = "The picture is damaged or too large to be shown. These are its bytes.";
constexpr auto Latin1 = "The text is not UTF-8 and is shown as Latin-1.";
constexpr auto Replaced = "Bytes that are not valid text are shown as \xEF\xBF\xBD.";
constexpr auto Broken = "Lines of more than %@ characters are broken.";
constexpr auto Shorter = "The file became shorter while it was read.";
constexpr auto MoreFollows = "More follows that was not read.";
constexpr auto ReadFailed = "Reading failed (%@).";
constexpr auto Gap = "\n\n\xE2\x80\xA6 %@ are not shown here \xE2\x80\xA6\n\n";

std::string bytesText(std::uint64_t count)
{
    return TWText::count(count, "byte", "bytes");
}

// What the work on one file has found so far.
struct Reading {
    const TWOpenFile& file;
    const TWCancellation& cancellation;
    TWFileSample sample{};
    TWStreamEnds ends{};
    bool failed = false; // reading the file

    void say(const char* sentence, std::initializer_list<std::string_view> values = {})
    {
        auto& notice = sample.notice;
        notice.append(notice.empty() ? "" : " ").append(TWText::fill(sentence, values));
    }

    std::string read(std::uint64_t place, std::size_t length)
    {
        std::string bytes;
        const int error = file.read(place, length, bytes);
        if (error != 0 && !std::exchange(failed, true)) {
            sample.error = error;
            say(ReadFailed, { TWErrorText(error) });
        }
        return bytes;
    }
};

bool isPicture(std::string_view beginning)
{
    for (const std::string_view magic : { "\x89PNG\r\n\x1A\n", "\xFF\xD8\xFF", "GIF87a", "GIF89a" }) {
        if (beginning.starts_with(magic))
            return true;
    }
    constexpr std::string_view Webp = "WEBP"; // after the length
    return beginning.starts_with("RIFF") && beginning.find(Webp) == 8;
}

// Returns true if the file needs no further reading.
bool readPicture(Reading& reading, const TWFileSampler::TakePicture& takePicture)
{
    if (reading.sample.facts.size > LongestPicture) {
        reading.say(HugePicture);
        return false;
    }
    const auto bytes = reading.read(0, LongestPicture);
    if (takePicture(bytes)) {
        reading.sample.kind = Kind::Picture;
    } else {
        reading.say(BadPicture);
        reading.ends.append(bytes);
    }
    return true;
}

void readPlain(Reading& reading)
{
    constexpr std::uint64_t Longest = TWStreamEnds::LongestEnd;
    const auto size = reading.sample.facts.size;
    auto& ends = reading.ends;
    ends.append(reading.read(0, Longest));
    if (ends.length() == Longest) {
        const auto lastPlace = std::max(Longest, size - std::min(size, Longest));
        const auto last = reading.read(lastPlace, Longest);
        ends.skip(last.empty() ? 0 : lastPlace - Longest);
        ends.append(last);
    }
    if (reading.failed)
        return;
    if (ends.length() < size)
        reading.say(Shorter);
    else if (!reading.read(ends.length(), 1).empty())
        reading.say(MoreFollows);
}

void sayHowDecompressingEnded(Reading& reading, State state)
{
    switch (state) {
    case State::Stopped:
        reading.say(OnlyFirst);
        break;
    case State::EndsEarly:
        if (!reading.failed)
            reading.say(EndsEarly);
        break;
    case State::NeedsMemory:
        reading.say(NeedsMemory);
        break;
    case State::Damaged:
        reading.say(Damaged, { bytesText(reading.ends.length()) });
        break;
    default:
        break;
    }
}

// Returns false if nothing could be decompressed.
bool decompress(Reading& reading, TWDecompressor& decompressor, std::string piece)
{
    auto& ends = reading.ends;
    const auto take = [&](std::string_view bytes) {
        ends.append(bytes);
        return ends.length() <= MostDecompressed && !reading.cancellation.cancelled();
    };
    auto state = State::Going;
    for (std::uint64_t place = 0; state == State::Going; piece = reading.read(place, PieceSize)) {
        state = place > MostDecompressed ? State::Stopped : decompressor.feed(piece, take);
        place += piece.size();
    }
    sayHowDecompressingEnded(reading, state);
    if (state == State::Stopped)
        ends.dropLast();
    if (ends.length() == 0 && state != State::Complete) {
        reading.say(NotDecompressed);
        return false;
    }
    reading.sample.compression = decompressor.formatName();
    return true;
}

// Adds the next part of a text and says what was changed.
void show(Reading& reading, std::string_view bytes, Encoding encoding, std::uint64_t place, TWByteText::Lines& all)
{
    const auto lines = encoding == Encoding::None ? TWByteText::Lines{ TWByteText::hexLines(bytes, place) }
                                                  : TWByteText::lines(bytes, encoding);
    reading.sample.text += lines.text;
    all.hasBroken = all.hasBroken || lines.hasBroken;
    all.hasReplaced = all.hasReplaced || lines.hasReplaced;
}

void showEnds(Reading& reading, std::string_view first, std::string_view last, Encoding encoding)
{
    const auto length = reading.ends.length();
    TWByteText::Lines all;
    if (!last.empty()) {
        first = TWByteText::withoutCutEnd(first, encoding);
        last = TWByteText::withoutCutBeginning(last, encoding, length - last.size());
    }
    show(reading, first, encoding, 0, all);
    if (!last.empty()) {
        const auto left = bytesText(length - last.size() - first.size());
        reading.say(LeftOut, { left });
        reading.sample.text += TWText::fill(Gap, { left });
        show(reading, last, encoding, length - last.size(), all);
    }
    if (encoding == Encoding::Latin1)
        reading.say(Latin1);
    if (all.hasReplaced)
        reading.say(Replaced);
    if (all.hasBroken)
        reading.say(Broken, { TWText::number(TWByteText::LongestLine) });
}

std::string_view beginningOf(std::string_view bytes, Encoding encoding)
{
    if (encoding == Encoding::None)
        return bytes.substr(0, LongestBytesEnd);
    std::size_t end = 0;
    for (int lines = 0; lines < MostLines; ++lines) {
        end = bytes.find('\n', end);
        if (end == std::string_view::npos)
            return bytes;
        ++end;
    }
    return bytes.substr(0, end);
}

std::string_view endOf(std::string_view bytes, Encoding encoding)
{
    if (encoding == Encoding::None)
        return bytes.substr(bytes.size() - std::min(bytes.size(), LongestBytesEnd));
    std::size_t before = bytes.size(); // what is shown begins after this place
    for (int lines = 0; lines < MostLines; ++lines) {
        before = before == 0 ? std::string_view::npos : bytes.rfind('\n', before - 1);
        if (before == std::string_view::npos)
            return bytes;
    }
    return bytes.substr(before + 1);
}

void showContents(Reading& reading)
{
    const auto& ends = reading.ends;
    std::string whole; // if both ends meet
    if (ends.first().size() == ends.lastPlace())
        whole.append(ends.first()).append(ends.last());
    const auto encoding = TWByteText::encodingOf(ends.first(), ends.last());
    auto first = beginningOf(whole.empty() ? ends.first() : whole, encoding);
    auto last = endOf(whole.empty() ? ends.last() : std::string_view(whole).substr(first.size()), encoding);
    if (first.size() + last.size() == whole.size()) {
        first = whole;
        last = {};
    }
    reading.sample.kind = first.empty() ? Kind::Empty : encoding == Encoding::None ? Kind::Binary : Kind::Text;
    showEnds(reading, first, last, encoding);
}

}

TWFileSample TWFileSampler::sample(const TWFileSystem& fileSystem, const std::string& path,
    const TakePicture& takePicture, const TWCancellation& cancellation)
{
    TWFileSample sample;
    const auto look = fileSystem.look(path);
    sample.error = look.error;
    sample.facts = look.facts;
    if (!look.isThere()) {
        sample.kind = look.presence == TWPresence::Gone ? Kind::Gone : Kind::Unreadable;
        return sample;
    }
    if (look.facts.kind != TWFileKind::File) {
        sample.kind = look.isFolder() ? Kind::Folder : look.facts.kind == TWFileKind::Link ? Kind::Link : Kind::Other;
        if (sample.kind == Kind::Link)
            sample.text = TWText::oneLine(fileSystem.linkTarget(path).value_or(""));
        return sample;
    }
    if (const auto file = fileSystem.openFile(path, sample.error))
        return TWFileSampler::sample(*file, takePicture, cancellation);
    sample.kind = sample.error == ENOENT ? Kind::Gone : Kind::Unreadable;
    return sample;
}

TWFileSample TWFileSampler::sample(
    const TWOpenFile& file, const TakePicture& takePicture, const TWCancellation& cancellation)
{
    Reading reading{ file, cancellation };
    reading.sample.facts = file.facts();
    auto beginning = reading.read(0, PieceSize);
    if (beginning.empty()) {
        reading.sample.kind = reading.failed ? Kind::Unreadable : Kind::Empty;
        reading.sample.notice.clear();
        return reading.sample;
    }
    if (!isPicture(beginning) || !readPicture(reading, takePicture)) {
        const auto decompressor = TWDecompressor::forFile(beginning);
        if (!decompressor || !decompress(reading, *decompressor, std::move(beginning)))
            readPlain(reading);
    }
    if (reading.sample.kind != Kind::Picture)
        showContents(reading);
    return reading.sample;
}
