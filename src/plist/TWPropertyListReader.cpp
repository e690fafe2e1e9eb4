#include "plist/TWPropertyListReader.h"

#include "plist/TWBinaryPropertyListReader.h"
#include "plist/TWPropertyListBudget.h"

namespace {

constexpr std::string_view BinaryBeginning = "bplist";
constexpr std::string_view Empty = "the file is empty";

}

bool TWPropertyListReader::take(std::string_view piece)
{
    length_ += piece.size();
    if (length_ > TWPropertyList::MaximumBytes)
        return false;
    if (xml_)
        return xml_->take(piece);
    bytes_ += piece;
    if (bytes_.size() < BinaryBeginning.size() || bytes_.starts_with(BinaryBeginning))
        return true;
    const std::string beginning = std::exchange(bytes_, {});
    return xml_.emplace().take(beginning);
}

TWPropertyListResult TWPropertyListReader::finish()
{
    TWPropertyListResult result;
    if (length_ > TWPropertyList::MaximumBytes) {
        result.problem = TWPropertyListBudget::TooLong;
    } else if (length_ == 0) {
        result.problem = Empty;
    } else if (bytes_.starts_with(BinaryBeginning)) {
        result.format = TWPropertyListFormat::Binary;
        result.value = TWBinaryPropertyListReader(bytes_).read(result.problem);
        bytes_ = {};
    } else {
        if (!xml_)
            xml_.emplace().take(bytes_);
        result.value = xml_->finish(result.problem);
    }
    return result;
}
