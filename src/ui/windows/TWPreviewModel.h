#pragma once

#include "app/TWPreviewWindowController.h"

#include <QAbstractTableModel>
#include <QIcon>

// The model of the rows that a preview shows. It keeps nothing for a row and makes texts only when the table asks.
class TWPreviewModel final : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { Path, Size, Age, Why };
    enum Role {
        WarningRole = Qt::UserRole, // true where a row says that its tick or its rule does not decide
        PathRole, // true if the text is a path
        WordRole, // the word of the dictionary that the name was found by
    };

    TWPreviewModel(TWPreviewWindowController&, QObject* parent);

    // Call this when the controller has other rows.
    void rowsReplaced();

    TWPreviewRow rowAt(const QModelIndex&) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant headerData(int section, Qt::Orientation, int role) const override;
    QVariant data(const QModelIndex&, int role) const override;
    bool setData(const QModelIndex&, const QVariant&, int role) override;
    Qt::ItemFlags flags(const QModelIndex&) const override;

private:
    std::string withKey(TWPreviewRow, const std::string& path) const;
    QVariant text(TWPreviewRow, int column) const;
    QIcon icon(TWPreviewRow) const;
    QString age(TWPreviewRow) const;
    QVariant toolTip(TWPreviewRow, int column) const;
    QString accessibleText(TWPreviewRow, int column) const;
    Qt::CheckState checkState(TWPreviewRow) const;

    TWPreviewWindowController& controller_;
    const QIcon folder_;
    const QIcon file_;
    int rows_ = 0;
};
