#include "editors/TWKeepRecord.h"

#include "support/TWText.h"

namespace {

constexpr auto Path = "Path";
constexpr auto Inside = "Inside";
constexpr auto Pattern = "Pattern";

constexpr auto EntryHasMistake = "entry %@ %@";

}

void TWKeepRecord::setEntry(TWKeepEntry entry)
{
    const bool wasPattern = entry_.kind == TWKeepEntry::Kind::Names;
    const bool isPattern = entry.kind == TWKeepEntry::Kind::Names;
    if (wasPattern != isPattern)
        kept_ = {};
    entry_ = std::move(entry);
}

std::optional<TWKeepRecord> TWKeepRecord::from(TWValue value)
{
    auto* dictionary = value.dictionary();
    if (!dictionary || !dictionary->find(Path) == !dictionary->find(Pattern))
        return std::nullopt;
    const bool isPattern = dictionary->find(Pattern);
    auto* text = dictionary->find(isPattern ? Pattern : Path)->string();
    if (!text)
        return std::nullopt;
    if (isPattern) {
        TWKeepRecord record({ TWKeepEntry::Kind::Names, std::move(*text) });
        record.kept_ = TWKeptEntries(std::move(*dictionary), { Pattern });
        return record;
    }
    TWKeepRecord record({ TWKeepEntry::Kind::Path, std::move(*text) });
    if (const auto* inside = dictionary->find(Inside)) {
        const auto number = inside->number();
        if (!number)
            return std::nullopt;
        if (*number != 0)
            record.entry_.kind = TWKeepEntry::Kind::FolderWithContents;
    }
    record.kept_ = TWKeptEntries(std::move(*dictionary), { Path, Inside });
    return record;
}

TWValue TWKeepRecord::value() const
{
    std::vector<TWDictionary::Entry> entries;
    if (entry_.kind == TWKeepEntry::Kind::Names) {
        entries.emplace_back(Pattern, entry_.text);
    } else {
        entries.emplace_back(Path, entry_.text);
        entries.emplace_back(Inside, entry_.kind == TWKeepEntry::Kind::FolderWithContents);
    }
    return kept_.merged(std::move(entries));
}

std::string TWKeepRecord::problem(const std::vector<TWKeepRecord>& records)
{
    for (std::size_t index = 0; index < records.size(); ++index) {
        if (const auto mistake = records[index].entry().mistake(); !mistake.empty())
            return TWText::fill(EntryHasMistake, { std::to_string(index + 1), mistake });
    }
    return "";
}
