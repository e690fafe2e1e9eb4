#include "platform/TWHandoverMessage.h"

#include <cstdint>

namespace {

constexpr std::size_t LengthSize = 4;

void appendLength(std::string& bytes, std::size_t length)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<char>(length >> shift & 0xFF));
}

// Returns nothing if there are fewer than four bytes.
std::optional<std::size_t> takeLength(std::string_view& bytes)
{
    if (bytes.size() < LengthSize)
        return std::nullopt;
    std::size_t length = 0;
    for (std::size_t index = 0; index < LengthSize; ++index)
        length = length << 8 | static_cast<std::uint8_t>(bytes[index]);
    bytes.remove_prefix(LengthSize);
    return length;
}

}

std::optional<std::string> TWHandoverMessage::pack(const Fields& fields)
{
    std::string body;
    for (const auto& field : fields) {
        if (body.size() + LengthSize + field.size() > LongestMessage)
            return std::nullopt;
        appendLength(body, field.size());
        body += field;
    }
    std::string message;
    appendLength(message, body.size());
    return message + body;
}

TWHandoverMessage::State TWHandoverMessage::unpack(std::string_view received, Fields& fields)
{
    const auto length = takeLength(received);
    if (!length)
        return State::Incomplete;
    if (*length > LongestMessage || received.size() > *length)
        return State::Broken;
    if (received.size() < *length)
        return State::Incomplete;
    fields.clear();
    while (!received.empty()) {
        const auto size = takeLength(received);
        if (!size || *size > received.size())
            return State::Broken;
        fields.emplace_back(received.substr(0, *size));
        received.remove_prefix(*size);
    }
    return State::Complete;
}
