#include "tests/html/stateless/EventRows.h"

// Start tags, up to ">" or "/>". A "/" that ends its piece completes the tag, and what follows is
// text.

namespace Kestra::Test {
namespace {

struct End {
    std::string white;
    White place;
    bool slash;
};

const End ENDS[] = {
    {"", {"", 0, 0}, false}, {" ", {"", 0, 1}, false},  {"\n", {"", 1, 1}, false},
    {"", {"", 0, 0}, true},  {"\t ", {"", 0, 2}, true}, {"\r\n", {"", 1, 1}, true},
};

TEST(StartTagEventsTest, EachEnd) {
    std::vector<EventRow> rows;
    for (const std::string name : {"a", "br", "x:y", "_", "SCRIPTS", "styles"}) {
        for (const std::string lead : {"<", "< ", "<\n"}) {  // a line break after "<" is a column
            for (const std::string attribute : {"", " b"}) {
                for (const End& end : ENDS) {
                    const std::string before = lead + name + attribute + end.white;
                    const std::string start = "start(" + name + "|" + (attribute.empty() ? "" : "{b=}") + ")\n";
                    const Place place = Place().Bytes(lead.size() + name.size() + attribute.size()).Skip(end.place);
                    if (!end.slash) {
                        rows.emplace_back("a start tag", before + ">", Outcome{start, place.Bytes(1)});
                        continue;
                    }
                    const std::string both = start + "end(" + name + ")\n";
                    rows.push_back(EventRow("an end tag follows", before + "/>", {both, place.Bytes(2)})
                                       .AfterAndBytewise(before + "/", {both, place.Bytes(1).Content(1)}));
                }
            }
        }
    }
    CheckRows(rows, ROWS_PER_CONSTRUCT);
}

TEST(StartTagEventsTest, AfterASlash) {
    std::vector<EventRow> rows;
    const std::string both = "start(a|)\nend(a)\n";
    for (const char byte : std::string(" /?b=!'\"%1\xE9\0", 12)) {
        const std::string rest = byte + std::string("c");
        rows.push_back(EventRow("anything but \">\"", "<a/" + rest, {"", {1, 4}, 702})
                           .AfterAndBytewise("<a/", {both, {1, 1 + 3 + 2 * 2}}));
    }
    rows.push_back(EventRow("a line break", "<a/", "\n>", {"", {1, 4}, 702}, {both, {2, 2 + 2 * 1}}));
    rows.push_back(EventRow("another tag", "<a/", "<b>", {"", {1, 4}, 702}, {both + "start(b|)\n", {1, 7}}));
    rows.push_back(EventRow("text and tags", "<a/", ">b<c>", {both + "text(b)\nstart(c|)\n", {1, 1 + 4 + 2 * 1 + 3}},
                            {both + "text(>b)\nstart(c|)\n", {1, 1 + 3 + 2 * 2 + 3}}));
    rows.push_back(EventRow("a tag without a slash is not closed", "<a/", "><b>", {both + "start(b|)\n", {1, 8}},
                            {both + "text(>)\nstart(b|)\n", {1, 1 + 3 + 2 * 1 + 3}}));
    rows.push_back(EventRow("after an attribute", "<a b /", "c>", {"", {1, 7}, 702},
                            {"start(a|{b=})\nend(a)\n", {1, 1 + 6 + 2 * 2}}));
    rows.push_back(EventRow("after a quote", "<a b='1'/>", {"start(a|{b=1})\nend(a)\n", {1, 11}})
                       .After("<a b='1'/", {"start(a|{b=1})\nend(a)\n", {1, 1 + 9 + 2 * 1}})
                       .AfterAndBytewise("<a b='1'", {"", {1, 11}, 16}));
    rows.emplace_back("nothing yet", "<a/", Outcome{both, {1, 4}});
    rows.emplace_back("nothing yet, after an attribute", "<a b=c /", Outcome{"start(a|{b=c})\nend(a)\n", {1, 9}});
    CheckRows(rows);
}

const std::vector<EventRow> FAILURES = {
    {"\"?\" after the name", "<a?>", {"", {1, 3}, 702}},
    {"\"?\" after white space", "<a ?>", {"", {1, 4}, 702}},
    {"\"?\" after an attribute", "<a b?>", {"", {1, 5}, 702}},
    {"\"?\" after a value", "<a b=c ?>", {"", {1, 8}, 702}},
    {"\"?\" after a quote", "<a b='c'", "?>", {"", {1, 9}, 702}, {"", {1, 11}, 16}},
    {"no name after two blanks", "<  >", {"", {1, 4}, 701}},
    {"no name after a blank", "< />", {"", {1, 3}, 701}},
    {"a text and a tag in front", "x<b>\n<a?", {"text(x)\nstart(b|)\ntext(\\n)\n", {2, 4}, 702}},
};

const std::vector<EventRow> IN_A_DOCUMENT = {
    {"names keep their case", "<Body><BR>", {"start(Body|)\nstart(BR|)\n", {1, 11}}},
    {"a name ends at \"=\"", "<a=", "b>", {"start(a|)\n", {1, 6}}, {"start(a|{b=})\n", {1, 6}}},
    {"\"<\" begins no tag inside another one", "<a<", "b>", {"start(a|)\n", {1, 6}}, {"start(a|{b=})\n", {1, 6}}},
    {"what follows a bad byte in the tag", "<a %", "x>", {"start(a|)\n", {1, 7}}, {"start(a|{x=})\n", {1, 7}}},
    {"attributes of the tag in front are gone", "<a b=1><c>", {"start(a|{b=1})\nstart(c|)\n", {1, 11}}},
    {"tags that are never closed", "<a><a><a>", {"start(a|)\nstart(a|)\nstart(a|)\n", {1, 10}}},
};

const std::vector<EventRow> NOT_OVER = {
    {"\"<\"", "<", {"", {1, 2}, 0}},
    {"\"<\" and a blank", "< ", {"", {1, 3}, 0}},
    {"\"<\" and two blanks", "<  ", {"", {1, 4}, 16}},
    {"a name", "<ab", {"", {1, 4}, 16}},
    {"a name and white space", "<ab\n", {"", {2, 1}, 16}},
    {"an attribute and white space", "<ab c=d ", {"", {1, 9}, 16}},
    {"the name of a script", "<script", {"", {1, 8}, 16}},
};

const EventTables TABLES("StartTagEventsTest",
                         {{"Failures", FAILURES}, {"InADocument", IN_A_DOCUMENT}, {"NotOver", NOT_OVER}});

}  // namespace
}  // namespace Kestra::Test
