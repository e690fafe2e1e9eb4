#include "cleaners/TWFilesRule.h"
#include "cleaners/TWRecentItemsRule.h"
#include "formats/TWFileFormats.h"
#include "plist/TWPropertyList.h"
#include "support/TWPath.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

namespace {

std::string contents(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return { std::istreambuf_iterator<char>(file), {} };
}

template <typename Rule>
std::vector<Rule> shipped(const char* name)
{
    const auto list = TWPropertyList::read(contents(std::filesystem::path(TIDEWELL_RESOURCES) / name));
    std::vector<Rule> rules;
    for (const auto& value : *list.value->array())
        rules.push_back(Rule::from(value).value());
    return rules;
}

}

// Nobody's rule may be switched on by us that no file of the real program has confirmed.
TEST(TWDefaultRulesTest, EachActiveRecentItemsRuleFindsSomethingInAFileThatItsProgramWrote)
{
    std::multimap<std::string, std::filesystem::path> golden; // by file name
    for (const auto& entry : std::filesystem::recursive_directory_iterator(
             std::filesystem::path(__FILE__).parent_path().parent_path() / "formats/golden"))
        golden.emplace(entry.path().filename(), entry.path());
    const auto rules = shipped<TWRecentItemsRule>("RecentItemsRules.plist");
    std::set<std::string> sources;
    int active = 0;
    for (const auto& rule : rules) {
        SCOPED_TRACE(rule.source);
        EXPECT_TRUE(rule.filePath.starts_with("~/"));
        EXPECT_TRUE(rule.deleteFile || !rule.keyNames().empty());
        EXPECT_TRUE(sources.insert(rule.source).second) << "would never be merged";
        if (!rule.active)
            continue;
        ++active;
        const auto [begin, end] = golden.equal_range(std::string(TWPath::lastComponent(rule.filePath)));
        bool finds = false;
        for (auto file = begin; file != end; ++file) {
            const auto found = TWFileFormats::find(contents(file->second), rule.keyNames());
            finds = finds || rule.deleteFile
                || std::ranges::any_of(found.counts, [](std::size_t count) { return count > 0; });
        }
        EXPECT_TRUE(finds);
    }
    EXPECT_GE(rules.size(), 25U);
    EXPECT_GE(active, 10);
}

// Others end the whole cleaning where their folder is missing.
TEST(TWDefaultRulesTest, ActiveFilesRulesNameTheItemItself)
{
    for (const auto& rule : shipped<TWFilesRule>("FilesRules.plist"))
        EXPECT_TRUE(!rule.active || rule.whatToDelete == TWItemItself) << rule.filePath;
}
