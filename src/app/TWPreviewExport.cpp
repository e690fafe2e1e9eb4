#include "app/TWPreviewExport.h"

#include "support/TWText.h"

#include <algorithm>

namespace {

constexpr auto Titles = "What happens,Path,Bytes,Last change,Cleaner,Rule,Word,Why it stays,Key,Entries,Details\r\n";
constexpr auto Unticked = "not ticked";
constexpr auto Kept = "kept";
constexpr auto NotLookedAt = "not looked at to the end";
constexpr auto Refused = "would be refused";

// What the lines say, copied for another thread.
struct Texts {
    TWPreviewSource source;
    std::vector<TWPlanReasons> reasons; // by cleaner
    std::vector<std::string> titles;
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
    return TWText::localTime(static_cast<std::time_t>(nanoseconds / 1'000'000'000), "%Y-%m-%d %H:%M:%S");
}

const char* name(TWPreviewFate fate, TWPlannedAction action)
{
    switch (fate) {
    case TWPreviewFate::Refused:
        return Refused;
    case TWPreviewFate::Kept:
        return Kept;
    case TWPreviewFate::NotLookedAt:
        return NotLookedAt;
    case TWPreviewFate::Unticked:
        return Unticked;
    case TWPreviewFate::DeletedAnyway:
        return TWTextsOf(TWPlannedAction::Delete).would;
    default:
        return TWTextsOf(action).would;
    }
}

// "" if it is not known.
std::string bytes(const TWPreviewShare& share, std::size_t index)
{
    const auto measured = index < share.sized ? std::optional((*share.bytes)[index]) : std::nullopt;
    const auto known = share.plan->bytes(share.plan->items[index], measured);
    return known ? std::to_string(*known) : "";
}

// "Editor, process 4711, since 10:02"; "" of a path.
std::string details(const TWPlan& plan, const TWPlannedItem& item)
{
    if (!item.isThing())
        return "";
    const auto& thing = *plan.thing(item);
    return TWText::join({ std::string(item.name), thing.which, thing.details }, ", ");
}

void addLine(const Texts& texts, TWPreviewRow row, std::string& text)
{
    const auto& share = texts.source.share(row);
    const auto& item = share.plan->items[row.item];
    const auto refusal = TWPlanReasons::refusal(*share.plan, item);
    const auto fate = texts.source.fate(row);
    addField(name(fate, item.action), text);
    addField(item.isThing() ? share.plan->thing(item)->path : share.plan->path(item), text);
    addField(bytes(share, row.item), text);
    addField(time(item.facts.modified), text);
    addField(texts.titles[row.cleaner], text);
    addField(texts.reasons[row.cleaner].rule(item), text);
    addField(texts.reasons[row.cleaner].word(item), text);
    addField(refusal, text);
    addField(item.keepsFile() ? share.plan->change(item).key : "", text);
    addField(item.keepsFile() ? std::to_string(share.plan->change(item).entries) : "", text);
    addField(details(*share.plan, item), text);
    text += "\r\n";
}

}

TWPreviewExport::TWPreviewExport(TWRunLoop& runLoop, const TWOwnFiles& files, const TWPreview& preview,
    TWPreviewSource source, std::vector<TWPreviewRow> rows, const std::string& path,
    std::function<void(int error)> ended)
{
    Texts texts{ std::move(source), {}, {} };
    for (const auto& cleaner : preview.cleaners()) {
        texts.reasons.push_back(cleaner->reasons());
        texts.titles.emplace_back(cleaner->row().title);
    }
    writing_ = std::make_unique<TWBackgroundStream<int>>(
        runLoop, 1,
        [texts = std::move(texts), rows = std::move(rows), path, &files](auto& sink) {
            std::string text = Titles;
            for (const auto& row : rows)
                addLine(texts, row, text);
            sink.put(files.writeAtomically(path, text));
        },
        std::move(ended), [] {});
}
