#pragma once

#include "app/TWCleanerPreview.h"
#include "app/TWCleaningRun.h"

#include <span>

class TWPreviewDelegate {
public:
    // Something more is known, or the total has changed. At most once per turn.
    virtual void previewChanged() { }

    // The preview is complete or was stopped. Called once; later only a change of ticks changes the total.
    virtual void previewEnded() { }

protected:
    ~TWPreviewDelegate() = default;
};

// Shows what a run would do now and changes nothing: plans the chosen cleaners one after another and adds up the sizes,
// in the background. The plans stay as they are from then on; TWTidewellAppDelegate::cleanPreview() carries them out,
// as often as it is asked to. Main thread. Destroying it, which is allowed inside its calls, ends the work without a
// further call.
class TWPreview final {
public:
    // Starts on a later turn. The editors and the delegate must outlive the preview.
    TWPreview(const TWCleanerContext&, const TWSettingsSources&, const TWRunChoice&, TWPreviewDelegate&);

    // Ends the work; previewEnded() follows on a later turn. Cleaners that are not complete by then take part in no
    // run. Does nothing after the end.
    void stop();

    bool ended() const { return ended_; }

    // The chosen cleaners, in the order of a run.
    const std::vector<std::unique_ptr<TWCleanerPreview>>& cleaners() const { return cleaners_; }

    // Of the cleaners that are complete. A change of ticks is added up in the background; previewChanged() follows.
    const TWPreviewTotal& total() const { return total_; }

    // Ticks one item, the items of one rule or everything of a cleaner; cleaner is an index into cleaners(). The first
    // two do nothing before the item, or all items of the rule, are known. What another ticked item or a ticked folder
    // around it names as well is deleted all the same.
    void setTicked(std::size_t cleaner, std::size_t item, TWTick);
    void setTicked(std::size_t cleaner, const TWCleanerPreview::Group&, TWTick);
    void setAllTicked(std::size_t cleaner, TWTick);
    void setTicked(std::span<const TWPreviewRow>, TWTick);

    // The cleaners whose plans are known, for work on another thread.
    std::vector<TWPreviewShare> shares() const;

    // The ticked item that deletes an item although that one is not ticked; nullptr if there is none. Lags behind a
    // change of ticks until previewChanged().
    const TWPreviewRow* deleter(TWPreviewRow) const;

    // The cleaners that take part in a run of the preview.
    TWRunChoice choice() const;

    // What that run carries out.
    TWPlannedJobs jobs() const;

    // Gives jobs() as long as the preview exists.
    TWPlannedJobsSource jobsSource() const;

private:
    void startNext();
    void addUpLater();
    void addUp();
    void takeTotal(const TWPreviewTotal&);
    void notifyLater();

    const std::shared_ptr<const int> life_ = std::make_shared<const int>(0); // expires with this object
    const TWCleanerContext context_;
    const TWSettingsSources sources_;
    TWPreviewDelegate& delegate_;
    std::vector<std::unique_ptr<TWCleanerPreview>> cleaners_;
    std::size_t current_ = 0; // index of the cleaner being planned or measured
    bool ended_ = false;
    bool notifying_ = false;
    TWPreviewTotal total_;
    std::unique_ptr<TWRunLoopHandle> next_;
    std::unique_ptr<TWRunLoopHandle> addingUpSoon_;
    std::unique_ptr<TWRunLoopHandle> notification_;
    std::unique_ptr<TWBackgroundStream<TWPreviewTotal>> addingUp_;
};
