#include "cli/TWWordsCommands.h"

#include "cli/TWJSON.h"
#include "support/TWText.h"

#include <algorithm>

namespace {

constexpr auto NoWords = "The dictionary is empty. Add words with \"tidewell words add WORD\".\n";
constexpr auto NoSuchWord = "The dictionary does not hold \"%@\".\n";
constexpr auto WordNotText = "A word must be valid UTF-8 text.\n";

constexpr auto Word = "WORD";

TWCommandResult list(const TWCommandContext& context, const TWInvocation& invocation)
{
    const auto& words = context.delegate->editors().dictionary().wordDictionary();
    std::string out;
    for (const auto& word : words)
        out += invocation.json ? TWJSON::line({ { "word", TWText::validUTF8(word) } }) : TWText::oneLine(word) + "\n";
    return { TWStatus::Success, out, words.empty() && !invocation.json ? NoWords : "" };
}

using Change = std::function<void(std::vector<std::string>&)>;

// The words shown in a window may be others than the saved ones: each list gets the change for itself.
TWCommandResult change(const TWCommandContext& context, const Change& change)
{
    auto& dictionary = context.delegate->editors().dictionary();
    auto words = dictionary.savedWords();
    change(words);
    const auto problem = dictionary.write(words);
    if (!problem.empty())
        return { TWStatus::Failure, "", TWText::oneLine(problem) + "\n" };
    auto shown = dictionary.wordDictionary();
    change(shown);
    dictionary.replaceWords(std::move(shown));
    return {};
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
    return change(context, [&](auto& words) { words.insert(words.end(), added.begin(), added.end()); });
}

// All of them or, if one is not there, none.
TWCommandResult remove(const TWCommandContext& context, const TWInvocation& invocation)
{
    const auto removed = invocation.texts(Word);
    if (!areText(removed))
        return TWWrongUse(WordNotText);
    const auto saved = context.delegate->editors().dictionary().savedWords();
    for (const auto& word : removed) {
        if (std::find(saved.begin(), saved.end(), word) == saved.end())
            return { TWStatus::Failure, "", TWText::fill(NoSuchWord, { TWText::oneLine(word) }) };
    }
    return change(context, [&](auto& words) {
        for (const auto& word : removed)
            std::erase(words, word);
    });
}

TWCommandResult clear(const TWCommandContext& context, const TWInvocation&)
{
    return change(context, [](auto& words) { words.clear(); });
}

}

TWCommandGroup TWWordsCommands()
{
    using enum TWCommandKind;
    const TWArgument words{ TWArgument::Kind::Texts, TWArgument::Need::Required, Word };
    return { "words", "Show and change the keyword dictionary",
        {
            { "list", "All words", Reads, {}, list },
            { "clear", "Remove all words", ChangesLists, {}, clear },
            { "add", "Add words at the end", ChangesLists, { words }, add },
            { "remove", "Remove words, each wherever it stands", ChangesLists, { words }, remove },
        } };
}
