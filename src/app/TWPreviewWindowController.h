#pragma once

#include "app/TWPreviewBasis.h"
#include "app/TWPreviewCounts.h"
#include "app/TWPreviewExport.h"
#include "app/TWPreviewRows.h"

class TWPreviewView {
public:
    // There is a new preview, or none any more. All rows and groups are others.
    virtual void previewReplaced() = 0;

    // Other rows are shown, or in another order.
    virtual void rowsReplaced() = 0;

    // More sizes, groups or counts are known, or ticks or texts have changed. May come in every turn.
    virtual void previewChanged() = 0;

protected:
    ~TWPreviewView() = default;
};

// The preview's window without its widgets: makes previews of the cleaners that are switched on, finds the rows to
// show, carries the preview out. Rows and groups are those of preview(), which exists from refresh() to close(). Main
// thread.
class TWPreviewWindowController final : private TWPreviewDelegate {
public:
    explicit TWPreviewWindowController(TWTidewellAppDelegate&);
    ~TWPreviewWindowController();

    void setView(TWPreviewView* view) { view_ = view; }

    void refresh(); // makes a new preview in place of the old one, whose ticks are lost
    void close(); // drops the preview
    void stop();

    // Carries out what is ticked, if canClean() holds at this moment. The preview stays.
    void clean();

    // Clean has been carried out from this preview, so that it does not say any more what would be deleted.
    bool cleaned() const { return cleaned_ != 0; }

    // The user has ticked or unticked something since refresh().
    bool ticksChanged() const { return ticksChanged_; }

    const TWPreview* preview() const { return preview_.get(); }
    const TWPreviewRows& rows() const { return rows_; }
    const TWPreviewCounts& counts() const { return *counts_; }

    // Which rows to find. The same wish once more sorts by the sizes and ticks of now. limit() decides about cleaner,
    // begin and end.
    void setWish(const TWPreviewWish&);
    const TWPreviewWish& wish() const { return wish_; }

    // Shows only one cleaner or, there, one of its groups().
    void limit(std::optional<std::uint32_t> cleaner, std::optional<std::size_t> group);

    // Rows that are kept or refused stay as they are.
    void tick(std::span<const TWPreviewRow>, TWTick);
    void tick(std::size_t cleaner, const TWCleanerPreview::Group&, TWTick);
    void tick(std::size_t cleaner, TWTick);
    void tickAll(TWTick);

    // False for what is kept already, and for items in the Trash, which the keep list does not hold.
    bool canKeep(TWPreviewRow) const;
    bool canKeepAny(const std::vector<TWPreviewRow>&) const; // true for too many rows, so that keep() can say so

    // Puts those of the items on the keep list that can be kept, saves it at once, and unticks them with all rows that
    // stay because of that. Returns one line about all of them.
    static constexpr std::size_t MostKeptAtOnce = 100;
    std::string keep(const std::vector<TWPreviewRow>&);

    // Writes the rows that are shown. ended gets "" or one line.
    void exportRows(const std::string& path, std::function<void(const std::string& problem)> ended);

    const TWPlannedItem& item(TWPreviewRow) const;
    std::string path(TWPreviewRow) const; // for display; bytes
    std::string shortPath(TWPreviewRow) const; // the same with "Trash" in place of the folder of the Trash
    std::string realPath(TWPreviewRow) const;
    TWPreviewFate fate(TWPreviewRow) const;
    std::optional<std::uint64_t> bytes(TWPreviewRow) const; // nothing while it is not known
    std::string word(TWPreviewRow) const; // that matched, or ""

    // What a file that stays would lose: the key and "12 entries".
    std::string key(TWPreviewRow) const;
    std::string entries(TWPreviewRow) const;
    std::string why(TWPreviewRow) const; // which rule and word, or why it stays

    // One line why the preview cannot be carried out, or "". Changes of switches, settings and lists are noticed within
    // half a second, and by clean() at once.
    std::string obstacle() const;
    bool canClean() const { return obstacle().empty(); }

    // False while a question about a run is open: the run would not follow a change of ticks.
    bool canChange() const { return preview_ && !delegate_.asking(); }

    bool busy() const { return preview_ && (!preview_->ended() || rows_.finding()); }

    std::string sentence() const; // "512 items, 3.4 GB would be deleted; 3 refused."
    std::string emptyText() const; // why no row is shown
    std::string warnings() const; // lines about the cleaners, or ""

    // One line if the preview is out of date, or "". Notices changes like obstacle().
    std::string notice() const;

    // "at 14:02", "yesterday at 14:02", "on 2026-11-20 at 14:02".
    static std::string moment(std::time_t, std::time_t now);

private:
    void previewChanged() override;
    void previewEnded() override;
    void findRows();
    void ticked();
    void findKept();
    void look();
    void compare();
    bool isLookedAt(std::size_t cleaner) const;
    void takeKept(const std::vector<TWPreviewRow>&);
    TWPreviewSource source() const;
    const TWCleanerPreview& cleaner(TWPreviewRow row) const { return *preview_->cleaners()[row.cleaner]; }
    void notify();
    std::string progress() const;
    std::string leftOut() const;
    std::string shownOf() const;
    bool anyFound() const;
    bool anyLookedAt() const;

    TWTidewellAppDelegate& delegate_;
    TWPreviewView* view_ = nullptr;
    TWPreviewBasis basis_;
    bool current_ = true; // nothing differed from the basis when it was compared last
    std::time_t made_ = 0;
    std::time_t cleaned_ = 0; // when a run of the preview began; 0 if none has
    bool stopped_ = false;
    bool ticksChanged_ = false;
    std::string state_; // of the buttons and the notice, when it was looked at last
    std::unique_ptr<TWRunLoopHandle> looking_;
    std::shared_ptr<const int> life_; // expires with the preview
    std::unique_ptr<TWPreview> preview_;
    std::unique_ptr<TWPreviewCounts> counts_;
    TWPreviewWish wish_;
    std::optional<std::size_t> group_; // of the wished cleaner
    std::size_t plans_ = 0; // known when the rows were looked for last; a whole one counts twice
    TWPreviewRows rows_;
    TWPreviewWish keptWish_; // what stays because it was put on the keep list
    TWPreviewRows keptRows_; // found for it
    std::vector<TWPreviewRow> kept_; // sorted
    std::unique_ptr<TWPreviewExport> export_;
};
