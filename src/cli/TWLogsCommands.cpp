#include "cli/TWLogsCommands.h"

#include "cli/TWJSON.h"
#include "cli/TWPathArgument.h"
#include "editors/TWLogsScan.h"
#include "editors/TWLogsWindowController.h"
#include "platform/TWDanglingLink.h"
#include "support/TWPath.h"
#include "support/TWText.h"

namespace {

constexpr auto NotALog = "\"%@\" cannot be checked: %@ \"tidewell logs list\" shows the log folders.\n";
constexpr auto Missing = "\"%@\" does not exist.\n";
constexpr auto NotLookedAt = "\"%@\" could not be looked at: %@.\n";
constexpr auto NotText = "\"%@\" cannot be checked, because its name is not valid UTF-8. Check the folder around it.\n";
constexpr auto CheckedAbove = "\"%@\" is checked already, with the folder around it.\n";
constexpr auto UncheckAbove = "\"%@\" is checked with the folder around it. Uncheck that.\n";
constexpr auto NotChecked = "\"%@\" is not checked.\n";

constexpr auto IsGone = "  (no longer there)";
constexpr auto IsOutside = "  (in no log folder, so never deleted)";

constexpr auto OneOfThem = "Give either the path of a log, or --user, or --system.\n";

constexpr auto Path = "PATH";
constexpr auto User = "--user";
constexpr auto System = "--system";
constexpr auto PathHelp = "A log or a log folder; a relative path is taken from the working directory";
constexpr auto UserHelp = "Everything in the user's log folders, User Logs";
constexpr auto SystemHelp = "Everything in the system's log folder, System Logs";

// Applies a change to the nodes of a list, or leaves it as it is and returns the answer to the command.
using Change = std::function<std::optional<TWCommandResult>(TWLogsTree&)>;

TWLogsWindowController& editor(const TWCommandContext& context)
{
    return context.delegate->editors().get<TWLogsWindowController>();
}

TWLogRoots roots(const TWCommandContext& context)
{
    return { context.places, context.delegate->platform().logSources.userSources(context.places) };
}

// Returns "" or one line about what is wrong with the arguments. The path is one of the tokens for a root.
std::string readPath(const TWCommandContext& context, const TWInvocation& invocation, TWMeantPath& meant)
{
    if (invocation.has(Path) + invocation.has(User) + invocation.has(System) != 1)
        return OneOfThem;
    if (!invocation.has(Path)) {
        meant.path = invocation.has(User) ? TWAllUserLogs : TWAllSystemLogs;
        meant.stored = meant.path;
        return "";
    }
    meant = TWReadPathArgument(context.host.fileSystem(), context.places, invocation.text(Path));
    return meant.problem;
}

// What is unusual about a chosen node, for people and for programs.
struct Remark {
    const char* text = "";
    const char* json = nullptr;
};

Remark remarkOn(const TWLogsNode& node, const TWLogsScan::States& states)
{
    const auto found = states.find(node.itemPath());
    if (found != states.end() && found->second == TWLogsNode::State::Vanished)
        return { IsGone, "gone" };
    if (found != states.end() && found->second == TWLogsNode::State::Outside)
        return { IsOutside, "outside" };
    return {};
}

void addLines(const TWLogsNode& node, const TWLogsScan::States& states, int depth, bool json, std::string& out)
{
    const auto remark = remarkOn(node, states);
    if (json) {
        TWJSON::Object object{ { "Item", TWText::validUTF8(node.item) } };
        TWJSON::addBytes(object, "ItemPath", "pathBytes", node.itemPath());
        object["Active"] = node.active;
        if (remark.json)
            object["state"] = remark.json;
        out += TWJSON::line(object);
    } else {
        const auto* state = node.active == TWLogChecked ? "on     " : node.active == TWLogMixed ? "mixed  " : "off    ";
        const auto path = node.root == TWLogsNode::Root::User ? "" : "  " + TWText::oneLine(node.folderPath());
        out += state + std::string(static_cast<std::size_t>(depth) * 2, ' ') + TWText::oneLine(node.item) + path
            + remark.text + "\n";
    }
    if (!node.children)
        return;
    for (const auto& child : *node.children)
        addLines(*child, states, depth + 1, json, out);
}

TWCommandResult list(const TWCommandContext& context, const TWInvocation& invocation)
{
    const auto known = roots(context);
    TWLogsTree tree(context.places.abbreviate(known.systemLogs()));
    const auto records = editor(context).list().saved();
    tree.load(records);
    const TWCancellation never;
    const auto states = TWLogsScan(context.host.fileSystem(), known, context.places, nullptr, never).states(records);
    tree.add(known, context.places, std::string(TWAllUserLogs), true);
    tree.add(known, context.places, std::string(TWAllSystemLogs), true);
    for (const auto& source : known.sources())
        tree.add(known, context.places, source.path, source.isFolder);
    std::string out;
    for (const auto& root : tree.logsRoot())
        addLines(*root, states, 0, invocation.json, out);
    return { TWStatus::Success, out, "" };
}

TWCommandResult change(const TWCommandContext& context, const Change& change)
{
    std::optional<TWCommandResult> answer;
    const auto problem = editor(context).list().changeSaved([&](TWLogsTree::Records& records) {
        TWLogsTree tree(context.places.abbreviate(context.places.systemLogs));
        tree.load(records);
        answer = change(tree);
        if (!answer)
            records = tree.cleanedArrayFrom();
        return !answer;
    });
    // Nothing if the saved list was left as it is. Otherwise the answer may be about the live list, which may differ.
    return problem ? TWSaved(*problem) : *answer;
}

// Why the path cannot be checked, or nothing.
std::optional<TWCommandResult> refusal(
    const TWCommandContext& context, const TWLogRoots& known, const TWMeantPath& meant, TWFileLook& look)
{
    const auto& fileSystem = context.host.fileSystem();
    const auto shown = TWText::oneLine(meant.stored);
    const auto failure = [&](const char* text, std::string_view value) {
        return TWCommandResult{ TWStatus::Failure, "", TWText::fill(text, { shown, value }) };
    };
    int error = 0;
    const auto place = known.find(fileSystem, meant.path, error);
    if (place.objection && meant.path != known.systemLogs())
        return failure(NotALog, place.objection);
    look = fileSystem.look(meant.path);
    if (look.presence == TWPresence::Gone)
        return failure(Missing, "");
    if (!look.isThere())
        return failure(NotLookedAt, TWErrorText(look.error));
    if (!place.objection && !fileSystem.holdFolder(place.realFolder, error))
        return failure(NotALog, TWLogPlace::BehindLink);
    if (!TWText::isValidUTF8(meant.stored))
        return failure(NotText, "");
    return std::nullopt;
}

TWCommandResult check(const TWCommandContext& context, const TWInvocation& invocation)
{
    TWMeantPath meant;
    if (const auto problem = readPath(context, invocation, meant); !problem.empty())
        return TWWrongUse(problem);
    const auto known = roots(context);
    TWFileLook look;
    if (meant.path.starts_with('/')) {
        if (auto refused = refusal(context, known, meant, look))
            return *refused;
    }
    return change(context, [&](TWLogsTree& tree) -> std::optional<TWCommandResult> {
        auto& node = tree.add(known, context.places, meant.path, look.isFolder());
        if (TWLogsTree::hasActiveParent(node))
            return TWCommandResult{ TWStatus::Success, TWText::fill(CheckedAbove, { TWText::oneLine(meant.stored) }),
                "" };
        tree.click(node, TWLogChecked);
        return std::nullopt;
    });
}

// Whether a folder above it is checked, so that everything in there is deleted.
bool isBelowChecked(const TWCommandContext& context, TWLogsTree& tree, const std::string& path)
{
    const auto known = roots(context);
    if (!path.starts_with('/') || (!known.sourceOf(path) && !TWPath::isAtOrBelow(path, known.systemLogs())))
        return false;
    return TWLogsTree::hasActiveParent(tree.add(known, context.places, path, false));
}

TWCommandResult uncheck(const TWCommandContext& context, const TWInvocation& invocation)
{
    TWMeantPath meant;
    if (const auto problem = readPath(context, invocation, meant); !problem.empty())
        return TWWrongUse(problem);
    return change(context, [&](TWLogsTree& tree) -> std::optional<TWCommandResult> {
        const auto path = meant.path == context.places.systemLogs ? std::string(TWAllSystemLogs)
                                                                  : context.places.abbreviate(meant.path);
        auto* node = tree.findChosen(path);
        if (!node) {
            const auto* text = isBelowChecked(context, tree, meant.path) ? UncheckAbove : NotChecked;
            return TWCommandResult{ TWStatus::Failure, "", TWText::fill(text, { TWText::oneLine(meant.stored) }) };
        }
        // A hand-made list may name it several times.
        for (; node; node = tree.findChosen(path))
            tree.click(*node, TWLogUnchecked);
        return std::nullopt;
    });
}

}

TWCommandGroup TWLogsCommands()
{
    using enum TWCommandKind;
    using enum TWArgument::Need;
    using Kind = TWArgument::Kind;
    const std::vector<TWArgument> which{ { Kind::Path, Optional, Path, PathHelp },
        { Kind::Flag, Optional, User, UserHelp }, { Kind::Flag, Optional, System, SystemHelp } };
    return { "logs", "Show and change which logs are checked",
        { { "list", "The log folders and what is checked", Reads, {}, list },
            { "check", "Check a log or a log folder", ChangesLists, which, check },
            { "uncheck", "Uncheck it", ChangesLists, which, uncheck } } };
}
