#pragma once

#include <QWidget>

class QLabel;
class QToolButton;
class TWRecordTable;

// A record table with the buttons that add and remove a record below it, and the selected record's note in full.
class TWRecordPane final : public QWidget {
    Q_OBJECT

public:
    // Takes the table. The titles are tooltips and what a screen reader says.
    TWRecordPane(TWRecordTable*, const QString& addTitle, const QString& removeTitle, QWidget* parent = nullptr);

    QToolButton& addButton() { return *addButton_; }

signals:
    // Not before what was being typed in a cell was written.
    void addRequested();
    void removeRequested();

private:
    void showSelected();

    TWRecordTable* table_;
    QToolButton* addButton_;
    QToolButton* removeButton_;
    QLabel* note_;
};
