#include "platform/linux/TWLinuxProgram.h"

#include "support/TWPath.h"

#include <glib.h>

#include <algorithm>
#include <iterator>
#include <memory>

namespace {

constexpr std::size_t LongestCommand = 4096; // in bytes; splitting takes more than linear time

constexpr int MostLaunchers = 16; // one behind the other

// Start the program that follows their options.
constexpr std::string_view Prefixes[]
    = { "env", "exec", "nice", "nohup", "pkexec", "setsid", "dbus-launch", "dbus-run-session" };
constexpr std::string_view OptionsWithValue[] = { "-u", "-C", "-n", "-a", "--user", "--unset", "--chdir" };

constexpr std::string_view Shells[] = { "sh", "bash", "dash", "zsh", "ksh", "fish" };
constexpr std::string_view Interpreters[] = { "python", "perl", "ruby", "node", "nodejs", "gjs", "gjs-console", "lua",
    "tclsh", "wish", "guile", "php", "mono", "java" };

constexpr std::string_view Endings[] = { ".bin", "-bin", ".real", ".sh", ".py", ".pl", ".rb", ".js", ".jar", ".exe" };

template <typename Names>
bool contains(const Names& names, std::string_view name)
{
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

// Interpreters carry their version, as in "python3.11".
template <typename Names>
bool containsVersionOf(const Names& names, std::string_view fileName)
{
    const auto end = fileName.find_last_not_of("0123456789.");
    return end != std::string_view::npos && (contains(names, fileName.substr(0, end + 1)) || contains(names, fileName));
}

bool isVariable(std::string_view word)
{
    const auto end = word.find('=');
    return end != 0 && end != std::string_view::npos && word.find_first_of("/-") > end;
}

// Removes the first word and its options, of which some have their value in the next word.
void dropPrefix(std::vector<std::string>& words)
{
    auto word = words.begin() + 1;
    while (word != words.end() && word->starts_with('-'))
        word += contains(OptionsWithValue, *word) && word + 1 != words.end() ? 2 : 1;
    words.erase(words.begin(), word);
}

// "cd FOLDER && PROGRAM" starts PROGRAM.
void dropChangeOfFolder(std::vector<std::string>& words)
{
    if (words.empty() || words.front() != "cd")
        return;
    const auto end = std::find_if(
        words.begin(), words.end(), [](const std::string& word) { return word == "&&" || word.ends_with(';'); });
    words.erase(words.begin(), end == words.end() ? end : end + 1);
}

// The text after "-c", or after options that hold a c, as "-lc"; "" if there is none.
std::string shellCommand(const std::vector<std::string>& words)
{
    for (std::size_t i = 1; i + 1 < words.size() && words[i].starts_with('-'); ++i) {
        if (!words[i].starts_with("--") && words[i].find('c') != std::string::npos)
            return words[i + 1];
    }
    return "";
}

// Without a program of its own choice, "flatpak run" and "snap run" start one that has the application's name.
std::string packagedProgram(const std::vector<std::string>& words)
{
    constexpr std::string_view Choice = "--command=";
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (words[i].starts_with(Choice))
            return words[i].substr(Choice.size());
        if (!words[i].starts_with('-') && words[i] != "run")
            return words[i].substr(words[i].rfind('.') + 1);
    }
    return words.front();
}

}

std::vector<std::string> TWLinuxProgram::words(const std::string& command)
{
    char** split = nullptr;
    if (command.size() > LongestCommand || !g_shell_parse_argv(command.c_str(), nullptr, &split, nullptr))
        return {};
    const std::unique_ptr<char*, void (*)(char**)> owner(split, g_strfreev);
    return { split, split + g_strv_length(split) };
}

std::string TWLinuxProgram::startedBy(std::vector<std::string> words)
{
    for (int launchers = 0; launchers < MostLaunchers; ++launchers) {
        words.erase(words.begin(), std::find_if_not(words.begin(), words.end(), isVariable));
        if (words.empty())
            return "";
        const std::string name(TWPath::lastComponent(words.front()));
        if (name == "flatpak" || name == "snap")
            return packagedProgram(words);
        const auto command = containsVersionOf(Shells, name) ? shellCommand(words) : "";
        if (!command.empty()) {
            words = TWLinuxProgram::words(command);
            dropChangeOfFolder(words);
        } else if (contains(Prefixes, name)) {
            dropPrefix(words);
        } else {
            const auto run = script(name, words);
            return run.empty() ? words.front() : run;
        }
    }
    return "";
}

std::string TWLinuxProgram::script(std::string_view interpreter, const std::vector<std::string>& words)
{
    const bool isShell = containsVersionOf(Shells, interpreter);
    if (isShell ? !shellCommand(words).empty() : !containsVersionOf(Interpreters, interpreter))
        return "";
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (!isShell && (words[i] == "-c" || words[i] == "-e")) // the program itself follows
            return "";
        if (!words[i].empty() && !words[i].starts_with('-') && !words[i].starts_with('%'))
            return words[i];
    }
    return "";
}

std::optional<std::vector<std::string>> TWLinuxProgram::arguments(const std::vector<std::string>& words)
{
    const auto program = startedBy(words);
    const auto found = std::find(words.begin(), words.end(), program);
    if (found == words.end())
        return std::nullopt;
    std::vector<std::string> arguments(found + 1, words.end());
    std::erase_if(arguments, [](const std::string& word) { return word.size() == 2 && word.front() == '%'; });
    return arguments;
}

bool TWLinuxProgram::isShell(std::string_view fileName)
{
    return containsVersionOf(Shells, fileName);
}

bool TWLinuxProgram::isLauncher(std::string_view fileName)
{
    return contains(Prefixes, fileName) || isShell(fileName) || containsVersionOf(Interpreters, fileName)
        || fileName == "flatpak" || fileName == "snap" || fileName == "busybox";
}

std::string_view TWLinuxProgram::stem(std::string_view fileName)
{
    for (const auto ending : Endings) {
        if (fileName.size() > ending.size() && fileName.ends_with(ending))
            return fileName.substr(0, fileName.size() - ending.size());
    }
    return fileName;
}
