#include "support/TWLog.h"

#include "support/TWText.h"

#include <cstdio>

namespace {

TWLog::Sink& currentSink()
{
    static TWLog::Sink sink;
    return sink;
}

}

void TWLog::write(std::string_view line)
{
    if (currentSink())
        currentSink()(line);
    else
        std::fprintf(stderr, "%s\n", TWText::oneLine(line).c_str());
}

void TWLog::setSink(Sink sink)
{
    currentSink() = std::move(sink);
}
