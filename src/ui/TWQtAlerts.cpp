#include "ui/TWQtAlerts.h"

#include "ui/TWQtText.h"

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

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
    for (auto* label : box.findChildren<QLabel*>())
        label->setTextFormat(Qt::PlainText);
}

}

void TWQtAlerts::show(const TWAlert& alert, std::function<void(TWAnswer)> answered)
{
    auto* box = new QMessageBox(window_);
    box->setObjectName("alertMessageBox");
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowTitle(window_ ? window_->windowTitle() : TWQtText::exact(alert.title));
    box->setIcon(alert.alternateButton.empty() ? QMessageBox::Information : QMessageBox::Warning);
    box->setText(TWQtText::exact(alert.title));
    box->setInformativeText(TWQtText::exact(alert.text));
    showPlainly(*box);

    auto* defaultButton = addButton(*box, alert.defaultButton, QMessageBox::AcceptRole, "defaultButton");
    box->setDefaultButton(defaultButton);
    QPushButton* alternateButton = nullptr;
    if (!alert.alternateButton.empty())
        alternateButton = addButton(*box, alert.alternateButton, QMessageBox::RejectRole, "alternateButton");
    box->setEscapeButton(alternateButton ? alternateButton : defaultButton);
    QObject::connect(box, &QDialog::finished, box, [box, defaultButton, alternateButton, answered = std::move(answered)] {
        const bool alternate = alternateButton && box->clickedButton() != defaultButton;
        answered(alternate ? TWAnswer::Alternate : TWAnswer::Default);
    });
    box->open();
}
