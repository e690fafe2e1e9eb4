#include "cleaners/TWPlan.h"

#include <iterator>

namespace {

template <typename T>
void move(std::vector<T>& from, std::vector<T>& to)
{
    to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
}

}

void TWPlan::append(TWPlan part)
{
    for (auto& item : part.items) {
        if (item.folder != TWNone)
            item.folder += static_cast<std::uint32_t>(folders.size());
    }
    for (auto& line : part.lines)
        line.place += items.size();
    move(part.folders, folders);
    move(part.items, items);
    move(part.lines, lines);
    if (part.failure)
        failure = std::move(part.failure);
    incomplete = incomplete || part.incomplete;
}

TWDeletionTarget TWPlan::target(const TWPlannedItem& item) const
{
    return { item.folder == TWNone ? nullptr : folders[item.folder], item.name };
}
