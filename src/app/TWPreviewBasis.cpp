#include "app/TWPreviewBasis.h"

#include "editors/TWFilesWindowController.h"
#include "editors/TWKeepWindowController.h"
#include "editors/TWRecentItemsWindowController.h"

TWPreviewBasis TWPreviewBasis::now(TWTidewellAppDelegate& delegate)
{
    auto& editors = delegate.editors();
    return { delegate.switchedOn(), editors.get<TWFilesWindowController>().rules(),
        editors.get<TWRecentItemsWindowController>().rules(), editors.dictionary().wordDictionary(),
        editors.get<TWKeepWindowController>().inForce(), delegate.settings().boolean(TWKey::SecurelyDeleteFiles),
        delegate.settings().integer(TWKey::SecurelyDeleteFilesMode) };
}
