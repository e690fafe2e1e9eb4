#include "platform/TWFileSystem.h"

#include <cstring>

// Not strerror(): it follows the locale, which Qt sets, and our texts are always English.
std::string TWErrorText(int error)
{
    const char* text = strerrordesc_np(error);
    return text ? text : "Error " + std::to_string(error);
}
