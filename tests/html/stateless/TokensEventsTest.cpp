#include "tests/html/stateless/EventRows.h"

// The items of a declaration: at least one, up to "/" or ">" after an item.

namespace Kestra::Test {
namespace {

struct Token {
    std::string bytes;
    std::string shown;
    std::string value;
    char quote;  ///< at its end; 0 for none
};

const Token TOKENS[] = {
    {"t", "{t}", "t", 0},
    {"-//N", "{-//N}", "-//N", 0},
    {"'u'", "{u}", "u", '\''},
    {"\"v\"", "{v}", "v", '"'},
};

/// Two items. White space that ends a piece before the ">" makes one more item, without anything.
EventRow MakePair(const Token& first, const White& white, const std::string& whiteShown, const Token& second,
                  const std::string& end) {
    const std::string before = "<!d " + first.bytes;
    const std::string list = before + std::string(white.bytes) + second.bytes;
    const std::string input = list + end;
    const std::string tokens = first.shown + second.shown;
    const Place asColumns = Place().Bytes(input.size());
    const Place place = Place().Bytes(before.size()).Skip(white).Bytes(second.bytes.size() + end.size());
    EventRow row("a pair", input, {"entity(d|" + tokens + ")\n", place});
    if (end == " >")
        row.AfterAndBytewise(list + " ", {"entity(d|" + tokens + "{})\n", place});
    if (second.quote != 0)
        row.AfterAndBytewise(list, {"", place, 16});
    if (first.quote != 0) {
        Outcome runsOn{"", asColumns, 16};
        row.Bytewise(runsOn);
        if (second.quote == first.quote)  // its opening quote ends the item, and its content begins another one
            runsOn = {"entity(d|{" + first.value + whiteShown + "}{" + second.value + second.quote + "})\n", asColumns};
        row.After(before, runsOn);
    }
    return row;
}

TEST(TokensEventsTest, Pairs) {
    std::vector<EventRow> rows;
    for (const Token& first : TOKENS) {
        for (const Token& second : TOKENS) {
            for (const std::string end : {">", " >"}) {
                rows.push_back(MakePair(first, {" ", 0, 1}, " ", second, end));
                rows.push_back(MakePair(first, {"\t\t", 0, 2}, "\\t\\t", second, end));
                rows.push_back(MakePair(first, {"\n", 1, 1}, "\\n", second, end));
                if (first.quote != 0)
                    rows.push_back(MakePair(first, {"", 0, 0}, "", second, end));
            }
        }
    }
    CheckRows(rows, ROWS_PER_CONSTRUCT);
}

TEST(TokensEventsTest, BetweenWhiteSpaceWhoseLinesCount) {
    std::vector<EventRow> rows;
    for (const White& white : WHITES) {
        const std::string blanks(white.bytes);
        rows.emplace_back("between items", "<!d a" + blanks + "b>",
                          Outcome{"entity(d|{a}{b})\n", Place().Bytes(5).Skip(white).Bytes(2)});
        rows.emplace_back("before nothing", "<!d" + blanks + ">",
                          Outcome{"entity(d|{})\n", Place().Bytes(3).Skip(white).Bytes(1)});
        // Wherever the white space after an item is cut.
        const Place place = Place().Bytes(5).Skip(white).Bytes(1);
        EventRow after("after the last item", "<!d a" + blanks + ">", {"entity(d|{a})\n", place});
        for (std::size_t length = 1; length <= blanks.size(); ++length)
            after.AfterAndBytewise("<!d a" + blanks.substr(0, length), {"entity(d|{a}{})\n", place});
        rows.push_back(after);
    }
    CheckRows(rows);
}

struct End {
    std::string white;
    White place;
    bool slash;
};

/// How a declaration with one item ends.
TEST(TokensEventsTest, EachEnd) {
    const End ends[] = {
        {"", {"", 0, 0}, true}, {" ", {"", 0, 1}, true}, {"\t ", {"", 0, 2}, true}, {"\n", {"", 1, 1}, true}};
    std::vector<EventRow> rows;
    for (const Token& token : TOKENS) {
        for (const End& end : ends) {
            const std::string list = "<!d " + token.bytes;
            const std::string input = list + end.white + "/>";
            const Place place = Place().Bytes(list.size()).Skip(end.place).Bytes(2);
            if (token.quote == 0 && end.white.empty()) {
                rows.emplace_back("the item takes the slash", input,
                                  Outcome{"entity(d|{" + token.value + "/})\n", place});
                continue;
            }
            EventRow row("a slash and \">\"", input, {"entity(d|" + token.shown + ")\n", place});
            // At "/", and ">" is text.
            row.AfterAndBytewise(list + end.white + "/", {row.whole.events, place.Bytes(1)});
            for (std::size_t length = 1; length <= end.white.size(); ++length)  // the slash begins another item
                row.AfterAndBytewise(list + end.white.substr(0, length), {"entity(d|" + token.shown + "{/})\n", place});
            if (token.quote != 0)
                row.AfterAndBytewise(list, {"", Place().Bytes(input.size()), 16});
            rows.push_back(row);
        }
    }
    CheckRows(rows);
}

const std::vector<EventRow> OF_ANY_KIND = {
    {"none", "<!d>", {"entity(d|{})\n", {1, 5}}},
    {"a slash before all is an item", "<!d/>", {"entity(d|{/})\n", {1, 6}}},
    {"so it is after white space", "<!d />", {"entity(d|{/})\n", {1, 7}}},
    {"a path", "<!d /x>", {"entity(d|{/x})\n", {1, 8}}},
    {"punctuation", "<!d ? % = &>", {"entity(d|{?}{%}{=}{&})\n", {1, 13}}},
    {"an assignment", "<!d a=b>", {"entity(d|{a=b})\n", {1, 9}}},
    {"quotes inside", "<!d a'b'>", {"entity(d|{a'b'})\n", {1, 10}}},
    {"two hyphens", "<!d -- a -->", {"entity(d|{--}{a}{--})\n", {1, 13}}},
    {"a bracket is an item like any other", "<!d [ <!e>", {"entity(d|{[}{<!e})\n", {1, 11}}},
    {"and what follows is text", "<!d [ <!e> ]>", {"entity(d|{[}{<!e})\n", {1, 1 + 10 + 2 * 3}}},
    {"twelve items", "<!d a b c d e f g h i j k l>", {"entity(d|{a}{b}{c}{d}{e}{f}{g}{h}{i}{j}{k}{l})\n", {1, 29}}},
    {"nothing between quotes", "<!d ''", ">", {"entity(d|{})\n", {1, 8}}, {"", {1, 8}, 16}},
    {"an item after a quote", "<!d 'a'", "b>", {"entity(d|{a}{b})\n", {1, 10}}, {"", {1, 10}, 16}},
    {"quotes of the other kind inside", "<!d '\"'", " t>", {"entity(d|{\"}{t})\n", {1, 11}}, {"", {1, 11}, 16}},
    {"a public identifier",
     "<!DOCTYPE html PUBLIC \"x\"",
     ">",
     {"entity(DOCTYPE|{html}{PUBLIC}{x})\n", {1, 27}},
     {"", {1, 27}, 16}},
    EventRow("two line breaks at the end", "<!d a\n", "\n>", {"entity(d|{a})\n", {2, 2}}, {"entity(d|{a}{})\n", {2, 2}})
        .After("<!d a\n\n", {"entity(d|{a}{})\n", {2, 2}}),
};

const std::vector<EventRow> NOT_OVER = {
    {"before the items", "<!d ", {"", {1, 5}, 16}},
    {"in an item", "<!d ab", {"", {1, 7}, 16}},
    {"after an item", "<!d ab ", {"", {1, 8}, 16}},
    {"in quotes", "<!d 'ab>", {"", {1, 9}, 16}},
    {"after quotes", "<!d 'ab'", {"", {1, 9}, 16}},
    {"after a line break", "<!d ab\r", {"", {2, 1}, 16}},
    {"a slash is the end, unless a cut makes an item of it",
     "<!d a ",
     "/",
     {"entity(d|{a})\n", {1, 8}},
     {"", {1, 8}, 16}},
    {"a slash after a quote is the end", "<!d 'a'", "/", {"entity(d|{a})\n", {1, 9}}, {"", {1, 9}, 16}},
};

const EventTables TABLES("TokensEventsTest", {{"OfAnyKind", OF_ANY_KIND}, {"NotOver", NOT_OVER}});

}  // namespace
}  // namespace Kestra::Test
