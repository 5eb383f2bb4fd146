#include "tests/support/DocumentMaker.h"

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
constexpr std::string_view SIGNS = "<>/'\"= \n!-[]?\\s*\x1B\0"sv;

const RandomGrammar GRAMMAR({
    {"name", "p|a|br|DIV|h1|x:y|b/|\xE9|scripts||a[b]|meta|img|/|x\0y|!|td|styl"sv},
    {"script", "script|SCRIPT|Script|script"sv},
    {"style", "style|STYLE|style"sv},
    {"space", " |\n|\t |  |\r\n| \f|\v|\x85|\xA0"sv},
    {"word", "a|word|x y|\n|\r\n|1>0|it's|\"|=|/|\t|a/b|&amp;|[|-|]|\xE9\xFF|?|\0|*/|\x85|--|]]>|\xEF\xBB\xBF"sv},
    {"value", "v||a b|x/|/|<p>|a='b|\\|\n|?|x?|\xE9|<|it's|\x1B$B'\"<\x1B(B|\0|//|\\'"sv},
    {"start-tag-end", ">|>|>|/>| />| >|/ >||<|/"sv},
    {"end-tag-end", ">|>|>| >| />|/ >||<|/x>"sv},
    {"text", "{word*1-4}"sv},
    {"quoted", "'{value}'|\"{value}\"|{value}"sv},
    {"attribute", "{space}{word}{|2:{|||{space}}={|||{space}}{quoted}}"sv},
    {"opener", "<{7:|{space}}"sv},
    {"start-tag", "{opener}{name}{attribute*0-3}{start-tag-end}"sv},
    {"end-opener", "</{7:|{space}}"sv},
    {"end-of-tag", "{5:|{attribute*0-2}}{end-tag-end}"sv},
    {"end-tag", "{end-opener}{name}{end-of-tag}"sv},
    {"end-of-script", "{end-opener}{script}{end-of-tag}"sv},
    {"end-of-style", "{end-opener}{style}{end-of-tag}"sv},
    {"script-text",
     "x=1;|'a\\'b'|\"a\\\"b\"|if(a<b)|x=/ab+/g;|'|\"|\\|/|\n|</b>|<b>|'</p>'|a/b/c|/[/]/|<|<!|<?|"
     "</style>|</script x>|<!-|<![x[|/\\//|\r\n|<?php ?>|</ p / >|</b a=/>|<!DOCTYPE x>|"
     "\"\x1B$B\"/\x1B(B\"|\x1B$B</\x1B(B|</p|*/|-->|]]>|\\\"'|/>"sv},
    {"line-comment-part",
     " a|<|</script>|<b>|<!D|<?x|'|<!--|*/|//|<![CDATA[|<![if x]>|<![endif]-->|\r|<!-x|</|<![x|<<|<!|"
     "<?|\\"sv},
    {"body-part", " a |-|--|->|]|]]|]>|>|<|<p>|'|\"|\n|!|[if IE]|-- >|\xE9|\0|<!--"sv},
    {"comment-end", "-->|-->|-->|--->|--|-||--!>"sv},
    {"cdata-end", "]]>|]]>|]]>|]]|]|]]]>||]] >"sv},
    {"cdata-word", "CDATA[|CDATA[|cdata[|CDATA|CDATA |CDAT[|CDATAX["sv},
    {"condition", "if IE|if|endif|EndIf|if !(IE 6)|IF x|iff|else"sv},
    {"conditional-tail", ">|>|-->| a\nb >|]]>|tail||<!-->|<>"sv},
    {"body", "{body-part*0-5}"sv},
    {"comment", "<!--{body}{comment-end}"sv},
    {"cdata", "<![{cdata-word}{body}{cdata-end}"sv},
    {"conditional", "<![{condition}{|9:]}{conditional-tail}"sv},
    {"line-comment", "//{line-comment-part*0-4}{|5:\n}"sv},
    {"script-part",
     "2:{end-tag}|4:{line-comment}|2:/*{body}{|5:*/}|2:{comment}|{cdata}|{conditional}|8:{script-text}"sv},
    {"script-element",
     "{3:<{script}>|"
     "{opener}{script}{attribute*0-3}{start-tag-end}}{script-part*0-7}{7:{end-of-script}|}"sv},
    {"style-element",
     "{3:<{style}>|{opener}{style}{attribute*0-3}{start-tag-end}}{script-part*0-7}{7:{end-of-style}|}"sv},
    {"keyword", "DOCTYPE|doctype|ENTITY||ELEMENT| DOCTYPE|X=Y|>|A[B"sv},
    {"declared", "html|PUBLIC|\"-//W3C//DTD\"|'x>y'|\"\"|''|x<y|a='b'|[x]|\"<p>\"|%|'it|\"a|/|--|\\'|?"sv},
    {"target", "php|pi|xsl|| php|php?|xmlx|a=b|[x|?|xm|1"sv},
    {"xml-target", "xml|XML|xml-stylesheet|Xml:x| xml|xml-|xml:?|xml/"sv},
    {"xml-end", "?>|?>| ?>|/>| />|/ >|a/\n>|>|? >||<|?|x?>|x/>|=?>|x=y?>|x=/>| x ?>|?\?>"sv},
    {"free-part",
     "echo |'a'|\"b\"|?|'?>'|/* > */|// x\n|/|*|/*|//|'\\''|\n|\"\\\"\"|\"\x1B$B\"\x1B(B\"|??|*/|"
     "/* * > */|'|\"|<b|a/b|/?|/'"sv},
    {"free-end", "?>|?>|>| ?>|? >||?|/>"sv},
    {"declaration", "<!{keyword}{item*0-4}{2:|{space}}{9:>|<}"sv},
    {"item", "{7:{space}|}{declared}"sv},
    {"xml-declaration", "<?{xml-target}{attribute*0-3}{|{space}}{xml-end}"sv},
    {"instruction", "<?{target}{5:{space}|}{free-part*0-5}{free-end}"sv},
    {"charset",
     "utf-8|iso-2022-jp|iso-2022-kr|windows-1252|koi8-r|utf-16||x-unknown|UTF-7|Shift_JIS| utf-8|"
     "utf-8 |csISO2022JP"sv},
    {"content",
     "text/html; charset=|charset=|charset = |a;CHARSET=|charset=a=b;charset=|text/html|;;|charset|"
     "charset==x| charset\t="sv},
    {"designation", "$B|$@|$(C|$(D|$)C|$*H|$+I|$A|$|x||(B|\x1B$B"sv},
    {"return", "(B|(B|(J|.F|.A|(I|(|$B||\x1B(B"sv},
    {"run-part", "<b>|\"'|/|AB|\n|\xA4|//|\0|\\"sv},
    {"quoted-charset", "'{charset}'|\"{charset}\"|{charset}"sv},
    {"quoted-content", "'{content}{charset}'|\"{content}{charset}\"|{content}{charset}"sv},
    {"meta-attribute",
     "{space}{2:{3:charset|Charset}={quoted-charset}|2:content={quoted-content}|"
     "http-equiv=Content-Type|charset}"sv},
    {"meta", "{3:<meta|<META}{meta-attribute*1-3}{2:>|/>}"sv},
    {"iso-2022", "{3:|\"}\x1B{designation}{run-part*0-4}\x1B{return}"sv},
    {"mark", "\xEF\xBB\xBF|\xEF\xBB|\xFF\xFE|\xFE\xFF|\xFF|\xEF"sv},
    {"broken",
     "<|<!|<?|<!-|<!--|<![|<![CDATA[|<![if x]>|<![endif|</|</ |<>|</>|< |<a / >|<a b=/>|</a / >|"
     "<a b='|<a b=\"|/>|-->|]]>|<<|?>|<?xml x/ >|<script>|</script>|<style>|</style>|<script/>|/*|//|"
     "*/|'|\"|\\|]|<!-->|<!--->|<![CDATA]]>|<![if]>|<![if x|<!>|<?>|<?\?>|<!-x|<![x]|<a b=c/|<br/>|"
     "<meta charset=utf-8>|\x1B$B|\x1B(B|\x1B"sv},
    // One of all that there is.
    {"any",
     "4:{text}|4:{start-tag}|4:{end-tag}|6:{script-element}|2:{style-element}|{end-of-script}|"
     "{end-of-style}|2:{comment}|2:{cdata}|2:{conditional}|2:{declaration}|2:{xml-declaration}|"
     "2:{instruction}|2:{meta}|2:{iso-2022}|{broken}|{byte}"sv},
    // What opens, closes or continues a construct; in soup often only its beginning.
    {"soup",
     "<script>|</script>|<style>|</style>|<!--|-->|<![CDATA[|]]>|<![if x]>|<![endif]-->|<!DOCTYPE |"
     "<?xml |?>|<?php |</p>|<p |/>|>|<|/*|*/|//|\n|'|\"|\\|=|a| |\x1B$B|\x1B(B|/|?|-|[|]|</|<!|<?|a=b|"
     " c='d'| e=\"f\"|<br/>|<a b=/>|<!-|<![|<?xml-x a/ >|\xEF\xBB\xBF|\0|<meta charset=iso-2022-jp>"sv},
    // Elements whose content browsers take for text.
    {"content-tag", "{content-tag-end}{content-part*0-9}"sv},
    {"content-element", "59:{frequent-content-element}|plaintext"sv},
    {"frequent-content-element",
     "script|script|script|SCRIPT|script|style|Style|title|xmp|iframe|noembed|noframes|textarea|"
     "TextArea"sv},
    {"content-tag-end", ">|>|>|>| >|/>| />|\n>| a=b>| a='>'>|/a>|/ a=b>|\v>||[a]>| / >"sv},
    {"content-part",
     "<!--|<!--|-->|-->|--|->|-|<!-|<!|<script|<script>|<Script/|</script|</script>|</scrip|</script |"
     "</style>|</title>|</xmp/|</|<|>|/| |\n|'|\"|//|/*|<b>|</b>|<![CDATA[|<?|\0|\x1B|\x1B$B|\x1B(B|"
     "\x1B-|\xE9\xFF|\xA0"sv},
});

/// Makes one document.
class Making {
public:
    Making(std::uint64_t seed, const std::vector<std::string>& sourcePages) : dice(seed), pages(sourcePages) {}

    MadeDocument Make() {
        MadeDocument made;
        made.charset = MakeCharset();
        target = MakeLength();
        const std::size_t kind = dice.Below(10);
        if (kind < 3)
            MakeOfPage();
        else if (kind < 6)
            MakeSoup();
        else
            MakeOfGrammar();
        made.bytes = std::move(document);
        return made;
    }

    MadeDocument MakeWithContents() {
        MadeDocument made;
        made.charset = dice.OneIn(3) ? StringNS::CharSet::ISO_2022_JP : StringNS::CharSet::WINDOWS_1252;
        for (std::size_t items = dice.Between(1, 6); items > 0; --items) {
            if (dice.OneIn(3))
                Add("any");
            const std::string element = GRAMMAR.Make("content-element", &dice);
            document.append(dice.OneIn(40) ? "< " : "<").append(element);
            Add("content-tag");
            if (!dice.OneIn(8))
                document.append("</").append(element).append(GRAMMAR.Make("content-tag-end", &dice));
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

    void Add(std::string_view rule) {
        GRAMMAR.Append(rule, &dice, &document);
    }

    // Documents of the grammar

    void MakeOfGrammar() {
        if (dice.OneIn(12))
            Add("mark");
        while (document.size() < target) {
            if (target >= READ_SIZE && dice.OneIn(3))
                FillUpToTheEndOfARead();
            Add("any");
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

    // Windows of pages

    void MakeOfPage() {
        const std::string& page = pages[dice.Below(pages.size())];
        // Up to 4 KB, but mostly shorter.
        const std::size_t window = target < READ_SIZE ? dice.Between(100, dice.Between(100, 4096)) : target;
        const std::size_t length = std::min(window, page.size());
        if (dice.OneIn(4))
            Add("broken");
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
                document.insert(at, GRAMMAR.Make(dice.OneIn(2) ? "broken" : "soup", &dice));
                return;
            case 2:
                document[at] = SIGNS[dice.Below(SIGNS.size())];
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
            const std::string token = GRAMMAR.Make("soup", &dice);
            document.append(token, 0, dice.OneIn(3) ? dice.Between(1, token.size()) : token.size());
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
