#include "ui/windows/TWResultsFilter.h"

#include "ui/windows/TWResultsModel.h"

void TWResultsFilter::setFilter(const QString& text, Kind kind)
{
    text_ = text;
    kind_ = kind;
    invalidateFilter();
}

bool TWResultsFilter::filterAcceptsRow(int row, const QModelIndex& parent) const
{
    const auto index = sourceModel()->index(row, 0, parent);
    if (kind_ == Kind::Failures && !index.data(TWResultsModel::ConcernsFailureRole).toBool())
        return false;
    return text_.isEmpty() || index.data().toString().contains(text_, Qt::CaseInsensitive);
}
