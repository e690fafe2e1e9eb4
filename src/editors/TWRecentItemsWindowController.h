#pragma once

#include "cleaners/TWRecentItemsRule.h"
#include "editors/TWApplicationFinder.h"
#include "editors/TWRuleNotes.h"
#include "editors/TWRulesEditor.h"
#include "formats/TWKeyCollector.h"
#include "platform/TWBackgroundStream.h"

class TWDictionaryWindowController;

// What the sheet of this editor and its found keys window can do beyond a TWRecordView. Main thread.
class TWRecentItemsView {
public:
    // Lets the user choose one application. Answers with nothing if the user cancels.
    struct ApplicationPanel {
        std::string title;
        std::string message;
        std::string prompt; // the button that chooses
    };
    virtual void selectApplication(const ApplicationPanel&, std::function<void(std::optional<TWApplication>)> answered)
        = 0;

    // isLooking() has changed.
    virtual void lookingChanged() = 0;

    // Shows foundKeysArray() with the first one selected, and brings their window to the front.
    virtual void showFoundKeys(const std::string& title, const std::string& explanation) = 0;
    virtual void closeFoundKeys() = 0;

    // The selected rows of the found keys, in ascending order.
    virtual std::vector<int> selectedFoundKeys() const = 0;

    // Shows the file in the file manager.
    virtual void showFile(const std::string& path) = 0;

protected:
    ~TWRecentItemsView() = default;
};

// Owns the list of Recent Items rules, and helps to make one for an application: looks for its own list of recent
// items and, without one, for keys in its preference file that sound like such a list. Main thread.
class TWRecentItemsWindowController final : public TWRulesEditor<TWRecentItemsRule> {
public:
    TWRecentItemsWindowController(const TWEditorContext&, const TWDictionaryWindowController&);

    void setRecentItemsView(TWRecentItemsView* view) { recentItemsView_ = view; }

    const char* title() const override { return "the Recent Items rules"; }

    // The + button: a blank rule if the settings say so; otherwise the user chooses an application, is asked to make
    // sure that it has recent items, and gets a rule or the found keys window.
    void add();

    // Goes on as after the choice of an application. Gives up the search for another one.
    void addApplication(const TWApplication&);

    // True while it looks for recent items of foundAppName().
    bool isLooking() const { return looking_ != nullptr; }
    const std::string& foundAppName() const { return foundAppName_; }

    // Adds an inactive rule about the preference file at that absolute path, which the user completes.
    void addPath(const std::string& path) override;

    // Finds applications for a user who chooses one.
    TWApplicationFinder& finder() { return finder_; }

    // Of the latest search.
    const std::vector<TWFoundKey>& foundKeysArray() const { return foundKeysArray_; }

    // The buttons of the found keys window.
    void createFromSelectedKey();
    void showPreferencesFile();

    // In-place edits.
    void setSource(int row, const std::string& source);
    void setFilePath(int row, const std::string& path);
    void setDeleteFile(int row, bool deleteFile);
    void setKeys(int row, const std::string& keys);

    TWRuleNote note(int row) const;

    void sheetClosed() override;

private:
    // What was found for an application.
    struct Discovery {
        std::string sharedList; // "" if it has none
        std::string preferences; // the file with the keys, or the likeliest one
        std::vector<TWFoundKey> keys;
    };

    void findNotes() override;
    void clearNotes() override { notes_.clear(); }
    static std::string mistake(const TWRecentItemsRule&);
    static std::string noteKey(const TWRecentItemsRule&);
    std::unique_ptr<TWCleaner> cleaner(TWRecentItemsRule) const;

    void look(const TWApplication&);
    void stopLooking();
    static Discovery discover(const TWApplication&, const TWOtherPrograms&, const TWFileSystem&, const TWCancellation&);
    void discovered(const Discovery&);
    void addFoundRule(bool active, bool deleteFile, const std::string& path, const std::string& keys);

    TWRecentItemsView* recentItemsView_ = nullptr;
    std::string foundAppName_;
    std::string plistPath_; // absolute
    std::vector<TWFoundKey> foundKeysArray_;
    TWRuleNotes notes_;
    std::unique_ptr<TWBackgroundStream<Discovery>> looking_;
    TWApplicationFinder finder_;
};
