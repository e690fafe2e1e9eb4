#include "ui/parts/TWMessageBar.h"

#include "ui/parts/TWControls.h"
#include "ui/parts/TWIconView.h"
#include "ui/parts/TWTextLabel.h"

#include <QAccessible>
#include <QHBoxLayout>
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
    , text_(new TWTextLabel(objectName + "Label"))
{
    setObjectName(objectName);
    setFrameShape(StyledPanel);
    auto* layout = new QHBoxLayout(this);
    if (kind == Kind::Warning)
        layout->addWidget(warningIcon(*style()), 0, Qt::AlignTop);
    layout->addWidget(text_, 1);
    if (!buttonText.isEmpty()) {
        auto* button = TWControls::button(buttonText, objectName + "Button", QString(buttonText).remove('&'));
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, &TWMessageBar::pressed);
        layout->addWidget(button, 0, Qt::AlignVCenter);
    }
    hide();
}

void TWMessageBar::setText(const QString& text)
{
    if (text == text_->wholeText())
        return;
    text_->setWholeText(text);
    setAccessibleName(text);
    setVisible(!text.isEmpty());
    if (!text.isEmpty()) {
        QAccessibleEvent event(this, QAccessible::Alert);
        QAccessible::updateAccessibility(&event);
    }
}

QString TWMessageBar::text() const
{
    return text_->wholeText();
}
