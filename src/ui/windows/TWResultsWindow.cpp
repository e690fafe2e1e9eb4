#include "ui/windows/TWResultsWindow.h"

#include "ui/parts/TWQtText.h"
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
constexpr auto SuggestedName = QT_TRANSLATE_NOOP("TWResultsWindow", "Tidewell Results.txt");

constexpr int IconSize = 16;
constexpr int RowPadding = 8; // above and below the text together

}

TWResultsWindow::TWResultsWindow(TWResultsWindowController& controller, const QString& iconFolder)
    : controller_(controller)
    , model_(new TWResultsModel(controller, iconFolder, this))
    , filter_(new TWResultsFilter(this))
{
    setObjectName("resultsWindow");
    setWindowTitle(tr("Results"));
    setAttribute(Qt::WA_QuitOnClose, false);
    resize(720, 420);
    auto* column = new QVBoxLayout(this);
    column->addLayout(makeFilter());
    makeTable();
    column->addWidget(table_, 1);
    column->addLayout(makeFooter());
    makeActions();
    table_->setFocus();
    linesChanged();
    table_->scrollToBottom();
    controller_.setView(this);
}

TWResultsWindow::~TWResultsWindow()
{
    controller_.setView(nullptr);
}

QHBoxLayout* TWResultsWindow::makeFilter()
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

void TWResultsWindow::makeTable()
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
    // One height for all: no line is measured.
    table_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table_->verticalHeader()->setDefaultSectionSize(std::max(fontMetrics().height(), IconSize) + RowPadding);

    empty_ = new QLabel(table_->viewport());
    empty_->setObjectName("emptyLabel");
    empty_->setAlignment(Qt::AlignCenter);
    empty_->setAttribute(Qt::WA_TransparentForMouseEvents);
    (new QVBoxLayout(table_->viewport()))->addWidget(empty_);
}

QHBoxLayout* TWResultsWindow::makeFooter()
{
    count_ = new QLabel(this);
    count_->setObjectName("countLabel");
    auto* button = new QPushButton(tr("&Save As..."), this);
    button->setObjectName("saveButton");
    button->setAccessibleName(tr("Save the lines as a text file"));
    connect(button, &QPushButton::clicked, this, &TWResultsWindow::saveAs);

    auto* layout = new QHBoxLayout;
    layout->addWidget(count_, 1);
    layout->addWidget(button);
    return layout;
}

void TWResultsWindow::makeActions()
{
    addTableAction("copyAction", tr("&Copy"), QKeySequence::Copy, &TWResultsWindow::copy);
    addTableAction("selectAllAction", tr("Select &All"), QKeySequence::SelectAll, &TWResultsWindow::selectAll);
    table_->setContextMenuPolicy(Qt::ActionsContextMenu);

    auto* save = addTableAction("saveAction", tr("&Save As..."), QKeySequence::Save, &TWResultsWindow::saveAs);
    auto* find = new QAction(tr("&Filter"), this);
    find->setShortcut(QKeySequence::Find);
    connect(find, &QAction::triggered, filterText_, qOverload<>(&QWidget::setFocus));
    auto* close = new QAction(tr("&Close"), this);
    close->setShortcut(QKeySequence::Close);
    connect(close, &QAction::triggered, this, &QWidget::close);
    for (auto* action : { save, find, close }) {
        action->setShortcutContext(Qt::WindowShortcut);
        addAction(action);
    }
}

// In the context menu of the table; Ctrl+C and Ctrl+A mean its lines only while it has the focus.
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
    // Its rows are made anew while it knows no lines, so that a change of the filter costs one walk and not two.
    filter_->setSourceModel(nullptr);
    filter_->setFilter(filterText_->text(), static_cast<TWResultsFilter::Kind>(filterKind_->currentIndex()));
    QAbstractItemModel* shown = model_;
    if (!filter_->letsAllThrough()) {
        filter_->setSourceModel(model_);
        shown = filter_;
    }
    if (table_->model() != shown) {
        // Setting a model makes a new selection model and leaves the old one to us.
        const std::unique_ptr<QItemSelectionModel> old(table_->selectionModel());
        table_->setModel(shown);
    }
    linesChanged();
    table_->scrollToBottom();
}

void TWResultsWindow::messagesRemoved()
{
    model_->messagesRemoved();
    linesChanged();
}

void TWResultsWindow::messagesAdded(std::size_t count)
{
    model_->messagesAdded(count);
    linesChanged();
    table_->scrollToBottom();
}

void TWResultsWindow::linesChanged()
{
    const int all = model_->rowCount();
    const int shown = table_->model()->rowCount();
    empty_->setVisible(shown == 0);
    empty_->setText(tr(all == 0 ? NothingYet : NoMatch));
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
    auto* dialog = new QFileDialog(this, tr("Save Results"));
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
