#include "formats/TWFileFormats.h"

#include "../../fuzz/formats_property.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

using namespace std::string_literals;
using Keys = std::vector<std::string>;
using Counts = std::vector<std::size_t>;

void expectCut(std::string_view format, const std::string& before, const Keys& keys, const Counts& counts,
    const std::string& after)
{
    std::optional<std::string> remaining;
    const TWFoundEntries found = TWFileFormats::cut(before, keys, remaining);
    EXPECT_EQ(found.format, format);
    EXPECT_EQ(found.problem, "") << before;
    EXPECT_EQ(found.counts, counts) << before;
    EXPECT_EQ(remaining.value_or(before), after);
    TWFormatsProperty::check(before, keys);
}

// Each file is refused, whether or not the key is in it.
void expectRefused(std::string_view format, const std::vector<std::string>& files)
{
    for (const std::string& file : files) {
        const TWFoundEntries found = TWFormatsProperty::check(file, { "k" });
        EXPECT_EQ(found.format, format) << file.substr(0, 100);
        EXPECT_NE(found.problem, "") << file.substr(0, 100);
    }
}

// Each found key on a line, with its values. Each can be cut.
void expectKeys(const std::string& file, const Keys& words, const std::string& expected)
{
    std::string text;
    for (const TWFoundKey& found : TWFileFormats::findKeys(file, words)) {
        const Counts counts = TWFileFormats::find(file, { found.key }).counts;
        EXPECT_TRUE(counts.size() == 1 && counts[0] > 0) << found.key;
        text += found.key + ":";
        for (const std::string& value : found.values)
            text += " <" + value + ">";
        text += "\n";
    }
    EXPECT_EQ(text, expected) << file;
}

std::string repeated(std::string_view text, int count)
{
    std::string result;
    while (count-- > 0)
        result += text;
    return result;
}

std::string nested(std::string_view begin, int depth, std::string_view end)
{
    return repeated(begin, depth) + std::string(end);
}

}

TEST(TWFileFormatsTest, cutsMembersOfJSONWithOneComma)
{
    expectCut("JSON", "{\"k\":1}", { "k" }, { 1 }, "{}");
    expectCut("JSON", R"({"k":1,"x":2,"k":3})", { "k" }, { 2 }, R"({"x":2})");
    expectCut("JSON", R"({"x":1, "k":2, "k":3})", { "k" }, { 2 }, R"({"x":1})");
    expectCut("JSON", R"({"x":1,"k":2,"y":3,})", { "k", "y" }, { 1, 1 }, R"({"x":1,})");
    expectCut("JSON", R"([{"x":{"k":[1,{"k":2}]}},{"k":"}"}])", { "k" }, { 2 }, R"([{"x":{}},{}])");
    expectCut("JSON", R"({"\u006b\n":1,"\ud83d\ude00":2,"\ud83d":3})", { "k\n", "\xf0\x9f\x98\x80" }, { 1, 1 },
        R"({"\ud83d":3})");
    const std::string before = "\xef\xbb\xbf// about\r\n{\r\n  \"x\": 12345678901234567890, // [\r\n"
                               "  /* a */ \"k\": [\r\n    1e5\r\n  ] /* b */,\r\n  \"K\": 1.10, // kept\r\n"
                               "  \"l\": null \t\r\n}";
    expectCut("JSON", before, { "k", "l", "1e5" }, { 1, 1, 0 },
        "\xef\xbb\xbf// about\r\n{\r\n  \"x\": 12345678901234567890, // [\r\n"
        "  /* a */  /* b */\r\n  \"K\": 1.10 // kept\r\n}");
}

TEST(TWFileFormatsTest, refusesDamagedJSON)
{
    expectRefused("JSON",
        { R"({"k":1)", R"({"k":1}})", R"({"k")", R"({"k":)", R"({"k":"a)", R"({k:1})", R"({"k":1 "x":2})",
            R"({"k":01})", R"({"k":1.})", R"({"k":+1})", R"({"k":tru})", R"({"k":"\x"})", R"({"k":"\u12g4"})",
            "{\"k\":\"\n\"}", "{\"k\":1,,}", "{\"k\":1]", "{\"k\":1}\0"s, "{\"k\":\"\xff\"}", "{\"k\":1} /*",
            "{\"k\" 2}", "{,}", nested(R"({"k":)", 10'000, "1") + repeated("}", 10'000) });
}

TEST(TWFileFormatsTest, cutsGroupsAndEntriesOfINI)
{
    const std::string before
        = "\xef\xbb\xbf# top\n[General]\n  other = k\nk=1\nk[$e]=$HOME\nk[de]=2\nkk=3\n\n"
          "[Recent][k]\na=1\nk=2\n\n# about X\n[X]\nRecent%20Files=1\nR\\x65st=\nk\\1\\path=3\nz=9";
    expectCut("INI", before, { "k", "Recent Files", "Rest", "path" }, { 5, 1, 1, 0 },
        "\xef\xbb\xbf# top\n[General]\n  other = k\nkk=3\n\n# about X\n[X]\nz=9");
    expectCut("INI", before, { "path", "k" }, { 1, 4 },
        "\xef\xbb\xbf# top\n[General]\n  other = k\nkk=3\n\n# about X\n[X]\nRecent%20Files=1\nR\\x65st=\nz=9");
    expectCut("INI", "a=1\r\nk=2\r\n", { "k" }, { 1 }, "a=1\r\n");
    expectCut("INI", "[k]\n[ k ]\n[a[0]] ; 1\nx]=1", { "k", "a[0]" }, { 1, 1 }, "[ k ]\n");
    expectCut("INI", "a=1\nk =\n\t/x\n\t/y\nb=\xff\n", { "k" }, { 1 }, "a=1\nb=\xff\n");
    // In KDE's files a backslash separates nothing.
    expectCut("INI", "a\\x5bk\\k=1\na\\\\k=2\n", { "k" }, { 0 }, "a\\x5bk\\k=1\na\\\\k=2\n");
    expectCut("INI", "[]\n\\a=1\n%zz\\%41=2 \t\n", { "", "A" }, { 0, 1 }, "[]\n\\a=1\n");
    expectCut("INI", "", { "k" }, { 0 }, "");
}

TEST(TWFileFormatsTest, refusesWhatMayNotBeINI)
{
    expectRefused("INI",
        { "k=1\nsome text\n", "[k\n", "=1\n", "[a]\n  text\n", "k=1\0"s, "k\0=\0"s, "[k] x\n", "[1,2\n",
            "[{\"k\":1,}, {\"k\":]\n", "[[k]]\n", "a=1\n<b=2\n", "a=1\n\xef\xbb\xbfk=2\n", "k\n",
            // It is unclear where these entries end.
            "k=1\n  a=2\n", "a=1\n  k=2\n", "[k]\na=\n  [b]\n", "a=\n [k]\n", "k=1\\\nb=2\n", "a=1\\\nk=2\n" });
    // It is just as unclear here, but what goes is not concerned.
    expectCut("INI", "a=1\n  b=2\\\nc=1\n[d]\nk=3\n", { "k" }, { 1 }, "a=1\n  b=2\\\nc=1\n[d]\n");
}

TEST(TWFileFormatsTest, cutsElementsOfXML)
{
    expectCut("XML",
        "<?xml version='1.0'?>\r\n<!-- <k/> -->\r\n<k a = \"1\" >\r\n  <k>x<y/></k>\r\n  <n:k/><y k=''/>\r\n"
        "  t<k/>u<k></k>\r\n</k>",
        { "k" }, { 3 },
        "<?xml version='1.0'?>\r\n<!-- <k/> -->\r\n<k a = \"1\" >\r\n  <n:k/><y k=''/>\r\n  tu\r\n</k>");
    expectCut("XML", "<?xml version='1.0' encoding='ISO-8859-1'?><r><k\xe4/><k>\xe4</k></r>", { "k", "k\xc3\xa4" },
        { 1, 1 }, "<?xml version='1.0' encoding='ISO-8859-1'?><r></r>");
    expectCut("LibreOffice registry",
        "<oor:items xmlns:oor='o'>\n"
        "<item oor:path=\"/H['PickList']/O\"><node oor:name='1'/></item>\n"
        "<item oor:path='/H[\"a&amp;b\"]/P[&apos;PickList&apos;]'/>\n"
        "<item oor:path=\"/PickList/H['x']\"><prop oor:name='PickList'/></item>\n</oor:items>\n",
        { "a&b", "PickList", "item" }, { 1, 1, 0 },
        "<oor:items xmlns:oor='o'>\n"
        "<item oor:path=\"/PickList/H['x']\"><prop oor:name='PickList'/></item>\n</oor:items>\n");
    const auto bookmark = [](const std::string& name, const std::string& group) {
        return "  <bookmark href='file:///" + name + "'><info><metadata><b:groups><b:group>" + group
            + "</b:group></b:groups><b:applications><b:application name='" + name
            + "'/></b:applications></metadata></info></bookmark>\n";
    };
    const std::string other = bookmark("kk", "office") + "<title>k</title>\n</xbel>\n";
    expectCut("XBEL", "<!DOCTYPE xbel PUBLIC 'p' 's'>\n<xbel>\n" + bookmark("k", "g") + bookmark("a", "k") + other,
        { "g", "k", "title" }, { 1, 1, 0 }, "<!DOCTYPE xbel PUBLIC 'p' 's'>\n<xbel>\n" + other);
}

TEST(TWFileFormatsTest, refusesDamagedXML)
{
    expectRefused("XML",
        { "<r><k/>", "<r><k></r>", "<r/><r/>", "<!DOCTYPE r [<!ENTITY a 'b'>]><r>&a;</r>", "<r>&a;</r>",
            "<!DOCTYPE r SYSTEM 's'><r>&a;</r>", "<r>\xff</r>", "<\0r\0/\0>\0"s, "<r>\0</r>"s, "<a b=\"c",
            nested("<k>", 10'000, "") + repeated("</k>", 10'000),
            "<r><!--" + std::string(2'000'000, 'x') + "--></r>" });
}

TEST(TWFileFormatsTest, cutsEntriesOfXMLPropertyLists)
{
    const std::string head = "<?xml version=\"1.0\"?>\n<!DOCTYPE plist PUBLIC \"p\" \"u\">\n<plist>\n<dict>\n";
    const std::string before = head
        + "\t<key>k</key>\n\t<dict>\n\t\t<key>l</key><true/>\n\t</dict>\n\t<key>x</key>\n\t<array>\n\t\t<string>k</"
          "string>\n"
          "\t\t<dict><key>k</key><real>1.10</real><key>l</key><data>AA==</data></dict>\n\t</array>\n</dict>\n</"
          "plist>\n";
    const auto after = [&](std::string_view inner) {
        return head + "\t<key>x</key>\n\t<array>\n\t\t<string>k</string>\n\t\t<dict>" + std::string(inner)
            + "</dict>\n\t</array>\n</dict>\n</plist>\n";
    };
    expectCut("XML property list", before, { "k" }, { 2 }, after("<key>l</key><data>AA==</data>"));
    // The order of the keys decides which of two nested entries is found.
    expectCut("XML property list", before, { "k", "l", "k", "string" }, { 2, 1, 0, 0 }, after(""));
    expectCut("XML property list", before, { "l", "k" }, { 2, 2 }, after(""));
    const auto list = [](std::string_view inside) { return "<plist>" + std::string(inside) + "</plist>"; };
    expectRefused("XML property list",
        { list(""), list("<array/>"), list("<string>k</string>"), list("<dict/><dict/>"), list("<dict>x</dict>"),
            list("<dict><key>k</key></dict>"), list("<dict><true/></dict>"),
            list("<dict><key>k</key><key>l</key></dict>"), list("<dict><key>k</key><foo/></dict>"),
            list("<dict><key>k</key><true/><true/></dict>"), list("<dict><key>k<true/></key><true/></dict>"),
            list("<plist><dict/></plist>"),
            list("<dict><key>k</key>" + nested("<array>", 10'000, "") + repeated("</array>", 10'000) + "</dict>") });
}

namespace {

std::string bigEndian(std::size_t number, int size)
{
    std::string bytes;
    while (size-- > 0)
        bytes += static_cast<char>(number >> 8 * size);
    return bytes;
}

// A binary list of the given objects, of which one is on top.
std::string binary(const std::vector<std::string>& objects, std::size_t top = 0, int referenceSize = 1)
{
    std::string file = "bplist00";
    std::string table;
    const int offsetSize = objects.size() < 20 ? 1 : 4;
    for (const std::string& object : objects) {
        table += bigEndian(file.size(), offsetSize);
        file += object;
    }
    return file + table + bigEndian(std::size_t(offsetSize), 7) + char(referenceSize) + bigEndian(objects.size(), 8)
        + bigEndian(top, 8) + bigEndian(file.size(), 8);
}

}

TEST(TWFileFormatsTest, rewritesBinaryPropertyLists)
{
    // The root is number 7: k, x, x and \u00e4 are 32-bit reals, a UID, and a set of the root's other values.
    const std::string kept = "\x22\x40\x20\0\0"s;
    const std::vector<std::string> before{ "\x51k", "\x51x", "\x61\0\xe4"s, kept, "\xd1\0\3"s, "\xc2\3\6", "\x81\1\2",
        "\xd4\0\1\1\2\4\3\6\5"s };
    const std::vector<std::string> after{ "\x51x", "\x61\0\xe4"s, kept, "\xc2\2\4", "\x81\1\2", "\xd3\0\0\1\2\4\3"s };
    expectCut("binary property list", binary(before, 7), { "k", "none" }, { 1, 0 }, binary(after, 5));
    expectCut("binary property list", binary(before, 7), { "\xc3\xa4", "x", "k" }, { 1, 2, 1 }, binary({ "\xd0" }));
    // An inner entry of a key that comes first counts on its own; and equal entries of one dictionary count twice.
    expectCut("binary property list", binary({ "\xd2\1\1\2\2", "\x51k", "\xd1\3\3", "\x51l" }), { "l", "k" }, { 1, 2 },
        binary({ "\xd0" }));
    std::string refs(16, '\2');
    expectCut("binary property list", binary({ "\xd2\1\2\3\4"s, "\x51k", "\x51x", "\x09", "\xaf\x10\x10" + refs }),
        { "k" }, { 1 }, binary({ "\xd1\1\2", "\x51x", "\xaf\x10\x10" + std::string(16, '\1') }));
    const std::string good = binary({ "\xd1\1\2", "\x51k", "\x09" });
    expectRefused("binary property list",
        { "bplist00", good.substr(0, good.size() - 1), "bplist01" + good.substr(8), binary({ "\xd1\1\2", "\x51k" }),
            binary({ "\xa0" }), binary({ "\xd1\1\2", "\x5f\x13\xff\xff\xff\xff\xff\xff\xff\xff" }),
            binary({ "\xd1\1\1", "\x09" }), binary({ "\xd1\1\2", "\x51k", "\x70" }),
            binary({ "\xd1\2\1", "\xa1\1", "\x51\xff" }), binary({ "\xd1\1\2", "\x61\xd8\0"s, "\x09" }) });
}

// Many objects in the same bytes would make the new list far longer than the file.
TEST(TWFileFormatsTest, refusesOverlappingObjects)
{
    std::string list = binary({ "\xd3\1\1\1\2\3\4", "\x51x", "\x4f\x10\x50" + std::string(80, 'd'), "\x08", "\x08" });
    expectCut("binary property list", list, { "k" }, { 0 }, list);
    const std::size_t table = list.size() - 32 - 5;
    list[table + 3] = list[table + 4] = list[table + 2];
    expectRefused("binary property list", { list });
}

TEST(TWFileFormatsTest, boundsTheLengthAndTheDepth)
{
    for (const std::size_t depth : { 512, 513, 10'000 }) {
        std::vector<std::string> objects{ "\xd1\0\1\0\2"s, "\x51k" };
        while (objects.size() <= depth)
            objects.push_back("\xa1" + bigEndian(objects.size() + 1, 2));
        objects.push_back("\x09");
        const std::string brackets = repeated("[", int(depth)) + repeated("]", int(depth));
        EXPECT_EQ(TWFormatsProperty::check(binary(objects, 0, 2), { "k" }).problem.empty(), depth <= 512);
        EXPECT_EQ(TWFormatsProperty::check(brackets, { "k" }).problem.empty(), depth <= 512);
    }
    const std::string longest(TWFileFormats::MaximumBytes, '#');
    EXPECT_EQ(TWFileFormats::find(longest, { "k" }).problem, "");
    EXPECT_EQ(TWFileFormats::find(longest + "#", { "k" }).problem, "it is longer than 64 MB");
}

// As programs write them: a media player, a text editor of KDE, one of GTK, and an audio editor.
TEST(TWFileFormatsTest, cutsWhatProgramsWrite)
{
    const std::string player = "[MainWindow]\ngeometry=@ByteArray(\\x1\\xd9\\xd0)\n\n";
    expectCut("INI", player + "[RecentsMRL]\nlist=file:///a%20b.ogg, file:///c.ogg\ntimes=0, 7\n", { "RecentsMRL" },
        { 1 }, player);
    const std::string kde = "[General][View 0]\nCursorLine[$i]=3\n\n";
    expectCut("INI", "[$Version]\nupdate_info=a:b\n\n[Recent Files]\nFile1[$e]=$HOME/a.txt\nName1[$e]=a.txt\n\n" + kde,
        { "Recent Files" }, { 1 }, "[$Version]\nupdate_info=a:b\n\n" + kde);
    expectCut("INI",
        "\n[geany]\npref_main=true\n\n[files]\nrecent_files=/a b.c;/d\\;e;\nrecent_projects=\nFILE_NAME_0=1;C;0;\n",
        { "recent_files", "recent_projects" }, { 1, 1 }, "\n[geany]\npref_main=true\n\n[files]\nFILE_NAME_0=1;C;0;\n");
    expectCut("INI", "NewImportingSession=0\n[RecentFiles]\nfile01=/a.wav\n[Window]\nX=1\n",
        { "RecentFiles", "file01" }, { 1, 0 }, "NewImportingSession=0\n[Window]\nX=1\n");
}

// Runs the fuzz targets' property over their files, and over every file cut short.
TEST(TWFileFormatsTest, holdsForFuzzedAndTruncatedFiles)
{
    int files = 0;
    const auto fuzz = std::filesystem::path(__FILE__).parent_path() / "../../fuzz";
    for (const char* folder :
        { "corpus/json", "corpus/ini", "corpus/xml", "corpus/plist_cut", "finds/ini", "finds/plist_cut" }) {
        for (const auto& entry : std::filesystem::directory_iterator(fuzz / folder)) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string bytes(std::istreambuf_iterator<char>(file), {});
            std::string_view input(bytes);
            const Keys keys = TWFormatsProperty::takeKeys(input);
            const std::size_t end = input.find_last_not_of('\n') + 1;
            for (std::size_t length = 0; length <= input.size(); length++) {
                const TWFoundEntries found = TWFormatsProperty::check(input.substr(0, length), keys);
                EXPECT_TRUE(length >= end || found.format == "INI" || !found.problem.empty()) << entry.path() << length;
            }
            files++;
        }
    }
    EXPECT_GT(files, 10);
}

TEST(TWFileFormatsTest, findsKeysByKeywords)
{
    const Keys words{ "Recent", "History" };
    expectKeys(R"({"x":[{"MyHistory":{"a":1,"Recent":["\u0062",{"c":null,"d":[]}]}}],"recent":[1],"Recent":"s",)"
               R"("Recent":[{"History":[2]},"/a"],"Recent\n":[]})",
        words, "MyHistory: <1> <[b, {c: null, d: []}]>\nRecent: <{History: [2]}> </a>\nRecent\n:\n");
    expectKeys("Recent=one\nRecentA=a, \"b,c\"\nRecentB=/a b,c.txt;d\\;e;\nRecentC[$e]=$HOME/a\nRecent1=\xff\n"
               "RecentD=\r\n\t/x,y\r\n\t/z\n[Recent%20Files]\nFile1=/a,b\nHistory\\1=c\n[X][Recent][1]\nn=1\n"
               "[X][Recent][2]\nn=2\n[Y]\nHistory\\1\\path=/p\nHistory\\2\\path=/q\nHistory\\size=2\n",
        words,
        "RecentA: <a> <\"b,c\">\nRecentB: </a b,c.txt> <d\\;e>\nRecentC: <$HOME/a>\nRecent1: <\xef\xbf\xbd>\n"
        "RecentD: </x,y> </z>\nRecent%20Files: </a,b> <{1: c}>\nRecent: <{n: 1}> <{n: 2}>\n"
        "History: <{path: /p}> <{path: /q}> <2>\n");
    expectKeys("<Recent><Recent>s</Recent><x><Recent a='1'>\n <f p='/a' q='b'>t</f><g><h/>u</g></Recent></x></Recent>",
        words, "Recent: <a=1;> <p=/a; q=b; t> <{h: }>\n");
    expectKeys("<oor:items><item oor:path=\"/H['Recent']/O\"><node oor:name='0'><prop><value>a</value></prop></node>"
               "</item><item oor:path=\"/O['x']\"/><item oor:path=\"/H['Recent']/I['y']\"><value>b</value></item>"
               "</oor:items>",
        words, "Recent: <0: a> <b>\n");
    expectKeys("<xbel><bookmark href='a'><application name='Recent'/><group>History</group></bookmark>"
               "<bookmark href='b'><application name='Recent'/><application name='Recent'/></bookmark></xbel>",
        words, "Recent: <a> <b>\nHistory: <a>\n");
}

TEST(TWFileFormatsTest, findsKeysOfPropertyLists)
{
    const Keys words{ "Recent" };
    TWValue list = TWDictionary::fromEntries(
        { { "NSRecent", TWValue::Array{ TWDictionary::fromEntries({ { "Recent", TWValue::Array{ true } } }) } },
            { "Recent", "text" },
            { "a",
                TWValue::Array{ TWDictionary::fromEntries({ { "Recents",
                    TWDictionary::fromEntries(
                        { { "x", TWDate{ 0 } }, { "y", TWData{ "abc" } }, { "z", -1.5 } }) } }) } } });
    for (const auto format : { TWPropertyListFormat::XML, TWPropertyListFormat::Binary })
        expectKeys(TWPropertyList::write(list, format).value(), words,
            "NSRecent: <{Recent: [true]}>\nRecents: <2001-01-01 00:00:00 +0000> <3 bytes> <-1.5>\n");
}

TEST(TWFileFormatsTest, boundsTheKeys)
{
    const std::string name(TWKeyCollector::MaximumNameBytes, 'k');
    expectKeys("{\"" + name + "\":[],\"k" + name + "\":[1]}", { "k" }, name + ":\n");
    expectKeys("{\"k\":[1],\"\":[1]}", { "" }, "");
    expectKeys("{\"k\":[1}", { "k" }, "");
    expectKeys("{\"k\":[\"" + name.substr(0, 499) + "\xc3\xa4\",\"" + name.substr(0, 500) + "\"]}", { "k" },
        "k: <" + name.substr(0, 499) + "…> <" + name.substr(0, 500) + ">\n");
    const auto keys
        = TWFileFormats::findKeys("[" + repeated("{\"k\":[" + repeated("1,", 300) + "]},", 300) + "]", { "k" });
    ASSERT_EQ(keys.size(), TWKeyCollector::MaximumKeys);
    EXPECT_EQ(keys.back().values.size(), TWKeyCollector::MaximumValues);
}
