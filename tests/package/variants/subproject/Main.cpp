// Includes the library by the names of the installed headers, and a header of its own that has the
// name of one of the library's.
#include <kestra/html.h>
#include <kestra/html/DocumentParser.h>

#include <string>

#include "platform/Export.h"

int main() {
    using namespace Kestra::HTML;
    const std::string page = "<a href=x>y</a>";
    GenericParser parser;
    const bool isParsed = parser.StartParse(65001, GenericParser::DATA_STREAM_8BIT) == PARSER_OK &&
                          parser.ParseBuffer(page.data(), page.size()) == PARSER_OK && parser.EndParse() == PARSER_OK;
    return isParsed && HOST_OWN_EXPORT == 1 ? 0 : 1;
}
