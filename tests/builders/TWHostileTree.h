#pragma once

#include "builders/TWTemporaryFolder.h"

#include <algorithm>
#include <sys/stat.h>
#include <vector>

// A folder with everything in it that has ever led a deletion astray, and beside it a canary folder at which all of it
// points and which nothing may touch.
class TWHostileTree final {
public:
    explicit TWHostileTree(const TWTemporaryFolder& root)
        : root_(root)
    {
        root.write("canary/file", "canary");
        root.write("canary/folder/inside", "also canary");
        root.link("canary/folder/link", "../file");
        makeDeepPath();
        makeLinks();
        for (const auto& name : { std::string("invalid \xFF\xC3( UTF-8"), std::string("new\nline"), std::string("-rf"),
                 std::string("--no-preserve-root"), std::string(" $(touch canary); 'quoted\" *"), std::string(255, 'n'),
                 std::string("unreadable/file"), std::string("read-only/file") })
            root.write("hostile/" + name, "x");
        mkfifo(root.path("hostile/fifo").c_str(), 0600);
        mknod(root.path("hostile/socket").c_str(), S_IFSOCK | 0600, 0);
        chmod(root.path("hostile/unreadable").c_str(), 0);
        chmod(root.path("hostile/read-only").c_str(), 0555);
    }

    std::string path() const { return root_.path("hostile"); }

    // Names, kinds and contents of the canary.
    std::vector<std::string> canaryDigest() const
    {
        std::vector<std::string> lines;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root_.path("canary"))) {
            const auto name = entry.path().string().substr(root_.path().size() + 1);
            const auto target = entry.is_symlink() ? std::filesystem::read_symlink(entry).string() : "";
            lines.push_back(name + (entry.is_directory() ? "/" : " -> " + target + ": " + root_.read(name)));
        }
        std::sort(lines.begin(), lines.end());
        return lines;
    }

private:
    void makeLinks() const
    {
        root_.link("hostile/link-to-file", "../canary/file");
        root_.link("hostile/link-to-folder", "../canary/folder");
        root_.link("hostile/link-with-slash", root_.path("canary/folder"));
        root_.link("hostile/dangling", "nowhere");
        root_.link("hostile/loop", "loop");
        root_.link("hostile/folder/up", "..");
        root_.link("hostile/folder/link-to-canary", root_.path("canary"));
        std::filesystem::create_hard_link(root_.path("canary/file"), root_.path("hostile/hard-link"));
    }

    // Longer than any path that a system call takes, hence made from the inside out.
    void makeDeepPath() const
    {
        std::filesystem::rename(root_.folder("made"), root_.folder("hostile") + "/deep");
        for (int level = 0; level < 100; ++level) {
            std::filesystem::rename(root_.path("hostile/deep"), root_.folder("made") + "/" + std::string(200, 'd'));
            std::filesystem::rename(root_.path("made"), root_.path("hostile/deep"));
        }
    }

    const TWTemporaryFolder& root_;
};
