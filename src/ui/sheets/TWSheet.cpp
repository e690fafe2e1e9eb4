#include "ui/sheets/TWSheet.h"

#include "ui/parts/TWControls.h"
#include "ui/parts/TWFocusFrame.h"
#include "ui/parts/TWMessageBar.h"
#include "ui/parts/TWScrollBox.h"

#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>

#include <algorithm>

namespace {

// In the tab order.
constexpr QDialogButtonBox::ButtonRole Roles[] = {
    QDialogButtonBox::AcceptRole,
    QDialogButtonBox::DestructiveRole,
    QDialogButtonBox::RejectRole,
    QDialogButtonBox::ActionRole,
    QDialogButtonBox::ResetRole,
    QDialogButtonBox::HelpRole,
};

bool takesTab(const QWidget& widget)
{
    return (widget.focusPolicy() & Qt::TabFocus) != 0;
}

}

TWSheet::TWSheet(const QString& objectName, const QString& title, QWidget* parent)
    : QDialog(parent, Qt::Sheet)
    , column_(new QVBoxLayout)
    , messageBar_(new TWMessageBar(TWMessageBar::Kind::Warning, "messageBar"))
    , noticeBar_(new TWMessageBar(TWMessageBar::Kind::Notice, "noticeBar"))
    , undoBar_(new TWMessageBar(TWMessageBar::Kind::Notice, "undoBar", tr("&Undo")))
    , buttons_(new QDialogButtonBox)
{
    setObjectName(objectName);
    setWindowTitle(title);
    setWindowModality(Qt::WindowModal);
    new TWFocusFrame(this);
    auto* scrolled = new QWidget;
    scrolled->setLayout(column_);
    column_->setContentsMargins(0, 0, 0, 0);
    column_->addWidget(messageBar_);
    column_->addWidget(noticeBar_);
    column_->addWidget(undoBar_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new TWScrollBox(scrolled), 1);
    layout->addWidget(buttons_);
    connect(undoBar_, &TWMessageBar::pressed, this, &TWSheet::undo);
    connect(new QShortcut(QKeySequence::Undo, this), &QShortcut::activated, this, &TWSheet::undo);
}

void TWSheet::setIntroduction(const QString& text)
{
    auto* label = new QLabel(text);
    label->setObjectName("introductionLabel");
    label->setWordWrap(true);
    column_->insertWidget(0, label);
}

void TWSheet::setContent(QWidget* content, QWidget* firstFocus)
{
    firstFocus_ = firstFocus;
    column_->addWidget(content, 1);
    if (auto* introduction = findChild<QLabel*>("introductionLabel"))
        introduction->setBuddy(firstFocus);
}

void TWSheet::setPreferredSize(int characters, int lines)
{
    preferredSize_ = QSize(characters * fontMetrics().averageCharWidth(), lines * fontMetrics().lineSpacing());
}

QPushButton* TWSheet::addButton(
    QDialogButtonBox::StandardButton which, const QString& objectName, const QString& accessibleName)
{
    auto* button = buttons_->addButton(which);
    setUpButton(button, objectName);
    button->setAccessibleName(accessibleName);
    return button;
}

QPushButton* TWSheet::addButton(const QString& text, QDialogButtonBox::ButtonRole role, const QString& objectName)
{
    auto* button = buttons_->addButton(text, role);
    setUpButton(button, objectName);
    return button;
}

void TWSheet::setUpButton(QPushButton* button, const QString& objectName)
{
    button->setObjectName(objectName);
    button->setAutoDefault(false);
    button->setDefault(false);
}

// The button must already be in the sheet; otherwise Qt would make the next button that is added the default one.
void TWSheet::setDefaultButton(QPushButton* button)
{
    button->setDefault(true);
}

bool TWSheet::event(QEvent* event)
{
    const bool result = QDialog::event(event);
    // The button box has laid out its buttons anew and so changed the tab order.
    if (event->type() == QEvent::StyleChange)
        QMetaObject::invokeMethod(this, &TWSheet::arrangeTabOrder, Qt::QueuedConnection);
    return result;
}

void TWSheet::showEvent(QShowEvent* event)
{
    if (!event->spontaneous()) {
        arrangeTabOrder();
        if (!testAttribute(Qt::WA_Resized))
            resize(preferredSize_.isValid() ? preferredSize_ : sizeHint());
        resize(TWFitToScreen(*this, size()));
        if (firstFocus_)
            firstFocus_->setFocus();
    }
    QDialog::showEvent(event);
}

void TWSheet::hideEvent(QHideEvent* event)
{
    QDialog::hideEvent(event);
    if (!event->spontaneous()) {
        showMessage({});
        forgetUndo();
    }
}

void TWSheet::keyPressEvent(QKeyEvent* event)
{
    if (!TWControls::pressFocused(*this, *event))
        QDialog::keyPressEvent(event);
}

void TWSheet::arrangeTabOrder()
{
    std::vector<QWidget*> order;
    for (auto* widget = nextInFocusChain(); widget != this; widget = widget->nextInFocusChain()) {
        if (takesTab(*widget) && !buttons_->isAncestorOf(widget))
            order.push_back(widget);
    }
    for (const auto role : Roles) {
        for (auto* button : buttons_->buttons()) {
            if (buttons_->buttonRole(button) == role)
                order.push_back(button);
        }
    }
    for (std::size_t next = 1; next < order.size(); ++next)
        setTabOrder(order[next - 1], order[next]);
}

void TWSheet::setProblem(const QString& problem, Cause cause)
{
    problem_ = problem;
    cause_ = cause;
    showMessages();
}

void TWSheet::showMessage(const QString& message)
{
    message_ = message;
    noticeBar_->setText({});
    showMessages();
}

void TWSheet::showNotice(const QString& notice)
{
    showMessage({});
    noticeBar_->setText(notice);
}

void TWSheet::showMessages()
{
    auto lines = QStringList{ problem_, message_ };
    if (!problem_.isEmpty() && cause_ == Cause::DamagedFile)
        lines.insert(1, tr("If you save here, the damaged file is kept with \".damaged\" added to its name."));
    lines.removeAll(QString());
    messageBar_->setText(lines.join('\n'));
}

void TWSheet::offerUndo(const QString& text, std::function<void()> undo)
{
    undoSteps_.push_back({ text, std::move(undo) });
    showUndo();
}

void TWSheet::undo()
{
    if (undoSteps_.empty())
        return;
    const auto step = std::move(undoSteps_.back());
    undoSteps_.pop_back();
    step.undo();
    showUndo();
}

void TWSheet::forgetUndo()
{
    undoSteps_.clear();
    showUndo();
}

// The bar may have the focus when it hides because nothing is left to undo.
void TWSheet::showUndo()
{
    if (undoSteps_.empty() && undoBar_->isAncestorOf(focusWidget()) && firstFocus_)
        firstFocus_->setFocus();
    const bool anyText
        = std::any_of(undoSteps_.begin(), undoSteps_.end(), [](const auto& step) { return step.text != ""; });
    const auto newest = undoSteps_.empty() ? QString() : undoSteps_.back().text;
    undoBar_->setText(
        anyText && newest.isEmpty() ? tr("The latest changes can be undone, one after the other.") : newest);
}
