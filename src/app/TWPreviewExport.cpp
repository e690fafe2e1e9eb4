#include "app/TWPreviewExport.h"

#include "support/TWText.h"

#include <algorithm>
#include <ctime>

namespace {

constexpr auto Titles = "What happens,Path,Bytes,Last change,Cleaner,Rule,Word,Why it stays\r\n";
constexpr auto Deleted = "would be deleted";
constexpr auto Unticked = "not ticked";
constexpr auto Kept = "kept";
constexpr auto NotLookedAt = "not looked at to the end";
constexpr auto Refused = "would be refused";

// What the lines say, copied for another thread.
struct Source {
    std::vector<TWPreviewShare> shares; // by index into TWPreview::cleaners()
    std::vector<TWPlanReasons> reasons;
    std::vector<std::string> titles;
    std::shared_ptr<const std::vector<TWPreviewOverlap>> overlaps;
    std::vector<bool> lookedAt; // by cleaner
    std::vector<TWPreviewRow> rows;
    std::vector<TWPreviewRow> kept; // sorted
};

void addField(std::string_view text, std::string& line)
{
    line += line.empty() || line.back() == '\n' ? "\"" : ",\"";
    for (const char byte : TWText::oneLine(text)) {
        line += byte;
        if (byte == '"')
            line += byte;
    }
    line += '"';
}

std::string time(std::int64_t nanoseconds)
{
    const auto seconds = static_cast<std::time_t>(nanoseconds / 1'000'000'000);
    std::tm parts{};
    char text[64] = "";
    if (localtime_r(&seconds, &parts))
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
    return text;
}

const char* fate(const Source& source, TWPreviewRow row)
{
    const auto& share = source.shares[row.cleaner];
    if (!share.plan->wouldDelete(share.plan->items[row.item]))
        return Refused;
    if (std::ranges::binary_search(source.kept, row))
        return Kept;
    if (!source.lookedAt[row.cleaner])
        return NotLookedAt;
    const bool ticked
        = !share.unticked[row.item] || std::ranges::binary_search(*source.overlaps, row, {}, &TWPreviewOverlap::row);
    return ticked ? Deleted : Unticked;
}

void addLine(const Source& source, TWPreviewRow row, std::string& text)
{
    const auto& share = source.shares[row.cleaner];
    const auto& item = share.plan->items[row.item];
    const auto refusal = TWPlanReasons::refusal(*share.plan, item);
    addField(fate(source, row), text);
    addField(share.plan->path(item), text);
    addField(row.item < share.sized ? std::to_string((*share.bytes)[row.item]) : "", text);
    addField(time(item.facts.modified), text);
    addField(source.titles[row.cleaner], text);
    addField(source.reasons[row.cleaner].rule(item), text);
    addField(source.reasons[row.cleaner].word(item), text);
    addField(refusal, text);
    text += "\r\n";
}

}

TWPreviewExport::TWPreviewExport(TWRunLoop& runLoop, const TWOwnFiles& files, const TWPreview& preview,
    std::vector<TWPreviewRow> rows, std::vector<TWPreviewRow> kept, const std::string& path,
    std::function<void(int error)> ended)
{
    Source source;
    source.shares.resize(preview.cleaners().size());
    for (const auto& share : preview.shares())
        source.shares[share.cleaner] = share;
    for (const auto& cleaner : preview.cleaners()) {
        source.reasons.push_back(cleaner->reasons());
        source.lookedAt.push_back(!preview.ended() || cleaner->isComplete());
        source.titles.emplace_back(cleaner->row().title);
    }
    source.overlaps = preview.total().overlaps;
    source.rows = std::move(rows);
    source.kept = std::move(kept);
    writing_ = std::make_unique<TWBackgroundStream<int>>(
        runLoop, 1,
        [source = std::move(source), path, &files](auto& sink) {
            std::string text = Titles;
            for (const auto& row : source.rows) {
                if (sink.cancellation().cancelled())
                    return;
                addLine(source, row, text);
            }
            sink.put(files.writeAtomically(path, text));
        },
        std::move(ended), [] {});
}
