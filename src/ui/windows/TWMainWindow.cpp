#include "ui/windows/TWMainWindow.h"

#include "support/TWText.h"
#include "ui/parts/TWControls.h"
#include "ui/parts/TWFocusFrame.h"
#include "ui/parts/TWMessageBar.h"
#include "ui/parts/TWQtText.h"
#include "ui/parts/TWScrollBox.h"
#include "ui/sheets/TWSheetTable.h"

#include <QAccessible>
#include <QApplication>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>

#include <algorithm>
#include <utility>

namespace {

constexpr auto RunningTitle = "Cleaning is still going on.";
constexpr auto RunningText = "If you stop now, nothing further is started. The item that is being deleted at this "
                             "moment may be left partly deleted.";
constexpr auto StopAndQuit = "Stop and Quit";
constexpr auto KeepCleaning = "Keep Cleaning";
constexpr auto UnsavedTitle = "Some changes are not saved.";
constexpr auto UnsavedText = "Changed: %@. If the changes are not saved, Tidewell forgets them when it quits.";
constexpr auto SaveAndQuit = "Save and Quit";
constexpr auto QuitWithoutSaving = "Quit Without Saving";
constexpr auto Cancel = "Cancel";
constexpr auto NotSavedTitle = "The changes could not be saved.";
constexpr auto OK = "OK";

// Indexed by TWRunOutcome.
constexpr const char* Outcomes[] = {
    QT_TRANSLATE_NOOP("TWMainWindow", "Nothing was cleaned."),
    QT_TRANSLATE_NOOP("TWMainWindow", "Cleaning is done."),
    QT_TRANSLATE_NOOP("TWMainWindow", "At least one cleaner failed."),
};
constexpr auto NoneOn = QT_TRANSLATE_NOOP("TWMainWindow", "No cleaner is switched on.");
constexpr auto Stopped = QT_TRANSLATE_NOOP("TWMainWindow", "Cleaning was stopped.");

constexpr const char* LightFiles[]
    = { "light-off.png", "light-yellow.png", "light-green.png", "light-red.png", "light-stopped.png" };

constexpr int Margin = 18;
constexpr int RowSpacing = 12;
constexpr int SpareLines = 2; // room for the lines of rows that later need two
constexpr int WidestRow = 110; // in characters; in a wider row the parts would be too far apart

}

TWMainWindow::TWMainWindow(TWTidewellAppDelegate& delegate)
    : delegate_(delegate)
    , messageBar_(new TWMessageBar(TWMessageBar::Kind::Warning, "messageBar"))
    , unsavedBar_(new TWMessageBar(TWMessageBar::Kind::Notice, "unsavedBar", tr("Save &Now")))
    , lines_(delegate.cleanerContext(), delegate.settingsSources(),
          [this](int position, const std::string& line) {
              rows_[static_cast<std::size_t>(position)]->setLine(TWQtText::shown(line));
              showSum();
          })
    , lostSettings_(delegate.platform().userDefaults.problem())
{
    setObjectName("mainWindow");
    setWindowTitle(title());
    auto* column = new QWidget;
    column->setMaximumWidth(WidestRow * fontMetrics().averageCharWidth());
    auto* columnLayout = new QVBoxLayout(column);
    columnLayout->setContentsMargins(Margin, Margin, Margin - TWCleanerRowView::FocusRoom, Margin);
    columnLayout->setSpacing(2 * RowSpacing);
    columnLayout->addWidget(new TWScrollBox(createRows()), 1);
    columnLayout->addLayout(createButtons());
    auto* centre = new QWidget;
    auto* centreLayout = new QHBoxLayout(centre);
    centreLayout->setContentsMargins(0, 0, 0, 0);
    centreLayout->addStretch(1);
    centreLayout->addWidget(column, 1000); // the stretches at both sides get only what the column cannot take
    centreLayout->addStretch(1);
    setCentralWidget(centre);
    createMenus();
    setCleanEnabled(true);
    refresh();
    new TWFocusFrame(this);
    resize(TWFitToScreen(*this, sizeHint() + QSize(0, SpareLines * fontMetrics().height())));
}

QString TWMainWindow::resource(const std::string& name) const
{
    return TWQtText::path(delegate_.platform().bundle.resourcePath(name));
}

QString TWMainWindow::title() const
{
    const auto& platform = delegate_.platform();
    // Qt appends the application's name to any title other than that name.
    return platform.places.sandboxed() ? tr("Sandbox %1").arg(TWQtText::titlePart(platform.places.sandboxRoot))
                                       : TWQtText::exact(platform.bundle.info("CFBundleName"));
}

QWidget* TWMainWindow::createRows()
{
    auto* rows = new QWidget;
    auto* column = new QVBoxLayout(rows);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(RowSpacing);
    column->addWidget(messageBar_);
    column->addWidget(unsavedBar_);
    connect(unsavedBar_, &TWMessageBar::pressed, this, &TWMainWindow::saveNow);
    for (const auto& cleaner : TWCleanerTable()) {
        const auto editable
            = TWSheetNamed(cleaner.editor) ? TWCleanerRowView::Editable::Yes : TWCleanerRowView::Editable::No;
        auto* row = new TWCleanerRowView(cleaner, editable, lightIcons_, rows);
        rows_.push_back(row);
        column->addWidget(row);
        connect(row, &TWCleanerRowView::checked, this, [this, &cleaner](bool on) { switchCleaner(cleaner.key, on); });
        connect(row, &TWCleanerRowView::editRequested, this, [this, &cleaner] { emit editRequested(cleaner.editor); });
    }
    column->addStretch();
    return rows;
}

// Clean keeps its place while Stop appears and disappears, so that a late click on Stop does not start a cleaning.
QLayout* TWMainWindow::createButtons()
{
    stopButton_ = TWControls::button(tr("Sto&p"), "stopButton", tr("Stop cleaning"));
    cleanButton_ = TWControls::button(tr("&Clean"), "cleanButton", tr("Clean"));
    cleanButton_->setDefault(true);
    auto* previewButton = TWControls::button(tr("Previe&w..."), "previewButton", tr("Show what Clean would delete"));
    connect(previewButton, &QPushButton::clicked, this, &TWMainWindow::previewRequested);
    resultsButton_ = TWControls::button(tr("Res&ults"), "resultsButton", tr("Show the results"));
    resultsButton_->hide();
    sentence_ = new QLabel;
    sentence_->setObjectName("outcomeLabel");
    sentence_->setWordWrap(true);
    sentence_->setTextFormat(Qt::PlainText);
    connect(resultsButton_, &QPushButton::clicked, this, &TWMainWindow::resultsRequested);
    connect(cleanButton_, &QPushButton::clicked, this, &TWMainWindow::clean);
    connect(stopButton_, &QPushButton::clicked, this, &TWMainWindow::stop);
    auto* buttons = new QHBoxLayout;
    buttons->setContentsMargins(0, 0, TWCleanerRowView::FocusRoom, 0);
    buttons->setSpacing(RowSpacing);
    buttons->addWidget(sentence_, 1);
    buttons->addWidget(resultsButton_);
    buttons->addWidget(stopButton_);
    buttons->addWidget(previewButton);
    buttons->addWidget(cleanButton_);
    return buttons;
}

void TWMainWindow::createMenus()
{
    auto* file = menuBar()->addMenu(tr("&File"));
    cleanAction_ = addAction(file, "cleanAction", tr("&Clean"), Qt::CTRL | Qt::Key_Return);
    connect(cleanAction_, &QAction::triggered, cleanButton_, &QPushButton::click);
    connect(addAction(file, "previewAction", tr("&Preview..."), Qt::CTRL | Qt::Key_P), &QAction::triggered, this,
        &TWMainWindow::previewRequested);
    stopAction_ = addAction(file, "stopAction", tr("&Stop"), Qt::Key_Escape);
    connect(stopAction_, &QAction::triggered, stopButton_, &QPushButton::click);
    file->addSeparator();
    connect(
        addAction(file, "quitAction", tr("&Quit"), Qt::CTRL | Qt::Key_Q), &QAction::triggered, this, &QWidget::close);

    auto* edit = menuBar()->addMenu(tr("&Edit"));
    for (const auto& row : TWSheetTable()) {
        const auto title = QCoreApplication::translate("TWSheetTable", row.menuTitle);
        connect(addAction(edit, QLatin1String(row.editor) + "Action", title), &QAction::triggered, this,
            [this, &row] { emit editRequested(row.editor); });
    }

    auto* view = menuBar()->addMenu(tr("&View"));
    connect(addAction(view, "resultsAction", tr("&Results"), Qt::CTRL | Qt::Key_R), &QAction::triggered, this,
        &TWMainWindow::resultsRequested);

    auto* help = menuBar()->addMenu(tr("&Help"));
    connect(addAction(help, "helpAction", tr("&Tidewell Help"), QKeySequence::HelpContents), &QAction::triggered, this,
        &TWMainWindow::helpRequested);
}

QAction* TWMainWindow::addAction(
    QMenu* menu, const QString& objectName, const QString& text, const QKeySequence& shortcut)
{
    auto* action = menu->addAction(text);
    action->setObjectName(objectName);
    action->setShortcut(shortcut);
    return action;
}

// Icons and plans need many files and plug-ins, so they are loaded only when the window is on screen.
void TWMainWindow::paintEvent(QPaintEvent* event)
{
    QMainWindow::paintEvent(event);
    if (!std::exchange(painted_, true))
        QMetaObject::invokeMethod(this, &TWMainWindow::afterFirstPaint, Qt::QueuedConnection);
}

void TWMainWindow::afterFirstPaint()
{
    for (std::size_t light = 0; light < lightIcons_.size(); ++light)
        lightIcons_[light] = QIcon(resource(LightFiles[light]));
    QApplication::setWindowIcon(QIcon::fromTheme("tidewell", QIcon(resource("tidewell.svg"))));
    for (auto* row : rows_)
        row->showPictures(resource("icons"));
    lines_.refresh();
    emit appeared();
}

void TWMainWindow::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        refresh();
    if (event->type() == QEvent::WindowStateChange && isMinimized())
        lines_.pause();
}

// Return presses Clean, like a dialog's default button, but never while a check box or another button has the focus:
// who ticks a box and presses Return does not mean to delete anything.
void TWMainWindow::keyPressEvent(QKeyEvent* event)
{
    if (TWControls::pressFocused(*this, *event))
        return;
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        cleanButton_->click();
    else
        QMainWindow::keyPressEvent(event);
}

void TWMainWindow::refresh()
{
    const auto& table = TWCleanerTable();
    for (std::size_t position = 0; position < table.size(); ++position)
        rows_[position]->setChecked(table[position].available && delegate_.settings().boolean(table[position].key));
    showProblems();
    showUnsaved();
    if (painted_ && !delegate_.running())
        lines_.refresh();
}

void TWMainWindow::switchCleaner(TWKey key, bool on)
{
    delegate_.settings().set(key, on);
    unsavedSettings_ = delegate_.settings().userDefaults().synchronize();
    showProblems();
    forgetEnd();
}

void TWMainWindow::forgetEnd()
{
    if (delegate_.running())
        return;
    endShown_ = false;
    resultsButton_->hide();
    showSum();
}

void TWMainWindow::listsEdited()
{
    forgetEnd();
    refresh();
}

void TWMainWindow::showProblems()
{
    auto problems = delegate_.problems();
    if (std::find(problems.begin(), problems.end(), lostSettings_) == problems.end())
        problems.insert(problems.begin(), lostSettings_);
    problems.push_back(unsavedSettings_);
    QStringList lines;
    for (const auto& problem : problems)
        lines.append(TWQtText::shown(problem));
    lines.removeAll(QString());
    showInBar(*messageBar_, lines.join('\n'));
}

void TWMainWindow::showUnsaved()
{
    const auto titles = titlesOfEdits();
    const auto unsaved = tr("Not saved yet: %1.").arg(TWQtText::exact(titles));
    showInBar(*unsavedBar_, titles.empty() ? QString() : unsaved);
}

// The window grows with a bar that appears, so that no row is pushed out of sight.
void TWMainWindow::showInBar(TWMessageBar& bar, const QString& text)
{
    const bool appears = bar.isHidden() && !text.isEmpty();
    bar.setText(text);
    if (appears && isVisible() && !isMaximized())
        resize(TWFitToScreen(*this, size() + QSize(0, bar.heightForWidth(rows_.front()->width()) + RowSpacing)));
}

void TWMainWindow::clean()
{
    delegate_.clean(checked());
}

TWRunChoice TWMainWindow::checked() const
{
    TWRunChoice checked{};
    for (std::size_t position = 0; position < checked.size(); ++position)
        checked[position] = rows_[position]->isChecked();
    return checked;
}

void TWMainWindow::showLight(int position, TWLight light)
{
    rows_[static_cast<std::size_t>(position)]->showLight(light);
}

void TWMainWindow::startSpinning(int position)
{
    rows_[static_cast<std::size_t>(position)]->startSpinning();
}

void TWMainWindow::stopSpinning(int position)
{
    rows_[static_cast<std::size_t>(position)]->stopSpinning();
}

// The keyboard focus moves from the disabled button to the enabled one.
void TWMainWindow::setCleanEnabled(bool enabled)
{
    if (!enabled) {
        lines_.pause();
        stopped_ = false;
        brought_.clear();
        endShown_ = false;
        resultsButton_->hide();
        say("");
    }
    const bool focused = cleanButton_->hasFocus() || stopButton_->hasFocus();
    cleanButton_->setEnabled(enabled);
    stopButton_->setEnabled(!enabled);
    stopButton_->setVisible(!enabled);
    cleanAction_->setEnabled(enabled);
    stopAction_->setEnabled(!enabled);
    if (focused)
        (enabled ? cleanButton_ : stopButton_)->setFocus();
}

// Stop is disabled until the run has ended, to show that the click was noticed.
void TWMainWindow::stop()
{
    stopButton_->setEnabled(!delegate_.running());
    stopped_ = true;
    emit progressEnded();
    delegate_.stop();
}

void TWMainWindow::cleaningEnded(TWRunOutcome outcome)
{
    const bool stopped = stopped_ && outcome == TWRunOutcome::Failed;
    const auto end = tr(stopped ? Stopped : Outcomes[static_cast<int>(outcome)]);
    endShown_ = outcome != TWRunOutcome::NothingRun;
    emit progressEnded();
    resultsButton_->setVisible(outcome != TWRunOutcome::NothingRun);
    announce(brought_.empty() ? end : end + ' ' + TWQtText::exact(brought_));
    refresh();
    closeIfEnded();
}

void TWMainWindow::say(const QString& sentence)
{
    sentence_->setText(sentence);
    sentence_->setAccessibleName(sentence);
}

void TWMainWindow::showProgress(const TWRunProgress& progress)
{
    if (stopped_)
        return;
    say(TWQtText::exact(progress.text));
    emit progressed(progress.fraction);
}

// Does not take the place of how the latest run ended, before the user does something else.
void TWMainWindow::showSum()
{
    if (endShown_ || delegate_.running())
        return;
    const auto chosen = checked();
    const bool any = std::find(chosen.begin(), chosen.end(), true) != chosen.end();
    const auto sum = lines_.sum(chosen);
    if (!any)
        say(tr(NoneOn));
    else
        say(sum ? TWQtText::exact(sum->text()) : "");
}

// Also lets a screen reader say the sentence.
void TWMainWindow::announce(const QString& outcome)
{
    say(outcome);
    QAccessibleEvent event(sentence_, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

void TWMainWindow::closeIfEnded()
{
    if (closing_ != Closing::WhenEnded || delegate_.running())
        return;
    closing_ = Closing::No;
    close();
}

void TWMainWindow::closeEvent(QCloseEvent* event)
{
    event->ignore();
    if (closing_ == Closing::Now || (closing_ == Closing::No && canQuitSilently())) {
        event->accept();
        emit quitRequested();
    } else if (closing_ != Closing::No) {
        return;
    } else if (delegate_.running()) {
        askBeforeClosing(
            { RunningTitle, RunningText, StopAndQuit, KeepCleaning, TWConfirming::LosesSomething }, [this](TWAnswer) {
                closing_ = Closing::WhenEnded;
                stop();
                closeIfEnded();
            });
    } else {
        askBeforeClosing({ UnsavedTitle, TWText::fill(UnsavedText, { titlesOfEdits() }), SaveAndQuit, Cancel,
                             TWConfirming::IsHarmless, QuitWithoutSaving },
            [this](TWAnswer answer) {
                const auto problem = answer == TWAnswer::Default ? saveEdits() : "";
                closing_ = problem.empty() ? Closing::Now : Closing::No;
                if (problem.empty())
                    close();
                else
                    showNotSaved(problem);
            });
    }
}

bool TWMainWindow::canQuitSilently() const
{
    return !delegate_.running() && editorsWithEdits().empty();
}

std::vector<TWEditor*> TWMainWindow::editorsWithEdits() const
{
    auto editors = delegate_.editors().all();
    std::erase_if(editors, [](const auto* editor) { return !editor->hasUnsavedEdits(); });
    return editors;
}

// "the dictionary, the Files rules"
std::string TWMainWindow::titlesOfEdits() const
{
    std::string titles;
    for (const auto* editor : editorsWithEdits())
        titles += (titles.empty() ? "" : ", ") + std::string(editor->title());
    return titles;
}

// "" or one line for each list that could not be saved.
std::string TWMainWindow::saveEdits()
{
    std::string problems;
    for (auto* editor : editorsWithEdits()) {
        if (const auto problem = editor->write(); !problem.empty())
            problems += (problems.empty() ? "" : "\n") + problem;
    }
    return problems;
}

void TWMainWindow::saveNow()
{
    if (const auto problem = saveEdits(); !problem.empty())
        showNotSaved(problem);
    refresh();
}

void TWMainWindow::showNotSaved(const std::string& problem)
{
    delegate_.platform().alerts.show({ NotSavedTitle, problem, OK, "" }, [](TWAnswer) {});
}

void TWMainWindow::askBeforeClosing(const TWAlert& question, std::function<void(TWAnswer)> answered)
{
    closing_ = Closing::Asking;
    delegate_.platform().alerts.show(question, [this, answered = std::move(answered)](TWAnswer answer) {
        if (answer == TWAnswer::Alternate)
            closing_ = Closing::No;
        else
            answered(answer);
    });
}
