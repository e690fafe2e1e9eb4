#include "ui/windows/TWWindowSession.h"

#include "editors/TWKeepWindowController.h"
#include "ui/parts/TWControls.h"
#include "ui/parts/TWQtText.h"
#include "ui/sheets/TWSheet.h"
#include "ui/sheets/TWSheetTable.h"
#include "ui/windows/TWHelpWindow.h"
#include "ui/windows/TWPreviewWindow.h"
#include "ui/windows/TWQtAlerts.h"
#include "ui/windows/TWResultsWindow.h"

#include <QApplication>
#include <QSessionManager>

namespace {

constexpr auto HelpIndex = "index";
constexpr auto HelpOnResults = "Results";

}

TWWindowSession::TWWindowSession(TWTidewellAppDelegate& delegate, TWQtAlerts& alerts, TWFileManager& fileManager)
    : delegate_(delegate)
    , fileManager_(fileManager)
    , fileActions_(fileActionsContext())
    , mainWindow_(delegate)
{
    QObject::connect(&mainWindow_, &TWMainWindow::appeared, &mainWindow_, [&] { alerts.setWindow(&mainWindow_); });
    QObject::connect(
        &mainWindow_, &TWMainWindow::editRequested, &mainWindow_, [this](const char* editor) { edit(editor); });
    QObject::connect(
        &mainWindow_, &TWMainWindow::resultsRequested, &mainWindow_, [this] { bringToFront(TWWindow::Results); });
    QObject::connect(&mainWindow_, &TWMainWindow::previewRequested, &mainWindow_, [this] { showPreview(); });
    QObject::connect(&mainWindow_, &TWMainWindow::helpRequested, &mainWindow_, [this] { showHelp(HelpIndex); });
    QObject::connect(&mainWindow_, &TWMainWindow::quitRequested, &mainWindow_, [this] { terminate(); });
    QObject::connect(qApp, &QGuiApplication::commitDataRequest, &mainWindow_, [this](QSessionManager& manager) {
        if (!askedBeforeEnd() || !manager.allowsInteraction())
            return;
        manager.release();
        manager.cancel();
    });
    delegate_.setViews(&mainWindow_, this);
}

TWWindowSession::~TWWindowSession()
{
    delegate_.setViews(nullptr, nullptr);
}

void TWWindowSession::refresh()
{
    mainWindow_.refresh();
    for (const auto& [editor, sheet] : sheets_)
        sheet->refresh();
}

void TWWindowSession::clean()
{
    activate();
    mainWindow_.clean();
}

bool TWWindowSession::askedBeforeEnd()
{
    if (mainWindow_.canQuitSilently())
        return false;
    activate();
    mainWindow_.close();
    return true;
}

TWSheet* TWWindowSession::sheet(const char* editor)
{
    if (const auto made = sheets_.find(editor); made != sheets_.end())
        return made->second.get();
    const auto* row = TWSheetNamed(editor);
    if (!row)
        return nullptr;
    auto sheet = row->make(delegate_.editors(), &mainWindow_);
    nameSandbox(*sheet);
    QObject::connect(sheet.get(), &QDialog::finished, &mainWindow_, [this] { mainWindow_.listsEdited(); });
    QObject::connect(sheet.get(), &TWSheet::helpRequested, &mainWindow_,
        [this](const QString& page) { showHelp(TWQtText::bytes(page)); });
    QObject::connect(sheet.get(), &TWSheet::editorRequested, &mainWindow_, [this](const char* other) { edit(other); });
    QObject::connect(sheet.get(), &TWSheet::fileRequested, &mainWindow_,
        [this](const auto& path, const auto& said) { fileActions_.show(path, said); });
    QObject::connect(sheet.get(), &TWSheet::openRequested, &mainWindow_,
        [this](const auto& path, const auto& said) { fileActions_.open(path, said); });
    return sheets_.emplace(editor, std::move(sheet)).first->second.get();
}

void TWWindowSession::edit(const char* editor)
{
    if (auto* wanted = sheet(editor); wanted && !wanted->isVisible())
        wanted->open();
}

void TWWindowSession::showPreview()
{
    if (!previewWindow_) {
        previewWindow_ = std::make_unique<TWPreviewWindow>(delegate_);
        nameSandbox(*previewWindow_);
        QObject::connect(previewWindow_.get(), &TWPreviewWindow::aboutToClean, &mainWindow_, [this] { activate(); });
        QObject::connect(previewWindow_.get(), &TWPreviewWindow::helpRequested, &mainWindow_,
            [this](const QString& page) { showHelp(TWQtText::bytes(page)); });
    }
    previewWindow_->renewIfCleaned();
    bringToFront(*previewWindow_);
}

void TWWindowSession::showHelp(const std::string& page)
{
    if (!helpWindow_) {
        helpWindow_ = std::make_unique<TWHelpWindow>(delegate_.platform().bundle);
        nameSandbox(*helpWindow_);
    }
    helpWindow_->openAnchor(page);
}

// Adds the sandbox, if there is one, to the window's title, as the main window does.
void TWWindowSession::nameSandbox(QWidget& window) const
{
    TWControls::setTitle(window, window.windowTitle(), delegate_.platform().places);
}

// Returns nullptr for a window that has not been made yet.
QWidget* TWWindowSession::window(TWWindow which) const
{
    switch (which) {
    case TWWindow::Main:
        return const_cast<TWMainWindow*>(&mainWindow_);
    case TWWindow::Results:
        return resultsWindow_.get();
    default:
        return nullptr;
    }
}

TWResultsActions::Context TWWindowSession::fileActionsContext() const
{
    const auto& platform = delegate_.platform();
    auto& keepList = delegate_.editors().get<TWKeepWindowController>();
    return { platform.runLoop, platform.fileSystem, platform.places, fileManager_,
        [&keepList](const std::string& path) { return keepList.keep(path); } };
}

void TWWindowSession::makeResultsWindow()
{
    const auto& platform = delegate_.platform();
    resultsWindow_ = std::make_unique<TWResultsWindow>(delegate_.resultsWindowController(), fileActionsContext(),
        TWQtText::path(platform.bundle.resourcePath("icons")), TWQtText::path(platform.places.home));
    nameSandbox(*resultsWindow_);
    QObject::connect(
        resultsWindow_.get(), &TWResultsWindow::helpRequested, &mainWindow_, [this] { showHelp(HelpOnResults); });
}

void TWWindowSession::bringToFront(TWWindow which)
{
    if (which == TWWindow::Results && !resultsWindow_)
        makeResultsWindow();
    if (auto* shown = window(which))
        bringToFront(*shown);
}

void TWWindowSession::bringToFront(QWidget& shown)
{
    shown.setWindowState(shown.windowState() & ~Qt::WindowMinimized);
    shown.show();
    shown.raise();
    shown.activateWindow();
}

bool TWWindowSession::isKeyWindow(TWWindow which) const
{
    const auto* asked = window(which);
    return asked && asked->isActiveWindow();
}

void TWWindowSession::activate()
{
    bringToFront(TWWindow::Main);
    // A sheet that waits for an answer must stay in front.
    if (auto* sheet = QApplication::activeModalWidget())
        sheet->activateWindow();
}

void TWWindowSession::requestUserAttention()
{
    QApplication::alert(&mainWindow_);
    QGuiApplication::sync(); // because the program may block or end before the next turn
}

// Not quit(), which would ask every open window and sheet to close and so answer their questions.
void TWWindowSession::terminate()
{
    QMetaObject::invokeMethod(
        qApp, [] { QCoreApplication::exit(0); }, Qt::QueuedConnection);
}
