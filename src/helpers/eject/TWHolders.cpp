#include "TWHolders.h"

#include "TWBoundedChild.h"
#include "TWEjectReport.h"
#include "platform/linux/TWLinuxVolumeUse.h"

#include <unistd.h>

namespace {

constexpr char Held[] = "note: \"%@\" is held by %@";

constexpr std::size_t MostHolders = 10;

std::string inOneLine(const std::vector<std::string>& holders)
{
    std::string text;
    for (std::size_t index = 0; index < std::min(holders.size(), MostHolders); ++index)
        text += (index == 0 ? "" : ", ") + holders[index];
    const auto more = holders.size() - std::min(holders.size(), MostHolders);
    return more == 0 ? text : text + " and " + std::to_string(more) + " more";
}

}

void TWReportHolders(const TWVolume& volume, TWDeadline::Duration limit)
{
    const auto end = TWRunInChild(
        [&] {
            const auto text = inOneLine(TWLinuxLookForHolders(volume, {}).holders);
            return write(STDOUT_FILENO, text.data(), text.size()) < 0 ? 1 : 0;
        },
        limit);
    if (!end.output.empty())
        TWReport(Held, { volume.path, end.output });
}
