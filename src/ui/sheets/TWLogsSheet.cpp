#include "ui/sheets/TWLogsSheet.h"

#include "editors/TWKeepWindowController.h"
#include "support/TWKeywordMatcher.h"
#include "support/TWText.h"
#include "ui/parts/ImageAndTextCell.h"
#include "ui/parts/TWControls.h"
#include "ui/parts/TWQtText.h"
#include "ui/parts/TWQuietLabel.h"
#include "ui/parts/TWSpinner.h"
#include "ui/sheets/TWLogsModel.h"
#include "ui/windows/TWQuickLookWindow.h"

#include <QAction>
#include <QClipboard>
#include <QDateTime>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QScrollBar>
#include <QShortcut>
#include <QStyle>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

using Root = TWLogsNode::Root;

namespace {

constexpr auto Reading = QT_TRANSLATE_NOOP("TWLogsSheet", "Reading the log folders...");
constexpr auto NoLogs = QT_TRANSLATE_NOOP("TWLogsSheet", "No logs were found.");
constexpr auto NoMatch = QT_TRANSLATE_NOOP("TWLogsSheet", "No log's name contains \"%1\".");
constexpr auto NothingChecked = QT_TRANSLATE_NOOP("TWLogsSheet", "Nothing is checked.");
constexpr auto CheckedSize = QT_TRANSLATE_NOOP("TWLogsSheet", "%1 checked, %2");
constexpr auto NotSaved = QT_TRANSLATE_NOOP("TWLogsSheet", "Not saved; in use until Tidewell quits.");
constexpr auto Covered
    = QT_TRANSLATE_NOOP("TWLogsSheet", "\"%1\" belongs to a checked folder. Uncheck that folder first.");
constexpr auto Kept = QT_TRANSLATE_NOOP(
    "TWLogsSheet", "\"%1\" is on the keep list now. If a folder around it is checked, that stays as well.");

// The preferred size, in characters and lines of text.
constexpr int SheetWidth = 120;
constexpr int SheetHeight = 36;

constexpr int SizeWidth = 12; // in characters
constexpr int DatePadding = 16;
constexpr int MostMatches = 500; // rows that are looked at to find what to expand
constexpr int MostRows = 50; // that are looked at to find one that stays

bool isOneOf(int key, std::initializer_list<int> keys)
{
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

}

TWLogsSheet::TWLogsSheet(TWLogsWindowController& controller, TWKeepWindowController& keepList, QWidget* parent)
    : TWSheet("logsSheet", tr("Logs"), parent)
    , controller_(controller)
    , keepList_(keepList)
    , filterField_(new QLineEdit)
    , model_(new TWLogsModel(controller, this))
    , tree_(new TWQuickLookOutlineView)
    , expanded_{ std::string(TWAllUserLogs), std::string(TWAllSystemLogs) }
{
    setPreferredSize(SheetWidth, SheetHeight);
    setIntroduction(tr("The Logs cleaner deletes the checked &logs, and checked folders with everything in them. "
                       "Each click is saved at once."));
    setContent(createContent(), tree_);
    createButtons();
    controller_.setView(this);
}

TWLogsSheet::~TWLogsSheet()
{
    controller_.sheetClosed();
    controller_.setView(nullptr);
}

QWidget* TWLogsSheet::createContent()
{
    filterField_->setObjectName("filterLineEdit");
    filterField_->setAccessibleName(tr("Show only logs whose names contain this text"));
    filterField_->setPlaceholderText(tr("Filter"));
    filterField_->setClearButtonEnabled(true);
    filterField_->installEventFilter(this);
    connect(filterField_, &QLineEdit::textChanged, this, &TWLogsSheet::filter);
    createTree();
    createActions();
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(filterField_);
    layout->addWidget(tree_, 1);
    layout->addWidget(createFooter());
    return content;
}

void TWLogsSheet::createTree()
{
    tree_->setObjectName("logsOutlineView");
    tree_->setAccessibleName(tr("Logs"));
    tree_->setModel(model_);
    tree_->setItemDelegate(new ImageAndTextCell(tree_));
    tree_->setDelegate(this);
    tree_->setUniformRowHeights(true); // so that no row has to be measured
    tree_->setAlternatingRowColors(true);
    tree_->setExpandsOnDoubleClick(false);
    tree_->setTabKeyNavigation(false);
    tree_->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    tree_->setTextElideMode(Qt::ElideMiddle);
    auto& header = *tree_->header();
    header.setStretchLastSection(false);
    header.setSectionResizeMode(TWLogsModel::Item, QHeaderView::Stretch);
    header.resizeSection(TWLogsModel::Size, SizeWidth * fontMetrics().averageCharWidth());
    const auto date = QLocale().toString(QDateTime({ 2028, 12, 28 }, { 22, 28, 28 }), QLocale::ShortFormat);
    header.resizeSection(TWLogsModel::Modified, fontMetrics().horizontalAdvance(date) + DatePadding);
    tree_->viewport()->installEventFilter(this);
    connect(tree_->selectionModel(), &QItemSelectionModel::currentChanged, this, &TWLogsSheet::currentChanged);
    connect(tree_, &QTreeView::expanded, this, [this](const QModelIndex& index) {
        if (!controller_.isFiltered())
            expanded_.insert(model_->nodeAt(index)->itemPath());
    });
    connect(tree_, &QTreeView::collapsed, this, [this](const QModelIndex& index) {
        if (!controller_.isFiltered())
            expanded_.erase(model_->nodeAt(index)->itemPath());
    });
    empty_ = new QLabel(tree_->viewport());
    empty_->setObjectName("emptyLabel");
    empty_->setAlignment(Qt::AlignCenter);
    empty_->setWordWrap(true);
    empty_->setTextFormat(Qt::PlainText);
    empty_->setAttribute(Qt::WA_TransparentForMouseEvents);
    (new QVBoxLayout(tree_->viewport()))->addWidget(empty_);
}

QWidget* TWLogsSheet::createFooter()
{
    auto* footer = new QWidget;
    spinner_ = new TWSpinner(fontMetrics().height(), footer);
    spinner_->stop();
    line_ = new TWQuietLabel(footer);
    line_->setObjectName("checkedLabel");
    auto* layout = new QHBoxLayout(footer);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(line_, 1);
    layout->addWidget(spinner_);
    return footer;
}

// Return checks a box, as in the other sheets, because the space bar looks inside.
void TWLogsSheet::createActions()
{
    toggleAction_ = addTreeAction("toggleAction", tr("&Check"), Qt::Key_Return, &TWLogsSheet::toggle);
    toggleAction_->setShortcuts({ Qt::Key_Return, Qt::Key_Enter });
    lookAction_ = addTreeAction("lookAction", tr("&Look Inside\tSpace"), {}, &TWLogsSheet::look);
    openAction_ = addTreeAction("openAction", tr("&Open"), QKeySequence::Open, &TWLogsSheet::openSelected);
    showAction_ = addTreeAction("showAction", tr("Show in &File Manager"), {}, &TWLogsSheet::showInFileManager);
    copyAction_ = addTreeAction("copyAction", tr("Copy &Path"), QKeySequence::Copy, &TWLogsSheet::copyPath);
    keepAction_ = addTreeAction("keepAction", tr("&Keep for Ever"), Qt::CTRL | Qt::Key_K, &TWLogsSheet::keep);
    connect(new QShortcut(QKeySequence::Find, this), &QShortcut::activated, this, [this] {
        filterField_->setFocus();
        filterField_->selectAll();
    });
}

QAction* TWLogsSheet::addTreeAction(
    const char* name, const QString& text, const QKeySequence& shortcut, void (TWLogsSheet::*call)())
{
    return TWControls::addTableAction(*tree_, name, text, { shortcut }, [this, call] { (this->*call)(); });
}

void TWLogsSheet::createButtons()
{
    auto* ok = addButton(QDialogButtonBox::Ok, "okPushButton", tr("OK"));
    auto* help = addButton(QDialogButtonBox::Help, "helpPushButton", tr("Help"));
    help->setShortcut(QKeySequence::HelpContents);
    setDefaultButton(ok);
    connect(ok, &QPushButton::clicked, this, [this] { controller_.ok(); });
    connect(help, &QPushButton::clicked, this, [this] { controller_.help(); });
}

void TWLogsSheet::paintEvent(QPaintEvent* event)
{
    TWSheet::paintEvent(event);
    if (std::exchange(isPainted_, true))
        return;
    QTimer::singleShot(0, this, [this] {
        if (isVisible())
            controller_.sheetOpened();
    });
}

void TWLogsSheet::showEvent(QShowEvent* event)
{
    TWSheet::showEvent(event);
    showState();
}

void TWLogsSheet::hideEvent(QHideEvent* event)
{
    TWSheet::hideEvent(event);
    if (event->spontaneous())
        return;
    isPainted_ = false;
    filterField_->clear();
    controller_.sheetClosed();
}

// Escape clears the filter, then closes the preview, then the sheet.
void TWLogsSheet::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Cancel) && !filterField_->text().isEmpty())
        filterField_->clear();
    else if (event->matches(QKeySequence::Cancel) && isLooking())
        preview_->close();
    else
        TWSheet::keyPressEvent(event);
}

// The arrow key and Return lead from the field into the tree. Two quick clicks on a box change it twice and open
// nothing.
bool TWLogsSheet::eventFilter(QObject* object, QEvent* event)
{
    if (object == filterField_ && event->type() == QEvent::KeyPress
        && isOneOf(static_cast<QKeyEvent*>(event)->key(), { Qt::Key_Down, Qt::Key_Return, Qt::Key_Enter })) {
        tree_->setFocus();
        return true;
    }
    if (object == tree_->viewport() && event->type() == QEvent::MouseButtonDblClick)
        return doubleClicked(static_cast<QMouseEvent*>(event)->pos());
    return TWSheet::eventFilter(object, event);
}

// Returns false for the arrow beside a folder, which the tree handles.
bool TWLogsSheet::doubleClicked(const QPoint& position)
{
    const auto index = tree_->indexAt(position);
    if (!index.isValid() || position.x() < tree_->visualRect(index).left())
        return false;
    if (isOnBox(position))
        return true;
    tree_->setCurrentIndex(index);
    if (model_->nodeAt(index)->root != Root::None)
        tree_->setExpanded(index.siblingAtColumn(0), !tree_->isExpanded(index.siblingAtColumn(0)));
    controller_.doubleClick();
    return true;
}

bool TWLogsSheet::isOnBox(const QPoint& position) const
{
    const auto index = tree_->indexAt(position);
    if (index.column() != TWLogsModel::Item)
        return false;
    QStyleOptionViewItem option;
    option.initFrom(tree_);
    option.rect = tree_->visualRect(index);
    // Without a text, the box would be in the middle.
    option.features = QStyleOptionViewItem::HasCheckIndicator | QStyleOptionViewItem::HasDisplay;
    option.text = index.data().toString();
    return style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option, tree_).contains(position);
}

void TWLogsSheet::closeSheet()
{
    accept();
}

void TWLogsSheet::openHelpAnchor(const std::string& anchor)
{
    emit helpRequested(TWQtText::exact(anchor));
}

// What is chosen comes first after a reload, so a row that is not chosen is more likely to keep its place.
void TWLogsSheet::treeWillChange()
{
    const auto current = tree_->currentIndex();
    const auto* const item = selectedItem();
    lookedAt_ = item && isLooking() ? LookedAt{ item->itemPath(), item->kind, item->bytes } : LookedAt();
    nearCurrent_.clear();
    for (const auto& index : { current, tree_->indexBelow(current), tree_->indexAbove(current), current.parent() }) {
        if (current.isValid() && index.isValid())
            nearCurrent_.push_back(model_->nodeAt(index)->itemPath());
    }
    auto top = tree_->indexAt({ 0, 0 });
    for (int rows = 0; rows < MostRows && top.isValid() && model_->nodeAt(top)->isChosen(); ++rows)
        top = tree_->indexBelow(top);
    topmost_ = top.isValid() ? model_->nodeAt(top)->itemPath() : "";
    heightAbove_ = tree_->visualRect(top).top();
    model_->treeWillChange();
}

void TWLogsSheet::treeChanged()
{
    const bool isFilterNew = !controller_.isFiltering() && std::exchange(mustShowMatches_, false);
    model_->treeChanged();
    if (!controller_.isFiltered())
        expandAsBefore({});
    else if (isFilterNew)
        expandMatches();
    tree_->doItemsLayout(); // at once, because the rows of before are gone
    restoreCurrent();
    restoreScroll();
    lookAgain();
    if (isFilterNew)
        tree_->scrollTo(tree_->currentIndex()); // and expands what is above it
    showState();
}

void TWLogsSheet::expandAsBefore(const QModelIndex& parent)
{
    const auto* const folder = model_->nodeAt(parent);
    const auto count = controller_.numberOfChildren(folder);
    for (std::size_t row = 0; row < count; ++row) {
        const auto& node = *controller_.child(row, folder);
        if (!node.isFolder())
            continue;
        const auto index = model_->index(static_cast<int>(row), 0, parent);
        const bool wanted = expanded_.contains(node.itemPath());
        if (!wanted && !tree_->isExpanded(index))
            continue;
        tree_->setExpanded(index, wanted);
        expandAsBefore(index);
    }
}

// Expands what leads to the first matches of the filter.
void TWLogsSheet::expandMatches()
{
    const TWKeywordMatcher matcher({ filterText() });
    int rows = 0;
    const std::function<void(const QModelIndex&)> visit = [&](const QModelIndex& parent) {
        const auto* const folder = model_->nodeAt(parent);
        const auto count = controller_.numberOfChildren(folder);
        for (std::size_t row = 0; row < count && ++rows <= MostMatches; ++row) {
            const auto& node = *controller_.child(row, folder);
            if (!node.isFolder() || (node.root == Root::None && matcher.matches(node.item)))
                continue;
            const auto index = model_->index(static_cast<int>(row), 0, parent);
            tree_->expand(index);
            visit(index);
        }
    };
    visit({});
}

// The row that was the current one has been carried over unless it is gone.
void TWLogsSheet::restoreCurrent()
{
    for (const auto& path : nearCurrent_) {
        if (const auto index = model_->indexOf(controller_.find(path)); !tree_->currentIndex().isValid())
            tree_->setCurrentIndex(index);
    }
    if (!tree_->currentIndex().isValid())
        tree_->setCurrentIndex(model_->index(0, 0));
}

// Shows the selected file anew if there is another one at its path now, or if it was cut. One that has only grown stays
// as it was, because someone may be reading it.
void TWLogsSheet::lookAgain()
{
    const auto* const item = selectedItem();
    if (!item || !isLooking() || item->itemPath() != lookedAt_.path)
        return;
    if (item->kind != lookedAt_.kind || item->bytes < lookedAt_.bytes)
        controller_.outlineViewSpaceKeyDown();
}

void TWLogsSheet::restoreScroll()
{
    const auto index = topmost_.empty() ? QModelIndex() : model_->indexOf(controller_.find(topmost_));
    auto& bar = *tree_->verticalScrollBar();
    if (index.isValid())
        bar.setValue(bar.value() + tree_->visualRect(index).top() - heightAbove_);
}

void TWLogsSheet::nodesChanged()
{
    tree_->viewport()->update();
    showState();
}

TWLogsNode* TWLogsSheet::selectedItem() const
{
    return model_->nodeAt(tree_->currentIndex());
}

void TWLogsSheet::showMessage(const std::string& message)
{
    TWSheet::showMessage(TWQtText::shown(message));
}

void TWLogsSheet::openFile(const std::string& path)
{
    emit openRequested(path, [this](const std::string& said) { showMessage(said); });
}

void TWLogsSheet::showPreview(const std::string& path)
{
    const auto& tools = controller_.tools();
    if (!preview_)
        preview_ = new TWQuickLookWindow(tools.runLoop, tools.fileSystem, tools.places, *tree_);
    preview_->showFile(path);
}

void TWLogsSheet::outlineViewSpaceKeyDown(const QKeyEvent&)
{
    look();
}

void TWLogsSheet::look()
{
    if (isLooking())
        preview_->close();
    else
        controller_.outlineViewSpaceKeyDown();
}

bool TWLogsSheet::isLooking() const
{
    return preview_ && preview_->isShown();
}

void TWLogsSheet::currentChanged()
{
    showActions();
    if (isLooking() && selectedPath().empty())
        preview_->close();
    else if (isLooking())
        controller_.outlineViewSpaceKeyDown();
}

std::string TWLogsSheet::filterText() const
{
    return TWQtText::bytes(filterField_->text().trimmed());
}

void TWLogsSheet::filter()
{
    mustShowMatches_ = true;
    controller_.setFilter(filterText());
}

void TWLogsSheet::showState()
{
    const bool isFirst = isVisible() && !controller_.isRead();
    setProblem(TWQtText::shown(controller_.problem()));
    empty_->setText(emptyText());
    tree_->setAccessibleDescription(empty_->text());
    spinner_->setVisible(isFirst);
    line_->setText(isFirst ? tr(Reading) : checkedText());
    showActions();
    const auto problem = controller_.watchProblem();
    if (!problem.empty() && !std::exchange(isWatchProblemShown_, true))
        showNotice(TWQtText::shown(problem));
}

QString TWLogsSheet::emptyText() const
{
    if (controller_.isFiltered() && !controller_.isFiltering() && model_->rowCount() == 0)
        return tr(NoMatch).arg(filterField_->text().trimmed());
    const auto& roots = controller_.logsRoot();
    const bool isEmpty = std::all_of(
        roots.begin(), roots.end(), [](const auto& root) { return !root->children || root->children->empty(); });
    return isEmpty && controller_.isRead() ? tr(NoLogs) : QString();
}

QString TWLogsSheet::checkedText() const
{
    const auto count = controller_.checkedCount();
    auto text = count == 0
        ? tr(NothingChecked)
        : tr(CheckedSize)
              .arg(QLocale().toString(qulonglong(count)), TWQtText::exact(TWText::size(controller_.checkedBytes())));
    return controller_.hasUnsavedEdits() ? text + (count == 0 ? " " : ". ") + tr(NotSaved) : text;
}

void TWLogsSheet::showActions()
{
    const auto* const item = selectedItem();
    toggleAction_->setText(item && item->active == TWLogChecked ? tr("Un&check") : tr("&Check"));
    openAction_->setEnabled(item && item->root == Root::None);
    for (auto* action : { lookAction_, showAction_, copyAction_, keepAction_ })
        action->setEnabled(!selectedPath().empty());
}

std::string TWLogsSheet::selectedPath() const
{
    const auto* const item = selectedItem();
    return item && item->root != Root::User ? controller_.path(*item) : "";
}

// Never disabled, because Return would then press OK.
void TWLogsSheet::toggle()
{
    const auto* const item = selectedItem();
    if (item && TWLogsWindowController::isEnabled(*item))
        model_->setData(model_->indexOf(item), {}, Qt::CheckStateRole);
    else if (item)
        TWSheet::showMessage(tr(Covered).arg(TWQtText::shown(item->item)));
}

void TWLogsSheet::openSelected()
{
    controller_.doubleClick();
}

void TWLogsSheet::showInFileManager()
{
    emit fileRequested(selectedPath(), [this](const std::string& said) { showMessage(said); });
}

void TWLogsSheet::copyPath()
{
    QGuiApplication::clipboard()->setText(TWQtText::path(selectedPath()));
}

void TWLogsSheet::keep()
{
    const auto problem = keepList_.keep(selectedPath());
    if (problem.empty())
        showNotice(tr(Kept).arg(TWQtText::shown(selectedPath())));
    else
        showMessage(problem);
}
