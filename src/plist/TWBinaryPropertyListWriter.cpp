#include "plist/TWBinaryPropertyListWriter.h"

#include "plist/TWPropertyList.h"
#include "plist/TWPropertyListBudget.h"
#include "plist/TWUnicode.h"

#include <bit>
#include <cmath>

namespace {

constexpr std::string_view NotText = "a text in it is not valid UTF-8";
constexpr std::string_view NotADate = "a date in it is not a number";

}

std::optional<std::string> TWBinaryPropertyListWriter::write(const TWValue& value, std::string_view& problem)
{
    numberAll(value);
    if (writeAll())
        return std::move(writer_->output());
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
    writer_.emplace("bplist00", values_.size() + keys_.size());
    for (const TWValue* object : values_) {
        writer_->beginObject();
        if (!writeObject(*object) || !fits())
            return false;
    }
    for (const std::string_view key : keys_) {
        writer_->beginObject();
        if (!writeString(key) || !fits())
            return false;
    }
    writer_->addTable(0);
    return fits();
}

bool TWBinaryPropertyListWriter::fits()
{
    return writer_->output().size() <= TWPropertyList::MaximumBytes || fail(TWPropertyListBudget::TooLong);
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

bool TWBinaryPropertyListWriter::writeObject(const TWValue& value)
{
    if (const auto* string = value.string())
        return writeString(*string);
    if (const auto* number = value.integer())
        writer_->addInteger(*number);
    else if (const auto* boolean = value.boolean())
        writer_->addBytes(*boolean ? "\x09" : "\x08");
    else if (const auto* dictionary = value.dictionary())
        writeDictionary(dictionary->size());
    else if (const auto* items = value.array())
        writeArray(items->size());
    else if (const auto* real = value.real()) {
        writer_->addBytes("\x23");
        writer_->addNumber(std::bit_cast<std::uint64_t>(*real), 8);
    } else if (const auto* data = value.data()) {
        writer_->addMarker(0x4, data->bytes.size());
        writer_->addBytes(data->bytes);
    } else if (const auto* date = value.date()) {
        writer_->addBytes("\x33");
        writer_->addNumber(std::bit_cast<std::uint64_t>(date->secondsSince2001), 8);
        return std::isfinite(date->secondsSince2001) || fail(NotADate);
    }
    return true;
}

bool TWBinaryPropertyListWriter::writeString(std::string_view text)
{
    if (TWUnicode::isASCII(text)) {
        writer_->addMarker(0x5, text.size());
        writer_->addBytes(text);
        return true;
    }
    std::size_t units = 0;
    for (std::string_view rest = text; !rest.empty(); units++) {
        const char32_t character = TWUnicode::takeUTF8(rest);
        if (character == TWUnicode::Invalid)
            return fail(NotText);
        units += character >= 0x10000;
    }
    writer_->addMarker(0x6, units);
    while (!text.empty())
        TWUnicode::appendUTF16(TWUnicode::takeUTF8(text), writer_->output());
    return true;
}

void TWBinaryPropertyListWriter::writeArray(std::size_t count)
{
    writer_->addMarker(0xa, count);
    for (std::size_t i = 0; i < count; i++)
        writer_->addReference(nextChild_++);
}

void TWBinaryPropertyListWriter::writeDictionary(std::size_t count)
{
    writer_->addMarker(0xd, count);
    for (std::size_t i = 0; i < count; i++)
        writer_->addReference(values_.size() + keyNumbers_[nextKey_++]);
    for (std::size_t i = 0; i < count; i++)
        writer_->addReference(nextChild_++);
}
