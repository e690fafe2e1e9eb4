#include "ui/windows/TWResultsFilterBar.h"

#include "app/TWResultsWindowController.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>

namespace {

constexpr auto AllCleaners = QT_TRANSLATE_NOOP("TWResultsFilterBar", "All cleaners");
constexpr auto CleanerWithLines = QT_TRANSLATE_NOOP("TWResultsFilterBar", "%1 (%2)");
constexpr auto CleanerWithFailures = QT_TRANSLATE_NOOP("TWResultsFilterBar", "%1 (%2, failed)");
constexpr auto OneFailure = QT_TRANSLATE_NOOP("TWResultsFilterBar", "1 failure");
constexpr auto Failures = QT_TRANSLATE_NOOP("TWResultsFilterBar", "%1 failures");
constexpr auto NextFailure = QT_TRANSLATE_NOOP("TWResultsFilterBar", "%1: go to the next one");
constexpr auto FailureKeys
    = QT_TRANSLATE_NOOP("TWResultsFilterBar", "Goes to the next failure (F4). Shift+F4 goes to the previous one.");

constexpr int CleanerCharacters = 18; // shown of the chosen cleaner, so that growing numbers do not move the controls

}

TWResultsFilterBar::TWResultsFilterBar(const TWResultsWindowController& controller, const QString& iconFolder)
    : controller_(controller)
    , text_(new QLineEdit)
    , kinds_(new QComboBox)
    , cleaners_(new QComboBox)
    , failures_(new QPushButton(QIcon(iconFolder + "/message-failure.svg"), {}))
{
    text_->setObjectName("filterLineEdit");
    text_->setAccessibleName(tr("Filter"));
    text_->setPlaceholderText(tr("Filter"));
    text_->setClearButtonEnabled(true);
    kinds_->setObjectName("kindComboBox");
    kinds_->setAccessibleName(tr("Kind of lines"));
    kinds_->addItems({ tr("All"), tr("Failures") }); // in the order of TWResultsFilter::Kind
    createCleaners();
    failures_->setObjectName("failuresButton");
    failures_->setToolTip(tr(FailureKeys));
    failures_->setAutoDefault(false);
    connect(text_, &QLineEdit::textChanged, this, &TWResultsFilterBar::changed);
    connect(kinds_, &QComboBox::currentIndexChanged, this, &TWResultsFilterBar::changed);
    connect(cleaners_, &QComboBox::currentIndexChanged, this, &TWResultsFilterBar::changed);
    connect(failures_, &QPushButton::clicked, this, &TWResultsFilterBar::nextFailureRequested);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(text_, 1);
    layout->addWidget(cleaners_);
    layout->addWidget(kinds_);
    layout->addWidget(failures_);
    refresh();
}

void TWResultsFilterBar::createCleaners()
{
    cleaners_->setObjectName("cleanerComboBox");
    cleaners_->setAccessibleName(tr("Cleaner"));
    cleaners_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    cleaners_->setMinimumContentsLength(CleanerCharacters);
    cleaners_->addItem(tr(AllCleaners), TWNoCleaner);
}

TWResultsFilter::Wanted TWResultsFilterBar::wanted() const
{
    return { text_->text(), static_cast<TWResultsFilter::Kind>(kinds_->currentIndex()),
        cleaners_->currentData().toInt() };
}

void TWResultsFilterBar::refresh()
{
    listCleaners();
    for (int item = 1; item < cleaners_->count(); ++item) {
        if (const auto title = titleOf(cleaners_->itemData(item).toInt()); title != cleaners_->itemText(item))
            cleaners_->setItemText(item, title);
    }
    const auto count = controller_.failures().size();
    const auto text = count == 1 ? tr(OneFailure) : tr(Failures).arg(locale().toString(count));
    failures_->setText(text);
    failures_->setAccessibleName(tr(NextFailure).arg(text));
    failures_->setVisible(count > 0);
}

// Offers the cleaners that have lines, and the chosen one even if it has none in this run.
void TWResultsFilterBar::listCleaners()
{
    const QSignalBlocker quiet(cleaners_);
    for (int cleaner = 0, item = 1; cleaner < TWCleanerCount; ++cleaner) {
        const bool listed = item < cleaners_->count() && cleaners_->itemData(item) == cleaner;
        const bool offered = controller_.count(cleaner).lines > 0 || (listed && item == cleaners_->currentIndex());
        if (offered && !listed)
            cleaners_->insertItem(item, {}, cleaner);
        else if (listed && !offered)
            cleaners_->removeItem(item);
        item += offered ? 1 : 0;
    }
}

QString TWResultsFilterBar::titleOf(int cleaner) const
{
    const auto& count = controller_.count(cleaner);
    const auto* title = TWCleanerTable()[static_cast<std::size_t>(cleaner)].title;
    return tr(count.failures > 0 ? CleanerWithFailures : CleanerWithLines)
        .arg(QLatin1String(title), locale().toString(count.lines));
}

void TWResultsFilterBar::clear()
{
    {
        const QSignalBlocker kinds(kinds_);
        const QSignalBlocker cleaners(cleaners_);
        text_->clear();
        kinds_->setCurrentIndex(0);
        cleaners_->setCurrentIndex(0);
    }
    emit changed();
}

void TWResultsFilterBar::focusText()
{
    text_->setFocus();
}
