#include "formats/TWXMLScanner.h"

#include "formats/TWFileFormats.h"
#include "formats/TWFormatText.h"

#include <algorithm>
#include <expat.h>

namespace {

constexpr std::string_view OutOfMemory = "out of memory";
constexpr std::string_view Declarations = "a document type with declarations of its own";
constexpr std::string_view UnknownEntity = "an unknown entity";
constexpr std::string_view NotAllowed = "an element or a text that is not allowed there, or one is missing";
constexpr std::string_view LongToken = "a tag or a comment that is longer than 1 MB";

// Expat copies each piece and scans an unfinished tag or comment again with each piece.
constexpr std::size_t LongestPiece = std::size_t{ 128 } * 1024;
constexpr std::size_t LongestToken = 1'000'000;

}

struct TWXMLScanner::Handlers {
    static TWXMLScanner& scanner(void* data) { return *static_cast<TWXMLScanner*>(data); }

    static void start(void* data, const XML_Char* name, const XML_Char** attributes)
    {
        scanner(data).startElement(name, attributes);
    }

    static void end(void* data, const XML_Char* name) { scanner(data).endElement(name); }

    static void text(void* data, const XML_Char* text, int length)
    {
        TWXMLScanner& target = scanner(data);
        if (target.problem_.empty() && !target.dialect_->text({ text, static_cast<std::size_t>(length) }))
            target.fail(NotAllowed);
    }

    // Entities can turn a small file into a huge one. The usual line that names the document type declares none.
    static void documentType(void* data, const XML_Char*, const XML_Char*, const XML_Char*, int hasDeclarations)
    {
        if (hasDeclarations)
            scanner(data).fail(Declarations);
    }

    // Expat skips an entity that an external document type might declare, so a name could be read wrongly.
    static void skippedEntity(void* data, const XML_Char*, int) { scanner(data).fail(UnknownEntity); }

    static void install(XML_Parser parser, TWXMLScanner& target)
    {
        XML_SetUserData(parser, &target);
        XML_SetElementHandler(parser, start, end);
        XML_SetStartDoctypeDeclHandler(parser, documentType);
        XML_SetSkippedEntityHandler(parser, skippedEntity);
    }
};

TWXMLScanner::TWXMLScanner(std::string_view bytes, TWEntryCuts& cuts)
    : bytes_(bytes)
    , cuts_(cuts)
    , parser_(XML_ParserCreate(nullptr), XML_ParserFree)
{
}

bool TWXMLScanner::recognises(std::string_view bytes)
{
    const std::size_t first = bytes.find_first_not_of(" \t\r\n", TWFormatText::start(bytes));
    return first != bytes.npos && bytes[first] == '<';
}

bool TWXMLScanner::scan(std::string& problem)
{
    if (!parser_) {
        problem = OutOfMemory;
        return false;
    }
    Handlers::install(parser_.get(), *this);
    for (std::size_t begin = 0; begin < bytes_.size() && problem_.empty(); begin += LongestPiece)
        parse(bytes_.substr(begin, LongestPiece), false);
    if (problem_.empty())
        parse({}, true);
    problem = problem_;
    return problem.empty();
}

void TWXMLScanner::parse(std::string_view piece, bool last)
{
    const XML_Status status = XML_Parse(parser_.get(), piece.data(), static_cast<int>(piece.size()), last);
    if (!problem_.empty())
        return;
    if (status != XML_STATUS_OK)
        return setProblem(XML_ErrorString(XML_GetErrorCode(parser_.get())));
    parsed_ += piece.size();
    const XML_Index pending = XML_GetCurrentByteIndex(parser_.get());
    if (parsed_ - static_cast<std::size_t>(std::max<XML_Index>(pending, 0)) > LongestToken)
        setProblem(LongToken);
}

void TWXMLScanner::setProblem(std::string_view problem)
{
    problem_ = "line " + std::to_string(XML_GetCurrentLineNumber(parser_.get())) + ": ";
    problem_ += problem;
}

// Expat may still call handlers after it was told to stop, so they check for a problem.
void TWXMLScanner::fail(std::string_view problem)
{
    setProblem(problem);
    XML_StopParser(parser_.get(), XML_FALSE);
}

void TWXMLScanner::startElement(const char* name, const char** attributes)
{
    if (!problem_.empty())
        return;
    if (!dialect_) {
        dialect_ = TWXMLDialect::make(name, cuts_);
        if (dialect_->wantsText())
            XML_SetCharacterDataHandler(parser_.get(), Handlers::text);
    }
    if (++depth_ > TWFileFormats::MaximumDepth)
        return fail(TWFileFormats::TooDeep);
    if (!dialect_->start(name, attributes, static_cast<std::size_t>(XML_GetCurrentByteIndex(parser_.get()))))
        fail(NotAllowed);
}

void TWXMLScanner::endElement(const char* name)
{
    if (!problem_.empty())
        return;
    depth_--;
    const auto end = XML_GetCurrentByteIndex(parser_.get()) + XML_GetCurrentByteCount(parser_.get());
    if (!dialect_->end(name, static_cast<std::size_t>(end)))
        fail(NotAllowed);
}
