#include "plist/TWBinaryPropertyListWriter.h"

#include "plist/TWPropertyList.h"
#include "plist/TWPropertyListBudget.h"
#include "plist/TWUnicode.h"

#include <bit>
#include <cmath>

namespace {

constexpr std::string_view NotText = "a text in it is not valid UTF-8";
constexpr std::string_view NotADate = "a date in it is not a number";

std::size_t sizeFor(std::uint64_t number)
{
    return number < 1u << 8 ? 1 : number < 1u << 16 ? 2 : number < 1ull << 32 ? 4 : 8;
}

}

std::optional<std::string> TWBinaryPropertyListWriter::write(const TWValue& value, std::string_view& problem)
{
    numberAll(value);
    if (writeAll())
        return std::move(output_);
    problem = problem_;
    return std::nullopt;
}

bool TWBinaryPropertyListWriter::fail(std::string_view problem)
{
    problem_ = problem;
    return false;
}

bool TWBinaryPropertyListWriter::writeAll()
{
    referenceSize_ = sizeFor(values_.size() + keys_.size() - 1);
    offsets_.reserve(values_.size() + keys_.size());
    output_ = "bplist00";
    for (const TWValue* object : values_) {
        offsets_.push_back(output_.size());
        if (!writeObject(*object) || !fits())
            return false;
    }
    for (const std::string_view key : keys_) {
        offsets_.push_back(output_.size());
        if (!writeString(key) || !fits())
            return false;
    }
    writeTable();
    return fits();
}

bool TWBinaryPropertyListWriter::fits()
{
    return output_.size() <= TWPropertyList::MaximumBytes || fail(TWPropertyListBudget::TooLong);
}

// Works level by level, without recursion.
void TWBinaryPropertyListWriter::numberAll(const TWValue& root)
{
    values_.push_back(&root);
    std::size_t next = 0;
    while (next < values_.size())
        numberChildren(*values_[next++]); // which appends to values_
}

void TWBinaryPropertyListWriter::numberChildren(const TWValue& value)
{
    if (const auto* items = value.array()) {
        for (const TWValue& item : *items)
            values_.push_back(&item);
    } else if (const auto* dictionary = value.dictionary()) {
        for (const auto& [key, entry] : dictionary->entries()) {
            values_.push_back(&entry);
            keyNumbers_.push_back(keyNumber(key));
        }
    }
}

// Returns the key's number among the keys. In the table of objects the keys follow all values.
std::uint32_t TWBinaryPropertyListWriter::keyNumber(const std::string& key)
{
    const auto [place, isNew] = numberOfKey_.try_emplace(key, static_cast<std::uint32_t>(keys_.size()));
    if (isNew)
        keys_.push_back(key);
    return place->second;
}

void TWBinaryPropertyListWriter::writeNumber(std::uint64_t number, std::size_t size)
{
    for (std::size_t i = size; i > 0; i--)
        output_ += static_cast<char>(number >> 8 * (i - 1));
}

void TWBinaryPropertyListWriter::writeMarker(unsigned type, std::size_t count)
{
    output_ += static_cast<char>(type << 4 | (count < 0xf ? unsigned(count) : 0xfu));
    if (count >= 0xf)
        writeInteger(static_cast<std::int64_t>(count));
}

bool TWBinaryPropertyListWriter::writeObject(const TWValue& value)
{
    if (const auto* string = value.string())
        return writeString(*string);
    if (const auto* number = value.integer())
        writeInteger(*number);
    else if (const auto* boolean = value.boolean())
        output_ += *boolean ? '\x09' : '\x08';
    else if (const auto* dictionary = value.dictionary())
        writeDictionary(dictionary->size());
    else if (const auto* items = value.array())
        writeArray(items->size());
    else if (const auto* real = value.real()) {
        output_ += '\x23';
        writeNumber(std::bit_cast<std::uint64_t>(*real), 8);
    } else if (const auto* data = value.data()) {
        writeMarker(0x4, data->bytes.size());
        output_ += data->bytes;
    } else if (const auto* date = value.date()) {
        output_ += '\x33';
        writeNumber(std::bit_cast<std::uint64_t>(date->secondsSince2001), 8);
        return std::isfinite(date->secondsSince2001) || fail(NotADate);
    }
    return true;
}

// Integers of fewer than 8 bytes are unsigned.
void TWBinaryPropertyListWriter::writeInteger(std::int64_t number)
{
    const std::size_t size = number < 0 ? 8 : sizeFor(static_cast<std::uint64_t>(number));
    output_ += static_cast<char>(0x10 | std::countr_zero(size));
    writeNumber(static_cast<std::uint64_t>(number), size);
}

bool TWBinaryPropertyListWriter::writeString(std::string_view text)
{
    if (TWUnicode::isASCII(text)) {
        writeMarker(0x5, text.size());
        output_ += text;
        return true;
    }
    std::size_t units = 0;
    for (std::string_view rest = text; !rest.empty(); units++) {
        const char32_t character = TWUnicode::takeUTF8(rest);
        if (character == TWUnicode::Invalid)
            return fail(NotText);
        units += character >= 0x10000;
    }
    writeMarker(0x6, units);
    while (!text.empty())
        TWUnicode::appendUTF16(TWUnicode::takeUTF8(text), output_);
    return true;
}

void TWBinaryPropertyListWriter::writeArray(std::size_t count)
{
    writeMarker(0xa, count);
    for (std::size_t i = 0; i < count; i++)
        writeNumber(nextChild_++, referenceSize_);
}

void TWBinaryPropertyListWriter::writeDictionary(std::size_t count)
{
    writeMarker(0xd, count);
    for (std::size_t i = 0; i < count; i++)
        writeNumber(values_.size() + keyNumbers_[nextKey_++], referenceSize_);
    for (std::size_t i = 0; i < count; i++)
        writeNumber(nextChild_++, referenceSize_);
}

void TWBinaryPropertyListWriter::writeTable()
{
    const std::size_t table = output_.size();
    const std::size_t offsetSize = sizeFor(table);
    for (const std::size_t offset : offsets_)
        writeNumber(offset, offsetSize);
    writeNumber(0, 6);
    writeNumber(offsetSize, 1);
    writeNumber(referenceSize_, 1);
    writeNumber(offsets_.size(), 8);
    writeNumber(0, 8);
    writeNumber(table, 8);
}
