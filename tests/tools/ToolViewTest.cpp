#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "tests/tools/ToolRun.h"
#include "tools/kestra-html/rewriting/Utf8Check.h"

/// @file
/// Runs of `kestra-html view`. What the page looks like is tested in a browser, by
/// tests/view/check-in-browser.

namespace Kestra::Test {
namespace {

constexpr std::string_view TOKENS_BEGIN = "<script type=\"application/json\" class=\"tokens\">";
constexpr std::string_view DOCUMENT_BEGIN = "<script type=\"application/json\" id=\"document\">";
constexpr std::string_view ELEMENT_END = "</script>";

ToolRun View(std::string_view input, Arguments arguments = {}) {
    arguments.insert(arguments.begin(), "view");
    return RunToolOn(input, arguments);
}

/// The lines of a page that carry its data, and the page without them.
struct ViewedPage {
    explicit ViewedPage(const std::string& page) {
        std::istringstream lines(page);
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with(TOKENS_BEGIN))
                tokens.push_back(Cut(line, TOKENS_BEGIN));
            else if (line.starts_with(DOCUMENT_BEGIN))
                document += Cut(line, DOCUMENT_BEGIN);
            else
                rest += line + '\n';
        }
    }

    static std::string Cut(const std::string& line, std::string_view begin) {
        EXPECT_TRUE(line.ends_with(ELEMENT_END));
        return line.substr(begin.size(), line.size() - begin.size() - ELEMENT_END.size());
    }

    std::vector<std::string> tokens;
    std::string document;
    std::string rest;
};

/// A token in the page or in the output of `tokens`.
struct ListedToken {
    std::string kind;
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    std::uint64_t line = 0;
    std::uint64_t column = 0;

    bool operator==(const ListedToken&) const = default;
};

void PrintTo(const ListedToken& token, std::ostream* stream) {
    *stream << token.kind << " [" << token.begin << ',' << token.end << ") " << token.line << ':' << token.column;
}

/// A number after a name, or 0 where the name is not there.
std::int64_t NumberAfter(const std::string& json, std::string_view name, std::size_t from = 0) {
    const std::size_t at = json.find(name, from);
    return at == std::string::npos ? 0 : std::strtoll(json.c_str() + at + name.size(), nullptr, 10);
}

/// The items of a list, as they are written.
std::vector<std::string> ItemsOf(const std::string& json, const std::string& name) {
    const std::string opener = "\"" + name + "\":[";
    const std::size_t begin = json.find(opener) + opener.size();
    std::istringstream list(json.substr(begin, json.find(']', begin) - begin));
    std::vector<std::string> items;
    for (std::string item; std::getline(list, item, ',');)
        items.push_back(item);
    return items;
}

std::vector<ListedToken> ListTokens(const ViewedPage& page) {
    const std::vector<std::string> names = ItemsOf(page.document, "kinds");
    std::vector<ListedToken> tokens;
    for (const std::string& json : page.tokens) {
        Tool::Utf8Check check;
        check.Check(json);
        EXPECT_TRUE(check.IsUtf8());
        const std::vector<std::string> kinds = ItemsOf(json, "kinds");
        const std::vector<std::string> sizes = ItemsOf(json, "sizes");
        const std::vector<std::string> lines = ItemsOf(json, "lines");
        const std::vector<std::string> columns = ItemsOf(json, "columns");
        auto begin = static_cast<std::uint64_t>(NumberAfter(json, "\"begin\":"));
        std::int64_t line = 0;
        for (std::size_t i = 0; i < kinds.size(); ++i) {
            const std::string& name = names.at(std::stoul(kinds[i]));
            const std::uint64_t end = begin + std::stoull(sizes.at(i));
            line += std::stoll(lines.at(i));
            tokens.push_back({name.substr(1, name.size() - 2), begin, end, static_cast<std::uint64_t>(line),
                              std::stoull(columns.at(i))});
            begin = end;
        }
    }
    return tokens;
}

/// The same of `tokens --format json --places`, by the names of callbacks.
std::vector<ListedToken> ListTokens(std::string_view input, Arguments arguments) {
    const std::map<std::string, std::string> KINDS = {
        {"Text", "text"},
        {"CComment", "c-comment"},
        {"CPPComment", "cpp-comment"},
        {"StartTag", "start"},
        {"SQuoteString", "s-string"},
        {"DQuoteString", "d-string"},
        {"ShortTag", "short"},
        {"EndTag", "end"},
        {"ConditionalTag", "conditional"},
        {"CDATATag", "cdata"},
        {"EntityTag", "entity"},
        {"CommentTag", "comment"},
        {"ExternTag", "extern"},
        {"JunkData", "junk"},
        {"BOM", "mark"},
    };
    arguments.insert(arguments.begin(), {"tokens", "--format", "json", "--places"});
    std::istringstream lines(RunToolOn(input, arguments).output);
    std::vector<ListedToken> tokens;
    for (std::string line; std::getline(lines, line);) {
        const std::string event = line.substr(10, line.find('"', 10) - 10);  // {"event":"Text"
        const std::size_t place = line.rfind(",\"begin\":");                 // after those of attributes
        const auto number = [&](std::string_view name) {
            return static_cast<std::uint64_t>(NumberAfter(line, name, place));
        };
        if (const auto kind = KINDS.find(event); kind != KINDS.end())
            tokens.push_back(
                {kind->second, number("\"begin\":"), number("\"end\":"), number("\"line\":"), number("\"column\":")});
    }
    return tokens;
}

TEST(ToolView, TheTokensAreThoseOfTokens) {
    const struct {
        const char* note;
        std::string input;
        Arguments arguments;
    } CASES[] = {
        {"nothing", "", {}},
        {"every kind", ReadFile(KESTRA_EXAMPLE_PAGES "/saltmarsh-point.html"), {}},
        {"scripts as text", ReadFile(KESTRA_EXAMPLE_PAGES "/saltmarsh-point.html"), {"--scripts", "text"}},
        {"UTF-16", "\xFF\xFE" + Utf16("<p a='b'>c</p>\n<script>'d'</script>"), {}},
        {"a mark of UTF-8", "\xEF\xBB\xBF<p>\n<b a=b c>", {}},
        {"a mark that is taken for text", "\xEF\xBB\xBF<p>", {"--input", "8bit"}},
        {"a charset that is found late", "<p>\xC1\xC2</p>\n<meta charset=koi8-r>\n<b>\xC1</b>", {}},
        {"many tokens", Repeat("<b>x</b>\n", 3000), {"--charset", "utf-8"}},
    };
    for (const auto& c : CASES) {
        const ToolRun run = View(c.input, c.arguments);
        EXPECT_TRUE(Ended(run, 0, "")) << c.note;
        EXPECT_EQ(ListTokens(ViewedPage(run.output)), ListTokens(c.input, c.arguments)) << c.note;
    }
}

TEST(ToolView, EveryByteIsShown) {
    std::string everyByte;
    for (int byte = 0; byte < 256; ++byte)
        everyByte.push_back(static_cast<char>(byte));
    const struct {
        const char* note;
        std::string input;
        Arguments arguments;
    } CASES[] = {
        {"every byte", everyByte + everyByte, {"--charset", "1252"}},
        {"every byte as UTF-16", Utf16(everyByte), {"--input", "utf16"}},
        {"half a mark", "\xEF\xBB", {}},
        {"what follows a token that is too long", "<p>" + std::string(1000, 'a') + "<b>", {"--max-token", "100"}},
        {"half a unit", "\xFF\xFE" + Utf16("<p>") + "x", {}},
        {"junk", "<a href=/>tea<!-x>biscuits<b", {}},
    };
    for (const auto& c : CASES) {
        std::uint64_t end = 0;
        for (const ListedToken& token : ListTokens(ViewedPage(View(c.input, c.arguments).output))) {
            EXPECT_EQ(token.begin, end) << c.note;
            end = token.end;
        }
        EXPECT_EQ(end, c.input.size()) << c.note;
    }
    const std::vector<ListedToken> tokens = ListTokens(ViewedPage(View("\xEF\xBB").output));
    EXPECT_EQ(tokens, (std::vector<ListedToken>{{"lost", 0, 2, 0, 0}}));
}

TEST(ToolView, LostBytesAreCutBetweenCharacters) {
    const struct {
        const char* note;
        std::string character;
        Arguments arguments;
    } CASES[] = {
        {"two bytes of UTF-8", "\xC3\xA9", {"--charset", "65001"}},
        {"three bytes of UTF-8", "\xE2\x82\xAC", {"--charset", "65001"}},
        {"four bytes of UTF-8", "\xF0\x9F\x98\x80", {"--charset", "65001"}},
        {"two units of UTF-16", "\x3D\xD8\x00\xDE"s, {"--input", "utf16"}},
        {"two bytes of Shift_JIS", "\x82\xA0", {"--charset", "932"}},
        {"two bytes of Big5", "\xA4\xA4", {"--charset", "950"}},
    };
    for (const auto& c : CASES) {
        for (const std::size_t shift : {std::size_t{0}, std::size_t{1}}) {
            std::string begin = "<b a=" + std::string(30, 'a') + ">" + std::string(shift, 'x');
            if (c.arguments.front() == "--input")
                begin = Utf16(begin);
            Arguments arguments = c.arguments;
            arguments.insert(arguments.end(), {"--max-token", "16"});
            const ViewedPage page(View(begin + Repeat(c.character, 150000 / c.character.size()), arguments).output);
            std::size_t count = 0;
            for (const ListedToken& token : ListTokens(page))
                count += token.kind == "lost" ? 1 : 0;
            EXPECT_GT(count, 1U) << c.note;
            for (const std::string& json : page.tokens) {
                EXPECT_EQ(json.find("\"marks\""), std::string::npos) << c.note << ", " << shift;
                EXPECT_EQ(json.find("\\uFFFD"), std::string::npos) << c.note << ", " << shift;
            }
        }
    }
}

TEST(ToolView, NothingOfTheInputIsMarkup) {
    const std::string frame = ViewedPage(View("").output).rest;
    EXPECT_TRUE(Contains(frame, "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "));
    const std::string inputs[] = {
        "<script>alert(1)</script>",
        "</script><script>alert(1)</script>",
        "</SCRIPT ><!--<script>--></script",
        "<!--",
        "]]>",
        "&lt;/script&gt;",
        "<a/onclick=\"x\" '</script>'=1 \"</script>>",
        "\xE2\x80\xA8\xE2\x80\xA9\xC2\x85<b \xE2\x80\xAE>\xEF\xBB\xBF",
        "\0<a\0b=\0>\x01\x1B[31m\x7F\0"s,
        "\xFF\xFE" + Utf16("<a>") + "\x00\xD8"s + Utf16("</script>") + "\x00\xDC"s,
        "\xC3\x28\xFF\xF0\x28",
        Repeat("\\\"'", 1000),
    };
    for (const std::string& input : inputs) {
        const ViewedPage page(View(input, {"--charset", input.starts_with('\xFF') ? "0" : "65001"}).output);
        EXPECT_EQ(page.rest, frame) << input;
        EXPECT_EQ(page.tokens.size(), 1U) << input;
        for (const std::string& json : page.tokens) {
            for (const std::string_view unsafe : {"<", ">", "&", "\xE2\x80\xA8", "\xE2\x80\xA9", "\xE2\x80\xAE"})
                EXPECT_EQ(json.find(unsafe), std::string::npos) << input;
            EXPECT_TRUE(std::all_of(json.begin(), json.end(), [](char letter) {
                return static_cast<unsigned char>(letter) >= 0x20 && letter != '\x7F';
            })) << input;
        }
    }
}

struct MarkedInput {
    const char* note;
    std::string input;
    std::string lists;
    Arguments arguments;
};

TEST(ToolView, WhatIsMarked) {
    const MarkedInput CASES[] = {
        {"an open comment", "<!-- a", "\"marks\":[1]", {}},
        {"an end tag that runs into the next", "</i<b>", "\"marks\":[1,0]", {}},
        {"an open section", "<![CDATA[a", "\"marks\":[1]", {}},
        {"a conditional section without its bracket", "<![if a>", "\"marks\":[1]", {}},
        {"folded words", "<a b=c d e='f'>", "\"marks\":[2],\"parts\":[[1,1,1,1,1,1,0,1,1,0,-1,1,1,1,2,1,0]]", {}},
        {"bytes that are no characters", "a\xFF", "\"marks\":[4]", {"--charset", "65001"}},
        {"escape sequences", "\x1B$B$\"\x1B(B<b>", "\"marks\":[8,0]", {"--charset", "50221"}},
        {"nothing", "<a d b='c'>e</a>", "\"columns\":[1,12,13],\"parts\":[[1,1,1,1,0,-1,0,1,1,2,1,0],0,[2,1]]", {}},
        {"names after white space", "< a ></ b >", "\"parts\":[[2,1],[3,1]]", {}},
        {"names of other kinds", "<!DOCTYPE a><?php b?><![if c]>", "\"parts\":[[2,7],[2,3],[3,2]]", {}},
        {"a short tag", "<br/>", "\"parts\":[[1,2]]", {}},
    };
    for (const auto& c : CASES) {
        const ViewedPage page(View(c.input, c.arguments).output);
        ASSERT_EQ(page.tokens.size(), 1U) << c.note;
        EXPECT_TRUE(Contains(page.tokens[0], c.lists)) << c.note;
    }
}

using ToolViewFiles = ToolTest;

TEST_F(ToolViewFiles, TheOutputFile) {
    Write("a.html", "<b>");
    EXPECT_TRUE(Ended(Run({"view", "a.html", "-o", "a.view.html"}), 0, ""));
    EXPECT_EQ(Run({"view", "a.html"}).output, Read("a.view.html"));
    EXPECT_EQ(Run({"view", "a.html", "--output=-"}).output, Read("a.view.html"));
    EXPECT_TRUE(Contains(Read("a.view.html"), "{\"file\":\"a.html\",\"bytes\":3,\"result\":\"0, success\","));
    Write("b.html", "<i>");
    EXPECT_TRUE(Ended(Run({"view", "--output", "a.view.html", "b.html"}), 0, ""));
    EXPECT_TRUE(Contains(Read("a.view.html"), "{\"file\":\"b.html\","));
    Write("[a].html", "<i>");
    EXPECT_TRUE(Ended(Run({"view", "[a].html", "-o", "[b].html"}), 0, ""));
    EXPECT_TRUE(Contains(Read("[b].html"), "{\"file\":\"[a].html\","));
}

TEST_F(ToolViewFiles, OtherFilesStay) {
    Write("a.html", "<b>");
    for (const char* const name : {"b.html.unfinished", "b.html~", ".b.html"})
        Write(name, "mine");
    const Arguments before = GetNames();
    EXPECT_TRUE(Ended(Run({"view", "a.html", "-o", "b.html"}), 0, ""));
    for (const std::string& name : before)
        EXPECT_EQ(Read(name), name == "a.html" ? "<b>" : "mine") << name;
    EXPECT_EQ(GetNames().size(), before.size() + 1);
}

TEST_F(ToolViewFiles, AFolderIsNoOutput) {
    Write("a.html", "<b>");
    fs::create_directory(Path("folder"));
    EXPECT_TRUE(
        Ended(Run({"view", "a.html", "-o", "folder"}), 1, "folder: cannot be written: it is not a regular file\n"));
    EXPECT_EQ(GetNames(), (Arguments{"a.html", "folder"}));
}

TEST_F(ToolViewFiles, StandardInput) {
    settings.input = "<b>";
    EXPECT_TRUE(Contains(Run({"view"}).output, "{\"file\":\"standard input\",\"bytes\":3,"));
    EXPECT_EQ(Run({"view"}).output, Run({"view", "-"}).output);
}

TEST_F(ToolViewFiles, WhatFails) {
    Write("a.html", "<b>x");
    EXPECT_TRUE(Ended(Run({"view", "a.html", "a.html"}), 2,
                      "kestra-html: a page shows one file (see kestra-html view --help)\n"));
    const ToolRun unread = Run({"view", "none.html", "-o", "none.view.html"});
    EXPECT_EQ(unread.status, 3);
    EXPECT_TRUE(StartsWith(unread.errors, "none.html: cannot be read"));
    const ToolRun unwritten = Run({"view", "a.html", "-o", "none/a.view.html"});
    EXPECT_EQ(unwritten.status, 1);
    EXPECT_TRUE(StartsWith(unwritten.errors, "none/a.view.html: cannot be written: "));
    EXPECT_TRUE(Ended(Run({"view", "a.html", "-o", "a.html"}), 1, "a.html: cannot be written: it is the input\n"));
    EXPECT_EQ(Read("a.html"), "<b>x");
    EXPECT_EQ(GetNames(), Arguments{"a.html"});
}

TEST_F(ToolViewFiles, APageIsWrittenWhateverTheResult) {
    Write("a.html", "<b>" + std::string(100, 'x'));
    const std::string failure =
        "parsing returned 711: a token is longer, or has more attributes, than the limit allows (line 1, column 4)";
    EXPECT_TRUE(Ended(Run({"view", "a.html", "-o", "b.html", "--max-token", "50"}), 1, "a.html: " + failure + '\n'));
    EXPECT_TRUE(Contains(Read("b.html"), "\"result\":\"" + failure + '"'));
    EXPECT_EQ(ListTokens(ViewedPage(Read("b.html"))),
              (std::vector<ListedToken>{{"start", 0, 3, 1, 1}, {"lost", 3, 103, 0, 0}}));
}

}  // namespace
}  // namespace Kestra::Test
