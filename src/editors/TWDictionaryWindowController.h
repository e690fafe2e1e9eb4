#pragma once

#include "editors/TWDictionaryWord.h"
#include "editors/TWEditor.h"
#include "editors/TWEditorView.h"
#include "settings/TWRecordList.h"

#include <string>
#include <vector>

class TWDictionaryView : public TWEditorView {
public:
    // The words were replaced, by loading or by a command. Unfinished typing is kept.
    virtual void wordsChanged() = 0;

    // The words could not be saved; the sheet stays open.
    virtual void showProblem(const std::string& problem) = 0;

protected:
    ~TWDictionaryView() = default;
};

// The keyword dictionary: one list of words for every keyword-driven cleaner. Main thread.
class TWDictionaryWindowController final : public TWEditor {
public:
    explicit TWDictionaryWindowController(const TWDataFolder&);

    void setView(TWDictionaryView* view) { view_ = view; }

    void awakeFromNib(TWLaunchKind) override { loadDictionary(); }
    const char* title() const override { return "the dictionary"; }
    bool hasUnsavedEdits() const override { return list_.hasUnsavedEdits(); }

    // Fills the words from the file; no words if there is no file or it cannot be read. If the file has an element that
    // is not a word, or too many words, the words stay as they were.
    void loadDictionary() { list_.load(); }

    // The words as shown, saved or not; duplicates and empty words as the user typed them.
    const std::vector<std::string>& wordDictionary() const { return words_; }

    // The view calls this after every edit. The words are UTF-8.
    void setWordDictionary(std::vector<std::string> words);

    // Writes the file and closes the sheet.
    void save();

    // Closes the sheet. Kept on purpose: the words stay as they are shown until the editor is opened again.
    void cancel();
    void help();

    // For commands, which change the saved words and then the shown ones.
    TWRecordList<TWDictionaryWord>& list() { return list_; }

    std::string write() override { return list_.write(); }

    std::string file() const override { return list_.path(); }
    std::string keptAs() const override { return list_.keptAs(); }

    // One line if the file exists but could not be read, else "".
    std::string problem() const override { return list_.problem(); }

private:
    void listChanged();

    TWRecordList<TWDictionaryWord> list_;
    std::vector<std::string> words_; // the texts of the live list
    TWDictionaryView* view_ = nullptr;
};
