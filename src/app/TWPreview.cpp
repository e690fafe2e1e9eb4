#include "app/TWPreview.h"

#include <algorithm>

namespace {

constexpr TWRunLoop::Duration LaterTurn{ 0 };

}

TWPreview::TWPreview(const TWCleanerContext& context, const TWSettingsSources& sources, const TWRunChoice& choice,
    TWPreviewDelegate& delegate)
    : context_(context)
    , sources_(sources)
    , delegate_(delegate)
{
    for (int position = 0; position < TWCleanerCount; ++position) {
        if (choice[static_cast<std::size_t>(position)])
            cleaners_.push_back(std::make_unique<TWCleanerPreview>(position, context));
    }
    next_ = context_.deletion.runLoop.after(LaterTurn, [this] { startNext(); });
}

void TWPreview::startNext()
{
    if (current_ == cleaners_.size()) {
        addUpLater();
        return;
    }
    cleaners_[current_]->start(
        sources_, [this] { notifyLater(); },
        [this] {
            ++current_;
            addUpLater();
            next_ = context_.deletion.runLoop.after(LaterTurn, [this] { startNext(); });
        });
    notifyLater();
}

void TWPreview::stop()
{
    if (ended_)
        return;
    next_.reset();
    if (current_ < cleaners_.size())
        cleaners_[current_]->stop();
    current_ = cleaners_.size();
    addUpLater();
}

void TWPreview::setTicked(std::size_t cleaner, std::size_t item, TWTick tick)
{
    if (!cleaners_[cleaner]->plan() || item >= cleaners_[cleaner]->plan()->items.size())
        return;
    cleaners_[cleaner]->setTicked(item, tick);
    addUpLater();
}

void TWPreview::setTicked(std::size_t cleaner, const TWCleanerPreview::Group& group, TWTick tick)
{
    if (!cleaners_[cleaner]->isPlanned())
        return;
    cleaners_[cleaner]->setTicked(group, tick);
    addUpLater();
}

void TWPreview::setAllTicked(std::size_t cleaner, TWTick tick)
{
    cleaners_[cleaner]->setAllTicked(tick);
    addUpLater();
}

void TWPreview::setTicked(std::span<const TWPreviewRow> rows, TWTick tick)
{
    for (const auto& row : rows)
        cleaners_[row.cleaner]->setTicked(row.item, tick);
    addUpLater();
}

std::vector<TWPreviewShare> TWPreview::shares() const
{
    std::vector<TWPreviewShare> shares;
    for (std::uint32_t index = 0; index < cleaners_.size(); ++index) {
        if (!cleaners_[index]->plan())
            continue;
        shares.push_back(cleaners_[index]->share());
        shares.back().cleaner = index;
    }
    return shares;
}

const TWPreviewRow* TWPreview::deleter(TWPreviewRow row) const
{
    const auto& overlaps = *total_.overlaps;
    const auto found = std::ranges::lower_bound(overlaps, row, {}, &TWPreviewOverlap::row);
    const bool unticked = !cleaners_[row.cleaner]->isTicked(row.item);
    return unticked && found != overlaps.end() && found->row == row ? &found->by : nullptr;
}

// Several changes within one turn are added up once.
void TWPreview::addUpLater()
{
    addingUp_.reset();
    addingUpSoon_ = context_.deletion.runLoop.after(LaterTurn, [this] { addUp(); });
}

void TWPreview::addUp()
{
    auto shares = this->shares();
    std::erase_if(shares, [this](const auto& share) { return !cleaners_[share.cleaner]->isComplete(); });
    addingUp_ = std::make_unique<TWBackgroundStream<TWPreviewTotal>>(
        context_.deletion.runLoop, 1,
        [shares = std::move(shares)](auto& sink) { sink.put(TWAddUpPreview(shares, sink.cancellation())); },
        [this](const TWPreviewTotal& total) { takeTotal(total); }, [] {});
}

void TWPreview::takeTotal(const TWPreviewTotal& total)
{
    total_ = total;
    if (current_ < cleaners_.size() || ended_) {
        notifyLater();
        return;
    }
    ended_ = true;
    notification_.reset();
    notifying_ = false;
    delegate_.previewEnded();
}

void TWPreview::notifyLater()
{
    if (std::exchange(notifying_, true))
        return;
    notification_ = context_.deletion.runLoop.after(LaterTurn, [this] {
        notifying_ = false;
        delegate_.previewChanged();
    });
}

TWRunChoice TWPreview::choice() const
{
    TWRunChoice choice{};
    for (const auto& cleaner : cleaners_)
        choice[static_cast<std::size_t>(cleaner->position())] = cleaner->takesPart();
    return choice;
}

TWPlannedJobs TWPreview::jobs() const
{
    TWPlannedJobs jobs;
    const auto check = std::make_shared<TWPreviewCheck>();
    for (const auto& cleaner : cleaners_) {
        if (!cleaner->takesPart())
            continue;
        auto& job = jobs[static_cast<std::size_t>(cleaner->position())];
        job = cleaner->job();
        job.check = check;
        cleaner->expectFolders(*check);
    }
    return jobs;
}

TWPlannedJobsSource TWPreview::jobsSource() const
{
    return [this, life = std::weak_ptr(life_)] { return life.expired() ? std::nullopt : std::optional(jobs()); };
}
