#include "app/TWCleanerTable.h"

#include "cleaners/TWFilesCleaner.h"
#include "cleaners/TWTrashCleaner.h"
#include "editors/TWDictionaryWindowController.h"
#include "editors/TWFilesWindowController.h"

#include <algorithm>

namespace {

// Stands in the run in the place of a cleaner that is not built yet.
class LaterCleaner final : public TWCleaner {
public:
    void clean() override { done(); }
};

std::unique_ptr<TWCleaner> makeLater(const TWCleanerContext&)
{
    return std::make_unique<LaterCleaner>();
}

void giveNothing(TWCleaner&, const TWSettingsSources&) { }

std::unique_ptr<TWCleaner> makeTrash(const TWCleanerContext& context)
{
    return std::make_unique<TWTrashCleaner>(context.deletion, context.settings);
}

void giveTrashInfo(TWCleaner& cleaner, const TWSettingsSources& sources)
{
    static_cast<TWTrashCleaner&>(cleaner).setInfo(sources.places.abbreviate(sources.places.trash + "/files"));
}

std::unique_ptr<TWCleaner> makeFiles(const TWCleanerContext& context)
{
    return std::make_unique<TWFilesCleaner>(context.deletion);
}

void giveFilesInfo(TWCleaner& cleaner, const TWSettingsSources& sources)
{
    TWFilesCleanerInfo info;
    if (sources.files)
        info.filesArray = sources.files->settings();
    if (sources.dictionary)
        info.wordDictionary = sources.dictionary->wordDictionary();
    if (sources.settings.boolean(TWKey::UseAuthorization))
        info.useAuthorization = TWAuthorization::Yes;
    info.securelyDeleteFiles = sources.settings.boolean(TWKey::SecurelyDeleteFiles);
    // Kept on purpose: in a run the Files cleaner sees only whether the low eight bits of the mode are 0, so every
    // stronger mode reaches it as seven passes.
    info.securelyDeleteFilesMode = (sources.settings.integer(TWKey::SecurelyDeleteFilesMode) & 0xFF) != 0 ? 1 : 0;
    static_cast<TWFilesCleaner&>(cleaner).setInfo(std::move(info));
}

}

const std::array<TWCleanerRow, TWCleanerCount>& TWCleanerTable()
{
    static const std::array<TWCleanerRow, TWCleanerCount> table{ {
        { "applications", "Applications", "application-exit", TWKey::ApplicationsCleaner, false, makeLater,
            giveNothing },
        { "recent-items", "Recent Items", "document-open-recent", TWKey::RecentItemsCleaner, false, makeLater,
            giveNothing },
        { "trash", "Trash", "user-trash-full", TWKey::TrashCleaner, true, makeTrash, giveTrashInfo },
        { "volumes", "Volumes", "drive-removable-media", TWKey::VolumesCleaner, false, makeLater, giveNothing },
        { "clipboard", "Clipboard", "edit-paste", TWKey::ClipboardCleaner, false, makeLater, giveNothing },
        { "files", "Files", "folder", TWKey::FilesCleaner, true, makeFiles, giveFilesInfo },
        { "logs", "Logs", "text-x-generic", TWKey::LogsCleaner, false, makeLater, giveNothing },
        { "safari-tabs", "Safari Tabs", "web-browser", TWKey::SafariTabsCleaner, false, makeLater, giveNothing },
    } };
    return table;
}

int TWCleanerPosition(std::string_view name)
{
    const auto& table = TWCleanerTable();
    const auto found = std::find_if(table.begin(), table.end(), [&](const auto& row) { return row.name == name; });
    return found == table.end() ? -1 : static_cast<int>(found - table.begin());
}
