#include "ui/parts/TWQuietLabel.h"

#include <QEvent>
#include <QFontInfo>
#include <QHelpEvent>
#include <QPainter>
#include <QTextLayout>
#include <QToolTip>

namespace {

constexpr double FontScale = 0.9;

// Opacity of the palette's text colour: subdued, but with a contrast above 4.5 to 1 wherever the palette's own contrast
// is good.
constexpr double Opacity = 0.72;

// The minimum width does not depend on the text, so that the window keeps its width while the texts change.
constexpr int FewestCharacters = 26;
constexpr int UsualCharacters = 52;

}

TWQuietLabel::TWQuietLabel(QWidget* parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
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

int TWQuietLabel::heightForWidth(int width) const
{
    return static_cast<int>(lines(width).size()) * QFontMetrics(smallFont()).height();
}

// At least one line and at most two.
QStringList TWQuietLabel::lines(int width) const
{
    QTextLayout layout(text(), smallFont());
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    auto first = layout.createLine();
    if (first.isValid())
        first.setLineWidth(width);
    layout.endLayout();
    const int end = first.isValid() ? first.textLength() : 0;
    if (end == text().size())
        return { text() };
    return { text().left(end).trimmed(),
        QFontMetrics(smallFont()).elidedText(text().mid(end), Qt::ElideMiddle, width) };
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
    painter.drawText(rect(), Qt::AlignTop | Qt::AlignLeading, lines(width()).join('\n'));
}

// Made anew each time, so that it follows a change of the desktop's font.
QFont TWQuietLabel::smallFont() const
{
    QFont small = font();
    small.setPixelSize(qRound(QFontInfo(small).pixelSize() * FontScale));
    return small;
}
