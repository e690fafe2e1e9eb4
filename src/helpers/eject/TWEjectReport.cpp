#include "TWEjectReport.h"

#include "support/TWText.h"

#include <unistd.h>

void TWReport(std::string_view format, std::initializer_list<std::string_view> values)
{
    const auto line = "eject: " + TWText::oneLine(TWText::fill(format, values)) + "\n";
    // If standard error fails, there is nobody to tell.
    [[maybe_unused]] const auto written = write(STDERR_FILENO, line.data(), line.size());
}
