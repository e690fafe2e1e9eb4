#pragma once

#include <QWidget>

class QToolButton;
class TWQuietLabel;
class TWRecordTable;

// A record table with buttons below it that add and remove a record, and with the full note of the selected record.
class TWRecordPane final : public QWidget {
    Q_OBJECT

public:
    // Takes ownership of the table. The titles are the buttons' tooltips and accessible names.
    TWRecordPane(TWRecordTable*, const QString& addTitle, const QString& removeTitle, QWidget* parent = nullptr);

    QToolButton& addButton() { return *addButton_; }

signals:
    // Sent after what was being typed in a cell has been written.
    void addRequested();
    void removeRequested();

private:
    void showSelected();

    TWRecordTable* table_;
    QToolButton* addButton_;
    QToolButton* removeButton_;
    TWQuietLabel* note_;
};
