#pragma once

#include "formats/TWEntryCuts.h"
#include "formats/TWXMLDialect.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

struct XML_ParserStruct;

// Finds entries in XML files of all kinds; the root element decides the kind. Declarations of entities are refused. Any
// thread.
class TWXMLScanner final {
public:
    // The bytes and the cuts must outlive the scanner.
    TWXMLScanner(std::string_view bytes, TWEntryCuts& cuts);

    // True if the file begins with a tag.
    static bool recognises(std::string_view bytes);

    // On failure returns false and sets the problem to one short English clause. Called once.
    bool scan(std::string& problem);

    // The kind of file, once the root element was met.
    std::string_view formatName() const { return dialect_ ? dialect_->formatName() : "XML"; }

private:
    // The functions that Expat calls. Defined in the .cpp because they need Expat's types.
    struct Handlers;

    void parse(std::string_view piece, bool last);
    void startElement(const char* name, const char** attributes);
    void endElement(const char* name);
    void fail(std::string_view problem);
    void setProblem(std::string_view problem);

    std::string_view bytes_;
    TWEntryCuts& cuts_;
    std::unique_ptr<XML_ParserStruct, void (*)(XML_ParserStruct*)> parser_; // Expat's
    std::unique_ptr<TWXMLDialect> dialect_;
    std::size_t depth_ = 0;
    std::size_t parsed_ = 0; // bytes passed to Expat
    std::string problem_;
};
