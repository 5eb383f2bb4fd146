#include "tests/html/stateless/EventRows.h"

// End tags: a name, and ">" right after it.

namespace Kestra::Test {
namespace {

TEST(EndTagEventsTest, EachName) {
    std::vector<EventRow> rows;
    for (const std::string name : {"a", "P", "_", "h1", "x:y", "a-b", "script", "STYLE"}) {
        rows.emplace_back("an end tag", "</" + name + ">",
                          Outcome{"end(" + name + ")\n", Place().Bytes(name.size() + 3)});
        for (const White& white : WHITES) {
            rows.emplace_back("white space before the name", "</" + std::string(white.bytes) + name + ">",
                              Outcome{"end(" + name + ")\n", Place().Bytes(2).Skip(white).Bytes(name.size() + 1)});
        }
    }
    CheckRows(rows, ROWS_PER_CONSTRUCT);
}

TEST(EndTagEventsTest, NothingBetweenNameAndEnd) {
    std::vector<EventRow> rows;
    for (const std::string rest : {" >", "\t>", "\n>", "\r\n>", "  >", "/>", " />", "?>", "=b>", " b>", " b='c'>", "<",
                                   "<b>", "'>", "\xE9>", "!"}) {
        for (const std::string name : {"a", "body"})
            rows.emplace_back("no end after the name", "</" + name + rest,
                              Outcome{"", Place().Bytes(2 + name.size()), 702});
    }
    rows.emplace_back("a text in front", "a\n</b c>", Outcome{"text(a\\n)\n", {2, 5}, 702});
    CheckRows(rows);
}

const std::vector<EventRow> IN_A_DOCUMENT = {
    {"without a start tag", "</a></b>", {"end(a)\nend(b)\n", {1, 9}}},
    {"around a text", "<a>b</a>", {"start(a|)\ntext(b)\nend(a)\n", {1, 1 + 3 + 2 * 1 + 4}}},
    {"a text after it", "</a>b<c>", {"end(a)\ntext(b)\nstart(c|)\n", {1, 1 + 4 + 2 * 1 + 3}}},
    {"two \">\"", "</a>><c>", {"end(a)\ntext(>)\nstart(c|)\n", {1, 1 + 4 + 2 * 1 + 3}}},
    {"a script's, outside of a script", "</script>", {"end(script)\n", {1, 10}}},
    {"a style sheet's, outside of a style sheet", "</style>", {"end(style)\n", {1, 9}}},
    {"another name than the start tag's", "<a></b>", {"start(a|)\nend(b)\n", {1, 8}}},
};

const std::vector<EventRow> NOT_OVER = {
    {"\"</\"", "</", {"", {1, 3}, 0}},
    {"\"</\" and a blank", "</ ", {"", {1, 4}, 16}},
    {"\"</\" and a line break", "</\n", {"", {2, 1}, 16}},
    {"a name", "</ab", {"", {1, 5}, 16}},
    {"no name", "</>", {"", {1, 3}, 701}},
    {"no name after a line break", "</\n>", {"", {2, 1}, 701}},
};

const EventTables TABLES("EndTagEventsTest", {{"InADocument", IN_A_DOCUMENT}, {"NotOver", NOT_OVER}});

}  // namespace
}  // namespace Kestra::Test
