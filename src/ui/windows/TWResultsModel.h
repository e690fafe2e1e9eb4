#pragma once

#include "app/TWResultsWindowController.h"

#include <QAbstractTableModel>
#include <QIcon>

// The model of the latest cleaning's lines. It copies no lines but only counts those that the table knows of.
class TWResultsModel final : public QAbstractTableModel, public TWResultsView {
    Q_OBJECT

public:
    enum Column { CleanerColumn, LineColumn };
    enum Role {
        ConcernsFailureRole = Qt::UserRole, // true for a failure and for a line that explains one
        CleanerRole, // position of the line's cleaner, or TWNoCleaner
    };

    TWResultsModel(const TWResultsWindowController&, const QString& iconFolder, QObject* parent);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex&, int role) const override;

    void messagesRemoved() override;
    void messagesAdded(std::size_t count) override;

private:
    static QVariant cleanerData(const TWMessage&, int role);
    QVariant lineData(const TWMessage&, int role) const;

    const TWResultsWindowController& controller_;
    const QIcon icons_[3]; // indexed by TWMessageType
    int rows_ = 0;
};
