#include "tests/html/stateless/EventRows.h"

// One attribute: a name, with or without "=" and a value. What begins no name takes the rest of the
// tag with it.

namespace Kestra::Test {
namespace {

/// What follows a name.
struct Form {
    const char* note;
    std::string bytes;
    std::string value;
    char quote;  ///< at its end; 0 for none
    bool takesSlash;
    White place;
};

const Form FORMS[] = {
    {"no value", "", "", 0, false, {"", 0, 0}},
    {"a value", "=v", "v", 0, true, {"", 0, 2}},
    {"blanks around \"=\"", " = v", "v", 0, true, {"", 0, 4}},
    {"a blank before \"=\"", " =v", "v", 0, true, {"", 0, 3}},
    {"a blank after \"=\"", "= v", "v", 0, true, {"", 0, 3}},
    {"line breaks around \"=\" are a pair", "\n=\nv", "v", 0, true, {"", 1, 3}},
    {"a pair of line breaks after \"=\"", "\t=\r\nv", "v", 0, true, {"", 1, 2}},
    {"a value of two bytes", "=vw", "vw", 0, true, {"", 0, 3}},
    {"two \"=\"", "==", "=", 0, true, {"", 0, 2}},
    {"\"=\" in the value", "=a=b", "a=b", 0, true, {"", 0, 4}},
    {"a quote in the value", "=a'b", "a'b", 0, true, {"", 0, 4}},
    {"nothing between the quotes", "=''", "", '\'', false, {"", 0, 3}},
    {"single quotes", "='q'", "q", '\'', false, {"", 0, 4}},
    {"double quotes", "=\"q\"", "q", '"', false, {"", 0, 4}},
    {"quotes and blanks", " = 'q r'", "q r", '\'', false, {"", 0, 8}},
    {"a line break before the quote", "=\n\"q\"", "q", '"', false, {"", 1, 4}},
};

TEST(AttrEventsTest, InEachForm) {
    std::vector<EventRow> rows;
    for (const std::string name : {"n", "data-x"}) {
        for (const Form& form : FORMS) {
            const std::string attribute = "<p " + name + form.bytes;
            const Place place = Place().Bytes(3 + name.size()).Skip(form.place);
            for (const std::string end : {">", " >", "/>", " />"}) {
                const bool takesSlash = form.takesSlash && end == "/>";
                const bool closes = !takesSlash && end.ends_with("/>");
                const std::string start = "start(p|{" + name + "=" + form.value + (takesSlash ? "/" : "") + "})\n";
                const Outcome whole{start + (closes ? "end(p)\n" : ""), place.Bytes(end.size())};
                EventRow row(form.note, attribute + end, whole);
                if (closes) {  // at "/", and ">" is text
                    const Outcome early{whole.events, place.Bytes(end.size() - 1).Content(1)};
                    row.AfterAndBytewise(attribute + end.substr(0, end.size() - 1), early);
                }
                if (form.quote != 0)
                    row.AfterAndBytewise(attribute, {"", whole.place, 16});
                rows.push_back(row);
            }
        }
    }
    CheckRows(rows, ROWS_PER_CONSTRUCT);
}

/// Bytes that begin no attribute and do not end the list either.
const std::string BAD("%19-:=\"'.&<!*#@[\x7F\x80\xE9\x01\0", 21);

TEST(AttrEventsTest, ABadOneTakesTheRest) {
    std::vector<EventRow> rows;
    for (const char byte : BAD) {
        const std::string bad = std::string("<p ") + byte;
        rows.emplace_back("one byte", bad + ">", Outcome{"start(p|)\n", {1, 6}});
        // What is left in the next piece is bad as well.
        rows.emplace_back("two bytes", bad + byte + ">", Outcome{"start(p|)\n", {1, 7}});
        rows.push_back(EventRow("and a name", bad + "y>", {"start(p|)\n", {1, 7}})
                           .AfterAndBytewise(bad, {"start(p|{y=})\n", {1, 7}}));
        const Outcome forgotten{"start(p|{y=z})\n", {1, 10}};
        rows.push_back(EventRow("and an attribute", bad + " y=z>", {"start(p|)\n", {1, 10}})
                           .AfterAndBytewise(bad, forgotten)
                           .After(bad + " ", forgotten)
                           .After(bad + " y=", {"start(p|{z=})\n", {1, 10}}));
    }
    CheckRows(rows, ROWS_PER_CONSTRUCT);
}

const std::vector<EventRow> A_BAD_ONE_THAT_IS_INTERRUPTED = {
    EventRow("the attribute in front stays", "<p a %>", {"start(p|{a=})\n", {1, 8}}),
    EventRow("the next piece begins with a name again", "<a %x y=z>", {"start(a|)\n", {1, 11}})
        .After("<a %", {"start(a|{x=}{y=z})\n", {1, 11}})
        .After("<a %x", {"start(a|{y=z})\n", {1, 11}})
        .After("<a %x ", {"start(a|{y=z})\n", {1, 11}})
        .After("<a %x y=", {"start(a|{z=})\n", {1, 11}})
        .Bytewise({"start(a|{x=}{y=z})\n", {1, 11}}),
    EventRow("with a quoted value", "<p a=1 %b c='d'>", {"start(p|{a=1})\n", {1, 17}})
        .After("<p a=1 %", {"start(p|{a=1}{b=}{c=d})\n", {1, 17}})
        .After("<p a=1 %b", {"start(p|{a=1}{c=d})\n", {1, 17}})
        .After("<p a=1 %b ", {"start(p|{a=1}{c=d})\n", {1, 17}})
        .After("<p a=1 %b c='", {"start(p|{a=1}{d=})\n", {1, 17}})
        .Bytewise({"", {1, 17}, 16}),
    EventRow("a slash is part of it", "<p %/>", {"start(p|)\n", {1, 7}})
        .After("<p %", {"start(p|)\nend(p)\n", {1, 7}})
        .Bytewise({"start(p|)\nend(p)\n", {1, 1 + 5 + 2 * 1}}),
    {"a question mark is part of it", "<p %", "?>", {"start(p|)\n", {1, 7}}, {"", {1, 5}, 702}},
    EventRow("its line breaks are columns", "<p %", "\ny>", {"start(p|)\n", {1, 8}}, {"start(p|{y=})\n", {2, 3}})
        .After("<p %\n", {"start(p|{y=})\n", {1, 8}}),
    {"a line break at its end", "<p %", "\n>", {"start(p|)\n", {1, 7}}, {"start(p|)\n", {2, 2}}},
    EventRow("blanks at its end", "<p % >", {"start(p|)\n", {1, 7}}),
    EventRow("it is not over", "<p %x", {"", {1, 6}, 16}),
    EventRow("a list that begins with \"=\"", "<p =1 ", "b>", {"start(p|)\n", {1, 9}}, {"start(p|{b=})\n", {1, 9}})
        .After("<p =1", {"start(p|{b=})\n", {1, 9}}),
};

const std::vector<EventRow> NOT_OVER = {
    {"a name", "<p nam", {"", {1, 7}, 16}},
    {"a name and white space", "<p name ", {"", {1, 9}, 16}},
    {"a name and line breaks", "<p name\n\n", {"", {2, 1}, 16}},
    {"\"=\"", "<p name=", {"", {1, 9}, 16}},
    {"white space and no name", "<p ", {"", {1, 4}, 16}},
};

const EventTables TABLES("AttrEventsTest",
                         {{"ABadOneThatIsInterrupted", A_BAD_ONE_THAT_IS_INTERRUPTED}, {"NotOver", NOT_OVER}});

}  // namespace
}  // namespace Kestra::Test
