#include "ui/parts/TWQuietLabel.h"

#include <QEvent>
#include <QFontInfo>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

namespace {

constexpr double FontScale = 0.9;

// Opacity of the palette's text colour: subdued, but with a contrast above 4.5 to 1 wherever the palette's own contrast
// is good.
constexpr double Opacity = 0.72;

// The minimum width does not depend on the text, so that the window keeps its width while the texts change.
constexpr int FewestCharacters = 26;
constexpr int UsualCharacters = 38;

}

TWQuietLabel::TWQuietLabel(QWidget* parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

QSize TWQuietLabel::sizeHint() const
{
    const QFontMetrics metrics(smallFont());
    return { metrics.averageCharWidth() * UsualCharacters, metrics.height() };
}

QSize TWQuietLabel::minimumSizeHint() const
{
    const QFontMetrics metrics(smallFont());
    return { metrics.averageCharWidth() * FewestCharacters, metrics.height() };
}

bool TWQuietLabel::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return QLabel::event(event);
    const bool cut = QFontMetrics(smallFont()).horizontalAdvance(text()) > width();
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), cut ? text().toHtmlEscaped() : QString(), this);
    return true;
}

void TWQuietLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setFont(smallFont());
    painter.setPen(palette().color(foregroundRole()));
    if (isEnabled())
        painter.setOpacity(Opacity);
    const auto shown = painter.fontMetrics().elidedText(text(), Qt::ElideRight, width());
    painter.drawText(rect(), Qt::AlignVCenter | Qt::AlignLeading | Qt::TextSingleLine, shown);
}

// Made anew each time, so that it follows a change of the desktop's font.
QFont TWQuietLabel::smallFont() const
{
    QFont small = font();
    small.setPixelSize(qRound(QFontInfo(small).pixelSize() * FontScale));
    return small;
}
