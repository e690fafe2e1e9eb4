#pragma once

#include "app/TWResultsWindowController.h"

#include <QAbstractTableModel>
#include <QIcon>

// The lines of the latest cleaning as a table of one column. It keeps no lines, only how many of the controller's lines
// the table knows.
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
    const QIcon icons_[3]; // by TWMessageType
    int rows_ = 0;
};
