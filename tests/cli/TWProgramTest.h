#pragma once

#include "builders/TWProgram.h"

#include <gtest/gtest.h>

#include <regex>

// Runs the real program as a child in a throwaway home.
class TWProgramTest : public testing::Test {
protected:
    using Words = TWProgram::Words;
    using Lines = std::vector<std::string>;

    TWProgram start(
        Words words, const std::function<bool()>& prepare = [] { return true; }) const
    {
        words.insert(words.begin(), program_);
        return { folder_, words,
            { "HOME=" + home_, "PATH=/usr/bin:/bin", "TMPDIR=" + folder_.path(), "QT_QPA_PLATFORM=offscreen" },
            prepare };
    }
    TWProgramResult run(const Words& words) const { return start(words).wait(); }

    // What was printed, with dates and the throwaway folder's name replaced.
    Lines lines(const std::string& text) const
    {
        auto shown = std::regex_replace(text, std::regex(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d \+0000)"), "DATE");
        shown = std::regex_replace(shown, std::regex(folder_.path()), "ROOT");
        Lines result;
        std::istringstream stream(shown);
        for (std::string line; std::getline(stream, line);)
            result.push_back(line);
        return result;
    }

    // With one line.
    void expectRefused(const TWProgramResult& result, const std::string& shown, int status = 2) const
    {
        EXPECT_EQ(result.status, status) << shown << ": " << result.out << result.err;
        EXPECT_TRUE(result.out.empty() && lines(result.err).size() == 1) << shown << ": " << result.out << result.err;
    }

    // In the home's Trash, with its record.
    void trash(const std::string& name, const std::string& home = "home")
    {
        folder_.write(home + Trash + "/files/" + name, "x");
        folder_.write(home + Trash + "/info/" + name + ".trashinfo", "[Trash Info]\n");
    }

    static constexpr auto Trash = "/.local/share/Trash";
    static constexpr auto Data = "home/.local/share/Tidewell/";
    static constexpr auto Settings = "home/.config/Tidewell/Tidewell.plist";

    TWTemporaryFolder folder_;
    std::string program_ = TIDEWELL_PROGRAM;
    std::string home_ = folder_.folder("home");
};
