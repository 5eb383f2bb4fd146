#include "tests/html/stateless/EventRows.h"

// Lists of attributes: in source order, duplicates kept, up to "?", "/" or ">".

namespace Kestra::Test {
namespace {

struct Attribute {
    std::string bytes;
    std::string shown;
    std::string name;
    char quote;         ///< at its end; 0 for none
    std::string value;  ///< when quoted
};

const Attribute ATTRIBUTES[] = {
    {"a", "{a=}", "a", 0, ""},
    {"b=1", "{b=1}", "b", 0, ""},
    {"c='2'", "{c=2}", "c", '\'', "2"},
    {"d=\"3\"", "{d=3}", "d", '"', "3"},
};

struct Separator {
    White white;
    std::string shown;  ///< inside a value
};

const Separator SEPARATORS[] = {
    {{" ", 0, 1}, " "}, {{"  ", 0, 2}, "  "}, {{"\t", 0, 1}, "\\t"}, {{"\n", 1, 1}, "\\n"}, {{"\r\n", 1, 1}, "\\r\\n"},
};

/// Two attributes. A closing quote that ends a piece makes its value run on, through the separator,
/// up to a quote of its kind.
EventRow MakePair(const Attribute& first, const Separator& separator, const Attribute& second) {
    const std::string before = "<p " + first.bytes;
    const std::string list = before + std::string(separator.white.bytes) + second.bytes;
    const std::string input = list + ">";
    const Place asColumns = Place().Bytes(input.size());
    const Place place = Place().Bytes(before.size()).Skip(separator.white).Bytes(second.bytes.size() + 1);
    EventRow row("a pair", input, {"start(p|" + first.shown + second.shown + ")\n", place});
    if (second.quote != 0)
        row.AfterAndBytewise(list, {"", place, 16});
    if (first.quote != 0) {
        Outcome runsOn{"", asColumns, 16};
        row.Bytewise(runsOn);
        if (second.quote == first.quote)  // its opening quote ends the value, and its content begins no attribute
            runsOn = {"start(p|{" + first.name + "=" + first.value + separator.shown + second.name + "=})\n",
                      asColumns};
        row.After(before, runsOn);
    }
    return row;
}

TEST(AttrsEventsTest, Pairs) {
    std::vector<EventRow> rows;
    for (const Attribute& first : ATTRIBUTES) {
        for (const Attribute& second : ATTRIBUTES) {
            for (const Separator& separator : SEPARATORS)
                rows.push_back(MakePair(first, separator, second));
            if (first.quote != 0)
                rows.push_back(MakePair(first, {{"", 0, 0}, ""}, second));
        }
    }
    CheckRows(rows, ROWS_PER_CONSTRUCT);
}

TEST(AttrsEventsTest, InAnInstruction) {
    std::vector<EventRow> rows;
    for (const White& white : WHITES) {
        const std::string blanks(white.bytes);
        rows.emplace_back("an instruction", "<?p a" + blanks + "b=1?>",
                          Outcome{"extern(p|{a=}{b=1?})\n", Place().Bytes(5).Skip(white).Bytes(5)});
        rows.emplace_back("after a value", "<?p a=1" + blanks + "b=2?>",
                          Outcome{"extern(p|{a=1}{b=2?})\n", Place().Bytes(7).Skip(white).Bytes(5)});
    }
    CheckRows(rows);
}

const std::vector<EventRow> OF_ANY_LENGTH = {
    {"none", "<p>", {"start(p|)\n", {1, 4}}},
    {"none, after white space", "<p \t>", {"start(p|)\n", {1, 6}}},
    {"the same name again", "<p a a a>", {"start(p|{a=}{a=}{a=})\n", {1, 10}}},
    {"the same name with other values", "<p b=2 a=1 b=1>", {"start(p|{b=2}{a=1}{b=1})\n", {1, 16}}},
    {"names that differ in case", "<p A=1 a=2>", {"start(p|{A=1}{a=2})\n", {1, 12}}},
    {"ten of them",
     "<p a b=1 c d=2 e f=3 g h=4 i j=5>",
     {"start(p|{a=}{b=1}{c=}{d=2}{e=}{f=3}{g=}{h=4}{i=}{j=5})\n", {1, 34}}},
    {"lines in between", "<p a=1\n\n\nb=2>", {"start(p|{a=1}{b=2})\n", {3, 5}}},
    {"a line break at the end", "<p a=1 b\n>", {"start(p|{a=1}{b=})\n", {2, 2}}},
    {"\"?\" ends the list of a start tag", "<p a b ?>", {"", {1, 8}, 702}},
    {"\"?\" right after a name", "<p a b?>", {"", {1, 7}, 702}},
    {"an instruction whose list ends at \"/\"", "<?p a b/>", {"", {1, 8}, 702}},
    {"a bad one ends the list", "<p a b=1 \">", {"start(p|{a=}{b=1})\n", {1, 12}}},
    {"a bad one right after a name", "<p a\">", {"start(p|{a=})\n", {1, 7}}},
    EventRow("a quote after a quoted value", "<p a='1''>", {"start(p|{a=1})\n", {1, 11}}).Bytewise({"", {1, 11}, 16}),
    {"not over after a value and a blank", "<p a=1 ", {"", {1, 8}, 16}},
    {"not over after the second name", "<p a=1 b", {"", {1, 9}, 16}},
    {"not over after line breaks", "<p a\r\n", {"", {2, 1}, 16}},
};

const EventTables TABLES("AttrsEventsTest", {{"OfAnyLength", OF_ANY_LENGTH}});

}  // namespace
}  // namespace Kestra::Test
