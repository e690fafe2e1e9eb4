#pragma once

#include "ui/parts/TWColumnWidths.h"
#include "ui/parts/TWRecordColumn.h"

#include <QTableView>
#include <QTimer>
#include <QUrl>

#include <set>

class TWRecordModel;

// A table of records that the user edits in place. The space bar checks a record, a pop-up opens with one click, Delete
// asks to remove the selected record, Tab leaves the table. Files can be dropped on it. An empty table says what to do.
//
// Columns share the width by what their cells need, until the user drags one: it then keeps its width, and those behind
// it share the rest.
class TWRecordTable final : public QTableView {
    Q_OBJECT

public:
    TWRecordTable(std::vector<TWRecordColumn>, std::function<int()> recordCount, QWidget* parent = nullptr);

    void setEmptyText(const QString& text);

    // The list has changed in any way; the place in it stays, so that after a removal the next record is selected.
    void reload();

    // Only the notes have changed.
    void notesChanged();

    // -1 if no record is selected.
    int selectedRow() const;

    // Selects only that record and scrolls to it.
    void showRow(int row);

    // The selected record's note in full; "" without one.
    QString selectedNote() const;

    // Writes what is being typed in a cell.
    void finishEditing();

signals:
    // Another record is selected, or the selected one has changed.
    void selectedRecordChanged();
    void removeRequested();
    void filesDropped(const QList<QUrl>& files);

protected:
    void keyPressEvent(QKeyEvent*) override;
    void paintEvent(QPaintEvent*) override;
    void resizeEvent(QResizeEvent*) override;
    void dragEnterEvent(QDragEnterEvent*) override;
    void dragMoveEvent(QDragMoveEvent*) override;
    void dropEvent(QDropEvent*) override;

private:
    void setUpLook();
    void setUpColumns();
    TWColumnWish wish(int column) const;
    void shareWidth(int firstColumn = 0);
    void columnDragged(int column);

    TWRecordModel* model_;
    QString emptyText_;
    std::set<int> draggedColumns_;
    bool sharingWidth_ = false;
    QTimer shareSoon_;
};
