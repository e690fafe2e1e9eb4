#include "ui/parts/TWMessageBar.h"

#include "ui/parts/TWIconView.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>

namespace {

TWIconView* warningIcon(const QStyle& style)
{
    auto* icon = new TWIconView(style.pixelMetric(QStyle::PM_SmallIconSize), nullptr);
    icon->setIcon(style.standardIcon(QStyle::SP_MessageBoxWarning));
    return icon;
}

}

TWMessageBar::TWMessageBar(Kind kind, const QString& objectName, const QString& buttonText, QWidget* parent)
    : QFrame(parent)
    , text_(new QLabel)
{
    setObjectName(objectName);
    setFrameShape(StyledPanel);
    text_->setObjectName(objectName + "Label");
    text_->setWordWrap(true);
    text_->setTextFormat(Qt::PlainText);
    text_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // A long name without blanks must not make the window wider than the screen.
    text_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto* layout = new QHBoxLayout(this);
    if (kind == Kind::Warning)
        layout->addWidget(warningIcon(*style()), 0, Qt::AlignTop);
    layout->addWidget(text_, 1);
    if (!buttonText.isEmpty()) {
        auto* button = new QPushButton(buttonText);
        button->setObjectName(objectName + "Button");
        button->setAccessibleName(QString(buttonText).remove('&'));
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, &TWMessageBar::pressed);
        layout->addWidget(button, 0, Qt::AlignVCenter);
    }
    hide();
}

void TWMessageBar::setText(const QString& text)
{
    if (text == text_->text())
        return;
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
