#include "cli/TWWordsCommands.h"

#include "cli/TWJSON.h"
#include "editors/TWDictionaryWindowController.h"
#include "support/TWText.h"

#include <algorithm>

namespace {

constexpr auto NoWords = "The dictionary is empty. Add words with \"tidewell words add WORD\".\n";
constexpr auto NoSuchWord = "The dictionary does not hold \"%@\".\n";
constexpr auto WordNotText = "A word must be valid UTF-8 text.\n";

constexpr auto Word = "WORD";
constexpr auto WordHelp = "One or more words; one with a space needs quotation marks";

using Words = std::vector<TWDictionaryWord>;

TWRecordList<TWDictionaryWord>& dictionaryOf(const TWCommandContext& context)
{
    return context.delegate->editors().dictionary().list();
}

TWCommandResult list(const TWCommandContext& context, const TWInvocation& invocation)
{
    const auto words = dictionaryOf(context).saved();
    std::string out;
    for (const auto& [word] : words)
        out += invocation.json ? TWJSON::line({ { "word", TWText::validUTF8(word) } }) : TWText::oneLine(word) + "\n";
    return { TWStatus::Success, out, words.empty() && !invocation.json ? NoWords : "" };
}

TWCommandResult change(const TWCommandContext& context, const std::function<void(Words&)>& change)
{
    return TWSaved(*dictionaryOf(context).changeSaved([&](Words& words) {
        change(words);
        return true;
    }));
}

bool areText(const std::vector<std::string>& words)
{
    return std::all_of(words.begin(), words.end(), TWText::isValidUTF8);
}

TWCommandResult add(const TWCommandContext& context, const TWInvocation& invocation)
{
    const auto added = invocation.texts(Word);
    if (!areText(added))
        return TWWrongUse(WordNotText);
    return change(context, [&](Words& words) {
        for (const auto& word : added)
            words.push_back({ word });
    });
}

// Removes all of the words or, if one is not in the dictionary, none.
TWCommandResult remove(const TWCommandContext& context, const TWInvocation& invocation)
{
    const auto removed = invocation.texts(Word);
    if (!areText(removed))
        return TWWrongUse(WordNotText);
    const auto saved = dictionaryOf(context).saved();
    for (const auto& word : removed) {
        if (std::find(saved.begin(), saved.end(), TWDictionaryWord{ word }) == saved.end())
            return { TWStatus::Failure, "", TWText::fill(NoSuchWord, { TWText::oneLine(word) }) };
    }
    return change(context, [&](Words& words) {
        for (const auto& word : removed)
            std::erase(words, TWDictionaryWord{ word });
    });
}

TWCommandResult clear(const TWCommandContext& context, const TWInvocation&)
{
    return change(context, [](Words& words) { words.clear(); });
}

}

TWCommandGroup TWWordsCommands()
{
    using enum TWCommandKind;
    const TWArgument words{ TWArgument::Kind::Texts, TWArgument::Need::Required, Word, WordHelp };
    return { "words", "Show and change the keyword dictionary",
        {
            { "list", "All words", Reads, {}, list },
            { "clear", "Remove all words", ChangesLists, {}, clear },
            { "add", "Add words at the end", ChangesLists, { words }, add },
            { "remove", "Remove words, each wherever it stands", ChangesLists, { words }, remove },
        } };
}
