#pragma once

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

// A throwaway folder below /tmp, removed with all that is in it; links in it are never followed.
class TWTemporaryFolder final {
public:
    explicit TWTemporaryFolder(std::string made = "/tmp/tidewell-test-XXXXXX")
    {
        if (!mkdtemp(made.data()))
            std::abort();
        path_ = std::filesystem::canonical(made).string();
    }
    ~TWTemporaryFolder()
    {
        // The tools manage trees of any depth; folders that a test locked are unlocked first.
        const std::string quoted = "'" + path_ + "'";
        [[maybe_unused]] const int status = std::system(
            ("rm -rf " + quoted + " 2>/dev/null || { chmod -R u+rwx " + quoted + "; rm -rf " + quoted + "; }").c_str());
    }
    TWTemporaryFolder(const TWTemporaryFolder&) = delete;
    TWTemporaryFolder& operator=(const TWTemporaryFolder&) = delete;

    const std::string& path() const { return path_; }
    std::string path(const std::string& name) const { return path_ + "/" + name; }

    // Each makes the folders above and returns the full path.
    std::string write(const std::string& name, const std::string& text) const
    {
        std::ofstream(made(name), std::ios::binary) << text;
        return path(name);
    }
    std::string folder(const std::string& name) const
    {
        std::filesystem::create_directories(path(name));
        return path(name);
    }
    std::string link(const std::string& name, const std::string& target) const
    {
        std::filesystem::create_symlink(target, made(name));
        return path(name);
    }

    // A chain of folders "down", as deep as is wanted, with a second folder "side" in every nth of them.
    std::string deepFolder(const std::string& name, int levels, int nth) const
    {
        int deepest = open(folder(name).c_str(), O_PATH | O_CLOEXEC);
        for (int level = 0; level < levels; ++level) {
            mkdirat(deepest, "down", 0700);
            if (level % nth == 0)
                mkdirat(deepest, "side", 0700);
            const int next = openat(deepest, "down", O_PATH | O_CLOEXEC);
            close(std::exchange(deepest, next));
        }
        close(deepest);
        return path(name);
    }

    // A dangling link exists.
    bool exists(const std::string& name) const
    {
        return std::filesystem::exists(std::filesystem::symlink_status(path(name)));
    }
    std::string read(const std::string& name) const
    {
        std::ifstream file(path(name), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

private:
    // The full path, with all folders above it.
    std::string made(const std::string& name) const
    {
        std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
        return path(name);
    }

    std::string path_;
};
