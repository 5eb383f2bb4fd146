#include "tests/html/parser/RandomTokens.h"

#include <algorithm>
#include <initializer_list>

namespace Kestra::Test {

namespace {

constexpr std::string_view LETTERS = "abcdefghijklmnopqrstuvwxyz";
constexpr std::string_view BLANKS = " \t\r\n\f";
constexpr std::string_view PHRASE = "abcdefghijklmnopqrstuvwxyz    .,;:()\n";  // means nothing in any construct

/// Not `operator+`, which makes its operands in any order, another one with each compiler.
std::string Join(std::initializer_list<std::string> parts) {
    std::string joined;
    for (const std::string& part : parts)
        joined += part;
    return joined;
}

}  // namespace

std::size_t RandomTokens::Below(std::size_t limit) {
    return static_cast<std::size_t>(engine() % limit);
}

std::size_t RandomTokens::Length() {
    const std::size_t choice = Below(256);
    return 1 + Below(choice == 0 ? longest : std::min<std::size_t>(longest, choice < 16 ? 400 : 40));
}

std::string RandomTokens::Pick(std::string_view characters, std::size_t size) {
    std::string text(size, ' ');
    for (char& character : text)
        character = characters[Below(characters.size())];
    return text;
}

std::string RandomTokens::Text(std::size_t size) {
    return Pick(PHRASE, size);
}

std::string RandomTokens::Word() {
    return Pick(LETTERS, Length());
}

std::string RandomTokens::Space() {
    return Below(4) != 0 ? " " : Pick(BLANKS, Length());
}

std::string RandomTokens::OptionalSpace() {
    return Below(4) != 0 ? "" : Space();
}

/// Never that of a script or a style sheet.
std::string RandomTokens::TagName() {
    return Join({"x", Word()});
}

std::string RandomTokens::Phrase() {
    return Text(Length());
}

/// With the white space before it.
std::string RandomTokens::Attribute() {
    const std::string start = Join({Space(), Word()});
    const std::string equals = Join({OptionalSpace(), "=", OptionalSpace()});
    switch (Below(6)) {
        case 0:
            return start;
        case 1:
            return Join({start, equals, "'", Phrase(), "\"'"});
        case 2:
            return Join({start, equals, Word()});
        case 3:
            return Join({start, equals, (Below(2) != 0 ? "\"\"" : "''")});
        default:
            return Join({start, equals, "\"", Phrase(), "'\""});
    }
}

/// None in every second list; in one of 64 many.
std::string RandomTokens::Attributes() {
    std::string list;
    if (Below(2) != 0) {
        for (std::size_t count = 1 + Below(Below(32) != 0 ? 6 : 40); count > 0; --count)
            list += Attribute();
    }
    return list;
}

std::string RandomTokens::StartTag() {
    const std::string start = Join({"<", OptionalSpace(), TagName()});
    switch (Below(8)) {
        case 0:
            return Join({start, Attributes(), Space(), "/>"});
        case 1:
            return Join({start, "/>"});
        case 2:
            return Join({start, Attributes(), Space(), Word(), "=", OptionalSpace(), ">"});
        case 3:
            return Join({start, Attributes(), Space(), ">"});
        default:
            return Join({start, Attributes(), ">"});
    }
}

std::string RandomTokens::EndTag() {
    const std::string start = Join({"</", OptionalSpace(), TagName()});
    switch (Below(8)) {
        case 0:
            return Join({start, OptionalSpace(), "<", TagName(), ">"});  // ended by the "<" of the next tag
        case 1:
            return Join({start, Attributes(), Space(), Word(), "=", Word(), "/>"});
        case 2:
            return Join({start, Attributes(), Space(), ">"});
        default:
            return Join({start, OptionalSpace(), ">"});
    }
}

std::string RandomTokens::Comment() {
    switch (Below(5)) {
        case 0:
            return Join({"<!--[if ", Word(), "]>", Phrase(), "<![endif]-->"});
        case 1:
            return Join({"<!--[if !", Word(), "]><!-->", Phrase(), "<!--<![endif]-->"});
        case 2:
            return Join({"<!--", Phrase(), "-- >", Phrase(), "- --->"});
        default:
            return Join({"<!--", Phrase(), "-->"});
    }
}

std::string RandomTokens::Section() {
    switch (Below(5)) {
        case 0:
            return Join({"<![if ", Phrase(), "]>", Phrase(), "<![endif]>"});
        case 1:
            return Join(
                {"<![if ", Phrase(), "]", Phrase(), ">", Phrase(), "<![EndIf", Space(), Phrase(), "]", Phrase(), ">"});
        case 2:
            return Join({"<![CDATA[", Phrase(), "]]", Phrase()});  // ended without a ">"
        default:
            return Join({"<![cdata[", Phrase(), "]>", Phrase(), "]]>"});
    }
}

std::string RandomTokens::Declaration() {
    std::string declaration = Join({"<!", OptionalSpace(), (Below(2) != 0 ? "DOCTYPE" : Word())});
    for (std::size_t count = Below(Below(32) != 0 ? 5 : 40); count > 0; --count) {
        declaration += Space();
        switch (Below(4)) {
            case 0:
                declaration += Join({"\"", Phrase(), "'\""});
                break;
            case 1:
                declaration += Join({"'", Phrase(), "\"'"});
                break;
            case 2:
                declaration += Below(2) != 0 ? "\"\"" : Join({"[", Space(), Word(), Space(), "]"});
                break;
            default:
                declaration += Word();
                break;
        }
    }
    return Join({declaration, OptionalSpace(), ">"});
}

std::string RandomTokens::Instruction() {
    switch (Below(6)) {
        case 0:
            return Join({"<?", OptionalSpace(), "xml", Attributes(), "?>"});
        case 1:
            return Join({"<?xml-", Word(), Attributes(), Space(), "?>"});
        case 2:
            return Join({"<?xml:", Word(), Attributes(), Space(), Word(), "/>"});
        case 3:
            return Join(
                {"<?php ", Phrase(), "'", Phrase(), "?>\\''", Phrase(), "\"", Phrase(), "?>\\\"\"", Phrase(), "?>"});
        case 4:
            return Join({"<?", OptionalSpace(), "= ", Phrase(), "/*", Phrase(), "?>*/", Phrase(), "//", Word(), "?>\n",
                         Phrase(), "a ? b / c?>"});
        default:
            return Join({"<?", TagName(), ">"});
    }
}

/// What a page of a server holds: to the tokenizer start tags with odd names.
std::string RandomTokens::ServerTag() {
    switch (Below(3)) {
        case 0:
            return Join({"<%@ ", Word(), "=\"", Phrase(), "\" %>"});
        case 1:
            return Join({"<%=\"", Phrase(), "\" %>"});
        default:
            return Join({"<% ", Word(), " ", Word(), " %>"});
    }
}

std::string RandomTokens::Script() {
    std::string script = Join({"<script", Attributes(), ">"});
    for (std::size_t count = Below(16); count > 0; --count)
        script += ScriptItem();
    return Join({script, "\n</", OptionalSpace(), "SCRIPT", OptionalSpace(), ">"});
}

std::string RandomTokens::ScriptItem() {
    switch (Below(12)) {
        case 0:
            return Join({"'", Phrase(), "\\'\"</", Word(), ">'"});
        case 1:
            return Join({"\"", Phrase(), "\\\"'<!--\""});
        case 2:
            return Join({"/*", Phrase(), "**'\"</", Word(), "* /*/"});
        case 3:
            return Join({"//", Word(), "'\"</", Word(), "<", Word(), "<!", Word(), "<?\n"});
        case 4:
            return Join({"= /", Word(), "\\/", Word(), "\n"});
        case 5:
            return Join({"</", TagName(), Attributes(), OptionalSpace(), ">"});  // text, as it stands in a script
        case 6:
            return Join({" < ", Word(), " <", Word(), "<!", Word(), "<?", Word()});
        case 7:
            return Comment();
        case 8:
            return Section();
        case 9:
            return Join({"//", Word(), Comment()});
        case 10:
            return Join({"//", Word(), Section()});
        default:
            return Phrase();
    }
}

std::string RandomTokens::Style() {
    std::string style = Join({"<style", Attributes(), ">"});
    for (std::size_t count = Below(8); count > 0; --count)
        style += StyleItem();
    return Join({style, "</style", OptionalSpace(), ">"});
}

std::string RandomTokens::StyleItem() {
    switch (Below(6)) {
        case 0:
            return Join({"{content:'", Phrase(), "\\'\"'}"});
        case 1:
            return Join({"{content:\"", Phrase(), "\\\"'\"}"});
        case 2:
            return Join({"/*", Phrase(), "**'\"*/"});
        case 3:
            return Join({"a / b // c ", Word()});
        case 4:
            return Comment();
        default:
            return Phrase();
    }
}

std::string RandomTokens::Next() {
    switch (Below(16)) {
        case 0:
        case 1:
            return EndTag();
        case 2:
        case 3:
            return Phrase();
        case 4:
            return Join({"&amp;", Phrase(), "&#x", Word(), ";"});
        case 5:
            return Comment();
        case 6:
            return Section();
        case 7:
            return Declaration();
        case 8:
            return Instruction();
        case 9:
            return ServerTag();
        case 10:
            return Script();
        case 11:
            return Style();
        default:
            return StartTag();
    }
}

std::string RandomTokens::NextJunk() {
    switch (Below(8)) {
        case 0:
            return Join({"<!-", Phrase()});
        case 1:
            return Join({"<![", TagName(), "[", Phrase()});
        case 2:
            return Join({"<", TagName(), Attributes(), Space(), "/ ", Phrase()});
        case 3:
            return Join({"<", TagName(), Attributes(), Space(), Word(), "=\"", Phrase(), "\"/ ", Phrase()});
        case 4:
            return Join({"</", TagName(), Attributes(), Space(), Word(), "/ ", Phrase()});
        case 5:
            return Join({"<!", Word(), " \"", Phrase(), "\" ", Word(), "<x>", Phrase()});
        case 6:
            return Join({"<?xml", Attributes(), Space(), ">", Phrase()});
        default:
            return Join({"<script>//", Phrase(), "<!-", Phrase(), "\n</script>"});
    }
}

std::string RandomTokens::NextPlain() {
    const std::string attributes =
        Join({" first=\"", Phrase(), "\" second='", Phrase(), "' third=", Word(), " fourth"});
    switch (Below(10)) {
        case 0:
            return Join({"</", Word(), ">"});
        case 1:
            return Join({"<!--", Phrase(), "-->"});
        case 2:
            return Join({"<!", Word(), " ", Word(), " \"", Phrase(), "\">"});
        case 3:
            return Join({"<?", Word(), " first=\"", Phrase(), "\" ?>"});
        case 4:
            return Join({"<script", attributes, ">", Phrase(), "'", Phrase(), "' < \"", Phrase(), "\"/*", Phrase(),
                         "*/</script>"});
        case 5:
            return Join({"<style", attributes, ">", Phrase(), " < ", Phrase(), "</style>"});
        case 6:
            return Join({"<", TagName(), attributes, "/>"});
        case 7:
            return Join({"<", TagName(), attributes, ">"});
        default:
            return Phrase();
    }
}

}  // namespace Kestra::Test
