#pragma once

#include <QPixmap>
#include <QWidget>

// A picture in the middle of its place: scaled down to fit, never up.
class TWPictureView final : public QWidget {
    Q_OBJECT

public:
    using QWidget::QWidget;

    void setPicture(const QImage&);

protected:
    void paintEvent(QPaintEvent*) override;

private:
    QPixmap picture_;
};
