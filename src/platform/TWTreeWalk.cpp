#include "platform/TWTreeWalk.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <deque>
#include <list>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned VisitsBetweenQuestions = 256;
constexpr unsigned VisitsLikeAFolder = 16; // opening and listing a folder takes about as long as this many visits
constexpr std::size_t ResultsTogether = 1000;
constexpr std::chrono::milliseconds LongestHeldBack(50); // so that the first results of a slow disk arrive early

// A range of indexes of roots or entries.
struct Range {
    std::size_t next = 0;
    std::size_t end = 0;

    bool empty() const { return next >= end; }
    Range cutOffLatterHalf()
    {
        const std::size_t middle = next + (end - next) / 2;
        return { middle, std::exchange(end, middle) };
    }
};

// Puts the results of all threads into the order of a single-threaded walk. It keeps a list of stretches, each written
// by one thread. The results of the first stretch are received at once, those of later stretches when all stretches
// before them have ended.
class OrderedResults final {
    struct Stretch {
        std::vector<std::unique_ptr<TWWalkJob::Results>> ready;
        bool ended = false;
    };

public:
    using Place = std::list<Stretch>::iterator;

    OrderedResults(TWWalkJob& job, const TWCancellation& cancellation)
        : job_(job)
        , cancellation_(cancellation)
    {
    }

    Place first() { return stretches_.emplace(stretches_.end()); }

    Place insertAfter(Place place)
    {
        const std::lock_guard lock(mutex_);
        return stretches_.emplace(std::next(place));
    }

    void add(Place place, std::unique_ptr<TWWalkJob::Results> results)
    {
        std::unique_lock lock(mutex_);
        place->ready.push_back(std::move(results));
        deliver(lock);
    }

    void end(Place place)
    {
        std::unique_lock lock(mutex_);
        place->ended = true;
        deliver(lock);
    }

private:
    // Only one thread delivers at a time, without holding the lock, so the others can go on adding. If receive()
    // throws, delivering_ stays true and nothing more is delivered.
    void deliver(std::unique_lock<std::mutex>& lock)
    {
        if (std::exchange(delivering_, true))
            return;
        while (!stretches_.empty()) {
            auto& head = stretches_.front();
            if (!head.ready.empty())
                receive(std::exchange(head.ready, {}), lock);
            else if (head.ended)
                stretches_.pop_front();
            else
                break;
        }
        delivering_ = false;
    }

    void receive(std::vector<std::unique_ptr<TWWalkJob::Results>> ready, std::unique_lock<std::mutex>& lock)
    {
        lock.unlock();
        for (auto& results : ready) {
            if (!cancellation_.cancelled())
                job_.receive(*results);
        }
        ready.clear();
        lock.lock();
    }

    TWWalkJob& job_;
    const TWCancellation& cancellation_;
    std::mutex mutex_;
    std::list<Stretch> stretches_;
    bool delivering_ = false;
};

// A consecutive part of the walk: some entries of one folder with everything below them, or some roots.
struct Task {
    OrderedResults::Place place;
    Range roots;
    std::unique_ptr<TWOpenFolder> folder; // nullptr if the task consists of roots
    Range entries;
    std::string path;
    std::size_t root = 0;
    std::uint64_t device = 0;
};

// Passes tasks from busy threads to idle ones and starts threads when there is work for them. Busy threads add tasks
// only for idle ones, so there are never many more tasks than threads.
class Tasks final {
public:
    Tasks(unsigned threads, std::function<void()> work)
        : work_(std::move(work))
        , threadLimit_(threads)
    {
        count();
    }

    // True if a thread is idle, or could be started, and no task is waiting for it.
    bool wanted() const { return wanted_.load(std::memory_order_relaxed) > 0; }
    bool stopped() const { return stopped_.load(std::memory_order_relaxed); }

    void add(Task task)
    {
        const std::lock_guard lock(mutex_);
        waiting_.push_back(std::move(task));
        if (busy_ > 0 && idle_ < waiting_.size() && !stopped())
            startThread();
        count();
        added_.notify_one();
    }

    // Waits for a task. Returns nothing when there will be no more.
    std::optional<Task> take()
    {
        std::unique_lock lock(mutex_);
        ++idle_;
        added_.wait(lock, [this] { return stopped() || !waiting_.empty() || busy_ == 0; });
        --idle_;
        if (stopped() || waiting_.empty())
            return std::nullopt;
        std::optional<Task> task(std::move(waiting_.front()));
        waiting_.pop_front();
        ++busy_;
        count();
        return task;
    }

    void ended()
    {
        const std::lock_guard lock(mutex_);
        --busy_;
        ++ended_;
        count();
        freed_.notify_all();
        if (busy_ == 0)
            added_.notify_all();
    }

    // For a thread that has run out of descriptors: waits until another thread has ended its task and so has closed
    // some. Returns false if that will not happen.
    bool waitForDescriptors()
    {
        std::unique_lock lock(mutex_);
        if (starving_ + 1 >= busy_)
            return false;
        ++starving_;
        freed_.wait(lock, [this, before = ended_] { return stopped() || ended_ != before; });
        --starving_;
        return !stopped();
    }

    void stop(TWWalkEnd reason)
    {
        const std::lock_guard lock(mutex_);
        if (end_ != TWWalkEnd::Failed)
            end_ = reason;
        stopped_ = true;
        added_.notify_all();
        freed_.notify_all();
    }

    TWWalkEnd waitForThreads()
    {
        threads_.clear();
        return end_;
    }

private:
    // If the system refuses to start another thread, the existing ones do the work.
    void startThread()
    {
        if (threads_.size() + 1 >= threadLimit_)
            return;
        try {
            threads_.emplace_back(work_);
        } catch (const std::system_error&) {
            threadLimit_ = static_cast<unsigned>(threads_.size()) + 1;
        }
    }

    void count() { wanted_ = static_cast<int>(threadLimit_) - static_cast<int>(busy_ + waiting_.size()); }

    const std::function<void()> work_;
    std::mutex mutex_;
    std::condition_variable added_;
    std::condition_variable freed_;
    std::deque<Task> waiting_;
    unsigned threadLimit_; // including the calling thread
    unsigned idle_ = 0;
    unsigned busy_ = 0;
    unsigned starving_ = 0; // of the busy ones
    std::uint64_t ended_ = 0;
    TWWalkEnd end_ = TWWalkEnd::Complete;
    std::atomic<int> wanted_ = 0;
    std::atomic<bool> stopped_ = false;
    std::vector<std::jthread> threads_;
};

// What all threads of a walk share.
struct Walk {
    const TWFileSystem& fileSystem;
    const TWWalkRoots& roots;
    const TWWalkJob& job;
    const TWCancellation& cancellation;
    OrderedResults& results;
    Tasks& tasks;
};

// Walks one thread's part of the trees, depth-first, with an explicit stack because recursion could overflow the
// thread's stack. What is left of its part is always consecutive. When another thread is idle, the walker gives away
// the end of that part, from the outermost folder, so that tasks are large and their results follow its own.
class Walker final {
public:
    explicit Walker(const Walk& walk)
        : walk_(walk)
        , results_(walk.job.newResults())
    {
    }

    void run(Task task)
    {
        place_ = task.place;
        roots_ = task.roots;
        path_ = std::move(task.path);
        if (task.folder)
            push(std::move(task.folder), task.root, task.device, task.entries);
        while (goOn() && step()) { }
        folders_.clear();
        if (walk_.tasks.stopped())
            return;
        handIn();
        walk_.results.end(place_);
    }

private:
    struct Folder {
        std::unique_ptr<TWOpenFolder> folder;
        TWWalkedFolder walked;
        Range entries; // not visited yet
        std::size_t pathLength; // length of path_ without an entry's name
    };

    bool step()
    {
        if (!folders_.empty())
            visitInnermost();
        else if (!roots_.empty())
            visitRoot(roots_.next++);
        else
            return false;
        return true;
    }

    // Visits entries until one of them is entered or none is left.
    void visitInnermost()
    {
        auto& folder = folders_.back();
        path_.resize(folder.pathLength);
        while (askAfter(1) && !folder.entries.empty()) {
            const auto& entry = folder.folder->entries()[folder.entries.next++];
            const auto step = walk_.job.visit(folder.walked, entry, *results_);
            if (step == TWWalkStep::Enter && entry.kind == TWFileKind::Folder && enter(folder, entry))
                return;
        }
        folders_.pop_back();
    }

    // On success outer is no longer valid.
    bool enter(const Folder& outer, const TWFolderEntry& entry)
    {
        int error = 0;
        auto folder = open([&] { return outer.folder->openFolder(entry, error); }, error);
        if (path_.back() != '/')
            path_ += '/';
        path_ += entry.name;
        if (folder) {
            push(std::move(folder), outer.walked.root(), outer.walked.device());
            return true;
        }
        if (goOn())
            walk_.job.notEntered(outer.walked.root(), path_, error, *results_);
        path_.resize(outer.pathLength);
        return false;
    }

    void visitRoot(std::size_t root)
    {
        path_ = walk_.roots.paths[root];
        const auto found = walk_.fileSystem.look(path_, walk_.roots.linkAtEnd);
        if (walk_.job.visitRoot(root, found, *results_) == TWWalkStep::PassOver)
            return;
        int error = found.isThere() ? ENOTDIR : found.error;
        auto folder = found.isFolder() ? open([&] { return openRoot(error); }, error) : nullptr;
        if (folder)
            push(std::move(folder), root, found.facts.identity.device);
        else if (goOn())
            walk_.job.notEntered(root, path_, error, *results_);
    }

    // Tries the path as it is first: resolving takes several times as long as opening, and few paths contain symbolic
    // links.
    std::unique_ptr<TWOpenFolder> openRoot(int& error) const
    {
        auto folder = walk_.fileSystem.openFolder(path_, error, &walk_.cancellation);
        if (folder || (error != ELOOP && error != ENOTDIR))
            return folder;
        const auto real = walk_.fileSystem.realPath(path_, walk_.roots.linkAtEnd, &error);
        return real ? walk_.fileSystem.openFolder(*real, error, &walk_.cancellation) : nullptr;
    }

    // If this walk's own threads have used up the descriptors, waits and tries again.
    template <typename Opening>
    std::unique_ptr<TWOpenFolder> open(const Opening& opening, const int& error)
    {
        askAfter(VisitsLikeAFolder);
        auto folder = opening();
        for (bool others = true; others && !folder && (error == EMFILE || error == ENFILE);) {
            others = walk_.tasks.waitForDescriptors();
            folder = opening(); // always once more: waiting threads may have closed some
        }
        return folder;
    }

    void push(std::unique_ptr<TWOpenFolder> folder, std::size_t root, std::uint64_t device)
    {
        const Range all{ 0, folder->entries().size() };
        push(std::move(folder), root, device, all);
    }

    void push(std::unique_ptr<TWOpenFolder> folder, std::size_t root, std::uint64_t device, Range entries)
    {
        const TWWalkedFolder walked(*folder, path_, root, device);
        folders_.push_back({ std::move(folder), walked, entries, path_.size() });
    }

    bool goOn() const
    {
        if (!walk_.tasks.stopped() && walk_.cancellation.cancelled())
            walk_.tasks.stop(TWWalkEnd::Cancelled);
        return !walk_.tasks.stopped();
    }

    // Now and then does what is too slow to do for each entry: gives work away, hands in results, checks the
    // cancellation. Returns false if the walk is over.
    bool askAfter(unsigned visits)
    {
        if (visits < visitsBeforeQuestion_) {
            visitsBeforeQuestion_ -= visits;
            return true;
        }
        visitsBeforeQuestion_ = VisitsBetweenQuestions;
        if (walk_.tasks.wanted())
            giveAway();
        if (results_->size() >= ResultsTogether || Clock::now() - handedIn_ > LongestHeldBack)
            handIn();
        return goOn();
    }

    // Gives away the latter half of the remaining roots or of what is left in the outermost folder. Gives nothing if
    // the descriptors are used up.
    void giveAway()
    {
        Task task;
        if (!roots_.empty()) {
            task.roots = roots_.cutOffLatterHalf();
        } else {
            const auto outermost = std::find_if(
                folders_.begin(), folders_.end(), [](const Folder& folder) { return !folder.entries.empty(); });
            if (outermost == folders_.end())
                return;
            int error = 0;
            task.folder = outermost->folder->duplicate(error);
            if (!task.folder)
                return;
            task.entries = outermost->entries.cutOffLatterHalf();
            task.path = path_.substr(0, outermost->pathLength);
            task.root = outermost->walked.root();
            task.device = outermost->walked.device();
        }
        task.place = walk_.results.insertAfter(place_);
        walk_.tasks.add(std::move(task));
    }

    void handIn()
    {
        handedIn_ = Clock::now();
        if (results_->size() > 0)
            walk_.results.add(place_, std::exchange(results_, walk_.job.newResults()));
    }

    const Walk& walk_;
    OrderedResults::Place place_;
    Range roots_;
    std::vector<Folder> folders_;
    std::string path_;
    std::unique_ptr<TWWalkJob::Results> results_;
    unsigned visitsBeforeQuestion_ = VisitsBetweenQuestions;
    Clock::time_point handedIn_ = Clock::now();
};

// What each thread of a walk runs.
void work(const Walk& walk)
{
    try {
        Walker walker(walk);
        while (auto task = walk.tasks.take()) {
            walker.run(std::move(*task));
            walk.tasks.ended();
        }
    } catch (...) {
        walk.tasks.stop(TWWalkEnd::Failed);
    }
}

}

std::string TWWalkedFolder::pathOf(const TWFolderEntry& entry) const
{
    std::string path;
    path.reserve(path_.size() + 1 + entry.name.size());
    path.append(path_).append(path_.ends_with('/') ? "" : "/").append(entry.name);
    return path;
}

bool TWWalkedFolder::isPackage() const
{
    if (!isPackage_)
        isPackage_ = folder_.isPackage();
    return *isPackage_;
}

TWWalkEnd TWWalkTrees(const TWFileSystem& fileSystem, const TWWalkRoots& roots, TWWalkJob& job,
    const TWCancellation& cancellation, unsigned threads)
{
    try {
        OrderedResults results(job, cancellation);
        Tasks tasks(threads == TWAllCores ? std::max(1U, std::thread::hardware_concurrency()) : threads, [&] {
            work({ fileSystem, roots, job, cancellation, results, tasks });
        });
        Task all;
        all.place = results.first();
        all.roots.end = roots.paths.size();
        tasks.add(std::move(all));
        work({ fileSystem, roots, job, cancellation, results, tasks });
        const auto end = tasks.waitForThreads();
        // A cancellation drops results even after the last folder was visited.
        return end == TWWalkEnd::Complete && cancellation.cancelled() ? TWWalkEnd::Cancelled : end;
    } catch (const std::bad_alloc&) {
        return TWWalkEnd::Failed;
    }
}
