#include "formats/TWEntryCuts.h"

#include "formats/TWFormatText.h"

#include <algorithm>

TWEntryCuts::TWEntryCuts(std::string_view bytes, const std::vector<std::string>& keys, TWKeyCollector* collector)
    : bytes_(bytes)
    , collector_(collector)
    , keyCount_(keys.size())
    , counts_(keys.size())
{
    for (Key key = 0; key < keys.size(); key++) {
        numbers_.try_emplace(keys[key], key);
        lengths_[lengthClass(keys[key])] = true;
    }
}

// Nearly all names of a file have another length than the keys, which is far faster to see than another text.
TWEntryCuts::Key TWEntryCuts::find(std::string_view name) const
{
    if (!lengths_[lengthClass(name)])
        return NoKey;
    const auto found = numbers_.find(name);
    return found == numbers_.end() ? NoKey : found->second;
}

void TWEntryCuts::open(Key key, std::size_t begin)
{
    if (open_.empty())
        begin_ = begin;
    const Key outer = open_.empty() ? keyCount_ : open_.back();
    if (key < outer)
        counts_[key]++;
    open_.push_back(std::min(key, outer));
}

void TWEntryCuts::close(std::size_t end)
{
    open_.pop_back();
    if (open_.empty())
        add({ begin_, end });
}

void TWEntryCuts::addSeparator(std::size_t begin, std::size_t end)
{
    if (open_.empty())
        add({ begin, end });
}

// Joins neighbours at once, so that a file of nothing but such entries needs little memory.
void TWEntryCuts::add(Cut cut)
{
    if (!cuts_.empty() && cuts_.back().end <= cut.begin && isBlank(cuts_.back().end, cut.begin))
        cuts_.back().end = cut.end;
    else
        cuts_.push_back(cut);
}

bool TWEntryCuts::isBlank(std::size_t begin, std::size_t end) const
{
    return TWFormatText::isBlank(bytes_.substr(begin, end - begin));
}

// Includes the indentation before and the line end after a cut if nothing else is left on the lines.
TWEntryCuts::Cut TWEntryCuts::withWholeLines(Cut cut) const
{
    std::size_t begin = cut.begin;
    while (begin > 0 && TWFormatText::isBlank(bytes_[begin - 1]))
        begin--;
    if (begin != TWFormatText::start(bytes_) && (begin == 0 || bytes_[begin - 1] != '\n'))
        return cut;
    std::size_t end = cut.end;
    while (end < bytes_.size() && TWFormatText::isBlank(bytes_[end]))
        end++;
    if (bytes_.substr(end).starts_with("\r\n"))
        end++;
    if (end == bytes_.size())
        return { begin, end };
    return bytes_[end] == '\n' ? Cut{ begin, end + 1 } : cut;
}

std::optional<std::string> TWEntryCuts::takeRemainingBytes()
{
    if (rewritten_ || cuts_.empty())
        return std::move(rewritten_);
    // A comma that precedes an entry is added after the entry.
    std::sort(cuts_.begin(), cuts_.end(), [](Cut left, Cut right) { return left.begin < right.begin; });
    std::string result;
    result.reserve(bytes_.size());
    std::size_t place = 0;
    for (std::size_t i = 0; i < cuts_.size(); i++) {
        Cut cut = cuts_[i];
        while (i + 1 < cuts_.size() && isBlank(cut.end, cuts_[i + 1].begin))
            cut.end = cuts_[++i].end;
        cut = withWholeLines(cut);
        result.append(bytes_, place, cut.begin - place);
        place = cut.end;
    }
    return result.append(bytes_, place);
}
