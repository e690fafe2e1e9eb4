#pragma once

#include "app/TWResultsLog.h"

#include <QSortFilterProxyModel>

// Shows only the lines that contain a text, ignoring case, are of the wanted kind and come from the wanted cleaner. It
// costs memory and time for every line, so the results window puts it between model and table only while a filter is
// set.
class TWResultsFilter final : public QSortFilterProxyModel {
    Q_OBJECT

public:
    // Differs on purpose: Failures includes the lines that explain them.
    enum class Kind { All, Failures };

    using QSortFilterProxyModel::QSortFilterProxyModel;

    struct Wanted {
        QString text;
        Kind kind = Kind::All;
        int cleaner = TWNoCleaner; // for all of them

        bool isEverything() const { return text.isEmpty() && kind == Kind::All && cleaner == TWNoCleaner; }
    };

    void setFilter(const Wanted&);

    // Filters all lines again.
    void renew() { invalidateFilter(); }

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override;

private:
    Wanted wanted_;
};
