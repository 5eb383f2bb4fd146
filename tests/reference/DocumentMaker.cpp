#include "tests/reference/DocumentMaker.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace Kestra::Test {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t READ_SIZE = 16384;   // bytes of one read of a stream
constexpr std::size_t MOST_BYTES = 40000;  // of a long document
constexpr unsigned MOST_ATTEMPTS = 20000;  // of shortening one document

constexpr std::string_view NAMES[] = {"p"sv,   "a"sv,    "br"sv,      "DIV"sv, "h1"sv,   "x:y"sv,
                                      "b/"sv,  "\xE9"sv, "scripts"sv, ""sv,    "a[b]"sv, "meta"sv,
                                      "img"sv, "/"sv,    "x\0y"sv,    "!"sv,   "td"sv,   "styl"sv};
constexpr std::string_view SCRIPTS[] = {"script"sv, "SCRIPT"sv, "Script"sv, "script"sv};
constexpr std::string_view STYLES[] = {"style"sv, "STYLE"sv, "style"sv};
constexpr std::string_view SPACES[] = {" "sv, "\n"sv, "\t "sv, "  "sv, "\r\n"sv, " \f"sv, "\v"sv, "\x85"sv, "\xA0"sv};
constexpr std::string_view WORDS[] = {"a"sv,     "word"sv, "x y"sv,  "\n"sv, "\r\n"sv,     "1>0"sv,
                                      "it's"sv,  "\""sv,   "="sv,    "/"sv,  "\t"sv,       "a/b"sv,
                                      "&amp;"sv, "["sv,    "-"sv,    "]"sv,  "\xE9\xFF"sv, "?"sv,
                                      "\0"sv,    "*/"sv,   "\x85"sv, "--"sv, "]]>"sv,      "\xEF\xBB\xBF"sv};
constexpr std::string_view QUOTES[] = {"'"sv, "\""sv, ""sv};
constexpr std::string_view VALUES[] = {"v"sv,   ""sv,     "a b"sv, "x/"sv,   "/"sv,
                                       "<p>"sv, "a='b"sv, "\\"sv,  "\n"sv,   "?"sv,
                                       "x?"sv,  "\xE9"sv, "<"sv,   "it's"sv, "\x1B$B'\"<\x1B(B"sv,
                                       "\0"sv,  "//"sv,   "\\'"sv};
constexpr std::string_view START_TAG_ENDS[] = {">"sv,  ">"sv,   ">"sv, "/>"sv, " />"sv,
                                               " >"sv, "/ >"sv, ""sv,  "<"sv,  "/"sv};
constexpr std::string_view END_TAG_ENDS[] = {">"sv, ">"sv, ">"sv, " >"sv, " />"sv, "/ >"sv, ""sv, "<"sv, "/x>"sv};
constexpr std::string_view SCRIPT_PARTS[] = {"x=1;"sv,
                                             "'a\\'b'"sv,
                                             "\"a\\\"b\""sv,
                                             "if(a<b)"sv,
                                             "x=/ab+/g;"sv,
                                             "'"sv,
                                             "\""sv,
                                             "\\"sv,
                                             "/"sv,
                                             "\n"sv,
                                             "</b>"sv,
                                             "<b>"sv,
                                             "'</p>'"sv,
                                             "a/b/c"sv,
                                             "/[/]/"sv,
                                             "<"sv,
                                             "<!"sv,
                                             "<?"sv,
                                             "</style>"sv,
                                             "</script x>"sv,
                                             "<!-"sv,
                                             "<![x["sv,
                                             "/\\//"sv,
                                             "\r\n"sv,
                                             "<?php ?>"sv,
                                             "</ p / >"sv,
                                             "</b a=/>"sv,
                                             "<!DOCTYPE x>"sv,
                                             "\"\x1B$B\"/\x1B(B\""sv,
                                             "\x1B$B</\x1B(B"sv,
                                             "</p"sv,
                                             "*/"sv,
                                             "-->"sv,
                                             "]]>"sv,
                                             "\\\"'"sv,
                                             "/>"sv};
constexpr std::string_view LINE_COMMENT_PARTS[] = {
    " a"sv,   "<"sv,  "</script>"sv, "<b>"sv,       "<!D"sv,       "<?x"sv,          "'"sv,
    "<!--"sv, "*/"sv, "//"sv,        "<![CDATA["sv, "<![if x]>"sv, "<![endif]-->"sv, "\r"sv,
    "<!-x"sv, "</"sv, "<![x"sv,      "<<"sv,        "<!"sv,        "<?"sv,           "\\"sv};
constexpr std::string_view BODY_PARTS[] = {" a "sv,     "-"sv,    "--"sv,   "->"sv, "]"sv,   "]]"sv, "]>"sv,
                                           ">"sv,       "<"sv,    "<p>"sv,  "'"sv,  "\""sv,  "\n"sv, "!"sv,
                                           "[if IE]"sv, "-- >"sv, "\xE9"sv, "\0"sv, "<!--"sv};
constexpr std::string_view COMMENT_ENDS[] = {"-->"sv, "-->"sv, "-->"sv, "--->"sv, "--"sv, "-"sv, ""sv, "--!>"sv};
constexpr std::string_view CDATA_ENDS[] = {"]]>"sv, "]]>"sv, "]]>"sv, "]]"sv, "]"sv, "]]]>"sv, ""sv, "]] >"sv};
constexpr std::string_view CDATA_WORDS[] = {"CDATA["sv, "CDATA["sv, "cdata["sv, "CDATA"sv,
                                            "CDATA "sv, "CDAT["sv,  "CDATAX["sv};
constexpr std::string_view CONDITIONAL_WORDS[] = {"if IE"sv,      "if"sv,   "endif"sv, "EndIf"sv,
                                                  "if !(IE 6)"sv, "IF x"sv, "iff"sv,   "else"sv};
constexpr std::string_view CONDITIONAL_TAILS[] = {">"sv,    ">"sv, "-->"sv,   " a\nb >"sv, "]]>"sv,
                                                  "tail"sv, ""sv,  "<!-->"sv, "<>"sv};
constexpr std::string_view KEYWORDS[] = {"DOCTYPE"sv,  "doctype"sv, "ENTITY"sv, ""sv,   "ELEMENT"sv,
                                         " DOCTYPE"sv, "X=Y"sv,     ">"sv,      "A[B"sv};
constexpr std::string_view ITEMS[] = {"html"sv,    "PUBLIC"sv, "\"-//W3C//DTD\""sv,
                                      "'x>y'"sv,   "\"\""sv,   "''"sv,
                                      "x<y"sv,     "a='b'"sv,  "[x]"sv,
                                      "\"<p>\""sv, "%"sv,      "'it"sv,
                                      "\"a"sv,     "/"sv,      "--"sv,
                                      "\\'"sv,     "?"sv};
constexpr std::string_view TARGETS[] = {"php"sv,  "pi"sv,  "xsl"sv, ""sv,  " php"sv, "php?"sv,
                                        "xmlx"sv, "a=b"sv, "[x"sv,  "?"sv, "xm"sv,   "1"sv};
constexpr std::string_view XML_TARGETS[] = {"xml"sv,  "XML"sv,  "xml-stylesheet"sv, "Xml:x"sv,
                                            " xml"sv, "xml-"sv, "xml:?"sv,          "xml/"sv};
constexpr std::string_view XML_ENDS[] = {"?>"sv,  "?>"sv,    " ?>"sv,  "/>"sv,    " />"sv, "/ >"sv, "a/\n>"sv,
                                         ">"sv,   "? >"sv,   ""sv,     "<"sv,     "?"sv,   "x?>"sv, "x/>"sv,
                                         "=?>"sv, "x=y?>"sv, "x=/>"sv, " x ?>"sv, "?\?>"sv};
constexpr std::string_view FREE_PARTS[] = {"echo "sv,   "'a'"sv,    "\"b\""sv,     "?"sv,        "'?>'"sv,
                                           "/* > */"sv, "// x\n"sv, "/"sv,         "*"sv,        "/*"sv,
                                           "//"sv,      "'\\''"sv,  "\n"sv,        "\"\\\"\""sv, "\"\x1B$B\"\x1B(B\""sv,
                                           "??"sv,      "*/"sv,     "/* * > */"sv, "'"sv,        "\""sv,
                                           "<b"sv,      "a/b"sv,    "/?"sv,        "/'"sv};
constexpr std::string_view FREE_ENDS[] = {"?>"sv, "?>"sv, ">"sv, " ?>"sv, "? >"sv, ""sv, "?"sv, "/>"sv};
constexpr std::string_view CHARSET_NAMES[] = {
    "utf-8"sv,     "iso-2022-jp"sv, "iso-2022-kr"sv, "windows-1252"sv, "koi8-r"sv, "utf-16"sv,     ""sv,
    "x-unknown"sv, "UTF-7"sv,       "Shift_JIS"sv,   " utf-8"sv,       "utf-8 "sv, "csISO2022JP"sv};
constexpr std::string_view CONTENTS[] = {"text/html; charset="sv,  "charset="sv,   "charset = "sv, "a;CHARSET="sv,
                                         "charset=a=b;charset="sv, "text/html"sv,  ";;"sv,         "charset"sv,
                                         "charset==x"sv,           " charset\t="sv};
constexpr std::string_view DESIGNATIONS[] = {"$B"sv, "$@"sv, "$(C"sv, "$(D"sv, "$)C"sv, "$*H"sv,   "$+I"sv,
                                             "$A"sv, "$"sv,  "x"sv,   ""sv,    "(B"sv,  "\x1B$B"sv};
constexpr std::string_view RETURNS[] = {"(B"sv, "(B"sv, "(J"sv, ".F"sv, ".A"sv,
                                        "(I"sv, "("sv,  "$B"sv, ""sv,   "\x1B(B"sv};
constexpr std::string_view RUN_PARTS[] = {"<b>"sv, "\"'"sv, "/"sv, "AB"sv, "\n"sv, "\xA4"sv, "//"sv, "\0"sv, "\\"sv};
constexpr std::string_view MARKS[] = {"\xEF\xBB\xBF"sv, "\xEF\xBB"sv, "\xFF\xFE"sv, "\xFE\xFF"sv, "\xFF"sv, "\xEF"sv};
constexpr std::string_view BROKEN[] = {
    "<"sv,        "<!"sv,        "<?"sv,        "<!-"sv,      "<!--"sv,
    "<!["sv,      "<![CDATA["sv, "<![if x]>"sv, "<![endif"sv, "</"sv,
    "</ "sv,      "<>"sv,        "</>"sv,       "< "sv,       "<a / >"sv,
    "<a b=/>"sv,  "</a / >"sv,   "<a b='"sv,    "<a b=\""sv,  "/>"sv,
    "-->"sv,      "]]>"sv,       "<<"sv,        "?>"sv,       "<?xml x/ >"sv,
    "<script>"sv, "</script>"sv, "<style>"sv,   "</style>"sv, "<script/>"sv,
    "/*"sv,       "//"sv,        "*/"sv,        "'"sv,        "\""sv,
    "\\"sv,       "]"sv,         "<!-->"sv,     "<!--->"sv,   "<![CDATA]]>"sv,
    "<![if]>"sv,  "<![if x"sv,   "<!>"sv,       "<?>"sv,      "<?\?>"sv,
    "<!-x"sv,     "<![x]"sv,     "<a b=c/"sv,   "<br/>"sv,    "<meta charset=utf-8>"sv,
    "\x1B$B"sv,   "\x1B(B"sv,    "\x1B"sv};
constexpr char SIGNS[] = {'<', '>', '/', '\'', '"',  '=', ' ', '\n',   '!',
                          '-', '[', ']', '?',  '\\', 's', '*', '\x1B', '\0'};

/// What opens, closes or continues a construct; in soup often only its beginning.
constexpr std::string_view SOUP[] = {"<script>"sv,
                                     "</script>"sv,
                                     "<style>"sv,
                                     "</style>"sv,
                                     "<!--"sv,
                                     "-->"sv,
                                     "<![CDATA["sv,
                                     "]]>"sv,
                                     "<![if x]>"sv,
                                     "<![endif]-->"sv,
                                     "<!DOCTYPE "sv,
                                     "<?xml "sv,
                                     "?>"sv,
                                     "<?php "sv,
                                     "</p>"sv,
                                     "<p "sv,
                                     "/>"sv,
                                     ">"sv,
                                     "<"sv,
                                     "/*"sv,
                                     "*/"sv,
                                     "//"sv,
                                     "\n"sv,
                                     "'"sv,
                                     "\""sv,
                                     "\\"sv,
                                     "="sv,
                                     "a"sv,
                                     " "sv,
                                     "\x1B$B"sv,
                                     "\x1B(B"sv,
                                     "/"sv,
                                     "?"sv,
                                     "-"sv,
                                     "["sv,
                                     "]"sv,
                                     "</"sv,
                                     "<!"sv,
                                     "<?"sv,
                                     "a=b"sv,
                                     " c='d'"sv,
                                     " e=\"f\""sv,
                                     "<br/>"sv,
                                     "<a b=/>"sv,
                                     "<!-"sv,
                                     "<!["sv,
                                     "<?xml-x a/ >"sv,
                                     "\xEF\xBB\xBF"sv,
                                     "\0"sv,
                                     "<meta charset=iso-2022-jp>"sv};

constexpr std::string_view CONTENT_ELEMENTS[] = {"script"sv,  "script"sv,   "script"sv,   "SCRIPT"sv,  "script"sv,
                                                 "style"sv,   "Style"sv,    "title"sv,    "xmp"sv,     "iframe"sv,
                                                 "noembed"sv, "noframes"sv, "textarea"sv, "TextArea"sv};
constexpr std::string_view CONTENT_TAG_ENDS[] = {">"sv,   ">"sv,   ">"sv,     ">"sv,       " >"sv,  "/>"sv,
                                                 " />"sv, "\n>"sv, " a=b>"sv, " a='>'>"sv, "/a>"sv, "/ a=b>"sv,
                                                 "\v>"sv, ""sv,    "[a]>"sv,  " / >"sv};
constexpr std::string_view CONTENT_PARTS[] = {
    "<!--"sv,     "<!--"sv,     "-->"sv,      "-->"sv,      "--"sv,       "->"sv,        "-"sv,        "<!-"sv,
    "<!"sv,       "<script"sv,  "<script>"sv, "<Script/"sv, "</script"sv, "</script>"sv, "</scrip"sv,  "</script "sv,
    "</style>"sv, "</title>"sv, "</xmp/"sv,   "</"sv,       "<"sv,        ">"sv,         "/"sv,        " "sv,
    "\n"sv,       "'"sv,        "\""sv,       "//"sv,       "/*"sv,       "<b>"sv,       "</b>"sv,     "<![CDATA["sv,
    "<?"sv,       "\0"sv,       "\x1B"sv,     "\x1B$B"sv,   "\x1B(B"sv,   "\x1B-"sv,     "\xE9\xFF"sv, "\xA0"sv};

/// Makes one document.
class Making {
public:
    Making(std::uint64_t seed, const std::vector<std::string>& sourcePages) : dice(seed), pages(sourcePages) {}

    MadeDocument Make() {
        MadeDocument made;
        made.charset = MakeCharset();
        target = MakeLength();
        switch (dice.Below(10)) {
            case 0:
            case 1:
            case 2:
                MakeOfPage();
                break;
            case 3:
            case 4:
            case 5:
                MakeSoup();
                break;
            default:
                MakeOfGrammar();
        }
        made.bytes = std::move(document);
        return made;
    }

    MadeDocument MakeWithContents() {
        MadeDocument made;
        made.charset = dice.OneIn(3) ? StringNS::CharSet::ISO_2022_JP : StringNS::CharSet::WINDOWS_1252;
        for (std::size_t items = dice.Between(1, 6); items > 0; --items) {
            if (dice.OneIn(3))
                AddItem();
            const std::string_view element = dice.OneIn(60) ? "plaintext"sv : dice.Pick(CONTENT_ELEMENTS);
            document += dice.OneIn(40) ? "< "sv : "<"sv;
            document += element;
            document += dice.Pick(CONTENT_TAG_ENDS);
            for (std::size_t parts = dice.Below(10); parts > 0; --parts)
                document += dice.Pick(CONTENT_PARTS);
            if (dice.OneIn(8))
                continue;
            document += "</";
            document += element;
            document += dice.Pick(CONTENT_TAG_ENDS);
        }
        made.bytes = std::move(document);
        return made;
    }

private:
    StringNS::CharSet::Code MakeCharset() {
        constexpr StringNS::CharSet::Code OTHERS[] = {50220, 50221, 50222, 50225, 50221, 50225,
                                                      0,     0,     0,     65000, 65001, 932};
        return dice.OneIn(3) ? OTHERS[dice.Below(std::size(OTHERS))] : StringNS::CharSet::WINDOWS_1252;
    }

    std::size_t MakeLength() {
        if (dice.OneIn(60))
            return dice.Between(READ_SIZE - 200, MOST_BYTES);
        return dice.OneIn(12) ? dice.Between(400, 4000) : dice.Between(10, 400);
    }

    // Documents of the grammar

    void MakeOfGrammar() {
        if (dice.OneIn(12))
            document += dice.Pick(MARKS);
        while (document.size() < target) {
            if (target >= READ_SIZE && dice.OneIn(3))
                FillUpToTheEndOfARead();
            AddItem();
        }
        if (dice.OneIn(2))
            Mutate(1 + dice.Below(6));
        if (dice.OneIn(6))
            document.resize(dice.Below(document.size() + 1));
    }

    /// One token of such a length that the next construct lies across the end of a read, or nearly
    /// so.
    void FillUpToTheEndOfARead() {
        const std::size_t margin = dice.Below(24) + 8;
        const std::size_t used = document.size() % READ_SIZE;
        if (used + margin + 200 >= READ_SIZE)
            return;
        const std::size_t length = READ_SIZE - used - margin;
        switch (dice.Below(4)) {
            case 0:
                document += "<!--" + std::string(length - 7, '-') + "-->";
                return;
            case 1:
                document += "<p a='" + std::string(length - 8, '<') + "'>";
                return;
            case 2:
                document += "<script>'" + std::string(length - 10, '/') + "'";
                return;
            default:
                document += std::string(length, dice.OneIn(2) ? '\n' : 'x');
        }
    }

    void AddItem() {
        switch (dice.Below(20)) {
            case 0:
            case 1:
                AddText();
                return;
            case 2:
            case 3:
                AddStartTag(dice.Pick(NAMES));
                return;
            case 4:
            case 5:
                AddEndTag(dice.Pick(NAMES));
                return;
            case 6:
            case 7:
            case 8:
                AddElement(dice.Pick(SCRIPTS), dice.Pick(SCRIPTS));
                return;
            case 9:
                AddElement(dice.Pick(STYLES), dice.Pick(STYLES));
                return;
            case 10:
                AddEndTag(dice.OneIn(2) ? dice.Pick(SCRIPTS) : dice.Pick(STYLES));
                return;
            case 11:
                AddMarkupComment();
                return;
            case 12:
                AddCData();
                return;
            case 13:
                AddConditional();
                return;
            case 14:
                AddDeclaration();
                return;
            case 15:
                AddXmlDeclaration();
                return;
            case 16:
                AddInstruction();
                return;
            case 17:
                AddMeta();
                return;
            case 18:
                AddIso2022();
                return;
            default:
                if (dice.OneIn(2))
                    document += dice.Pick(BROKEN);
                else
                    document += dice.Byte();
        }
    }

    void AddText() {
        for (std::size_t words = dice.Between(1, 4); words > 0; --words)
            document += dice.Pick(WORDS);
    }

    void AddSpace() {
        document += dice.Pick(SPACES);
    }

    void AddStartTag(std::string_view name) {
        document += '<';
        if (dice.OneIn(8))
            AddSpace();
        document += name;
        AddAttributes(4);
        document += dice.Pick(START_TAG_ENDS);
    }

    void AddEndTag(std::string_view name) {
        document += "</";
        if (dice.OneIn(8))
            AddSpace();
        document += name;
        if (dice.OneIn(6))
            AddAttributes(3);
        document += dice.Pick(END_TAG_ENDS);
    }

    void AddAttributes(std::size_t bound) {
        for (std::size_t count = dice.Below(bound); count > 0; --count) {
            AddSpace();
            document += dice.Pick(WORDS);
            if (dice.OneIn(3))
                continue;
            if (dice.OneIn(4))
                AddSpace();
            document += '=';
            if (dice.OneIn(4))
                AddSpace();
            AddQuoted(dice.Pick(VALUES));
        }
    }

    void AddQuoted(std::string_view value) {
        const std::string_view quote = dice.Pick(QUOTES);
        document += quote;
        document += value;
        document += quote;
    }

    /// A script or style element with its content.
    void AddElement(std::string_view startName, std::string_view endName) {
        if (dice.OneIn(4)) {
            AddStartTag(startName);
        } else {
            document += '<';
            document += startName;
            document += '>';
        }
        for (std::size_t parts = dice.Below(8); parts > 0; --parts)
            AddScriptPart();
        if (!dice.OneIn(8))
            AddEndTag(endName);
    }

    void AddScriptPart() {
        switch (dice.Below(10)) {
            case 0:
                AddEndTag(dice.Pick(NAMES));
                return;
            case 1:
            case 2:
                document += "//";
                for (std::size_t parts = dice.Below(5); parts > 0; --parts)
                    document += dice.Pick(LINE_COMMENT_PARTS);
                document += dice.OneIn(6) ? "" : "\n";
                return;
            case 3:
                document += "/*";
                AddBody();
                document += dice.OneIn(6) ? "" : "*/";
                return;
            case 4:
                AddMarkupComment();
                return;
            case 5:
                if (dice.OneIn(2))
                    AddCData();
                else
                    AddConditional();
                return;
            default:
                document += dice.Pick(SCRIPT_PARTS);
        }
    }

    void AddBody() {
        for (std::size_t parts = dice.Below(6); parts > 0; --parts)
            document += dice.Pick(BODY_PARTS);
    }

    void AddMarkupComment() {
        document += "<!--";
        AddBody();
        document += dice.Pick(COMMENT_ENDS);
    }

    void AddCData() {
        document += "<![";
        document += dice.Pick(CDATA_WORDS);
        AddBody();
        document += dice.Pick(CDATA_ENDS);
    }

    void AddConditional() {
        document += "<![";
        document += dice.Pick(CONDITIONAL_WORDS);
        document += dice.OneIn(10) ? "" : "]";
        document += dice.Pick(CONDITIONAL_TAILS);
    }

    void AddDeclaration() {
        document += "<!";
        document += dice.Pick(KEYWORDS);
        for (std::size_t items = dice.Below(5); items > 0; --items) {
            if (!dice.OneIn(8))
                AddSpace();
            document += dice.Pick(ITEMS);
        }
        if (dice.OneIn(3))
            AddSpace();
        document += dice.OneIn(10) ? "<" : ">";
    }

    void AddXmlDeclaration() {
        document += "<?";
        document += dice.Pick(XML_TARGETS);
        AddAttributes(4);
        if (dice.OneIn(2))
            AddSpace();
        document += dice.Pick(XML_ENDS);
    }

    void AddInstruction() {
        document += "<?";
        document += dice.Pick(TARGETS);
        if (!dice.OneIn(6))
            AddSpace();
        for (std::size_t parts = dice.Below(6); parts > 0; --parts)
            document += dice.Pick(FREE_PARTS);
        document += dice.Pick(FREE_ENDS);
    }

    void AddMeta() {
        document += dice.OneIn(4) ? "<META" : "<meta";
        for (std::size_t count = dice.Between(1, 3); count > 0; --count) {
            AddSpace();
            switch (dice.Below(3)) {
                case 0:
                    document += dice.OneIn(4) ? "Charset=" : "charset=";
                    AddQuoted(dice.Pick(CHARSET_NAMES));
                    break;
                case 1:
                    document += "content=";
                    AddQuoted(std::string(dice.Pick(CONTENTS)) + std::string(dice.Pick(CHARSET_NAMES)));
                    break;
                default:
                    document += dice.OneIn(2) ? "http-equiv=Content-Type" : "charset";
            }
        }
        document += dice.OneIn(3) ? "/>" : ">";
    }

    void AddIso2022() {
        document += dice.OneIn(4) ? "\"" : "";
        document += '\x1B';
        document += dice.Pick(DESIGNATIONS);
        for (std::size_t parts = dice.Below(5); parts > 0; --parts)
            document += dice.Pick(RUN_PARTS);
        document += '\x1B';
        document += dice.Pick(RETURNS);
    }

    // Windows of pages

    void MakeOfPage() {
        const std::string& page = pages[dice.Below(pages.size())];
        // Up to 4 KB, but mostly shorter.
        const std::size_t window = target < READ_SIZE ? dice.Between(100, dice.Between(100, 4096)) : target;
        const std::size_t length = std::min(window, page.size());
        if (dice.OneIn(4))
            document += dice.Pick(BROKEN);
        document += page.substr(dice.Below(page.size() - length + 1), length);
        Mutate(1 + dice.Below(target < READ_SIZE ? 12 : 40));
    }

    void Mutate(std::size_t mutations) {
        for (; mutations > 0 && !document.empty(); --mutations) {
            const std::size_t at = dice.Below(document.size());
            const std::size_t length =
                1 + dice.Below(std::min<std::size_t>(dice.OneIn(4) ? 40 : 6, document.size() - at));
            MutateAt(at, length);
        }
    }

    void MutateAt(std::size_t at, std::size_t length) {
        switch (dice.Below(6)) {
            case 0:
                document.erase(at, length);
                return;
            case 1:
                document.insert(at, dice.OneIn(2) ? dice.Pick(BROKEN) : dice.Pick(SOUP));
                return;
            case 2:
                document[at] = SIGNS[dice.Below(std::size(SIGNS))];
                return;
            case 3:
                document.insert(dice.Below(document.size() + 1), document.substr(at, length));
                return;
            case 4:
                std::swap(document[at], document[dice.Below(document.size())]);
                return;
            default:
                document.insert(at, 1, dice.Byte());
        }
    }

    // Soup

    void MakeSoup() {
        // Long ones would be one construct that nothing closes.
        const std::size_t length = std::min<std::size_t>(target, 4000);
        if (dice.OneIn(2))
            document += dice.OneIn(3) ? "<style>" : "<script>";
        while (document.size() < length) {
            const std::string_view token = dice.Pick(SOUP);
            document += token.substr(0, dice.OneIn(3) ? dice.Between(1, token.size()) : token.size());
            if (dice.OneIn(10))
                document += dice.Byte();
        }
    }

    Dice dice;
    const std::vector<std::string>& pages;
    std::string document;
    std::size_t target = 0;  // bytes, about
};

}  // namespace

Dice::Dice(std::uint64_t seed) : engine(seed) {}

std::size_t Dice::Below(std::size_t bound) {
    return static_cast<std::size_t>(engine() % bound);
}

std::size_t Dice::Between(std::size_t least, std::size_t most) {
    return least + Below(most - least + 1);
}

bool Dice::OneIn(std::size_t bound) {
    return Below(bound) == 0;
}

char Dice::Byte() {
    return static_cast<char>(static_cast<unsigned char>(Below(256)));
}

DocumentMaker::DocumentMaker(const std::vector<std::string>* pages) : sourcePages(pages) {}

MadeDocument DocumentMaker::Make(std::uint64_t seed) {
    return Making(seed, *sourcePages).Make();
}

MadeDocument DocumentMaker::MakeWithContents(std::uint64_t seed) {
    return Making(seed, *sourcePages).MakeWithContents();
}

std::vector<std::string> ReadPages(const std::string& folder) {
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() == ".html")
            paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    std::vector<std::string> pages;
    for (const std::filesystem::path& path : paths) {
        std::ifstream file(path, std::ios::binary);
        pages.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
        if (!file || pages.back().empty())
            throw std::runtime_error("cannot read " + path.string());
    }
    if (pages.empty())
        throw std::runtime_error("no page in " + folder);
    return pages;
}

void ForEachString(std::string_view prefix, char first, std::size_t maxLength,
                   const std::function<bool(std::string_view)>& run) {
    for (std::size_t length = 1; length <= maxLength; ++length) {
        // The characters after the first one count like digits.
        std::vector<std::size_t> digits(length - 1);
        std::string text = std::string(prefix) + first + std::string(length - 1, ENUMERATED_CHARACTERS[0]);
        const std::size_t begin = prefix.size() + 1;
        for (bool more = true; more;) {
            if (!run(text))
                return;
            more = false;
            for (std::size_t i = digits.size(); i > 0 && !more; --i) {
                std::size_t& digit = digits[i - 1];
                digit = (digit + 1) % ENUMERATED_CHARACTERS.size();
                text[begin + i - 1] = ENUMERATED_CHARACTERS[digit];
                more = digit != 0;
            }
        }
    }
}

std::string Shorten(std::string document, const std::function<bool(std::string_view)>& fails) {
    unsigned attempts = 0;
    for (bool shortened = true; shortened;) {
        shortened = false;
        for (std::size_t length = std::max<std::size_t>(document.size() / 2, 1); length > 0; length /= 2) {
            for (std::size_t at = 0; at + length <= document.size();) {
                if (++attempts > MOST_ATTEMPTS)
                    return document;
                std::string shorter = document;
                shorter.erase(at, length);
                if (fails(shorter)) {
                    document = std::move(shorter);
                    shortened = true;
                } else {
                    at += length;
                }
            }
        }
    }
    return document;
}

}  // namespace Kestra::Test
