#include "ui/parts/TWSpinner.h"

#include <QPainter>

namespace {

constexpr int Spokes = 10;
constexpr int MillisecondsPerStep = 90;

}

TWSpinner::TWSpinner(int size, QWidget* parent)
    : QWidget(parent)
{
    setFixedSize(size, size);
    auto policy = sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    setSizePolicy(policy);
    hide();
}

void TWSpinner::showEvent(QShowEvent*)
{
    timer_.start(MillisecondsPerStep, this);
}

void TWSpinner::hideEvent(QHideEvent*)
{
    timer_.stop();
}

void TWSpinner::timerEvent(QTimerEvent*)
{
    step_ = (step_ + 1) % Spokes;
    update();
}

void TWSpinner::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(width() / 2.0, height() / 2.0);
    const double outer = width() * 0.46;
    auto colour = palette().color(foregroundRole());
    for (int spoke = 0; spoke < Spokes; ++spoke) {
        const int age = (step_ - spoke + Spokes) % Spokes;
        colour.setAlphaF(static_cast<float>(1.0 - 0.085 * age));
        painter.setPen(QPen(colour, width() * 0.1, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(0, -outer * 0.5), QPointF(0, -outer));
        painter.rotate(360.0 / Spokes);
    }
}
