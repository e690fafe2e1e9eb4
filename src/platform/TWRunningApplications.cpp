#include "platform/TWRunningApplications.h"

#include <algorithm>

static std::string lowerCase(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
        [](char letter) { return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter; });
    return lower;
}

void TWRunningApplications::addName(const std::string& name)
{
    if (!name.empty())
        names_.insert(name);
}

void TWRunningApplications::addProgram(std::string_view fileName)
{
    if (!fileName.empty())
        programs_.insert(lowerCase(fileName));
}

bool TWRunningApplications::runsProgram(std::string_view fileName) const
{
    return programs_.contains(lowerCase(fileName));
}

bool TWRunningApplications::runs(std::string_view source) const
{
    return names_.contains(source) || runsProgram(source);
}
