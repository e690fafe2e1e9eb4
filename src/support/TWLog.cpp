#include "support/TWLog.h"

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
        std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
}

void TWLog::setSink(Sink sink)
{
    currentSink() = std::move(sink);
}
