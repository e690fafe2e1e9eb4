#include "cli/TWListArguments.h"

#include "support/TWText.h"

#include <charconv>

namespace {

constexpr auto PathNotText
    = "\"%@\" cannot be kept in a rule, because its name is not valid UTF-8. Rename it, or delete it by hand.\n";

}

std::optional<std::size_t> TWReadNumber(const std::string& text)
{
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && number > 0 ? std::optional(number)
                                                                                  : std::nullopt;
}

std::optional<TWCommandResult> TWReadRulePath(
    const TWCommandContext& context, const std::string& given, const char* noPath, TWMeantPath& meant)
{
    if (given.empty())
        return TWWrongUse(noPath);
    meant = TWReadPathArgument(context.host.fileSystem(), context.places, given);
    if (!meant.problem.empty())
        return TWWrongUse(meant.problem);
    if (!TWText::isValidUTF8(meant.stored))
        return TWCommandResult{ TWStatus::Failure, "", TWText::fill(PathNotText, { TWText::oneLine(meant.stored) }) };
    return std::nullopt;
}
