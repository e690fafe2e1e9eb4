#include "ui/parts/TWPictureView.h"

#include <QPainter>

void TWPictureView::setPicture(const QImage& picture)
{
    picture_ = QPixmap::fromImage(picture);
    update();
}

// One pixel of the picture is at most one of the screen, so that nothing is blurred.
void TWPictureView::paintEvent(QPaintEvent*)
{
    if (picture_.isNull())
        return;
    QSizeF size = QSizeF(picture_.size()) / devicePixelRatioF();
    if (size.width() > width() || size.height() > height())
        size.scale(this->size(), Qt::KeepAspectRatio);
    QRectF place(QPointF(), size);
    place.moveCenter(QRectF(rect()).center());
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(place, picture_, picture_.rect());
}
