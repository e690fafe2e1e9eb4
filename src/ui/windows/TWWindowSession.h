#pragma once

#include "ui/windows/TWMainWindow.h"

#include <memory>

class TWDictionarySheet;
class TWFilesSheet;
class TWHelpWindow;

// The main window and the sheets that are made when they are first asked for. Main thread.
class TWWindowSession final {
public:
    // Becomes the delegate's view. The delegate outlives the session.
    explicit TWWindowSession(TWTidewellAppDelegate&);
    ~TWWindowSession();

    TWMainWindow& mainWindow() { return mainWindow_; }

    // The main window is brought forward, as if the user had started the program anew.
    void activate();

    // A run is started; the main window shows it.
    void clean();

private:
    TWHelpWindow& helpWindow();
    void editFiles();
    void editDictionary();

    TWTidewellAppDelegate& delegate_;
    TWMainWindow mainWindow_;
    std::unique_ptr<TWHelpWindow> helpWindow_;
    std::unique_ptr<TWFilesSheet> filesSheet_;
    std::unique_ptr<TWDictionarySheet> dictionarySheet_;
};
