#include "ui/sheets/TWKeepSheet.h"

#include "support/TWPath.h"
#include "ui/parts/TWPathChooser.h"
#include "ui/parts/TWQtText.h"
#include "ui/parts/TWRecordPane.h"
#include "ui/parts/TWRecordTable.h"

#include <QHideEvent>
#include <QPushButton>
#include <QShowEvent>
#include <QToolButton>

using Kind = TWKeepEntry::Kind;

namespace {

// The preferred size, in characters and lines of text.
constexpr int SheetWidth = 140;
constexpr int SheetHeight = 34;

// The number of kinds of entries.
constexpr int KindCount = 3;

QString kindLabel(std::int64_t kind)
{
    switch (static_cast<Kind>(kind)) {
    case Kind::FolderWithContents:
        return TWKeepSheet::tr("This folder with everything in it");
    case Kind::Names:
        return TWKeepSheet::tr("Everything with such a name");
    default:
        return TWKeepSheet::tr("This item");
    }
}

}

TWKeepSheet::TWKeepSheet(TWKeepWindowController& controller, QWidget* parent)
    : TWSheet("keepSheet", tr("Keep List"), parent)
    , controller_(controller)
    , table_(new TWRecordTable(columns(), [this] { return static_cast<int>(controller_.entries().size()); }))
    , chooser_(new TWPathChooser(this))
{
    setPreferredSize(SheetWidth, SheetHeight);
    setIntroduction(tr("What is on this &list is never deleted, whatever rule or cleaner names it, except from the "
                       "Trash. Changes take effect immediately. OK also saves them."));
    createContent();
    createButtons();
    chooser_->addEntry(tr("Enter a &Name"), [this] { addName(); });
    connect(chooser_, &TWPathChooser::unreadableName, this, &TWKeepSheet::showUnreadableName);
    controller_.setView(this);
}

TWKeepSheet::~TWKeepSheet()
{
    controller_.setView(nullptr);
    controller_.sheetClosed();
}

const TWKeepEntry& TWKeepSheet::entry(int row) const
{
    return controller_.entries()[static_cast<std::size_t>(row)].entry();
}

std::vector<TWRecordColumn> TWKeepSheet::columns()
{
    using Column = TWRecordColumn;
    return {
        Column::path(
            "what", tr("What is kept"), [this](int row) { return entry(row).text; },
            [this](int row, const std::string& text) { controller_.setText(row, text); }),
        Column::choice(
            "how", tr("How"), KindCount, kindLabel,
            [this](int row) { return static_cast<std::int64_t>(entry(row).kind); },
            [this](int row, std::int64_t kind) { controller_.setKind(row, static_cast<Kind>(kind)); }),
        Column::note("note", tr("Note"),
            [this](int row) {
                const auto note = controller_.note(row);
                return TWRecordNote{ TWQtText::shown(note.text), note.warning };
            }),
    };
}

void TWKeepSheet::createContent()
{
    table_->setObjectName("keepTableView");
    table_->setAccessibleName(tr("Keep list"));
    table_->setEmptyText(
        tr("Nothing is kept. Press + to choose a file or folder or to enter a name, or drop a file here."));
    pane_ = new TWRecordPane(table_, tr("Add a file, a folder or a name"), tr("Remove the selected entry"));
    setContent(pane_, table_);
    connect(pane_, &TWRecordPane::addRequested, this, &TWKeepSheet::choose);
    connect(pane_, &TWRecordPane::removeRequested, this, &TWKeepSheet::removeSelected);
    connect(table_, &TWRecordTable::filesDropped, this, &TWKeepSheet::addDropped);
}

void TWKeepSheet::createButtons()
{
    auto* ok = addButton(QDialogButtonBox::Ok, "okPushButton", tr("OK"));
    auto* help = addButton(QDialogButtonBox::Help, "helpPushButton", tr("Help"));
    auto* defaults = addButton(tr("Restore &Defaults..."), QDialogButtonBox::ResetRole, "restoreDefaultsPushButton");
    defaults->setAccessibleName(tr("Restore Defaults"));
    setDefaultButton(ok);
    connect(ok, &QPushButton::clicked, this, [this] {
        table_->finishEditing();
        controller_.ok();
    });
    connect(help, &QPushButton::clicked, this, [this] { controller_.help(); });
    connect(defaults, &QPushButton::clicked, this, [this] {
        table_->finishEditing();
        controller_.restoreDefaults();
    });
}

void TWKeepSheet::showEvent(QShowEvent* event)
{
    TWSheet::showEvent(event);
    if (event->spontaneous())
        return;
    showProblem();
    // If the default list is missing, there is no damaged file that OK would keep.
    if (controller_.list().problem().empty())
        showMessage(TWQtText::shown(controller_.problem()));
    controller_.sheetOpened();
}

void TWKeepSheet::hideEvent(QHideEvent* event)
{
    TWSheet::hideEvent(event);
    if (!event->spontaneous())
        controller_.sheetClosed();
}

void TWKeepSheet::closeSheet()
{
    accept();
}

void TWKeepSheet::openHelpAnchor(const std::string& anchor)
{
    emit helpRequested(TWQtText::exact(anchor));
}

void TWKeepSheet::reloadTable()
{
    table_->reload();
    showProblem();
}

void TWKeepSheet::notesChanged()
{
    table_->notesChanged();
}

void TWKeepSheet::selectRow(int row)
{
    table_->showRow(row);
}

void TWKeepSheet::choose()
{
    showMessage({});
    chooser_->choose(pane_->addButton(), { tr("Select a file or folder to keep"), tr("Choose") },
        controller_.homeFolder(), [this](const std::optional<std::string>& path) {
            if (path)
                controller_.addPath(*path);
        });
}

void TWKeepSheet::addName()
{
    controller_.addEntry({ Kind::Names, "" });
    table_->setFocus();
    table_->edit(table_->currentIndex());
}

void TWKeepSheet::removeSelected()
{
    const int row = table_->selectedRow();
    if (row == -1)
        return;
    const auto removed = controller_.entries()[static_cast<std::size_t>(row)];
    controller_.removeEntry(row);
    offerUndo(tr("The entry \"%1\" was removed.").arg(TWQtText::shown(removed.entry().text)), [this, row, removed] {
        const int place = std::min(row, static_cast<int>(controller_.entries().size()));
        controller_.insertEntry(place, removed);
        table_->showRow(place);
    });
}

void TWKeepSheet::addDropped(const QList<QUrl>& files)
{
    table_->finishEditing();
    showMessage({});
    for (const auto& file : files) {
        if (!file.isLocalFile())
            continue;
        if (const auto path = TWQtText::pathBytes(file.toLocalFile()))
            controller_.addPath(TWPath::withoutTrailingSlashes(*path));
        else
            showUnreadableName(file.toLocalFile());
    }
}

void TWKeepSheet::showProblem()
{
    const auto& problem = controller_.list().problem();
    setProblem(
        problem.empty() ? QString() : tr("%1 Until then nothing at all is deleted.").arg(TWQtText::shown(problem)));
}

void TWKeepSheet::showUnreadableName(const QString& path)
{
    showMessage(tr("The name \"%1\" is not valid UTF-8, so the list cannot hold it. Keep the folder around it instead, "
                   "or enter the name with \"?\" in the place of such bytes.")
                    .arg(path));
}
