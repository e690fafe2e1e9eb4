#include "cli/TWJSON.h"

#include "support/TWBase64.h"
#include "support/TWText.h"

void TWJSON::addBytes(Object& object, const std::string& key, const std::string& exactKey, std::string_view bytes)
{
    object[key] = TWText::validUTF8(bytes);
    if (TWText::isValidUTF8(bytes))
        return;
    std::string exact;
    TWBase64::append(bytes, exact);
    object[exactKey] = std::move(exact);
}

std::string TWJSON::line(const Object& object)
{
    return TWText::harmlessJSON(object.dump(-1, ' ', false, Object::error_handler_t::replace)) + "\n";
}
