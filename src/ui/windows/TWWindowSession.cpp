#include "ui/windows/TWWindowSession.h"

#include "editors/TWFilesWindowController.h"
#include "ui/sheets/TWDictionarySheet.h"
#include "ui/sheets/TWFilesSheet.h"
#include "ui/windows/TWHelpWindow.h"

#include <QApplication>

TWWindowSession::TWWindowSession(TWTidewellAppDelegate& delegate)
    : delegate_(delegate)
    , mainWindow_(delegate)
{
    QObject::connect(&mainWindow_, &TWMainWindow::editorRequested, &mainWindow_, [this] { editFiles(); });
    QObject::connect(&mainWindow_, &TWMainWindow::editDictionaryRequested, &mainWindow_, [this] { editDictionary(); });
    QObject::connect(
        &mainWindow_, &TWMainWindow::helpRequested, &mainWindow_, [this] { helpWindow().openAnchor("index"); });
}

TWWindowSession::~TWWindowSession() = default;

void TWWindowSession::activate()
{
    mainWindow_.bringToFront(TWWindow::Main);
    mainWindow_.activate();
    // What waits for an answer stays in front.
    if (auto* sheet = QApplication::activeModalWidget())
        sheet->activateWindow();
}

void TWWindowSession::clean()
{
    activate();
    mainWindow_.clean();
}

TWHelpWindow& TWWindowSession::helpWindow()
{
    if (!helpWindow_)
        helpWindow_ = std::make_unique<TWHelpWindow>(delegate_.platform().bundle);
    return *helpWindow_;
}

void TWWindowSession::editFiles()
{
    if (!filesSheet_) {
        filesSheet_ = std::make_unique<TWFilesSheet>(
            delegate_.editors().get<TWFilesWindowController>(), helpWindow(), &mainWindow_);
        QObject::connect(filesSheet_.get(), &QDialog::finished, &mainWindow_, [this] { mainWindow_.refresh(); });
    }
    filesSheet_->open();
}

void TWWindowSession::editDictionary()
{
    if (!dictionarySheet_)
        dictionarySheet_
            = std::make_unique<TWDictionarySheet>(delegate_.editors().dictionary(), helpWindow(), &mainWindow_);
    delegate_.editors().dictionary().loadDictionary();
    dictionarySheet_->open();
}
