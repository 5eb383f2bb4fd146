#include "tests/html/stateless/EventRows.h"

// Declarations, up to ">" or "/>" after an item. A "/" that ends its piece completes the
// declaration, and what follows is text.

namespace Kestra::Test {
namespace {

struct Lead {
    std::string bytes;
    Place place;
};

TEST(EntityTagEventsTest, EachEnd) {
    const Lead leads[] = {
        {"<!", {1, 3}},     {"<! ", {1, 4}},  {"<!\n", {1, 4}},  // a column
        {"<!\n\n", {2, 1}}, {"<!  ", {1, 5}},
    };
    std::vector<EventRow> rows;
    for (const std::string name : {"DOCTYPE", "a", "_x", "x:y-1"}) {
        for (const Lead& lead : leads) {
            const std::string tag = lead.bytes + name;
            const Place place = lead.place.Bytes(name.size());
            const std::string begin = "entity(" + name + "|";
            rows.emplace_back("nothing", tag + ">", Outcome{begin + "{})\n", place.Bytes(1)});
            rows.emplace_back("white space", tag + " >", Outcome{begin + "{})\n", place.Bytes(2)});
            rows.emplace_back("a slash, which is an item", tag + "/>", Outcome{begin + "{/})\n", place.Bytes(2)});
            rows.emplace_back("an item", tag + " t>", Outcome{begin + "{t})\n", place.Bytes(3)});
            rows.push_back(EventRow("an item and white space", tag + " t >", {begin + "{t})\n", place.Bytes(4)})
                               .AfterAndBytewise(tag + " t ", {begin + "{t}{})\n", place.Bytes(4)}));
            rows.push_back(
                EventRow("an item, white space and a slash", tag + " t />", {begin + "{t})\n", place.Bytes(5)})
                    .After(tag + " t /", {begin + "{t})\n", place.Bytes(4).Content(1)})
                    .AfterAndBytewise(tag + " t ", {begin + "{t}{/})\n", place.Bytes(5)}));
            rows.push_back(EventRow("a quote and a slash", tag + " 'q'/>", {begin + "{q})\n", place.Bytes(6)})
                               .After(tag + " 'q'/", {begin + "{q})\n", place.Bytes(5).Content(1)})
                               .AfterAndBytewise(tag + " 'q'", {"", place.Bytes(6), 16}));
        }
    }
    CheckRows(rows, ROWS_PER_CONSTRUCT);
}

TEST(EntityTagEventsTest, AfterASlash) {
    std::vector<EventRow> rows;
    for (const char byte : std::string("x /?'=%[\xE9\0", 10)) {
        // Cut before it, the slash begins an item, which white space ends.
        const std::string rest = byte + std::string("c>");
        const std::string shown = byte == '\xE9' ? "\\u00E9" : byte == '\0' ? "\\x00" : std::string(1, byte);
        const std::string asItem = byte == ' ' ? "{/}{c}" : "{/" + shown + "c}";
        rows.push_back(EventRow("anything but \">\"", "<!d a /" + rest, {"", {1, 8}, 702})
                           .After("<!d a /", {"entity(d|{a})\n", {1, 1 + 7 + 2 * 3}})
                           .AfterAndBytewise("<!d a ", {"entity(d|{a}" + asItem + ")\n", {1, 11}}));
        // In double quotes the item runs on.
        rows.push_back(EventRow("after a quote", "<!d \"a\"/" + rest, {"", {1, 9}, 702})
                           .After("<!d \"a\"/", {"entity(d|{a})\n", {1, 1 + 8 + 2 * 3}})
                           .AfterAndBytewise("<!d \"a\"", {"", {1, 12}, 16}));
    }
    CheckRows(rows);
}

const std::vector<EventRow> IN_A_DOCUMENT = {
    {"between texts", "a<!d t>b<p>", {"text(a)\nentity(d|{t})\ntext(b)\nstart(p|)\n", {1, 1 + 2 * 1 + 6 + 2 * 1 + 3}}},
    {"items of the declaration in front are gone", "<!d a b><!e c>", {"entity(d|{a}{b})\nentity(e|{c})\n", {1, 15}}},
    {"two line breaks are a pair across an item", "<!d\na\nb>", {"entity(d|{a}{b})\n", {2, 4}}},
    {"and none with a blank in between", "<!d\na \nb>", {"entity(d|{a}{b})\n", {3, 3}}},
    {"a name ends at a bracket", "<!d[t]>", {"entity(d|{[t]})\n", {1, 8}}},
    {"a name ends at a quote", "<!d't>", {"", {1, 7}, 16}},
    {"a section of characters is no declaration", "<![CDATA[x]]>", {"", {1, 3}, 703}},
    EventRow("the text after a slash that ends its piece", "<!d 'a'/>b<p>",
             {"entity(d|{a})\ntext(b)\nstart(p|)\n", {1, 15}})
        .After("<!d 'a'/", {"entity(d|{a})\ntext(>b)\nstart(p|)\n", {1, 16}})
        .AfterAndBytewise("<!d 'a'", {"", {1, 14}, 16}),
};

const std::vector<EventRow> NOT_OVER = {
    {"\"<!\"", "<!", {"", {1, 3}, 0}},
    {"\"<!\" and a blank", "<! ", {"", {1, 4}, 0}},
    {"\"<!\" and two blanks", "<!  ", {"", {1, 5}, 16}},
    {"a name", "<!doc", {"", {1, 6}, 16}},
    {"a name and white space", "<!doc ", {"", {1, 7}, 16}},
    {"no name after blanks", "<! >", {"", {1, 4}, 701}},
    {"no name after a line break", "<! \n1>", {"", {2, 1}, 701}},
    {"a digit", "<!1>", {"", {1, 3}, 703}},
};

const EventTables TABLES("EntityTagEventsTest", {{"InADocument", IN_A_DOCUMENT}, {"NotOver", NOT_OVER}});

}  // namespace
}  // namespace Kestra::Test
