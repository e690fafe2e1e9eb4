#include "ui/sheets/TWFilesSheet.h"

#include "editors/TWKeepWindowController.h"
#include "ui/parts/TWControls.h"
#include "ui/parts/TWQtText.h"
#include "ui/parts/TWRecordTable.h"

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
    : TWRecordSheet(controller, "files", tr("Files"), parent)
    , controller_(controller)
    , keepList_(keepList)
{
    setPreferredSize(SheetWidth, SheetHeight);
    setRecords(columns(),
        { tr("The Files cleaner carries out every active &rule. Changes take effect immediately. OK also saves them."),
            tr("Rules"), tr("No rules yet. Press + to choose a file or folder, or drop one here."), tr("Add a rule"),
            tr("Remove the selected rule"),
            tr("The name \"%1\" is not valid UTF-8, so a rule cannot hold it. Choose the folder around it instead.") });
    createActions();
    controller_.setView(this);
}

TWFilesSheet::~TWFilesSheet()
{
    controller_.setView(nullptr);
}

const TWFilesRule& TWFilesSheet::rule(int row) const
{
    return controller_.rules()[static_cast<std::size_t>(row)];
}

std::vector<TWRecordColumn> TWFilesSheet::columns()
{
    using Column = TWRecordColumn;
    return {
        Column::check(
            "active", tr("Active"), [this](int row) { return rule(row).active; },
            [this](int row, bool active) { controller_.setActive(row, active); }),
        Column::text(
            "name", tr("Name"), [this](int row) { return rule(row).description; },
            [this](int row, const std::string& name) { controller_.setDescription(row, name); }),
        Column::path(
            "path", tr("Path"), [this](int row) { return rule(row).filePath; },
            [this](int row, const std::string& path) { controller_.setFilePath(row, path); }),
        Column::choice(
            "whatToDelete", tr("What to delete"), KindCount, kindLabel,
            [this](int row) { return rule(row).whatToDelete; },
            [this](int row, std::int64_t kind) { controller_.setWhatToDelete(row, kind); }),
        Column::note("note", tr("Matches now"),
            [this](int row) {
                const auto note = controller_.note(row);
                return TWRecordNote{ TWQtText::shown(note.text), note.warning };
            }),
    };
}

void TWFilesSheet::createActions()
{
    auto* dictionary = addButton(tr("Dictionar&y..."), QDialogButtonBox::ActionRole, "dictionaryPushButton");
    dictionary->setAccessibleName(tr("Dictionary"));
    dictionary->setToolTip(tr("Show and change the words that keyword rules search for"));
    connect(dictionary, &QPushButton::clicked, this, [this] { emit editorRequested("dictionary"); });
    TWControls::addTableAction(
        table(), "keepAction", tr("&Keep What This Rule Names"), { Qt::CTRL | Qt::Key_K }, [this] { keepSelected(); });
}

// The dictionary may have been changed on top of this sheet.
void TWFilesSheet::changeEvent(QEvent* event)
{
    TWRecordSheet::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        controller_.wordsChanged();
}

QString TWFilesSheet::problem() const
{
    return TWQtText::shown(controller_.problem());
}

void TWFilesSheet::addRecord()
{
    controller_.add();
}

void TWFilesSheet::removeRecord(int row)
{
    const auto removed = rule(row);
    controller_.remove();
    offerUndo(tr("The rule \"%1\" was removed.").arg(TWQtText::shown(removed.description)), [this, row, removed] {
        const int place = std::min(row, controller_.recordCount());
        controller_.insertRule(place, removed);
        table().showRow(place);
    });
}

void TWFilesSheet::keepSelected()
{
    const int row = table().selectedRow();
    if (row == -1 || rule(row).filePath.empty())
        return;
    const auto problem = keepList_.keep(controller_.absolutePath(row));
    if (problem.empty())
        showNotice(tr("\"%1\" is on the keep list now.").arg(TWQtText::shown(rule(row).filePath)));
    else
        showMessage(TWQtText::shown(problem));
    controller_.sheetOpened(); // the notes change
}
