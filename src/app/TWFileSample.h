#pragma once

#include "platform/TWFileSystem.h"
#include "platform/TWRunLoop.h"

#include <functional>
#include <string>

// What is at a path, as far as a preview shows it. Its texts can do no harm when they are displayed: see TWByteText.
struct TWFileSample {
    enum class Kind { Gone, Unreadable, Folder, Link, Other, Empty, Text, Binary, Picture };

    Kind kind = Kind::Unreadable;
    int error = 0; // the errno, if it is Unreadable
    TWFileFacts facts; // not if it is Gone
    std::string compression; // of a Text or Binary: "gzip", "xz" or ""
    std::string text; // of a Text or Binary, in lines; of a Link, where it leads
    std::string notice; // sentences: what is not shown and what went wrong; "" if there is nothing to say
};

// Looks at a path and holds at most 2 MB of it at a time. Opens only regular files and follows no symbolic link.
// Decompresses what is compressed, whatever its name. Any thread, which may be busy for a second. What is returned
// after a cancellation means nothing.
namespace TWFileSampler {

// Gets the bytes of a picture in a common format. Returns false if it cannot show them; then the sample is a Binary.
using TakePicture = std::function<bool(const std::string& bytes)>;

TWFileSample sample(const TWFileSystem&, const std::string& path, const TakePicture&, const TWCancellation&);

// The same for a file that is open.
TWFileSample sample(const TWOpenFile&, const TakePicture&, const TWCancellation&);

}
