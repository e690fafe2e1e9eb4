#include "cleaners/TWRecentItemsPlanner.h"

#include "cleaners/TWPreferenceFile.h"
#include "cleaners/TWRecentItemsTexts.h"
#include "platform/TWAmbiguousPath.h"
#include "platform/TWDanglingLink.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>

using namespace TWRecentItemsTexts;

namespace {

constexpr auto NoFile = "No file specified for %@!";
constexpr auto NoKeys = "No keys specified for %@ while the file isn't marked for deletion!";

constexpr auto Running = "%@ is running. It may write its recent items back when it quits.";
constexpr auto Ambiguous = "Refused to change \"%@\": its \"..\" follows a link or a moved folder, so it means one "
                           "place to the shell and another one here.";
constexpr auto NotLookedAt = "Whether \"%@\" exists could not be found out (%@).";
constexpr auto LeadsNowhere = "a link on the way to it leads nowhere";
constexpr auto NotAPath = "it is not an absolute path";

constexpr std::string_view AnyFolder = "/*/";

}

TWRecentItemsPlanner::TWRecentItemsPlanner(const TWPathPlanner& planner, const TWPlaces& places,
    const TWOtherPrograms& programs, const std::vector<TWRecentItemsRule>& rules, TWPlanStream::Sink& sink)
    : planner_(planner)
    , places_(places)
    , programs_(programs)
    , rules_(rules)
    , sink_(sink)
{
}

void TWRecentItemsPlanner::plan()
{
    for (rule_ = 0; rule_ < rules_.size() && !sink_.cancellation().cancelled(); ++rule_) {
        if (rules_[rule_].active)
            planRule(rules_[rule_]);
        planned_ += static_cast<std::uint32_t>(part_.items.size());
        sink_.put(std::exchange(part_, TWPlan()));
    }
    TWPlan end;
    end.incomplete = fails_ || incomplete_;
    sink_.put(std::move(end));
}

void TWRecentItemsPlanner::say(TWReportLine line, Effect effect)
{
    part_.addLine(std::move(line), effect);
    fails_ = fails_ || effect == Effect::Fails;
    incomplete_ = incomplete_ || effect == Effect::Incomplete;
}

void TWRecentItemsPlanner::sayCannotOpen(const std::string& path, std::string_view reason, Effect effect)
{
    if (!reason.empty())
        say(TWReportLine::about(CannotOpen, { path, reason }));
    say(TWReportLine::about(CouldNotOpen, { path }), effect);
}

// A rule's source may end with a remark in brackets, because it must be unique.
void TWRecentItemsPlanner::sayRunning(const TWRecentItemsRule& rule)
{
    if (rule.source.empty())
        return;
    if (!running_)
        running_ = programs_.applications.running();
    const auto program = rule.source.substr(0, rule.source.find(" ("));
    if (running_->runs(rule.source) || running_->runs(program))
        say(TWText::fill(Running, { program }));
}

void TWRecentItemsPlanner::planRule(const TWRecentItemsRule& rule)
{
    if (rule.filePath.empty()) {
        say(TWText::fill(NoFile, { rule.source }), Effect::Fails);
        return;
    }
    if (!rule.deleteFile && rule.keyNames().empty()) {
        say(TWText::fill(NoKeys, { rule.source }), Effect::Fails);
        return;
    }
    sayRunning(rule);
    int error = 0;
    const auto paths = pathsOf(rule.filePath, error);
    if (error != 0)
        say(TWReportLine::about(NotLookedAt, { rule.filePath, TWErrorText(error) }), Effect::Incomplete);
    for (const auto& path : paths) {
        if (!sink_.cancellation().cancelled())
            planPath(rule, path);
    }
}

void TWRecentItemsPlanner::planPath(const TWRecentItemsRule& rule, const std::string& path)
{
    if (TWIsAmbiguousPath(planner_.fileSystem(), places_, path))
        say(TWReportLine::about(Ambiguous, { path }), Effect::Incomplete);
    else if (rule.deleteFile)
        planFile(path);
    else
        planKeys(rule, path);
}

void TWRecentItemsPlanner::planFile(const std::string& path)
{
    const auto whole = places_.standardize(path);
    const auto sought = planner_.seek(whole);
    if (!sought.isPath) {
        addItem(TWPathPlanner::addNoPath(part_, whole), { path, "", 0 });
        incomplete_ = true;
    } else if (sought.isBehindDanglingLink) {
        say(TWReportLine::about(NotLookedAt, { path, LeadsNowhere }), Effect::Incomplete);
    } else if (sought.look.presence == TWPresence::Gone) {
        say(TWReportLine::about(DoesNotExist, { path }));
    } else if (!sought.look.isThere()) {
        say(TWReportLine::about(NotLookedAt, { path, TWErrorText(sought.look.error) }), Effect::Incomplete);
    } else {
        auto& item = addItem(
            planner_.add(part_, *sought.folder, sought.name, sought.look, sink_.cancellation()), { path, "", 0 });
        fails_ = false;
        incomplete_ = incomplete_ || item.objection;
        if (!item.objection)
            deleted_.insert(part_.realPath(item));
    }
}

// Differs on purpose: a file that does not exist at all is no failure, so that rules may be active for programs that
// are not installed. A link to nowhere is not such a file.
void TWRecentItemsPlanner::planKeys(const TWRecentItemsRule& rule, const std::string& path)
{
    const auto whole = places_.standardize(path);
    if (!whole.starts_with('/')) {
        sayCannotOpen(path, NotAPath, Effect::Fails);
        return;
    }
    int error = 0;
    const auto real = planner_.fileSystem().realPath(whole, TWLinkAtEnd::Follow, &error);
    const auto folder = real
        ? planner_.folder(std::string(TWPath::parent(whole)), std::string(TWPath::parent(*real)), error)
        : std::nullopt;
    if (folder) {
        addKeys(rule, *folder, std::string(TWPath::lastComponent(*real)), path);
        return;
    }
    const bool missing = TWPathPlanner::isMissing(error);
    const bool dangling = missing && TWIsBehindDanglingLink(planner_.fileSystem(), whole);
    if (missing && !dangling)
        sayCannotOpen(path, "", Effect::None);
    else
        sayCannotOpen(path, dangling ? LeadsNowhere : TWErrorText(error), Effect::Fails);
}

void TWRecentItemsPlanner::addKeys(const TWRecentItemsRule& rule, const TWPathPlanner::Folder& folder,
    const std::string& name, const std::string& path)
{
    const auto keys = rule.keyNames();
    const auto found
        = TWPreferenceFile(programs_.files, planner_.fileSystem(), *folder.held, folder.planned->realPath, name)
              .find(keys);
    if (!found.entries.problem.empty()) {
        sayCannotOpen(path, found.missing ? "" : found.entries.problem, found.missing ? Effect::None : Effect::Fails);
        return;
    }
    const auto realPath = TWPath::join(folder.planned->realPath, name);
    const bool isDeleted = deleted_.contains(realPath);
    auto& firsts = keys_[realPath];
    for (std::size_t key = 0; key < keys.size(); ++key) {
        const auto number = planned_ + static_cast<std::uint32_t>(part_.items.size());
        const auto [first, isNew] = firsts.try_emplace(keys[key], number);
        const TWFileLook look{ TWPresence::There, 0, found.facts };
        auto& item = addItem(planner_.add(part_, folder, name, look, sink_.cancellation()),
            { path, keys[key], isNew && !isDeleted ? found.entries.counts[key] : 0 });
        item.action = TWPlannedAction::RemoveEntries;
        item.quiet = part_.changes.back().entries == 0;
        if (!isNew)
            item.owner = first->second;
        incomplete_ = incomplete_ || item.objection;
    }
}

TWPlannedItem& TWRecentItemsPlanner::addItem(TWPlannedItem& item, TWPlannedChange change)
{
    item.rule = rule_;
    item.about = static_cast<std::uint32_t>(part_.changes.size());
    part_.changes.push_back(std::move(change));
    return item;
}

std::vector<std::string> TWRecentItemsPlanner::pathsOf(const std::string& filePath, int& error) const
{
    const auto& fileSystem = planner_.fileSystem();
    const auto wildcard = filePath.find(AnyFolder);
    if (wildcard == filePath.npos || fileSystem.look(places_.standardize(filePath)).presence != TWPresence::Gone)
        return { filePath };
    const auto before = filePath.substr(0, wildcard);
    const auto after = filePath.substr(wildcard + AnyFolder.size());
    const auto real = fileSystem.realPath(places_.standardize(before), TWLinkAtEnd::Follow, &error);
    const auto folder = real ? fileSystem.openFolder(*real, error, &sink_.cancellation()) : nullptr;
    if (!folder && TWPathPlanner::isMissing(error))
        error = 0;
    std::vector<std::string> paths;
    for (const auto& entry : folder ? folder->entries() : std::vector<TWFolderEntry>()) {
        // A link that is met is not entered.
        if (entry.kind != TWFileKind::Folder)
            continue;
        const auto path = before + "/" + std::string(entry.name) + "/" + after;
        if (fileSystem.look(places_.standardize(path)).presence != TWPresence::Gone)
            paths.push_back(path);
    }
    std::sort(paths.begin(), paths.end());
    return paths.empty() && error == 0 ? std::vector{ filePath } : paths;
}
