#include "cli/TWVolumesCommands.h"

#include "cli/TWJSON.h"
#include "cli/TWPathArgument.h"
#include "editors/TWVolumesWindowController.h"

#include <algorithm>

namespace {

constexpr auto NoVolumes = "No volume is mounted that could be unmounted.\n";
constexpr auto NoPath = "Give the path where a volume is mounted.\n";
constexpr auto NoSuchVolume
    = "\"%@\" is not a volume that can be unmounted. \"tidewell volumes list\" shows those that can.\n";
constexpr auto NotText = "\"%@\" cannot be checked, because its path is not valid UTF-8.\n";
constexpr auto NotChecked = "\"%@\" is not checked.\n";

constexpr auto NoVolumeThere = "  (no volume there now)";

constexpr auto Path = "PATH";
constexpr auto PathHelp = "Where the volume is mounted; a relative path is taken from the working directory";

using Records = std::vector<TWVolumesRecord>;

TWVolumesWindowController& editor(const TWCommandContext& context)
{
    return context.delegate->editors().get<TWVolumesWindowController>();
}

std::string jsonLine(const TWVolumesRecord& record, bool isMounted)
{
    TWJSON::Object object{ { "Active", record.active }, { "VolumeName", TWText::validUTF8(record.volumeName) } };
    TWJSON::addBytes(object, "VolumePath", "pathBytes", record.volumePath);
    object["mounted"] = isMounted;
    return TWJSON::line(object);
}

std::string textLine(const TWVolumesRecord& record, bool isMounted)
{
    return (record.active ? "on   " : "off  ") + TWText::oneLine(record.volumePath) + (isMounted ? "" : NoVolumeThere)
        + "\n";
}

// The live list of a command that only reads is the saved one and what is mounted.
TWCommandResult list(const TWCommandContext& context, const TWInvocation& invocation)
{
    const auto& volumes = editor(context).volumesArray();
    std::string out;
    for (std::size_t row = 0; row < volumes.size(); ++row) {
        const bool isMounted = editor(context).isMounted(static_cast<int>(row));
        out += invocation.json ? jsonLine(volumes[row], isMounted) : textLine(volumes[row], isMounted);
    }
    if (!editor(context).problem().empty()) // what is wrong is said for every command
        return { TWStatus::Failure, out, "" };
    return { TWStatus::Success, out, volumes.empty() && !invocation.json ? NoVolumes : "" };
}

// Returns "" or one line about what is wrong with the path.
std::string readPath(const TWCommandContext& context, const TWInvocation& invocation, std::string& path)
{
    if (invocation.text(Path).empty())
        return NoPath;
    const auto meant = TWReadPathArgument(context.host.fileSystem(), context.places, invocation.text(Path));
    path = meant.path;
    return meant.problem;
}

auto isAt(const std::string& path)
{
    return [path](const TWVolumesRecord& record) { return record.volumePath == path; };
}

TWCommandResult switchOn(const TWCommandContext& context, const TWInvocation& invocation)
{
    std::string path;
    if (const auto problem = readPath(context, invocation, path); !problem.empty())
        return TWWrongUse(problem);
    editor(context).updateVolumesList(); // a window hears of new volumes a second later
    const auto& volumes = editor(context).volumesArray();
    const auto volume = std::find_if(volumes.begin(), volumes.end(), isAt(path));
    const auto refused = [&](const char* text) {
        return TWCommandResult{ TWStatus::Failure, "", TWText::fill(text, { TWText::oneLine(path) }) };
    };
    if (volume == volumes.end())
        return refused(NoSuchVolume);
    if (!TWText::isValidUTF8(path))
        return refused(NotText);
    auto record = *volume;
    record.active = true;
    return TWSaved(*editor(context).list().changeSaved([&](Records& records) {
        const auto saved = std::find_if(records.begin(), records.end(), isAt(path));
        if (saved == records.end())
            records.push_back(record);
        else
            saved->active = true;
        return true;
    }));
}

TWCommandResult switchOff(const TWCommandContext& context, const TWInvocation& invocation)
{
    std::string path;
    if (const auto problem = readPath(context, invocation, path); !problem.empty())
        return TWWrongUse(problem);
    const auto problem
        = editor(context).list().changeSaved([&](Records& records) { return std::erase_if(records, isAt(path)) > 0; });
    return problem ? TWSaved(*problem)
                   : TWCommandResult{ TWStatus::Failure, "", TWText::fill(NotChecked, { TWText::oneLine(path) }) };
}

}

TWCommandGroup TWVolumesCommands()
{
    using enum TWCommandKind;
    using enum TWArgument::Need;
    using Kind = TWArgument::Kind;
    const std::vector<TWArgument> which{ { Kind::Path, Required, Path, PathHelp } };
    return { "volumes", "Show and change which volumes are checked",
        { { "list", "The checked and the mounted volumes", Reads, {}, list },
            { "on", "Check a volume, so that it is unmounted", ChangesLists, which, switchOn },
            { "off", "Uncheck a volume", ChangesLists, which, switchOff } } };
}
