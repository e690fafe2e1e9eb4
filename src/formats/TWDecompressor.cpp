#include "formats/TWDecompressor.h"

#include <lzma.h>
#include <zlib.h>

#include <cstddef>
#include <cstdint>

namespace {

using State = TWDecompressor::State;

constexpr std::string_view GzipBeginning("\x1F\x8B", 2);
constexpr std::string_view XzBeginning("\xFD"
                                       "7zXZ\0",
    6);

constexpr int GzipWindow = 15 + 16; // the largest window; 16 stands for the format gzip
constexpr std::uint64_t XzMemory = std::uint64_t{ 80 } << 20; // in bytes; `xz -9` makes files that need 65 MB
constexpr std::size_t OutputSize = std::size_t{ 64 } * 1024;

// A gzip file may consist of several members, of which the last may be padded with zeros.
class GzipDecompressor final : public TWDecompressor {
public:
    GzipDecompressor() { usable_ = inflateInit2(&stream_, GzipWindow) == Z_OK; }
    ~GzipDecompressor() override { inflateEnd(&stream_); }
    GzipDecompressor(const GzipDecompressor&) = delete;
    GzipDecompressor& operator=(const GzipDecompressor&) = delete;

    const char* formatName() const override { return "gzip"; }

    State feed(std::string_view piece, const Take& take) override
    {
        if (!usable_)
            return State::NeedsMemory;
        if (piece.empty())
            return betweenMembers_ ? State::Complete : State::EndsEarly;
        stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(piece.data()));
        stream_.avail_in = static_cast<uInt>(piece.size());
        while (stream_.avail_in > 0) {
            const auto state = betweenMembers_ ? beginMember() : inflateMember(take);
            if (state != State::Going)
                return state;
        }
        return State::Going;
    }

private:
    State beginMember()
    {
        if (*stream_.next_in == 0) {
            ++stream_.next_in;
            --stream_.avail_in;
            return State::Going;
        }
        betweenMembers_ = false;
        return inflateReset(&stream_) == Z_OK ? State::Going : State::Damaged;
    }

    // Uses the piece up, or ends with its member.
    State inflateMember(const Take& take)
    {
        int result = Z_OK;
        do {
            stream_.next_out = reinterpret_cast<Bytef*>(output_);
            stream_.avail_out = OutputSize;
            result = inflate(&stream_, Z_NO_FLUSH);
            if (!take({ output_, OutputSize - stream_.avail_out }))
                return State::Stopped;
        } while (result == Z_OK && (stream_.avail_in > 0 || stream_.avail_out == 0));
        betweenMembers_ = result == Z_STREAM_END;
        if (result == Z_MEM_ERROR)
            return State::NeedsMemory;
        return betweenMembers_ || result == Z_OK || result == Z_BUF_ERROR ? State::Going : State::Damaged;
    }

    z_stream stream_{};
    bool usable_ = false;
    bool betweenMembers_ = false;
    char output_[OutputSize];
};

class XzDecompressor final : public TWDecompressor {
public:
    XzDecompressor() { usable_ = lzma_stream_decoder(&stream_, XzMemory, LZMA_CONCATENATED) == LZMA_OK; }
    ~XzDecompressor() override { lzma_end(&stream_); }
    XzDecompressor(const XzDecompressor&) = delete;
    XzDecompressor& operator=(const XzDecompressor&) = delete;

    const char* formatName() const override { return "xz"; }

    State feed(std::string_view piece, const Take& take) override
    {
        if (!usable_)
            return State::NeedsMemory;
        stream_.next_in = reinterpret_cast<const std::uint8_t*>(piece.data());
        stream_.avail_in = piece.size();
        const auto action = piece.empty() ? LZMA_FINISH : LZMA_RUN;
        lzma_ret result = LZMA_OK;
        do {
            stream_.next_out = reinterpret_cast<std::uint8_t*>(output_);
            stream_.avail_out = OutputSize;
            result = lzma_code(&stream_, action);
            if (!take({ output_, OutputSize - stream_.avail_out }))
                return State::Stopped;
        } while (result == LZMA_OK && (stream_.avail_in > 0 || stream_.avail_out == 0));
        return stateAfter(result, piece.empty());
    }

private:
    static State stateAfter(lzma_ret result, bool isEnd)
    {
        switch (result) {
        case LZMA_OK:
        case LZMA_BUF_ERROR: // it can do nothing without more bytes
            return isEnd ? State::EndsEarly : State::Going;
        case LZMA_STREAM_END:
            return State::Complete;
        case LZMA_MEM_ERROR:
        case LZMA_MEMLIMIT_ERROR:
            return State::NeedsMemory;
        default:
            return State::Damaged;
        }
    }

    lzma_stream stream_ = LZMA_STREAM_INIT;
    bool usable_ = false;
    char output_[OutputSize];
};

}

std::unique_ptr<TWDecompressor> TWDecompressor::forFile(std::string_view beginning)
{
    if (beginning.starts_with(GzipBeginning))
        return std::make_unique<GzipDecompressor>();
    if (beginning.starts_with(XzBeginning))
        return std::make_unique<XzDecompressor>();
    return nullptr;
}
