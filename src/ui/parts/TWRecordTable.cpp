#include "ui/parts/TWRecordTable.h"

#include "ui/parts/TWRecordDelegate.h"
#include "ui/parts/TWRecordModel.h"

#include <QDropEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QShortcut>

#include <utility>

using Kind = TWRecordColumn::Kind;

namespace {

constexpr int RowPadding = 10;
constexpr int CellPadding = 8;
constexpr int FewestRows = 4; // the header is one of them
constexpr int NarrowestColumn = 6; // in characters
constexpr std::size_t TypicalPercent = 80;
constexpr int MeasuredRows = 100;
constexpr int NoteShare = 2; // because a note says what would be deleted, and its end gives the reason
constexpr int MillisecondsBetweenShares = 50; // because notes arrive one by one

// Accepts a drop only as a copy, because a file manager would delete the file after a move.
void acceptFiles(QDropEvent& event)
{
    event.setDropAction(Qt::CopyAction);
    event.setAccepted(event.mimeData()->hasUrls() && event.possibleActions() & Qt::CopyAction);
}

}

TWRecordTable::TWRecordTable(std::vector<TWRecordColumn> columns, std::function<int()> recordCount, QWidget* parent)
    : QTableView(parent)
    , model_(new TWRecordModel(std::move(columns), std::move(recordCount), this))
{
    setModel(model_);
    setItemDelegate(new TWRecordDelegate(this));
    setUpLook();
    setUpColumns();
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setEditTriggers(DoubleClicked | EditKeyPressed);
    setTabKeyNavigation(false);
    setAcceptDrops(true);
    connect(this, &QTableView::clicked, this, [this](const QModelIndex& index) {
        if (model_->column(index.column()).kind == Kind::Choice)
            edit(index);
    });
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, &TWRecordTable::selectedRecordChanged);
    connect(model_, &QAbstractItemModel::dataChanged, this, &TWRecordTable::selectedRecordChanged);
    // Works only while the table itself has the focus, because in a cell's editor Delete deletes characters.
    auto* deleteKey = new QShortcut(QKeySequence::Delete, this, nullptr, nullptr, Qt::WidgetShortcut);
    connect(deleteKey, &QShortcut::activated, this, &TWRecordTable::removeRequested);
}

void TWRecordTable::setUpLook()
{
    setAlternatingRowColors(true);
    setShowGrid(false);
    setWordWrap(false);
    // All rows have the same height, so that a long list opens at once.
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + RowPadding);
    horizontalHeader()->setHighlightSections(false);
}

void TWRecordTable::setUpColumns()
{
    shareSoon_.setSingleShot(true);
    shareSoon_.setInterval(MillisecondsBetweenShares);
    connect(&shareSoon_, &QTimer::timeout, this, [this] { shareWidth(); });
    connect(model_, &QAbstractItemModel::dataChanged, &shareSoon_, [this] {
        if (!shareSoon_.isActive())
            shareSoon_.start();
    });
    connect(horizontalHeader(), &QHeaderView::sectionResized, this, &TWRecordTable::columnDragged);
}

void TWRecordTable::setEmptyText(const QString& text)
{
    emptyText_ = text;
    setAccessibleDescription(model_->rowCount() == 0 ? emptyText_ : QString());
}

void TWRecordTable::reload()
{
    const int row = std::min(currentIndex().row(), model_->rowCount() - 1);
    const int column = std::max(currentIndex().column(), 0);
    const int scrolled = verticalScrollBar()->value();
    model_->reload();
    if (row >= 0)
        setCurrentIndex(model_->index(row, column));
    verticalScrollBar()->setValue(scrolled);
    setEmptyText(emptyText_);
    shareWidth();
    emit selectedRecordChanged();
}

void TWRecordTable::notesChanged()
{
    model_->notesChanged();
}

int TWRecordTable::selectedRow() const
{
    const auto rows = selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

void TWRecordTable::showRow(int row)
{
    const int text = model_->columnOf(Kind::Text);
    const auto index = model_->index(row, text != -1 && model_->column(text).isEditable() ? text : 0);
    setCurrentIndex(index);
    scrollTo(index);
}

QString TWRecordTable::selectedNote() const
{
    const int note = model_->columnOf(Kind::Note);
    if (selectedRow() == -1 || note == -1)
        return {};
    return model_->index(selectedRow(), note).data(Qt::AccessibleTextRole).toString();
}

std::vector<int> TWRecordTable::rowsWithWarnings() const
{
    std::vector<int> rows;
    const int note = model_->columnOf(Kind::Note);
    for (int row = 0; row < model_->rowCount(); ++row) {
        if (model_->index(row, note).data(TWRecordModel::WarningRole).toBool())
            rows.push_back(row);
    }
    return rows;
}

QString TWRecordTable::description(int row) const
{
    QStringList cells;
    for (int column = 0; column < model_->columnCount(); ++column) {
        if (model_->column(column).kind != Kind::Note)
            cells.append(model_->index(row, column).data(Qt::AccessibleTextRole).toString());
    }
    return cells.join('\n');
}

// A cell's editor writes what was typed when it loses the focus.
void TWRecordTable::finishEditing()
{
    if (state() == EditingState)
        setFocus();
}

QSize TWRecordTable::sizeHint() const
{
    return { QTableView::sizeHint().width(), FewestRows * verticalHeader()->defaultSectionSize() };
}

// While there is a current cell, Return belongs to it and does not press the sheet's default button. The base class
// toggles a check box when the space bar is pressed.
void TWRecordTable::keyPressEvent(QKeyEvent* event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    QKeyEvent space(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier);
    if (!isReturn || state() == EditingState || !currentIndex().isValid())
        QTableView::keyPressEvent(event);
    else if (currentIndex().flags() & Qt::ItemIsEditable)
        edit(currentIndex());
    else
        QTableView::keyPressEvent(&space);
}

// Arrow keys and the button for removing need a selected row from the start.
void TWRecordTable::showEvent(QShowEvent* event)
{
    QTableView::showEvent(event);
    if (selectedRow() == -1 && model_->rowCount() > 0)
        showRow(0);
}

void TWRecordTable::paintEvent(QPaintEvent* event)
{
    QTableView::paintEvent(event);
    if (model_->rowCount() != 0)
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, emptyText_);
}

void TWRecordTable::resizeEvent(QResizeEvent* event)
{
    QTableView::resizeEvent(event);
    shareWidth();
    // A bar that appears above the table must not push the current row out of sight.
    const auto current = visualRect(currentIndex());
    if (current.top() >= 0 && current.bottom() < event->oldSize().height())
        scrollTo(currentIndex());
}

TWColumnWish TWRecordTable::wish(int column) const
{
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    const int header = horizontalHeader()->sectionSizeHint(column);
    std::vector<int> widths{ header };
    const int first = std::max(rowAt(0), 0);
    const int end = std::min(first + MeasuredRows, model_->rowCount());
    for (int row = first; row < end; ++row)
        widths.push_back(itemDelegate()->sizeHint(option, model_->index(row, column)).width() + CellPadding);
    std::sort(widths.begin(), widths.end());
    const int typical = widths[(widths.size() - 1) * TypicalPercent / 100];
    return { std::max(header, typical), widths.back(), model_->column(column).kind == Kind::Note ? NoteShare : 1 };
}

void TWRecordTable::shareWidth(int firstColumn)
{
    if (std::exchange(sharingWidth_, true))
        return;
    int width = viewport()->width();
    std::vector<int> columns;
    std::vector<TWColumnWish> wishes;
    for (int column = 0; column < model_->columnCount(); ++column) {
        if (column < firstColumn || draggedColumns_.contains(column)) {
            width -= columnWidth(column);
            continue;
        }
        columns.push_back(column);
        wishes.push_back(wish(column));
    }
    const auto widths = TWColumnWidths(width, wishes);
    const int narrowest = NarrowestColumn * fontMetrics().averageCharWidth();
    for (std::size_t each = 0; each < columns.size(); ++each)
        setColumnWidth(columns[each], std::max(widths[each], std::min(wishes[each].typical, narrowest)));
    sharingWidth_ = false;
}

// The columns before it keep their widths, so that the dragged edge stays under the pointer.
void TWRecordTable::columnDragged(int column)
{
    if (sharingWidth_)
        return;
    draggedColumns_.insert(column);
    shareWidth(column + 1);
}

void TWRecordTable::dragEnterEvent(QDragEnterEvent* event)
{
    acceptFiles(*event);
}

void TWRecordTable::dragMoveEvent(QDragMoveEvent* event)
{
    acceptFiles(*event);
}

void TWRecordTable::dropEvent(QDropEvent* event)
{
    acceptFiles(*event);
    if (event->isAccepted())
        emit filesDropped(event->mimeData()->urls());
}
