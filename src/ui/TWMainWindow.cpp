#include "ui/TWMainWindow.h"

#include "platform/TWTreeSizes.h"
#include "support/TWText.h"
#include "ui/TWQtText.h"
#include "ui/TWResultsWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFile>
#include <QHBoxLayout>
#include <QMenuBar>
#include <QPushButton>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace {

constexpr auto LaterLine = QT_TRANSLATE_NOOP("TWMainWindow", "Comes in a later version");
constexpr auto TrashUnreadable = QT_TRANSLATE_NOOP("TWMainWindow", "The Trash cannot be read");
constexpr auto TrashEmpty = QT_TRANSLATE_NOOP("TWMainWindow", "The Trash is empty");
constexpr auto NoRules = QT_TRANSLATE_NOOP("TWMainWindow", "No rules yet");
constexpr auto RulesOn = QT_TRANSLATE_NOOP("TWMainWindow", "%1 of %2 rules on");
constexpr auto NoWords = QT_TRANSLATE_NOOP("TWMainWindow", "%1, no words in the dictionary");
constexpr auto CloseTitle = "Cleaning is still going on.";
constexpr auto CloseText = "If you stop now, what has been begun is still finished and nothing further is deleted.";
constexpr auto StopAndQuit = "Stop and Quit";
constexpr auto KeepCleaning = "Keep Cleaning";

// Their rows have something to say that the table of cleaners does not know.
constexpr auto TrashCleaner = "trash";
constexpr auto FilesCleaner = "files";

constexpr const char* LightFiles[] = { "light-off.png", "light-yellow.png", "light-green.png", "light-red.png" };

constexpr int Margin = 18;
constexpr int RowSpacing = 12;

}

TWMainWindow::TWMainWindow(TWTidewellAppDelegate& delegate)
    : delegate_(delegate)
{
    setObjectName("mainWindow");
    setWindowTitle(TWQtText::exact(delegate_.platform().bundle.info("CFBundleName")));
    auto* column = new QVBoxLayout;
    column->setContentsMargins(Margin, Margin, Margin, Margin);
    column->setSpacing(RowSpacing);
    auto* centre = new QWidget(this);
    centre->setLayout(column);
    setCentralWidget(centre);
    makeRows();
    makeButtons();
    makeMenus();
    setCleanEnabled(true);
    refresh();
    delegate_.setView(this);
}

TWMainWindow::~TWMainWindow()
{
    delegate_.setView(nullptr);
}

QString TWMainWindow::resource(const std::string& name) const
{
    return QFile::decodeName(delegate_.platform().bundle.resourcePath(name).c_str());
}

void TWMainWindow::makeRows()
{
    auto* column = centralWidget()->layout();
    for (const auto& cleaner : TWCleanerTable()) {
        const bool editable = cleaner.name == std::string_view(FilesCleaner);
        auto* row = new TWCleanerRowView(cleaner,
            editable ? TWCleanerRowView::Editable::Yes : TWCleanerRowView::Editable::No, lightIcons_, centralWidget());
        rows_.push_back(row);
        column->addWidget(row);
        connect(row, &TWCleanerRowView::checked, this,
            [this, key = cleaner.key](bool checked) { delegate_.settings().set(key, checked); });
        connect(row, &TWCleanerRowView::editRequested, this, &TWMainWindow::editFilesRequested);
        if (!cleaner.available)
            row->setLine(tr(LaterLine));
    }
}

void TWMainWindow::makeButtons()
{
    stopButton_ = new QPushButton(tr("Sto&p"), centralWidget());
    stopButton_->setObjectName("stopButton");
    stopButton_->setAccessibleName(tr("Stop cleaning"));
    cleanButton_ = new QPushButton(tr("&Clean"), centralWidget());
    cleanButton_->setObjectName("cleanButton");
    cleanButton_->setAccessibleName(tr("Clean"));
    cleanButton_->setDefault(true);
    connect(cleanButton_, &QPushButton::clicked, this, [this] { delegate_.clean(); });
    connect(stopButton_, &QPushButton::clicked, this, &TWMainWindow::stop);

    // Clean keeps its place while Stop comes and goes, so that a click meant for Stop that comes too late starts
    // nothing.
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(stopButton_);
    buttons->addWidget(cleanButton_);
    auto* column = static_cast<QVBoxLayout*>(centralWidget()->layout());
    column->addStretch();
    column->addSpacing(RowSpacing);
    column->addLayout(buttons);
}

void TWMainWindow::makeMenus()
{
    auto* file = menuBar()->addMenu(tr("&File"));
    cleanAction_ = addAction(file, "cleanAction", tr("&Clean"), Qt::CTRL | Qt::Key_Return);
    connect(cleanAction_, &QAction::triggered, cleanButton_, &QPushButton::click);
    stopAction_ = addAction(file, "stopAction", tr("&Stop"), Qt::Key_Escape);
    connect(stopAction_, &QAction::triggered, stopButton_, &QPushButton::click);
    file->addSeparator();
    connect(
        addAction(file, "quitAction", tr("&Quit"), Qt::CTRL | Qt::Key_Q), &QAction::triggered, this, &QWidget::close);

    auto* edit = menuBar()->addMenu(tr("&Edit"));
    connect(addAction(edit, "filesAction", tr("&Files Rules..."), {}), &QAction::triggered, this,
        &TWMainWindow::editFilesRequested);
    connect(addAction(edit, "dictionaryAction", tr("&Keyword Dictionary..."), {}), &QAction::triggered, this,
        &TWMainWindow::editDictionaryRequested);

    auto* view = menuBar()->addMenu(tr("&View"));
    connect(addAction(view, "resultsAction", tr("&Results"), Qt::CTRL | Qt::Key_R), &QAction::triggered, this,
        [this] { bringToFront(TWWindow::Results); });

    auto* help = menuBar()->addMenu(tr("&Help"));
    connect(addAction(help, "helpAction", tr("&Tidewell Help"), QKeySequence::HelpContents), &QAction::triggered, this,
        &TWMainWindow::helpRequested);
}

QAction* TWMainWindow::addAction(QMenu* menu, const char* name, const QString& text, const QKeySequence& shortcut)
{
    auto* action = menu->addAction(text);
    action->setObjectName(name);
    action->setShortcut(shortcut);
    return action;
}

// Pictures and counting take reading many files and loading plugins, so they wait until the window can be seen.
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
    refreshTrashLine();
}

void TWMainWindow::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        refresh();
}

void TWMainWindow::keyPressEvent(QKeyEvent* event)
{
    // What a dialog does for its default button.
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
    refreshFilesLine();
    if (painted_)
        refreshTrashLine();
}

void TWMainWindow::refreshFilesLine()
{
    const auto& rules = delegate_.filesWindowController().rules();
    const auto& words = delegate_.dictionaryWindowController().wordDictionary();
    const auto on = std::count_if(rules.begin(), rules.end(), [](const auto& rule) { return rule.active; });
    const bool needsWords
        = std::any_of(rules.begin(), rules.end(), [](const auto& rule) { return rule.active && rule.needsKeywords(); });
    const bool hasWords = std::any_of(words.begin(), words.end(), [](const auto& word) { return !word.empty(); });
    auto line = rules.empty() ? tr(NoRules) : tr(RulesOn).arg(on).arg(rules.size());
    if (needsWords && !hasWords)
        line = tr(NoWords).arg(line);
    row(FilesCleaner).setLine(line);
}

void TWMainWindow::refreshTrashLine()
{
    if (delegate_.running())
        return;
    counting_.reset();
    auto paths = delegate_.trashItems();
    if (!paths.empty()) {
        countTrash(std::move(paths));
        return;
    }
    trashItems_ = 0;
    int error = 0;
    const auto& platform = delegate_.platform();
    const auto items = platform.places.trash + "/files";
    const bool known = platform.fileSystem.openFolder(items, error) || error == ENOENT;
    row(TrashCleaner).setLine(tr(known ? TrashEmpty : TrashUnreadable));
}

// The number of items is known at once, their size only after a walk through all of them.
void TWMainWindow::countTrash(std::vector<std::string> paths)
{
    const auto count = TWText::count(paths.size(), "item", "items");
    if (std::exchange(trashItems_, paths.size()) != paths.size())
        row(TrashCleaner).setLine(TWQtText::exact(count));
    const auto bytes = std::make_shared<std::uint64_t>(0);
    const auto& platform = delegate_.platform();
    counting_ = platform.runLoop.inBackground(
        [bytes, paths = std::move(paths), &fileSystem = platform.fileSystem](
            const auto& cancellation) { *bytes = TWAddUpTrees(fileSystem, paths, *cancellation).total().bytes; },
        [this, bytes, count] { row(TrashCleaner).setLine(TWQtText::exact(count + ", " + TWText::size(*bytes))); });
}

TWCleanerRowView& TWMainWindow::row(const char* cleaner) const
{
    return *rows_[static_cast<std::size_t>(TWCleanerPosition(cleaner))];
}

bool TWMainWindow::isChecked(int position) const
{
    return rows_[static_cast<std::size_t>(position)]->isChecked();
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

// The keyboard focus moves along from the one button to the other.
void TWMainWindow::setCleanEnabled(bool enabled)
{
    const bool focused = cleanButton_->hasFocus() || stopButton_->hasFocus();
    cleanButton_->setEnabled(enabled);
    stopButton_->setEnabled(!enabled);
    stopButton_->setVisible(!enabled);
    cleanAction_->setEnabled(enabled);
    stopAction_->setEnabled(!enabled);
    if (focused)
        (enabled ? cleanButton_ : stopButton_)->setFocus();
}

void TWMainWindow::stop()
{
    // Greyed until the run has ended, to show that it was heard.
    stopButton_->setEnabled(!delegate_.running());
    delegate_.stop();
}

void TWMainWindow::bringToFront(TWWindow which)
{
    QWidget* window = which == TWWindow::Main ? this : nullptr;
    if (which == TWWindow::Results) {
        if (!resultsWindow_)
            resultsWindow_ = std::make_unique<TWResultsWindow>(delegate_.resultsWindowController(), resource("icons"));
        window = resultsWindow_.get();
    }
    if (!window)
        return;
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->show();
    window->raise();
    window->activateWindow();
}

bool TWMainWindow::isKeyWindow(TWWindow which) const
{
    if (which == TWWindow::Results)
        return resultsWindow_ && resultsWindow_->isActiveWindow();
    return which == TWWindow::Main && isActiveWindow();
}

void TWMainWindow::activate()
{
    bringToFront(TWWindow::Main);
}

void TWMainWindow::requestUserAttention()
{
    QApplication::alert(this);
    QGuiApplication::sync(); // the program may block or end before the next turn
}

// Not quit(), which would ask every open window and sheet to close, and so answer the questions in them.
void TWMainWindow::terminate()
{
    closing_ = Closing::Now;
    QMetaObject::invokeMethod(
        qApp, [] { QCoreApplication::exit(0); }, Qt::QueuedConnection);
}

void TWMainWindow::cleaningEnded(TWRunOutcome)
{
    refresh();
    if (closing_ != Closing::No && !delegate_.running())
        terminate();
}

void TWMainWindow::closeEvent(QCloseEvent* event)
{
    if (closing_ != Closing::Now && delegate_.running()) {
        event->ignore();
        if (closing_ == Closing::No)
            askBeforeClosing();
        return;
    }
    terminate();
}

void TWMainWindow::askBeforeClosing()
{
    closing_ = Closing::Asking;
    delegate_.platform().alerts.show({ CloseTitle, CloseText, StopAndQuit, KeepCleaning }, [this](TWAnswer answer) {
        if (closing_ != Closing::Asking)
            return;
        closing_ = answer == TWAnswer::Default ? Closing::WhenEnded : Closing::No;
        if (closing_ == Closing::WhenEnded)
            stop();
    });
}
