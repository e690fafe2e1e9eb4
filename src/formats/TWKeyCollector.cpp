#include "formats/TWKeyCollector.h"

#include "support/TWText.h"

#include <algorithm>

namespace {

// The last place up to this one that is not inside a character.
std::size_t endOfCharacter(std::string_view text, std::size_t place)
{
    while (place > 0 && (text[place] & 0xc0) == 0x80)
        place--;
    return place;
}

// A rule can hold only such names.
bool isUsable(std::string_view name)
{
    return !name.empty() && name.size() <= TWKeyCollector::MaximumNameBytes && TWText::isValidUTF8(name);
}

bool holdsAny(std::string_view name, const std::vector<std::string>& words)
{
    const auto isIn = [&](const std::string& word) { return !word.empty() && name.find(word) != name.npos; };
    return std::any_of(words.begin(), words.end(), isIn);
}

}

bool TWKeyCollector::matches(std::string_view name) const
{
    return isUsable(name) && holdsAny(name, keywords_);
}

void TWKeyCollector::name(std::string_view name, std::string_view unescaped)
{
    if (isInside()) {
        inner_ = name.substr(0, MaximumValueBytes);
        return;
    }
    matched_.clear();
    const bool isMatch = matches(name) || (isUsable(name) && holdsAny(unescaped, keywords_));
    if (isMatch && keys_.size() < MaximumKeys)
        matched_ = name;
}

void TWKeyCollector::value(std::string_view text)
{
    matched_.clear();
    if (!isInside())
        return;
    beginItem();
    append(text);
    needsComma_ = true;
    finishValue();
}

void TWKeyCollector::begin(bool isDictionary)
{
    const char closer = isDictionary ? '}' : ']';
    if (isInside()) {
        beginItem();
        append(isDictionary ? "{" : "[");
        closers_ += closer;
    } else if (!matched_.empty()) {
        keys_.push_back({ std::move(matched_), {} });
        closers_ += closer;
    }
    matched_.clear();
    needsComma_ = false;
}

void TWKeyCollector::end()
{
    matched_.clear();
    if (!isInside())
        return;
    if (closers_.size() > 1)
        append({ &closers_.back(), 1 });
    closers_.pop_back();
    needsComma_ = true;
    finishValue();
}

// Inside an item, members are separated and named.
void TWKeyCollector::beginItem()
{
    if (closers_.size() == 1)
        return;
    if (needsComma_)
        append(", ");
    if (closers_.back() == '}')
        append(inner_ + ": ");
}

// One byte too many shows that something is left out.
void TWKeyCollector::append(std::string_view text)
{
    if (value_.size() <= MaximumValueBytes)
        value_ += text.substr(0, MaximumValueBytes + 1 - value_.size());
}

void TWKeyCollector::finishValue()
{
    if (closers_.size() != 1)
        return;
    needsComma_ = false;
    addValue(keys_.back(), std::exchange(value_, {}));
}

void TWKeyCollector::addValue(TWFoundKey& key, std::string text)
{
    if (key.values.size() == MaximumValues)
        return;
    const bool isWhole = text.size() <= MaximumValueBytes;
    if (!isWhole)
        text.resize(endOfCharacter(text, MaximumValueBytes));
    key.values.push_back(TWText::validUTF8(text) + (isWhole ? "" : "…"));
}

void TWKeyCollector::enter(std::vector<Step> path)
{
    if (path.size() > MaximumPath)
        path.resize(MaximumPath);
    const auto same = std::mismatch(path_.begin(), path_.end(), path.begin(), path.end());
    auto next = same.second;
    for (auto left = path_.end(); left != same.first; --left)
        end();
    for (; next != path.end(); ++next) {
        name(next->name, next->unescaped);
        begin(true);
    }
    path_ = std::move(path);
}

void TWKeyCollector::add(std::string_view name, std::string_view text)
{
    const auto known = std::find_if(keys_.begin(), keys_.end(), [&](const TWFoundKey& key) { return key.key == name; });
    if (known != keys_.end())
        return addValue(*known, std::string(text.substr(0, MaximumValueBytes + 1)));
    this->name(name);
    begin(false);
    value(text);
    end();
}
