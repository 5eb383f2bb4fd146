#pragma once

#include <kestra/html/parser/GenericParser.h>

#include <string>

/// A page in UTF-8, long enough for the detector.
inline std::string GermanPage() {
    std::string page;
    while (page.size() < Kestra::HTML::GenericParser::DETECTCHARSET_MIN_SIZE)
        page += "<p>gr\xC3\xBC\xC3\x9F Gott</p>\n";
    return page;
}
