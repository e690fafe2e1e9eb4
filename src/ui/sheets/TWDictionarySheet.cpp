#include "ui/sheets/TWDictionarySheet.h"

#include "ui/parts/TWMessageBar.h"
#include "ui/parts/TWQtText.h"
#include "ui/parts/TWTokenField.h"
#include "ui/windows/TWHelpWindow.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QShowEvent>
#include <QVBoxLayout>

namespace {

// In characters and lines of text.
constexpr int SheetWidth = 84;
constexpr int SheetHeight = 24;

}

TWDictionarySheet::TWDictionarySheet(
    TWDictionaryWindowController& controller, TWHelpWindow& helpWindow, QWidget* parent)
    : QDialog(parent, Qt::Sheet)
    , controller_(controller)
    , helpWindow_(helpWindow)
    , messageBar_(new TWMessageBar)
    , field_(new TWTokenField)
    , count_(new QLabel)
{
    setObjectName("dictionarySheet");
    setWindowTitle(tr("Dictionary"));
    setWindowModality(Qt::WindowModal);
    auto* introduction = new QLabel(tr("Rules with &keywords delete items whose names contain one of these words:"));
    introduction->setObjectName("introductionLabel");
    introduction->setBuddy(field_);
    introduction->setWordWrap(true);
    count_->setObjectName("countLabel");
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(introduction);
    layout->addWidget(messageBar_);
    layout->addWidget(field_, 1);
    layout->addWidget(count_);
    layout->addWidget(createButtons());
    resize(SheetWidth * fontMetrics().averageCharWidth(), SheetHeight * fontMetrics().lineSpacing());
    connect(field_, &TWTokenField::wordsEdited, this, &TWDictionarySheet::wordsEdited);
    field_->setFocus();
    controller_.setView(this);
}

TWDictionarySheet::~TWDictionarySheet()
{
    controller_.setView(nullptr);
}

QWidget* TWDictionarySheet::createButtons()
{
    auto* box = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel | QDialogButtonBox::Help);
    const auto set = [&](QDialogButtonBox::StandardButton which, const char* objectName, const QString& name) {
        box->button(which)->setObjectName(objectName);
        box->button(which)->setAccessibleName(name);
        return box->button(which);
    };
    auto* saveButton = set(QDialogButtonBox::Save, "savePushButton", tr("Save"));
    saveButton->setDefault(true);
    connect(saveButton, &QPushButton::clicked, this, &TWDictionarySheet::save);
    connect(
        set(QDialogButtonBox::Cancel, "cancelPushButton", tr("Cancel")), &QPushButton::clicked, this, &QDialog::reject);
    connect(set(QDialogButtonBox::Help, "helpPushButton", tr("Help")), &QPushButton::clicked, this,
        [this] { controller_.help(); });
    return box;
}

void TWDictionarySheet::showEvent(QShowEvent* event)
{
    if (!event->spontaneous()) {
        field_->discardTyping();
        wordsChanged();
    }
    QDialog::showEvent(event);
}

void TWDictionarySheet::reject()
{
    // A word that was not ended is none: it must not take part in a cleaning.
    field_->discardTyping();
    controller_.cancel();
}

void TWDictionarySheet::closeSheet()
{
    done(Accepted);
}

void TWDictionarySheet::openHelpAnchor(const std::string& anchor)
{
    helpWindow_.openAnchor(anchor);
}

void TWDictionarySheet::wordsChanged()
{
    QStringList words;
    for (const auto& word : controller_.wordDictionary())
        words.append(TWQtText::exact(word));
    field_->setWords(words);
    messageBar_->setText(TWQtText::shown(controller_.problem()));
    showCount();
}

void TWDictionarySheet::showProblem(const std::string& problem)
{
    messageBar_->setText(TWQtText::shown(problem));
}

void TWDictionarySheet::wordsEdited()
{
    std::vector<std::string> words;
    for (const auto& word : field_->words())
        words.push_back(TWQtText::bytes(word));
    controller_.setWordDictionary(std::move(words));
    showCount();
}

void TWDictionarySheet::save()
{
    field_->finishTyping();
    messageBar_->setText({});
    controller_.save();
}

void TWDictionarySheet::showCount()
{
    const auto count = field_->words().size();
    count_->setText(count == 1 ? tr("1 word") : tr("%1 words").arg(QLocale().toString(count)));
}
