#include "cli/TWApplicationsCommands.h"

#include "cli/TWJSON.h"
#include "cli/TWListArguments.h"
#include "editors/TWApplicationsWindowController.h"

namespace {

constexpr auto NoApplications = "No applications yet. Add one with \"tidewell applications add PATH\".\n";
constexpr auto NoPath = "Give the path of a .desktop file or of a program.\n";
constexpr auto NoSuchApplication = "There is no application %@. Try \"tidewell applications list\".\n";

constexpr auto IsGone = "  (not installed any more)";

constexpr auto Path = "PATH";
constexpr auto Number = "N";
constexpr auto PathHelp
    = "A .desktop file, such as those in /usr/share/applications, or a program; a relative path is taken from the "
      "working directory";
constexpr auto NumberHelp = "The application's number in \"tidewell applications list\"";

using Records = std::vector<TWApplicationsRecord>;

TWApplicationsWindowController& editor(const TWCommandContext& context)
{
    return context.delegate->editors().get<TWApplicationsWindowController>();
}

std::string jsonLine(const TWApplicationsRecord& record, bool isGone)
{
    TWJSON::Object object;
    TWJSON::addBytes(object, "Path", "pathBytes", record.path);
    object["Name"] = TWText::validUTF8(record.name);
    if (isGone)
        object["state"] = "gone";
    return TWJSON::line(object);
}

std::string textLine(const TWApplicationsRecord& record, bool isGone, std::size_t number)
{
    std::string start = std::to_string(number);
    start.resize(std::max<std::size_t>(start.size() + 1, 4), ' ');
    return start + TWText::oneLine(record.shownName()) + "  " + TWText::oneLine(record.path) + (isGone ? IsGone : "")
        + "\n";
}

TWCommandResult list(const TWCommandContext& context, const TWInvocation& invocation)
{
    const auto records = editor(context).list().saved();
    std::string out;
    for (std::size_t index = 0; index < records.size(); ++index) {
        const auto path = context.places.expand(records[index].path);
        const auto look = context.host.fileSystem().look(path, TWLinkAtEnd::Follow);
        const bool isGone = !path.starts_with('/') || look.presence == TWPresence::Gone;
        out += invocation.json ? jsonLine(records[index], isGone) : textLine(records[index], isGone, index + 1);
    }
    if (!editor(context).problem().empty()) // what is wrong is said for every command
        return { TWStatus::Failure, out, "" };
    return { TWStatus::Success, out, records.empty() && !invocation.json ? NoApplications : "" };
}

TWCommandResult add(const TWCommandContext& context, const TWInvocation& invocation)
{
    const auto given = invocation.text(Path);
    if (given.empty())
        return TWWrongUse(NoPath);
    const auto meant = TWReadPathArgument(context.host.fileSystem(), context.places, given);
    if (!meant.problem.empty())
        return TWWrongUse(meant.problem);
    std::string problem;
    const auto record = editor(context).recordFor(meant.path, problem);
    if (!record)
        return TWSaved(problem);
    return TWSaved(*editor(context).list().changeSaved([&](Records& records) {
        records.push_back(*record);
        return true;
    }));
}

TWCommandResult remove(const TWCommandContext& context, const TWInvocation& invocation)
{
    const auto text = invocation.text(Number);
    std::optional<std::string> problem;
    if (const auto number = TWReadNumber(text))
        problem = editor(context).list().changeSavedRow(*number - 1, [](Records& records, std::size_t row) {
            records.erase(records.begin() + static_cast<std::ptrdiff_t>(row));
        });
    return problem ? TWSaved(*problem) : TWWrongUse(TWText::fill(NoSuchApplication, { TWText::oneLine(text) }));
}

}

TWCommandGroup TWApplicationsCommands()
{
    using enum TWCommandKind;
    using enum TWArgument::Need;
    using Kind = TWArgument::Kind;
    return { "applications", "Show and change the list of applications that are quit",
        { { "list", "All applications in the list", Reads, {}, list },
            { "add", "Add an application at the end", ChangesLists, { { Kind::Path, Required, Path, PathHelp } }, add },
            { "remove", "Remove application N from the list", ChangesLists,
                { { Kind::Text, Required, Number, NumberHelp } }, remove } } };
}
