#include "cli/TWCommandTable.h"

#include "cli/TWApplicationsCommands.h"
#include "cli/TWCleanCommand.h"
#include "cli/TWDemoCommand.h"
#include "cli/TWFilesCommands.h"
#include "cli/TWKeepCommands.h"
#include "cli/TWLogsCommands.h"
#include "cli/TWPathsCommand.h"
#include "cli/TWPreviewCommand.h"
#include "cli/TWRecentItemsCommands.h"
#include "cli/TWSettingsCommands.h"
#include "cli/TWVolumesCommands.h"
#include "cli/TWWordsCommands.h"

namespace {

TWCommandGroup windowCommand()
{
    return { "", "", { { "", "", TWCommandKind::OpensWindow, {}, nullptr } } };
}

}

std::span<const TWCommandGroup> TWCommandTable()
{
    static const TWCommandGroup table[] = { windowCommand(), TWCleanCommands(), TWPreviewCommands(),
        TWSettingsCommands(), TWWordsCommands(), TWFilesCommands(), TWRecentItemsCommands(), TWLogsCommands(),
        TWApplicationsCommands(), TWVolumesCommands(), TWKeepCommands(), TWPathsCommands(), TWDemoCommands() };
    return table;
}
