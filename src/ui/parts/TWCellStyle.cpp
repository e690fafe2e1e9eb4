#include "ui/parts/TWCellStyle.h"

#include <QPainter>
#include <QStyle>
#include <QWidget>

namespace {

constexpr int FocusWidth = 2; // in pixels

}

namespace TWCellStyle {

QColor warningColor(const QPalette& palette)
{
    const bool dark = palette.color(QPalette::Base).lightness() < 128;
    return dark ? QColor(255, 204, 102) : QColor(133, 66, 0);
}

void showWarning(QStyleOptionViewItem& option)
{
    option.features |= QStyleOptionViewItem::HasDecoration;
    option.icon = option.widget->style()->standardIcon(QStyle::SP_MessageBoxWarning);
    const int size = option.fontMetrics.height();
    option.decorationSize = QSize(size, size);
    option.palette.setColor(QPalette::Text, warningColor(option.palette));
}

void drawFocus(QPainter& painter, const QStyleOptionViewItem& option)
{
    const bool selected = option.state & QStyle::State_Selected;
    painter.save();
    painter.setPen(QPen(option.palette.color(selected ? QPalette::HighlightedText : QPalette::Highlight), FocusWidth));
    painter.drawRect(option.rect.adjusted(FocusWidth, FocusWidth, -FocusWidth, -FocusWidth));
    painter.restore();
}

}
