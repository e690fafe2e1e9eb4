#include "ui/parts/TWCellStyle.h"

#include <QPainter>
#include <QStyle>
#include <QWidget>

namespace {

constexpr int FocusWidth = 2; // in pixels
constexpr float QuietOpacity = 0.72F;
constexpr float QuietSelection = 0.3F; // the share of the selection's colour that is mixed with the background

QColor mixed(const QColor& colour, const QColor& background)
{
    const auto part = [](float of, float with) { return QuietSelection * of + (1 - QuietSelection) * with; };
    return QColor::fromRgbF(part(colour.redF(), background.redF()), part(colour.greenF(), background.greenF()),
        part(colour.blueF(), background.blueF()));
}

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

// Styles have no disabled colour for what is selected.
void showGreyed(QStyleOptionViewItem& option)
{
    auto& palette = option.palette;
    palette.setColor(QPalette::Text, palette.color(QPalette::Disabled, QPalette::Text));
    palette.setColor(QPalette::HighlightedText, quiet(palette.color(QPalette::HighlightedText)));
}

QColor quiet(QColor color)
{
    color.setAlphaF(QuietOpacity);
    return color;
}

void showSelection(QStyleOptionViewItem& option)
{
    if (option.widget->hasFocus())
        return;
    auto& palette = option.palette;
    palette.setColor(QPalette::Highlight, mixed(palette.color(QPalette::Highlight), palette.color(QPalette::Base)));
    palette.setColor(QPalette::HighlightedText, palette.color(QPalette::Text));
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
