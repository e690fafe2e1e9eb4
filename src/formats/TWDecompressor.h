#pragma once

#include <functional>
#include <memory>
#include <string_view>

// Decompresses a gzip or xz file, piece by piece and in bounded memory. Any thread, but only one at a time.
class TWDecompressor {
public:
    enum class State {
        Going, // the next piece is wanted
        Stopped, // take returned false
        Complete, // everything is decompressed
        EndsEarly, // the file ends in the middle of the compressed data
        Damaged, // or followed by data that is not compressed
        NeedsMemory, // the file asks for more memory than a small tool may use
    };

    // Gets what was decompressed, in pieces of at most 64 KB, also before an error. Returns false to stop.
    using Take = std::function<bool(std::string_view)>;

    // Knows the format by the first bytes of the file, whatever its name; nullptr if it is not one of these.
    static std::unique_ptr<TWDecompressor> forFile(std::string_view beginning);

    virtual ~TWDecompressor() = default;

    virtual const char* formatName() const = 0;

    // Decompresses the next piece of the file; "" stands for its end. Must not be called again after a state other than
    // Going.
    virtual State feed(std::string_view piece, const Take&) = 0;
};
