#pragma once

#include "editors/TWEditor.h"
#include "editors/TWEditorView.h"
#include "settings/TWDataFolder.h"

#include <optional>
#include <string>
#include <vector>

class TWDictionaryView : public TWEditorView {
public:
    // The words were replaced, by loading or by a command. What is being typed stays.
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
    bool hasUnsavedEdits() const override { return edited_; }

    // Fills the words from the file: none when there is no file. A file with an element that is no word keeps the words
    // as they were.
    void loadDictionary();

    // The words as shown, saved or not; duplicates and empty words as the user typed them.
    const std::vector<std::string>& wordDictionary() const { return words_; }

    // The view calls this after every edit. The words are UTF-8.
    void setWordDictionary(std::vector<std::string> words);

    // Writes the file and closes the sheet.
    void save();

    // For a command, which changes the file's words, whatever is shown: those words, read now. The shown ones stay.
    std::vector<std::string> savedWords();

    // The shown words become others than the view's; it is told.
    void replaceWords(std::vector<std::string> words);

    // Writes the file only. "" or one line that names the file and the remedy.
    std::string write() { return write(words_); }
    std::string write(const std::vector<std::string>& words);

    // Closes the sheet. Kept on purpose: the words stay as they are shown until the editor is opened again.
    void cancel();
    void help();

    std::string file() const override;

    // One line when the file is there but could not be read, else "".
    std::string problem() const override { return problem_; }

private:
    std::optional<std::vector<std::string>> readWords();

    const TWDataFolder& dataFolder_;
    TWDictionaryView* view_ = nullptr;
    std::vector<std::string> words_;
    bool edited_ = false; // since the words were loaded or written
    std::string problem_;
};
