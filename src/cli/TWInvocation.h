#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct TWCommandRow;

// A parsed command line: the command, the values of its arguments and the options that every command has.
struct TWInvocation {
    const TWCommandRow* row = nullptr; // never nullptr after parsing
    std::map<std::string, std::vector<std::string>, std::less<>> values; // values of the given arguments, by name
    std::optional<std::string> sandbox;
    bool json = false;

    bool has(std::string_view name) const { return values.find(name) != values.end(); }

    // Empty if the argument was not given.
    std::vector<std::string> texts(std::string_view name) const
    {
        const auto found = values.find(name);
        return found == values.end() ? std::vector<std::string>() : found->second;
    }
    std::string text(std::string_view name) const
    {
        const auto given = texts(name);
        return given.empty() ? std::string() : given.front();
    }
};
