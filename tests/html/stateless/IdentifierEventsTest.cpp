#include "tests/html/stateless/EventRows.h"

// Names of tags and of attributes: a letter or "_", then letters, digits, "_", ":" and "-", in
// ASCII only.

namespace Kestra::Test {
namespace {

std::vector<std::string> Names() {
    return {"a",  "z",  "A",  "Z",   "_",  "a0",    "z9",      "ab",       "aZ", "a_",
            "a-", "a:", "_a", "__h", "h1", "a-b-c", "svg:use", "x_1-2:3-", "_-", std::string(300, 'n')};
}

TEST(IdentifierEventsTest, InEachConstruct) {
    std::vector<EventRow> rows;
    for (const std::string& name : Names()) {
        const auto add = [&](const char* note, const std::string& input, const std::string& events) {
            rows.emplace_back(note, input, Outcome{events, Place().Bytes(input.size())});
        };
        add("a start tag", "<" + name + ">", "start(" + name + "|)\n");
        add("a start tag after a blank", "< " + name + ">", "start(" + name + "|)\n");
        add("an end tag", "</" + name + ">", "end(" + name + ")\n");
        add("an instruction", "<?" + name + " v=1?>", "extern(" + name + "|{v=1?})\n");
        add("a declaration", "<!" + name + " t>", "entity(" + name + "|{t})\n");
        add("an attribute", "<p " + name + "=1>", "start(p|{" + name + "=1})\n");
        add("an attribute without a value", "<p " + name + ">", "start(p|{" + name + "=})\n");
    }
    CheckRows(rows, ROWS_PER_CONSTRUCT);
}

TEST(IdentifierEventsTest, AfterWhiteSpaceWhoseLinesCount) {
    std::vector<EventRow> rows;
    for (const White& white : WHITES) {
        const std::string blanks(white.bytes);
        rows.emplace_back("an end tag", "</" + blanks + "ab>",
                          Outcome{"end(ab)\n", Place().Bytes(2).Skip(white).Bytes(3)});
        rows.emplace_back("an instruction", "<?" + blanks + "ab v=1?>",
                          Outcome{"extern(ab|{v=1?})\n", Place().Bytes(2).Skip(white).Bytes(8)});
        rows.emplace_back("an attribute", "<p" + blanks + "ab=1>",
                          Outcome{"start(p|{ab=1})\n", Place().Bytes(2).Skip(white).Bytes(5)});
        // The main machine takes the first blank, and counts a column for it and no line.
        rows.emplace_back("a start tag", "< " + blanks + "ab>",
                          Outcome{"start(ab|)\n", Place().Bytes(2).Skip(white).Bytes(3)});
        rows.emplace_back("a declaration", "<! " + blanks + "ab t>",
                          Outcome{"entity(ab|{t})\n", Place().Bytes(3).Skip(white).Bytes(5)});
    }
    const std::vector<EventRow> byHand = {
        {"a line break after \"<\" is a column", "<\na>", {"start(a|)\n", {1, 5}}},
        {"and so it makes no pair with the next one", "<\n\na>", {"start(a|)\n", {2, 3}}},
        {"a line break after \"<!\" is a column", "<!\r\nd t>", {"entity(d|{t})\n", {2, 5}}},
        {"of three line breaks after \"</\" two count", "</\n\n\na>", {"end(a)\n", {3, 3}}},
        {"a pair begins in the text and ends in the tag", "a\n</\nb>", {"text(a\\n)\nend(b)\n", {2, 6}}},
    };
    rows.insert(rows.end(), byHand.begin(), byHand.end());
    CheckRows(rows);
}

/// Bytes that begin no name, and are no white space.
const std::string NO_START("190-:=.?/><!%\"'&*;[\\\x7F\x80\xE9\xFF\0", 25);

TEST(IdentifierEventsTest, ExpectedAndNotThere) {
    std::vector<EventRow> rows;
    for (const char byte : NO_START) {
        const auto add = [&](const char* note, const std::string& before) {
            rows.emplace_back(note, before + byte + "a>", Outcome{"", Place().Bytes(before.size()), 701});
        };
        add("an end tag", "</");
        add("an end tag after blanks", "</\t ");
        add("an instruction", "<?");
        add("a start tag", "< ");
        add("a declaration", "<! ");
    }
    rows.emplace_back("after a line break", "</\n1>", Outcome{"", {2, 1}, 701});
    rows.emplace_back("a text in front", "ab</>", Outcome{"text(ab)\n", {1, 7}, 701});
    CheckRows(rows, ROWS_PER_CONSTRUCT);
}

/// Every byte after the first one of a name.
TEST(IdentifierEventsTest, GoesOnWith) {
    const std::string going = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_:-";
    std::vector<EventRow> rows;
    for (unsigned code = 0; code < 256; ++code) {
        const char byte = static_cast<char>(code);
        const std::string input = std::string("</a") + byte + ">";
        if (going.find(byte) != std::string::npos)
            rows.emplace_back("goes on", input, Outcome{std::string("end(a") + byte + ")\n", {1, 6}});
        else if (byte == '>')
            rows.emplace_back("is over, and a text begins", input, Outcome{"end(a)\n", {1, 1 + 4 + 2 * 1}});
        else
            rows.emplace_back("is over", input, Outcome{"", {1, 4}, 702});
    }
    CheckRows(rows, 256);
}

}  // namespace
}  // namespace Kestra::Test
