#pragma once

#include "plist/TWValue.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Builds one value from the elements that Expat finds. For one file: make a new one for the next.
class TWXMLPropertyListReader final {
public:
    std::optional<TWValue> read(std::string_view bytes, std::string& problem);

private:
    enum class Element { None, PList, Dictionary, Array, Key, String, Integer, Real, True, False, Date, Data };

    // A dictionary or array whose end has not come yet.
    struct Container {
        bool isDictionary = false;
        TWValue::Array items;
        std::vector<TWDictionary::Entry> entries;
        std::optional<std::string> key; // waits for its value
    };

    // Gives Expat the functions to call: they need its types, which are nobody else's business.
    struct Handlers;

    static Element elementNamed(std::string_view name);

    void startElement(std::string_view name);
    void startContainer(bool isDictionary);
    void endElement(std::string_view name);
    void endContainer();
    void endKey();
    void characters(std::string_view text);
    bool mayStart(Element element);
    void add(TWValue value);
    void addInteger();
    void addReal();
    void addDate();
    void addData();
    void fail(std::string problem);

    void* parser_ = nullptr; // Expat's, during read()
    std::string problem_;
    std::optional<TWValue> root_;
    std::vector<Container> open_;
    Element leaf_ = Element::None; // the element without children that is open
    std::string text_; // its text so far
    bool plistSeen_ = false;
};
