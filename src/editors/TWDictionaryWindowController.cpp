#include "editors/TWDictionaryWindowController.h"

namespace {

constexpr auto FileName = "Dictionary.plist";
constexpr auto HelpAnchor = "Dictionary";

using Words = std::vector<TWDictionaryWord>;

Words wordsInstead(TWListState state, const Words& shown)
{
    return state == TWListState::NotRecords ? shown : Words();
}

}

TWDictionaryWindowController::TWDictionaryWindowController(const TWDataFolder& dataFolder)
    : list_(dataFolder, FileName, wordsInstead)
{
    list_.setChanged([this] { listChanged(); });
}

void TWDictionaryWindowController::listChanged()
{
    words_.clear();
    for (const auto& word : list_.records())
        words_.push_back(word.text);
    if (view_)
        view_->wordsChanged();
}

void TWDictionaryWindowController::setWordDictionary(std::vector<std::string> words)
{
    words_ = std::move(words);
    list_.edit([&](Words& live) {
        live.clear();
        for (const auto& word : words_)
            live.push_back({ word });
    });
}

void TWDictionaryWindowController::save()
{
    const auto problem = write();
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
