#include "tests/html/stateless/EventRows.h"

// Values of attributes, and items of declarations: quoted, without escapes, or up to white space or
// ">".

namespace Kestra::Test {
namespace {

struct Content {
    std::string bytes;
    std::string shown;
};

std::vector<Content> Contents() {
    return {
        {"", ""},
        {"v", "v"},
        {"Vv1", "Vv1"},
        {"a b", "a b"},
        {"a\nb", "a\\nb"},
        {"\r\n", "\\r\\n"},
        {"\t", "\\t"},
        {"<b>", "<b>"},
        {">", ">"},
        {"/", "/"},
        {"?", "?"},
        {"/>", "/>"},
        {"?>", "?>"},
        {"=", "="},
        {"a=b", "a=b"},
        {"a\"b", "a\"b"},
        {"\"", "\""},
        {"'", "'"},
        {"a'b", "a'b"},
        {"\\", "\\\\"},
        {"-->", "-->"},
        {"\xE9", "\\u00E9"},
        {"a\x80", "a\\u20AC"},
        {"\x01", "\\x01"},
        {std::string(1, '\0'), "\\x00"},
        {"</script>", "</script>"},
        {std::string(300, 'v'), std::string(300, 'v')},
    };
}

/// Where a value stands, with a name after it.
struct Setting {
    const char* note;
    std::string before;
    std::string after;
    std::string eventBefore;
    std::string eventAfter;
};

const Setting SETTINGS[] = {
    {"an attribute", "<p a=", " b>", "start(p|{a=", "}{b=})\n"},
    {"an attribute of an instruction", "<?p a=", " b=1?>", "extern(p|{a=", "}{b=1?})\n"},
    {"an item of a declaration", "<!p ", " b>", "entity(p|{", "}{b})\n"},
};

TEST(ValueEventsTest, Quoted) {
    std::vector<EventRow> rows;
    for (const Setting& setting : SETTINGS) {
        for (const Content& content : Contents()) {
            for (const char quote : {'\'', '"'}) {
                if (content.bytes.find(quote) != std::string::npos)
                    continue;
                const std::string before = setting.before + quote + content.bytes + quote;
                const std::string input = before + setting.after;
                // Line breaks inside quotes are columns.
                const Place place = Place().Bytes(input.size());
                rows.push_back(
                    EventRow(setting.note, input, {setting.eventBefore + content.shown + setting.eventAfter, place})
                        .AfterAndBytewise(before, {"", place, 16}));  // the rest belongs to the value
            }
        }
    }
    CheckRows(rows, ROWS_PER_CONSTRUCT);
}

TEST(ValueEventsTest, Unquoted) {
    std::vector<EventRow> rows;
    for (const Setting& setting : SETTINGS) {
        for (const Content& content : Contents()) {
            if (content.bytes.find_first_of(" \t\r\n>") != std::string::npos ||
                content.bytes.find_first_of("'\"") == 0 || content.bytes.empty())
                continue;
            const std::string input = setting.before + content.bytes + setting.after;
            rows.emplace_back(
                setting.note, input,
                Outcome{setting.eventBefore + content.shown + setting.eventAfter, Place().Bytes(input.size())});
        }
    }
    const std::vector<EventRow> byHand = {
        {"\">\" ends it", "<p a=1>2>", {"start(p|{a=1})\n", {1, 12}}},
        {"\"/\" does not", "<p a=1/>", {"start(p|{a=1/})\n", {1, 9}}},
        {"\"?\" does not", "<p a=1?>", {"start(p|{a=1?})\n", {1, 9}}},
        {"quotes inside", "<p a=b'c\"d'>", {"start(p|{a=b'c\"d'})\n", {1, 13}}},
        {"nothing before \">\"", "<p a=>", {"start(p|{a=})\n", {1, 7}}},
        {"white space and nothing", "<p a= >", {"start(p|{a=})\n", {1, 8}}},
        {"a line break and nothing", "<p a=\n>", {"start(p|{a=})\n", {2, 2}}},
        {"what follows white space is the value", "<p a= b>", {"start(p|{a=b})\n", {1, 9}}},
        {"an item without anything", "<!p >", {"entity(p|{})\n", {1, 6}}},
        {"a byte that is no ASCII white space",
         "<p a=b\xA0"
         "c>",
         {"start(p|{a=b\\u00A0c})\n", {1, 10}}},
        {"a vertical tab ends it", "<p a=b\vc>", {"start(p|{a=b}{c=})\n", {1, 10}}},
        {"a line break ends it", "<p a=b\nc>", {"start(p|{a=b}{c=})\n", {2, 3}}},
    };
    rows.insert(rows.end(), byHand.begin(), byHand.end());
    CheckRows(rows);
}

TEST(ValueEventsTest, AfterWhiteSpaceWhoseLinesCount) {
    std::vector<EventRow> rows;
    for (const White& white : WHITES) {
        const std::string blanks(white.bytes);
        rows.emplace_back("an attribute", "<p a=" + blanks + "v b>",
                          Outcome{"start(p|{a=v}{b=})\n", Place().Bytes(5).Skip(white).Bytes(4)});
        rows.emplace_back("an item", "<!p" + blanks + "v b>",
                          Outcome{"entity(p|{v}{b})\n", Place().Bytes(3).Skip(white).Bytes(4)});
        const Place quoted = Place().Bytes(5).Skip(white).Bytes(6);
        rows.push_back(EventRow("a quoted value", "<p a=" + blanks + "'v' b>", {"start(p|{a=v}{b=})\n", quoted})
                           .AfterAndBytewise("<p a=" + blanks + "'v'", {"", quoted, 16}));
    }
    CheckRows(rows);
}

const std::vector<EventRow> RUNS_ON_AFTER_A_QUOTE_THAT_ENDS_THE_PIECE = {
    EventRow("up to the next quote", "<p a='1'>x'>", {"start(p|{a=1})\n", {1, 1 + 9 + 2 * 3}})
        .After("<p a='1'", {"start(p|{a=1>x})\n", {1, 13}})
        .Bytewise({"", {1, 13}, 16}),
    EventRow("up to the next quote of its kind", "<p a=\"1\">'\">", {"start(p|{a=1})\n", {1, 1 + 9 + 2 * 3}})
        .After("<p a=\"1\"", {"start(p|{a=1>'})\n", {1, 13}})
        .Bytewise({"", {1, 13}, 16}),
    EventRow("in an instruction", "<?p a='1'?>x' ?>", {"extern(p|{a=1})\n", {1, 1 + 11 + 2 * 5}})
        .After("<?p a='1'", {"extern(p|{a=1?>x})\n", {1, 17}})
        .After("<?p a='1'?", {"extern(p|{a=1})\n", {1, 1 + 10 + 2 * 6}})
        .Bytewise({"", {1, 17}, 16}),
    EventRow("in a declaration", "<!p '1'>x'>", {"entity(p|{1})\n", {1, 1 + 8 + 2 * 3}})
        .After("<!p '1'", {"entity(p|{1>x})\n", {1, 12}})
        .Bytewise({"", {1, 12}, 16}),
    EventRow("into the next value", "<a b='1' c='2'>", {"start(a|{b=1}{c=2})\n", {1, 16}})
        .After("<a b='1'", {"start(a|{b=1 c=})\n", {1, 16}})  // and "2'" begins no attribute
        .After("<a b='1' c='2'", {"", {1, 16}, 16})
        .Bytewise({"", {1, 16}, 16}),
    EventRow("and line breaks are columns there", "<a b='1'\nc='2'>", {"start(a|{b=1}{c=2})\n", {2, 7}})
        .After("<a b='1'", {"start(a|{b=1\\nc=})\n", {1, 16}})
        .After("<a b='1'\nc='2'", {"", {2, 7}, 16})
        .Bytewise({"", {1, 16}, 16}),
    EventRow("past quotes of the other kind", "<a b='\"' c=\"'\">", {"start(a|{b=\"}{c='})\n", {1, 16}})
        .After("<a b='\"'", {"start(a|{b=\" c=\"})\n", {1, 16}})
        .After("<a b='\"' c=\"'\"", {"", {1, 16}, 16})
        .Bytewise({"", {1, 16}, 16}),
    {"a name right after the quote", "<a b='1'", "c>", {"start(a|{b=1}{c=})\n", {1, 11}}, {"", {1, 11}, 16}},
};

const std::vector<EventRow> NOT_OVER = {
    {"without a closing quote", "<p a='v", {"", {1, 8}, 16}},
    {"without anything after the opening quote", "<p a='", {"", {1, 7}, 16}},
    {"without anything after the closing quote", "<p a='v'", {"", {1, 9}, 16}},
    {"a backslash before the quote means nothing", "<p a='\\'", {"", {1, 9}, 16}},
    {"unquoted", "<p a=v", {"", {1, 7}, 16}},
    {"not begun", "<p a=", {"", {1, 6}, 16}},
    {"not begun, after white space", "<p a=\n", {"", {2, 1}, 16}},
    {"an item without a closing quote", "<!p \"v>", {"", {1, 8}, 16}},
    {"an item that is unquoted", "<!p v", {"", {1, 6}, 16}},
    {"the quote of another kind", "<p a='v\">", {"", {1, 10}, 16}},
};

const EventTables TABLES("ValueEventsTest",
                         {{"RunsOnAfterAQuoteThatEndsThePiece", RUNS_ON_AFTER_A_QUOTE_THAT_ENDS_THE_PIECE},
                          {"NotOver", NOT_OVER}});

}  // namespace
}  // namespace Kestra::Test
