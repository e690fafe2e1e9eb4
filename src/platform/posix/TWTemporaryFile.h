#pragma once

#include "platform/posix/TWDescriptor.h"

#include <string>
#include <string_view>

// The temporary file of one write. Its name is derived from the name of the file that it will replace, so the next
// write finds and removes what a killed write has left behind, which may hold private words. It is locked while it is
// written, so that a file in use is not mistaken for a leftover.
class TWTemporaryFile final {
public:
    // The path of the file to replace; it must not be a symbolic link.
    explicit TWTemporaryFile(std::string target);
    TWTemporaryFile(const TWTemporaryFile&) = delete;

    // Removes the file unless it has replaced the target.
    ~TWTemporaryFile();

    // Creates the file, empty and with mode 0600. Returns 0 or the errno: EBUSY if another writer keeps it for long.
    int create();

    int descriptor() const { return file_.get(); }

    // Renames the file over the target. Returns 0 or the errno.
    int replaceTarget();

    // True if a file name has the form of a temporary file's name.
    static bool isName(std::string_view name);

    // Removes a regular file unless it is locked. Returns 0, also if the file is gone already, or the errno: EBUSY if
    // it is locked.
    static int removeLeftover(const std::string& path);

private:
    int createOnce();

    const std::string target_;
    const std::string path_;
    TWDescriptor file_;
    bool exists_ = false;
};
