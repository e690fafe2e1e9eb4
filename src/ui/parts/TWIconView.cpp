#include "ui/parts/TWIconView.h"

#include <QPainter>

namespace {

// On a dark background styles draw disabled icons nearly as bright as the others.
constexpr double DisabledOpacity = 0.5;

}

TWIconView::TWIconView(int size, QWidget* parent)
    : QLabel(parent)
{
    setFixedSize(size, size);
}

void TWIconView::setIcon(const QIcon& icon)
{
    icon_ = icon;
    update();
}

void TWIconView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (!isEnabled() && palette().color(QPalette::Window).lightness() < 128)
        painter.setOpacity(DisabledOpacity);
    icon_.paint(&painter, rect(), Qt::AlignCenter, isEnabled() ? QIcon::Normal : QIcon::Disabled);
}
