#include "app/TWCleanerTable.h"

#include "app/TWEditors.h"
#include "cleaners/TWApplicationsCleaner.h"
#include "cleaners/TWFilesCleaner.h"
#include "cleaners/TWLogsCleaner.h"
#include "cleaners/TWRecentItemsCleaner.h"
#include "cleaners/TWTrashCleaner.h"
#include "cleaners/TWVolumesCleaner.h"
#include "editors/TWApplicationsWindowController.h"
#include "editors/TWDictionaryWindowController.h"
#include "editors/TWFilesWindowController.h"
#include "editors/TWLogsWindowController.h"
#include "editors/TWRecentItemsWindowController.h"
#include "editors/TWVolumesWindowController.h"
#include "support/TWText.h"

#include <algorithm>

namespace {

constexpr auto NoRules = "No rules yet";
constexpr auto RulesOn = "%@ of %@ rules on";
constexpr auto NotSaved = "%@, not saved";
constexpr auto NoLogs = "No logs checked";
constexpr auto LogChecked = "log or folder checked";
constexpr auto LogsChecked = "logs and folders checked";
constexpr auto InTheTrash = "it is in the Trash";
constexpr auto CheckedLog = "it is checked in the logs";
constexpr auto NoApplications = "No applications yet";
constexpr auto NoVolumes = "No volumes checked";
constexpr auto ListedApplication = "it is in the list of applications";
constexpr auto CheckedVolume = "it is checked in the list of volumes";

// By kind of rule, in the order of TWWhatToDelete.
constexpr const char* RuleTexts[]
    = { "%@", "contents of %@", "names with a word in %@", "names with a word in and below %@" };
constexpr auto NumberedRule = "rule %@: %@";
constexpr auto KeysOfFile = "%@ in %@";

std::string noText(const TWSettingsSources&)
{
    return "";
}

TWPlanReasons noReasons(const TWSettingsSources&)
{
    return {};
}

struct Look {
    const char* name;
    const char* title;
    const char* icon;
    TWKey key;
    const char* editor;
    const char* nothing;
};

// Makes a row from the cleaner's class and the function that gathers its settings, so that the two always match.
template <typename Cleaner, auto infoFrom>
TWCleanerRow row(const Look& look, TWPlanReasons (*reasons)(const TWSettingsSources&) = noReasons,
    std::string (*listStatus)(const TWSettingsSources&) = noText,
    std::string (*listWarning)(const TWSettingsSources&) = noText,
    std::string (*watchedFolder)(const TWSettingsSources&) = noText)
{
    return { look.name, look.title, look.icon, look.key, look.editor, look.nothing,
        [](const TWCleanerContext& context) -> std::unique_ptr<TWCleaner> {
            return std::make_unique<Cleaner>(context);
        },
        [](TWCleaner& cleaner, const TWSettingsSources& sources) {
            static_cast<Cleaner&>(cleaner).setInfo(infoFrom(sources));
        },
        listStatus, listWarning, watchedFolder, reasons };
}

// Stands in for a cleaner that is not implemented yet.
class LaterCleaner final : public TWCleaner {
public:
    explicit LaterCleaner(const TWCleanerContext& context)
        : TWCleaner(context.deletion.runLoop)
    {
        setIsActive(false);
    }
    void setInfo(std::nullptr_t) { setIsActive(false); }
    std::unique_ptr<TWRunLoopHandle> makePlan(PlanGrown, PlanMade) const override { return nullptr; }

private:
    void perform(TWPlannedJob) override { }
    void stopPerforming() override { }
    void dropJob() override { }
};

TWCleanerRow laterRow(const char* name, const char* title, const char* icon, TWKey key)
{
    auto later
        = row<LaterCleaner, [](const TWSettingsSources&) { return nullptr; }>({ name, title, icon, key, "", "" });
    later.available = false;
    return later;
}

TWApplicationsCleanerInfo applicationsInfo(const TWSettingsSources& sources)
{
    return sources.editors ? sources.editors->get<TWApplicationsWindowController>().settings()
                           : TWApplicationsCleanerInfo();
}

std::string applicationsStatus(const TWSettingsSources& sources)
{
    const auto& applications = sources.editors->get<TWApplicationsWindowController>();
    const auto count = applications.applicationsArray().size();
    const auto status = count == 0 ? NoApplications : TWText::count(count, "application", "applications");
    return applications.hasUnsavedEdits() ? TWText::fill(NotSaved, { status }) : status;
}

TWPlanReasons applicationsReasons(const TWSettingsSources&)
{
    return { ListedApplication, {}, {}, {} };
}

TWVolumesCleanerInfo volumesInfo(const TWSettingsSources& sources)
{
    return sources.editors ? sources.editors->get<TWVolumesWindowController>().settings() : TWVolumesCleanerInfo();
}

std::string volumesStatus(const TWSettingsSources& sources)
{
    const auto& volumes = sources.editors->get<TWVolumesWindowController>();
    const auto& records = volumes.volumesArray();
    const auto checked
        = std::count_if(records.begin(), records.end(), [](const auto& record) { return record.active; });
    const auto status = checked == 0
        ? NoVolumes
        : TWText::count(static_cast<unsigned long long>(checked), "volume checked", "volumes checked");
    return volumes.hasUnsavedEdits() ? TWText::fill(NotSaved, { status }) : status;
}

TWPlanReasons volumesReasons(const TWSettingsSources&)
{
    return { CheckedVolume, {}, {}, {} };
}

std::string trashInfo(const TWSettingsSources& sources)
{
    return sources.places.abbreviate(sources.places.trash + "/files");
}

std::string trashFolder(const TWSettingsSources& sources)
{
    return sources.places.trash + "/files";
}

TWPlanReasons trashReasons(const TWSettingsSources&)
{
    return { InTheTrash, {}, {}, {} };
}

bool searchesForWords(const TWSettingsSources& sources)
{
    const auto& rules = sources.editors->get<TWFilesWindowController>().rules();
    return std::any_of(
        rules.begin(), rules.end(), [](const TWFilesRule& rule) { return rule.active && rule.needsKeywords(); });
}

TWFilesCleanerInfo filesInfo(const TWSettingsSources& sources)
{
    TWFilesCleanerInfo info;
    if (sources.editors) {
        const auto& files = sources.editors->get<TWFilesWindowController>();
        info.filesArray = files.settings();
        info.wordDictionary = sources.editors->dictionary().wordDictionary();
        info.problems = { files.problem() };
        if (searchesForWords(sources))
            info.problems.push_back(sources.editors->dictionary().problem());
    }
    if (sources.settings.boolean(TWKey::UseAuthorization))
        info.useAuthorization = TWAuthorization::Yes;
    info.securelyDeleteFiles = sources.settings.boolean(TWKey::SecurelyDeleteFiles);
    // Kept on purpose: in a run the Files cleaner learns only whether the low eight bits of the mode are 0, so every
    // stronger mode becomes seven passes.
    info.securelyDeleteFilesMode = (sources.settings.integer(TWKey::SecurelyDeleteFilesMode) & 0xFF) != 0 ? 1 : 0;
    return info;
}

template <typename Rule>
std::string rulesStatus(const std::vector<Rule>& rules)
{
    const auto on = std::count_if(rules.begin(), rules.end(), [](const auto& rule) { return rule.active; });
    return rules.empty() ? NoRules : TWText::fill(RulesOn, { std::to_string(on), std::to_string(rules.size()) });
}

TWRecentItemsCleanerInfo recentItemsInfo(const TWSettingsSources& sources)
{
    if (!sources.editors)
        return {};
    const auto& recentItems = sources.editors->get<TWRecentItemsWindowController>();
    return { recentItems.settings(), { recentItems.problem() } };
}

std::string recentItemsStatus(const TWSettingsSources& sources)
{
    if (!sources.editors)
        return "";
    const auto& recentItems = sources.editors->get<TWRecentItemsWindowController>();
    const auto status = rulesStatus(recentItems.rules());
    return recentItems.hasUnsavedEdits() ? TWText::fill(NotSaved, { status }) : status;
}

TWPlanReasons recentItemsReasons(const TWSettingsSources& sources)
{
    TWPlanReasons reasons;
    for (const auto& rule : sources.editors->get<TWRecentItemsWindowController>().rules()) {
        const auto effect = rule.deleteFile ? rule.filePath : TWText::fill(KeysOfFile, { rule.keys, rule.filePath });
        reasons.rules.push_back(TWText::fill(NumberedRule, { std::to_string(reasons.rules.size() + 1), effect }));
        reasons.names.push_back(rule.source.empty() ? effect : rule.source);
    }
    return reasons;
}

TWLogsCleanerInfo logsInfo(const TWSettingsSources& sources)
{
    if (!sources.editors)
        return {};
    const auto& logs = sources.editors->get<TWLogsWindowController>();
    return { logs.settings(), logs.problem() };
}

std::string logsStatus(const TWSettingsSources& sources)
{
    const auto& logs = sources.editors->get<TWLogsWindowController>();
    const auto checked = TWLogsCleaner::activeItemsInArray(*logs.settings()).size();
    const auto status = checked == 0 ? NoLogs : TWText::count(checked, LogChecked, LogsChecked);
    return logs.hasUnsavedEdits() ? TWText::fill(NotSaved, { status }) : status;
}

TWPlanReasons logsReasons(const TWSettingsSources&)
{
    return { CheckedLog, {}, {}, {} };
}

std::string filesStatus(const TWSettingsSources& sources)
{
    const auto& files = sources.editors->get<TWFilesWindowController>();
    const auto status = rulesStatus(files.rules());
    const bool unsaved
        = files.hasUnsavedEdits() || (searchesForWords(sources) && sources.editors->dictionary().hasUnsavedEdits());
    return unsaved ? TWText::fill(NotSaved, { status }) : status;
}

std::string filesWarning(const TWSettingsSources& sources)
{
    const auto& rules = sources.editors->get<TWFilesWindowController>().rules();
    if (auto warning = TWFilesRuleNotes::warningAboutHome(rules, sources.places); !warning.empty())
        return warning;
    return searchesForWords(sources)
        ? TWFilesRuleNotes::warningAboutWords(sources.editors->dictionary().wordDictionary())
        : "";
}

TWPlanReasons filesReasons(const TWSettingsSources& sources)
{
    TWPlanReasons reasons;
    for (const auto& rule : sources.editors->get<TWFilesWindowController>().rules()) {
        const auto kind = static_cast<std::size_t>(rule.whatToDelete);
        const auto* text = kind < std::size(RuleTexts) ? RuleTexts[kind] : RuleTexts[TWItemItself];
        const auto effect = TWText::fill(text, { rule.filePath });
        reasons.rules.push_back(TWText::fill(NumberedRule, { std::to_string(reasons.rules.size() + 1), effect }));
        reasons.names.push_back(rule.description.empty() ? effect : rule.description);
    }
    reasons.words = sources.editors->dictionary().wordDictionary();
    return reasons;
}

}

const std::array<TWCleanerRow, TWCleanerCount>& TWCleanerTable()
{
    static const std::array<TWCleanerRow, TWCleanerCount> table{ {
        row<TWApplicationsCleaner, applicationsInfo>(
            { "applications", "Applications", "application-exit", TWKey::ApplicationsCleaner, "applications",
                "nothing to quit now" },
            applicationsReasons, applicationsStatus),
        row<TWRecentItemsCleaner, recentItemsInfo>(
            { "recent-items", "Recent Items", "document-open-recent", TWKey::RecentItemsCleaner, "recent-items",
                "nothing to remove now" },
            recentItemsReasons, recentItemsStatus),
        row<TWTrashCleaner, trashInfo>(
            { "trash", "Trash", "user-trash-full", TWKey::TrashCleaner, "", "The Trash is empty" }, trashReasons,
            noText, noText, trashFolder),
        row<TWVolumesCleaner, volumesInfo>({ "volumes", "Volumes", "drive-removable-media", TWKey::VolumesCleaner,
                                               "volumes", "nothing to unmount now" },
            volumesReasons, volumesStatus),
        laterRow("clipboard", "Clipboard", "edit-paste", TWKey::ClipboardCleaner),
        row<TWFilesCleaner, filesInfo>(
            { "files", "Files", "folder", TWKey::FilesCleaner, "files", "nothing to delete now" }, filesReasons,
            filesStatus, filesWarning),
        row<TWLogsCleaner, logsInfo>(
            { "logs", "Logs", "text-x-generic", TWKey::LogsCleaner, "logs", "nothing to delete now" }, logsReasons,
            logsStatus),
        laterRow("safari-tabs", "Safari Tabs", "web-browser", TWKey::SafariTabsCleaner),
    } };
    return table;
}

int TWCleanerPosition(std::string_view name)
{
    const auto& table = TWCleanerTable();
    const auto found = std::find_if(table.begin(), table.end(), [&](const auto& row) { return row.name == name; });
    return found == table.end() ? -1 : static_cast<int>(found - table.begin());
}
