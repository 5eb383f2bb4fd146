#include "tests/html/stateless/EventRows.h"

// Instructions, up to "?>". A "?" that ends its piece completes the instruction, and what follows
// is text; one that an unquoted value has taken is good as well.

namespace Kestra::Test {
namespace {

struct Lead {
    std::string bytes;
    Place place;
};

struct List {
    std::string bytes;
    std::string shown;
    bool quoted;
};

TEST(ExternTagEventsTest, EachEnd) {
    const Lead leads[] = {{"<?", {1, 3}}, {"<? ", {1, 4}}, {"<?\n", {2, 1}}};
    const List lists[] = {
        {"", "", false}, {" v", "{v=}", false}, {" v='1'", "{v=1}", true}, {" v w=\"1\"", "{v=}{w=1}", true}};
    const White whites[] = {{"", 0, 0}, {" ", 0, 1}, {"\t ", 0, 2}};
    std::vector<EventRow> rows;
    for (const std::string name : {"xml", "a", "_x:y"}) {
        for (const Lead& lead : leads) {
            for (const List& list : lists) {
                for (const White& white : whites) {
                    const std::string before = lead.bytes + name + list.bytes;
                    const std::string input = before + std::string(white.bytes) + "?>";
                    const std::string events = "extern(" + name + "|" + list.shown + ")\n";
                    const Place place = lead.place.Bytes(name.size() + list.bytes.size()).Skip(white).Bytes(2);
                    EventRow row("an instruction", input, {events, place});
                    row.AfterAndBytewise(input.substr(0, input.size() - 1), {events, place.Bytes(1)});
                    if (list.quoted)
                        row.AfterAndBytewise(before, {"", place, 16});
                    rows.push_back(row);
                }
            }
        }
    }
    CheckRows(rows, ROWS_PER_CONSTRUCT);
}

TEST(ExternTagEventsTest, AnUnquotedValueTakesTheQuestionMark) {
    std::vector<EventRow> rows;
    for (const std::string value : {"1", "1.0", "a?b", "?", "", "/", "a=b", "x'y", "<"}) {
        const std::string input = "<?xml v=" + value + "?>";
        rows.emplace_back("and it is over after it", input,
                          Outcome{"extern(xml|{v=" + value + "?})\n", Place().Bytes(input.size())});
    }
    for (const White& white : WHITES) {
        const std::string before = "<?a v=1?" + std::string(white.bytes);
        const Place place = Place().Bytes(8).Skip(white);
        rows.emplace_back("white space and \">\"", before + ">", Outcome{"", place, 702});
        rows.push_back(EventRow("white space and another \"?\"", before + "?>", {"extern(a|{v=1?})\n", place.Bytes(2)})
                           .AfterAndBytewise(before + "?", {"extern(a|{v=1?})\n", place.Bytes(1).Content(1)}));
    }
    CheckRows(rows);
}

const std::vector<EventRow> A_BAD_ATTRIBUTE = {
    // Byte by byte, the "?" is no longer part of it.
    EventRow("that ends in \"?\"", "<?a %?>", {"extern(a|)\n", {1, 8}}).Bytewise({"extern(a|)\n", {1, 1 + 6 + 2 * 1}}),
    EventRow("with a name", "<?a %y?>", {"extern(a|)\n", {1, 9}})
        .After("<?a %", {"extern(a|{y=})\n", {1, 9}})
        .Bytewise({"extern(a|{y=})\n", {1, 1 + 7 + 2 * 1}}),
    {"that ends in another byte", "<?a %>", {"", {1, 6}, 702}},
    EventRow("that ends in a blank", "<?a %? >", {"", {1, 8}, 702})
        .After("<?a %", {"", {1, 7}, 702})
        .Bytewise({"extern(a|)\n", {1, 1 + 6 + 2 * 2}}),
};

TEST(ExternTagEventsTest, AfterAQuestionMark) {
    std::vector<EventRow> rows;
    for (const char byte : std::string(" ?/b='\"%\xE9\0", 10)) {
        const std::string rest = byte + std::string("c");
        rows.push_back(EventRow("anything but \">\"", "<?a ?" + rest, {"", {1, 6}, 702})
                           .AfterAndBytewise("<?a ?", {"extern(a|)\n", {1, 1 + 5 + 2 * 2}}));
    }
    rows.push_back(EventRow("a line break", "<?a?", "\n>", {"", {1, 5}, 702}, {"extern(a|)\n", {2, 2 + 2 * 1}}));
    rows.push_back(EventRow("a tag", "<?a?", "<b>", {"", {1, 5}, 702}, {"extern(a|)\nstart(b|)\n", {1, 8}}));
    rows.push_back(EventRow("text and tags", "<?a?", ">b<c>",
                            {"extern(a|)\ntext(b)\nstart(c|)\n", {1, 1 + 5 + 2 * 1 + 3}},
                            {"extern(a|)\ntext(>b)\nstart(c|)\n", {1, 1 + 4 + 2 * 2 + 3}}));
    rows.emplace_back("nothing yet", "<?a?", Outcome{"extern(a|)\n", {1, 5}});
    rows.emplace_back("nothing yet, after an attribute", "<?a b ?", Outcome{"extern(a|{b=})\n", {1, 8}});
    CheckRows(rows);
}

const std::vector<EventRow> WITHOUT_A_QUESTION_MARK = {
    {"after the name", "<?a>", {"", {1, 4}, 702}},
    {"after white space", "<?a >", {"", {1, 5}, 702}},
    {"after a line break", "<?a\n>", {"", {2, 1}, 702}},
    {"after an attribute", "<?a b>", {"", {1, 6}, 702}},
    {"after a value", "<?a b=c>", {"", {1, 8}, 702}},
    {"after a value that has one inside", "<?a b=c?d>", {"", {1, 10}, 702}},
    {"after a value that takes the slash", "<?a b=c/>", {"", {1, 9}, 702}},
    {"after another attribute", "<?a b=c? d>", {"", {1, 11}, 702}},
    {"a slash after the name", "<?a/>", {"", {1, 4}, 702}},
    {"a slash after an attribute", "<?a b/>", {"", {1, 6}, 702}},
    {"a slash after white space", "<?a b />", {"", {1, 7}, 702}},
    {"one in quotes", "<?a b='?'", ">", {"", {1, 10}, 702}, {"", {1, 11}, 16}},
};

const std::vector<EventRow> IN_A_DOCUMENT = {
    EventRow("a declaration of XML", "<?xml version='1.0' ?>a<b>",
             {"extern(xml|{version=1.0})\ntext(a)\nstart(b|)\n", {1, 28}})
        .After("<?xml version='1.0'", {"", {1, 27}, 16})
        .After("<?xml version='1.0' ?", {"extern(xml|{version=1.0})\ntext(>a)\nstart(b|)\n", {1, 29}})
        .Bytewise({"", {1, 27}, 16}),
    {"an unquoted version", "<?xml version=1.0?>", {"extern(xml|{version=1.0?})\n", {1, 20}}},
    {"two of them", "<?a b=?><?c d=?>", {"extern(a|{b=?})\nextern(c|{d=?})\n", {1, 17}}},
    {"attributes of the one in front are gone", "<?a b=1?><c>", {"extern(a|{b=1?})\nstart(c|)\n", {1, 13}}},
    {"that it is called like a script changes nothing",
     "<?script a=b?><c>",
     {"extern(script|{a=b?})\nstart(c|)\n", {1, 18}}},
};

const std::vector<EventRow> NOT_OVER = {
    {"\"<?\"", "<?", {"", {1, 3}, 0}},
    {"\"<?\" and a blank", "<? ", {"", {1, 4}, 16}},
    {"a name", "<?xml", {"", {1, 6}, 16}},
    {"a name and white space", "<?xml ", {"", {1, 7}, 16}},
    {"a value with its question mark", "<?xml a=b?", {"", {1, 11}, 16}},
    {"no name", "<?>", {"", {1, 3}, 701}},
    {"a question mark for a name", "<?\?>", {"", {1, 3}, 701}},
    {"no name after a line break", "<?\n?>", {"", {2, 1}, 701}},
};

const EventTables TABLES("ExternTagEventsTest", {{"ABadAttribute", A_BAD_ATTRIBUTE},
                                                 {"WithoutAQuestionMark", WITHOUT_A_QUESTION_MARK},
                                                 {"InADocument", IN_A_DOCUMENT},
                                                 {"NotOver", NOT_OVER}});

}  // namespace
}  // namespace Kestra::Test
