#include "cleaners/TWFilesCleaner.h"

#include "support/TWText.h"

#include <algorithm>
#include <deque>
#include <mutex>

namespace {

constexpr auto NoActiveRules
    = "The Files cleaner is checked but there are no active rules. You should either disable the cleaner, "
      "activate some rules, or add some of your own.";
constexpr auto EmptyDictionary
    = "\n\nThe Files cleaner is setup to clear files and folders based keywords but there is nothing in "
      "the dictionary. Add some words in the dictionary or deactivate the cleaner.";
constexpr auto Started = "Deleting files and folders...";
constexpr auto AlreadyDeleted = "Item %@ already deleted";
constexpr auto NoSuchFolder = "Folder %@ does not exist!";
constexpr auto NotAFolder = "The specified path (%@) is not a folder!";
constexpr auto SkippingBundle = "Skipping Bundle ";
constexpr auto Unreadable = "The folder %@ could not be read (%@).";
constexpr auto NotSearched = "The folder %@ could not be searched.";
constexpr auto NothingToDelete = "No files to delete in %@";
constexpr auto Success = "All files and folders have been deleted.";
constexpr auto Failure = "Some files and/or folders could not be deleted!";

constexpr std::size_t NamesBetweenQuestions = 512;
constexpr std::size_t LinesPerTurn = 1000; // so that the window stays awake

// Walks a folder, and the folders below it, with a stack of its own: a tree may be deeper than the thread's stack.
class KeywordSearch final {
public:
    KeywordSearch(
        const TWKeywordMatcher& keywords, const TWFilesCleaner::Progress& progress, const TWCancellation& cancellation)
        : keywords_(keywords)
        , progress_(progress)
        , cancellation_(cancellation)
    {
    }

    std::vector<std::string> run(const TWFileSystem& fileSystem, const std::string& path, bool recursive)
    {
        int error = 0;
        path_ = path;
        const auto real = fileSystem.realPath(path, TWLinkAtEnd::Follow, &error);
        if (auto folder = real ? fileSystem.openFolder(*real, error) : nullptr)
            enter(std::move(folder));
        else
            progress_(TWText::fill(Unreadable, { path, TWErrorText(error) }));
        while (!folders_.empty() && !cancellation_.cancelled())
            searchOn(recursive);
        return std::move(found_);
    }

private:
    struct Level {
        std::unique_ptr<TWOpenFolder> folder;
        std::size_t next = 0; // index of the entry to look at
        std::size_t pathLength; // of path_ without an entry's name
        bool package;
    };

    void enter(std::unique_ptr<TWOpenFolder> folder)
    {
        const bool package = folder->isPackage();
        folders_.push_back({ std::move(folder), 0, path_.size(), package });
    }

    // Looks at the entries of the innermost folder until one of them is entered or none is left.
    void searchOn(bool recursive)
    {
        auto& level = folders_.back();
        const auto& entries = level.folder->entries();
        while (level.next < entries.size()) {
            if (level.next % NamesBetweenQuestions == NamesBetweenQuestions - 1 && cancellation_.cancelled())
                return;
            const auto& entry = entries[level.next++];
            if (level.package)
                progress_(SkippingBundle + pathOf(level, entry));
            else if (keywords_.matches(entry.name))
                found_.push_back(pathOf(level, entry));
            else if (recursive && entry.kind == TWFileKind::Folder && enterChild(level, entry))
                return;
        }
        folders_.pop_back();
    }

    // level is not valid any more after a success.
    bool enterChild(const Level& level, const TWFolderEntry& entry)
    {
        int error = 0;
        auto folder = level.folder->openFolder(entry, error);
        if (!folder) {
            progress_(TWText::fill(NotSearched, { pathOf(level, entry) }));
            return false;
        }
        path_.resize(level.pathLength);
        path_.append("/").append(entry.name);
        enter(std::move(folder));
        return true;
    }

    std::string pathOf(const Level& level, const TWFolderEntry& entry) const
    {
        std::string path(path_, 0, level.pathLength);
        return path.append("/").append(entry.name);
    }

    const TWKeywordMatcher& keywords_;
    const TWFilesCleaner::Progress& progress_;
    const TWCancellation& cancellation_;
    std::string path_;
    std::vector<Level> folders_;
    std::vector<std::string> found_;
};

std::vector<std::string> contentsOf(const TWFileSystem& fileSystem, const std::string& path,
    const TWFilesCleaner::Progress& progress, const TWCancellation& cancellation)
{
    std::vector<std::string> contents;
    int error = 0;
    const auto real = fileSystem.realPath(path, TWLinkAtEnd::Follow, &error);
    const auto folder = real ? fileSystem.openFolder(*real, error) : nullptr;
    if (!folder) {
        progress(TWText::fill(Unreadable, { path, TWErrorText(error) }));
        return contents;
    }
    for (const auto& entry : folder->entries()) {
        if (contents.size() % NamesBetweenQuestions == NamesBetweenQuestions - 1 && cancellation.cancelled())
            break;
        contents.push_back(path + "/" + std::string(entry.name));
    }
    return contents;
}

}

// What the background work and the cleaner share: lines on their way to the main thread, and the plan once it is made.
struct TWFilesCleaner::Expansion {
    // True when a call to drain the lines has to be posted: one is on its way as long as there are lines.
    bool add(std::string line)
    {
        const std::lock_guard lock(mutex);
        lines.push_back(std::move(line));
        return !std::exchange(onItsWay, true);
    }

    // As many as one turn can report. True when the caller has to come again for the rest.
    bool take(std::vector<std::string>& taken)
    {
        const std::lock_guard lock(mutex);
        const auto end = lines.begin() + static_cast<std::ptrdiff_t>(std::min(lines.size(), LinesPerTurn));
        taken.assign(std::make_move_iterator(lines.begin()), std::make_move_iterator(end));
        lines.erase(lines.begin(), end);
        onItsWay = !lines.empty();
        return onItsWay;
    }

    TWFilesPlan plan; // the worker's until it has ended
    bool planned = false; // the main thread's

private:
    std::mutex mutex;
    std::deque<std::string> lines;
    bool onItsWay = false; // a call to drain
};

TWFilesCleaner::TWFilesCleaner(const TWDeletionTools& tools)
    : tools_(tools)
{
    setStartedMessageString(Started);
    setSuccessMessageString(Success);
    setFailureMessageString(Failure);
}

TWFilesCleaner::~TWFilesCleaner() = default;

void TWFilesCleaner::setInfo(TWFilesCleanerInfo info)
{
    info_ = std::move(info);
    keywordsMade_ = false;
}

void TWFilesCleaner::makeKeywords()
{
    if (!std::exchange(keywordsMade_, true))
        setKeywords(info_.wordDictionary);
}

bool TWFilesCleaner::stringContainsKeywords(std::string_view text)
{
    makeKeywords();
    return TWCleaner::stringContainsKeywords(text);
}

std::string TWFilesCleaner::validate()
{
    if (!isActive())
        return "";
    const std::vector<TWFilesRule> none;
    const auto& rules = info_.filesArray ? *info_.filesArray : none;
    std::string message;
    if (std::none_of(rules.begin(), rules.end(), [](const auto& rule) { return rule.active; }))
        message = NoActiveRules;
    // Kept on purpose: rules that are switched off count here too.
    const bool keywordsNeeded
        = std::any_of(rules.begin(), rules.end(), [](const auto& rule) { return rule.needsKeywords(); });
    if (keywordsNeeded && info_.wordDictionary.empty())
        message += EmptyDictionary;
    return message;
}

void TWFilesCleaner::clean()
{
    if (!isActive()) {
        done();
        return;
    }
    setCancelled(false);
    endExpansion();
    reportStarted();
    fileDeleteQueue_ = std::make_unique<TWFileDeleteQueue>(tools_);
    fileDeleteQueue_->setDelegate(this);
    if (info_.securelyDeleteFiles)
        fileDeleteQueue_->setSecureDeleteMode(info_.securelyDeleteFilesMode);
    auto rules = info_.filesArray ? *info_.filesArray : std::vector<TWFilesRule>();
    std::erase_if(rules, [](const TWFilesRule& rule) { return !rule.active; });
    if (rules.empty()) {
        reportSuccess(Success);
        done();
        return;
    }
    expand(std::move(rules));
}

// Hops to another thread with copies; lines come back by posting, in order, the plan when the work has ended.
void TWFilesCleaner::expand(std::vector<TWFilesRule> rules)
{
    expansion_ = std::make_shared<Expansion>();
    auto work = [this, rules = std::move(rules), words = info_.wordDictionary, places = tools_.places,
                    &fileSystem = tools_.fileSystem, &runLoop = tools_.runLoop,
                    expansion = expansion_](const std::shared_ptr<const TWCancellation>& cancellation) {
        const auto progress = [&](std::string line) {
            if (!expansion->add(std::move(line)))
                return;
            // Back on the main thread, where this cleaner is gone if the work was cancelled.
            runLoop.post([this, cancellation] {
                if (!cancellation->cancelled())
                    drainProgress();
            });
        };
        const bool search
            = std::any_of(rules.begin(), rules.end(), [](const auto& rule) { return rule.needsKeywords(); });
        const TWKeywordMatcher keywords(search ? words : std::vector<std::string>());
        expansion->plan = plan(rules, keywords, places, fileSystem, progress, *cancellation);
    };
    background_ = tools_.runLoop.inBackground(std::move(work), [this] { expanded(); });
}

void TWFilesCleaner::drainProgress()
{
    draining_.reset();
    // A report may end this job or begin another.
    const auto expansion = expansion_;
    std::vector<std::string> lines;
    const bool more = expansion->take(lines);
    for (auto& line : lines) {
        if (expansion_ == expansion)
            reportProgress(std::move(line));
    }
    if (expansion_ != expansion)
        return;
    if (more)
        draining_ = tools_.runLoop.after(TWRunLoop::Duration(0), [this] { drainProgress(); });
    else if (expansion->planned)
        deletePlanned();
}

void TWFilesCleaner::expanded()
{
    expansion_->planned = true;
    if (!draining_)
        drainProgress();
}

void TWFilesCleaner::endExpansion()
{
    background_.reset();
    draining_.reset();
    expansion_.reset();
}

void TWFilesCleaner::deletePlanned()
{
    auto plan = std::move(expansion_->plan);
    endExpansion();
    if (plan.failure) {
        reportFailure(*plan.failure);
        done();
        return;
    }
    fileDeleteQueue_->addFilesFromArray(std::move(plan.paths));
    fileDeleteQueue_->deleteFiles(info_.useAuthorization);
}

TWFilesPlan TWFilesCleaner::plan(const std::vector<TWFilesRule>& rules, const TWKeywordMatcher& keywords,
    const TWPlaces& places, const TWFileSystem& fileSystem, const Progress& progress,
    const TWCancellation& cancellation)
{
    TWFilesPlan plan;
    for (const auto& rule : rules) {
        if (cancellation.cancelled())
            break;
        const bool needsFolder = rule.whatToDelete == TWFolderContents || rule.needsKeywords();
        if (!rule.active || (rule.whatToDelete != TWItemItself && !needsFolder))
            continue;
        const auto path = places.standardize(rule.filePath);
        const bool exists = fileSystem.look(path).presence != TWPresence::Gone;
        if (rule.whatToDelete == TWItemItself) {
            if (exists)
                plan.paths.push_back(path);
            else
                progress(TWText::fill(AlreadyDeleted, { path }));
            continue;
        }
        if (!exists || !fileSystem.look(path, TWLinkAtEnd::Follow).isFolder()) {
            plan.failure = TWText::fill(exists ? NotAFolder : NoSuchFolder, { path });
            return plan;
        }
        auto found = rule.whatToDelete == TWFolderContents
            ? contentsOf(fileSystem, path, progress, cancellation)
            : KeywordSearch(keywords, progress, cancellation)
                  .run(fileSystem, path, rule.whatToDelete == TWItemsWithKeywordsDeep);
        plan.paths.insert(
            plan.paths.end(), std::make_move_iterator(found.begin()), std::make_move_iterator(found.end()));
        // Kept on purpose: this looks at everything found so far, not at this rule's share.
        if (plan.paths.empty())
            progress(TWText::fill(NothingToDelete, { path }));
    }
    return plan;
}

std::vector<std::string> TWFilesCleaner::itemsContainingKeywordsAtPath(const std::string& path, bool recursive)
{
    makeKeywords();
    const Progress progress = [this](std::string line) { reportProgress(std::move(line)); };
    const TWCancellation never;
    return KeywordSearch(*keywords(), progress, never).run(tools_.fileSystem, path, recursive);
}

void TWFilesCleaner::fileDeleteQueueProgressed(const std::string& message)
{
    reportProgress(message);
}

void TWFilesCleaner::fileDeleteQueueDone()
{
    verify();
}

void TWFilesCleaner::verify()
{
    const bool nothingLeft = fileDeleteQueue_->verify();
    if (fileDeleteQueue_->stopped())
        reportFailure(TWTerminatedMessage);
    else if (nothingLeft)
        reportSuccess(Success);
    else
        reportFailure(Failure);
    done();
}

void TWFilesCleaner::cancel()
{
    setCancelled(true);
    endExpansion();
    if (fileDeleteQueue_)
        fileDeleteQueue_->terminate();
    reportFailure(TWTerminatedMessage);
    done();
}

void TWFilesCleaner::stop()
{
    if (background_) {
        // Nothing was deleted yet.
        cancel();
    } else if (fileDeleteQueue_ && fileDeleteQueue_->running()) {
        setCancelled(true);
        fileDeleteQueue_->stop();
    }
}
