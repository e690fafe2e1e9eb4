#pragma once

#include "ui/parts/TWRecordColumn.h"

#include <QAbstractTableModel>

// The model of a list of records. It keeps no copy: every read and every edit goes through the columns to the list
// itself.
class TWRecordModel final : public QAbstractTableModel {
    Q_OBJECT

public:
    // For a note's cell: true if the note is a warning.
    static constexpr int WarningRole = Qt::UserRole;

    TWRecordModel(std::vector<TWRecordColumn>, std::function<int()> recordCount, QObject* parent);

    const TWRecordColumn& column(int number) const { return columns_[static_cast<std::size_t>(number)]; }

    // The number of the first column of that kind; -1 if there is none.
    int columnOf(TWRecordColumn::Kind) const;

    // Call this after the list has changed in any way.
    void reload();

    // Call this after only notes have changed.
    void notesChanged();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant headerData(int section, Qt::Orientation, int role) const override;
    QVariant data(const QModelIndex&, int role) const override;
    bool setData(const QModelIndex&, const QVariant&, int role) override;
    Qt::ItemFlags flags(const QModelIndex&) const override;

private:
    std::string plainText(int row, const TWRecordColumn&) const;
    QVariant editedValue(int row, const TWRecordColumn&) const;
    QString accessibleText(int row, const TWRecordColumn&) const;
    void change(int row, const TWRecordColumn&, const QVariant&);

    const std::vector<TWRecordColumn> columns_;
    const std::function<int()> recordCount_;
};
