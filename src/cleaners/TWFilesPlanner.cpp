#include "cleaners/TWFilesPlanner.h"

#include "platform/TWAmbiguousPath.h"
#include "platform/TWTreeWalk.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>
#include <cerrno>

namespace {

constexpr auto AlreadyDeleted = "Item %@ already deleted";
constexpr auto BehindDanglingLink = "Whether %@ exists is not known, because a link on the way to it leads nowhere.";
constexpr auto UnknownKind = "This kind of rule does nothing: %@";
constexpr auto NoSuchFolder = "Folder %@ does not exist!";
constexpr auto NotAFolder = "The specified path (%@) is not a folder!";
constexpr auto Ambiguous = "Refused to delete \"%@\": its \"..\" follows a link or a moved folder, so it means one "
                           "place to the shell and another one here.";
constexpr auto Unreadable = "The folder %@ could not be read (%@).";
constexpr auto SkippingBundle = "Skipping Bundle %@";
constexpr auto NotSearched = "The folder %@ could not be searched.";
constexpr auto NotFinished = "The search in %@ could not be finished, because the memory ran out.";
constexpr auto MountMet = "The folder %@ was not searched, because a volume is mounted there.";
constexpr auto NothingToDelete = "No files to delete in %@";

bool needsKeywords(const std::vector<TWFilesRule>& rules)
{
    return std::any_of(
        rules.begin(), rules.end(), [](const auto& rule) { return rule.active && rule.needsKeywords(); });
}

// What one thread of a search has found.
struct Found {
    TWPlan plan;
    std::optional<TWPathPlanner::Folder> folder; // the parent folder of the latest items

    std::size_t size() const { return plan.size(); }
};

class KeywordVisitor final : public TWTreeVisitor<Found> {
public:
    KeywordVisitor(const TWPathPlanner& planner, const TWKeywordMatcher& keywords, const TWPathPlanner::Folder& top,
        std::uint32_t rule, bool recursive, const TWCancellation& cancellation)
        : planner_(planner)
        , keywords_(keywords)
        , top_(*top.planned)
        , rule_(rule)
        , recursive_(recursive)
        , cancellation_(cancellation)
    {
    }

    TWWalkStep visit(const TWWalkedFolder& folder, const TWFolderEntry& entry, Found& found) const override
    {
        if (folder.isPackage()) {
            found.plan.addLine(TWReportLine::about(SkippingBundle, { shown(folder.pathOf(entry)) }));
            return TWWalkStep::PassOver;
        }
        if (keywords_.matches(entry.name)) {
            add(folder, entry, found);
            return TWWalkStep::PassOver;
        }
        return recursive_ ? TWWalkStep::Enter : TWWalkStep::PassOver;
    }

    void notEntered(std::size_t, const std::string& path, int error, Found& found) const override
    {
        // It was listed but has been deleted in the meantime. The rule's own folder must not vanish.
        if (error == ENOENT && path != top_.realPath)
            return;
        found.plan.addLine(TWReportLine::about(error == EXDEV ? MountMet : NotSearched, { shown(path) }));
        found.plan.incomplete = found.plan.incomplete || error != EXDEV;
    }

private:
    void add(const TWWalkedFolder& folder, const TWFolderEntry& entry, Found& found) const
    {
        if (!found.folder || found.folder->planned->realPath != folder.path()) {
            int error = 0;
            found.folder = planner_.folder(shown(folder.path()), folder.path(), error);
        }
        // The folder has been moved, replaced or deleted since the search entered it.
        if (!found.folder && folder.folder().look(entry).presence == TWPresence::Gone)
            return;
        if (!found.folder || found.folder->planned->identity != folder.folder().identity()) {
            notEntered(0, folder.path(), ESTALE, found);
            return;
        }
        auto& item = planner_.add(found.plan, *found.folder, entry.name, folder.folder().look(entry), cancellation_);
        item.rule = rule_;
        item.word = static_cast<std::uint32_t>(keywords_.firstMatch(entry.name).value_or(TWNone));
    }

    // The path for messages: real paths below the rule's folder are shown as the rule writes the folder.
    std::string shown(const std::string& path) const
    {
        return TWPath::standardize(top_.path + "/" + path.substr(top_.realPath.size()), "");
    }

    const TWPathPlanner& planner_;
    const TWKeywordMatcher& keywords_;
    const TWPlannedFolder& top_;
    const std::uint32_t rule_;
    const bool recursive_;
    const TWCancellation& cancellation_;
};

}

TWFilesPlanner::TWFilesPlanner(const TWPathPlanner& planner, const TWPlaces& places,
    const std::vector<TWFilesRule>& rules, const std::vector<std::string>& words, Put put,
    const TWCancellation& cancellation)
    : planner_(planner)
    , places_(places)
    , rules_(rules)
    , keywords_(needsKeywords(rules) ? words : std::vector<std::string>())
    , put_(std::move(put))
    , cancellation_(cancellation)
{
}

void TWFilesPlanner::plan()
{
    for (rule_ = 0; rule_ < rules_.size() && !cancellation_.cancelled(); ++rule_) {
        if (rules_[rule_].active && !planRule(rules_[rule_]))
            break;
    }
    putPart();
}

// Returns false if the whole planning must end here.
bool TWFilesPlanner::planRule(const TWFilesRule& rule)
{
    const auto path = places_.standardize(rule.filePath);
    const bool needsFolder = rule.whatToDelete == TWFolderContents || rule.needsKeywords();
    if (rule.whatToDelete != TWItemItself && !needsFolder) {
        part_.addLine(TWReportLine::about(UnknownKind, { rule.filePath }));
        return true;
    }
    if (TWIsAmbiguousPath(planner_.fileSystem(), places_, rule.filePath)) {
        part_.addLine(TWReportLine::about(Ambiguous, { rule.filePath }));
        part_.incomplete = true;
        return true;
    }
    if (rule.whatToDelete == TWItemItself) {
        planItem(path);
        return true;
    }
    return planFolder(rule, path);
}

void TWFilesPlanner::planItem(const std::string& path)
{
    const auto sought = planner_.seek(path);
    if (!sought.isPath) {
        TWPathPlanner::addNoPath(part_, path).rule = rule_;
        ++planned_;
    } else if (sought.isBehindDanglingLink) {
        part_.addLine(TWReportLine::about(BehindDanglingLink, { path }));
        part_.incomplete = true;
    } else if (sought.look.presence == TWPresence::Gone)
        part_.addLine(TWReportLine::about(AlreadyDeleted, { path }));
    else if (sought.folder)
        addItem(part_, *sought.folder, sought.name, sought.look);
    else
        sayUnreadable(std::string(TWPath::parent(path)), sought.look.error);
}

// Returns false if the whole planning must end here.
bool TWFilesPlanner::planFolder(const TWFilesRule& rule, const std::string& path)
{
    const auto look = planner_.fileSystem().look(path, TWLinkAtEnd::Follow);
    const bool missing = planner_.fileSystem().look(path).presence == TWPresence::Gone || !path.starts_with('/');
    if (missing || (look.presence != TWPresence::Unknown && !look.isFolder())) {
        part_.failure = TWText::fill(missing ? NoSuchFolder : NotAFolder, { path });
        return false;
    }
    int error = look.error;
    if (const auto folder = planner_.folderThroughLinks(path, error); !folder)
        sayUnreadable(path, error);
    else if (rule.whatToDelete == TWFolderContents)
        planContents(*folder);
    else
        itemsContainingKeywordsAtPath(*folder, rule.whatToDelete == TWItemsWithKeywordsDeep);
    // Kept on purpose: this counts everything planned so far, not only what this rule has added.
    if (planned_ == 0)
        part_.addLine(TWReportLine::about(NothingToDelete, { path }));
    return true;
}

void TWFilesPlanner::planContents(const Folder& folder)
{
    int error = 0;
    const auto open = planner_.list(folder, error, cancellation_);
    if (!open) {
        sayUnreadable(folder.planned->path, error);
        return;
    }
    planner_.lookAtEntries(folder, *open, cancellation_, [&](std::string_view name, const TWFileLook& look) {
        addItem(part_, folder, name, look);
        if (part_.size() >= TWPlanStream::PartSize)
            putPart();
    });
}

void TWFilesPlanner::addItem(TWPlan& plan, const Folder& folder, std::string_view name, const TWFileLook& look)
{
    planner_.add(plan, folder, name, look, cancellation_).rule = rule_;
    ++planned_;
}

void TWFilesPlanner::sayUnreadable(const std::string& path, int error)
{
    part_.addLine(TWReportLine::about(Unreadable, { path, TWErrorText(error) }));
    part_.incomplete = true;
}

void TWFilesPlanner::putPart()
{
    put_(std::exchange(part_, TWPlan()));
}

void TWFilesPlanner::itemsContainingKeywordsAtPath(const Folder& top, bool recursive)
{
    putPart();
    const KeywordVisitor visitor(planner_, keywords_, top, rule_, recursive, cancellation_);
    const auto receive = [this](Found found) {
        planned_ += found.plan.items.size();
        put_(std::move(found.plan));
    };
    const auto end
        = TWWalkTrees<Found>(planner_.fileSystem(), { { top.planned->realPath } }, visitor, receive, cancellation_);
    if (end != TWWalkEnd::Failed)
        return;
    part_.addLine(TWReportLine::about(NotFinished, { top.planned->path }));
    part_.incomplete = true;
}
