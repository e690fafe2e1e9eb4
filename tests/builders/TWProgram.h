#pragma once

#include "builders/TWPrivateMounts.h"
#include "builders/TWTemporaryFolder.h"

#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

struct TWProgramResult {
    int status = -1; // 1000 and more for one that a signal ended
    std::string out, err;
};

// A program as a child of the test: it gets only the given environment and the options of the thread sanitizer, and
// writes to two files in the folder.
class TWProgram final {
public:
    using Words = std::vector<std::string>;

    static constexpr int CannotPrepare = 77;

    // prepare runs in the child before the program; false ends the child with CannotPrepare.
    TWProgram(
        const TWTemporaryFolder& folder, Words command, Words environment = {},
        const std::function<bool()>& prepare = [] { return true; })
        : folder_(folder)
        , process_(fork())
    {
        if (process_ != 0)
            return;
        const auto name = outputName(getpid());
        redirect(STDIN_FILENO, "/dev/null", O_RDONLY);
        redirect(STDOUT_FILENO, folder.path(name), O_WRONLY | O_CREAT);
        redirect(STDERR_FILENO, folder.path(name + ".err"), O_WRONLY | O_CREAT);
        if (const char* options = std::getenv("TSAN_OPTIONS"))
            environment.push_back(std::string("TSAN_OPTIONS=") + options);
        if (prepare())
            execve(command[0].c_str(), pointers(command).data(), pointers(environment).data());
        _exit(CannotPrepare);
    }

    pid_t process() const { return process_; }
    std::string out() const { return folder_.read(outputName(process_)); } // so far

    TWProgramResult wait() const
    {
        int status = 0;
        waitpid(process_, &status, 0);
        return { WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + status, out(),
            folder_.read(outputName(process_) + ".err") };
    }

    // For prepare: only the child sees the mount.
    static bool mountPrivately(const std::string& what, const std::string& where)
    {
        return TWPrivateMounts::begin() && TWPrivateMounts::bind(what, where);
    }
    static bool limit(__rlimit_resource resource, rlim_t value)
    {
        const rlimit both{ value, value };
        return setrlimit(resource, &both) == 0;
    }

private:
    static std::string outputName(pid_t process) { return "output." + std::to_string(process); }
    static void redirect(int descriptor, const std::string& path, int flags)
    {
        dup2(open(path.c_str(), flags | O_CLOEXEC, 0600), descriptor);
    }
    static std::vector<char*> pointers(Words& words)
    {
        std::vector<char*> result;
        for (auto& word : words)
            result.push_back(word.data());
        result.push_back(nullptr);
        return result;
    }

    const TWTemporaryFolder& folder_;
    const pid_t process_;
};
