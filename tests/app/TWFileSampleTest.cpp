#include "app/TWFileSample.h"

#include "builders/TWHostileTree.h"
#include "platform/linux/TWLinuxFileSystem.h"
#include "support/TWText.h"

#include <gtest/gtest.h>

#include <lzma.h>
#include <numeric>
#include <zlib.h>

using Kind = TWFileSample::Kind;

namespace {

constexpr std::size_t MostBytes = 2 << 20; // what may be held of a file at a time

std::string gzip(const std::string& bytes)
{
    z_stream stream{};
    deflateInit2(&stream, 1, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
    std::string result(deflateBound(&stream, bytes.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = reinterpret_cast<Bytef*>(result.data());
    stream.avail_out = static_cast<uInt>(result.size());
    deflate(&stream, Z_FINISH);
    result.resize(stream.total_out);
    deflateEnd(&stream);
    return result;
}

std::string xz(const std::string& bytes)
{
    std::string result(lzma_stream_buffer_bound(bytes.size()), '\0');
    std::size_t length = 0;
    lzma_easy_buffer_encode(1, LZMA_CHECK_CRC32, nullptr, reinterpret_cast<const std::uint8_t*>(bytes.data()),
        bytes.size(), reinterpret_cast<std::uint8_t*>(result.data()), &length, result.size());
    result.resize(length);
    return result;
}

// A file that asks for a dictionary of 4 GB, although it holds little.
std::string demandingXz()
{
    auto bytes = xz("text");
    constexpr std::size_t Block = 12; // where its header begins, with its length
    bytes[bytes.find("\x21\x01", Block) + 2] = 40; // the filter and the size of its dictionary
    const std::size_t length = (static_cast<unsigned char>(bytes[Block]) + 1U) * 4 - 4;
    const auto sum = lzma_crc32(reinterpret_cast<const std::uint8_t*>(&bytes[Block]), length, 0);
    for (std::size_t each = 0; each < 4; ++each)
        bytes[Block + length + each] = static_cast<char>(sum >> (8 * each));
    return bytes;
}

std::string numberedLines(int count)
{
    std::string text;
    for (int line = 1; line <= count; ++line)
        text += "line " + std::to_string(line) + " \u20AC\n";
    return text;
}

// A file of any size that is never stored: "€" again and again, with the length of the text so far changing per read.
struct MadeUpFile final : TWOpenFile {
    std::uint64_t size = 0;
    std::uint64_t sizeAfterFirstRead = 0;
    mutable std::uint64_t sizeNow = 0;
    mutable std::size_t asked = 0;

    explicit MadeUpFile(std::uint64_t givenSize, std::uint64_t later)
        : size(givenSize)
        , sizeAfterFirstRead(later)
        , sizeNow(givenSize)
    {
    }
    TWFileFacts facts() const override
    {
        TWFileFacts facts;
        facts.size = size;
        return facts;
    }
    int read(std::uint64_t place, std::size_t length, std::string& bytes) const override
    {
        const auto left = sizeNow - std::min(sizeNow, place);
        bytes.clear();
        for (std::uint64_t at = place; at < place + std::min<std::uint64_t>(length, left); ++at)
            bytes += "\u20AC"[at % 3];
        asked += bytes.size();
        if (asked > 100'000) // what comes before is the look at the beginning
            sizeNow = sizeAfterFirstRead;
        return 0;
    }
};

}

class TWFileSampleTest : public testing::Test {
protected:
    TWFileSample sample(const std::string& path)
    {
        return TWFileSampler::sample(files, path, takePicture, cancellation);
    }
    TWFileSample sampleOf(const std::string& bytes) { return sample(root.write("file", bytes)); }

    TWTemporaryFolder root;
    TWLinuxFileSystem files;
    TWCancellation cancellation;
    TWFileSampler::TakePicture takePicture = [](const auto&) { return false; };
};

TEST_F(TWFileSampleTest, OnlyRegularFilesAreOpenedAndLinksAreNotFollowed)
{
    const TWHostileTree tree(root);
    root.write("folder/full", "text\n");
    root.link("folder/to\nfull", "fu\nll");
    const std::pair<const char*, Kind> rows[] = { { "hostile/fifo", Kind::Other }, { "hostile/socket", Kind::Other },
        { "hostile/folder", Kind::Folder }, { "hostile/dangling", Kind::Link }, { "hostile/loop", Kind::Link },
        { "folder/full", Kind::Text }, { "folder/none", Kind::Gone }, { "folder/full/none", Kind::Gone },
        { "hostile/invalid \xFF\xC3( UTF-8", Kind::Text } };
    for (const auto& [name, kind] : rows)
        EXPECT_EQ(sample(root.path(name)).kind, kind) << name;
    EXPECT_EQ(sample(root.path("folder/to\nfull")).text, "fu\u240All");
    EXPECT_EQ(sample("/dev/null").kind, Kind::Other);
    EXPECT_EQ(sampleOf("").kind, Kind::Empty);
    // Whoever the tests run as: reading the memory of this process fails at address 0.
    const auto failing = sample("/proc/self/mem");
    EXPECT_EQ(failing.kind, Kind::Unreadable);
    EXPECT_EQ(failing.error, EIO);
    // Opening one of these by a race does not block either.
    int error = 0;
    for (const auto& [name, expected] :
        { std::pair("hostile/fifo", EINVAL), { "hostile/loop", ELOOP }, { "hostile", EISDIR } }) {
        EXPECT_FALSE(files.openFile(root.path(name), error));
        EXPECT_EQ(error, expected) << name;
    }
}

TEST_F(TWFileSampleTest, TextIsShownHarmlesslyAndWhatIsNoTextAsBytes)
{
    const std::string longLine = std::string(2500, 'x');
    struct Row {
        std::string bytes, shown, notice;
    };
    const Row rows[] = {
        { "\xEF\xBB\xBF"
          "one\r\n\ttwo \u00E4",
            "one\n\ttwo \u00E4", "" },
        { "\x1B[31mred\x1B[0m over\rwritten \u202E\u2028 and more text",
            "\u241B[31mred\u241B[0m over\u240Dwritten <U+202E><U+2028> and more text", "" },
        { "caf\xE9 cr\xE8me", "caf\u00E9 cr\u00E8me", "Latin-1" },
        { "\u00E4\u00F6\u00FC and one bad byte \xFF", "\u00E4\u00F6\u00FC and one bad byte \uFFFD", "not valid" },
        { "being written \xE2\x82", "being written \uFFFD\uFFFD", "not valid" },
        { std::string("\xFF\xFEh\0\x3D\xD8\x00\xDE\n\0\x00\xD8", 12), "h\U0001F600\n\uFFFD", "not valid" },
        { std::string("\xFE\xFF\0h\0\r\0\n\0i", 10), "h\ni", "" },
        { std::string("\xFE\xFF\0h\0", 5), "h\uFFFD", "not valid" },
        { std::string(5000, '\0') + "cut while it was written", "<5,000 NUL bytes>cut while it was written", "" },
        { longLine, std::string(1000, 'x') + "\n" + std::string(1000, 'x') + "\n" + std::string(500, 'x'), "broken" },
    };
    for (const auto& row : rows) {
        const auto found = sampleOf(row.bytes);
        EXPECT_EQ(found.kind, Kind::Text) << row.shown;
        EXPECT_EQ(found.text, row.shown);
        EXPECT_EQ(found.notice.empty(), row.notice.empty()) << found.notice;
        EXPECT_NE(found.notice.find(row.notice), std::string::npos) << found.notice;
    }
    std::string all(256, '\0');
    std::iota(all.begin(), all.end(), '\0');
    const auto bytes = sampleOf(all + "0123|\x7F");
    EXPECT_EQ(bytes.kind, Kind::Binary);
    EXPECT_NE(bytes.text.find("00000040  40 41 42 43 44 45 46 47  48 49 4a 4b 4c 4d 4e 4f  @ABCDEFGHIJKLMNO\n"),
        std::string::npos);
    EXPECT_TRUE(bytes.text.ends_with("\n00000100  30 31 32 33 7c 7f                                 0123|.\n"))
        << bytes.text;
}

TEST_F(TWFileSampleTest, OfAHugeFileBothEndsAreReadAndTheRestIsCounted)
{
    const MadeUpFile huge(10'000'000'002, 10'000'000'002);
    const auto found = TWFileSampler::sample(huge, takePicture, cancellation);
    EXPECT_LT(huge.asked, MostBytes);
    EXPECT_EQ(found.text.find("\uFFFD"), std::string::npos) << "a character was cut";
    const auto at = found.text.find("\u2026 ") + 4;
    const auto gap = found.text.substr(at, found.text.find(" are not shown", at) - at);
    std::uint64_t shown = 0;
    for (std::size_t place = 0; (place = found.text.find("\u20AC", place)) != std::string::npos; ++place)
        shown += 3;
    EXPECT_EQ(gap, TWText::number(huge.size - shown) + " bytes");
    EXPECT_NE(found.notice.find(gap + " in the middle"), std::string::npos);

    std::string shortLines;
    for (int line = 0; line < 100'000; ++line)
        shortLines += std::to_string(line % 10) + '\n';
    const auto many = sampleOf(shortLines);
    EXPECT_LT(std::count(many.text.begin(), many.text.end(), '\n'), 30'000);
    EXPECT_TRUE(many.text.starts_with("0\n1\n") && many.text.ends_with("8\n9\n"));
    EXPECT_TRUE(many.notice.ends_with(" bytes in the middle are not shown.")) << many.notice;

    const std::pair<std::uint64_t, const char*> changes[]
        = { { 200'000, "shorter" }, { 900'000, "shorter" }, { 4'000'000, "More follows" } };
    for (const auto& [later, notice] : changes) {
        const MadeUpFile changing(1'000'000, later);
        EXPECT_NE(TWFileSampler::sample(changing, takePicture, cancellation).notice.find(notice), std::string::npos)
            << later;
        EXPECT_LT(changing.asked, MostBytes);
    }
}

TEST_F(TWFileSampleTest, CompressedFilesAreReadAsFarAsPossibleInBoundedMemory)
{
    const auto text = numberedLines(2000);
    for (const auto& compressed : { gzip(text), xz(text) }) {
        const auto whole = sampleOf(compressed);
        EXPECT_EQ(whole.text, text);
        EXPECT_EQ(whole.notice, "");
        EXPECT_EQ(sampleOf(compressed + compressed).text, text + text) << "two files in one";
        EXPECT_EQ(sampleOf(compressed + std::string(512, '\0')).notice, "") << "padded";
        const auto cut = sampleOf(compressed.substr(0, compressed.size() / 2));
        EXPECT_EQ(cut.notice, "The compressed data ends in the middle.");
        EXPECT_TRUE(cut.text.size() > 1000 && text.starts_with(cut.text.substr(0, cut.text.size() - 6)));
        auto damaged = compressed;
        damaged[compressed.size() / 2] = static_cast<char>(~damaged[compressed.size() / 2]);
        EXPECT_NE(sampleOf(damaged).notice.find("damaged"), std::string::npos);
        const auto broken = sampleOf(compressed.substr(0, 6) + std::string(30, '\1'));
        EXPECT_EQ(broken.kind, Kind::Binary);
        EXPECT_TRUE(broken.notice.ends_with("as they are in the file.")) << broken.notice;
    }
    EXPECT_EQ(sampleOf(gzip("")).kind, Kind::Empty);
    EXPECT_NE(sampleOf(demandingXz()).notice.find("too much memory"), std::string::npos);

    const auto middle = sampleOf(gzip(numberedLines(200'000)));
    EXPECT_TRUE(middle.text.starts_with("line 1 ") && middle.text.ends_with("line 200000 \u20AC\n"));
    std::string bomb; // members of 1 MB
    const auto member = gzip(std::string(1 << 20, 'x'));
    for (int count = 0; count < 100; ++count)
        bomb += member;
    const auto stopped = sampleOf(bomb);
    EXPECT_TRUE(stopped.notice.starts_with("Only the first part is shown")) << stopped.notice;
    EXPECT_LT(stopped.text.size(), MostBytes);
    cancellation.cancel();
    EXPECT_LT(sampleOf(bomb).text.size(), std::size_t{ 200'000 }) << "it goes on after a cancellation";
}

TEST_F(TWFileSampleTest, PicturesAreHandedOverUnlessTheyAreHuge)
{
    const std::string picture = "\x89PNG\r\n\x1A\n" + std::string(100'000, '\1');
    EXPECT_EQ(sampleOf(picture).kind, Kind::Binary);
    EXPECT_TRUE(sampleOf(picture).notice.starts_with("The picture is damaged")) << "nobody can show it";
    std::string taken;
    takePicture = [&](const std::string& bytes) {
        taken = bytes;
        return true;
    };
    EXPECT_EQ(sampleOf(picture).kind, Kind::Picture);
    EXPECT_EQ(taken, picture);
    EXPECT_TRUE(sampleOf(picture + std::string(2 << 20, '\1')).notice.starts_with("Pictures of more than 2 MB"));
}
