#include "platform/linux/TWWatchedPaths.h"

int TWWatchedPaths::assign(const std::string& path, int watch)
{
    if (const auto* known = pathOf(watch); known && *known == path)
        return None;
    forget(watch);
    const auto [place, added] = watches_.try_emplace(path, watch);
    const int before = added ? None : place->second;
    places_.erase(before);
    place->second = watch;
    places_[watch] = place;
    return before;
}

const std::string* TWWatchedPaths::pathOf(int watch) const
{
    const auto found = places_.find(watch);
    return found == places_.end() ? nullptr : &found->second->first;
}

void TWWatchedPaths::forget(int watch)
{
    const auto found = places_.find(watch);
    if (found == places_.end())
        return;
    watches_.erase(found->second);
    places_.erase(found);
}

std::vector<int> TWWatchedPaths::takeBelow(const std::string& path)
{
    std::vector<int> taken;
    const auto take = [&](Watches::const_iterator begin, Watches::const_iterator end) {
        for (auto at = begin; at != end; ++at) {
            taken.push_back(at->second);
            places_.erase(at->second);
        }
        watches_.erase(begin, end);
    };
    take(watches_.lower_bound(path), watches_.upper_bound(path));
    take(watches_.lower_bound(path + '/'), watches_.lower_bound(path + char('/' + 1)));
    return taken;
}
