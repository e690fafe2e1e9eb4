#include "ui/sheets/TWFilesTable.h"

#include "ui/sheets/TWFilesDelegate.h"
#include "ui/sheets/TWFilesTableModel.h"

#include <QDropEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>

namespace {

constexpr int RowPadding = 10;
constexpr int CellPadding = 16;
constexpr int NameWidth = 30; // in characters

// As a copy only: a file manager that took it for a move would delete the file.
void acceptFiles(QDropEvent& event)
{
    event.setDropAction(Qt::CopyAction);
    event.setAccepted(event.mimeData()->hasUrls() && event.possibleActions() & Qt::CopyAction);
}

}

TWFilesTable::TWFilesTable(QWidget* parent)
    : QTableView(parent)
{
    setObjectName("filesTableView");
    setAccessibleName(tr("Rules"));
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setEditTriggers(DoubleClicked | EditKeyPressed);
    setTabKeyNavigation(false);
    setAlternatingRowColors(true);
    setShowGrid(false);
    setWordWrap(false);
    setAcceptDrops(true);
    setItemDelegate(new TWFilesDelegate(this));
    // All rows are of one height, so that a long list opens at once.
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + RowPadding);
    horizontalHeader()->setHighlightSections(false);
    // A pop-up opens with one click.
    connect(this, &QTableView::clicked, this, [this](const QModelIndex& index) {
        if (index.column() == TWFilesTableModel::WhatToDelete)
            edit(index);
    });
}

void TWFilesTable::setUpColumns()
{
    int widestKind = 0;
    for (int kind = 0; kind < TWFilesTableModel::KindCount; ++kind)
        widestKind = std::max(widestKind, fontMetrics().horizontalAdvance(TWFilesTableModel::kindLabel(kind)));
    const int character = fontMetrics().averageCharWidth();
    horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    horizontalHeader()->setSectionResizeMode(TWFilesTableModel::Path, QHeaderView::Stretch);
    horizontalHeader()->setSectionResizeMode(TWFilesTableModel::Note, QHeaderView::Stretch);
    setColumnWidth(TWFilesTableModel::Active, fontMetrics().horizontalAdvance(tr("Active")) + CellPadding);
    setColumnWidth(TWFilesTableModel::Name, NameWidth * character);
    setColumnWidth(TWFilesTableModel::WhatToDelete, widestKind + CellPadding + TWFilesDelegate::arrowWidth(this));
}

// The space bar checks the rule whichever of its cells is the current one.
void TWFilesTable::keyPressEvent(QKeyEvent* event)
{
    const auto active = currentIndex().siblingAtColumn(TWFilesTableModel::Active);
    if (event->key() != Qt::Key_Space || !active.isValid()) {
        QTableView::keyPressEvent(event);
        return;
    }
    const bool checked = active.data(Qt::CheckStateRole).toInt() == Qt::Checked;
    model()->setData(active, checked ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
}

void TWFilesTable::paintEvent(QPaintEvent* event)
{
    QTableView::paintEvent(event);
    if (!model() || model()->rowCount() != 0)
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap,
        tr("No rules yet. Press + to choose a file or folder."));
}

void TWFilesTable::dragEnterEvent(QDragEnterEvent* event)
{
    acceptFiles(*event);
}

void TWFilesTable::dragMoveEvent(QDragMoveEvent* event)
{
    acceptFiles(*event);
}

void TWFilesTable::dropEvent(QDropEvent* event)
{
    acceptFiles(*event);
    if (event->isAccepted())
        emit filesDropped(event->mimeData()->urls());
}
