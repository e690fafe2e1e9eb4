// Measures one case, for search.py:
//   search_bench walk FOLDER...             what any search must do: open, list, look at the kind
//   search_bench search WORDS FOLDER...     prints the paths found
//   search_bench walker THREADS WORDS FOLDER...   the same search with the walker only; 0 threads means one per core
//   search_bench match WORDS NAMES          prints milliseconds to build and nanoseconds per name

#include "cleaners/TWFilesPlanner.h"
#include "deletion/TWDeletionGuard.h"
#include "platform/TWTreeWalk.h"
#include "platform/linux/TWLinuxFileSystem.h"
#include "platform/linux/TWLinuxMountTable.h"
#include "platform/linux/TWLinuxPlaces.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <fstream>

namespace {

using Clock = std::chrono::steady_clock;

std::vector<std::string> linesOf(const char* path)
{
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

std::size_t walk(int folder)
{
    std::size_t entries = 0;
    alignas(dirent64) char buffer[32 * 1024];
    for (ssize_t length; (length = getdents64(folder, buffer, sizeof buffer)) > 0;) {
        for (ssize_t at = 0; at < length;) {
            const auto* entry = reinterpret_cast<const dirent64*>(buffer + at);
            at += entry->d_reclen;
            const std::string_view name(entry->d_name);
            if (name == "." || name == "..")
                continue;
            ++entries;
            if (entry->d_type == DT_DIR)
                entries += walk(openat(folder, entry->d_name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        }
    }
    close(folder);
    return entries;
}

// Plans like the Files cleaner in a run, with one rule per folder.
void search(const char* words, const std::vector<std::string>& folders)
{
    const TWLinuxFileSystem fileSystem;
    TWLinuxMountTable mountTable;
    const TWPlaces places = TWLinuxPlaces();
    TWDeletionGuard guard(places, fileSystem, mountTable, places.dataHome + "/Tidewell");
    std::vector<TWFilesRule> rules;
    for (const auto& folder : folders)
        rules.push_back({ true, "", folder, TWItemsWithKeywordsDeep });
    const auto put = [](const TWPlan& part) {
        for (const auto& item : part.items)
            std::puts(part.path(item).c_str());
        for (const auto& line : part.lines)
            std::fprintf(stderr, "%s\n", line.text.c_str());
    };
    TWFilesPlanner(TWPathPlanner(fileSystem, guard.rules()), places, rules, linesOf(words), put, TWCancellation())
        .plan();
}

class KeywordVisitor final : public TWTreeVisitor<std::vector<std::string>> {
public:
    explicit KeywordVisitor(const TWKeywordMatcher& keywords)
        : keywords_(keywords)
    {
    }

    TWWalkStep visit(
        const TWWalkedFolder& folder, const TWFolderEntry& entry, std::vector<std::string>& found) const override
    {
        if (folder.isPackage())
            return TWWalkStep::PassOver;
        if (!keywords_.matches(entry.name))
            return TWWalkStep::Enter;
        found.push_back(folder.pathOf(entry));
        return TWWalkStep::PassOver;
    }
    void notEntered(std::size_t, const std::string& path, int, std::vector<std::string>&) const override
    {
        std::fprintf(stderr, "%s could not be searched\n", path.c_str());
    }

private:
    const TWKeywordMatcher& keywords_;
};

void searchWithWalker(const char* threads, const char* words, std::vector<std::string> folders)
{
    const TWKeywordMatcher keywords(linesOf(words));
    const auto print = [](const std::vector<std::string>& found) {
        for (const auto& path : found)
            std::puts(path.c_str());
    };
    TWWalkTrees(TWLinuxFileSystem(), { std::move(folders), TWLinkAtEnd::Follow }, KeywordVisitor(keywords), print,
        TWCancellation(), static_cast<unsigned>(std::stoul(threads)));
}

void match(const char* words, const char* names)
{
    const auto list = linesOf(words);
    const auto texts = linesOf(names);
    const auto start = Clock::now();
    const TWKeywordMatcher matcher(list);
    const auto built = Clock::now();
    std::size_t found = 0;
    for (const std::string& text : texts)
        found += matcher.matches(text);
    const std::chrono::duration<double, std::milli> building = built - start;
    const std::chrono::duration<double, std::nano> matching = Clock::now() - built;
    std::printf("%.3f %.1f %zu\n", building.count(), matching.count() / static_cast<double>(texts.size()), found);
}

}

int main(int count, char** arguments)
{
    const std::string_view mode = count > 2 ? arguments[1] : "";
    if (mode == "walk") {
        std::size_t entries = 0;
        for (int i = 2; i < count; ++i)
            entries += walk(open(arguments[i], O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        std::printf("%zu\n", entries);
    } else if (mode == "search") {
        search(arguments[2], { arguments + 3, arguments + count });
    } else if (mode == "walker" && count > 4) {
        searchWithWalker(arguments[2], arguments[3], { arguments + 4, arguments + count });
    } else if (mode == "match" && count == 4) {
        match(arguments[2], arguments[3]);
    } else {
        return 2;
    }
}
