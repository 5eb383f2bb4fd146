// The detector is the library's own, so its answers are known.
#include <kestra/html/DocumentParser.h>
#include <kestra/platform/MemoryInputStream.h>

#include "../Check.h"
#include "../GermanPage.h"

using namespace Kestra::HTML;
using Kestra::StringNS::CharSet;

void UseDetection() {
    const std::string page = GermanPage();
    GenericParser parser;
    CharSet::Code code = 77;
    CHECK(parser.DetectCharset(page.data(), page.size(), &code) == PARSER_OK && code == CharSet::UTF8);
    Kestra::VFS::MemoryInputStream stream(page);
    code = 77;
    CHECK(parser.DetectCharset(&stream, &code) == PARSER_OK && code == CharSet::UTF8);
}
