#include "support/TWNamePatterns.h"

namespace {

constexpr std::string_view Special = "*?[]";

}

void TWNamePatterns::add(const std::string& pattern)
{
    const auto index = patterns_.size();
    patterns_.emplace_back(pattern);
    const auto last = pattern.find_last_of(Special);
    const auto end = last == std::string::npos ? pattern : pattern.substr(last + 1);
    const auto beginning = pattern.substr(0, pattern.find_first_of(Special));
    if (!end.empty())
        byEnd_[end.size()][end].push_back(index);
    else if (!beginning.empty())
        byBeginning_[beginning.size()][beginning].push_back(index);
    else
        others_.push_back(index);
}

const TWNamePattern* TWNamePatterns::match(std::string_view name) const
{
    auto best = patterns_.size();
    const auto compareByPart = [&](const auto& tables, const auto& part) {
        for (const auto& [length, byText] : tables) {
            if (length > name.size())
                break;
            if (const auto found = byText.find(part(length)); found != byText.end())
                compare(found->second, name, best);
        }
    };
    compareByPart(byEnd_, [&](std::size_t length) { return name.substr(name.size() - length); });
    compareByPart(byBeginning_, [&](std::size_t length) { return name.substr(0, length); });
    compare(others_, name, best);
    return best < patterns_.size() ? &patterns_[best] : nullptr;
}

void TWNamePatterns::compare(const Indexes& indexes, std::string_view name, std::size_t& best) const
{
    for (const auto index : indexes) {
        if (index >= best)
            return;
        if (patterns_[index].matches(name))
            best = index;
    }
}
