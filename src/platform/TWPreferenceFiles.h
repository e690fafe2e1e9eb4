#pragma once

#include "platform/TWFileSystem.h"

#include <cstddef>
#include <string>
#include <string_view>

// Reads and replaces files of other programs. Each file is an entry of a held folder, so that a path that leads
// elsewhere by now redirects nobody; a symbolic link there is an error. Any thread.
class TWPreferenceFiles {
public:
    virtual ~TWPreferenceFiles() = default;

    struct Contents {
        int error = 0; // the errno
        TWFileFacts facts; // when the bytes were read
        std::string bytes;
    };

    // Reads a regular file. The error is EFBIG if the file is longer than the limit, EINVAL if it is not a regular
    // file, and EAGAIN if it kept changing while it was read.
    virtual Contents read(const TWHeldFolder&, const std::string& name, std::size_t limit) const = 0;

    // Reads at most that many bytes from the beginning of a regular file of any length.
    virtual Contents readBeginning(const TWHeldFolder&, const std::string& name, std::size_t length) const = 0;

    struct Replaced {
        int error = 0; // the errno; ESTALE if the file is another one than the one that was read, or has changed
        TWFileFacts facts; // of the new file
    };

    // Replaces a file that was read when it had these facts: writes a temporary file in the same folder, flushes it,
    // renames it over the old one and flushes the folder. The new file has the mode, the owner and the extended
    // attributes of the old one; if they cannot be kept, the file is not replaced. Whatever fails, and if the process
    // is killed, the old or the new file is there, whole.
    virtual Replaced replace(
        const TWHeldFolder&, const std::string& name, const TWFileFacts& seen, std::string_view bytes) const = 0;
};
