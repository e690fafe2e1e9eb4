#include "cli/TWPathsCommand.h"

#include "cli/TWJSON.h"
#include "support/TWText.h"

namespace {

TWCommandResult paths(const TWCommandContext& context, const TWInvocation& invocation)
{
    const auto& places = context.places;
    const std::pair<const char*, std::string> rows[] = {
        { "home", places.home },
        { "dataFolder", context.dataFolder.path() },
        { "defaultsFile", places.settingsFile() },
        { "trash", places.trash },
        { "systemLogs", places.systemLogs },
        { "resources", places.resources },
        { "rm", places.rm },
        { "srm", places.srm },
        { "eject", places.eject },
    };
    TWJSON::Object object;
    std::string text;
    for (const auto& [name, path] : rows) {
        object[name] = TWText::validUTF8(path);
        std::string label = name;
        label.resize(14, ' ');
        text += label + TWText::oneLine(path) + "\n";
    }
    object["userLogs"] = TWJSON::Object::array();
    for (const auto& source : context.host.logSources().userSources(places)) {
        object["userLogs"].push_back(TWText::validUTF8(source.path));
        text += "userLogs      " + TWText::oneLine(source.path) + "\n";
    }
    return { TWStatus::Success, invocation.json ? TWJSON::line(object) : text, "" };
}

}

TWCommandGroup TWPathsCommands()
{
    return { "", "", { { "paths", "Print where everything is", TWCommandKind::NeedsPlaces, {}, paths } } };
}
