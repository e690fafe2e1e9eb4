#pragma once

#include "app/TWResultsLog.h"

#include <QSortFilterProxyModel>

// Lets through the lines that contain a text, whatever its case, and are of the wanted kind. Costs memory and time for
// every line, so the results window puts it between model and table only while there is something to filter.
class TWResultsFilter final : public QSortFilterProxyModel {
    Q_OBJECT

public:
    enum class Kind { All, Failures };

    using QSortFilterProxyModel::QSortFilterProxyModel;

    void setFilter(const QString& text, Kind);
    bool letsAllThrough() const { return text_.isEmpty() && kind_ == Kind::All; }

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override;

private:
    QString text_;
    Kind kind_ = Kind::All;
};
