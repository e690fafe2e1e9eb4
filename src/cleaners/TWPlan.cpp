#include "cleaners/TWPlan.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr std::size_t BlockSize = 16384;

const TWPlannedFolder NoFolder;

template <typename T>
void move(std::vector<T>& from, std::vector<T>& to)
{
    to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
}

}

// One string per item would take half as much memory again and, when a long plan is dropped, a noticeable time.
char* TWPlan::keep(std::string_view text)
{
    if (names_.empty() || text.size() > room_) {
        blockSize_ = room_ = std::max(text.size(), BlockSize);
        names_.push_back(std::make_unique_for_overwrite<char[]>(blockSize_));
    }
    char* const place = names_.back().get() + (blockSize_ - room_);
    std::copy(text.begin(), text.end(), place);
    room_ -= text.size();
    return place;
}

TWPlannedItem& TWPlan::addItem(std::string_view name)
{
    auto& item = items.emplace_back();
    item.name = { keep(name), name.size() };
    return item;
}

TWPlannedItem& TWPlan::addThing(
    std::string_view name, TWPlannedAction action, std::shared_ptr<const TWPlannedThing> thing)
{
    auto& item = addItem(name);
    item.action = action;
    item.about = static_cast<std::uint32_t>(things.size());
    things.push_back(std::move(thing));
    return item;
}

void TWPlan::object(TWPlannedItem& item, const TWObjection& objection)
{
    if (objection.empty())
        return;
    // Items of one folder often have the same objection.
    const auto* before = items.size() > 1 ? items[items.size() - 2].objection : nullptr;
    item.objection = before && objection == before ? before : keep({ objection.c_str(), objection.size() + 1 });
}

void TWPlan::addProblems(const std::vector<std::string>& problems)
{
    for (const auto& problem : problems) {
        if (problem.empty())
            continue;
        addLine(problem, TWPlannedLine::Effect::Incomplete);
        incomplete = true;
    }
}

void TWPlan::append(TWPlan part)
{
    for (auto& item : part.items) {
        if (item.folder != TWNone)
            item.folder += static_cast<std::uint32_t>(folders.size());
        if (item.about != TWNone)
            item.about += static_cast<std::uint32_t>(item.isThing() ? things.size() : changes.size());
    }
    for (auto& line : part.lines)
        line.item += static_cast<std::uint32_t>(items.size());
    move(part.folders, folders);
    move(part.changes, changes);
    move(part.things, things);
    items.insert(items.end(), part.items.begin(), part.items.end());
    move(part.lines, lines);
    move(part.names_, names_);
    room_ = 0;
    if (part.failure)
        failure = std::move(part.failure);
    incomplete = incomplete || part.incomplete;
}

TWPlan TWPlan::copy() const
{
    TWPlan plan;
    plan.folders = folders;
    plan.changes = changes;
    plan.things = things;
    plan.lines = lines;
    plan.failure = failure;
    plan.incomplete = incomplete;
    plan.secureMode = secureMode;
    plan.authorization = authorization;
    for (const auto& item : items) {
        auto& copied = plan.addItem(item.name);
        const auto name = copied.name;
        copied = item;
        copied.name = name;
        copied.objection = nullptr;
        plan.object(copied, item.objection ? item.objection : "");
    }
    return plan;
}

TWDeletionTarget TWPlan::target(const std::shared_ptr<const TWPlan>& plan, const TWPlannedItem& item)
{
    return { { plan, item.folder == TWNone ? &NoFolder : plan->folders[item.folder].get() }, item.name,
        item.facts.identity == TWFileIdentity() ? nullptr : &item.facts };
}

std::optional<std::uint64_t> TWPlan::bytes(const TWPlannedItem& item, std::optional<std::uint64_t> measured) const
{
    if (item.action != TWPlannedAction::Delete)
        return 0;
    if (wouldDelete(item))
        return measured;
    return item.facts.kind == TWFileKind::Folder ? std::nullopt : std::optional(item.facts.bytes);
}

std::string TWPlan::path(const TWPlannedItem& item) const
{
    return item.folder == TWNone ? std::string(item.name) : TWDeletionTarget{ folders[item.folder], item.name }.path();
}

std::string TWPlan::realPath(const TWPlannedItem& item) const
{
    return item.folder == TWNone ? std::string(item.name)
                                 : TWDeletionTarget{ folders[item.folder], item.name }.realPath();
}
