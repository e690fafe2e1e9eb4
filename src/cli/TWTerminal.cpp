#include "cli/TWTerminal.h"

#include "cli/TWJSON.h"
#include "support/TWText.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr auto Question = "%@? [y/N] ";
constexpr auto NotAsked = "Nothing was run: there is no terminal to ask at. Add --yes to continue anyway.\n";
constexpr auto NotConfirmed = "Nothing was run.\n";

constexpr auto Stopped = "Cleaning was stopped. ";

constexpr const char* Colours[] = { "", "\033[32m", "\033[31m" };
constexpr auto NoColour = "\033[0m";
constexpr auto ClearedLine = "\r\033[K";

constexpr std::size_t MessagesTogether = 1000;

bool wantsColours()
{
    return isatty(STDOUT_FILENO) && !std::getenv("NO_COLOR");
}

// On a terminal that can redraw a line. Lines that go elsewhere must not come between the progress on it.
bool redrawsOn(TWOutputFormat format)
{
    const char* terminal = std::getenv("TERM");
    return format == TWOutputFormat::Lines && isatty(STDERR_FILENO) && isatty(STDOUT_FILENO) && terminal
        && std::string_view(terminal) != "dumb";
}

// In characters.
std::size_t terminalWidth()
{
    winsize size{};
    const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
    return known ? size.ws_col - 1U : 79U;
}

std::string lineFor(const TWMessage& message, TWOutputFormat format, bool coloured)
{
    const auto type = static_cast<int>(message.type);
    if (format == TWOutputFormat::JSON) {
        TWJSON::Object object{ { "type", type } };
        TWJSON::addBytes(object, "text", "textBytes", message.text);
        return TWJSON::line(object);
    }
    const auto text = TWText::oneLine(message.text);
    return coloured && type != 0 ? Colours[type] + text + NoColour + "\n" : text + "\n";
}

}

std::string TWHarmlessLines(std::string_view text)
{
    std::string result;
    for (;;) {
        const auto line = text.substr(0, text.find('\n'));
        result += TWText::oneLine(line);
        if (line.size() == text.size())
            return result;
        result += '\n';
        text.remove_prefix(line.size() + 1);
    }
}

int TWPrint(const TWCommandResult& result)
{
    const bool written = TWWriteToOutput(result.out);
    std::fwrite(result.err.data(), 1, result.err.size(), stderr);
    return written ? result.status : std::max(result.status, TWStatus::Failure);
}

TWTerminal::TWTerminal(TWOutputFormat format, TWRunLoop& runLoop)
    : format_(format)
    , coloured_(wantsColours())
    , redraws_(redrawsOn(format))
    , output_(runLoop, [this] { printMessages(); })
{
}

void TWTerminal::attach(TWTidewellAppDelegate& delegate)
{
    delegate_ = &delegate;
    delegate.setViews(this, this);
    delegate.resultsWindowController().setView(this);
}

void TWTerminal::show(const TWAlert& alert, std::function<void(TWAnswer)> answered)
{
    // Prints the lines that the question is about above it.
    delegate_->resultsWindowController().flush();
    drawProgress("");
    std::fprintf(stderr, "%s %s\n", alert.title.c_str(), TWHarmlessLines(alert.text).c_str());
    // With only one button there is nothing to ask.
    if (alert.alternateButton.empty() || confirms_) {
        answered(TWAnswer::Default);
        return;
    }
    answered_ = std::move(answered);
    if (isatty(STDIN_FILENO)) {
        ask(alert);
        return;
    }
    std::fputs(NotAsked, stderr);
    answer(TWAnswer::Alternate);
}

// Does not block the event loop, so that the question can be interrupted.
void TWTerminal::ask(const TWAlert& alert)
{
    std::fputs(TWText::fill(Question, { alert.defaultButton }).c_str(), stderr);
    prompt_ = delegate_->platform().runLoop.whenReadable(STDIN_FILENO, [this] { readAnswer(); });
}

void TWTerminal::readAnswer()
{
    char line[4096]; // the greatest length of a terminal's input line
    const bool yes = read(STDIN_FILENO, line, sizeof line) > 0 && (line[0] == 'y' || line[0] == 'Y');
    if (!yes)
        std::fputs(NotConfirmed, stderr);
    answer(yes ? TWAnswer::Default : TWAnswer::Alternate);
}

void TWTerminal::endQuestion()
{
    if (!prompt_)
        return;
    std::fprintf(stderr, "\n%s", NotConfirmed);
    answer(TWAnswer::Alternate);
}

void TWTerminal::answer(TWAnswer given)
{
    prompt_.reset();
    if (const auto answered = std::exchange(answered_, nullptr))
        answered(given);
}

void TWTerminal::showProgress(const TWRunProgress& progress)
{
    if (!answered_)
        drawProgress(progress.text.substr(0, terminalWidth()));
}

void TWTerminal::drawProgress(const std::string& text)
{
    if (text == progress_)
        return;
    progress_ = text;
    std::fprintf(stderr, "%s%s", ClearedLine, text.c_str());
}

void TWTerminal::showOutcome(const TWOutcome& outcome)
{
    if (!redraws_)
        return;
    delegate_->resultsWindowController().flush();
    drawProgress("");
    std::fprintf(stderr, "%s%s\n", outcome.stopped ? Stopped : "", outcome.text().c_str());
}

std::size_t TWTerminal::unprinted() const
{
    if (output_.isReady())
        return 0;
    return output_.waitingLines() + delegate_->resultsWindowController().messages().size() - printed_;
}

// The run goes on although a reader of the lines stands still, because it is already decided what it deletes.
void TWTerminal::printMessages()
{
    // The lines take the place of the progress, which is drawn again below them.
    const auto progress = progress_;
    drawProgress("");
    const auto& messages = delegate_->resultsWindowController().messages();
    while (output_.isReady() && printed_ < messages.size()) {
        std::string lines;
        for (const auto end = std::min(printed_ + MessagesTogether, messages.size()); printed_ < end; ++printed_)
            lines += lineFor(messages[printed_], format_, coloured_);
        output_.write(std::move(lines));
    }
    drawProgress(progress);
}
