#include "ui/windows/TWQtAlerts.h"

#include "ui/parts/TWIconView.h"
#include "ui/parts/TWQtText.h"
#include "ui/parts/TWTextLabel.h"
#include "ui/sheets/TWSheet.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QPushButton>
#include <QStyle>

#include <utility>

namespace {

constexpr int TextWidth = 60; // in characters
constexpr int Spacing = 12;

// One alert on screen. It deletes itself once it is answered.
class Alert final : public TWSheet {
public:
    Alert(const TWAlert& alert, std::function<void(TWAnswer)> answered, QWidget* parent)
        : TWSheet("alertSheet", parent->window()->windowTitle(), parent)
    {
        setAttribute(Qt::WA_DeleteOnClose);
        createButtons(alert);
        setContent(createContent(alert), keyboardButton_);
        connect(this, &QDialog::finished, [this, answered = std::move(answered)] { answered(answer_); });
    }

private:
    QLabel* createLabel(const std::string& text, const QString& objectName, const QFont& font)
    {
        auto* label = new TWTextLabel(objectName);
        label->setFont(font);
        label->setFixedWidth(TextWidth * fontMetrics().averageCharWidth());
        label->setWholeText(TWQtText::exact(text));
        label->setMinimumHeight(label->heightForWidth(label->width()));
        return label;
    }

    QWidget* createContent(const TWAlert& alert)
    {
        auto bold = font();
        bold.setBold(true);
        setAccessibleName(TWQtText::exact(alert.title));
        setAccessibleDescription(TWQtText::exact(alert.text));
        auto* texts = new QVBoxLayout;
        texts->setSpacing(Spacing);
        texts->addWidget(createLabel(alert.title, "titleLabel", bold));
        texts->addWidget(createLabel(alert.text, "textLabel", font()));
        texts->addStretch();
        auto* content = new QWidget;
        auto* layout = new QHBoxLayout(content);
        layout->setContentsMargins(0, 0, 0, Spacing);
        layout->setSpacing(Spacing);
        layout->addWidget(createIcon(alert), 0, Qt::AlignTop);
        layout->addLayout(texts);
        return content;
    }

    QWidget* createIcon(const TWAlert& alert)
    {
        auto icon = QApplication::windowIcon();
        if (!alert.alternateButton.empty())
            icon = style()->standardIcon(QStyle::SP_MessageBoxWarning);
        else if (icon.isNull())
            icon = style()->standardIcon(QStyle::SP_MessageBoxInformation);
        auto* view = new TWIconView(style()->pixelMetric(QStyle::PM_MessageBoxIconSize), nullptr);
        view->setIcon(icon);
        return view;
    }

    void createButtons(const TWAlert& alert)
    {
        // With only one button, every way to close most alerts means that button.
        if (!alert.alternateButton.empty() || alert.canBeClosed)
            answer_ = TWAnswer::Alternate;
        auto* confirm = createButton(alert.defaultButton, QDialogButtonBox::AcceptRole, "defaultButton");
        connect(confirm, &QPushButton::clicked, this, [this] { end(TWAnswer::Default); });
        keyboardButton_ = confirm;
        if (!alert.otherButton.empty()) {
            auto* other = createButton(alert.otherButton, QDialogButtonBox::DestructiveRole, "otherButton");
            connect(other, &QPushButton::clicked, this, [this] { end(TWAnswer::Other); });
        }
        if (!alert.alternateButton.empty()) {
            auto* alternate = createButton(alert.alternateButton, QDialogButtonBox::RejectRole, "alternateButton");
            connect(alternate, &QPushButton::clicked, this, &QDialog::reject);
            if (alert.confirming == TWConfirming::LosesSomething)
                keyboardButton_ = alternate;
        }
        setDefaultButton(keyboardButton_);
    }

    void end(TWAnswer answer)
    {
        answer_ = answer;
        accept();
    }

    QPushButton* createButton(const std::string& text, QDialogButtonBox::ButtonRole role, const QString& objectName)
    {
        const auto title = TWQtText::exact(text);
        // In a button's text "&" marks the letter to press with Alt.
        auto* button = addButton(QString(title).replace('&', "&&"), role, objectName);
        button->setAccessibleName(title);
        return button;
    }

    QPushButton* keyboardButton_ = nullptr;
    TWAnswer answer_ = TWAnswer::Default;
};

// Returns the sheet that is open on the window, else the window. An alert must not be the parent, because it would
// delete the new alert with itself.
QWidget* parentFor(QWidget* window)
{
    auto* front = QApplication::activeModalWidget();
    while (front && front->testAttribute(Qt::WA_DeleteOnClose))
        front = front->parentWidget();
    return front && front->parentWidget() == window ? front : window;
}

}

void TWQtAlerts::setWindow(QWidget* window)
{
    window_ = window;
    for (auto& each : std::exchange(waiting_, {}))
        show(each.alert, std::move(each.answered));
}

void TWQtAlerts::show(const TWAlert& alert, std::function<void(TWAnswer)> answered)
{
    if (window_)
        (new Alert(alert, std::move(answered), parentFor(window_)))->open();
    else
        waiting_.push_back({ alert, std::move(answered) });
}
