#include "cleaners/TWFilesRule.h"
#include "platform/TWBundle.h"
#include "plist_property.h"
#include "settings/TWRecordList.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>

namespace {

// A single file in memory.
class OneFile final : public TWOwnFiles {
public:
    mutable std::string bytes;

    Contents read(const std::string&, std::size_t) const override { return { 0, bytes }; }
    int readPieces(const std::string&, std::size_t, const std::function<bool(std::string_view)>& take) const override
    {
        take(bytes);
        return 0;
    }
    int writeAtomically(const std::string&, std::string_view written) const override
    {
        bytes = written;
        return 0;
    }
    int makeFolders(const std::string&) const override { return 0; }
    bool canOthersRedirect(const std::string&) const override { return false; }
    void removeLeftovers(const std::string&) const override { }
    int keepDamaged(const std::string&, std::size_t, std::string&) const override { return ENOENT; }
};

class NoBundle final : public TWBundle {
public:
    std::string info(const std::string&) const override { return "/folder"; }
    std::string resourcePath(const std::string&) const override { return ""; }
    std::string identifier() const override { return ""; }
};

using List = TWRecordList<TWFilesRule>;

// Checks that every entry is still there, with the same value.
void checkKept(const TWValue& before, const TWValue& after)
{
    for (const auto& [key, value] : before.dictionary()->entries()) {
        const auto* again = after.dictionary()->find(key);
        TWPlistProperty::require(again, "no entry of a rule is lost");
        // Only these may change their form: a boolean may become a number and the reverse.
        const bool mayChange = key == "Active" || key == "WhatToDelete";
        TWPlistProperty::require(mayChange || *again == value, "an entry keeps its value");
    }
}

}

// A list of rules that can be read can be written, and then holds everything that it held before.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size)
{
    const OneFile file;
    const TWPlaces places;
    const NoBundle bundle;
    const TWDataFolder folder(file, places, bundle);
    List list(folder, "List.plist", [](TWListState, const List::Records&) { return List::Records(); });
    file.bytes.assign(reinterpret_cast<const char*>(input), size);
    const auto before = TWPropertyList::read(file.bytes).value;
    const bool readable = list.load() == TWListState::Saved;
    TWPlistProperty::require(readable == list.problem().empty(), "there is either a list or a problem");
    if (!readable)
        return 0;
    const List::Records rules = list.records();
    TWPlistProperty::require(list.write().empty(), "what was read can be written");
    TWPlistProperty::require(list.load() == TWListState::Saved, "what was written can be read");
    TWPlistProperty::require(list.records() == rules, "the rules are the same");
    const auto after = TWPropertyList::read(file.bytes).value;
    for (std::size_t i = 0; i < rules.size(); i++)
        checkKept((*before->array())[i], (*after->array())[i]);
    return 0;
}
