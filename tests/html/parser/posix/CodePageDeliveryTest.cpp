#include "tests/html/parser/DocumentRows.h"

// What reaches a wide observer where the system's converter decides: Windows has its own answers
// for these bytes, or none.

namespace Kestra::Test {
namespace {

TEST(PosixDeliveryTest, FourBytesForACharacter) {
    const std::string input = "\x94\x39\xFC\x36";
    for (const Feed feed : {Feed::BUFFER, Feed::STREAM}) {
        ForEverySplit(input, [&](const Cuts& cuts) {
            const DocumentRun run = ParseDocument(input, cuts, SettingsFor(NARROW_TO_WIDE, feed, 54936));
            EXPECT_EQ(run.Lines(), Join({"start-parsing", "charset(54936)", "text(\\uD83D\\uDE00)", "end-parsing"}));
            ExpectSuccess(run);
        });
    }
}

TEST(PosixDeliveryTest, TheTerminatorCompletesTheLastUnit) {
    const struct {
        const char* note;
        StringNS::CharSet::Code charset;
        std::string input;
        std::string text;
    } rows[] = {
        {"big-endian UTF-16, half a unit", 1201, "\x01", "text(\\u0100)"},
        {"after a whole one", 1201, std::string("\0a\x30", 3), "text(a\\u3000)"},
        {"half a unit of zero is a terminator", 1201, std::string("\0a\0", 3), "text(a)"},
        {"whole units", 1201, std::string("\0a", 2), "text(a)"},
        {"a terminator of its own", 1201, std::string("\0a\0\0", 4), "text(a\\x00)"},
        {"UTF-32 that lacks its last byte", 12000, std::string("\x01\0\0", 3), "text(\\x01)"},
        {"that lacks two", 12000, std::string("a\0\0\0\x01\0", 6), "text(a\\uFFFD)"},
        {"big-endian UTF-32 that lacks its last byte", 12001, std::string("\0\0\x01", 3), "text(\\u0100)"},
        {"1200 keeps its odd byte", 1200, std::string("a\0\x01", 3), "text(a\\uFFFD)"},
        {"half a character takes no terminator with it", 932, "a\x82", "text(a\\uFFFD)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.note);
        ForEverySplit(row.input, [&](const Cuts& cuts) {
            const DocumentRun run =
                ParseDocument(row.input, cuts, SettingsFor(NARROW_TO_WIDE, Feed::BUFFER, row.charset));
            EXPECT_EQ(run.Lines(), Join({"start-parsing", Trace::FormatCharset(row.charset), row.text, "end-parsing"}));
        });
    }
}

TEST(PosixDeliveryTest, PagesThatDeclareCharsetsWithoutATableInIcu) {
    const struct {
        const char* name;
        StringNS::CharSet::Code charset;
        std::string bytes;
        const char* text;
    } rows[] = {
        {"johab", 1361, "\x88\x61", "\\uAC00"},
        {"irv", 20105, "$", "\\u00A4"},
        {"de", 20106, "@", "\\u00A7"},
        {"se", 20107, "$", "\\u00A4"},
        {"no", 20108, "^~", "^\\u203E"},
        {"t.61", 20261,
         "\xC2"
         "e",
         "\\u00E9"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string input =
            "<p>abc</p><script>evil()</script><meta charset=" + std::string(row.name) + ">" + row.bytes;
        const Lines tokens = {"start(|p||)", "text(abc)",    "end(|p|||)",      "start(|script||)",
                              "js-start",    "text(evil())", "end(|script|||)", "js-end"};
        DocumentSettings settings = SettingsFor(NARROW_TO_WIDE, Feed::BUFFER, 0);
        settings.detectCharsetErrors = true;
        DocumentRun run = ParseDocument(input, {}, settings);
        EXPECT_EQ(run.parseResult, 705U);
        EXPECT_EQ(run.charset, row.charset);
        settings.charset = row.charset;
        run = ParseDocument(input, {}, settings);
        Lines expected = {"start-parsing", Trace::FormatCharset(row.charset)};
        expected.insert(expected.end(), tokens.begin(), tokens.end());
        expected.push_back("start(|meta|{ |charset|=|" + std::string(row.name) + "}|)");
        expected.push_back("text(" + std::string(row.text) + ")");
        expected.push_back("end-parsing");
        EXPECT_EQ(run.Lines(), Join(expected));
        ExpectSuccess(run);
        EXPECT_FALSE(run.hasCharsetErrors);
    }
}

TEST(PosixDeliveryTest, CharsetErrors) {
    const struct {
        const char* note;
        StringNS::CharSet::Code charset;
        std::string input;
    } rows[] = {
        {"a first byte without a second one", 932, "a\x82<b>"},
        {"a replacement character is an error: the exception is UTF-8's", 54936, "\x84\x31\xA4\x37"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.note);
        ForEverySplit(row.input, [&](const Cuts& cuts) {
            DocumentSettings settings = SettingsFor(NARROW_TO_WIDE, Feed::BUFFER, row.charset);
            settings.detectCharsetErrors = true;
            EXPECT_TRUE(ParseDocument(row.input, cuts, settings).hasCharsetErrors);
            settings.detectCharsetErrors = false;
            EXPECT_FALSE(ParseDocument(row.input, cuts, settings).hasCharsetErrors);
            settings = SettingsFor(NARROW_TO_NARROW, Feed::BUFFER, row.charset);
            settings.detectCharsetErrors = true;
            EXPECT_FALSE(ParseDocument(row.input, cuts, settings).hasCharsetErrors);
        });
    }
}

}  // namespace
}  // namespace Kestra::Test
