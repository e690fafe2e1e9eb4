#pragma once

#include "TWDeadline.h"
#include "platform/TWVolumes.h"

// Writes a note about the programs that hold the volume, if there are any.
void TWReportHolders(const TWVolume&, TWDeadline::Duration limit);
