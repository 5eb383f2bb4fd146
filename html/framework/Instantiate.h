#pragma once

#include <string>

#include "platform/Characters.h"

/// @file
/// Names the two flavours in which every template of the library exists. Not installed.

/// Ends the source file of a class template.
#define KESTRA_HTML_INSTANTIATE(Template)       \
    template class Template<char, std::string>; \
    template class Template<::Kestra::WideChar, ::Kestra::WideString>

/// The same for a struct template.
#define KESTRA_HTML_INSTANTIATE_STRUCT(Template) \
    template struct Template<char, std::string>; \
    template struct Template<::Kestra::WideChar, ::Kestra::WideString>

/// Ends the source file of a recognizer: its record, its base and the recognizer itself.
#define KESTRA_HTML_INSTANTIATE_RECOGNIZER(Kind)                                                     \
    KESTRA_HTML_INSTANTIATE_STRUCT(Kind##SimpleParserData);                                          \
    template class SimpleParser<char, std::string, Kind##SimpleParserData<char, std::string>>;       \
    template class SimpleParser<WideChar, WideString, Kind##SimpleParserData<WideChar, WideString>>; \
    KESTRA_HTML_INSTANTIATE(Kind##SimpleParser)
