#include "ui/sheets/TWFilesSheet.h"

#include <QEvent>
#include <QPushButton>

namespace {

// The preferred size, in characters and lines of text.
constexpr int SheetWidth = 180;
constexpr int SheetHeight = 34;

// The number of kinds in TWWhatToDelete.
constexpr int KindCount = 4;

QString kindLabel(std::int64_t kind)
{
    switch (kind) {
    case TWItemItself:
        return TWFilesSheet::tr("The item itself");
    case TWFolderContents:
        return TWFilesSheet::tr("The folder's contents");
    case TWItemsWithKeywords:
        return TWFilesSheet::tr("Items named with keywords");
    case TWItemsWithKeywordsDeep:
        return TWFilesSheet::tr("Items named with keywords, in subfolders too");
    default:
        return TWFilesSheet::tr("Nothing (kind %1)").arg(kind);
    }
}

}

TWFilesSheet::TWFilesSheet(TWFilesWindowController& controller, TWKeepWindowController& keepList, QWidget* parent)
    : TWRulesSheet(controller, keepList, "files", tr("Files"), parent)
{
    setPreferredSize(SheetWidth, SheetHeight);
    setRules(columns(),
        { tr("The Files cleaner carries out every active &rule. Changes take effect immediately. OK also saves them."),
            tr("Rules"), tr("No rules yet. Press + to choose a file or folder, or drop one here."), tr("Add a rule"),
            tr("Remove the selected rule"),
            tr("The name \"%1\" is not valid UTF-8, so a rule cannot hold it. Choose the folder around it instead.") });
    createDictionaryButton();
    controller.setView(this);
}

TWFilesSheet::~TWFilesSheet()
{
    controller().setView(nullptr);
}

std::vector<TWRecordColumn> TWFilesSheet::columns()
{
    using Column = TWRecordColumn;
    return {
        activeColumn(),
        Column::text(
            "name", tr("Name"), [this](int row) { return rule(row).description; },
            [this](int row, const std::string& name) { controller().setDescription(row, name); }),
        Column::path(
            "path", tr("Path"), [this](int row) { return rule(row).filePath; },
            [this](int row, const std::string& path) { controller().setFilePath(row, path); }),
        Column::choice(
            "whatToDelete", tr("What to delete"), KindCount, kindLabel,
            [this](int row) { return rule(row).whatToDelete; },
            [this](int row, std::int64_t kind) { controller().setWhatToDelete(row, kind); }),
        noteColumn(),
    };
}

void TWFilesSheet::createDictionaryButton()
{
    auto* dictionary = addButton(tr("Dictionar&y..."), QDialogButtonBox::ActionRole, "dictionaryPushButton");
    dictionary->setAccessibleName(tr("Dictionary"));
    dictionary->setToolTip(tr("Show and change the words that keyword rules search for"));
    connect(dictionary, &QPushButton::clicked, this, [this] { emit editorRequested("dictionary"); });
}

// The dictionary may have been changed on top of this sheet.
void TWFilesSheet::changeEvent(QEvent* event)
{
    TWRulesSheet::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        controller().wordsChanged();
}
