#include "ui/sheets/TWFilesSheet.h"

#include "support/TWPath.h"
#include "ui/parts/TWPathChooser.h"
#include "ui/parts/TWQtText.h"
#include "ui/parts/TWRecordPane.h"
#include "ui/parts/TWRecordTable.h"

#include <QHideEvent>
#include <QPushButton>
#include <QShowEvent>
#include <QToolButton>

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

TWFilesSheet::TWFilesSheet(TWFilesWindowController& controller, QWidget* parent)
    : TWSheet("filesSheet", tr("Files"), parent)
    , controller_(controller)
    , table_(new TWRecordTable(columns(), [this] { return static_cast<int>(controller_.rules().size()); }))
    , chooser_(new TWPathChooser(this))
{
    setPreferredSize(SheetWidth, SheetHeight);
    setIntroduction(
        tr("The Files cleaner carries out every active &rule. Changes take effect immediately. OK also saves them."));
    createContent();
    createButtons();
    connect(chooser_, &TWPathChooser::unreadableName, this, &TWFilesSheet::showUnreadableName);
    controller_.setView(this);
}

TWFilesSheet::~TWFilesSheet()
{
    controller_.setView(nullptr);
    controller_.sheetClosed();
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

void TWFilesSheet::createContent()
{
    table_->setObjectName("filesTableView");
    table_->setAccessibleName(tr("Rules"));
    table_->setEmptyText(tr("No rules yet. Press + to choose a file or folder, or drop one here."));
    pane_ = new TWRecordPane(table_, tr("Add a rule"), tr("Remove the selected rule"));
    setContent(pane_, table_);
    connect(pane_, &TWRecordPane::addRequested, this, [this] { controller_.add(); });
    connect(pane_, &TWRecordPane::removeRequested, this, &TWFilesSheet::removeSelected);
    connect(table_, &TWRecordTable::filesDropped, this, &TWFilesSheet::addDropped);
}

void TWFilesSheet::createButtons()
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

void TWFilesSheet::showEvent(QShowEvent* event)
{
    TWSheet::showEvent(event);
    if (event->spontaneous())
        return;
    setProblem(TWQtText::shown(controller_.problem()));
    controller_.sheetOpened();
}

void TWFilesSheet::hideEvent(QHideEvent* event)
{
    TWSheet::hideEvent(event);
    if (!event->spontaneous())
        controller_.sheetClosed();
}

void TWFilesSheet::closeSheet()
{
    accept();
}

void TWFilesSheet::openHelpAnchor(const std::string& anchor)
{
    emit helpRequested(TWQtText::exact(anchor));
}

void TWFilesSheet::reloadTable()
{
    table_->reload();
}

void TWFilesSheet::notesChanged()
{
    table_->notesChanged();
}

int TWFilesSheet::selectedRow() const
{
    return table_->selectedRow();
}

void TWFilesSheet::selectRow(int row)
{
    table_->showRow(row);
}

void TWFilesSheet::choosePath(
    const std::string& title, const std::string& prompt, std::function<void(std::optional<std::string>)> chosen)
{
    showMessage({});
    chooser_->choose(pane_->addButton(), { TWQtText::exact(title), TWQtText::exact(prompt) }, controller_.homeFolder(),
        std::move(chosen));
}

void TWFilesSheet::removeSelected()
{
    const int row = table_->selectedRow();
    if (row == -1)
        return;
    const auto removed = rule(row);
    controller_.remove();
    offerUndo(tr("The rule \"%1\" was removed.").arg(TWQtText::shown(removed.description)), [this, row, removed] {
        const int place = std::min(row, static_cast<int>(controller_.rules().size()));
        controller_.insertRule(place, removed);
        table_->showRow(place);
    });
}

void TWFilesSheet::addDropped(const QList<QUrl>& files)
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

void TWFilesSheet::showUnreadableName(const QString& path)
{
    showMessage(tr("The name \"%1\" is not valid UTF-8, so a rule cannot hold it. Choose the folder around it instead.")
                    .arg(path));
}
