#pragma once

#include "builders/TWTemporaryFolder.h"

#include <array>
#include <random>

// Changes something at random in the tree "root" of a folder: makes, removes and renames files, folders, links and
// whole trees. Uses few names, so that they come again, and some that
// begin alike.
class TWDisorder final {
public:
    TWDisorder(const TWTemporaryFolder& folder, unsigned seed)
        : folder_(folder)
        , random_(seed)
    {
    }
    void change()
    {
        const auto path = randomPath();
        std::error_code error;
        switch (below(8)) {
        case 0:
        case 1:
            std::filesystem::create_directories(path, error);
            break;
        case 2:
            std::ofstream(path) << "x";
            break;
        case 3:
            std::filesystem::remove_all(path, error);
            break;
        case 4:
            std::filesystem::create_symlink(randomPath(), path, error);
            break;
        case 5: // a whole tree comes from elsewhere
            std::filesystem::create_directories(folder_.path("outside/b/c"), error);
            std::ofstream(folder_.path("outside/b/d")) << "x";
            std::filesystem::rename(folder_.path("outside"), path, error);
            break;
        case 6: // or goes
            std::filesystem::remove_all(folder_.path("away"), error);
            std::filesystem::rename(path, folder_.path("away"), error);
            break;
        default:
            std::filesystem::rename(path, randomPath(), error);
        }
    }

    // A number from 0 to limit - 1.
    unsigned below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }

private:
    std::string randomPath()
    {
        auto path = folder_.path("root");
        for (auto depth = 1 + below(4); depth > 0; --depth)
            path.append("/").append(std::array{ "a", "a-", "ab", "b" }.at(below(4)));
        return path;
    }

    const TWTemporaryFolder& folder_;
    std::mt19937 random_;
};
