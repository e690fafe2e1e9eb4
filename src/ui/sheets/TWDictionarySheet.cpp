#include "ui/sheets/TWDictionarySheet.h"

#include "ui/parts/TWQtText.h"

#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

// The preferred size, in characters and lines of text.
constexpr int SheetWidth = 84;
constexpr int SheetHeight = 24;

}

TWDictionarySheet::TWDictionarySheet(TWDictionaryWindowController& controller, QWidget* parent)
    : TWSheet("dictionarySheet", tr("Dictionary"), parent)
    , controller_(controller)
    , field_(new TWTokenField)
    , count_(new QLabel)
    , unsaved_(new QLabel(tr("Not saved; in use until you quit or open the dictionary again.")))
{
    setPreferredSize(SheetWidth, SheetHeight);
    setIntroduction(tr("&Keyword rules delete items whose names contain one of these words:"));
    setContent(createContent(), field_);
    createButtons();
    controller_.setView(this);
}

TWDictionarySheet::~TWDictionarySheet()
{
    controller_.setView(nullptr);
}

QWidget* TWDictionarySheet::createContent()
{
    count_->setObjectName("countLabel");
    unsaved_->setObjectName("unsavedLabel");
    unsaved_->setWordWrap(true);
    unsaved_->setAlignment(Qt::AlignTrailing | Qt::AlignVCenter);
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(field_, 1);
    auto* below = new QHBoxLayout;
    below->addWidget(count_);
    below->addWidget(unsaved_, 1);
    layout->addLayout(below);
    connect(field_, &TWTokenField::wordsEdited, this, &TWDictionarySheet::wordsEdited);
    connect(field_, &TWTokenField::undoRequested, this, &TWDictionarySheet::undo);
    connect(field_, &TWTokenField::wordsReplaced, this, &TWDictionarySheet::offerToRestore);
    return content;
}

void TWDictionarySheet::offerToRestore(const TWPlacedWords& removed, const TWPlacedWords& inserted)
{
    QString text; // the bar is only for words that are gone
    if (inserted.empty())
        text = removed.size() == 1 ? tr("1 word was removed.")
                                   : tr("%1 words were removed.").arg(QLocale().toString(removed.size()));
    offerUndo(text, [this, removed, inserted] { field_->replaceWords(inserted, removed); });
}

void TWDictionarySheet::createButtons()
{
    auto* save = addButton(QDialogButtonBox::Save, "savePushButton", tr("Save"));
    auto* cancel = addButton(QDialogButtonBox::Cancel, "cancelPushButton", tr("Cancel"));
    auto* help = addButton(QDialogButtonBox::Help, "helpPushButton", tr("Help"));
    setDefaultButton(save);
    connect(save, &QPushButton::clicked, this, &TWDictionarySheet::save);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(help, &QPushButton::clicked, this, [this] { controller_.help(); });
}

void TWDictionarySheet::open()
{
    controller_.loadDictionary();
    field_->discardTyping();
    wordsChanged();
    TWSheet::open();
}

void TWDictionarySheet::reject()
{
    // A word whose typing was not ended must not take part in a cleaning.
    field_->discardTyping();
    controller_.cancel();
}

void TWDictionarySheet::closeSheet()
{
    done(Accepted);
}

void TWDictionarySheet::openHelpAnchor(const std::string& anchor)
{
    emit helpRequested(TWQtText::exact(anchor));
}

void TWDictionarySheet::wordsChanged()
{
    QStringList words;
    for (const auto& word : controller_.wordDictionary())
        words.append(TWQtText::exact(word));
    field_->setWords(words);
    setProblem(TWQtText::shown(controller_.problem()));
    showState();
}

void TWDictionarySheet::showProblem(const std::string& problem)
{
    showMessage(TWQtText::shown(problem));
}

void TWDictionarySheet::wordsEdited()
{
    std::vector<std::string> words;
    for (const auto& word : field_->words())
        words.push_back(TWQtText::bytes(word));
    controller_.setWordDictionary(std::move(words));
    showState();
}

void TWDictionarySheet::save()
{
    field_->finishTyping();
    showMessage({});
    controller_.save();
}

void TWDictionarySheet::showState()
{
    const auto count = field_->words().size();
    count_->setText(count == 1 ? tr("1 word") : tr("%1 words").arg(QLocale().toString(count)));
    unsaved_->setVisible(controller_.hasUnsavedEdits());
}
