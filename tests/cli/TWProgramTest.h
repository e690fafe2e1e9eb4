#pragma once

#include "builders/TWTemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fcntl.h>
#include <regex>
#include <signal.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

struct TWProgramResult {
    int status = -1;
    std::string out, err;
};

// Runs the real program as a child in a throwaway home.
class TWProgramTest : public testing::Test {
protected:
    using Words = std::vector<std::string>;
    using Lines = std::vector<std::string>;

    struct Child {
        pid_t process;
        std::string output; // a file's name, and with ".err" that of the other
    };

    Child start(const Words& words)
    {
        const Child child {fork(), "output." + std::to_string(++children_)};
        if (child.process != 0)
            return child;
        Words environment {"HOME=" + home_, "PATH=/usr/bin:/bin", "TMPDIR=" + folder_.path()};
        auto all = words;
        all.insert(all.begin(), TIDEWELL_PROGRAM);
        redirect(STDIN_FILENO, "/dev/null", O_RDONLY);
        redirect(STDOUT_FILENO, folder_.path(child.output), O_WRONLY | O_CREAT);
        redirect(STDERR_FILENO, folder_.path(child.output + ".err"), O_WRONLY | O_CREAT);
        execve(TIDEWELL_PROGRAM, pointers(all).data(), pointers(environment).data());
        _exit(127);
    }

    TWProgramResult wait(const Child& child) const
    {
        int status = 0;
        waitpid(child.process, &status, 0);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + status, folder_.read(child.output), folder_.read(child.output + ".err")};
    }

    TWProgramResult run(const Words& words) { return wait(start(words)); }

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

    // In the home's Trash, with its record.
    void trash(const std::string& name, const std::string& home = "home")
    {
        folder_.write(home + Trash + "/files/" + name, "x");
        folder_.write(home + Trash + "/info/" + name + ".trashinfo", "[Trash Info]\n");
    }

    static bool machineMayBeChanged() { return std::getenv("TIDEWELL_TEST_MACHINE") && geteuid() == 0; }

    static constexpr auto Trash = "/.local/share/Trash";
    static constexpr auto Data = "home/.local/share/Tidewell/";
    static constexpr auto Settings = "home/.config/Tidewell/Tidewell.conf";

    TWTemporaryFolder folder_;
    std::string home_ = folder_.folder("home");

private:
    static void redirect(int descriptor, const std::string& path, int flags) { dup2(open(path.c_str(), flags, 0600), descriptor); }

    static std::vector<char*> pointers(Words& words)
    {
        std::vector<char*> result;
        for (auto& word : words)
            result.push_back(word.data());
        result.push_back(nullptr);
        return result;
    }

    int children_ = 0;
};
