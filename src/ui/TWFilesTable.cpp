#include "ui/TWFilesTable.h"

#include "ui/TWFilesDelegate.h"
#include "ui/TWFilesTableModel.h"

#include <QDropEvent>
#include <QHeaderView>
#include <QMimeData>
#include <QPainter>

namespace {

constexpr int RowPadding = 10;
constexpr int CellPadding = 16;

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
    setColumnWidth(TWFilesTableModel::Active, fontMetrics().horizontalAdvance(tr("Active")) + CellPadding);
    setColumnWidth(TWFilesTableModel::Name, 26 * character);
    setColumnWidth(TWFilesTableModel::WhatToDelete, widestKind + CellPadding + TWFilesDelegate::arrowWidth(this));
    setColumnWidth(TWFilesTableModel::Note, 34 * character);
}

void TWFilesTable::paintEvent(QPaintEvent* event)
{
    QTableView::paintEvent(event);
    if (!model() || model()->rowCount() != 0)
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, tr("No rules yet. Press + to choose a file or folder."));
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
