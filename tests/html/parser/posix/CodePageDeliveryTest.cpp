#include <gtest/gtest.h>

#include <string>

#include "tests/html/parser/DocumentRows.h"

// What reaches a wide observer where the system's converter decides: Windows has its own answers for these bytes, or none.

namespace Kestra::Test {
namespace {

TEST(PosixDeliveryTest, FourBytesForACharacter) {
    const std::string input = "\x94\x39\xFC\x36";
    for (const Feed feed : {Feed::BUFFER, Feed::STREAM}) {
        ForEverySplit(input, [&](const Cuts& cuts) {
            const DocumentRun run = ParseDocument(input, cuts, SettingsFor(NARROW_TO_WIDE, feed, 54936));
            EXPECT_EQ(run.Lines(), Join({"start-parsing", "charset(54936)", "text(\\uD83D\\uDE00)", "end-parsing"}));
            EXPECT_EQ(run.parseResult, 0U);
            EXPECT_EQ(run.endResult, 0U);
        });
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
