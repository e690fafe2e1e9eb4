#pragma once

#include "formats/TWEntryCuts.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Finds members of objects, at any depth, in JSON that may have comments and a comma after the last item. Strict
// otherwise: what it does not understand is refused. Any thread.
class TWJSONScanner final {
public:
    // The bytes and the cuts must outlive the scanner.
    TWJSONScanner(std::string_view bytes, TWEntryCuts& cuts);

    // True if the file begins like an object or an array.
    static bool recognises(std::string_view bytes);

    // True if it begins like an array, because a group of an INI file begins in the same way.
    static bool mayBeINI(std::string_view bytes);

    // On failure returns false and sets the problem to one short English clause. Called once.
    bool scan(std::string& problem);

private:
    static constexpr std::size_t None = static_cast<std::size_t>(-1);

    // An object or array that has not ended yet.
    struct Container {
        bool isObject = false;
        bool needsComma = false; // before another item can follow
        bool cutsMember = false; // the latest one
        std::size_t keptComma = None; // the place of the comma after the latest member that is kept
    };

    static char firstByte(std::string_view bytes);
    bool scanAll();
    bool takeNext();
    bool takeComma(Container& inner);
    bool takeMember(Container& inner);
    bool takeValue();
    bool takeScalar();
    void reportScalar(std::string_view text);
    bool beginContainer(bool isObject);
    bool endContainer();
    bool endValue();
    bool takeString(std::string_view& inside);
    unsigned skipPlain();
    bool takeEscape();
    bool takeNumber();
    bool takeDigits();
    bool takeWord(std::string_view word);
    bool skipBlanks();
    bool skipComment();
    char peek() const { return place_ < bytes_.size() ? bytes_[place_] : '\0'; }
    bool take(char byte);
    bool fail(std::string_view problem);

    std::string_view bytes_;
    TWEntryCuts& cuts_;
    std::size_t place_;
    std::vector<Container> open_;
    std::string_view problem_;
};
