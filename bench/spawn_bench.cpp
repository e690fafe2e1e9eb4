// The minimum cost of deleting with child processes: spawn_bench FOLDER... runs /bin/rm -rf once for each entry of the
// folders, one after another, in the C locale, and does nothing else. Prints the seconds that the loop took.

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <vector>

int main(int count, char** arguments)
{
    std::vector<std::string> paths;
    for (int i = 1; i < count; ++i)
        for (const auto& entry : std::filesystem::directory_iterator(arguments[i]))
            paths.push_back(entry.path());

    char program[] = "/bin/rm", option[] = "-rf", locale[] = "LC_ALL=C";
    char* const environment[] = { locale, nullptr };
    const auto start = std::chrono::steady_clock::now();
    for (std::string& path : paths) {
        char* const words[] = { program, option, path.data(), nullptr };
        pid_t child;
        int status;
        if (posix_spawn(&child, program, nullptr, nullptr, words, environment) != 0
            || waitpid(child, &status, 0) != child || status != 0)
            return 1;
    }
    std::printf("%.6f\n", std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
}
