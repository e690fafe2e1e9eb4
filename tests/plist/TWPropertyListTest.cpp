#include "plist/TWPropertyListReader.h"

#include "../../fuzz/plist_property.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>

namespace {

using Format = TWPropertyListFormat;
using namespace std::string_literals;

const std::filesystem::path Here = std::filesystem::path(__FILE__).parent_path();

std::string fileBytes(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return { std::istreambuf_iterator<char>(file), {} };
}

constexpr auto dictionary = TWDictionary::fromEntries;

std::string xml(std::string_view inside)
{
    return "<?xml version='1.0'?>\n<plist version='1.0'>" + std::string(inside) + "</plist>";
}

std::string bigEndian(std::size_t number, int size)
{
    std::string bytes;
    while (size-- > 0)
        bytes += static_cast<char>(number >> 8 * size);
    return bytes;
}

// A binary list of the given objects, the first on top, with references of so many bytes.
std::string binary(const std::vector<std::string>& objects, char referenceSize = 1)
{
    std::string file = "bplist00";
    std::string table;
    for (const std::string& object : objects) {
        table += bigEndian(file.size(), 4);
        file += object;
    }
    const std::string trailer = bigEndian(4, 7) + referenceSize + bigEndian(objects.size(), 8) + bigEndian(0, 8);
    return file + table + trailer + bigEndian(file.size(), 8);
}

std::string problem(std::string_view bytes)
{
    const TWPropertyListResult result = TWPropertyList::read(bytes);
    EXPECT_EQ(result.value.has_value(), result.problem.empty());
    return result.problem;
}

void expectRead(const std::string& bytes, const TWValue& expected)
{
    const TWPropertyListResult result = TWPropertyList::read(bytes);
    EXPECT_EQ(result.value, expected) << bytes << ": " << result.problem;
    TWPlistProperty::check(bytes);
}

TWValue nested(int depth, TWValue value = 1)
{
    for (int i = 0; i < depth; i++) {
        TWValue::Array items;
        TWDictionary entries;
        i % 2 ? items.push_back(std::move(value)) : entries.set("k", std::move(value));
        value = i % 2 ? TWValue(std::move(items)) : TWValue(std::move(entries));
    }
    return value;
}

}

TEST(TWPropertyList, readsAndWritesWhatOthersDo)
{
    // Python has read ours and written the others; see data/fixtures.py. What the values are is tested below.
    const std::string ours = fileBytes(Here / "data/ours.binary.plist");
    const auto value = TWPropertyList::read(ours).value;
    ASSERT_TRUE(value);
    const std::pair<const char*, Format> files[] = { { "python.xml.plist", Format::XML },
        { "utf16.xml.plist", Format::XML }, { "python.binary.plist", Format::Binary } };
    for (const auto& [name, format] : files) {
        const TWPropertyListResult result = TWPropertyList::read(fileBytes(Here / "data" / name));
        EXPECT_EQ(result.value, value) << name << ": " << result.problem;
        EXPECT_EQ(result.format, format) << name;
    }
    EXPECT_EQ(TWPropertyList::write(*value, Format::XML), fileBytes(Here / "data/python.xml.plist"));
    EXPECT_EQ(TWPropertyList::write(*value, Format::Binary), ours);
}

TEST(TWPropertyList, readsUnusualXML)
{
    const std::pair<std::string, TWValue> cases[]
        = { { xml("<integer> 0x1F\n</integer>"), 31 }, { xml("<integer>+7</integer>"), 7 },
              { xml("<real>+infinity</real>"), HUGE_VAL }, { xml("<real>nan</real>"), std::nan("") },
              { xml("<string>a<!-- no -->b<![CDATA[<c>]]>&#13;&quot;</string>"), "ab<c>\r\"" },
              { xml("<data>\n\tAA E\r\n= </data>"), TWData{ "\0\1"s } },
              { xml("<date>0000-12-30T00:00:00Z</date>"), TWDate{ -63114076800 } }, { "<array/>", TWValue::Array() },
              { "\xef\xbb\xbf<dict></dict>", TWDictionary() },
              { "<?xml version='1.0' encoding='ISO-8859-1'?><string>\xe4</string>", "ä" },
              { xml("<dict><key>b</key><true/><key>a</key><false/><key>b</key><integer>3</integer></dict>"),
                  dictionary({ { "b", 3 }, { "a", false } }) } };
    for (const auto& [bytes, expected] : cases)
        expectRead(bytes, expected);
}

TEST(TWPropertyList, refusesWrongXML)
{
    for (const char* inside : { "", "text", "<foo/>", "<integer/>", "<integer>1 2</integer>", "<integer>--1</integer>",
             "<integer>1.5</integer>", "<integer>9223372036854775808</integer>",
             "<integer>-9223372036854775809</integer>", "<real>1,5</real>", "<real>1e999</real>", "<real>+-1</real>",
             "<date>2024-02-30T00:00:00Z</date>", "<date>2024-02-03</date>", "<date>2024-02-03T24:00:00Z</date>",
             "<data>AAA</data>", "<data>A*AA</data>", "<data>AA=A</data>", "<data>AA==AA==</data>", "<data>====</data>",
             "<true>yes</true>", "<true/><true/>", "<plist><true/></plist>", "<key>a</key>",
             "<dict><key>a</key></dict>", "<dict><true/></dict>", "<dict><key>a</key><key>b</key></dict>",
             "<array><key>a</key></array>", "<string><true/></string>", "<string>&#1;</string>",
             "<string>&unknown;</string>", "<array><plist/></array>", "<array><true/>" })
        EXPECT_NE(problem(xml(inside)), "") << inside;
    // Entities, also unknown ones that a document type elsewhere may declare.
    for (const char* whole : { "", "{ old = style; }",
             "<!DOCTYPE plist [<!ENTITY a 'aaaa'><!ENTITY b '&a;&a;'>]><plist><string>&b;</string></plist>",
             "<!DOCTYPE plist PUBLIC 'x' 'http://x'><plist><string>a&unknown;b</string></plist>" })
        EXPECT_NE(problem(whole), "") << whole;
}

TEST(TWPropertyList, readsAndRefusesBinaryObjects)
{
    const std::pair<std::vector<std::string>, TWValue> good[]
        = { { { "\x14\0\0\0\0\0\0\0\0\x7f\xff\xff\xff\xff\xff\xff\xff"s }, std::numeric_limits<std::int64_t>::max() },
              { { "\x14"s + std::string(16, '\xff') }, -1 }, { { "\x12\xff\xff\xff\xff" }, std::int64_t(4294967295) },
              { { "\x62\xd8\x3d\xde\x00"s }, "😀" }, { { "\x52\0a"s }, "\0a"s },
              { { "\xd2\1\1\2\3"s, "\x51k", "\x08", "\x09" }, dictionary({ { "k", true } }) },
              { { "\xa2\1\1", "\x51s" }, TWValue::Array{ "s", "s" } } };
    for (const auto& [objects, expected] : good)
        expectRead(binary(objects), expected);
    const std::vector<std::string> bad[]
        = { { "\0"s }, { "\x0f" }, { "\x80\1" }, { "\xc0" }, { "\x70" }, { "\x15"s + std::string(32, '\0') },
              { "\x14"s + std::string(8, '\0') + std::string(8, '\xff') }, { "\x33\x7f\xf8\0\0\0\0\0\0"s },
              { "\x51\xe4" }, { "\x61\xd8\0"s }, { "\x62\xde\0\xd8\x3d"s }, { "\x61\xdc\0"s }, { "\xa1\7" },
              { "\xd1\1\1", "\x09" }, { "\x5f" }, { "\x5f\x23" }, { "\x4f\x13\xff\xff\xff\xff\xff\xff\xff\xff" },
              { "\xaf\x13\x40\0\0\0\0\0\0\0"s }, { "\xa1\0"s }, { "\xd1\1\0"s, "\x51k" } };
    for (const auto& objects : bad)
        EXPECT_NE(problem(binary(objects)), "") << testing::PrintToString(objects);
    EXPECT_EQ(problem(binary({ "\x80\1" })), "it holds a UID, as files of keyed archives do");
}

TEST(TWPropertyList, refusesToWriteWhatCouldNotBeReadBack)
{
    for (const char* wrong : { "\xff", "\xc0\x80", "\xed\xa0\x80", "\xe2\x82", "\xf4\x90\x80\x80" }) {
        for (const Format format : { Format::XML, Format::Binary }) {
            EXPECT_FALSE(TWPropertyList::write(wrong, format));
            EXPECT_FALSE(TWPropertyList::write(dictionary({ { wrong, 1 } }), format));
        }
    }
    std::string problem;
    for (const TWValue& onlyBinary : { TWValue("\1"), TWValue("\xef\xbf\xbf"), TWValue("\0"s), TWValue(TWDate{ 1e15 }),
             TWValue(TWDate{ -1e15 }), TWValue(TWDate{ 0.5 }) }) {
        EXPECT_FALSE(TWPropertyList::write(onlyBinary, Format::XML));
        EXPECT_EQ(TWPropertyList::write(onlyBinary, problem), TWPropertyList::write(onlyBinary, Format::Binary));
    }
    EXPECT_FALSE(TWPropertyList::write(TWDate{ std::nan("") }, Format::Binary));
    EXPECT_FALSE(TWPropertyList::write(TWData{ std::string(TWPropertyList::MaximumBytes, 'x') }, problem));
    EXPECT_EQ(problem, "it is longer than 64 MB");
    EXPECT_FALSE(TWPropertyList::write(std::string(TWPropertyList::MaximumBytes, 'x'), Format::XML));
    EXPECT_FALSE(TWPropertyList::write(TWValue::Array(3'000'000), problem));
    EXPECT_EQ(problem, "its values would take more than 100 MB of memory");
    // In XML the indents make it too long.
    EXPECT_FALSE(TWPropertyList::write(nested(500, TWValue::Array(200'000)), Format::XML));
}

TEST(TWPropertyList, boundsDepth)
{
    for (const Format format : { Format::XML, Format::Binary }) {
        const TWValue deepest = nested(TWPropertyList::MaximumDepth);
        const auto written = TWPropertyList::write(deepest, format);
        ASSERT_TRUE(written);
        EXPECT_EQ(TWPropertyList::read(*written).value, deepest);
        EXPECT_FALSE(TWPropertyList::write(nested(TWPropertyList::MaximumDepth + 1), format));
    }
    std::string deep;
    for (int i = 0; i < 100'000; i++)
        deep += "<array>";
    EXPECT_EQ(problem("<plist>" + deep), "line 1: it is nested more than 512 levels deep");
    std::vector<std::string> arrays; // each holds the one behind it
    for (std::size_t i = 0; i < 100'000; i++)
        arrays.push_back('\xa1' + bigEndian(i + 1, 4));
    EXPECT_EQ(problem(binary(arrays, 4)), "it is nested more than 512 levels deep");
}

TEST(TWPropertyList, boundsWhatSharedObjectsStandFor)
{
    // 14 references each to the next object, 20 times: 14 to the power of 20 values.
    std::vector<std::string> arrays;
    for (char i = 1; i <= 20; i++)
        arrays.push_back('\xae' + std::string(14, i));
    arrays.push_back("\x09");
    // 4096 references to one long string.
    const std::vector<std::string> strings{ "\xaf\x11\x10\0"s + std::string(4096, '\1'),
        "\x5f\x12\0\1\0\0"s + std::string(65536, 'a') };
    for (const auto& objects : { arrays, strings })
        EXPECT_EQ(problem(binary(objects)), "its values would take more than 100 MB of memory");
}

TEST(TWPropertyList, readsPiecesOfAnySize)
{
    for (const char* name : { "utf16.xml.plist", "ours.binary.plist" }) {
        const std::string whole = fileBytes(Here / "data" / name);
        for (const std::size_t size : { std::size_t(1), std::size_t(7), whole.size() }) {
            TWPropertyListReader reader;
            for (std::size_t at = 0; at < whole.size(); at += size)
                EXPECT_TRUE(reader.take(std::string_view(whole).substr(at, size)));
            EXPECT_EQ(reader.finish().value, TWPropertyList::read(whole).value) << name;
        }
    }
    EXPECT_EQ(problem("bpli"), "line 1: syntax error");
    EXPECT_EQ(problem(std::string(TWPropertyList::MaximumBytes + 1, ' ')), "it is longer than 64 MB");
    for (const auto& endless : { "<!--" + std::string(2'000'000, 'c'), "<array a='" + std::string(2'000'000, 'a') })
        EXPECT_EQ(problem(xml(endless)), "line 2: a tag or a comment that is longer than 1 MB");
}

TEST(TWPropertyList, survivesDamage)
{
    for (const char* name : { "python.xml.plist", "ours.binary.plist" }) {
        const std::string whole = fileBytes(Here / "data" / name);
        for (std::size_t length = 0; length < whole.size() - 1; length++)
            EXPECT_NE(problem(whole.substr(0, length)), "") << name << " cut at " << length;
        for (std::size_t place = 0; place < whole.size(); place++) {
            for (const char other :
                { '\0', '\x7f', '\xff', static_cast<char>(whole[place] ^ 1), static_cast<char>(whole[place] ^ 0x10) }) {
                std::string damaged = whole;
                damaged[place] = other;
                TWPlistProperty::check(damaged);
            }
        }
    }
}

// What fuzzing started from and what it found.
TEST(TWPropertyList, holdsForFuzzedFiles)
{
    int files = 0;
    for (const char* folder : { "corpus/plist_xml", "corpus/plist_binary", "finds/plist_xml", "finds/plist_binary" }) {
        for (const auto& entry : std::filesystem::directory_iterator(Here / "../../fuzz" / folder)) {
            const std::string bytes = fileBytes(entry.path());
            TWPlistProperty::check(bytes);
            TWPlistProperty::checkAsObjects(bytes);
            files++;
        }
    }
    EXPECT_GT(files, 4);
}

TEST(TWDictionary, keepsOrderAndTheLastOfEqualKeys)
{
    TWDictionary settings = dictionary({ { "b", 1 }, { "a", 2 } });
    settings.set("c", "new");
    settings.set("b", true);
    EXPECT_TRUE(settings.remove("a") && !settings.remove("a") && !settings.find("a"));
    EXPECT_EQ(settings, dictionary({ { "b", true }, { "c", "new" } }));
    EXPECT_FALSE(settings == dictionary({ { "c", "new" }, { "b", true } }) || TWValue(1) == TWValue(true));

    std::vector<TWDictionary::Entry> many; // which must not take minutes
    for (int i = 0; i < 1'000'000; i++)
        many.emplace_back("key " + std::to_string(i % 700'000), i);
    EXPECT_EQ(dictionary(std::move(many)).size(), 700'000u);
}
