#include <libxml/HTMLparser.h>

#include <algorithm>

#include "bench/peers/Peers.h"

namespace Kestra::Bench {

namespace {

std::uint64_t* Counted(void* context) {
    return static_cast<std::uint64_t*>(context);
}

void StartElement(void* context, const xmlChar*, const xmlChar** attributes) {
    ++*Counted(context);
    for (; attributes != nullptr && *attributes != nullptr; attributes += 2)
        ++*Counted(context);
}

void EndElement(void* context, const xmlChar*) {
    ++*Counted(context);
}

void Characters(void* context, const xmlChar*, int length) {
    *Counted(context) += static_cast<std::uint64_t>(length);
}

void Comment(void* context, const xmlChar*) {
    ++*Counted(context);
}

}  // namespace

std::uint64_t ReadWithLibxml2(const std::string& document) {
    std::uint64_t counted = 0;
    htmlSAXHandler handler{};
    handler.startElement = StartElement;
    handler.endElement = EndElement;
    handler.characters = Characters;
    handler.cdataBlock = Characters;
    handler.ignorableWhitespace = Characters;
    handler.comment = Comment;
    const htmlParserCtxtPtr parser =
        htmlCreatePushParserCtxt(&handler, &counted, nullptr, 0, nullptr, XML_CHAR_ENCODING_UTF8);
    if (parser == nullptr)
        return 0;
    htmlCtxtUseOptions(parser, HTML_PARSE_RECOVER | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_NONET);
    for (std::size_t fed = 0; fed < document.size(); fed += PEER_PIECE)
        htmlParseChunk(parser, document.data() + fed, static_cast<int>(std::min(PEER_PIECE, document.size() - fed)), 0);
    htmlParseChunk(parser, nullptr, 0, 1);
    htmlFreeParserCtxt(parser);
    return counted;
}

}  // namespace Kestra::Bench
