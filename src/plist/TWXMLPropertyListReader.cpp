#include "plist/TWXMLPropertyListReader.h"

#include "plist/TWPropertyList.h"
#include "support/TWBase64.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <expat.h>

namespace {

constexpr std::string_view OutOfMemory = "out of memory";
constexpr std::string_view NoValue = "there is no value in the file";
constexpr std::string_view LongToken = "a tag or a comment that is longer than 1 MB";

constexpr std::size_t LongestPiece = std::size_t{ 128 } * 1024;
constexpr std::size_t LongestToken = 1'000'000;

// In bytes. The buffer of a longer text is released.
constexpr std::size_t LargestKeptBuffer = std::size_t{ 1 } << 20;

// Doubles the capacity of a full vector, but not beyond what the budget allows it to grow to.
template <typename T>
void makeRoom(std::vector<T>& items, std::uint64_t budget)
{
    if (items.size() < items.capacity())
        return;
    const std::size_t most = items.size() + 1 + budget / sizeof(T);
    items.reserve(std::min(std::max<std::size_t>(4, items.size() * 2), most));
}

// Releases unused capacity, except of a huge container, because copying it would take as much memory again.
template <typename T>
void fit(std::vector<T>& items)
{
    if (items.size() * sizeof(T) <= TWPropertyList::MaximumMemory / 2)
        items.shrink_to_fit();
}

}

struct TWXMLPropertyListReader::Handlers {
    static TWXMLPropertyListReader& reader(void* data) { return *static_cast<TWXMLPropertyListReader*>(data); }

    static void start(void* data, const XML_Char* name, const XML_Char**) { reader(data).startElement(name); }

    static void end(void* data, const XML_Char* name) { reader(data).endElement(name); }

    static void text(void* data, const XML_Char* text, int length)
    {
        reader(data).characters({ text, static_cast<std::size_t>(length) });
    }

    // Refuses any declarations, because entities and default attributes can turn a small file into a huge one. The
    // usual line that names the document type has none.
    static void documentType(void* data, const XML_Char*, const XML_Char*, const XML_Char*, int hasDeclarations)
    {
        if (hasDeclarations)
            reader(data).fail("a document type with declarations of its own");
    }

    // Expat skips an entity that an external document type might declare, so text would be lost.
    static void skippedEntity(void* data, const XML_Char*, int) { reader(data).fail("an unknown entity"); }

    static void install(XML_Parser parser, TWXMLPropertyListReader& target)
    {
        XML_SetUserData(parser, &target);
        XML_SetElementHandler(parser, start, end);
        XML_SetCharacterDataHandler(parser, text);
        XML_SetStartDoctypeDeclHandler(parser, documentType);
        XML_SetSkippedEntityHandler(parser, skippedEntity);
    }

    static std::string atLine(XML_Parser parser, std::string_view text)
    {
        return std::string("line ").append(std::to_string(XML_GetCurrentLineNumber(parser))).append(": ").append(text);
    }
};

TWXMLPropertyListReader::TWXMLPropertyListReader()
    : parser_(XML_ParserCreate(nullptr), XML_ParserFree)
{
    if (parser_)
        Handlers::install(parser_.get(), *this);
    else
        problem_ = OutOfMemory;
}

// Passes short pieces on, because Expat copies each one.
bool TWXMLPropertyListReader::take(std::string_view piece)
{
    while (!piece.empty() && problem_.empty()) {
        const std::string_view part = piece.substr(0, LongestPiece);
        parse(part, false);
        piece.remove_prefix(part.size());
    }
    return problem_.empty();
}

std::optional<TWValue> TWXMLPropertyListReader::finish(std::string& problem)
{
    if (problem_.empty())
        parse({}, true);
    if (problem_.empty() && !root_)
        problem_ = NoValue;
    problem = problem_;
    return problem_.empty() ? std::move(root_) : std::nullopt;
}

void TWXMLPropertyListReader::parse(std::string_view piece, bool last)
{
    const XML_Status status = XML_Parse(parser_.get(), piece.data(), static_cast<int>(piece.size()), last);
    if (!problem_.empty())
        return;
    if (status != XML_STATUS_OK) {
        problem_ = Handlers::atLine(parser_.get(), XML_ErrorString(XML_GetErrorCode(parser_.get())));
        return;
    }
    // Expat keeps an unfinished tag or comment in memory and scans it again from its start with each piece.
    parsed_ += piece.size();
    const XML_Index pending = XML_GetCurrentByteIndex(parser_.get());
    if (parsed_ - static_cast<std::size_t>(std::max<XML_Index>(pending, 0)) > LongestToken)
        problem_ = Handlers::atLine(parser_.get(), LongToken);
}

// Expat may still call handlers after it was told to stop, so each of the following functions first checks for a
// problem.
void TWXMLPropertyListReader::fail(std::string_view problem)
{
    problem_ = Handlers::atLine(parser_.get(), problem);
    XML_StopParser(parser_.get(), XML_FALSE);
}

// Calls fail() if the budget did not suffice, and returns success.
bool TWXMLPropertyListReader::charged(bool success)
{
    if (!success)
        fail(TWPropertyListBudget::TooLarge);
    return success;
}

TWXMLPropertyListReader::Element TWXMLPropertyListReader::elementNamed(std::string_view name)
{
    using Named = std::pair<std::string_view, Element>;
    static constexpr std::array Elements{ Named{ "key", Element::Key }, Named{ "string", Element::String },
        Named{ "integer", Element::Integer }, Named{ "dict", Element::Dictionary }, Named{ "array", Element::Array },
        Named{ "true", Element::True }, Named{ "false", Element::False }, Named{ "real", Element::Real },
        Named{ "date", Element::Date }, Named{ "data", Element::Data }, Named{ "plist", Element::PList } };
    for (const auto& [known, element] : Elements) {
        if (known == name)
            return element;
    }
    return Element::None;
}

namespace {

// Shortens a name for a problem text, because it can be as long as the file.
std::string shortened(std::string_view name)
{
    if (name.size() <= 40)
        return std::string(name);
    std::size_t length = 40;
    while (length > 0 && (name[length] & 0xc0) == 0x80)
        length--;
    return std::string(name.substr(0, length)) + "...";
}

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view Blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(Blanks);
    return first == text.npos ? std::string_view() : text.substr(first, text.find_last_not_of(Blanks) - first + 1);
}

}

void TWXMLPropertyListReader::startElement(std::string_view name)
{
    if (!problem_.empty())
        return;
    const Element element = elementNamed(name);
    if (element == Element::None)
        return fail(std::string("unknown element <").append(shortened(name)).append(">"));
    if (!mayStart(element))
        return fail(std::string("<").append(name).append("> is not allowed here"));
    if (element == Element::PList)
        plistSeen_ = true;
    else if (element == Element::Dictionary || element == Element::Array)
        startContainer(element == Element::Dictionary);
    else {
        leaf_ = element;
        if (text_.capacity() > LargestKeptBuffer)
            text_ = {};
        text_.clear();
    }
}

bool TWXMLPropertyListReader::mayStart(Element element)
{
    if (leaf_ != Element::None)
        return false;
    if (open_.empty())
        return !root_ && element != Element::Key && !(element == Element::PList && plistSeen_);
    if (element == Element::PList)
        return false;
    const Container& container = open_.back();
    const bool expectsKey = container.isDictionary && !container.key;
    return expectsKey == (element == Element::Key);
}

void TWXMLPropertyListReader::startContainer(bool isDictionary)
{
    if (open_.size() >= TWPropertyList::MaximumDepth)
        return fail(TWPropertyListBudget::TooDeep);
    open_.emplace_back().isDictionary = isDictionary;
}

void TWXMLPropertyListReader::characters(std::string_view text)
{
    if (!problem_.empty())
        return;
    if (leaf_ != Element::None && leaf_ != Element::True && leaf_ != Element::False)
        text_.append(text);
    else if (!trimmed(text).empty())
        fail("text outside of a value");
}

void TWXMLPropertyListReader::endElement(std::string_view name)
{
    if (!problem_.empty())
        return;
    leaf_ = Element::None;
    switch (elementNamed(name)) {
    case Element::None:
    case Element::PList:
        return;
    case Element::Dictionary:
    case Element::Array:
        return endContainer();
    case Element::Key:
        return endKey();
    case Element::String:
        return addString();
    case Element::Integer:
        return addInteger();
    case Element::Real:
        return addReal();
    case Element::True:
        return add(true);
    case Element::False:
        return add(false);
    case Element::Date:
        return addDate();
    case Element::Data:
        return addData();
    }
}

void TWXMLPropertyListReader::endContainer()
{
    Container ended = std::move(open_.back());
    open_.pop_back();
    if (ended.key)
        return fail("a key without a value");
    if (!ended.isDictionary) {
        fit(ended.items);
        if (charged(budget_.closeArray(ended.items.size())))
            add(std::move(ended.items));
        return;
    }
    fit(ended.entries);
    if (charged(budget_.closeDictionary(ended.entries.size())))
        add(TWDictionary::fromEntries(std::move(ended.entries)));
}

void TWXMLPropertyListReader::endKey()
{
    if (charged(budget_.chargeText(text_.size())))
        open_.back().key = text_;
}

void TWXMLPropertyListReader::add(TWValue value)
{
    if (open_.empty()) {
        root_ = std::move(value);
        return;
    }
    Container& container = open_.back();
    if (!container.isDictionary) {
        if (!charged(budget_.chargeItems(1)))
            return;
        makeRoom(container.items, budget_.left());
        container.items.push_back(std::move(value));
        return;
    }
    if (!charged(budget_.chargeEntries(1)))
        return;
    makeRoom(container.entries, budget_.left());
    container.entries.emplace_back(std::move(*container.key), std::move(value));
    container.key.reset();
}

void TWXMLPropertyListReader::addString()
{
    if (charged(budget_.chargeText(text_.size())))
        add(std::string(text_)); // copied, so that the value has the right capacity and the buffer can be used again
}

// Decimal, or hexadecimal as in old files.
void TWXMLPropertyListReader::addInteger()
{
    std::string_view digits = trimmed(text_);
    const bool negative = digits.starts_with('-');
    if (negative || digits.starts_with('+'))
        digits.remove_prefix(1);
    const bool hexadecimal = digits.starts_with("0x") || digits.starts_with("0X");
    if (hexadecimal)
        digits.remove_prefix(2);
    std::uint64_t magnitude = 0;
    const auto [end, error]
        = std::from_chars(digits.data(), digits.data() + digits.size(), magnitude, hexadecimal ? 16 : 10);
    if (error == std::errc::invalid_argument || end != digits.data() + digits.size())
        return fail("<integer> holds no integer");
    const std::uint64_t largest = std::uint64_t(INT64_MAX) + (negative ? 1 : 0);
    if (error != std::errc() || magnitude > largest)
        return fail("<integer> does not fit into 64 bits with a sign");
    add(static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude));
}

void TWXMLPropertyListReader::addReal()
{
    std::string_view digits = trimmed(text_);
    if (digits.starts_with('+') && !digits.starts_with("+-"))
        digits.remove_prefix(1);
    double number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    // Refuses a number out of range too, because a different number would be written back.
    if (error != std::errc() || end != digits.data() + digits.size())
        return fail("<real> holds no number that can be kept");
    add(number);
}

namespace {

// Accepts only the form "2024-02-29T23:59:59Z".
std::optional<TWDate> dateFromText(std::string_view text)
{
    constexpr std::string_view Pattern = "0000-00-00T00:00:00Z";
    if (text.size() != Pattern.size())
        return std::nullopt;
    for (std::size_t i = 0; i < text.size(); i++) {
        const bool digit = text[i] >= '0' && text[i] <= '9';
        if (Pattern[i] == '0' ? !digit : text[i] != Pattern[i])
            return std::nullopt;
    }
    const auto number = [&](std::size_t at, std::size_t length) {
        int value = 0;
        std::from_chars(text.data() + at, text.data() + at + length, value);
        return value;
    };
    using namespace std::chrono;
    const year_month_day date{ year(number(0, 4)), month(unsigned(number(5, 2))), day(unsigned(number(8, 2))) };
    const hours hour(number(11, 2));
    const minutes minute(number(14, 2));
    const seconds second(number(17, 2));
    if (!date.ok() || hour >= 24h || minute >= 60min || second >= 60s)
        return std::nullopt;
    const seconds since = sys_days(date) - sys_days(2001y / January / 1) + hour + minute + second;
    return TWDate{ static_cast<double>(since.count()) };
}

}

void TWXMLPropertyListReader::addDate()
{
    if (const auto date = dateFromText(trimmed(text_)))
        add(*date);
    else
        fail("<date> holds no date");
}

void TWXMLPropertyListReader::addData()
{
    auto bytes = TWBase64::decode(text_);
    if (!bytes)
        return fail("<data> holds something that is not Base64");
    if (charged(budget_.chargeText(bytes->size())))
        add(TWData{ std::move(*bytes) });
}
