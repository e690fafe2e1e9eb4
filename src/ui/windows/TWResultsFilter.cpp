#include "ui/windows/TWResultsFilter.h"

#include "ui/windows/TWResultsModel.h"

void TWResultsFilter::setFilter(const Wanted& wanted)
{
    wanted_ = wanted;
    invalidateFilter();
}

bool TWResultsFilter::filterAcceptsRow(int row, const QModelIndex& parent) const
{
    const auto line = sourceModel()->index(row, TWResultsModel::LineColumn, parent);
    if (wanted_.cleaner != TWNoCleaner && line.data(TWResultsModel::CleanerRole) != wanted_.cleaner)
        return false;
    if (wanted_.kind == Kind::Failures && !line.data(TWResultsModel::ConcernsFailureRole).toBool())
        return false;
    return wanted_.text.isEmpty() || line.data().toString().contains(wanted_.text, Qt::CaseInsensitive);
}
