#pragma once

#include "editors/TWFilesWindowController.h"

#include <QAbstractTableModel>

// The live list of Files rules as a table: it keeps no copy, and every edit goes to the controller at once.
class TWFilesTableModel final : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { Active, Name, Path, WhatToDelete, Note, ColumnCount };

    // In the Note column: whether something is wrong with the rule.
    static constexpr int WarningRole = Qt::UserRole;

    TWFilesTableModel(TWFilesWindowController&, QObject* parent);

    // The list has changed in any way.
    void reload();

    // The four kinds that delete something are numbered from 0.
    static constexpr int KindCount = 4;
    static QString kindLabel(qlonglong kind);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant headerData(int section, Qt::Orientation, int role) const override;
    QVariant data(const QModelIndex&, int role) const override;
    bool setData(const QModelIndex&, const QVariant&, int role) override;
    Qt::ItemFlags flags(const QModelIndex&) const override;

private:
    QVariant shownText(int row, int column) const;
    QVariant editedValue(int row, int column) const;
    QString accessibleText(int row, int column) const;

    TWFilesWindowController& controller_;
};
