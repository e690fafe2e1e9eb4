#include "editors/TWDictionaryWindowController.h"

#include "support/TWText.h"

namespace {

constexpr auto FileName = "Dictionary.plist";
constexpr auto HelpAnchor = "Dictionary";
constexpr auto NotAWord = "The dictionary \"%@\" could not be read (entry %@ is not a word). It is left untouched and "
                          "the words stay as they "
                          "were; please repair it, or move it away to start anew.";

}

TWDictionaryWindowController::TWDictionaryWindowController(const TWDataFolder& dataFolder)
    : dataFolder_(dataFolder)
{
}

void TWDictionaryWindowController::loadDictionary()
{
    replaceWords(savedWords());
    edited_ = false;
}

void TWDictionaryWindowController::setWordDictionary(std::vector<std::string> words)
{
    words_ = std::move(words);
    edited_ = true;
}

// What stands in the place of words that could not be understood is what the user sees.
std::vector<std::string> TWDictionaryWindowController::savedWords()
{
    return readWords().value_or(words_);
}

void TWDictionaryWindowController::replaceWords(std::vector<std::string> words)
{
    words_ = std::move(words);
    if (view_)
        view_->wordsChanged();
}

// Nothing when an element is no word.
std::optional<std::vector<std::string>> TWDictionaryWindowController::readWords()
{
    const auto path = this->file();
    const auto file = dataFolder_.read(path);
    problem_ = file.problem;
    std::vector<std::string> words;
    for (const auto& element : file.records.value_or(TWValue::Array())) {
        const auto* data = element.data();
        if (!data || !TWText::isValidUTF8(data->bytes)) {
            problem_ = TWText::fill(NotAWord, { path, std::to_string(words.size() + 1) });
            return std::nullopt;
        }
        words.push_back(data->bytes);
    }
    return words;
}

std::string TWDictionaryWindowController::file() const
{
    return dataFolder_.file(FileName);
}

std::string TWDictionaryWindowController::write(const std::vector<std::string>& words)
{
    TWValue::Array elements;
    for (const auto& word : words)
        elements.emplace_back(TWData{ word });
    auto problem
        = dataFolder_.write(FileName, elements, problem_.empty() ? TWOldFile::Replace : TWOldFile::KeepAsDamaged);
    if (problem.empty())
        problem_.clear();
    return problem;
}

void TWDictionaryWindowController::save()
{
    const auto problem = write();
    edited_ = edited_ && !problem.empty();
    if (!view_)
        return;
    if (problem.empty())
        view_->closeSheet();
    else
        view_->showProblem(problem);
}

void TWDictionaryWindowController::cancel()
{
    if (view_)
        view_->closeSheet();
}

void TWDictionaryWindowController::help()
{
    if (view_)
        view_->openHelpAnchor(HelpAnchor);
}
