#include "ui/windows/TWQtAlerts.h"

#include "ui/parts/TWQtText.h"

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QStyle>

namespace {

// A button takes "&" as the mark of its letter to press.
QString buttonText(const std::string& text)
{
    return TWQtText::exact(text).replace('&', "&&");
}

QPushButton* addButton(QMessageBox& box, const std::string& text, QMessageBox::ButtonRole role, const char* name)
{
    auto* button = box.addButton(buttonText(text), role);
    button->setObjectName(name);
    button->setAccessibleName(TWQtText::exact(text));
    return button;
}

// The texts are never markup, whatever file names they hold. The box itself sees to that for its first text only.
void showPlainly(const QMessageBox& box)
{
    for (auto* label : box.findChildren<QLabel*>()) {
        label->setTextFormat(Qt::PlainText);
        if (label->text() == box.text()) {
            auto bold = label->font();
            bold.setBold(true);
            label->setFont(bold);
        }
    }
}

void setIcon(QMessageBox& box, const TWAlert& alert)
{
    const auto ours = QApplication::windowIcon();
    const int size = box.style()->pixelMetric(QStyle::PM_MessageBoxIconSize);
    if (!alert.alternateButton.empty())
        box.setIcon(QMessageBox::Warning);
    else if (!ours.isNull())
        box.setIconPixmap(ours.pixmap(QSize(size, size), box.devicePixelRatioF()));
}

}

void TWQtAlerts::show(const TWAlert& alert, std::function<void(TWAnswer)> answered)
{
    auto* box = new QMessageBox(window_);
    box->setObjectName("alertMessageBox");
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowTitle(window_ ? window_->windowTitle() : TWQtText::exact(alert.title));
    setIcon(*box, alert);
    box->setText(TWQtText::exact(alert.title));
    box->setInformativeText(TWQtText::exact(alert.text));
    showPlainly(*box);

    auto* defaultButton = addButton(*box, alert.defaultButton, QMessageBox::AcceptRole, "defaultButton");
    box->setDefaultButton(defaultButton);
    QPushButton* alternateButton = nullptr;
    if (!alert.alternateButton.empty())
        alternateButton = addButton(*box, alert.alternateButton, QMessageBox::RejectRole, "alternateButton");
    box->setEscapeButton(alternateButton ? alternateButton : defaultButton);
    QObject::connect(
        box, &QDialog::finished, box, [box, defaultButton, alternateButton, answered = std::move(answered)] {
            const bool alternate = alternateButton && box->clickedButton() != defaultButton;
            answered(alternate ? TWAnswer::Alternate : TWAnswer::Default);
        });
    box->open();
}
