#pragma once

#include "platform/TWRunLoop.h"

#include <QImage>

#include <string>

// Decodes a picture whose file may be hostile: with bounded memory and time. Returns a null image if the picture is
// damaged, takes too much of either, or is no longer wanted. A large one is scaled down. Any thread.
class TWPictureDecoder final {
public:
    // Sets size to that of the whole picture, in pixels.
    static QImage decode(const std::string& bytes, const TWCancellation&, QSize& size);
};
