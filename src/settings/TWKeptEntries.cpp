#include "settings/TWKeptEntries.h"

#include <algorithm>

TWKeptEntries::TWKeptEntries(TWDictionary record, std::initializer_list<std::string_view> understood)
{
    const auto isKept = [&](const TWDictionary::Entry& entry) {
        return std::find(understood.begin(), understood.end(), entry.first) == understood.end();
    };
    auto& entries = record.entries();
    if (std::none_of(entries.begin(), entries.end(), isKept))
        return;
    Kept kept;
    for (const auto& entry : entries) {
        const auto place = std::find(understood.begin(), understood.end(), entry.first) - understood.begin();
        kept.order += isKept(entry) ? NotUnderstood : static_cast<char>(place);
    }
    // Entries that the record did not have are appended.
    for (char place = 0; place < static_cast<char>(understood.size()); place++) {
        if (kept.order.find(place) == std::string::npos)
            kept.order += place;
    }
    std::erase_if(entries, [&](const TWDictionary::Entry& entry) { return !isKept(entry); });
    kept.entries = std::move(entries);
    kept_ = std::make_shared<const Kept>(std::move(kept));
}

TWDictionary TWKeptEntries::merged(std::vector<TWDictionary::Entry> understood) const
{
    if (!kept_)
        return TWDictionary::fromEntries(std::move(understood));
    std::vector<TWDictionary::Entry> whole;
    whole.reserve(kept_->order.size());
    auto next = kept_->entries.begin();
    for (const char place : kept_->order) {
        if (place == NotUnderstood)
            whole.push_back(*next++);
        else
            whole.push_back(std::move(understood[static_cast<std::size_t>(place)]));
    }
    return TWDictionary::fromEntries(std::move(whole));
}

bool operator==(const TWKeptEntries& one, const TWKeptEntries& other)
{
    if (!one.kept_ || !other.kept_)
        return one.kept_ == other.kept_;
    return *one.kept_ == *other.kept_;
}
