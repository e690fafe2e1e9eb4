#include "cli/TWPreviewCommand.h"

#include "app/TWPreview.h"
#include "cli/TWCleanCommand.h"
#include "cli/TWJSON.h"
#include "cli/TWTerminal.h"
#include "support/TWText.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr auto NoCleaner
    = "No cleaner is switched on. Name some with --only, or switch them on with \"tidewell settings set\".\n";
constexpr auto WhyWithWord = "%@, the word \"%@\"";
constexpr auto Heading = "%@:\n";
constexpr auto Note = "  %@\n";
constexpr auto WhyHeading = "  %@:\n";
constexpr auto NotThere = "    is not there now: %@\n";
constexpr auto WouldBeDeleted = "    would be deleted: %@ (%@)\n";
constexpr auto WouldBeDeletedForWord = "    would be deleted: %@ (%@, the word \"%@\")\n";
constexpr auto WouldLose = "    would lose %@ of %@: %@\n";
constexpr auto WouldHappen = "    %@: %@ (%@)\n";
constexpr auto WouldBeRefused = "    would be refused: %@: %@\n";
constexpr auto WouldFail = "The cleaner would fail: %@";
constexpr auto SizesTooSmall = "Something inside the folders could not be read, so some sizes are too small.\n";
constexpr auto Sum = "%@%@.\n";
constexpr auto SumOfRefused = "; %@ would be refused";

constexpr TWRunLoop::Duration LongestTurn{ 60'000 }; // any length will do, because every event wakes the loop
constexpr std::size_t ItemsPerTurn = 500; // so that the command can be interrupted between them

std::string jsonFor(const TWCleanerPreview& cleaner, std::size_t index)
{
    const auto& item = cleaner.plan()->items[index];
    const auto word = cleaner.word(item);
    const auto why = word.empty() ? cleaner.rule(item) : TWText::fill(WhyWithWord, { cleaner.rule(item), word });
    TWJSON::Object object{ { "cleaner", cleaner.row().name }, { "action", TWTextsOf(item.action).json } };
    TWJSON::addBytes(
        object, "path", "pathBytes", item.isThing() ? cleaner.plan()->thing(item)->path : cleaner.plan()->path(item));
    const auto bytes = cleaner.plan()->bytes(item, cleaner.bytes(index));
    object["bytes"] = bytes ? TWJSON::Object(*bytes) : TWJSON::Object();
    if (item.keepsFile()) {
        object["key"] = TWText::validUTF8(cleaner.plan()->change(item).key);
        object["entries"] = cleaner.plan()->change(item).entries;
    }
    if (item.isAbsent())
        object["absent"] = true;
    if (item.isThing()) {
        object["name"] = TWText::validUTF8(item.name);
        const auto& thing = *cleaner.plan()->thing(item);
        object["details"] = TWText::validUTF8(TWText::join({ thing.which, thing.details }, ", "));
    }
    object["why"] = TWText::validUTF8(why);
    if (const auto refusal = cleaner.refusal(item); !refusal.empty())
        object["refused"] = TWText::validUTF8(refusal);
    return TWJSON::line(object);
}

std::string textFor(const TWCleanerPreview& cleaner, std::size_t index)
{
    const auto& item = cleaner.plan()->items[index];
    const auto path = TWText::oneLine(cleaner.plan()->path(item));
    if (const auto refusal = cleaner.refusal(item); !refusal.empty())
        return TWText::fill(WouldBeRefused, { path, TWText::oneLine(refusal) });
    if (item.isAbsent())
        return TWText::fill(NotThere, { path });
    if (item.keepsFile()) {
        const auto& change = cleaner.plan()->change(item);
        const auto entries = TWText::count(change.entries, "entry", "entries");
        return TWText::fill(WouldLose, { entries, TWText::oneLine(change.key), path });
    }
    if (item.isThing()) {
        const auto& details = cleaner.plan()->thing(item)->details;
        const auto about = TWText::join({ TWPlanReasons::which(*cleaner.plan(), item), details }, ", ");
        return TWText::fill(WouldHappen, { TWTextsOf(item.action).would, path, TWText::oneLine(about) });
    }
    const auto size = TWText::size(cleaner.bytes(index));
    const auto word = cleaner.word(item);
    return word.empty() ? TWText::fill(WouldBeDeleted, { path, size })
                        : TWText::fill(WouldBeDeletedForWord, { path, size, TWText::oneLine(word) });
}

// Prints a preview while it is being made.
class Printer final : public TWPreviewDelegate {
public:
    Printer(TWRunLoop& runLoop, TWOutputFormat format)
        : runLoop_(runLoop)
        , format_(format)
        , output_(runLoop, [this] { printSome(); })
    {
    }

    void setPreview(const TWPreview& preview) { preview_ = &preview; }

    // Everything is printed, or the output could not be written.
    bool finished() const { return finished_; }
    bool outputWritten() const { return !output_.failed(); }

    void previewChanged() override { printLater(); }
    void previewEnded() override { printLater(); }

private:
    void printLater()
    {
        next_ = runLoop_.after(TWRunLoop::Duration(0), [this] { printSome(); });
    }

    void printSome()
    {
        if (!output_.isReady())
            return;
        finished_ = allPrinted_ || output_.failed();
        if (finished_)
            return;
        std::size_t printed = 0;
        while (printed < ItemsPerTurn && printNext())
            ++printed;
        allPrinted_ = printed < ItemsPerTurn && preview_->ended();
        if (allPrinted_)
            addSum();
        std::fputs(err_.c_str(), stderr);
        err_.clear();
        output_.write(std::exchange(out_, ""));
        if (allPrinted_ || printed == ItemsPerTurn)
            printLater();
    }

    // Returns false if nothing more is known yet.
    bool printNext()
    {
        if (cleaner_ == preview_->cleaners().size())
            return false;
        const auto& cleaner = *preview_->cleaners()[cleaner_];
        if (!cleaner.isPlanned())
            return false;
        if (!std::exchange(begun_, true))
            addHeading(cleaner);
        if (item_ < cleaner.itemsSized()) {
            addItem(cleaner, item_++);
            return true;
        }
        if (!cleaner.isComplete())
            return false;
        if (cleaner.unknown() > 0)
            err_ += SizesTooSmall;
        ++cleaner_;
        item_ = 0;
        begun_ = false;
        return true;
    }

    // Warnings are alerts in a run; the other notes are lines of its results.
    void addHeading(const TWCleanerPreview& cleaner)
    {
        rule_.reset();
        err_ += cleaner.warning().empty() ? "" : TWHarmlessLines(cleaner.warning()) + "\n";
        const bool json = format_ == TWOutputFormat::JSON;
        auto& notes = json ? err_ : out_;
        if (!json)
            notes += TWText::fill(Heading, { cleaner.row().title });
        const auto isQuiet = [](const auto& item) { return item.quiet; };
        if (!json && std::ranges::all_of(cleaner.plan()->items, isQuiet))
            notes += TWText::fill(Note, { cleaner.row().nothing });
        for (const auto& line : cleaner.plan()->lines)
            notes += TWText::fill(Note, { TWText::oneLine(line.text) });
        if (const auto& failure = cleaner.plan()->failure)
            notes += TWText::fill(Note, { TWText::oneLine(TWText::fill(WouldFail, { *failure })) });
    }

    void addItem(const TWCleanerPreview& cleaner, std::size_t index)
    {
        const auto& item = cleaner.plan()->items[index];
        const bool json = format_ == TWOutputFormat::JSON;
        if (item.quiet && (!json || item.keepsFile()))
            return;
        if (json) {
            out_ += jsonFor(cleaner, index);
            return;
        }
        if (std::exchange(rule_, item.rule) != item.rule)
            out_ += TWText::fill(WhyHeading, { TWText::oneLine(cleaner.rule(item)) });
        out_ += textFor(cleaner, index);
    }

    void addSum()
    {
        if (format_ == TWOutputFormat::JSON)
            return;
        const auto& total = preview_->total();
        const auto refused = TWText::count(total.refused, "item", "items");
        out_ += TWText::fill(Sum, { total.text(), total.refused == 0 ? "" : TWText::fill(SumOfRefused, { refused }) });
    }

    TWRunLoop& runLoop_;
    const TWOutputFormat format_;
    const TWPreview* preview_ = nullptr;
    bool allPrinted_ = false; // except for what waits for the reader
    bool finished_ = false;
    std::size_t cleaner_ = 0; // being printed
    bool begun_ = false; // its heading is printed
    std::size_t item_ = 0; // of the cleaner, the next to print
    std::optional<std::uint32_t> rule_; // whose heading was printed last
    std::string out_; // not handed to the output yet
    std::string err_;
    TWOutput output_;
    std::unique_ptr<TWRunLoopHandle> next_;
};

bool hasProblem(const TWPreview& preview)
{
    return std::any_of(preview.cleaners().begin(), preview.cleaners().end(),
        [](const auto& cleaner) { return cleaner->hasProblem(); });
}

TWCommandResult preview(const TWCommandContext& context, const TWInvocation& invocation)
{
    auto& delegate = *context.delegate;
    auto& runLoop = delegate.platform().runLoop;
    TWRunChoice choice{};
    if (const auto problem = TWReadCleaners(context, invocation, choice); !problem.empty())
        return TWWrongUse(problem);
    if (!TWIsAnyChosen(choice))
        return { TWStatus::NothingRun, "", NoCleaner };
    for (const auto& problem : delegate.problems())
        std::fputs((TWText::oneLine(problem) + "\n").c_str(), stderr);
    bool interrupted = false;
    const auto endRequests = context.host.whenToldToEnd(runLoop, [&] { interrupted = true; });
    Printer printer(runLoop, context.terminal->format());
    const TWPreview preview(delegate.cleanerContext(), delegate.settingsSources(), choice, printer);
    printer.setPreview(preview);
    while (!printer.finished() && !interrupted)
        runLoop.turn(LongestTurn);
    if (interrupted)
        return { TWStatus::Interrupted, "", "" };
    return { printer.outputWritten() && !hasProblem(preview) ? TWStatus::Success : TWStatus::Failure, "", "" };
}

}

TWCommandGroup TWPreviewCommands()
{
    return { "", "",
        { { "preview", "Show what clean would delete, and change nothing", TWCommandKind::Cleans,
            { TWOnlyArgument("Preview these cleaners instead: ") }, preview } } };
}
