#include "editors/TWLogsWindowController.h"

#include "cleaners/TWLogsCleaner.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>

namespace {

constexpr auto FileName = "Logs.plist";
constexpr auto HelpAnchor = "Logs";
constexpr auto NameNotText
    = "\"%@\" cannot be checked, because its name is not valid UTF-8. Check the folder around it instead.";

constexpr std::size_t NodesPerTurn = 8'000;

using State = TWLogsNode::State;

}

// Logs are never chosen unless the user has done so: nothing stands in for a list that cannot be read.
TWLogsWindowController::TWLogsWindowController(const TWEditorContext& context, const TWDictionaryWindowController&)
    : context_(context)
    , list_(context.dataFolder, FileName, [](TWListState, const auto&) { return TWLogsTree::Records(); })
    , tree_(context.deletion.places.abbreviate(context.deletion.places.systemLogs))
{
    list_.setChanged([this] { listChanged(); });
}

void TWLogsWindowController::awakeFromNib(TWLaunchKind)
{
    list_.load();
}

void TWLogsWindowController::listChanged()
{
    change([this] { tree_.replaceChosen(list_.records()); });
    if (watch_)
        reloadLogs();
}

void TWLogsWindowController::sheetOpened()
{
    watch_ = context_.logs.watcher.watch(
        context_.deletion.runLoop, [this](const TWFolderChanges& changes) { foldersChanged(changes); });
    reloadLogs();
}

void TWLogsWindowController::sheetClosed()
{
    reading_.reset();
    watch_.reset();
    roots_.reset();
    filterText_.clear();
    filter_.reset();
    isFiltered_ = false;
    mustReload_ = false;
    changed_.clear();
    changedTrees_.clear();
    change([this] { dispose(tree_.load(list_.records())); });
}

void TWLogsWindowController::reloadLogs()
{
    mustReload_ = true;
    if (reading_)
        return;
    mustReload_ = false;
    changed_.clear();
    changedTrees_.clear();
    const auto& places = context_.deletion.places;
    startReading([&fileSystem = context_.deletion.fileSystem, &places, &sources = context_.logs.sources,
                     records = list_.records(),
                     filter = filterText_](Stream::Sink& sink, const std::shared_ptr<TWWatchedFolders>& watched) {
        Read read;
        read.roots = std::make_shared<const TWLogRoots>(places, sources.userSources(places));
        const TWLogsScan scan(fileSystem, *read.roots, places, watched, sink.cancellation());
        read.logs = scan.logs();
        read.states = scan.states(records);
        TWLogsFilter::mark(*read.logs, filter);
        sink.put(std::move(read));
    });
}

// What the work refers to lives longer than the event loop's background work.
void TWLogsWindowController::startReading(Work work)
{
    reading_ = std::make_unique<Stream>(
        context_.deletion.runLoop, 1,
        [work = std::move(work), watched = watch_ ? watch_->folders() : nullptr](
            Stream::Sink& sink) { work(sink, watched); },
        [this](Read read) { take(std::move(read)); }, [this] { readingEnded(); });
    nodesChanged();
}

void TWLogsWindowController::readingEnded()
{
    reading_.reset();
    if (mustReload_)
        reloadLogs();
    else if (!changed_.empty() || !changedTrees_.empty())
        readChanged();
    nodesChanged();
}

void TWLogsWindowController::foldersChanged(const TWFolderChanges& changes)
{
    changed_.insert(changes.folders.begin(), changes.folders.end());
    changedTrees_.insert(changes.trees.begin(), changes.trees.end());
    if (changes.everything)
        reloadLogs();
    else if (!reading_)
        readChanged();
}

// Also reads the levels that have clicks since they were read, so that the tree is always as if read as a whole.
void TWLogsWindowController::readChanged()
{
    const auto& places = context_.deletion.places;
    for (const auto& folder : tree_.unsorted())
        changed_.insert(folder == TWAllSystemLogs ? places.systemLogs : places.standardize(folder));
    changed_.insert(changedTrees_.begin(), changedTrees_.end());
    std::vector<Wanted> wanted;
    for (const auto& path : std::exchange(changed_, {}))
        addWanted(path, wanted);
    changedTrees_.clear();
    startReading([&fileSystem = context_.deletion.fileSystem, &places, roots = roots_, wanted = std::move(wanted),
                     filter = filterText_](Stream::Sink& sink, const std::shared_ptr<TWWatchedFolders>& watched) {
        const TWLogsScan scan(fileSystem, *roots, places, watched, sink.cancellation());
        Read read;
        std::size_t nodes = 0;
        for (const auto& folder : wanted) {
            int error = 0;
            auto level = scan.logsFromPath(folder.path, folder.known, error);
            TWLogsFilter::mark(level, filter);
            nodes += level.size() + 1;
            read.folders.push_back({ places.abbreviate(folder.path), std::move(level), error != 0 });
            if (nodes >= NodesPerTurn) {
                sink.put(std::exchange(read, {}));
                nodes = 0;
            }
        }
        sink.put(std::move(read));
    });
}

// A folder below one that is read with everything in it needs no reading of its own.
void TWLogsWindowController::addWanted(const std::string& path, std::vector<Wanted>& wanted)
{
    const auto isTree = [&](const std::string& folder) { return changedTrees_.contains(folder); };
    for (auto above = std::string(TWPath::parent(path)); above.size() > 1; above = TWPath::parent(above)) {
        if (isTree(above))
            return;
    }
    const auto* const node = tree_.find(context_.deletion.places.abbreviate(path));
    if (!node || !node->children || !path.starts_with('/'))
        return;
    Wanted folder{ path, {} };
    for (const auto& child : *node->children) {
        const bool isKnown = child->children && child->state == State::There && !child->isUnread;
        if (isKnown && !isTree(path) && !isTree(TWPath::join(path, child->item)))
            folder.known.insert(child->item);
    }
    wanted.push_back(std::move(folder));
}

void TWLogsWindowController::take(Read read)
{
    change([&] {
        if (read.logs) {
            roots_ = read.roots;
            dispose(tree_.load(list_.records()));
            tree_.merge(std::move(*read.logs), [&](const TWLogsNode& node) {
                const auto found = read.states.find(node.itemPath());
                return found == read.states.end() ? State::Unknown : found->second;
            });
            return;
        }
        for (auto& folder : read.folders)
            takeFolder(folder);
        sortRoots();
    });
}

// It may have disappeared together with a folder above it.
void TWLogsWindowController::takeFolder(Read::Folder& folder)
{
    auto* const node = tree_.find(folder.itemPath);
    if (!node || !node->children)
        return;
    node->isUnread = folder.isUnreadable;
    const auto missing = folder.isUnreadable ? State::Unknown : State::Vanished;
    dispose(tree_.update(*node, std::move(folder.level),
        [&](const TWLogsNode& lost) { return lost.state == State::Outside ? State::Outside : missing; }));
}

void TWLogsWindowController::sortRoots()
{
    const auto unsorted = tree_.unsorted();
    if (unsorted.contains(std::string(TWAllUserLogs)))
        tree_.sort(*tree_.find(std::string(TWAllUserLogs)));
    if (unsorted.contains(""))
        tree_.sort(tree_.top());
}

// Everything that may destroy or move nodes happens in here.
void TWLogsWindowController::change(const std::function<void()>& change)
{
    if (view_)
        view_->treeWillChange();
    if (filter_)
        filter_->stop();
    shown_.clear();
    change();
    if (filter_)
        filter_->start(tree_);
    if (view_)
        view_->treeChanged();
}

void TWLogsWindowController::nodesChanged()
{
    if (view_)
        view_->nodesChanged();
}

// Freeing hundreds of thousands of nodes takes longer than a turn of the event loop should.
void TWLogsWindowController::dispose(TWLogsTree::Level level)
{
    if (level.empty())
        return;
    const auto shared = std::make_shared<TWLogsTree::Level>(std::move(level));
    disposal_ = context_.deletion.runLoop.inBackground([shared](const auto&) { shared->clear(); }, [] {});
}

bool TWLogsWindowController::canBeChecked(const TWLogsNode& item)
{
    return TWText::isValidUTF8(item.itemPath());
}

void TWLogsWindowController::setObjectValue(TWLogsNode& item, std::int64_t value)
{
    if (!isEnabled(item))
        return;
    if (value != TWLogUnchecked && !canBeChecked(item)) {
        if (view_)
            view_->showMessage(TWText::fill(NameNotText, { TWText::oneLine(item.itemPath()) }));
        return;
    }
    tree_.click(item, value);
    list_.edit([this](TWLogsTree::Records& records) { records = tree_.cleanedArrayFrom(); });
    const auto problem = list_.write();
    nodesChanged();
    if (view_)
        view_->showMessage(problem);
}

void TWLogsWindowController::setFilter(const std::string& text)
{
    filterText_ = text;
    filter_.reset();
    if (!text.empty()) {
        filter_ = std::make_unique<TWLogsFilter>(context_.deletion.runLoop, text, [this] { filtered(); });
        filter_->start(tree_);
    } else if (isFiltered_) {
        filtered();
    }
}

void TWLogsWindowController::filtered()
{
    if (view_)
        view_->treeWillChange();
    isFiltered_ = filter_ != nullptr;
    shown_.clear();
    if (view_)
        view_->treeChanged();
}

const TWLogsTree::Level& TWLogsWindowController::level(const TWLogsNode* item) const
{
    static const TWLogsTree::Level Empty;
    if (!item)
        return tree_.logsRoot();
    return item->children ? *item->children : Empty;
}

const TWLogsWindowController::Shown& TWLogsWindowController::matching(const TWLogsNode* item) const
{
    const auto [found, isNew] = shown_.try_emplace(item);
    if (!isNew)
        return found->second;
    for (const auto& node : level(item)) {
        if (node->isShown)
            found->second.push_back(node.get());
    }
    return found->second;
}

std::size_t TWLogsWindowController::numberOfChildren(const TWLogsNode* item) const
{
    return isFiltered_ ? matching(item).size() : level(item).size();
}

TWLogsNode* TWLogsWindowController::child(std::size_t index, const TWLogsNode* item) const
{
    return isFiltered_ ? matching(item)[index] : level(item)[index].get();
}

std::size_t TWLogsWindowController::rowOf(const TWLogsNode& item) const
{
    if (!isFiltered_)
        return item.row;
    const auto& level = matching(item.parentItem());
    const auto found = std::lower_bound(
        level.begin(), level.end(), &item, [](const auto* one, const auto* other) { return one->row < other->row; });
    return found != level.end() && *found == &item ? static_cast<std::size_t>(found - level.begin()) : level.size();
}

std::size_t TWLogsWindowController::checkedCount() const
{
    return TWLogsCleaner::activeItemsInArray(list_.records()).size();
}

std::string TWLogsWindowController::path(const TWLogsNode& item) const
{
    return context_.deletion.places.standardize(
        item.root == TWLogsNode::Root::None ? item.itemPath() : item.folderPath());
}

void TWLogsWindowController::doubleClick()
{
    const auto* const item = view_ ? view_->selectedItem() : nullptr;
    if (item && item->root == TWLogsNode::Root::None)
        view_->openFile(path(*item));
}

void TWLogsWindowController::outlineViewSpaceKeyDown()
{
    const auto* const item = view_ ? view_->selectedItem() : nullptr;
    if (item && item->root != TWLogsNode::Root::User)
        view_->showPreview(path(*item));
}

void TWLogsWindowController::ok()
{
    if (view_)
        view_->closeSheet();
}

void TWLogsWindowController::help()
{
    if (view_)
        view_->openHelpAnchor(HelpAnchor);
}
