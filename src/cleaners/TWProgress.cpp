#include "cleaners/TWProgress.h"

#include "support/TWText.h"

#include <algorithm>
#include <cmath>

using namespace std::chrono_literals;

namespace {

constexpr auto Found = "%@ found";
constexpr auto WaitingFor = "waiting for %@ of %@";
constexpr auto PartOf = "%@ of %@";
constexpr auto AndNext = "%@, %@";
constexpr auto AboutSeconds = "about %@ s";
constexpr auto AboutMinutes = "about %@ min";
constexpr auto Freed = "Freed %@.";
constexpr auto FreedAtLeast = "Freed at least %@.";
constexpr auto Deleted = "Deleted %@.";
constexpr auto Stayed = "%@ stayed.";
constexpr auto NotStarted = "%@ not started.";
constexpr auto NothingDeleted = "Nothing was deleted.";

constexpr auto FirstEstimate = 2s; // before that it would jump about
constexpr double FirstFraction = 0.01;
constexpr int Step = 5; // seconds

double part(std::uint64_t done, std::uint64_t all)
{
    return all == 0 ? 0 : std::min(1.0, static_cast<double>(done) / static_cast<double>(all));
}

// "3.1 of 7.0 GB", or "900 MB of 7.0 GB".
std::string sizes(std::uint64_t done, std::uint64_t all)
{
    auto first = TWText::size(done);
    const auto second = TWText::size(all);
    const auto unit = first.rfind(' ');
    if (unit != std::string::npos && second.ends_with(first.substr(unit)))
        first.resize(unit);
    return TWText::fill(PartOf, { first, second });
}

// Rounded up, so that the end seldom comes later than it was said.
std::string remaining(std::chrono::milliseconds elapsed, double fraction)
{
    const auto seconds = std::chrono::duration<double>(elapsed).count() * (1 - fraction) / fraction;
    if (seconds > 90)
        return TWText::fill(AboutMinutes, { std::to_string(std::lround(std::ceil(seconds / 60))) });
    const auto steps = std::max(1L, std::lround(std::ceil(seconds / Step)));
    return TWText::fill(AboutSeconds, { std::to_string(steps * Step) });
}

}

double TWProgress::fraction() const
{
    if (!planned)
        return 0;
    const auto ofItems = part(itemsDone + recordsDone, items + records);
    return measured && bytes > 0 ? (ofItems + part(bytesDone, bytes)) / 2 : ofItems;
}

std::string TWProgress::text(std::chrono::milliseconds elapsed) const
{
    if (items == 0)
        return "";
    if (!planned)
        return TWText::fill(Found, { TWText::number(items) });
    if (waits)
        return TWText::fill(WaitingFor, { TWText::number(items - itemsDone), TWText::number(items) });
    auto text = TWText::fill(PartOf, { TWText::number(itemsDone), TWText::number(items) });
    if (measured)
        text = TWText::fill(AndNext, { text, sizes(bytesDone, bytes) });
    const auto done = fraction();
    if (elapsed >= FirstEstimate && done >= FirstFraction && done < 1)
        text = TWText::fill(AndNext, { text, remaining(elapsed, done) });
    return text;
}

TWOutcome& TWOutcome::operator+=(const TWOutcome& other)
{
    measured = (measured || gone == 0) && (other.measured || other.gone == 0);
    gone += other.gone;
    left += other.left;
    notStarted += other.notStarted;
    bytes += other.bytes;
    others = TWText::join({ others, other.others }, " ");
    return *this;
}

std::string TWOutcome::text() const
{
    std::vector<std::string> sentences;
    if (gone > 0 && bytes == 0)
        sentences.push_back(TWText::fill(Deleted, { TWText::count(gone, "item", "items") }));
    else if (gone > 0)
        sentences.push_back(TWText::fill(measured ? Freed : FreedAtLeast, { TWText::size(bytes) }));
    else if (left > 0 || others.empty())
        sentences.emplace_back(NothingDeleted);
    if (left > 0)
        sentences.push_back(TWText::fill(Stayed, { TWText::count(left, "item", "items") }));
    sentences.push_back(others);
    if (notStarted > 0)
        sentences.push_back(TWText::fill(NotStarted, { TWText::count(notStarted, "cleaner was", "cleaners were") }));
    return TWText::join(sentences, " ");
}
