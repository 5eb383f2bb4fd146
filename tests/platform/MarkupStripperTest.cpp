#include "platform/MarkupStripper.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <string_view>

namespace Kestra::Base {
namespace {

struct Case {
    const char* note;
    std::string_view markup;
    std::string_view text;
};

const Case CASES[] = {
    {"nothing", "", ""},
    {"plain text", "a text", "a text"},
    {"a tag between words leaves a space", "one<br>two", "one two"},
    {"white space before a tag is enough", "one <b>two", "one two"},
    {"no space at the start", "<p>one", "one"},
    {"no space at the end", "one</p>", "one"},
    {"an end tag", "one</b >two", "one two"},
    {"a declaration", "<!DOCTYPE html>one", "one"},
    {"a processing instruction", "<?xml version=\"1.0\"?>one", "one"},
    {"a less-than sign before a space is text", "1 < 2", "1 < 2"},
    {"a less-than sign before a digit is text", "1<2", "1<2"},
    {"a less-than sign at the end is text", "one<", "one<"},
    {"two less-than signs are text and a tag", "<<b>one", "< one"},
    {"a greater-than sign is text", "1>2", "1>2"},
    {"a greater-than sign in double quotes", "<a title=\"1>2\">one", "one"},
    {"a greater-than sign in single quotes", "<a title = '1>2'>one", "one"},
    {"a quote that is no value closes nothing", "<a b'>one' >two", "one' >two"},
    {"a quote that never closes is a plain character", "<a title=\"1>two", "two"},
    {"one kind of quote inside the other", "<a title='\">\"'>one", "one"},
    {"a tag without an end reaches to the end", "one<b class=x", "one"},
    {"a comment", "one<!-- <b> > -- -->two", "one two"},
    {"a comment of no length", "<!---->one", "one"},
    {"a comment that shares its dashes", "<!-->one", "one"},
    {"a comment without an end reaches to the end", "one<!-- two> --", "one"},
    {"a conditional comment", "<!--[if IE]><p>one<![endif]-->two", "two"},
    {"script with markup in strings", "<script>if (a<b) w('</b>');</script>one", "one"},
    {"style", "one<style type=\"text/css\">p > b { }</style>two", "one two"},
    {"the names in capitals", "<SCRIPT>a</Script><STYLE>b</style>one", "one"},
    {"style does not end script", "<script>a</style>b</script>one", "one"},
    {"a longer name does not end script", "<script>a</scripts>b</script >one", "one"},
    {"a longer name is no script", "<scripting>one</scripting>", "one"},
    {"a slash ends the name", "<script/>a</script/>one", "one"},
    {"script without an end reaches to the end", "one<script>two</scr", "one"},
    {"script with an end tag that has no end", "one<script>two</script", "one "},
    {"script without its own end", "one<script src=\"a", "one"},
    {"character references stay", "a&nbsp;b&#233;", "a&nbsp;b&#233;"},
    {"bytes from 128 up and controls stay", "\x80\xFF\x01<b>\xE9", "\x80\xFF\x01 \xE9"},
    {"a two-byte run of ISO-2022-JP is text", "a\x1B$B<R>!\x1B(B<b>c", "a\x1B$B<R>!\x1B(B c"},
    {"a two-byte run without an end is text", "a\x1B$B<R>!", "a\x1B$B<R>!"},
    {"a shifted run of ISO-2022-KR is text", "\x1B$)C<b>\x0E<R>!\x0F<b>c", "\x1B$)C \x0E<R>!\x0F c"},
    {"a shifted run without an end is text", "\x1B$)C\x0E<R>!", "\x1B$)C\x0E<R>!"},
    {"shift-out alone shifts nothing", "\x0E<b>a\x0F", "\x0E a\x0F"},
    {"another escape sequence is no run", "\x1B(J<b>a", "\x1B(J a"},
    {"an escape at the end", "a\x1B", "a\x1B"},
    {"an escape and a dollar sign at the end", "a\x1B$", "a\x1B$"},
};

TEST(MarkupStripperTest, KeepsTheText) {
    for (const Case& row : CASES)
        EXPECT_EQ(StripMarkup(row.markup), row.text) << row.note;
}

TEST(MarkupStripperTest, Utf16KeepsItsTags) {
    const std::string_view page("<\0b\0>\0a\0", 8);
    EXPECT_EQ(StripMarkup(page), page);
}

/// From a heap block of the exact size, so that sanitizers see a read after it.
std::string StripExact(std::string_view markup) {
    const std::unique_ptr<char[]> block(new char[markup.size()]);
    markup.copy(block.get(), markup.size());
    return StripMarkup({block.get(), markup.size()});
}

TEST(MarkupStripperTest, EveryCutStaysInside) {
    for (const Case& row : CASES) {
        for (std::size_t size = 0; size <= row.markup.size(); ++size)
            EXPECT_LE(StripExact(row.markup.substr(0, size)).size(), size) << row.note << ", " << size << " bytes";
    }
}

TEST(MarkupStripperTest, NeverGrows) {
    const std::string_view pieces[] = {"<",  ">", "a", "/", "!",     "--",    "script", "style",
                                       "\"", "'", "=", " ", "\x1B$", "\x1B(", "\x0E",   "\xE9"};
    std::mt19937 random(20);
    for (int round = 0; round < 20000; ++round) {
        std::string markup;
        for (auto left = random() % 24; left > 0; --left)
            markup += pieces[random() % std::size(pieces)];
        EXPECT_LE(StripExact(markup).size(), markup.size()) << markup;
    }
}

std::string Repeat(std::string_view piece, std::size_t times) {
    std::string text;
    text.reserve(piece.size() * times);
    for (; times > 0; --times)
        text += piece;
    return text;
}

/// A second pass over the rest for each construct would take hours here.
TEST(MarkupStripperTest, TakesLinearTime) {
    constexpr std::size_t MANY = 1000000;
    EXPECT_EQ(StripMarkup(Repeat("<", MANY)), Repeat("<", MANY));
    EXPECT_EQ(StripMarkup(Repeat("<a", MANY)), "");
    EXPECT_EQ(StripMarkup(Repeat("<!--", MANY)), "");
    EXPECT_EQ(StripMarkup(Repeat("<!-- -->", MANY)), "");
    EXPECT_EQ(StripMarkup("<!--" + Repeat("-", MANY)), "");
    EXPECT_EQ(StripMarkup(Repeat("<script>", MANY)), "");
    EXPECT_EQ(StripMarkup("<style>" + Repeat("</script", MANY)), "");
    EXPECT_EQ(StripMarkup("<script>" + Repeat("</", MANY)), "");
    EXPECT_EQ(StripMarkup(Repeat("<a b=\">", MANY)), "");
    EXPECT_EQ(StripMarkup(Repeat("<a b='>c", MANY / 2) + Repeat("<a b=\">c", MANY / 2)),
              Repeat("c ", MANY / 2 - 1) + "c");
    EXPECT_EQ(StripMarkup(Repeat("a\x1B$B", MANY)), Repeat("a\x1B$B", MANY));
    EXPECT_EQ(StripMarkup(Repeat("\x1B$)\x0E", MANY)), Repeat("\x1B$)\x0E", MANY));
    EXPECT_EQ(StripMarkup(Repeat("a<b>", MANY)), Repeat("a ", MANY - 1) + "a");
}

}  // namespace
}  // namespace Kestra::Base
