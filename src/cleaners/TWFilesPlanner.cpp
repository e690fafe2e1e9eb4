#include "cleaners/TWFilesPlanner.h"

#include "platform/TWAmbiguousPath.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>
#include <cerrno>

namespace {

constexpr auto AlreadyDeleted = "Item %@ already deleted";
constexpr auto NoSuchFolder = "Folder %@ does not exist!";
constexpr auto NotAFolder = "The specified path (%@) is not a folder!";
constexpr auto Ambiguous
    = "Refused to delete \"%@\": its \"..\" follows a link, so it means one place to the shell and another one here.";
constexpr auto Unreadable = "The folder %@ could not be read (%@).";
constexpr auto SkippingBundle = "Skipping Bundle ";
constexpr auto NotSearched = "The folder %@ could not be searched.";
constexpr auto MountMet = "The folder %@ was not searched, because a volume is mounted there.";
constexpr auto NothingToDelete = "No files to delete in %@";

constexpr std::size_t EntriesBetweenQuestions = 256; // about cancellation

bool needsKeywords(const std::vector<TWFilesRule>& rules)
{
    return std::any_of(
        rules.begin(), rules.end(), [](const auto& rule) { return rule.active && rule.needsKeywords(); });
}

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

// False if the whole planning ends here.
bool TWFilesPlanner::planRule(const TWFilesRule& rule)
{
    const auto path = places_.standardize(rule.filePath);
    const bool needsFolder = rule.whatToDelete == TWFolderContents || rule.needsKeywords();
    if (rule.whatToDelete != TWItemItself && !needsFolder)
        return true;
    if (TWIsAmbiguousPath(planner_.fileSystem(), places_.expand(rule.filePath))) {
        part_.addLine(TWText::fill(Ambiguous, { rule.filePath }));
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
    const std::string name(TWPath::lastComponent(path));
    if (!path.starts_with('/') || name.empty()) {
        auto& item = part_.addItem(path);
        item.objection = TWDeletionRules::objectionToPath(path);
        item.rule = rule_;
        ++planned_;
        return;
    }
    const std::string parent(TWPath::parent(path));
    int error = 0;
    const auto folder = planner_.folderThroughLinks(parent, error);
    const auto look = folder ? folder->held->look(name) : TWFileLook{};
    const bool gone = folder ? look.presence == TWPresence::Gone : error == ENOENT || error == ENOTDIR;
    if (gone)
        part_.addLine(TWText::fill(AlreadyDeleted, { path }));
    else if (folder)
        addItem(part_, *folder, name, look);
    else
        sayUnreadable(parent, error);
}

// False if the whole planning ends here.
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
    // Kept on purpose: this looks at everything planned so far, not at this rule's share.
    if (planned_ == 0)
        part_.addLine(TWText::fill(NothingToDelete, { path }));
    return true;
}

void TWFilesPlanner::planContents(const Folder& folder)
{
    int error = 0;
    const auto open = planner_.list(folder, error);
    if (!open) {
        sayUnreadable(folder.planned->path, error);
        return;
    }
    std::size_t steps = 0;
    for (const auto& entry : open->entries()) {
        if (++steps % EntriesBetweenQuestions == 0 && cancellation_.cancelled())
            return;
        addItem(part_, folder, entry.name, open->look(entry));
        if (part_.size() >= TWPlanStream::PartSize)
            putPart();
    }
}

void TWFilesPlanner::addItem(TWPlan& plan, const Folder& folder, std::string_view name, const TWFileLook& look)
{
    planner_.add(plan, folder, name, look).rule = rule_;
    ++planned_;
}

void TWFilesPlanner::sayUnreadable(const std::string& path, int error)
{
    part_.addLine(TWText::fill(Unreadable, { path, TWErrorText(error) }));
    part_.incomplete = true;
}

void TWFilesPlanner::putPart()
{
    put_(std::exchange(part_, TWPlan()));
}

// TEMPORARY
void TWFilesPlanner::itemsContainingKeywordsAtPath(const Folder& top, bool recursive)
{
    struct Level {
        Folder folder;
        std::unique_ptr<TWOpenFolder> open;
        std::size_t next = 0;
    };
    std::vector<Level> levels;
    int error = 0;
    auto open = planner_.list(top, error);
    if (!open) {
        sayUnreadable(top.planned->path, error);
        return;
    }
    levels.push_back({ top, std::move(open) });
    while (!levels.empty() && !cancellation_.cancelled()) {
        auto& level = levels.back();
        if (level.next == level.open->entries().size()) {
            levels.pop_back();
            continue;
        }
        const auto& entry = level.open->entries()[level.next++];
        const auto path = level.folder.planned->path + "/" + std::string(entry.name);
        if (level.open->isPackage()) {
            part_.addLine(SkippingBundle + path);
        } else if (const auto word = keywords_.firstMatch(entry.name)) {
            addItem(part_, level.folder, entry.name, level.open->look(entry));
            part_.items.back().word = static_cast<std::uint32_t>(*word);
        } else if (recursive && entry.kind == TWFileKind::Folder) {
            auto child = level.open->openFolder(entry, error);
            auto folder = child
                ? planner_.folder(path, level.folder.planned->realPath + "/" + std::string(entry.name), error)
                : std::nullopt;
            if (folder) {
                levels.push_back({ *folder, std::move(child) });
            } else if (error == EXDEV) {
                part_.addLine(TWText::fill(MountMet, { path }));
            } else {
                part_.addLine(TWText::fill(NotSearched, { path }));
                part_.incomplete = true;
            }
        }
        if (part_.size() >= TWPlanStream::PartSize)
            putPart();
    }
}
