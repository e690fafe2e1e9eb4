#pragma once

#include "plist/TWPropertyListBudget.h"
#include "plist/TWValue.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct XML_ParserStruct;

// Reads one XML property list: builds its value from the elements that Expat finds while the bytes arrive. Any thread.
class TWXMLPropertyListReader final {
public:
    TWXMLPropertyListReader();
    TWXMLPropertyListReader(const TWXMLPropertyListReader&) = delete;

    // Returns false once the file is refused; further pieces change nothing.
    bool take(std::string_view piece);

    // Called once, after the last piece. On failure returns nothing and sets the problem to one short English clause.
    std::optional<TWValue> finish(std::string& problem);

private:
    enum class Element { None, PList, Dictionary, Array, Key, String, Integer, Real, True, False, Date, Data };

    // A dictionary or array that has not ended yet.
    struct Container {
        bool isDictionary = false;
        TWValue::Array items;
        std::vector<TWDictionary::Entry> entries;
        std::optional<std::string> key; // read, but its value is not
    };

    // The functions that Expat calls. Defined in the .cpp because they need Expat's types.
    struct Handlers;

    static Element elementNamed(std::string_view name);

    void parse(std::string_view piece, bool last);

    void startElement(std::string_view name);
    void startContainer(bool isDictionary);
    void endElement(std::string_view name);
    void endContainer();
    void endKey();
    void characters(std::string_view text);
    bool mayStart(Element element);
    void add(TWValue value);
    void addString();
    void addInteger();
    void addReal();
    void addDate();
    void addData();
    void fail(std::string_view problem);
    bool charged(bool success);

    std::unique_ptr<XML_ParserStruct, void (*)(XML_ParserStruct*)> parser_; // Expat's
    std::size_t parsed_ = 0; // bytes passed to Expat
    TWPropertyListBudget budget_;
    std::string problem_;
    std::optional<TWValue> root_;
    std::vector<Container> open_;
    Element leaf_ = Element::None; // the open element that has text and no children
    std::string text_; // its text so far
    bool plistSeen_ = false;
};
