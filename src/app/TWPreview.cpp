#include "app/TWPreview.h"

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

// Several changes within one turn are added up once.
void TWPreview::addUpLater()
{
    addingUp_.reset();
    addingUpSoon_ = context_.deletion.runLoop.after(LaterTurn, [this] { addUp(); });
}

void TWPreview::addUp()
{
    std::vector<TWPreviewShare> shares;
    for (const auto& cleaner : cleaners_) {
        if (cleaner->isComplete())
            shares.push_back(cleaner->share());
    }
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

TWPlannedJobs TWPreview::jobs() const
{
    TWPlannedJobs jobs;
    const auto check = std::make_shared<TWPreviewCheck>();
    for (const auto& cleaner : cleaners_) {
        auto& job = jobs[static_cast<std::size_t>(cleaner->position())];
        job = cleaner->job();
        job.check = check;
    }
    return jobs;
}
