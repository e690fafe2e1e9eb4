#include "ui/sheets/TWApplicationsSheet.h"

#include "ui/parts/TWCheckBox.h"
#include "ui/parts/TWQtText.h"
#include "ui/parts/TWQuietLabel.h"
#include "ui/parts/TWRecordTable.h"
#include "ui/sheets/TWApplicationChooser.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QShowEvent>

#include <algorithm>

namespace {

// The preferred size, in characters and lines of text.
constexpr int SheetWidth = 100;
constexpr int SheetHeight = 34;

QString timeText(std::int32_t seconds)
{
    if (seconds == 1)
        return TWApplicationsSheet::tr("1 second");
    if (seconds == 60)
        return TWApplicationsSheet::tr("1 minute");
    if (seconds > 60 && seconds % 60 == 0)
        return TWApplicationsSheet::tr("%1 minutes").arg(QLocale().toString(seconds / 60));
    return TWApplicationsSheet::tr("%1 seconds").arg(QLocale().toString(seconds));
}

}

TWApplicationsSheet::TWApplicationsSheet(TWApplicationsWindowController& controller, QWidget* parent)
    : TWRecordSheet(controller, "applications", tr("Applications"), parent)
    , controller_(controller)
    , icons_(*this)
    , timeoutPopUpButton_(new QComboBox)
    , forceQuitButton_(new TWCheckBox(tr("&Force quit applications that have not quit in time")))
{
    setPreferredSize(SheetWidth, SheetHeight);
    setRecords(columns(),
        { tr("The Applications cleaner asks each running copy of these &applications to quit. Changes of the list take "
             "effect immediately. OK also saves them."),
            tr("Applications"),
            tr("No applications yet. Press + to choose some, or drop .desktop files or programs here."),
            tr("Add applications"), tr("Remove the selected application"),
            tr("The name \"%1\" is not valid UTF-8, so the list cannot hold it.") },
        createSettings());
    controller_.setView(this);
}

TWApplicationsSheet::~TWApplicationsSheet()
{
    controller_.setView(nullptr);
}

std::vector<TWRecordColumn> TWApplicationsSheet::columns()
{
    using Column = TWRecordColumn;
    const auto isThere = [this](int row) { return controller_.note(row).problem.empty(); };
    return {
        Column::text("application", tr("Application"),
            [this](int row) { return controller_.applicationsArray()[static_cast<std::size_t>(row)].shownName(); })
            .usedIf(isThere)
            .withIcon([this](int row) { return icons_.icon(controller_.note(row).icon); })
            .withToolTip([this](int row) { return controller_.absolutePath(row); }),
        Column::path("file", tr("File"),
            [this](int row) { return controller_.applicationsArray()[static_cast<std::size_t>(row)].path; })
            .usedIf(isThere),
        Column::note("note", tr("Note"), [this](int row) { return note(row); }),
    };
}

TWRecordNote TWApplicationsSheet::note(int row) const
{
    if (const auto problem = controller_.note(row).problem; !problem.empty())
        return { TWQtText::shown(problem), true };
    const auto count = controller_.occurrences(row);
    if (count == 1)
        return {};
    return { count == 2 ? tr("In the list twice")
                        : tr("In the list %1 times").arg(QLocale().toString(qulonglong(count))),
        false };
}

QWidget* TWApplicationsSheet::createSettings()
{
    timeoutPopUpButton_->setObjectName("timeoutPopUpButton");
    auto* timeoutLabel = new QLabel(tr("&Wait at most:"));
    timeoutLabel->setBuddy(timeoutPopUpButton_);
    timeoutPopUpButton_->setAccessibleName(tr("Wait at most"));
    forceQuitButton_->setObjectName("forceQuitButton");
    auto* settings = new QWidget;
    auto* warning = new TWQuietLabel(settings);
    warning->setText(tr("A program that is forced to quit is not asked to save: what is not saved in it is lost."));
    forceQuitButton_->setAccessibleDescription(warning->text());
    auto* timeout = new QHBoxLayout;
    timeout->addWidget(timeoutLabel);
    timeout->addWidget(timeoutPopUpButton_);
    timeout->addStretch(1);
    auto* layout = new QVBoxLayout(settings);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(timeout);
    layout->addWidget(forceQuitButton_);
    layout->addWidget(warning);
    connect(timeoutPopUpButton_, &QComboBox::activated, this,
        [this] { showMessage(TWQtText::shown(controller_.setTimeout(timeoutPopUpButton_->currentData().toInt()))); });
    connect(forceQuitButton_, &TWCheckBox::clicked, this,
        [this](bool on) { showMessage(TWQtText::shown(controller_.setForceQuit(on))); });
    return settings;
}

// A time-out that a command has set need not be one of the usual ones.
void TWApplicationsSheet::refresh()
{
    forceQuitButton_->setChecked(controller_.forceQuit());
    const auto timeout = controller_.timeout();
    if (timeoutPopUpButton_->currentData() == QVariant(timeout))
        return;
    auto seconds = TWApplicationsWindowController::timeouts();
    const auto place = std::lower_bound(seconds.begin(), seconds.end(), timeout);
    if (place == seconds.end() || *place != timeout)
        seconds.insert(place, timeout);
    timeoutPopUpButton_->hidePopup();
    timeoutPopUpButton_->clear();
    for (const auto each : seconds)
        timeoutPopUpButton_->addItem(timeText(each), each);
    timeoutPopUpButton_->setCurrentIndex(timeoutPopUpButton_->findData(timeout));
}

void TWApplicationsSheet::showEvent(QShowEvent* event)
{
    if (!event->spontaneous())
        refresh();
    TWRecordSheet::showEvent(event);
}

QString TWApplicationsSheet::problem() const
{
    return TWQtText::shown(controller_.problem());
}

void TWApplicationsSheet::addRecord()
{
    showMessage({});
    const TWApplicationChooser::Texts texts{ tr("Select one or more application(s)"),
        tr("Select the applications that the Applications cleaner is to quit. Hold Ctrl or Shift to select several."),
        tr("Add") };
    auto* chooser = new TWApplicationChooser(
        controller_.finder(), controller_.places(), texts, TWApplicationChooser::Number::Several,
        [this](const std::vector<TWApplication>& chosen) { controller_.add(chosen); }, this);
    chooser->open();
}

void TWApplicationsSheet::removeRecord(int row)
{
    const auto removed = controller_.applicationsArray()[static_cast<std::size_t>(row)];
    controller_.removeEntry(row);
    offerUndo(tr("\"%1\" was removed.").arg(TWQtText::shown(removed.shownName())), [this, row, removed] {
        const int place = std::min(row, controller_.recordCount());
        controller_.insertEntry(place, removed);
        table().showRow(place);
    });
}
