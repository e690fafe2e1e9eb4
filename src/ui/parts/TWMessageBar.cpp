#include "ui/parts/TWMessageBar.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>
#include <QStyle>

TWMessageBar::TWMessageBar(QWidget* parent)
    : QFrame(parent)
    , text_(new QLabel)
{
    setObjectName("messageBar");
    setFrameShape(StyledPanel);
    auto* icon = new QLabel;
    const int size = style()->pixelMetric(QStyle::PM_SmallIconSize);
    icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(QSize(size, size), devicePixelRatioF()));
    text_->setObjectName("messageLabel");
    text_->setWordWrap(true);
    text_->setTextFormat(Qt::PlainText);
    text_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    auto* layout = new QHBoxLayout(this);
    layout->addWidget(icon, 0, Qt::AlignTop);
    layout->addWidget(text_, 1);
    hide();
}

void TWMessageBar::setText(const QString& text)
{
    text_->setText(text);
    text_->setAccessibleName(text);
    setAccessibleName(text);
    setVisible(!text.isEmpty());
    if (!text.isEmpty()) {
        QAccessibleEvent event(this, QAccessible::Alert);
        QAccessible::updateAccessibility(&event);
    }
}

QString TWMessageBar::text() const
{
    return text_->text();
}
