#include "ui/parts/TWPictureDecoder.h"

#include <QDeadlineTimer>
#include <QIODevice>
#include <QImageReader>
#include <QtEndian>

#include <algorithm>
#include <string_view>

namespace {

constexpr QSize LargestPicture(2048, 2048); // in pixels, so that it is painted at once
constexpr int LongestTime = 5000; // in milliseconds; a small file can hold a hundred thousand passes

constexpr std::string_view PNGSignature = "\x89PNG\r\n\x1A\n";
constexpr std::size_t PNGFrame = 12; // a chunk's length, its name of four letters and its checksum

std::uint32_t bigEndian(std::string_view bytes)
{
    return qFromBigEndian<std::uint32_t>(bytes.data());
}

// Leaves out the chunks that a PNG can be shown without, except for transparent colours. A compressed text or colour
// profile of a few kilobytes unpacks to megabytes, and there may be hundreds of them.
std::string withoutExtras(std::string_view png)
{
    std::string needed(png.substr(0, PNGSignature.size()));
    png.remove_prefix(PNGSignature.size());
    while (png.size() >= PNGFrame) {
        const auto length = std::min(png.size(), bigEndian(png) + PNGFrame);
        const auto name = png.substr(4, 4);
        const bool isCritical = name.front() >= 'A' && name.front() <= 'Z';
        if (isCritical || name == "tRNS")
            needed += png.substr(0, length);
        png.remove_prefix(length);
    }
    return needed;
}

// The bytes of a picture, until they are no longer wanted.
class Bytes final : public QIODevice {
public:
    Bytes(std::string_view bytes, const TWCancellation& cancellation)
        : bytes_(bytes)
        , cancellation_(cancellation)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    qint64 size() const override { return static_cast<qint64>(bytes_.size()); }

private:
    qint64 readData(char* data, qint64 most) override
    {
        if (cancellation_.cancelled() || deadline_.hasExpired())
            return -1;
        const auto piece = bytes_.substr(std::min(bytes_.size(), static_cast<std::size_t>(pos())));
        return static_cast<qint64>(piece.copy(data, static_cast<std::size_t>(most)));
    }
    qint64 writeData(const char*, qint64) override { return -1; }

    const std::string_view bytes_;
    const TWCancellation& cancellation_;
    const QDeadlineTimer deadline_{ LongestTime };
};

}

QImage TWPictureDecoder::decode(const std::string& bytes, const TWCancellation& cancellation, QSize& size)
{
    const bool isPNG = std::string_view(bytes).starts_with(PNGSignature);
    const auto needed = isPNG ? withoutExtras(bytes) : bytes;
    Bytes device(needed, cancellation);
    QImageReader reader(&device);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    const auto picture = reader.read();
    size = picture.size();
    const bool fits = size.width() <= LargestPicture.width() && size.height() <= LargestPicture.height();
    return fits ? picture : picture.scaled(LargestPicture, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}
