#include "ui/parts/TWTokenLayout.h"

#include <algorithm>

void TWTokenLayout::arrange(const std::vector<int>& widths, const Metrics& metrics)
{
    const int right = metrics.lineWidth - metrics.gap;
    QPoint next(metrics.gap, metrics.gap);
    lineDistance_ = metrics.boxHeight + metrics.gap;
    boxes_.clear();
    boxes_.reserve(widths.size());
    for (const int wanted : widths) {
        const int width = std::min(wanted, right - metrics.gap);
        if (next.x() > metrics.gap && next.x() + width > right)
            next = QPoint(metrics.gap, next.y() + lineDistance_);
        boxes_.emplace_back(next.x(), next.y(), width, metrics.boxHeight);
        next.rx() += width + metrics.gap;
    }
    height_ = next.y() + lineDistance_;
}

int TWTokenLayout::boxAt(const QPoint& point) const
{
    const int count = static_cast<int>(boxes_.size());
    for (int number = firstBelow(point.y()); number < count && box(number).top() <= point.y(); ++number) {
        if (box(number).contains(point))
            return number;
    }
    return -1;
}

int TWTokenLayout::firstBelow(int y) const
{
    const auto found
        = std::partition_point(boxes_.begin(), boxes_.end(), [y](const QRect& box) { return box.bottom() < y; });
    return static_cast<int>(found - boxes_.begin());
}

int TWTokenLayout::neighbour(int number, int lines) const
{
    const auto center = box(number).center() + QPoint(0, lines * lineDistance_);
    const int count = static_cast<int>(boxes_.size());
    int nearest = number;
    int distance = -1;
    for (int each = firstBelow(center.y()); each < count && box(each).top() <= center.y(); ++each) {
        const int toEach = std::abs(box(each).center().x() - center.x());
        if (distance == -1 || toEach < distance) {
            nearest = each;
            distance = toEach;
        }
    }
    return nearest;
}
