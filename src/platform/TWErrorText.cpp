#include "platform/TWFileSystem.h"

#include <cstring>

// Always English, as all our texts are: strerror() would follow the locale that the window's library sets.
std::string TWErrorText(int error)
{
    const char* text = strerrordesc_np(error);
    return text ? text : "Error " + std::to_string(error);
}
