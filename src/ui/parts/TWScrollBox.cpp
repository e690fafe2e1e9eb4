#include "ui/parts/TWScrollBox.h"

#include <QEvent>
#include <QScreen>
#include <QScrollBar>

namespace {

constexpr int FewestLines = 4;

// An estimate of a window's title bar and borders, because the real sizes are known only when the window is on screen.
constexpr QSize Frame(8, 36);

}

TWScrollBox::TWScrollBox(QWidget* content, QWidget* parent)
    : QScrollArea(parent)
{
    setFrameShape(NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setWidgetResizable(true);
    setWidget(content);
    // Lets the window's own background show through.
    viewport()->setAutoFillBackground(false);
    content->setAutoFillBackground(false);
}

QSize TWScrollBox::sizeHint() const
{
    return widget()->sizeHint();
}

QSize TWScrollBox::minimumSizeHint() const
{
    const auto content = widget()->minimumSizeHint();
    const int bar = verticalScrollBar()->sizeHint().width();
    return { content.width() + bar, std::min(content.height(), FewestLines * fontMetrics().lineSpacing()) };
}

bool TWScrollBox::eventFilter(QObject* object, QEvent* event)
{
    if (object == widget() && event->type() == QEvent::LayoutRequest)
        updateGeometry();
    return QScrollArea::eventFilter(object, event);
}

QSize TWFitToScreen(const QWidget& window, const QSize& wanted)
{
    return wanted.boundedTo(window.screen()->availableGeometry().size() - Frame);
}
