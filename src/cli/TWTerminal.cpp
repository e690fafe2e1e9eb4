#include "cli/TWTerminal.h"

#include "cli/TWJSON.h"
#include "support/TWText.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

constexpr auto Question = "%@? [y/N] ";
constexpr auto NotAsked = "Nothing was run: there is no terminal to ask at. Add --yes to continue anyway.\n";
constexpr auto NotConfirmed = "Nothing was run.\n";

constexpr const char* Colours[] = {"", "\033[32m", "\033[31m"};
constexpr auto NoColour = "\033[0m";

bool wantsColours()
{
    return isatty(STDOUT_FILENO) && !std::getenv("NO_COLOR");
}

std::string lineFor(const TWMessage& message, bool json, bool coloured)
{
    const auto type = static_cast<int>(message.type);
    if (json) {
        TWJSON::Object object {{"type", type}};
        TWJSON::addBytes(object, "text", "textBytes", message.text);
        return TWJSON::line(object);
    }
    const auto text = TWText::oneLine(message.text);
    return coloured && type != 0 ? Colours[type] + text + NoColour + "\n" : text + "\n";
}

}

TWTerminal::TWTerminal(const TWInvocation& invocation)
    : invocation_(invocation)
    , coloured_(wantsColours())
{
}

void TWTerminal::show(const TWAlert& alert, std::function<void(TWAnswer)> answered)
{
    std::fprintf(stderr, "%s %s\n", alert.title.c_str(), alert.text.c_str());
    // With one button there is nothing to ask.
    const bool goOn = alert.alternateButton.empty() || confirmed(alert);
    answered(goOn ? TWAnswer::Default : TWAnswer::Alternate);
}

bool TWTerminal::confirmed(const TWAlert& alert) const
{
    if (invocation_.yes)
        return true;
    if (!isatty(STDIN_FILENO)) {
        std::fputs(NotAsked, stderr);
        return false;
    }
    std::fputs(TWText::fill(Question, {alert.defaultButton}).c_str(), stderr);
    char answer[16] = "";
    const bool yes = std::fgets(answer, sizeof answer, stdin) && (answer[0] == 'y' || answer[0] == 'Y');
    if (!yes)
        std::fputs(NotConfirmed, stderr);
    return yes;
}

void TWTerminal::messagesAdded(std::size_t count)
{
    std::string lines;
    const auto& messages = delegate_->resultsWindowController().messages();
    for (; printed_ < count; ++printed_)
        lines += lineFor(messages[printed_], invocation_.json, coloured_);
    std::fwrite(lines.data(), 1, lines.size(), stdout);
    std::fflush(stdout);
}

// The switches stand for the check boxes; --only has taken their place already.
bool TWTerminal::isChecked(int position) const
{
    return delegate_->settings().boolean(TWCleanerTable()[static_cast<std::size_t>(position)].key);
}

void TWTerminal::cleaningEnded(TWRunOutcome outcome)
{
    if (ended_)
        ended_(outcome);
}
