#include "ui/windows/TWMainWindow.h"

#include "support/TWText.h"
#include "ui/parts/TWQtText.h"
#include "ui/windows/TWResultsWindow.h"

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

constexpr auto CloseTitle = "Cleaning is still going on.";
constexpr auto CloseText = "If you stop now, what has been begun is still finished and nothing further is deleted.";
constexpr auto StopAndQuit = "Stop and Quit";
constexpr auto KeepCleaning = "Keep Cleaning";

constexpr const char* LightFiles[] = { "light-off.png", "light-yellow.png", "light-green.png", "light-red.png" };

constexpr int Margin = 18;
constexpr int RowSpacing = 12;

}

TWMainWindow::TWMainWindow(TWTidewellAppDelegate& delegate)
    : delegate_(delegate)
    , lines_(delegate.cleanerContext(), delegate.settingsSources(), [this](int position, const std::string& line) {
        rows_[static_cast<std::size_t>(position)]->setLine(TWQtText::shown(line));
    })
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
    delegate_.setViews(this, this);
}

TWMainWindow::~TWMainWindow()
{
    delegate_.setViews(nullptr, nullptr);
}

QString TWMainWindow::resource(const std::string& name) const
{
    return QFile::decodeName(delegate_.platform().bundle.resourcePath(name).c_str());
}

void TWMainWindow::makeRows()
{
    auto* column = centralWidget()->layout();
    for (const auto& cleaner : TWCleanerTable()) {
        const bool editable = *cleaner.editor;
        auto* row = new TWCleanerRowView(cleaner,
            editable ? TWCleanerRowView::Editable::Yes : TWCleanerRowView::Editable::No, lightIcons_, centralWidget());
        rows_.push_back(row);
        column->addWidget(row);
        connect(row, &TWCleanerRowView::checked, this,
            [this, key = cleaner.key](bool checked) { delegate_.settings().set(key, checked); });
        connect(
            row, &TWCleanerRowView::editRequested, this, [this, &cleaner] { emit editorRequested(cleaner.editor); });
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
    connect(cleanButton_, &QPushButton::clicked, this, [this] { clean(); });
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
        [this] { emit editorRequested("files"); });
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
    lines_.refresh();
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
    if (painted_ && !delegate_.running())
        lines_.refresh();
}

void TWMainWindow::clean()
{
    TWRunChoice checked{};
    for (std::size_t position = 0; position < checked.size(); ++position)
        checked[position] = rows_[position]->isChecked();
    delegate_.clean(checked);
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
    if (!enabled)
        lines_.pause();
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
