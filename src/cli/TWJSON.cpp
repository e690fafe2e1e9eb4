#include "cli/TWJSON.h"

#include "support/TWText.h"

namespace {

constexpr char Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string base64(std::string_view bytes)
{
    std::string result;
    for (std::size_t index = 0; index < bytes.size(); index += 3) {
        unsigned group = 0;
        for (std::size_t place = 0; place < 3; ++place)
            group = group << 8 | (index + place < bytes.size() ? static_cast<unsigned char>(bytes[index + place]) : 0U);
        for (std::size_t place = 0; place < 4; ++place)
            result.push_back(index + place > bytes.size() ? '=' : Alphabet[group >> (18 - 6 * place) & 63]);
    }
    return result;
}

}

void TWJSON::addBytes(Object& object, const std::string& key, const std::string& exactKey, std::string_view bytes)
{
    object[key] = TWText::validUTF8(bytes);
    if (!TWText::isValidUTF8(bytes))
        object[exactKey] = base64(bytes);
}

std::string TWJSON::line(const Object& object)
{
    return TWText::harmlessJSON(object.dump(-1, ' ', false, Object::error_handler_t::replace)) + "\n";
}
