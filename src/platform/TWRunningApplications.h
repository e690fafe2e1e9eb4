#pragma once

#include <set>
#include <string>
#include <string_view>

// What this user was running at one moment. A value: any thread may have a copy.
class TWRunningApplications final {
public:
    // The untranslated name of an application of which a process runs. "" is ignored.
    void addName(const std::string& name);

    // The file name of a program that runs, or of the script that an interpreter runs. "" is ignored.
    void addProgram(std::string_view fileName);

    // Ignores the case of ASCII letters.
    bool runsProgram(std::string_view fileName) const;

    // Whether this, the name that a rule shows, is one of the names or, as in runsProgram(), one of the programs.
    bool runs(std::string_view source) const;

private:
    std::set<std::string, std::less<>> names_;
    std::set<std::string, std::less<>> programs_; // in lower case
};
