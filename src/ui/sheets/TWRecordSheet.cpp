#include "ui/sheets/TWRecordSheet.h"

#include "support/TWPath.h"
#include "ui/parts/TWPathChooser.h"
#include "ui/parts/TWQtText.h"
#include "ui/parts/TWRecordPane.h"
#include "ui/parts/TWRecordTable.h"

#include <QHideEvent>
#include <QKeySequence>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QShowEvent>
#include <QToolButton>
#include <QVBoxLayout>

TWRecordSheet::TWRecordSheet(TWRecordEditor& editor, const QString& name, const QString& title, QWidget* parent)
    : TWSheet(name + "Sheet", title, parent)
    , editor_(editor)
    , name_(name)
    , chooser_(new TWPathChooser(this))
    , unsaved_(new QLabel(tr("Not saved; in use until Tidewell quits.")))
{
}

void TWRecordSheet::setRecords(std::vector<TWRecordColumn> columns, Texts texts, QWidget* below)
{
    texts_ = std::move(texts);
    table_ = new TWRecordTable(std::move(columns), [this] { return editor_.recordCount(); });
    pane_ = new TWRecordPane(table_, texts_.add, texts_.remove);
    setIntroduction(texts_.introduction);
    createContent(below);
    createButtons();
}

TWRecordSheet::~TWRecordSheet()
{
    editor_.sheetClosed();
}

void TWRecordSheet::createContent(QWidget* below)
{
    table_->setObjectName(name_ + "TableView");
    table_->setAccessibleName(texts_.records);
    table_->setEmptyText(texts_.empty);
    unsaved_->setObjectName("unsavedLabel");
    unsaved_->setAlignment(Qt::AlignTrailing | Qt::AlignVCenter);
    // Keeps its place while it is hidden, so that nothing moves at the first edit.
    auto policy = unsaved_->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    unsaved_->setSizePolicy(policy);
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(pane_, 1);
    if (below)
        layout->addWidget(below);
    layout->addWidget(unsaved_);
    setContent(content, table_);
    connect(pane_, &TWRecordPane::addRequested, this, &TWRecordSheet::addRecord);
    connect(pane_, &TWRecordPane::removeRequested, this, [this] {
        if (table_->selectedRow() != -1)
            removeRecord(table_->selectedRow());
    });
    connect(table_, &TWRecordTable::filesDropped, this, &TWRecordSheet::addDropped);
    connect(table_, &TWRecordTable::selectedRecordChanged, this, &TWRecordSheet::showUnsaved);
    connect(chooser_, &TWPathChooser::unreadableName, this, &TWRecordSheet::showUnreadableName);
}

void TWRecordSheet::createButtons()
{
    auto* ok = addButton(QDialogButtonBox::Ok, "okPushButton", tr("OK"));
    auto* help = addButton(QDialogButtonBox::Help, "helpPushButton", tr("Help"));
    help->setShortcut(QKeySequence::HelpContents);
    if (editor_.hasDefaults())
        createDefaultsButton();
    setDefaultButton(ok);
    connect(ok, &QPushButton::clicked, this, &TWRecordSheet::ok);
    connect(help, &QPushButton::clicked, this, [this] { editor_.help(); });
}

void TWRecordSheet::createDefaultsButton()
{
    auto* defaults = addButton(tr("Restore &Defaults..."), QDialogButtonBox::ResetRole, "restoreDefaultsPushButton");
    defaults->setAccessibleName(tr("Restore Defaults"));
    connect(defaults, &QPushButton::clicked, this, [this] {
        table_->finishEditing();
        editor_.restoreDefaults();
    });
}

void TWRecordSheet::showEvent(QShowEvent* event)
{
    TWSheet::showEvent(event);
    if (event->spontaneous())
        return;
    setProblem(problem());
    showUnsaved();
    for (int row = 0; !editor_.hasUnsavedEdits() && row < editor_.recordCount(); ++row)
        knownRecords_.insert(table_->description(row));
    editor_.sheetOpened();
}

void TWRecordSheet::hideEvent(QHideEvent* event)
{
    TWSheet::hideEvent(event);
    if (!event->spontaneous())
        editor_.sheetClosed();
}

void TWRecordSheet::ok()
{
    table_->finishEditing();
    if (!editor_.canBeSaved() || !showNewWarnings())
        editor_.ok();
}

// Returns false if the user knows all warnings. Those about records that were saved before are not new.
bool TWRecordSheet::showNewWarnings()
{
    std::vector<int> rows;
    for (const int row : table_->rowsWithWarnings()) {
        if (knownRecords_.insert(table_->description(row)).second)
            rows.push_back(row);
    }
    if (rows.empty())
        return false;
    table_->showRow(rows.front());
    const auto question = rows.size() == 1
        ? tr("The selected row has a warning. Press OK again to save all the same.")
        : tr("%1 rows have warnings. Press OK again to save all the same.").arg(QLocale().toString(rows.size()));
    showMessage(question + ' ' + table_->selectedNote());
    return true;
}

void TWRecordSheet::closeSheet()
{
    accept();
}

void TWRecordSheet::openHelpAnchor(const std::string& anchor)
{
    emit helpRequested(TWQtText::exact(anchor));
}

void TWRecordSheet::reloadTable()
{
    table_->reload();
    setProblem(problem());
}

void TWRecordSheet::notesChanged()
{
    table_->notesChanged();
}

int TWRecordSheet::selectedRow() const
{
    return table_->selectedRow();
}

void TWRecordSheet::selectRow(int row)
{
    table_->showRow(row);
}

void TWRecordSheet::choosePath(
    const std::string& title, const std::string& prompt, std::function<void(std::optional<std::string>)> chosen)
{
    showMessage({});
    const TWPathChooser::Texts texts{ TWQtText::exact(title), TWQtText::exact(prompt) };
    chooser_->choose(pane_->addButton(), texts, editor_.places().home, std::move(chosen));
}

void TWRecordSheet::addDropped(const QList<QUrl>& files)
{
    table_->finishEditing();
    showMessage({});
    std::vector<std::string> paths;
    for (const auto& file : files) {
        if (!file.isLocalFile())
            continue;
        if (const auto path = TWQtText::pathBytes(file.toLocalFile()))
            paths.push_back(TWPath::withoutTrailingSlashes(*path));
        else
            showUnreadableName(file.toLocalFile());
    }
    editor_.addPaths(paths);
}

void TWRecordSheet::showUnreadableName(const QString& path)
{
    showMessage(texts_.unreadableName.arg(path));
}

void TWRecordSheet::showUnsaved()
{
    unsaved_->setVisible(editor_.hasUnsavedEdits());
}
