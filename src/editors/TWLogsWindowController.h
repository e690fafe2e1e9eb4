#pragma once

#include "editors/TWEditor.h"
#include "editors/TWEditorContext.h"
#include "editors/TWEditorView.h"
#include "editors/TWLogsFilter.h"
#include "editors/TWLogsScan.h"
#include "platform/TWBackgroundStream.h"
#include "settings/TWRecordList.h"

class TWDictionaryWindowController;

// The sheet with the tree. Main thread.
class TWLogsView : public TWEditorView {
public:
    // Nodes are about to appear, move or be destroyed. Between the two calls only paths identify them.
    virtual void treeWillChange() = 0;
    virtual void treeChanged() = 0;

    // The check boxes of some nodes have changed, or what the view says beside the tree.
    virtual void nodesChanged() = 0;

    // nullptr if none is selected.
    virtual TWLogsNode* selectedItem() const = 0;

    virtual void showMessage(const std::string&) = 0;

    // Opens the file in its program.
    virtual void openFile(const std::string& path) = 0;

    // Shows what is in the file, in a window of its own.
    virtual void showPreview(const std::string& path) = 0;

protected:
    ~TWLogsView() = default;
};

// Owns the logs tree and the saved choices in it. Every click is saved at once. While the sheet is open, the log
// folders are read and watched in the background; a run needs only the saved choices. Main thread.
class TWLogsWindowController final : public TWEditor {
public:
    TWLogsWindowController(const TWEditorContext&, const TWDictionaryWindowController&);

    void setView(TWLogsView* view) { view_ = view; }
    void awakeFromNib(TWLaunchKind) override;
    const char* title() const override { return "the logs"; }
    bool hasUnsavedEdits() const override { return list_.hasUnsavedEdits(); }
    std::string write() override { return list_.write(); }
    std::string file() const override { return list_.path(); }
    std::string keptAs() const override { return list_.keptAs(); }
    std::string problem() const override { return list_.problem(); }

    // The live list of what is chosen, not a copy.
    TWLogsRecordList settings() const { return list_.live(); }

    // For commands, which change the saved choices and then the live ones.
    TWRecordList<TWLogsRecord>& list() { return list_; }

    const TWLogsTree::Level& logsRoot() const { return tree_.logsRoot(); }

    // The sheet is shown on the screen, or is gone.
    void sheetOpened();
    void sheetClosed();

    const TWDeletionTools& tools() const { return context_.deletion; }
    const TWBundle& bundle() const { return context_.bundle; }

    // Reads the saved choices and all log folders anew, in the background.
    void reloadLogs();
    bool isReading() const { return reading_ != nullptr; }

    // True once everything was read since the sheet was opened.
    bool isRead() const { return roots_ != nullptr; }

    // One sentence if changes are noticed late, else "".
    std::string watchProblem() const { return watch_ ? watch_->problem() : ""; }

    // What the outline shows. A node without a parent item is below nullptr.
    std::size_t numberOfChildren(const TWLogsNode* item) const;
    TWLogsNode* child(std::size_t index, const TWLogsNode* item) const;
    static bool isItemExpandable(const TWLogsNode& item) { return item.isFolder(); }
    std::size_t rowOf(const TWLogsNode& item) const; // numberOfChildren() if the filter hides it
    TWLogsNode* find(const std::string& itemPath) { return tree_.find(itemPath); }
    static bool isEnabled(const TWLogsNode& item) { return !TWLogsTree::hasActiveParent(item); }

    // Whether the choice can be saved at all.
    static bool canBeChecked(const TWLogsNode&);

    // A click on the check box.
    void setObjectValue(TWLogsNode&, std::int64_t value);

    // Shows only logs whose names contain the text, with the folders around them; all if it is "".
    void setFilter(const std::string& text);

    // True while the tree shows what a filter has found. It is then up to date unless the filter is at work.
    bool isFiltered() const { return isFiltered_; }
    bool isFiltering() const { return filter_ && filter_->isWorking(); }

    // The number of checked logs and folders, and what they take on disk.
    std::size_t checkedCount() const;
    std::uint64_t checkedBytes() const { return tree_.checkedBytes(); }

    // The absolute path; "" for the root of the user's logs, which are in many places.
    std::string path(const TWLogsNode&) const;

    void doubleClick();
    void outlineViewSpaceKeyDown();
    void ok();
    void help();

private:
    // What one reading has found.
    struct Read {
        struct Folder {
            std::string itemPath;
            TWLogsTree::Level level;
            bool isUnreadable = false;
        };
        std::shared_ptr<const TWLogRoots> roots;
        std::optional<TWLogsTree::Level> logs; // everything, or only the folders
        TWLogsScan::States states; // of the chosen nodes, with everything
        std::vector<Folder> folders;
    };
    struct Wanted {
        std::string path;
        std::set<std::string> known; // subfolders that are as they were
    };
    using Shown = std::vector<TWLogsNode*>;

    using Stream = TWBackgroundStream<Read>;
    using Work = std::function<void(Stream::Sink&, const std::shared_ptr<TWWatchedFolders>&)>;

    void startReading(Work);
    void readingEnded();
    void foldersChanged(const TWFolderChanges&);
    void readChanged();
    void addWanted(const std::string& path, std::vector<Wanted>&);
    void sortRoots();
    void take(Read);
    void takeFolder(Read::Folder&);
    void listChanged();
    void change(const std::function<void()>&);
    void nodesChanged();
    void filtered();
    void dispose(TWLogsTree::Level);
    const TWLogsTree::Level& level(const TWLogsNode* item) const;
    const Shown& matching(const TWLogsNode* item) const;

    const TWEditorContext context_;
    TWLogsView* view_ = nullptr;
    TWRecordList<TWLogsRecord> list_;
    TWLogsTree tree_;
    std::unique_ptr<TWFolderWatch> watch_; // while the sheet is open
    std::unique_ptr<Stream> reading_;
    bool mustReload_ = false; // when the reading has ended
    std::set<std::string> changed_; // folders to be read anew, by their paths
    std::set<std::string> changedTrees_; // the same with everything below
    std::string filterText_;
    std::unique_ptr<TWLogsFilter> filter_; // nullptr if the text is ""
    bool isFiltered_ = false; // the tree shows what the filter has found
    mutable std::unordered_map<const TWLogsNode*, Shown> shown_; // with a filter, by folder, as far as was asked for
    std::shared_ptr<const TWLogRoots> roots_; // as the latest reading of everything has found them
    std::unique_ptr<TWRunLoopHandle> disposal_;
};
