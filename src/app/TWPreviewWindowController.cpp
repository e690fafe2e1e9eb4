#include "app/TWPreviewWindowController.h"

#include "editors/TWKeepWindowController.h"
#include "support/TWText.h"

#include <algorithm>
#include <ctime>

namespace {

constexpr auto WithWord = "%@, the word \"%@\"";
constexpr auto KeptNow = "Kept from now on";
constexpr auto HoldsKept = "Stays, because something in it is kept from now on";
constexpr auto StillDeleted = "Still deleted by %@";
constexpr auto StillDeletedWith = "Still deleted with %@ (%@)";
constexpr auto RefusedBecause = "Refused: %@";
constexpr auto TooManyToKeep = "Only 100 items can be kept at once. Select fewer, or keep the folder around them.";
constexpr auto NoCleaner = "No cleaner is switched on. Check at least one in the main window, then press F5 here.";
constexpr auto Looking = "Looking for what would be deleted...";
constexpr auto Found = "%@: %@ found...";
constexpr auto Measured = "%@: %@ of %@ measured...";
constexpr auto Nothing = "Nothing would be deleted.";
constexpr auto WouldBeDeleted = "%@, %@ would be deleted.";
constexpr auto AndRefused = "%@, %@ would be deleted; %@ refused.";
constexpr auto OnlyRefused = "Nothing would be deleted; %@ refused.";
constexpr auto LeftOut = " Stopped: %@ would not be cleaned.";
constexpr auto CleanerLine = "%@: %@";
constexpr auto WouldFail = "would fail: %@";
constexpr auto NoMatch = "No item matches the filter.";
constexpr auto SizesTooSmall = "Something inside the folders could not be read, so some sizes are too small.";
constexpr auto Cleaned = "This preview was made at %@ and has been cleaned since.";
constexpr auto Outdated = "This preview was made at %@. The switches or lists have changed since.";
constexpr auto NotExported = "\"%@\" could not be saved (%@). Please choose another folder.";

void addLine(std::string& lines, const char* title, const std::string& text)
{
    if (!text.empty())
        lines += (lines.empty() ? "" : "\n") + TWText::fill(CleanerLine, { title, text });
}

std::string timeOfDay(std::time_t time)
{
    std::tm parts{};
    char text[16] = "";
    if (localtime_r(&time, &parts))
        std::strftime(text, sizeof text, "%H:%M", &parts);
    return text;
}

std::string items(std::uint64_t count)
{
    return TWText::count(count, "item", "items");
}

}

TWPreviewWindowController::TWPreviewWindowController(TWTidewellAppDelegate& delegate)
    : delegate_(delegate)
    , rows_(delegate.platform().runLoop,
          [this] {
              if (view_)
                  view_->rowsReplaced();
          })
    , keptRows_(delegate.platform().runLoop, [this] { takeKept(keptRows_.all()); })
{
}

TWPreviewWindowController::~TWPreviewWindowController() = default;

void TWPreviewWindowController::refresh()
{
    close();
    basis_ = TWPreviewBasis::now(delegate_);
    made_ = std::time(nullptr);
    wish_.cleaner.reset();
    group_.reset();
    preview_ = std::make_unique<TWPreview>(delegate_.cleanerContext(), delegate_.settingsSources(), basis_.switchedOn,
        static_cast<TWPreviewDelegate&>(*this));
    counts_ = std::make_unique<TWPreviewCounts>(delegate_.platform().runLoop, *preview_, [this] { notify(); });
    if (view_)
        view_->previewReplaced();
}

// An export that is going on is still written.
void TWPreviewWindowController::close()
{
    rows_.clear();
    keptRows_.clear();
    keptWish_ = TWPreviewWish();
    kept_.clear();
    counts_.reset();
    preview_.reset();
    plans_ = 0;
    cleaned_ = false;
    stopped_ = false;
    if (view_)
        view_->previewReplaced();
}

void TWPreviewWindowController::stop()
{
    if (!preview_ || preview_->ended())
        return;
    stopped_ = true;
    preview_->stop();
}

void TWPreviewWindowController::clean()
{
    if (!canClean())
        return;
    delegate_.cleanPreview(*preview_);
    cleaned_ = cleaned_ || delegate_.running();
    notify();
}

void TWPreviewWindowController::setWish(const TWPreviewWish& wish)
{
    wish_ = wish;
    if (preview_)
        findRows();
}

void TWPreviewWindowController::limit(std::optional<std::uint32_t> cleaner, std::optional<std::size_t> group)
{
    wish_.cleaner = cleaner;
    group_ = group;
    if (preview_)
        findRows();
}

// The items of a group are known only when the whole plan is.
void TWPreviewWindowController::findRows()
{
    wish_.begin = 0;
    wish_.end = TWNone;
    if (wish_.cleaner && group_) {
        const auto& group = preview_->cleaners()[*wish_.cleaner]->groups()[*group_];
        wish_.begin = group.begin;
        wish_.end = group.end;
    }
    rows_.find(source(), wish_);
    notify();
}

TWPreviewSource TWPreviewWindowController::source() const
{
    return { preview_->shares(), preview_->total().overlaps, kept_ };
}

void TWPreviewWindowController::previewChanged()
{
    counts_->renew();
    std::size_t plans = 0;
    for (const auto& each : preview_->cleaners())
        plans += (each->plan() != nullptr) + each->isPlanned();
    if (std::exchange(plans_, plans) != plans)
        findRows();
    notify();
}

// Rows that depend on sizes are sorted once more now, and not every time that a size becomes known.
void TWPreviewWindowController::previewEnded()
{
    counts_->renew();
    if (wish_.order == TWPreviewOrder::Size)
        findRows();
    notify();
}

void TWPreviewWindowController::notify()
{
    if (view_)
        view_->previewChanged();
}

void TWPreviewWindowController::tick(std::span<const TWPreviewRow> rows, TWTick tick)
{
    preview_->setTicked(rows, tick);
    ticked();
}

void TWPreviewWindowController::tick(std::size_t cleaner, const TWCleanerPreview::Group& group, TWTick tick)
{
    preview_->setTicked(cleaner, group, tick);
    ticked();
}

void TWPreviewWindowController::tick(std::size_t cleaner, TWTick tick)
{
    preview_->setAllTicked(cleaner, tick);
    ticked();
}

void TWPreviewWindowController::ticked()
{
    preview_->setTicked(kept_, TWTick::Off);
    counts_->renew();
    notify();
}

void TWPreviewWindowController::tickAll(TWTick each)
{
    for (std::size_t cleaner = 0; preview_ && cleaner < preview_->cleaners().size(); ++cleaner)
        tick(cleaner, each);
}

std::string TWPreviewWindowController::keep(const std::vector<TWPreviewRow>& rows)
{
    if (rows.size() > MostKeptAtOnce)
        return TooManyToKeep;
    const bool current = basis_ == TWPreviewBasis::now(delegate_);
    std::string problem;
    for (const auto& row : rows) {
        problem = delegate_.editors().get<TWKeepWindowController>().keep(cleaner(row).plan()->path(item(row)));
        if (!problem.empty())
            break;
        keptWish_.about.push_back(realPath(row));
        takeKept({ row });
    }
    if (current)
        basis_ = TWPreviewBasis::now(delegate_);
    if (!keptWish_.about.empty())
        keptRows_.find(source(), keptWish_);
    return problem;
}

void TWPreviewWindowController::takeKept(const std::vector<TWPreviewRow>& rows)
{
    std::vector<TWPreviewRow> all;
    std::ranges::set_union(kept_, rows, std::back_inserter(all));
    std::vector<TWPreviewRow> added;
    std::ranges::set_difference(rows, kept_, std::back_inserter(added));
    kept_ = std::move(all);
    tick(added, TWTick::Off);
}

void TWPreviewWindowController::exportRows(
    const std::string& path, std::function<void(const std::string& problem)> ended)
{
    if (!preview_)
        return;
    const auto& platform = delegate_.platform();
    export_ = std::make_unique<TWPreviewExport>(
        platform.runLoop, platform.ownFiles, *preview_, rows_.all(), path, [path, ended = std::move(ended)](int error) {
            ended(error == 0 ? "" : TWText::fill(NotExported, { path, TWErrorText(error) }));
        });
}

const TWPlannedItem& TWPreviewWindowController::item(TWPreviewRow row) const
{
    return cleaner(row).plan()->items[row.item];
}

std::string TWPreviewWindowController::path(TWPreviewRow row) const
{
    return delegate_.platform().places.abbreviate(cleaner(row).plan()->path(item(row)));
}

std::string TWPreviewWindowController::realPath(TWPreviewRow row) const
{
    return cleaner(row).plan()->realPath(item(row));
}

TWPreviewFate TWPreviewWindowController::fate(TWPreviewRow row) const
{
    if (!cleaner(row).plan()->wouldDelete(item(row)))
        return TWPreviewFate::Refused;
    if (std::ranges::binary_search(kept_, row))
        return TWPreviewFate::Kept;
    if (cleaner(row).isTicked(row.item))
        return TWPreviewFate::Deleted;
    return preview_->deleter(row) ? TWPreviewFate::DeletedAnyway : TWPreviewFate::Unticked;
}

std::optional<std::uint64_t> TWPreviewWindowController::bytes(TWPreviewRow row) const
{
    return row.item < cleaner(row).itemsSized() ? std::optional(cleaner(row).bytes(row.item)) : std::nullopt;
}

std::string TWPreviewWindowController::word(TWPreviewRow row) const
{
    return cleaner(row).word(item(row));
}

std::string TWPreviewWindowController::why(TWPreviewRow row) const
{
    const auto fate = this->fate(row);
    if (fate == TWPreviewFate::Refused)
        return TWText::fill(RefusedBecause, { cleaner(row).refusal(item(row)) });
    if (fate == TWPreviewFate::Kept) {
        const auto& paths = keptWish_.about;
        const auto own = realPath(row);
        const bool holds = std::ranges::any_of(
            paths, [&](const auto& path) { return path.size() > own.size() && path.starts_with(own + "/"); });
        return holds ? HoldsKept : KeptNow;
    }
    if (fate == TWPreviewFate::DeletedAnyway) {
        const auto by = *preview_->deleter(row);
        const auto rule = cleaner(by).rule(item(by));
        return realPath(by) == realPath(row) ? TWText::fill(StillDeleted, { rule })
                                             : TWText::fill(StillDeletedWith, { path(by), rule });
    }
    const auto matched = word(row);
    const auto rule = cleaner(row).rule(item(row));
    return matched.empty() ? rule : TWText::fill(WithWord, { rule, matched });
}

std::string TWPreviewWindowController::sentence() const
{
    if (!preview_ || preview_->cleaners().empty())
        return "";
    if (!preview_->ended())
        return progress();
    const auto& total = preview_->total();
    const auto size = TWText::size(total.bytes);
    const auto refused = TWText::number(total.refused);
    if (total.items == 0)
        return (total.refused == 0 ? Nothing : TWText::fill(OnlyRefused, { refused })) + leftOut();
    return (total.refused == 0 ? TWText::fill(WouldBeDeleted, { items(total.items), size })
                               : TWText::fill(AndRefused, { items(total.items), size, refused }))
        + leftOut();
}

std::string TWPreviewWindowController::progress() const
{
    for (const auto& each : preview_->cleaners()) {
        const auto found = items(each->itemsFound());
        if (each->isPlanned() && !each->isComplete())
            return TWText::fill(Measured, { each->row().title, TWText::number(each->itemsSized()), found });
        if (!each->isComplete())
            return each->itemsFound() == 0 ? Looking : TWText::fill(Found, { each->row().title, found });
    }
    return Looking;
}

// Says which cleaners were not complete when the preview was stopped.
std::string TWPreviewWindowController::leftOut() const
{
    std::string titles;
    for (const auto& each : preview_->cleaners()) {
        if (stopped_ && !each->isComplete())
            titles += (titles.empty() ? "" : ", ") + std::string(each->row().title);
    }
    return titles.empty() ? "" : TWText::fill(LeftOut, { titles });
}

std::string TWPreviewWindowController::emptyText() const
{
    if (!preview_ || preview_->cleaners().empty())
        return NoCleaner;
    if (busy())
        return Looking;
    std::string lines;
    bool any = false;
    for (const auto& each : preview_->cleaners()) {
        any = any || each->itemsFound() > 0;
        if (each->isPlanned() && each->plan()->items.empty() && !each->plan()->failure)
            addLine(lines, each->row().title, each->row().nothing);
    }
    return any ? NoMatch : lines.empty() ? Nothing : lines;
}

std::string TWPreviewWindowController::warnings() const
{
    std::string lines;
    for (const auto& each :
        preview_ ? std::span(preview_->cleaners()) : std::span<const std::unique_ptr<TWCleanerPreview>>()) {
        addLine(lines, each->row().title, each->warning());
        if (each->plan() && each->plan()->failure)
            addLine(lines, each->row().title, TWText::fill(WouldFail, { *each->plan()->failure }));
        if (each->unknown() > 0)
            addLine(lines, each->row().title, SizesTooSmall);
    }
    return lines;
}

std::string TWPreviewWindowController::notice() const
{
    if (!preview_)
        return "";
    if (cleaned_)
        return TWText::fill(Cleaned, { timeOfDay(made_) });
    return basis_ == TWPreviewBasis::now(delegate_) ? "" : TWText::fill(Outdated, { timeOfDay(made_) });
}
