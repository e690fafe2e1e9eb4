#include "app/TWPreviewBasis.h"

#include "cleaners/TWLogsCleaner.h"
#include "editors/TWApplicationsWindowController.h"
#include "editors/TWFilesWindowController.h"
#include "editors/TWKeepWindowController.h"
#include "editors/TWLogsWindowController.h"
#include "editors/TWRecentItemsWindowController.h"
#include "editors/TWVolumesWindowController.h"

TWPreviewBasis TWPreviewBasis::now(TWTidewellAppDelegate& delegate)
{
    auto& editors = delegate.editors();
    const auto& applications = editors.get<TWApplicationsWindowController>();
    return { delegate.switchedOn(), editors.get<TWFilesWindowController>().rules(),
        editors.get<TWRecentItemsWindowController>().rules(),
        TWLogsCleaner::activeItemsInArray(*editors.get<TWLogsWindowController>().settings()),
        applications.applicationsArray(), applications.forceQuit(), applications.timeout(),
        editors.get<TWVolumesWindowController>().list().records(), editors.dictionary().wordDictionary(),
        editors.get<TWKeepWindowController>().inForce(), delegate.settings().boolean(TWKey::SecurelyDeleteFiles),
        delegate.settings().integer(TWKey::SecurelyDeleteFilesMode) };
}
