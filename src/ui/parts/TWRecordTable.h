#pragma once

#include "ui/parts/TWColumnWidths.h"
#include "ui/parts/TWRecordColumn.h"

#include <QTableView>
#include <QTimer>
#include <QUrl>

#include <set>

class TWRecordModel;

// A table of records that the user edits in place. Return and F2 edit the current cell, Return and the space bar toggle
// its check box, a pop-up menu opens with one click, Delete asks to remove the selected record, Tab leaves the table.
// Files can be dropped on it. An empty table shows a hint.
//
// The columns share the width according to what their cells need. Once the user has dragged a column, it and those
// before it keep their widths and the columns after it share the rest.
class TWRecordTable final : public QTableView {
    Q_OBJECT

public:
    TWRecordTable(std::vector<TWRecordColumn>, std::function<int()> recordCount, QWidget* parent = nullptr);

    void setEmptyText(const QString& text);

    // Call this after the list has changed in any way. The selected row stays, so after a removal the next record is
    // selected.
    void reload();

    // Call this after only notes have changed.
    void notesChanged();

    // -1 if no record is selected.
    int selectedRow() const;

    // Selects only that record and scrolls to it.
    void showRow(int row);

    // In ascending order.
    std::vector<int> rowsWithWarnings() const;

    // What the row holds, without its note.
    QString description(int row) const;

    // The full note of the selected record; "" if there is none.
    QString selectedNote() const;

    // Writes what is being typed in a cell to the list.
    void finishEditing();

    // Only a few rows high, so that in a low window the table shrinks before everything scrolls.
    QSize sizeHint() const override;

signals:
    // Another record is selected, or the selected one has changed.
    void selectedRecordChanged();
    void removeRequested();
    void filesDropped(const QList<QUrl>& files);

protected:
    void keyPressEvent(QKeyEvent*) override;
    void showEvent(QShowEvent*) override;
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
