#include "ui/windows/TWPreviewWindow.h"

#include "support/TWText.h"
#include "ui/parts/TWControls.h"
#include "ui/parts/TWFocusFrame.h"
#include "ui/parts/TWMessageBar.h"
#include "ui/parts/TWQtText.h"
#include "ui/parts/TWQuietLabel.h"
#include "ui/parts/TWScrollBox.h"
#include "ui/parts/TWSpinner.h"
#include "ui/windows/TWContentsDialog.h"
#include "ui/windows/TWPreviewCellDelegate.h"
#include "ui/windows/TWPreviewModel.h"
#include "ui/windows/TWPreviewTree.h"

#include <QAction>
#include <QComboBox>
#include <QEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QSplitter>
#include <QStyle>
#include <QTableView>
#include <QVBoxLayout>

#include <utility>

namespace {

constexpr auto HelpPage = "Preview";
constexpr auto SuggestedName = QT_TRANSLATE_NOOP("TWPreviewWindow", "Tidewell Preview.csv");
constexpr auto Detail = QT_TRANSLATE_NOOP("TWPreviewWindow", "%1 \u2014 %2");
constexpr auto CleanItems = QT_TRANSLATE_NOOP("TWPreviewWindow", "&Clean %1");
constexpr auto Clean = QT_TRANSLATE_NOOP("TWPreviewWindow", "&Clean");
constexpr auto KeepHint
    = QT_TRANSLATE_NOOP("TWPreviewWindow", "Never delete the selected items: puts them on the keep list");
constexpr auto NoKeepHint = QT_TRANSLATE_NOOP(
    "TWPreviewWindow", "Select items to keep. What is in the Trash, or kept already, cannot be put on the keep list.");
constexpr auto CloseAnyway = QT_TRANSLATE_NOOP("TWPreviewWindow", "Close the preview?");
constexpr auto RefreshAnyway = QT_TRANSLATE_NOOP("TWPreviewWindow", "Make a new preview?");
constexpr auto LoseTicksText = QT_TRANSLATE_NOOP(
    "TWPreviewWindow", "You have changed ticks. They hold for this preview only and would be lost.");
constexpr auto Exported = QT_TRANSLATE_NOOP("TWPreviewWindow", "The items that the table shows were saved in \"%1\".");
constexpr auto NotUTF8
    = QT_TRANSLATE_NOOP("TWPreviewWindow", "A file with this name cannot be written here. Please choose another one.");

constexpr QSize Preferred(980, 600); // in pixels
constexpr int TreePercent = 33; // of the window's width
constexpr double ReasonShare = 0.45; // of the width that paths and reasons share
constexpr int ReasonPadding = 8;
constexpr int RowPadding = 8;
constexpr int IconSize = 16;
constexpr int SizeWidth = 10; // in characters
constexpr int AgeWidth = 8;

// In the order of the table's columns.
constexpr TWPreviewOrder Orders[]
    = { TWPreviewOrder::Path, TWPreviewOrder::Size, TWPreviewOrder::Age, TWPreviewOrder::Plan };

}

TWPreviewWindow::TWPreviewWindow(TWTidewellAppDelegate& delegate)
    : delegate_(delegate)
    , controller_(delegate)
    , model_(new TWPreviewModel(controller_, this))
    , tree_(new TWPreviewTree(controller_, this))
    , notice_(new TWMessageBar(TWMessageBar::Kind::Notice, "noticeBar", tr("&Refresh")))
    , warnings_(new TWMessageBar(TWMessageBar::Kind::Warning, "warningBar"))
    , message_(new TWMessageBar(TWMessageBar::Kind::Notice, "messageBar"))
{
    setObjectName("previewWindow");
    setWindowTitle(tr("Preview"));
    auto* splitter = new QSplitter;
    splitter->setObjectName("splitter");
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(tree_);
    splitter->addWidget(createRight());
    splitter->setStretchFactor(1, 1);
    auto* layout = new QVBoxLayout(this);
    for (auto* bar : { notice_, warnings_, message_ })
        layout->addWidget(bar);
    layout->addWidget(splitter, 1);
    layout->addLayout(createFooter());
    createActions();
    connect(notice_, &TWMessageBar::pressed, this, &TWPreviewWindow::refresh);
    connect(tree_, &TWPreviewTree::chosen, this, &TWPreviewWindow::limit);
    setGeometry(QStyle::alignedRect(
        layoutDirection(), Qt::AlignCenter, TWFitToScreen(*this, Preferred), screen()->availableGeometry()));
    new TWFocusFrame(this);
    const int treeWidth = width() * TreePercent / 100;
    splitter->setSizes({ treeWidth, width() - treeWidth });
    controller_.setView(this);
}

TWPreviewWindow::~TWPreviewWindow()
{
    controller_.setView(nullptr);
}

QWidget* TWPreviewWindow::createRight()
{
    auto* right = new QWidget;
    filterText_ = new QLineEdit;
    filterText_->setObjectName("filterLineEdit");
    filterText_->setAccessibleName(tr("Show only items whose path contains this text"));
    filterText_->setPlaceholderText(tr("Filter"));
    filterText_->setClearButtonEnabled(true);
    connect(filterText_, &QLineEdit::textChanged, this, &TWPreviewWindow::filter);
    shown_ = new QComboBox;
    shown_->setObjectName("shownComboBox");
    shown_->setAccessibleName(tr("Show only items with this fate"));
    shown_->addItems({ tr("All"), tr("Would Be Deleted"), tr("Would Stay") }); // in the order of TWPreviewShown
    connect(shown_, &QComboBox::currentIndexChanged, this, &TWPreviewWindow::filter);
    keepButton_ = TWControls::button(tr("&Keep"), "keepButton", tr("Put the selected items on the keep list"));
    connect(keepButton_, &QPushButton::clicked, this, &TWPreviewWindow::keepSelected);
    createTable();
    detail_ = new TWQuietLabel(right);
    detail_->setObjectName("detailLabel");
    detail_->setMinimumHeight(2 * fontMetrics().height()); // so that the table keeps its height

    auto* top = new QHBoxLayout;
    top->addWidget(filterText_, 1);
    top->addWidget(shown_);
    top->addWidget(keepButton_);
    auto* layout = new QVBoxLayout(right);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(top);
    layout->addWidget(table_, 1);
    layout->addWidget(detail_);
    return right;
}

void TWPreviewWindow::createTable()
{
    table_ = new QTableView;
    table_->setObjectName("itemsTableView");
    table_->setAccessibleName(tr("Items"));
    table_->setModel(model_);
    table_->setItemDelegate(new TWPreviewCellDelegate(table_));
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->setTabKeyNavigation(false);
    table_->setAlternatingRowColors(true);
    table_->setShowGrid(false);
    table_->setWordWrap(false);
    table_->setIconSize({ IconSize, IconSize });
    // All rows have the same height, so that none has to be measured.
    table_->verticalHeader()->hide();
    table_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table_->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + RowPadding);
    connect(table_->selectionModel(), &QItemSelectionModel::selectionChanged, this, &TWPreviewWindow::showSelection);
    connect(table_->selectionModel(), &QItemSelectionModel::currentChanged, this, [this](const QModelIndex& index) {
        if (index.isValid())
            current_ = model_->rowAt(index);
        showSelection();
    });

    empty_ = new QLabel(table_->viewport());
    empty_->setObjectName("emptyLabel");
    empty_->setAlignment(Qt::AlignCenter);
    empty_->setWordWrap(true);
    empty_->setTextFormat(Qt::PlainText);
    empty_->setAttribute(Qt::WA_TransparentForMouseEvents);
    (new QVBoxLayout(table_->viewport()))->addWidget(empty_);
    createColumns();
}

void TWPreviewWindow::createColumns()
{
    auto& header = *table_->horizontalHeader();
    header.setHighlightSections(false);
    header.setSectionResizeMode(TWPreviewModel::Path, QHeaderView::Stretch);
    header.resizeSection(TWPreviewModel::Size, SizeWidth * fontMetrics().averageCharWidth());
    header.resizeSection(TWPreviewModel::Age, AgeWidth * fontMetrics().averageCharWidth());
    header.setSectionsClickable(true);
    header.setSortIndicator(-1, Qt::AscendingOrder);
    header.setResizeContentsPrecision(0); // measures only the rows on screen
    header.setSortIndicatorShown(true);
    connect(&header, &QHeaderView::sortIndicatorChanged, this, &TWPreviewWindow::sort);
    reasonShare_ = ReasonShare;
    connect(&header, &QHeaderView::sectionResized, this, [this](int column, int, int width) {
        if (column == TWPreviewModel::Why && !fitting_ && sharedWidth() > 0)
            reasonShare_ = double(width) / sharedWidth();
    });
    // The header would ask row by row whether a whole column is selected.
    header.setSelectionModel(new QItemSelectionModel(model_, &header));
    table_->viewport()->installEventFilter(this);
    table_->installEventFilter(this);
    connect(table_->verticalScrollBar(), &QScrollBar::valueChanged, this, &TWPreviewWindow::fitReasons);
}

int TWPreviewWindow::sharedWidth() const
{
    return table_->viewport()->width() - table_->columnWidth(TWPreviewModel::Size)
        - table_->columnWidth(TWPreviewModel::Age);
}

// Reasons take what they need, but not more than their share; paths take the rest.
void TWPreviewWindow::fitReasons()
{
    const QAbstractItemView& table = *table_; // QTableView hides sizeHintForColumn()
    widestReason_ = std::max({ widestReason_, table.sizeHintForColumn(TWPreviewModel::Why),
        table_->horizontalHeader()->sectionSizeHint(TWPreviewModel::Why) });
    fitting_ = true;
    table_->setColumnWidth(
        TWPreviewModel::Why, std::min(widestReason_ + ReasonPadding, qRound(reasonShare_ * sharedWidth())));
    fitting_ = false;
}

bool TWPreviewWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == table_->viewport() && event->type() == QEvent::Resize)
        fitReasons();
    if (watched != table_ || event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    // In a table these keys would go to the first and last column.
    const auto& key = static_cast<const QKeyEvent&>(*event);
    const bool home = key.key() == Qt::Key_Home;
    if ((!home && key.key() != Qt::Key_End) || key.modifiers() != Qt::NoModifier)
        return QWidget::eventFilter(watched, event);
    goTo(home ? 0 : model_->rowCount() - 1);
    return true;
}

void TWPreviewWindow::goTo(int row)
{
    if (const auto index = model_->index(row, 0); index.isValid())
        table_->setCurrentIndex(index);
}

QLayout* TWPreviewWindow::createFooter()
{
    sentence_ = new QLabel;
    sentence_->setObjectName("sentenceLabel");
    sentence_->setWordWrap(true);
    sentence_->setTextFormat(Qt::PlainText);
    spinner_ = new TWSpinner(fontMetrics().height(), this);
    stopButton_ = TWControls::button(tr("Sto&p"), "stopButton", tr("Stop making the preview"));
    exportButton_ = TWControls::button(tr("&Export..."), "exportButton", tr("Save the items that are shown in a file"));
    auto* closeButton = TWControls::button(tr("C&lose"), "closeButton", tr("Close"));
    cleanButton_ = TWControls::button(tr("&Clean"), "cleanButton", tr("Delete what is ticked"));
    helpButton_ = TWControls::button(tr("&Help"), "helpButton", tr("Help"));
    connect(helpButton_, &QPushButton::clicked, this, [this] { emit helpRequested(HelpPage); });
    connect(stopButton_, &QPushButton::clicked, this, [this] { controller_.stop(); });
    connect(exportButton_, &QPushButton::clicked, this, &TWPreviewWindow::exportAs);
    connect(closeButton, &QPushButton::clicked, this, &QWidget::close);
    connect(cleanButton_, &QPushButton::clicked, this, &TWPreviewWindow::clean);

    auto* footer = new QHBoxLayout;
    footer->addWidget(helpButton_);
    footer->addWidget(sentence_, 1);
    footer->addWidget(spinner_);
    for (auto* button : { stopButton_, exportButton_, closeButton, cleanButton_ })
        footer->addWidget(button);
    return footer;
}

void TWPreviewWindow::createActions()
{
    toggleAction_ = TWControls::addTableAction(
        *table_, "toggleAction", tr("&Tick or Untick"), { Qt::Key_Space }, [this] { toggleSelected(); });
    contentsAction_ = TWControls::addTableAction(
        *table_, "contentsAction", tr("&Show Contents"), { Qt::Key_Return, Qt::Key_Enter }, [this] { showContents(); });
    keepAction_ = TWControls::addTableAction(
        *table_, "keepAction", tr("&Keep for Ever"), { Qt::CTRL | Qt::Key_K }, [this] { keepSelected(); });
    auto* sortAction = new QAction(tr("S&ort By"), this);
    sortAction->setMenu(createSortMenu());
    table_->addAction(sortAction);
    connect(table_, &QTableView::doubleClicked, this, &TWPreviewWindow::showContents);
    using TWControls::addWindowAction;
    addWindowAction(*this, tr("&Refresh"), { QKeySequence(Qt::Key_F5) }, [this] { refresh(); });
    addWindowAction(*this, tr("&Filter"), { QKeySequence::Find }, [this] { filterText_->setFocus(); });
    addWindowAction(*this, tr("&Help..."), { QKeySequence::HelpContents }, [this] { emit helpRequested(HelpPage); });
    addWindowAction(*this, tr("&Close"), { QKeySequence::Close }, [this] { close(); });
}

// For the keyboard, which does not reach the table's header.
QMenu* TWPreviewWindow::createSortMenu()
{
    auto* menu = new QMenu(this);
    for (int column = 0; column < model_->columnCount(); ++column) {
        auto* action = menu->addAction(model_->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString());
        connect(action, &QAction::triggered, this, [this, column] {
            const auto first = model_->headerData(column, Qt::Horizontal, Qt::InitialSortOrderRole);
            table_->horizontalHeader()->setSortIndicator(column, static_cast<Qt::SortOrder>(first.toInt()));
        });
    }
    return menu;
}

void TWPreviewWindow::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (controller_.preview())
        return;
    controller_.refresh();
    table_->setFocus();
}

void TWPreviewWindow::closeEvent(QCloseEvent* event)
{
    if (controller_.ticksChanged() && !closing_) {
        event->ignore();
        confirm(CloseAnyway, tr("Close"), [this] {
            closing_ = true;
            close();
        });
        return;
    }
    closing_ = false;
    QWidget::closeEvent(event);
    controller_.close();
    clearFilter();
}

void TWPreviewWindow::refresh()
{
    if (controller_.ticksChanged())
        confirm(RefreshAnyway, tr("Refresh"), [this] { controller_.refresh(); });
    else
        controller_.refresh();
}

// Asks before ticks are lost.
void TWPreviewWindow::confirm(const char* question, const QString& button, std::function<void()> confirmed)
{
    auto* box = new QMessageBox(QMessageBox::Question, windowTitle(), tr(question), QMessageBox::Cancel, this);
    box->setObjectName("ticksMessageBox");
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setInformativeText(tr(LoseTicksText));
    box->setDefaultButton(QMessageBox::Cancel);
    box->setEscapeButton(QMessageBox::Cancel);
    auto* lose = box->addButton(button, QMessageBox::DestructiveRole);
    lose->setObjectName("loseTicksButton");
    connect(box, &QMessageBox::finished, this, [box, lose, confirmed = std::move(confirmed)] {
        if (box->clickedButton() == lose)
            confirmed();
    });
    box->open();
}

// Escape clears the filter, then closes the window. It is no shortcut: an open list hides itself before shortcuts are
// looked for, so that Escape in the list would close the window as well.
void TWPreviewWindow::keyPressEvent(QKeyEvent* event)
{
    if (TWControls::pressFocused(*this, *event))
        return;
    if (!event->matches(QKeySequence::Cancel))
        QWidget::keyPressEvent(event);
    else if (!filterText_->text().isEmpty() || shown_->currentIndex() != 0)
        clearFilter();
    else
        close();
}

void TWPreviewWindow::clearFilter()
{
    shown_->hidePopup();
    const QSignalBlocker shownBlocker(shown_);
    filterText_->clear();
    shown_->setCurrentIndex(0);
    filter();
}

void TWPreviewWindow::renewIfCleaned()
{
    if (controller_.cleaned())
        controller_.refresh();
}

void TWPreviewWindow::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        showState(); // the lists may have been changed in another window
}

void TWPreviewWindow::previewReplaced()
{
    current_.reset();
    widestReason_ = 0;
    message_->setText({});
    notice_->setText({});
    tree_->replace();
    rowsReplaced();
}

// The current row stays the current one. Rows that the user has not asked for stay where they are on screen.
void TWPreviewWindow::rowsReplaced()
{
    const int scrolled = table_->verticalScrollBar()->value();
    const auto current = current_;
    model_->rowsReplaced();
    const auto position = current ? controller_.rows().position(*current) : controller_.rows().size();
    const bool found = position < controller_.rows().size();
    const auto index = model_->index(found ? static_cast<int>(position) : 0, 0);
    if (index.isValid())
        table_->setCurrentIndex(index);
    const bool wished = std::exchange(wished_, false);
    if (std::exchange(sorted_, false))
        table_->scrollToTop();
    else if (wished)
        table_->scrollTo(index);
    else
        table_->verticalScrollBar()->setValue(scrolled);
    fitReasons();
    showSelection();
    showState();
}

void TWPreviewWindow::previewChanged()
{
    tree_->renew();
    table_->viewport()->update();
    fitReasons();
    showState();
    showDetail();
}

void TWPreviewWindow::showState()
{
    const bool empty = model_->rowCount() == 0;
    empty_->setVisible(empty);
    if (empty)
        empty_->setText(TWQtText::shownLines(controller_.emptyText()));
    warnings_->setText(TWQtText::shownLines(controller_.warnings()));
    const auto sentence = TWQtText::shown(controller_.sentence());
    sentence_->setText(sentence);
    sentence_->setAccessibleName(sentence);
    controller_.busy() ? spinner_->start() : spinner_->stop();
    const bool filling = controller_.preview() && !controller_.preview()->ended();
    stopButton_->setVisible(filling);
    exportButton_->setEnabled(!empty);
    notice_->setText(TWQtText::shown(controller_.notice()));
    const auto obstacle = controller_.obstacle();
    cleanButton_->setEnabled(obstacle.empty());
    cleanButton_->setToolTip(TWQtText::toolTip(obstacle));
    const auto items = filling || !controller_.preview() ? 0 : controller_.preview()->total().items;
    cleanButton_->setText(
        items == 0 ? tr(Clean) : tr(CleanItems).arg(TWQtText::exact(TWText::count(items, "Item", "Items"))));
    // Otherwise a text that has become longer is cut until the next event.
    layout()->activate();
    showKeep();
}

void TWPreviewWindow::showKeep()
{
    const bool selected = table_->selectionModel()->hasSelection();
    const bool keeps = selected && controller_.canChange() && controller_.canKeepAny(selectedRows());
    keepButton_->setEnabled(keeps);
    keepButton_->setToolTip(tr(keeps ? KeepHint : NoKeepHint));
    keepAction_->setEnabled(keeps);
    toggleAction_->setEnabled(selected && controller_.canChange());
}

void TWPreviewWindow::showSelection()
{
    showKeep();
    const auto current = table_->currentIndex();
    contentsAction_->setEnabled(
        current.isValid() && controller_.item(model_->rowAt(current)).facts.kind == TWFileKind::Folder);
    showDetail();
}

void TWPreviewWindow::showDetail()
{
    const auto current = table_->currentIndex();
    if (!current.isValid()) {
        detail_->setText({});
        return;
    }
    const auto row = model_->rowAt(current);
    detail_->setText(tr(Detail).arg(TWQtText::shown(controller_.path(row)), TWQtText::shown(controller_.why(row))));
}

void TWPreviewWindow::limit(std::optional<std::uint32_t> cleaner, std::optional<std::size_t> group)
{
    wished_ = true;
    message_->setText({});
    controller_.limit(cleaner, group);
}

void TWPreviewWindow::filter()
{
    auto wanted = controller_.wish();
    const auto text = TWQtText::bytes(filterText_->text());
    wanted.text = delegate_.platform().places.expand(text);
    wanted.shown = static_cast<TWPreviewShown>(shown_->currentIndex());
    wish(wanted);
}

void TWPreviewWindow::sort(int column, Qt::SortOrder order)
{
    auto wanted = controller_.wish();
    wanted.order = Orders[column];
    sorted_ = true;
    wanted.direction = order == Qt::AscendingOrder ? TWPreviewDirection::Ascending : TWPreviewDirection::Descending;
    wish(wanted);
}

void TWPreviewWindow::wish(const TWPreviewWish& wanted)
{
    wished_ = true;
    controller_.setWish(wanted);
}

std::vector<TWPreviewRow> TWPreviewWindow::selectedRows() const
{
    std::vector<TWPreviewRow> rows;
    for (const auto& range : table_->selectionModel()->selection()) {
        for (int row = range.top(); row <= range.bottom(); ++row)
            rows.push_back(controller_.rows()[static_cast<std::size_t>(row)]);
    }
    return rows;
}

// All of them become what the current row is not now.
void TWPreviewWindow::toggleSelected()
{
    const auto rows = selectedRows();
    if (rows.empty())
        return;
    const auto current = table_->currentIndex();
    const auto decisive = current.isValid() ? model_->rowAt(current) : rows.front();
    message_->setText({});
    controller_.tick(rows, controller_.fate(decisive) == TWPreviewFate::Deleted ? TWTick::Off : TWTick::On);
}

void TWPreviewWindow::keepSelected()
{
    const auto rows = selectedRows();
    if (rows.empty())
        return;
    if (controller_.canKeepAny(rows))
        message_->setText(TWQtText::shown(controller_.keep(rows)));
}

void TWPreviewWindow::showContents()
{
    const auto current = table_->currentIndex();
    if (!current.isValid() || !contentsAction_->isEnabled())
        return;
    const auto& platform = delegate_.platform();
    auto* dialog = new TWContentsDialog(
        platform.runLoop, platform.fileSystem, platform.places, controller_.realPath(model_->rowAt(current)), this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
}

void TWPreviewWindow::clean()
{
    message_->setText({});
    if (controller_.canClean())
        emit aboutToClean();
    controller_.clean();
    showState();
}

void TWPreviewWindow::exportAs()
{
    const auto save = [this](const QString& chosen) {
        const auto path = TWQtText::pathBytes(chosen);
        if (!path) {
            message_->setText(tr(NotUTF8));
            return;
        }
        controller_.exportRows(*path, [this, chosen](const std::string& problem) {
            message_->setText(problem.empty() ? tr(Exported).arg(chosen) : TWQtText::shown(problem));
        });
    };
    TWControls::askWhereToSave(this, "exportFileDialog", tr("Export What Is Shown"),
        TWQtText::path(delegate_.platform().places.home), tr(SuggestedName), save);
}
