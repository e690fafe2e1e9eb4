#include "app/TWPreviewWindowController.h"

#include "deletion/TWKeepRules.h"
#include "editors/TWKeepWindowController.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>
#include <ctime>

namespace {

constexpr auto WithWord = "%@, the word \"%@\"";
constexpr auto TrashFolder = "Trash/";
constexpr auto KeptNow = "Kept from now on";
constexpr auto HoldsKept = "Stays, because something in it is kept from now on";
constexpr auto StillDeleted = "Still deleted by the rule \"%@\"";
constexpr auto StillDeletedWith = "Still deleted with %@ (rule \"%@\")";
constexpr auto RefusedBecause = "Refused: %@";
constexpr auto TooManyToKeep = "Only 100 items can be kept at once. Select fewer, or keep the folder around them.";
constexpr auto AllKept
    = "Kept from now on: %@. To take items off the keep list again, choose Keep List in the main window's menu Edit.";
constexpr auto SomeKept = "Kept from now on: %@ of %@. %@";
constexpr auto NoCleaner = "No cleaner is switched on. Switch on at least one in the main window, then press F5 here.";
constexpr auto Looking = "Looking for what would be deleted...";
constexpr auto Found = "%@: %@ found...";
constexpr auto Measured = "%@: %@ of %@ measured...";
constexpr auto Nothing = "Nothing would be deleted.";
constexpr auto WouldHappen = "%@%@.";
constexpr auto NotThere = "%@, but it is not there now";
constexpr auto NameAndWhich = "%@ (%@)";
constexpr auto AndRefused = "; %@ refused";
constexpr auto OnlyRefused = "Nothing would be deleted; %@ refused.";
constexpr auto LeftOut = " Stopped: %@ would not be cleaned.";
constexpr auto CleanerLine = "%@: %@";
constexpr auto WouldFail = "would fail: %@";
constexpr auto NoMatch = "No item matches the filter.";
constexpr auto SizesTooSmall = "Something inside the folders could not be read, so some sizes are too small.";
constexpr auto Cleaned = "This preview was made %@, and Clean was started from it since.";
constexpr auto CleanStarted = "Clean was started from this preview %@.";
constexpr auto Outdated
    = "This preview was made %@. The switches, settings or lists have changed since. Press Refresh before Clean.";
constexpr auto Old = "This preview was made %@. Press Refresh to see what would be deleted now.";
constexpr auto StillMaking = "The preview is not complete yet.";
constexpr auto QuestionOpen = "A question in the main window waits for an answer.";
constexpr auto RunGoesOn = "A cleaning run is going on.";
constexpr auto NoneLookedAt = "The preview was stopped before a cleaner was complete. Press Refresh.";
constexpr auto NothingTicked = "Nothing is ticked.";
constexpr auto StoppedFirst = "Stopped before anything was found.";
constexpr auto NoneComplete = "Stopped before a cleaner was complete. Nothing would be deleted.";
constexpr auto NotLookedAtWhy = "Stays: the preview was stopped before this cleaner was complete";
constexpr auto ShownOf = " The table shows %@ of %@.";

constexpr std::time_t OldAge = 3600; // in seconds
constexpr TWRunLoop::Duration BetweenLooks{ 500 };
constexpr auto NotExported = "\"%@\" could not be saved (%@). Please choose another folder.";

void addLine(std::string& lines, const char* title, const std::string& text)
{
    if (!text.empty())
        lines += (lines.empty() ? "" : "\n") + TWText::fill(CleanerLine, { title, text });
}

std::time_t dayBefore(std::time_t time)
{
    std::tm parts{};
    if (!localtime_r(&time, &parts))
        return time;
    --parts.tm_mday;
    parts.tm_isdst = -1;
    return std::mktime(&parts);
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
    life_ = std::make_shared<const int>(0);
    looking_ = delegate_.platform().runLoop.every(BetweenLooks, [this] { look(); });
    basis_ = TWPreviewBasis::now(delegate_);
    current_ = true;
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
    looking_.reset();
    life_.reset();
    state_.clear();
    plans_ = 0;
    cleaned_ = 0;
    stopped_ = false;
    ticksChanged_ = false;
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
    compare();
    if (!canClean())
        return;
    delegate_.cleanPreview(*preview_, [this, life = std::weak_ptr(life_)] {
        if (life.expired())
            return;
        cleaned_ = std::time(nullptr);
        ticksChanged_ = false;
        notify();
    });
    notify();
}

// Runs begin and end, and settings change, without a call to this class.
void TWPreviewWindowController::look()
{
    compare();
    auto state = obstacle() + '\n' + notice();
    if (std::exchange(state_, std::move(state)) != state_)
        notify();
}

// Copies and compares lists, so the window does not ask for it whenever it draws.
void TWPreviewWindowController::compare()
{
    current_ = basis_ == TWPreviewBasis::now(delegate_);
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
    TWPreviewSource source{ preview_->shares(), preview_->total().overlaps, kept_, {} };
    for (std::uint32_t cleaner = 0; cleaner < preview_->cleaners().size(); ++cleaner) {
        if (!isLookedAt(cleaner))
            source.notLookedAt.push_back(cleaner);
    }
    return source;
}

void TWPreviewWindowController::previewChanged()
{
    counts_->renew();
    std::size_t plans = 0;
    for (const auto& each : preview_->cleaners())
        plans += (each->plan() != nullptr) + each->isPlanned();
    if (std::exchange(plans_, plans) != plans) {
        findRows();
        findKept();
    }
    notify();
}

// Rows that depend on sizes are sorted once more now, and not every time that a size becomes known.
void TWPreviewWindowController::previewEnded()
{
    counts_->renew();
    if (wish_.order == TWPreviewOrder::Size || stopped_)
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
    if (!canChange())
        return;
    const auto refused = [this](auto row) { return fate(row) == TWPreviewFate::Refused; };
    if (std::ranges::all_of(rows, refused))
        return;
    preview_->setTicked(rows, tick);
    ticked();
}

void TWPreviewWindowController::tick(std::size_t cleaner, const TWCleanerPreview::Group& group, TWTick tick)
{
    if (!canChange())
        return;
    preview_->setTicked(cleaner, group, tick);
    ticked();
}

void TWPreviewWindowController::tick(std::size_t cleaner, TWTick tick)
{
    if (!canChange())
        return;
    preview_->setAllTicked(cleaner, tick);
    ticked();
}

void TWPreviewWindowController::ticked()
{
    ticksChanged_ = true;
    preview_->setTicked(kept_, TWTick::Off);
    counts_->renew();
    notify();
}

void TWPreviewWindowController::tickAll(TWTick each)
{
    for (std::size_t cleaner = 0; preview_ && cleaner < preview_->cleaners().size(); ++cleaner)
        tick(cleaner, each);
}

bool TWPreviewWindowController::canKeep(TWPreviewRow row) const
{
    const auto path = cleaner(row).plan()->path(item(row));
    const auto* objection = item(row).objection;
    return !item(row).isThing() && fate(row) != TWPreviewFate::Kept && !(objection && TWKeepRules::isReason(objection))
        && !TWPath::isAtOrBelow(path, delegate_.platform().places.trash);
}

bool TWPreviewWindowController::canKeepAny(const std::vector<TWPreviewRow>& rows) const
{
    return rows.size() > MostKeptAtOnce || std::ranges::any_of(rows, [this](auto row) { return canKeep(row); });
}

std::string TWPreviewWindowController::keep(const std::vector<TWPreviewRow>& rows)
{
    if (!canChange())
        return QuestionOpen;
    if (rows.size() > MostKeptAtOnce)
        return TooManyToKeep;
    compare();
    std::string problem;
    std::size_t kept = 0;
    for (const auto& row : rows) {
        const auto path = cleaner(row).plan()->path(item(row));
        const auto reason = delegate_.editors().get<TWKeepWindowController>().keep(path);
        if (!reason.empty()) {
            problem = reason;
            continue;
        }
        ++kept;
        keptWish_.about.push_back(realPath(row));
        takeKept({ row });
    }
    if (current_)
        basis_ = TWPreviewBasis::now(delegate_);
    findKept();
    if (problem.empty())
        return TWText::fill(AllKept, { items(kept) });
    return kept == 0 ? problem : TWText::fill(SomeKept, { TWText::number(kept), items(rows.size()), problem });
}

// Looks again when more items are known: a folder around a kept item may come later than the item.
void TWPreviewWindowController::findKept()
{
    if (!keptWish_.about.empty())
        keptRows_.find(source(), keptWish_);
}

void TWPreviewWindowController::takeKept(const std::vector<TWPreviewRow>& rows)
{
    std::vector<TWPreviewRow> all;
    std::ranges::set_union(kept_, rows, std::back_inserter(all));
    std::vector<TWPreviewRow> added;
    std::ranges::set_difference(rows, kept_, std::back_inserter(added));
    kept_ = std::move(all);
    preview_->setTicked(added, TWTick::Off);
    counts_->renew();
    notify();
}

void TWPreviewWindowController::exportRows(
    const std::string& path, std::function<void(const std::string& problem)> ended)
{
    if (!preview_)
        return;
    const auto& platform = delegate_.platform();
    export_ = std::make_unique<TWPreviewExport>(platform.runLoop, platform.ownFiles, *preview_, source(), rows_.all(),
        path, [path, ended = std::move(ended)](int error) {
            ended(error == 0 ? "" : TWText::fill(NotExported, { path, TWErrorText(error) }));
        });
}

const TWPlannedItem& TWPreviewWindowController::item(TWPreviewRow row) const
{
    return cleaner(row).plan()->items[row.item];
}

std::string TWPreviewWindowController::path(TWPreviewRow row) const
{
    const auto& plan = *cleaner(row).plan();
    const auto path = plan.path(item(row));
    return item(row).isThing() ? TWText::fill(NameAndWhich, { path, TWPlanReasons::which(plan, item(row)) })
                               : delegate_.platform().places.abbreviate(path);
}

std::string TWPreviewWindowController::shortPath(TWPreviewRow row) const
{
    const auto full = path(row);
    const auto& places = delegate_.platform().places;
    const auto files = places.abbreviate(places.trash) + "/files/";
    return full.starts_with(files) ? TrashFolder + full.substr(files.size()) : full;
}

std::string TWPreviewWindowController::realPath(TWPreviewRow row) const
{
    return cleaner(row).plan()->realPath(item(row));
}

bool TWPreviewWindowController::isLookedAt(std::size_t cleaner) const
{
    return !preview_->ended() || preview_->cleaners()[cleaner]->isComplete();
}

TWPreviewFate TWPreviewWindowController::fate(TWPreviewRow row) const
{
    return TWPreviewRowState{ .refused = !cleaner(row).plan()->wouldDelete(item(row)),
        .kept = std::ranges::binary_search(kept_, row),
        .lookedAt = isLookedAt(row.cleaner),
        .ticked = cleaner(row).isTicked(row.item),
        .deletedWithAnother = preview_->deleter(row) != nullptr }
        .fate();
}

std::optional<std::uint64_t> TWPreviewWindowController::bytes(TWPreviewRow row) const
{
    return row.item < cleaner(row).itemsSized() ? std::optional(cleaner(row).bytes(row.item)) : std::nullopt;
}

std::string TWPreviewWindowController::word(TWPreviewRow row) const
{
    return cleaner(row).word(item(row));
}

std::string TWPreviewWindowController::key(TWPreviewRow row) const
{
    return cleaner(row).plan()->change(item(row)).key;
}

std::string TWPreviewWindowController::entries(TWPreviewRow row) const
{
    return TWText::count(cleaner(row).plan()->change(item(row)).entries, "entry", "entries");
}

std::string TWPreviewWindowController::why(TWPreviewRow row) const
{
    const auto fate = this->fate(row);
    if (fate == TWPreviewFate::Refused)
        return TWText::fill(RefusedBecause, { cleaner(row).refusal(item(row)) });
    if (fate == TWPreviewFate::NotLookedAt)
        return NotLookedAtWhy;
    if (fate == TWPreviewFate::Kept) {
        const auto& paths = keptWish_.about;
        const auto own = realPath(row);
        const bool holds = std::ranges::any_of(
            paths, [&](const auto& path) { return path.size() > own.size() && path.starts_with(own + "/"); });
        return holds ? HoldsKept : KeptNow;
    }
    if (fate == TWPreviewFate::DeletedAnyway) {
        const auto by = *preview_->deleter(row);
        const auto rule = cleaner(by).ruleName(item(by));
        return realPath(by) == realPath(row) ? TWText::fill(StillDeleted, { rule })
                                             : TWText::fill(StillDeletedWith, { path(by), rule });
    }
    const auto matched = word(row);
    auto rule = cleaner(row).ruleName(item(row));
    if (item(row).isThing())
        rule = TWText::join({ cleaner(row).plan()->thing(item(row))->details, rule }, "; ");
    if (item(row).isAbsent())
        return TWText::fill(NotThere, { rule });
    return matched.empty() ? rule : TWText::fill(WithWord, { rule, matched });
}

std::string TWPreviewWindowController::sentence() const
{
    if (!preview_ || preview_->cleaners().empty())
        return "";
    if (!preview_->ended())
        return progress();
    if (cleaned_ != 0)
        return TWText::fill(CleanStarted, { moment(cleaned_, std::time(nullptr)) });
    if (!anyLookedAt())
        return anyFound() ? NoneComplete : StoppedFirst;
    const auto& total = preview_->total();
    const auto refused = TWText::number(total.refused);
    if (total.items == 0)
        return (total.refused == 0 ? Nothing : TWText::fill(OnlyRefused, { refused })) + leftOut() + shownOf();
    return TWText::fill(WouldHappen, { total.text(), total.refused == 0 ? "" : TWText::fill(AndRefused, { refused }) })
        + leftOut() + shownOf();
}

// Nothing if the table shows every item.
std::string TWPreviewWindowController::shownOf() const
{
    const auto items = counts_->all().items;
    return rows_.finding() || counts_->outdated() || rows_.size() == items
        ? ""
        : TWText::fill(ShownOf, { TWText::number(rows_.size()), TWText::number(items) });
}

bool TWPreviewWindowController::anyFound() const
{
    return std::ranges::any_of(preview_->cleaners(), [](const auto& each) { return each->itemsFound() > 0; });
}

bool TWPreviewWindowController::anyLookedAt() const
{
    return std::ranges::any_of(preview_->cleaners(), [](const auto& each) { return each->isComplete(); });
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
    for (const auto& each : preview_->cleaners()) {
        if (each->isPlanned() && each->plan()->items.empty() && !each->plan()->failure)
            addLine(lines, each->row().title, each->row().nothing);
    }
    if (anyFound())
        return NoMatch;
    if (!lines.empty())
        return lines;
    return anyLookedAt() ? Nothing : StoppedFirst;
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
    const auto now = std::time(nullptr);
    const auto made = moment(made_, now);
    if (cleaned_ != 0)
        return TWText::fill(Cleaned, { made });
    if (!current_)
        return TWText::fill(Outdated, { made });
    return now - made_ < OldAge ? "" : TWText::fill(Old, { made });
}

std::string TWPreviewWindowController::obstacle() const
{
    if (!preview_ || preview_->cleaners().empty())
        return NoCleaner;
    if (!preview_->ended())
        return StillMaking;
    if (delegate_.asking())
        return QuestionOpen;
    if (delegate_.running())
        return RunGoesOn;
    if (cleaned_ != 0 || !current_)
        return notice();
    if (!anyLookedAt())
        return NoneLookedAt;
    return TWIsAnyChosen(preview_->choice()) ? "" : NothingTicked;
}

std::string TWPreviewWindowController::moment(std::time_t time, std::time_t now)
{
    const auto day = TWText::localTime(time, "%Y-%m-%d");
    auto clock = TWText::localTime(time, "at %H:%M");
    if (day == TWText::localTime(now, "%Y-%m-%d"))
        return clock;
    return (day == TWText::localTime(dayBefore(now), "%Y-%m-%d") ? "yesterday " : "on " + day + " ") + clock;
}
