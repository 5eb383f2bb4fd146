// The detector is the system's. It answers what it knows, or is not there or fails, and then there
// is no code.
#include <kestra/html/DocumentParser.h>
#include <kestra/platform/MemoryInputStream.h>

#include "../Check.h"
#include "../GermanPage.h"

using namespace Kestra::HTML;
using Kestra::StringNS::CharSet;

namespace {

bool IsGood(std::uint32_t result, CharSet::Code code) {
    switch (result) {
        case PARSER_OK:
            return code == CharSet::UTF8;
        case PARSER_UNKNOWN_RECOGNIZER:  // which also stands for: no detector
        case PARSER_DETECTOR_FAILED:
            return code == CharSet::UNKNOWN;
        default:
            return false;
    }
}

}  // namespace

void UseDetection() {
    const std::string page = GermanPage();
    GenericParser parser;
    CharSet::Code code = 77;
    const std::uint32_t result = parser.DetectCharset(page.data(), page.size(), &code);
    CHECK(IsGood(result, code));
    Kestra::VFS::MemoryInputStream stream(page);
    code = 77;
    CHECK(parser.DetectCharset(&stream, &code) == result && IsGood(result, code));
}
