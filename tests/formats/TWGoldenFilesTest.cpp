#include "formats/TWFileFormats.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <numeric>
#include <sstream>

namespace {

struct GoldenFile {
    const char* path; // below golden/
    std::string_view format;
    std::vector<std::string> keys;
    std::string_view document; // as the file names it
    std::size_t removedLines;
};

void expectOnlyTheDocumentsGo(const GoldenFile& golden)
{
    SCOPED_TRACE(golden.path);
    std::ifstream file(std::filesystem::path(__FILE__).parent_path() / "golden" / golden.path, std::ios::binary);
    const std::string before(std::istreambuf_iterator<char>(file), {});
    EXPECT_TRUE(before.find(golden.document) != before.npos);
    std::optional<std::string> after;
    const TWFoundEntries found = TWFileFormats::cut(before, golden.keys, after);
    EXPECT_EQ(found.format, golden.format);
    EXPECT_EQ(found.problem, "");
    EXPECT_GE(std::accumulate(found.counts.begin(), found.counts.end(), std::size_t{ 0 }), 1U);
    ASSERT_TRUE(after);
    EXPECT_EQ(after->find(golden.document), after->npos) << *after;
    // Every line that remains stood in the file, in this order; and no more lines went than those of the entries.
    std::istringstream linesBefore(before);
    std::istringstream linesAfter(*after);
    std::size_t removed = 0;
    for (std::string line, kept; std::getline(linesAfter, kept);) {
        while (std::getline(linesBefore, line) && line != kept)
            removed++;
        EXPECT_EQ(line, kept);
    }
    for (std::string line; std::getline(linesBefore, line);)
        removed++;
    EXPECT_EQ(removed, golden.removedLines);
}

}

// Files that programs wrote themselves; golden/README.md says how.
TEST(TWGoldenFilesTest, losesTheDocumentsAndNothingElse)
{
    const GoldenFile files[] = {
        { "featherpad/fp.conf", "INI", { "recentFiles" }, "letter.txt", 1 },
        { "geany/geany.conf", "INI", { "recent_files", "recent_projects" }, "letter.txt", 2 },
        { "geany/recently-used.xbel", "XBEL", { "geany" }, "letter.txt", 26 },
        { "gwenview/gwenviewrc", "INI", { "Recent Files" }, "picture.png", 4 },
        { "kate/anonymous.katesession", "INI", { "Recent Files" }, "letter.txt", 3 },
        { "kolourpaint/kolourpaintrc", "INI", { "Recent Files" }, "picture.png", 4 },
        { "kwrite/anonymous.katesession", "INI", { "Recent Files", "Open Documents", "Document 0" }, "letter.txt", 16 },
        { "libreoffice/registrymodifications.xcu", "LibreOffice registry", { "PickList" }, "letter.txt", 2 },
        { "notepadqq/Notepadqq.ini", "INI", { "RecentDocuments" }, "letter.txt", 1 },
        { "okular/okularrc", "INI", { "Recent Files" }, "letter.pdf", 3 },
        { "qpdfview/qpdfview.conf", "INI", { "recentlyUsed" }, "letter.pdf", 1 },
        { "qt/QtProject.conf", "INI", { "history", "lastVisited" }, "/Documents", 2 },
        { "sqlitebrowser/sqlitebrowser.conf", "INI", { "recentFileList" }, "stock.db", 1 },
        { "texmaker/texmaker.ini", "INI", { "Files\\Recent Files New", "Files\\Last Document" }, "letter.txt", 2 },
        { "vlc/vlc-qt-interface.conf", "INI", { "RecentsMRL" }, "song.wav", 3 },
    };
    for (const GoldenFile& golden : files)
        expectOnlyTheDocumentsGo(golden);
}
