#pragma once

#include "app/TWResultsLog.h"

#include <QSortFilterProxyModel>

// Shows only the lines that contain a text, ignoring case, and are of the wanted kind. It costs memory and time for
// every line, so the results window puts it between model and table only while a filter is set.
class TWResultsFilter final : public QSortFilterProxyModel {
    Q_OBJECT

public:
    // Differs on purpose: Failures includes the lines that explain them.
    enum class Kind { All, Failures };

    using QSortFilterProxyModel::QSortFilterProxyModel;

    void setFilter(const QString& text, Kind);

    // Filters all lines again.
    void renew() { invalidateFilter(); }

    bool letsAllThrough() const { return text_.isEmpty() && kind_ == Kind::All; }

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override;

private:
    QString text_;
    Kind kind_ = Kind::All;
};
