#include "ui/parts/TWTextLabel.h"

#include <QResizeEvent>
#include <QTextBoundaryFinder>

TWTextLabel::TWTextLabel(const QString& objectName, QWidget* parent)
    : QLabel(parent)
{
    setObjectName(objectName);
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse);
    // A long name must not make the window wider than the screen.
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

void TWTextLabel::setWholeText(const QString& text)
{
    whole_ = text;
    setAccessibleName(text);
    fit();
}

void TWTextLabel::resizeEvent(QResizeEvent* event)
{
    QLabel::resizeEvent(event);
    if (event->size().width() != event->oldSize().width())
        fit();
}

// Elides what stands between two places where a line may end.
void TWTextLabel::fit()
{
    QString fitting;
    QTextBoundaryFinder ends(QTextBoundaryFinder::Line, whole_);
    for (qsizetype begin = 0, end = 0; (end = ends.toNextBoundary()) != -1; begin = end)
        fitting += fontMetrics().elidedText(whole_.mid(begin, end - begin), Qt::ElideMiddle, contentsRect().width());
    setText(fitting);
    setToolTip(fitting == whole_ ? QString() : "<p>" + whole_.toHtmlEscaped() + "</p>");
}
