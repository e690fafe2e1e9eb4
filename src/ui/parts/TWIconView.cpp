#include "ui/parts/TWIconView.h"

#include <QPainter>

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
    icon_.paint(&painter, rect(), Qt::AlignCenter, isEnabled() ? QIcon::Normal : QIcon::Disabled);
}
