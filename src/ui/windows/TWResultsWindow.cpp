#include "ui/windows/TWResultsWindow.h"

#include "ui/parts/TWQtText.h"
#include "ui/parts/TWScrollBox.h"
#include "ui/windows/TWResultsModel.h"

#include <QAction>
#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSaveFile>
#include <QTableView>

#include <algorithm>
#include <memory>

namespace {

constexpr auto NothingYet = QT_TRANSLATE_NOOP("TWResultsWindow", "Nothing has been cleaned yet.");
constexpr auto NoMatch = QT_TRANSLATE_NOOP("TWResultsWindow", "No line matches the filter.");
constexpr auto Lines = QT_TRANSLATE_NOOP("TWResultsWindow", "%1 lines");
constexpr auto OneLine = QT_TRANSLATE_NOOP("TWResultsWindow", "1 line");
constexpr auto LinesOf = QT_TRANSLATE_NOOP("TWResultsWindow", "%1 of %2 lines");
constexpr auto NotSaved
    = QT_TRANSLATE_NOOP("TWResultsWindow", "\"%1\" could not be saved (%2). Please choose another folder.");
constexpr auto SaveAll = QT_TRANSLATE_NOOP("TWResultsWindow", "&Save As...");
constexpr auto SaveShown = QT_TRANSLATE_NOOP("TWResultsWindow", "&Save Shown Lines As...");
constexpr auto SuggestedName = QT_TRANSLATE_NOOP("TWResultsWindow", "Tidewell Results.txt");

constexpr QSize Size(720, 420);
constexpr int IconSize = 16;
constexpr int RowPadding = 8; // above and below the text together, in pixels

}

TWResultsWindow::TWResultsWindow(
    TWResultsWindowController& controller, const QString& iconFolder, const QString& homeFolder)
    : controller_(controller)
    , homeFolder_(homeFolder)
    , model_(new TWResultsModel(controller, iconFolder, this))
    , filter_(new TWResultsFilter(this))
{
    setObjectName("resultsWindow");
    setWindowTitle(tr("Results"));
    setAttribute(Qt::WA_QuitOnClose, false);
    resize(TWFitToScreen(*this, Size));
    auto* column = new QVBoxLayout(this);
    column->addLayout(createFilter());
    createTable();
    column->addWidget(table_, 1);
    column->addLayout(createFooter());
    createActions();
    table_->setFocus();
    linesChanged();
    followLines();
    controller_.setView(this);
}

TWResultsWindow::~TWResultsWindow()
{
    controller_.setView(nullptr);
}

QLayout* TWResultsWindow::createFilter()
{
    filterText_ = new QLineEdit(this);
    filterText_->setObjectName("filterLineEdit");
    filterText_->setAccessibleName(tr("Filter"));
    filterText_->setPlaceholderText(tr("Filter"));
    filterText_->setClearButtonEnabled(true);
    filterKind_ = new QComboBox(this);
    filterKind_->setObjectName("kindComboBox");
    filterKind_->setAccessibleName(tr("Kind of lines"));
    filterKind_->addItems({ tr("All"), tr("Failures") }); // in the order of TWResultsFilter::Kind
    connect(filterText_, &QLineEdit::textChanged, this, &TWResultsWindow::filterChanged);
    connect(filterKind_, &QComboBox::currentIndexChanged, this, &TWResultsWindow::filterChanged);

    auto* layout = new QHBoxLayout;
    layout->addWidget(filterText_, 1);
    layout->addWidget(filterKind_);
    return layout;
}

void TWResultsWindow::createTable()
{
    table_ = new QTableView(this);
    table_->setObjectName("resultsTableView");
    table_->setAccessibleName(tr("Results"));
    table_->setModel(model_);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->setTabKeyNavigation(false);
    table_->setTextElideMode(Qt::ElideMiddle);
    table_->setWordWrap(false);
    table_->setShowGrid(false);
    table_->setIconSize({ IconSize, IconSize });
    table_->horizontalHeader()->hide();
    table_->horizontalHeader()->setStretchLastSection(true);
    table_->verticalHeader()->hide();
    // All lines have the same height, so that none has to be measured.
    table_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table_->verticalHeader()->setDefaultSectionSize(std::max(fontMetrics().height(), IconSize) + RowPadding);

    empty_ = new QLabel(table_->viewport());
    empty_->setObjectName("emptyLabel");
    empty_->setAlignment(Qt::AlignCenter);
    empty_->setAttribute(Qt::WA_TransparentForMouseEvents);
    (new QVBoxLayout(table_->viewport()))->addWidget(empty_);
}

QLayout* TWResultsWindow::createFooter()
{
    count_ = new QLabel(this);
    count_->setObjectName("countLabel");
    saveButton_ = new QPushButton(this);
    saveButton_->setObjectName("saveButton");
    saveButton_->setAccessibleName(tr("Save the shown lines as a text file"));
    connect(saveButton_, &QPushButton::clicked, this, &TWResultsWindow::saveAs);

    auto* layout = new QHBoxLayout;
    layout->addWidget(count_, 1);
    layout->addWidget(saveButton_);
    return layout;
}

void TWResultsWindow::createActions()
{
    addTableAction("copyAction", tr("&Copy"), QKeySequence::Copy, &TWResultsWindow::copy);
    addTableAction("selectAllAction", tr("Select &All"), QKeySequence::SelectAll, &TWResultsWindow::selectAll);
    saveAction_ = addTableAction("saveAction", {}, QKeySequence::Save, &TWResultsWindow::saveAs);
    saveAction_->setShortcutContext(Qt::WindowShortcut);
    addAction(saveAction_);
    table_->setContextMenuPolicy(Qt::ActionsContextMenu);
    addWindowAction(tr("&Filter"), { QKeySequence::Find }, [this] { filterText_->setFocus(); });
    addWindowAction(tr("&Close"), { QKeySequence::Close, QKeySequence::Cancel }, [this] { close(); });
}

void TWResultsWindow::addWindowAction(
    const QString& text, const QList<QKeySequence>& shortcuts, std::function<void()> call)
{
    auto* action = new QAction(text, this);
    action->setShortcuts(shortcuts);
    connect(action, &QAction::triggered, this, std::move(call));
    addAction(action);
}

// Adds an entry to the table's context menu. Its shortcut works only while the table has the focus.
QAction* TWResultsWindow::addTableAction(
    const char* name, const QString& text, const QKeySequence& shortcut, void (TWResultsWindow::*call)())
{
    auto* action = new QAction(text, this);
    action->setObjectName(name);
    action->setShortcut(shortcut);
    action->setShortcutContext(Qt::WidgetShortcut);
    connect(action, &QAction::triggered, this, call);
    table_->addAction(action);
    return action;
}

void TWResultsWindow::filterChanged()
{
    // The filter is changed while it has no model, so that it walks the lines once instead of twice.
    filter_->setSourceModel(nullptr);
    filter_->setFilter(filterText_->text(), static_cast<TWResultsFilter::Kind>(filterKind_->currentIndex()));
    QAbstractItemModel* shown = model_;
    if (!filter_->letsAllThrough()) {
        filter_->setSourceModel(model_);
        shown = filter_;
    }
    if (table_->model() != shown) {
        // setModel() makes a new selection model and does not delete the old one.
        const std::unique_ptr<QItemSelectionModel> old(table_->selectionModel());
        table_->setModel(shown);
    }
    linesChanged();
    followLines();
}

void TWResultsWindow::messagesRemoved()
{
    model_->messagesRemoved();
    linesChanged();
}

void TWResultsWindow::messagesAdded(std::size_t count)
{
    // Until the user moves to another line or selects one.
    const bool following = !table_->currentIndex().isValid()
        || (table_->currentIndex().row() == table_->model()->rowCount() - 1
            && !table_->selectionModel()->hasSelection());
    const auto firstNew = controller_.messages().begin() + model_->rowCount();
    model_->messagesAdded(count);
    const bool failed = std::any_of(firstNew, controller_.messages().end(),
        [](const TWMessage& message) { return message.type == TWMessageType::Failure; });
    if (failed && filter_->sourceModel())
        filter_->renew();
    linesChanged();
    if (following)
        followLines();
    else
        table_->scrollToBottom();
}

// Makes the last line the current one, so that the arrow keys start there, and scrolls to it.
void TWResultsWindow::followLines()
{
    const auto last = table_->model()->index(table_->model()->rowCount() - 1, 0);
    table_->selectionModel()->setCurrentIndex(last, QItemSelectionModel::NoUpdate);
    table_->scrollToBottom();
}

void TWResultsWindow::linesChanged()
{
    const int all = model_->rowCount();
    const int shown = table_->model()->rowCount();
    empty_->setVisible(shown == 0);
    empty_->setText(tr(all == 0 ? NothingYet : NoMatch));
    saveButton_->setEnabled(shown != 0);
    saveButton_->setText(tr(shown == all ? SaveAll : SaveShown));
    saveAction_->setEnabled(shown != 0);
    saveAction_->setText(saveButton_->text());
    if (shown != all)
        count_->setText(tr(LinesOf).arg(locale().toString(shown), locale().toString(all)));
    else
        count_->setText(all == 1 ? tr(OneLine) : tr(Lines).arg(locale().toString(all)));
}

void TWResultsWindow::copy()
{
    std::vector<int> rows;
    for (const auto& range : table_->selectionModel()->selection()) {
        for (int row = range.top(); row <= range.bottom(); ++row)
            rows.push_back(row);
    }
    std::sort(rows.begin(), rows.end());
    QStringList lines;
    for (const int row : rows)
        lines += lineAt(row);
    QGuiApplication::clipboard()->setText(lines.join('\n'));
}

void TWResultsWindow::selectAll()
{
    table_->selectAll();
}

void TWResultsWindow::saveAs()
{
    auto* dialog = new QFileDialog(this, tr("Save Results"), homeFolder_);
    dialog->setObjectName("saveFileDialog");
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix("txt");
    dialog->selectFile(tr(SuggestedName));
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& path) {
        const auto problem = save(path);
        if (problem.isEmpty())
            return;
        auto* box = new QMessageBox(QMessageBox::Warning, windowTitle(), problem, QMessageBox::Ok, this);
        box->setTextFormat(Qt::PlainText);
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->open();
    });
    dialog->open();
}

QString TWResultsWindow::save(const QString& path) const
{
    QSaveFile file(path);
    bool saved = file.open(QIODevice::WriteOnly);
    for (int row = 0; saved && row < table_->model()->rowCount(); ++row)
        file.write(lineAt(row).toUtf8() + '\n');
    saved = saved && file.commit();
    return saved ? QString() : tr(NotSaved).arg(path, file.errorString());
}

QString TWResultsWindow::lineAt(int row) const
{
    return table_->model()->index(row, 0).data().toString();
}
