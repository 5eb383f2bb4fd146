#include "tests/html/parser/DocumentRows.h"

namespace Kestra::Test {
namespace {

constexpr StringNS::CharSet::Code ISO_2022_CHARSETS[] = {50221, 50222, 50225};

/// Checks a row in the three charsets whose escape runs hide markup.
template <std::size_t N>
void CheckInIso2022(const DocumentRow (&rows)[N]) {
    for (DocumentRow row : rows) {
        for (const StringNS::CharSet::Code charset : ISO_2022_CHARSETS) {
            row.charset = charset;
            CheckRow(row, NARROW_TO_NARROW);
        }
    }
}

TEST(Iso2022Test, Text) {
    const DocumentRow rows[] = {
        {"markup characters in a run are text", "a\x1B$B<b>'\"/\x1B(Bc<d>",
         "text(a\\x1B$B<b>'\"/\\x1B(Bc)\nstart(|d||)"},
        {"a run that begins the document", "\x1B$@<\x1B(J<a>", "text(\\x1B$@<\\x1B(J)\nstart(|a||)"},
        {"the shorter designation completes first: the C is part of the run", "\x1B$(C<\x1B(B<a>",
         "text(\\x1B$(C<\\x1B(B)\nstart(|a||)"},
        {"the designations with \")\"", "\x1B$)C<\x1B.F<a>", "text(\\x1B$)C<\\x1B.F)\nstart(|a||)"},
        {"an escape that designates nothing", "\x1Bx<a>", "text(\\x1Bx)\nstart(|a||)"},
        {"a NUL after an escape is kept", std::string("\x1B\0<a>", 5), "text(\\x1B\\x00)\nstart(|a||)"},
        {"NULs in a run are kept", std::string("\x1B$B\0<\x1B\0\x1B(B<a>", 13),
         "text(\\x1B$B\\x00<\\x1B\\x00\\x1B(B)\nstart(|a||)"},
        {"an escape before a tag takes the \"<\"", "\x1B<a>b<c>", "text(\\x1B<a>b)\nstart(|c||)"},
        {"a designation inside a run does not end it", "\x1B$B<\x1B$B>\x1B(B<a>",
         "text(\\x1B$B<\\x1B$B>\\x1B(B)\nstart(|a||)"},
        {"a run that is not closed", "\x1B$B<a>", "text(\\x1B$B<a>)"},
        {"a document that ends in a designation", "a\x1B$", "text(a\\x1B$)"},
        {"a document that ends in a closing sequence", "\x1B$B<\x1B(", "text(\\x1B$B<\\x1B()"},
        {"a document that ends with an escape", "a\x1B", "text(a\\x1B)"},
        {"two runs", "\x1B$B<\x1B(B\x1B$B<\x1B(I<a>", "text(\\x1B$B<\\x1B(B\\x1B$B<\\x1B(I)\nstart(|a||)"},
        {"line feeds in a run are counted", "\x1B$B\n<\n\x1B(B\n", "text(\\x1B$B\\n<\\n\\x1B(B\\n)"},
    };
    CheckInIso2022(rows);
}

TEST(Iso2022Test, Attributes) {
    const DocumentRow rows[] = {
        {"a run hides the quote of a double-quoted value", "<p a=\"\x1B$B\">\x1B(B\">",
         "start(|p|{ |a|=|\"\\x1B$B\">\\x1B(B\"}|)"},
        {"in every double-quoted value", "<p a=\"\x1B$B\"\x1B(B\" b=\"\x1B$B\"\x1B(B\">",
         "start(|p|{ |a|=|\"\\x1B$B\"\\x1B(B\"}{ |b|=|\"\\x1B$B\"\\x1B(B\"}|)"},
        {"also after an attribute without a value", "<p a b=\"\x1B$B\"\x1B(B\">",
         "start(|p|{ |a}{ |b|=|\"\\x1B$B\"\\x1B(B\"}|)"},
        {"also after an empty value", "<p a='' b=\"\x1B$B\"\x1B(B\">",
         "start(|p|{ |a|=|''}{ |b|=|\"\\x1B$B\"\\x1B(B\"}|)"},
        {"not right after an unquoted value", "<p a=x b=\"\x1B$B\">", "start(|p|{ |a|=|x}{ |b|=|\"\\x1B$B\"}|)"},
        {"but again after the next one", "<p a=x b='' c=\"\x1B$B\"\x1B(B\">",
         "start(|p|{ |a|=|x}{ |b|=|''}{ |c|=|\"\\x1B$B\"\\x1B(B\"}|)"},
        {"in the next tag too", "<p a=x><p b=\"\x1B$B\"\x1B(B\">",
         "start(|p|{ |a|=|x}|)\nstart(|p|{ |b|=|\"\\x1B$B\"\\x1B(B\"}|)"},
        {"in an end tag", "</p a=\"\x1B$B\"\x1B(B\">", "end(|p| |{|a|=|\"\\x1B$B\"\\x1B(B\"}|)"},
        {"in an end tag after an unquoted value too", "</p a=x b=\"\x1B$B\"\x1B(B\">",
         "end(|p| |{|a|=|x}{ |b|=|\"\\x1B$B\"\\x1B(B\"}|)"},
        {"never in a single-quoted value", "<p a='\x1B$B'>\x1B(B", "start(|p|{ |a|=|'\\x1B$B'}|)\ntext(\\x1B(B)"},
        {"nor in an unquoted one", "<p a=\x1B$B>\x1B(B", "start(|p|{ |a|=|\\x1B$B}|)\ntext(\\x1B(B)"},
        {"nor in a name", "<p\x1B$B>", "start(|p\\x1B$B||)"},
        {"a backslash before the escape protects nothing", "<p a=\"\\\x1B$B\"\x1B(B\">",
         "start(|p|{ |a|=|\"\\\\\\x1B$B\"\\x1B(B\"}|)"},
        {"an escape that designates nothing", "<p a=\"\x1Bx\">", "start(|p|{ |a|=|\"\\x1Bx\"}|)"},
        {"an escape that takes the quote", "<p a=\"\x1B\"b\">", "start(|p|{ |a|=|\"\\x1B\"b\"}|)"},
    };
    CheckInIso2022(rows);
}

/// The last attributes of a long list are read as the first ones are.
TEST(Iso2022Test, LongListsOfAttributes) {
    const auto repeat = [](std::string_view text) {
        std::string all;
        for (int i = 0; i < 9; ++i)
            all += text;
        return all;
    };
    const std::string run = " b=\"\x1B$B\">\x1B(B\"";
    const std::string readRun = "{ |b|=|\"\\x1B$B\">\\x1B(B\"}";
    const DocumentRow rows[] = {
        {"after nine empty values",
         "<p" + repeat(" a=''") + run + ">",
         {"start(|p|" + repeat("{ |a|=|''}") + readRun + "|)"}},
        {"after nine attributes without a value",
         "<p" + repeat(" a") + run + ">",
         {"start(|p|" + repeat("{ |a}") + readRun + "|)"}},
        {"in all of ten values", "<p" + repeat(run) + run + ">", {"start(|p|" + repeat(readRun) + readRun + "|)"}},
        {"in a short tag", "<p" + repeat(" a=''") + run + "/>", {"short(|p|" + repeat("{ |a|=|''}") + readRun + "|)"}},
        {"in an end tag",
         "</p c=''" + repeat(" a=''") + run + ">",
         {"end(|p| |{|c|=|''}" + repeat("{ |a|=|''}") + readRun + "|)"}},
        {"in an XML declaration",
         "<?xml" + repeat(" a=''") + run + "?>",
         {"extern(|xml|" + repeat("{ |a|=|''}") + readRun + "|)"}},
    };
    CheckInIso2022(rows);
}

TEST(Iso2022Test, ScriptAndStyle) {
    const DocumentRow rows[] = {
        {"a run in the text", "<script>a\x1B$B'</script>\"/\x1B(B'b'",
         "start(|script||)\njs-start\ntext(a\\x1B$B'</script>\"/\\x1B(B)\ns-string(b)"},
        {"a run in a double-quoted string", "<script>\"\x1B$B\"</script>\x1B(B\"</script>",
         "start(|script||)\njs-start\nd-string(\\x1B$B\"</script>\\x1B(B)\nend(|script|||)\njs-end"},
        {"a backslash before the escape makes it content", "<script>\"\\\x1B$B\"</script>",
         "start(|script||)\njs-start\nd-string(\\\\\\x1B$B)\nend(|script|||)\njs-end"},
        {"a backslash at the end of a run escapes nothing", "<script>\"\x1B$B\\\x1B(B\"</script>",
         "start(|script||)\njs-start\nd-string(\\x1B$B\\\\\\x1B(B)\nend(|script|||)\njs-end"},
        {"a single-quoted string has no runs", "<script>'\x1B$B'</script>",
         "start(|script||)\njs-start\ns-string(\\x1B$B)\nend(|script|||)\njs-end"},
        {"style", "<style>\"\x1B$B\"\x1B(B\"\x1B$B<\x1B(B</style>",
         "start(|style||)\ncss-start\nd-string(\\x1B$B\"\\x1B(B)\ntext(\\x1B$B<\\x1B(B)\nend(|style|||)\ncss-end"},
        {"a foreign end tag", "<script></p a=\"\x1B$B\">\x1B(B\"></script>",
         "start(|script||)\njs-start\ntext(</p a=\"\\x1B$B\">\\x1B(B\">)\nend(|script|||)\njs-end"},
    };
    CheckInIso2022(rows);
}

TEST(Iso2022Test, DeclarationsAndInstructions) {
    const DocumentRow rows[] = {
        {"in every double-quoted item of a declaration", "<!a \"\x1B$B\">\x1B(B\" \"\x1B$B\"\x1B(B\">",
         "entity(|a|{ |\"\\x1B$B\">\\x1B(B\"}{ |\"\\x1B$B\"\\x1B(B\"}|)"},
        {"also after a word", "<!a b \"\x1B$B\">\x1B(B\">", "entity(|a|{ |b}{ |\"\\x1B$B\">\\x1B(B\"}|)"},
        {"not in a single-quoted one", "<!a '\x1B$B'>\x1B(B", "entity(|a|{ |'\\x1B$B'}|)\ntext(\\x1B(B)"},
        {"nor in a word", "<!a \x1B$B>\x1B(B", "entity(|a|{ |\\x1B$B}|)\ntext(\\x1B(B)"},
        {"in every double-quoted value of an XML declaration", "<?xml a=\"\x1B$B\"?>\x1B(B\" b=\"\x1B$B\"\x1B(B\"?>",
         "extern(|xml|{ |a|=|\"\\x1B$B\"?>\\x1B(B\"}{ |b|=|\"\\x1B$B\"\\x1B(B\"}|)"},
        {"also after an attribute without a value", "<?xml a b=\"\x1B$B\"?>\x1B(B\"?>",
         "extern(|xml|{ |a}{ |b|=|\"\\x1B$B\"?>\\x1B(B\"}|)"},
        {"not right after an unquoted value", "<?xml a=x b=\"\x1B$B\"?>", "extern(|xml|{ |a|=|x}{ |b|=|\"\\x1B$B\"}|)"},
        {"in every double-quoted string of an instruction", "<?a \"\x1B$B\"?>\x1B(B\"b\"\x1B$B\"?>\x1B(B\"?>",
         "extern-text(<?a \"\\x1B$B\"?>\\x1B(B\"b\"\\x1B$B\"?>\\x1B(B\"?>)"},
        {"also after a single-quoted one", "<?a 'b'\"\x1B$B\"?>\x1B(B\"?>",
         "extern-text(<?a 'b'\"\\x1B$B\"?>\\x1B(B\"?>)"},
        {"a backslash before the escape makes it content", "<?a \"\\\x1B$B\"?>", "extern-text(<?a \"\\\\\\x1B$B\"?>)"},
        {"not in a single-quoted one of an instruction", "<?a '\x1B$B'?>", "extern-text(<?a '\\x1B$B'?>)"},
        {"nor outside of its strings", "<?a \x1B$B>\x1B(B", "extern-text(<?a \\x1B$B>)\ntext(\\x1B(B)"},
    };
    CheckInIso2022(rows);
}

TEST(Iso2022Test, CommentsAndSectionsHaveNoRuns) {
    const DocumentRow rows[] = {
        {"a comment", "<!--\x1B$B-->\x1B(B", "comment(\\x1B$B)\ntext(\\x1B(B)"},
        {"a CDATA section", "<![CDATA[\x1B$B]]>", "cdata(CDATA|[\\x1B$B)"},
        {"a conditional section", "<![if \x1B$B]>", "conditional(if| \\x1B$B|)"},
        {"a block comment", "<script>/*\x1B$B*/</script>",
         "start(|script||)\njs-start\nc-comment(\\x1B$B)\nend(|script|||)\njs-end"},
        {"a line comment", "<script>//\x1B$B\n</script>",
         "start(|script||)\njs-start\ncpp-comment(\\x1B$B)\ntext(\\n)\nend(|script|||)\njs-end"},
    };
    CheckInIso2022(rows);
}

TEST(Iso2022Test, OtherCharsetsHaveNoRuns) {
    for (const StringNS::CharSet::Code charset : {0U, 932U, 1252U, 50220U, 50227U, 51932U, 65001U}) {
        const DocumentRow rows[] = {
            {"text", "\x1B$B<b>\x1B(B", "text(\\x1B$B)\nstart(|b||)\ntext(\\x1B(B)", charset},
            {"a double-quoted value", "<p a=\"\x1B$B\"\x1B(B>", "start(|p|{ |a|=|\"\\x1B$B\"\\x1B(B}|)", charset},
            {"a double-quoted string", "<script>\"\x1B$B\"</script>",
             "start(|script||)\njs-start\nd-string(\\x1B$B)\nend(|script|||)\njs-end", charset},
        };
        for (const DocumentRow& row : rows)
            CheckRow(row, NARROW_TO_NARROW);
    }
}

TEST(Iso2022Test, TheWideParserHasNoRuns) {
    const DocumentRow rows[] = {
        {"text", "\x1B$B<b>\x1B(B", "text(\\x1B$B)\nstart(|b||)\ntext(\\x1B(B)"},
        {"a double-quoted value", "<p a=\"\x1B$B\"\x1B(B>", "start(|p|{ |a|=|\"\\x1B$B\"\\x1B(B}|)"},
        {"a double-quoted string", "<script>\"\x1B$B\"</script>",
         "start(|script||)\njs-start\nd-string(\\x1B$B)\nend(|script|||)\njs-end"},
    };
    for (const DocumentRow& row : rows)
        CheckRow(row, WIDE_TO_WIDE);
}

TEST(Iso2022Test, AWideObserverGetsTheCharacters) {
    // 24 22 is U+3042; its second byte is a quotation mark. 24 3C is U+305C, with a "<".
    const std::string input = "a\x1B$B$<\x1B(B<p t=\"\x1B$B$\"\x1B(B\">";
    for (const StringNS::CharSet::Code charset : {50221U, 50222U}) {
        ForEverySplit(input, [&](const Cuts& cuts) {
            const DocumentRun run =
                ParseBy(NARROW_TO_WIDE, input, cuts, SettingsFor(NARROW_TO_WIDE, Feed::BUFFER, charset));
            EXPECT_EQ(run.Lines(), Join({"start-parsing", Trace::FormatCharset(charset), "text(a\\u305C)",
                                         "start(|p|{ |t|=|\"\\u3042\"}|)", "end-parsing"}));
        });
    }
}

TEST(Iso2022Test, RunsThatAreOpenInJunk) {
    // The double-quoted value is still open at the end of the input, with the quote inside the run.
    const std::string input = "<p a=\"\x1B$B\">";
    for (const StringNS::CharSet::Code charset : ISO_2022_CHARSETS) {
        ForEverySplit(input, [&](const Cuts& cuts) {
            const DocumentRun run =
                ParseBy(NARROW_TO_NARROW, input, cuts, SettingsFor(NARROW_TO_NARROW, Feed::STREAM, charset));
            EXPECT_EQ(run.Lines(),
                      Join({"start-parsing", Trace::FormatCharset(charset), "junk(<p a=\"\\x1B$B\">)", "end-parsing"}));
        });
    }
}

}  // namespace
}  // namespace Kestra::Test
