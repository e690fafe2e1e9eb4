#include "ui/sheets/TWSheetTable.h"

#include "app/TWEditors.h"
#include "ui/sheets/TWApplicationsSheet.h"
#include "ui/sheets/TWDictionarySheet.h"
#include "ui/sheets/TWFilesSheet.h"
#include "ui/sheets/TWKeepSheet.h"
#include "ui/sheets/TWLogsSheet.h"
#include "ui/sheets/TWRecentItemsSheet.h"
#include "ui/sheets/TWVolumesSheet.h"

#include <algorithm>

namespace {

template <typename Sheet, typename Controller>
std::unique_ptr<TWSheet> make(TWEditors& editors, QWidget* window)
{
    return std::make_unique<Sheet>(editors.get<Controller>(), window);
}

template <typename Sheet, typename Controller>
std::unique_ptr<TWSheet> makeWithKeepList(TWEditors& editors, QWidget* window)
{
    return std::make_unique<Sheet>(editors.get<Controller>(), editors.get<TWKeepWindowController>(), window);
}

std::unique_ptr<TWSheet> makeDictionary(TWEditors& editors, QWidget* window)
{
    return std::make_unique<TWDictionarySheet>(editors.dictionary(), window);
}

// In the order of the Edit menu: that of the cleaners, then the lists that several of them use.
constexpr TWSheetRow Rows[] = {
    { "applications", QT_TRANSLATE_NOOP("TWSheetTable", "&Applications..."),
        make<TWApplicationsSheet, TWApplicationsWindowController> },
    { "recent-items", QT_TRANSLATE_NOOP("TWSheetTable", "&Recent Items Rules..."),
        makeWithKeepList<TWRecentItemsSheet, TWRecentItemsWindowController> },
    { "volumes", QT_TRANSLATE_NOOP("TWSheetTable", "&Volumes..."), make<TWVolumesSheet, TWVolumesWindowController> },
    { "files", QT_TRANSLATE_NOOP("TWSheetTable", "&Files Rules..."),
        makeWithKeepList<TWFilesSheet, TWFilesWindowController> },
    { "logs", QT_TRANSLATE_NOOP("TWSheetTable", "Lo&gs..."), makeWithKeepList<TWLogsSheet, TWLogsWindowController> },
    { "keep", QT_TRANSLATE_NOOP("TWSheetTable", "Keep &List..."), make<TWKeepSheet, TWKeepWindowController> },
    { "dictionary", QT_TRANSLATE_NOOP("TWSheetTable", "&Keyword Dictionary..."), makeDictionary },
};

}

std::span<const TWSheetRow> TWSheetTable()
{
    return Rows;
}

const TWSheetRow* TWSheetNamed(std::string_view editor)
{
    const auto* found
        = std::find_if(std::begin(Rows), std::end(Rows), [&](const TWSheetRow& row) { return row.editor == editor; });
    return found == std::end(Rows) ? nullptr : found;
}
