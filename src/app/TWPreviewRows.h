#pragma once

#include "app/TWPreviewSource.h"
#include "platform/TWBackgroundStream.h"

// Plan means in the order of a run, so that the items of a rule stand side by side.
enum class TWPreviewOrder { Plan, Path, Size, Age };
enum class TWPreviewDirection { Ascending, Descending };
enum class TWPreviewShown { All, WouldBeDeleted, WouldStay };

// Which rows of a preview to show, and in which order.
struct TWPreviewWish {
    TWPreviewOrder order = TWPreviewOrder::Plan;
    TWPreviewDirection direction = TWPreviewDirection::Ascending;
    TWPreviewShown shown = TWPreviewShown::All;
    std::string text{}; // in the path, ignoring case; "" for all
    std::optional<std::uint32_t> cleaner{}; // index into TWPreview::cleaners(); nothing for all of them
    std::size_t begin = 0; // only its items from this one
    std::size_t end = TWNone; // and before this one
    std::vector<std::string> about{}; // only what is at, below or around one of these real paths; empty for everything

    friend bool operator==(const TWPreviewWish&, const TWPreviewWish&) = default;
};

// The rows of the preview that are wished for, without quiet items. Rows that are alike in the wished order stand in
// the order of a run. The latter can be reversed, too. Paths are compared by their bytes; a size that is not known yet
// counts as 0. When cancelled, returns soon with only some of the rows. Any thread.
std::vector<TWPreviewRow> TWFindPreviewRows(const TWPreviewSource&, const TWPreviewWish&, const TWCancellation&);

// The rows that a preview's window shows. Finds them in the background and keeps the earlier ones until then. A row
// takes eight bytes. Main thread.
class TWPreviewRows final {
public:
    // Calls changed when other rows have been found.
    TWPreviewRows(TWRunLoop& runLoop, std::function<void()> changed)
        : runLoop_(runLoop)
        , changed_(std::move(changed))
    {
    }

    // Gives up what an earlier call is still looking for.
    void find(TWPreviewSource, const TWPreviewWish&);

    // Shows no rows and calls nothing until the next find().
    void clear();

    bool finding() const { return finding_ != nullptr; }

    std::size_t size() const { return rows_.size(); }
    TWPreviewRow operator[](std::size_t position) const { return rows_[position]; }
    const std::vector<TWPreviewRow>& all() const { return rows_; }

    // size() if the row is not among them.
    std::size_t position(TWPreviewRow) const;

private:
    TWRunLoop& runLoop_;
    const std::function<void()> changed_;
    std::vector<TWPreviewRow> rows_;
    std::vector<TWPreviewRow> found_; // take the place of the rows when changed is called
    std::unique_ptr<TWBackgroundStream<std::vector<TWPreviewRow>>> finding_;
};
