#include "formats/TWBinaryPropertyListScanner.h"

#include "formats/TWFileFormats.h"
#include "plist/TWBinaryObjectWriter.h"

#include <algorithm>

namespace {

constexpr std::string_view Damaged = "a part of it is missing or wrong";
constexpr std::string_view Overlapping = "parts of it overlap";
constexpr std::string_view NoDictionary = "its root is not a dictionary";

}

TWBinaryPropertyListScanner::TWBinaryPropertyListScanner(std::string_view bytes, TWEntryCuts& cuts)
    : bytes_(bytes)
    , cuts_(cuts)
    , objects_(bytes)
{
}

bool TWBinaryPropertyListScanner::scan(std::string& problem)
{
    const bool valid = countEntries();
    const auto isPositive = [](std::size_t count) { return count > 0; };
    if (valid && std::any_of(cuts_.counts().begin(), cuts_.counts().end(), isPositive)) {
        cuts_.setRewritten(rewrite());
    }
    problem = problem_;
    return problem_.empty();
}

bool TWBinaryPropertyListScanner::fail(std::string_view problem)
{
    problem_ = problem;
    return false;
}

// The first walk sees the whole list. Each further one counts the entries of one more key and passes them by, and the
// last one reaches what remains.
bool TWBinaryPropertyListScanner::countEntries()
{
    const auto root = objects_.at(objects_.top());
    if (!root)
        return fail(Damaged);
    if (root->type != TWBinaryObjects::Dictionary)
        return fail(NoDictionary);
    for (Key keys = 0; keys <= cuts_.counts().size(); keys++) {
        if (!walk(keys))
            return false;
    }
    return true;
}

// Works level by level, without recursion.
bool TWBinaryPropertyListScanner::walk(Key keys)
{
    isReached_.assign(objects_.count(), false);
    reached_.clear();
    reachedBytes_ = 0;
    std::size_t depth = 0;
    std::size_t endOfLevel = 1;
    if (!reach(objects_.top()))
        return false;
    for (std::size_t next = 0; next < reached_.size(); next++) {
        if (next == endOfLevel) {
            endOfLevel = reached_.size();
            if (++depth > TWFileFormats::MaximumDepth)
                return fail(TWFileFormats::TooDeep);
        }
        if (!visit(reached_[next], keys))
            return false;
    }
    return true;
}

bool TWBinaryPropertyListScanner::reach(std::uint64_t number)
{
    if (number >= objects_.count())
        return fail(Damaged);
    if (!isReached_[number])
        reached_.push_back(static_cast<Number>(number));
    isReached_[number] = true;
    return true;
}

bool TWBinaryPropertyListScanner::visit(std::uint64_t number, Key keys)
{
    const auto object = objects_.at(number);
    if (!object)
        return fail(Damaged);
    // Objects that overlap could make the rewritten list far longer than the file.
    reachedBytes_ += object->bytes.size();
    if (reachedBytes_ > bytes_.size())
        return fail(Overlapping);
    if (object->type == TWBinaryObjects::Dictionary)
        return visitEntries(*object, keys);
    for (std::size_t i = 0; object->isContainer() && i < object->count; i++) {
        if (!reach(objects_.reference(*object, i)))
            return false;
    }
    return true;
}

bool TWBinaryPropertyListScanner::visitEntries(const Object& dictionary, Key keys)
{
    for (std::size_t i = 0; i < dictionary.count; i++) {
        const std::uint64_t name = objects_.reference(dictionary, i);
        const auto found = keyNamed(name);
        if (!found)
            return fail(Damaged);
        const bool isGone = *found < keys;
        if (isGone && *found == keys - 1)
            cuts_.count(*found);
        if (!isGone && (!reach(name) || !reach(objects_.reference(dictionary, dictionary.count + i))))
            return false;
    }
    return true;
}

// Nothing if the object is no text.
std::optional<TWEntryCuts::Key> TWBinaryPropertyListScanner::keyNamed(std::uint64_t number) const
{
    const auto object = objects_.at(number);
    const auto text = object ? TWBinaryObjects::text(*object) : std::nullopt;
    return text ? std::optional(cuts_.find(*text)) : std::nullopt;
}

// The objects that remain, in the order of the file.
std::string TWBinaryPropertyListScanner::rewrite()
{
    std::sort(reached_.begin(), reached_.end());
    newNumbers_.resize(objects_.count());
    for (std::size_t i = 0; i < reached_.size(); i++)
        newNumbers_[reached_[i]] = static_cast<Number>(i);
    TWBinaryObjectWriter writer(objects_.beginning(), reached_.size());
    for (const Number number : reached_) {
        writer.beginObject();
        writeObject(*objects_.at(number), writer);
    }
    writer.addTable(newNumbers_[objects_.top()]);
    return std::move(writer.output());
}

void TWBinaryPropertyListScanner::writeObject(const Object& object, TWBinaryObjectWriter& writer) const
{
    if (!object.isContainer()) {
        writer.addBytes(object.bytes);
        return;
    }
    const bool isDictionary = object.type == TWBinaryObjects::Dictionary;
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < object.count; i++) {
        if (!isDictionary || keyNamed(objects_.reference(object, i)) == TWEntryCuts::NoKey)
            places.push_back(i);
    }
    writer.addMarker(object.type, places.size());
    for (const std::size_t place : places)
        writer.addReference(newNumbers_[objects_.reference(object, place)]);
    for (std::size_t i = 0; isDictionary && i < places.size(); i++)
        writer.addReference(newNumbers_[objects_.reference(object, object.count + places[i])]);
}
