#pragma once

#include "app/TWApplicationWindows.h"
#include "app/TWResultsActions.h"
#include "ui/windows/TWMainWindow.h"

#include <map>
#include <memory>

class TWFileManager;
class TWHelpWindow;
class TWPreviewWindow;
class TWQtAlerts;
class TWResultsWindow;
class TWSheet;

// Owns all windows and sheets. Makes those other than the main window when they are first needed. Main thread.
class TWWindowSession final : public TWApplicationWindows {
public:
    // Sets the delegate's views. What it is given must outlive the session.
    TWWindowSession(TWTidewellAppDelegate&, TWQtAlerts&, TWFileManager&);
    ~TWWindowSession();

    TWMainWindow& mainWindow() { return mainWindow_; }

    // Updates the main window and the sheets after a command may have changed lists and settings.
    void refresh();

    // Brings the main window forward and starts a run.
    void clean();

    // If something would be lost by quitting, asks the user as closing the main window does, and returns true. The
    // program quits once the user has agreed.
    bool askedBeforeEnd();

    // The sheet of the editor with that name; nullptr if it has none.
    TWSheet* sheet(const char* editor);

    void bringToFront(TWWindow) override;
    bool isKeyWindow(TWWindow) const override;
    void activate() override;
    void requestUserAttention() override;
    void terminate() override;

private:
    void edit(const char* editor);
    void showPreview();
    void showHelp(const std::string& page);
    void nameSandbox(QWidget&) const;
    TWResultsActions::Context fileActionsContext() const;
    void makeResultsWindow();
    QWidget* window(TWWindow) const;
    static void bringToFront(QWidget&);

    TWTidewellAppDelegate& delegate_;
    TWFileManager& fileManager_;
    TWResultsActions fileActions_; // for the sheets
    TWMainWindow mainWindow_;
    std::unique_ptr<TWResultsWindow> resultsWindow_;
    std::unique_ptr<TWPreviewWindow> previewWindow_;
    std::unique_ptr<TWHelpWindow> helpWindow_;
    std::map<std::string, std::unique_ptr<TWSheet>, std::less<>> sheets_; // by the editor's name
};
