#include "ui/windows/TWResultsWindow.h"

#include "ui/parts/TWControls.h"
#include "ui/parts/TWFocusFrame.h"
#include "ui/parts/TWMessageBar.h"
#include "ui/parts/TWQtText.h"
#include "ui/parts/TWScrollBox.h"
#include "ui/windows/TWResultsFilterBar.h"
#include "ui/windows/TWResultsModel.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
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

constexpr QSize Size(860, 480);
constexpr int IconSize = 16;
constexpr int RowPadding = 8; // above and below the text together, in pixels
constexpr int CleanerPadding = 16; // at both sides of a cleaner's name together, in pixels

int cleanerColumnWidth(const QFontMetrics& metrics)
{
    int widest = 0;
    for (const auto& row : TWCleanerTable())
        widest = std::max(widest, metrics.horizontalAdvance(row.title));
    return widest + CleanerPadding;
}

}

TWResultsWindow::TWResultsWindow(TWResultsWindowController& controller, const TWResultsActions::Context& context,
    const QString& iconFolder, const QString& homeFolder)
    : controller_(controller)
    , homeFolder_(homeFolder)
    , model_(new TWResultsModel(controller, iconFolder, this))
    , filter_(new TWResultsFilter(this))
    , pathActions_(context)
    , filterBar_(new TWResultsFilterBar(controller, iconFolder))
    , messageBar_(new TWMessageBar(TWMessageBar::Kind::Notice, "messageBar"))
{
    setObjectName("resultsWindow");
    setWindowTitle(tr("Results"));
    setAttribute(Qt::WA_QuitOnClose, false);
    resize(TWFitToScreen(*this, Size));
    auto* column = new QVBoxLayout(this);
    createTable();
    createActions();
    column->addWidget(filterBar_);
    column->addWidget(table_, 1);
    column->addWidget(messageBar_);
    column->addLayout(createFooter());
    watchSelection();
    selectionChanged();
    connect(filterBar_, &TWResultsFilterBar::changed, this, &TWResultsWindow::filterChanged);
    connect(filterBar_, &TWResultsFilterBar::nextFailureRequested, this, [this] { showFailure(Direction::Next); });
    table_->setFocus();
    linesChanged();
    followLines();
    new TWFocusFrame(this);
    controller_.setView(this);
}

TWResultsWindow::~TWResultsWindow()
{
    controller_.setView(nullptr);
}

void TWResultsWindow::createTable()
{
    table_ = new QTableView; // no parent yet, because Tab visits widgets in the order in which they get it
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
    table_->setColumnWidth(TWResultsModel::CleanerColumn, cleanerColumnWidth(fontMetrics()));
    // The lines are English and full of paths, whose slashes would change places in a text that runs from right to
    // left.
    table_->setLayoutDirection(Qt::LeftToRight);
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
    saveButton_ = createButton(saveAction_, "saveButton");
    saveButton_->setAccessibleName(tr("Save the shown lines as a text file"));

    auto* layout = new QHBoxLayout;
    layout->addWidget(count_, 1);
    layout->addWidget(createButton(showAction_, "showButton"));
    layout->addWidget(createButton(keepAction_, "keepButton"));
    layout->addWidget(saveButton_);
    return layout;
}

// A button that does the same as the action and is enabled with it.
QPushButton* TWResultsWindow::createButton(QAction* action, const char* name)
{
    auto* button = TWControls::button(action->text(), name, action->text().remove('&'));
    button->setAutoDefault(false);
    button->setEnabled(action->isEnabled());
    connect(button, &QPushButton::clicked, action, &QAction::trigger);
    connect(action, &QAction::enabledChanged, button, &QWidget::setEnabled);
    return button;
}

void TWResultsWindow::createActions()
{
    const auto forTable = [this](const char* name, const QString& text, const QKeySequence& key, auto call) {
        return TWControls::addTableAction(*table_, name, text, { key }, call);
    };
    showAction_ = forTable("showAction", tr("Show in F&older"), Qt::CTRL | Qt::Key_O, [this] { showInFolder(); });
    keepAction_ = forTable("keepAction", tr("&Keep This for Ever"), Qt::CTRL | Qt::Key_K, [this] { keep(); });
    forTable("copyAction", tr("&Copy"), QKeySequence::Copy, [this] { copy(); });
    forTable("selectAllAction", tr("Select &All"), QKeySequence::SelectAll, [this] { table_->selectAll(); });
    saveAction_ = forTable("saveAction", {}, QKeySequence::Save, [this] { saveAs(); });
    saveAction_->setShortcutContext(Qt::WindowShortcut);
    addAction(saveAction_);
    using TWControls::addWindowAction;
    addWindowAction(*this, tr("&Filter"), { QKeySequence::Find }, [this] { filterBar_->focusText(); });
    addWindowAction(*this, tr("&Next Failure"), { Qt::Key_F4 }, [this] { showFailure(Direction::Next); });
    addWindowAction(
        *this, tr("&Previous Failure"), { Qt::SHIFT | Qt::Key_F4 }, [this] { showFailure(Direction::Previous); });
    addWindowAction(*this, tr("&Help"), { QKeySequence::HelpContents }, [this] { emit helpRequested(); });
    addWindowAction(*this, tr("&Close"), { QKeySequence::Close }, [this] { close(); });
}

void TWResultsWindow::filterChanged()
{
    // The filter is changed while it has no model, so that it walks the lines once instead of twice.
    filter_->setSourceModel(nullptr);
    const auto wanted = filterBar_->wanted();
    filter_->setFilter(wanted);
    QAbstractItemModel* shown = model_;
    if (!wanted.isEverything()) {
        filter_->setSourceModel(model_);
        shown = filter_;
    }
    if (table_->model() != shown) {
        // setModel() makes a new selection model and does not delete the old one.
        const std::unique_ptr<QItemSelectionModel> old(table_->selectionModel());
        table_->setModel(shown);
        watchSelection();
    }
    selectionChanged();
    linesChanged();
    followLines();
}

void TWResultsWindow::messagesRemoved()
{
    model_->messagesRemoved();
    say("");
    selectionChanged();
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
    const auto last = table_->model()->index(table_->model()->rowCount() - 1, TWResultsModel::LineColumn);
    table_->selectionModel()->setCurrentIndex(last, QItemSelectionModel::NoUpdate);
    table_->scrollToBottom();
}

void TWResultsWindow::linesChanged()
{
    const int all = model_->rowCount();
    const int shown = table_->model()->rowCount();
    empty_->setVisible(shown == 0);
    empty_->setText(tr(all == 0 ? NothingYet : NoMatch));
    saveButton_->setText(tr(shown == all ? SaveAll : SaveShown));
    saveAction_->setEnabled(shown != 0);
    saveAction_->setText(saveButton_->text());
    filterBar_->refresh();
    if (shown != all)
        count_->setText(tr(LinesOf).arg(locale().toString(shown), locale().toString(all)));
    else
        count_->setText(all == 1 ? tr(OneLine) : tr(Lines).arg(locale().toString(all)));
}

void TWResultsWindow::watchSelection()
{
    connect(table_->selectionModel(), &QItemSelectionModel::selectionChanged, this, &TWResultsWindow::selectionChanged);
}

// Whether the selected line can be acted on. The disk is asked in the background.
void TWResultsWindow::selectionChanged()
{
    const auto path = selectedPath();
    showAction_->setEnabled(!path.empty());
    keepAction_->setEnabled(false);
    pathActions_.dropLook();
    if (!path.empty())
        pathActions_.look(path, [this](bool exists) { keepAction_->setEnabled(exists); });
}

// The path that the current line names; "" if it names none or is not selected, as while the window follows a run.
std::string TWResultsWindow::selectedPath() const
{
    const auto current = table_->currentIndex();
    if (!current.isValid() || !table_->selectionModel()->isRowSelected(current.row()))
        return "";
    const auto line = table_->model() == filter_ ? filter_->mapToSource(current) : current;
    return controller_.messages()[static_cast<std::size_t>(line.row())].namedPath();
}

// Selects the next failure and scrolls so that the lines that explain it are visible as well. Goes round at the end.
void TWResultsWindow::showFailure(Direction direction)
{
    auto failures = shownFailures();
    if (failures.empty()) {
        filterBar_->clear();
        failures = shownFailures();
    }
    if (failures.empty())
        return;
    const auto row = [this](std::size_t line) { return shownIndex(line).row(); };
    const auto current = table_->selectionModel()->hasSelection() ? table_->currentIndex().row() : -1;
    auto found = failures.begin();
    if (direction == Direction::Next) {
        found = std::ranges::upper_bound(failures, current, {}, row);
        found = found == failures.end() ? failures.begin() : found;
    } else {
        found = std::ranges::lower_bound(failures, current, {}, row);
        found = (found == failures.begin() ? failures.end() : found) - 1;
    }
    table_->setFocus();
    const auto failure = shownIndex(*found);
    table_->selectionModel()->setCurrentIndex(failure, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    table_->scrollTo(shownIndex(controller_.firstExplanation(*found)));
    table_->scrollTo(failure);
}

// The lines with failures that the filter lets through.
std::vector<std::size_t> TWResultsWindow::shownFailures() const
{
    auto failures = controller_.failures();
    std::erase_if(failures, [this](std::size_t line) { return !shownIndex(line).isValid(); });
    return failures;
}

// Where the table shows a line of the controller; not valid if it does not.
QModelIndex TWResultsWindow::shownIndex(std::size_t line) const
{
    const auto index = model_->index(static_cast<int>(line), TWResultsModel::LineColumn);
    return table_->model() == filter_ ? filter_->mapFromSource(index) : index;
}

void TWResultsWindow::showInFolder()
{
    say("");
    pathActions_.show(selectedPath(), [this](const std::string& sentence) { say(sentence); });
}

void TWResultsWindow::keep()
{
    say(pathActions_.keep(selectedPath()));
}

void TWResultsWindow::say(const std::string& sentence)
{
    messageBar_->setText(TWQtText::shown(sentence));
    // The bar takes its place from the table.
    layout()->activate();
    if (!selectedPath().empty())
        table_->scrollTo(table_->currentIndex());
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

void TWResultsWindow::saveAs()
{
    const auto saveIn = [this](const QString& path) {
        const auto problem = save(path);
        if (problem.isEmpty())
            return;
        auto* box = new QMessageBox(QMessageBox::Warning, windowTitle(), problem, QMessageBox::Ok, this);
        box->setTextFormat(Qt::PlainText);
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->open();
    };
    TWControls::askWhereToSave(this, "saveFileDialog", tr("Save Results"), homeFolder_, tr(SuggestedName), saveIn);
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
    return table_->model()->index(row, TWResultsModel::LineColumn).data().toString();
}

// No shortcut: an open list hides itself before shortcuts are looked for, so that Escape in it would close the window.
void TWResultsWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Cancel))
        close();
    else if (!TWControls::pressFocused(*this, *event))
        QWidget::keyPressEvent(event);
}
