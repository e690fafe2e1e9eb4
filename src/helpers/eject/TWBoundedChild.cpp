#include "TWBoundedChild.h"

#include "platform/posix/TWDescriptor.h"
#include "support/TWText.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>

namespace {

constexpr std::size_t KeptOutput = 4096;
constexpr int StatusOfMissing = 127;
constexpr int StatusOfLost = SIGKILL; // of a child that cannot be waited for; must not count as a success
constexpr TWDeadline::Duration Patience{ 200 }; // after SIGKILL

[[noreturn]] void beChild(const std::function<int()>& work, int output, pid_t parent)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL); // lost when a program with other rights takes over, which is harmless
    const int input = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (getppid() != parent || dup2(input, STDIN_FILENO) < 0 || dup2(output, STDOUT_FILENO) < 0
        || dup2(output, STDERR_FILENO) < 0)
        _exit(StatusOfMissing);
    _exit(work());
}

// False if the time was over before all who could write had ended.
bool drain(int output, const TWDeadline& deadline, TWDeadline::Duration limit, std::string& kept)
{
    char buffer[4096];
    pollfd readable{ output, POLLIN, 0 };
    while (!deadline.isOver()) {
        if (poll(&readable, 1, static_cast<int>(deadline.left(limit).count())) <= 0)
            continue;
        const auto length = read(output, buffer, sizeof buffer);
        if (length <= 0)
            return true;
        kept.append(buffer, std::min(static_cast<std::size_t>(length), KeptOutput - kept.size()));
    }
    return false;
}

// False if the process has not ended by then.
bool collect(pid_t process, const TWDeadline& deadline, int& status)
{
    while (waitpid(process, &status, WNOHANG) == 0) {
        if (deadline.isOver())
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

std::string firstLine(const std::string& text)
{
    const auto lines = TWText::split(text, '\n');
    return lines.empty() ? "" : lines.front();
}

}

TWChildEnd TWRunInChild(const std::function<int()>& work, TWDeadline::Duration limit)
{
    TWChildEnd end;
    int ends[2] = { -1, -1 };
    const pid_t parent = getpid();
    const pid_t process = pipe2(ends, O_CLOEXEC) == 0 ? fork() : -1;
    const TWDescriptor output(ends[0]);
    TWDescriptor input(ends[1]);
    if (process == 0)
        beChild(work, input.get(), parent);
    input.close();
    if (process < 0)
        return end;
    const TWDeadline deadline(limit);
    int status = StatusOfLost;
    end.isInTime = drain(output.get(), deadline, limit, end.output) && collect(process, deadline, status);
    if (end.isInTime) {
        end.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return end;
    }
    kill(process, SIGKILL);
    collect(process, TWDeadline(Patience), status);
    return end;
}

std::string TWRunTool(const char* name, const std::vector<std::string>& arguments, TWDeadline::Duration limit)
{
    const std::string places[]
        = { std::string("/usr/bin/") + name, std::string("/bin/") + name, std::string("/run/wrappers/bin/") + name };
    std::vector<char*> words{ const_cast<char*>(name) };
    for (const auto& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    char locale[] = "LC_ALL=C";
    char search[] = "PATH=/usr/bin:/bin:/usr/sbin:/sbin";
    char* const environment[] = { locale, search, nullptr };
    const auto end = TWRunInChild(
        [&] {
            for (const auto& place : places)
                execve(place.c_str(), words.data(), environment);
            return StatusOfMissing;
        },
        limit);
    if (!end.isInTime)
        return "it did not answer in time";
    if (end.status == StatusOfMissing)
        return "the program is not installed";
    const auto text = firstLine(end.output);
    return end.status == 0 || !text.empty() ? text : "it failed with status " + std::to_string(end.status);
}
