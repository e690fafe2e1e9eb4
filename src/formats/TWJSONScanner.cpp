#include "formats/TWJSONScanner.h"

#include "formats/TWFileFormats.h"
#include "formats/TWFormatText.h"
#include "plist/TWUnicode.h"
#include "support/TWText.h"

#include <array>
#include <charconv>
#include <utility>

namespace {

constexpr std::string_view NotUTF8 = "it is not valid UTF-8";
constexpr std::string_view EndsEarly = "it ends too early";
constexpr std::string_view NoValue = "a value is missing or wrong";
constexpr std::string_view NoMember = "a member of an object is missing or wrong";
constexpr std::string_view NoComma = "a comma is missing";
constexpr std::string_view BadString = "a string holds a character or an escape that is not allowed";
constexpr std::string_view MoreThanOne = "something follows the value";

// Kinds of bytes in strings. Special ones end the string, begin an escape or are not allowed.
enum ByteKind : unsigned char { Plain, NotASCII, Special };

constexpr auto ByteKinds = [] {
    std::array<ByteKind, 256> kinds{};
    for (std::size_t byte = 0; byte < kinds.size(); byte++)
        kinds[byte] = byte < 0x20 || byte == '"' || byte == '\\' ? Special : byte < 0x80 ? Plain : NotASCII;
    return kinds;
}();

bool isDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}

bool isBlankOrLineEnd(char byte)
{
    return TWFormatText::isBlank(byte) || byte == '\n' || byte == '\r';
}

bool isHexadecimalDigit(char byte)
{
    return isDigit(byte) || (byte >= 'a' && byte <= 'f') || (byte >= 'A' && byte <= 'F');
}

// Takes the four digits after "\u".
char32_t takeUnit(std::string_view& text)
{
    unsigned unit = 0;
    std::from_chars(text.data(), text.data() + 4, unit, 16);
    text.remove_prefix(4);
    return unit;
}

bool isSurrogate(char32_t unit)
{
    return unit >= 0xd800 && unit < 0xe000;
}

char32_t takeCharacter(std::string_view& text)
{
    const char32_t first = takeUnit(text);
    if (!isSurrogate(first))
        return first;
    if (first >= 0xdc00 || !text.starts_with("\\u"))
        return TWUnicode::Invalid;
    text.remove_prefix(2);
    const char32_t second = takeUnit(text);
    if (second < 0xdc00 || !isSurrogate(second))
        return TWUnicode::Invalid;
    return 0x10000 + ((first & 0x3ff) << 10) + (second & 0x3ff);
}

// The text of a string with correct escapes; nothing if one of them is half a surrogate pair.
std::optional<std::string> unescaped(std::string_view text)
{
    constexpr std::string_view Letters = "bfnrt";
    constexpr std::string_view Meanings = "\b\f\n\r\t";
    std::string result;
    while (!text.empty()) {
        const std::size_t plain = std::min(text.find('\\'), text.size());
        result += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty())
            break;
        const char letter = text[1];
        text.remove_prefix(2);
        if (letter == 'u') {
            const char32_t character = takeCharacter(text);
            if (character == TWUnicode::Invalid)
                return std::nullopt;
            TWUnicode::appendUTF8(character, result);
        } else {
            const std::size_t place = Letters.find(letter);
            result += place == Letters.npos ? letter : Meanings[place];
        }
    }
    return result;
}

// The name of a member, of which the escapes are resolved if it has any.
struct Name {
    explicit Name(std::string_view inside)
        : text(inside)
    {
        if (inside.find('\\') == inside.npos)
            return;
        resolved = unescaped(inside);
        text = resolved ? std::string_view(*resolved) : std::string_view();
        isValid = resolved.has_value();
    }
    Name(const Name&) = delete;

    std::optional<std::string> resolved;
    std::string_view text;
    bool isValid = true;
};

}

TWJSONScanner::TWJSONScanner(std::string_view bytes, TWEntryCuts& cuts)
    : bytes_(bytes)
    , cuts_(cuts)
    , place_(TWFormatText::start(bytes))
{
}

bool TWJSONScanner::recognises(std::string_view bytes)
{
    return firstByte(bytes) == '{' || mayBeINI(bytes);
}

bool TWJSONScanner::mayBeINI(std::string_view bytes)
{
    return firstByte(bytes) == '[';
}

// The first byte after blanks and comments.
char TWJSONScanner::firstByte(std::string_view bytes)
{
    TWEntryCuts cuts(bytes, {});
    TWJSONScanner scanner(bytes, cuts);
    return scanner.skipBlanks() ? scanner.peek() : '\0';
}

bool TWJSONScanner::scan(std::string& problem)
{
    const bool valid = scanAll();
    problem = problem_;
    return valid;
}

bool TWJSONScanner::fail(std::string_view problem)
{
    problem_ = problem;
    return false;
}

bool TWJSONScanner::scanAll()
{
    if (!skipBlanks() || !takeValue())
        return false;
    while (!open_.empty()) {
        if (!skipBlanks() || !takeNext())
            return false;
    }
    return skipBlanks() && (place_ == bytes_.size() || fail(MoreThanOne));
}

// Takes what comes next in the innermost container: a comma, an item or the end.
bool TWJSONScanner::takeNext()
{
    Container& inner = open_.back();
    if (take(inner.isObject ? '}' : ']'))
        return endContainer();
    if (inner.needsComma)
        return takeComma(inner);
    return inner.isObject ? takeMember(inner) : takeValue();
}

bool TWJSONScanner::takeComma(Container& inner)
{
    const std::size_t comma = place_;
    if (!take(','))
        return fail(place_ == bytes_.size() ? EndsEarly : NoComma);
    inner.needsComma = false;
    if (inner.cutsMember)
        cuts_.addSeparator(comma, comma + 1);
    else
        inner.keptComma = comma;
    return true;
}

bool TWJSONScanner::takeMember(Container& inner)
{
    const std::size_t begin = place_;
    std::string_view name;
    if (peek() != '"')
        return fail(place_ == bytes_.size() ? EndsEarly : NoMember);
    if (!takeString(name) || !skipBlanks())
        return false;
    if (!take(':'))
        return fail(NoMember);
    const Name resolved(name);
    if (cuts_.collector())
        cuts_.collector()->name(resolved.text);
    const TWEntryCuts::Key key = resolved.isValid ? cuts_.find(resolved.text) : TWEntryCuts::NoKey;
    inner.cutsMember = key != TWEntryCuts::NoKey;
    if (inner.cutsMember)
        cuts_.open(key, begin);
    else
        inner.keptComma = None;
    return skipBlanks() && takeValue();
}

bool TWJSONScanner::takeValue()
{
    if (peek() == '{' || peek() == '[')
        return beginContainer(peek() == '{');
    const std::size_t begin = place_;
    if (!takeScalar())
        return false;
    if (cuts_.collector())
        reportScalar(bytes_.substr(begin, place_ - begin));
    return endValue();
}

bool TWJSONScanner::takeScalar()
{
    std::string_view inside;
    switch (peek()) {
    case '"':
        return takeString(inside);
    case 't':
        return takeWord("true");
    case 'f':
        return takeWord("false");
    case 'n':
        return takeWord("null");
    default:
        return takeNumber();
    }
}

void TWJSONScanner::reportScalar(std::string_view text)
{
    if (text.starts_with('"'))
        text = text.substr(1, text.size() - 2);
    const auto resolved = unescaped(text);
    cuts_.collector()->value(resolved ? *resolved : text);
}

bool TWJSONScanner::beginContainer(bool isObject)
{
    if (open_.size() == TWFileFormats::MaximumDepth)
        return fail(TWFileFormats::TooDeep);
    place_++;
    open_.emplace_back().isObject = isObject;
    if (cuts_.collector())
        cuts_.collector()->begin(isObject);
    return true;
}

bool TWJSONScanner::endContainer()
{
    const Container ended = open_.back();
    // The last members go, so the comma after the last one that stays goes, too.
    if (ended.needsComma && ended.cutsMember && ended.keptComma != None)
        cuts_.addSeparator(ended.keptComma, ended.keptComma + 1);
    open_.pop_back();
    if (cuts_.collector())
        cuts_.collector()->end();
    return endValue();
}

bool TWJSONScanner::endValue()
{
    if (open_.empty())
        return true;
    open_.back().needsComma = true;
    if (open_.back().cutsMember)
        cuts_.close(place_);
    return true;
}

bool TWJSONScanner::takeString(std::string_view& inside)
{
    const std::size_t begin = ++place_;
    unsigned kinds = Plain; // all that were met
    for (; place_ < bytes_.size(); place_++) {
        kinds |= skipPlain();
        if (take('"')) {
            inside = bytes_.substr(begin, place_ - 1 - begin);
            return (kinds & NotASCII) == 0 || TWText::isValidUTF8(inside) || fail(NotUTF8);
        }
        if (peek() != '\\' || !takeEscape())
            break;
    }
    return fail(place_ < bytes_.size() ? BadString : EndsEarly);
}

// Returns the kinds of the bytes that were skipped. Most bytes of most files are skipped here.
unsigned TWJSONScanner::skipPlain()
{
    unsigned kinds = Plain;
    std::size_t place = place_;
    for (; place < bytes_.size(); place++) {
        const ByteKind kind = ByteKinds[static_cast<unsigned char>(bytes_[place])];
        if (kind == Special)
            break;
        kinds |= kind;
    }
    place_ = place;
    return kinds;
}

// Moves to the last byte of the escape.
bool TWJSONScanner::takeEscape()
{
    place_++;
    if (peek() != 'u')
        return peek() != '\0' && std::string_view("\"\\/bfnrt").find(peek()) != std::string_view::npos;
    for (int digit = 0; digit < 4; digit++) {
        place_++;
        if (!isHexadecimalDigit(peek()))
            return false;
    }
    return true;
}

bool TWJSONScanner::takeNumber()
{
    if (place_ == bytes_.size())
        return fail(EndsEarly);
    take('-');
    if (!take('0') && !takeDigits())
        return false;
    if (take('.') && !takeDigits())
        return false;
    if (!take('e') && !take('E'))
        return true;
    if (!take('+'))
        take('-');
    return takeDigits();
}

bool TWJSONScanner::takeDigits()
{
    const std::size_t begin = place_;
    while (isDigit(peek()))
        place_++;
    return place_ > begin || fail(NoValue);
}

bool TWJSONScanner::takeWord(std::string_view word)
{
    if (!bytes_.substr(place_).starts_with(word))
        return fail(NoValue);
    place_ += word.size();
    return true;
}

bool TWJSONScanner::take(char byte)
{
    if (place_ == bytes_.size() || bytes_[place_] != byte)
        return false;
    place_++;
    return true;
}

bool TWJSONScanner::skipBlanks()
{
    for (;;) {
        std::size_t place = place_;
        while (place < bytes_.size() && isBlankOrLineEnd(bytes_[place]))
            place++;
        place_ = place;
        if (peek() != '/')
            return true;
        if (!skipComment())
            return false;
    }
}

bool TWJSONScanner::skipComment()
{
    const std::string_view rest = bytes_.substr(place_);
    const bool isLine = rest.starts_with("//");
    if (!isLine && !rest.starts_with("/*"))
        return fail(NoValue);
    const std::size_t end = bytes_.find(isLine ? "\n" : "*/", place_ + 2);
    if (end == bytes_.npos && !isLine)
        return fail(EndsEarly);
    const std::size_t begin = std::exchange(place_, end == bytes_.npos ? bytes_.size() : end + (isLine ? 1 : 2));
    return TWText::isValidUTF8(bytes_.substr(begin, place_ - begin)) || fail(NotUTF8);
}
