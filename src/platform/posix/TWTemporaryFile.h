#pragma once

#include "platform/posix/TWDescriptor.h"

#include <string>
#include <string_view>

// The temporary file of one write. Its name follows from the name of the file that it is going to replace, so what a
// killed write left behind, which may hold private words, is found and removed by the next write. It is locked while it
// is written: a leftover that somebody holds is no leftover.
class TWTemporaryFile final {
public:
    // The file to replace, with no link at its end.
    explicit TWTemporaryFile(std::string target);
    TWTemporaryFile(const TWTemporaryFile&) = delete;

    // Removes the file unless it has replaced the target.
    ~TWTemporaryFile();

    // Creates the file, empty and with mode 0600. Returns 0 or the errno; EBUSY if somebody else is writing it.
    int create();

    int descriptor() const { return file_.get(); }

    // Renames the file over the target. Returns 0 or the errno.
    int replaceTarget();

    // Whether a file's name is one of ours.
    static bool isName(std::string_view name);

    // Removes a plain file, unless somebody holds it. Returns 0, also if it has gone meanwhile, or the errno.
    static int removeLeftover(const std::string& path);

private:
    const std::string target_;
    const std::string path_;
    TWDescriptor file_;
    bool exists_ = false;
};
