#pragma once

#include "app/TWResultsWindowController.h"

#include <QAbstractTableModel>
#include <QIcon>

// The model of the latest cleaning's lines, with one column. It copies no lines but only counts those that the table
// knows of.
class TWResultsModel final : public QAbstractTableModel, public TWResultsView {
    Q_OBJECT

public:
    static constexpr int ConcernsFailureRole = Qt::UserRole; // true for a failure and for a line that explains one

    TWResultsModel(const TWResultsWindowController&, const QString& iconFolder, QObject* parent);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex&, int role) const override;

    void messagesRemoved() override;
    void messagesAdded(std::size_t count) override;

private:
    const TWResultsWindowController& controller_;
    const QIcon icons_[3]; // indexed by TWMessageType
    int rows_ = 0;
};
