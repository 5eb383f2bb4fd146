#include "tests/html/stateless/EventRows.h"
#include "tests/support/EventRun.h"

// Which charset text, comments, values and items are converted with, and how the markup chooses it.
//
// The byte C1 is the Cyrillic letter U+0430 in KOI8-R, U+0411 in Windows-1251, and U+00C1 in
// Windows-1252, the ANSI code page.

namespace Kestra::Test {
namespace {

using Lines = std::vector<std::string>;

constexpr StringNS::CharSet::Code NONE = 0;
constexpr StringNS::CharSet::Code KOI8_R = 20866;
constexpr StringNS::CharSet::Code WINDOWS_1251 = 1251;
constexpr StringNS::CharSet::Code UTF16 = 1200;
constexpr StringNS::CharSet::Code UTF8 = 65001;
constexpr StringNS::CharSet::Code NO_CONVERTER = 99999;

constexpr const char* IS_KOI8_R = "text(\\u0430)";
constexpr const char* IS_WINDOWS_1251 = "text(\\u0411)";
constexpr const char* IS_ANSI = "text(\\u00C1)";

/// The event of a text after a tag, which is before another tag.
std::string TextAfter(const std::string& tag, StringNS::CharSet::Code charset, unsigned long flags) {
    const EventRun run = ParseEvents({tag + "\xC1<p>"}, charset, flags);
    return run.trace.size() < 3 ? run.Describe() : run.trace[run.trace.size() - 3];
}

struct Discovery {
    const char* note;
    std::string tag;
    std::string text;  ///< the event of the text after it
    StringNS::CharSet::Code charset = NONE;
    unsigned long flags = 1;
};

void CheckDiscoveries(const std::vector<Discovery>& discoveries) {
    for (const Discovery& discovery : discoveries)
        EXPECT_EQ(TextAfter(discovery.tag, discovery.charset, discovery.flags), discovery.text)
            << discovery.note << ": " << discovery.tag;
}

TEST(CharsetEventsTest, MetaTags) {
    CheckDiscoveries({
        {"http-equiv and content", "<meta http-equiv=Content-Type content='text/html; charset=koi8-r'>", IS_KOI8_R},
        {"content and http-equiv", "<meta content='text/html; charset=koi8-r' http-equiv=Content-Type>", IS_KOI8_R},
        {"case is ignored", "<META HTTP-EQUIV=content-TYPE Content='CharSet=KOI8-r'>", IS_KOI8_R},
        {"a tag that is closed at once", "<meta http-equiv=Content-Type content='charset=koi8-r'/>", IS_KOI8_R},
        {"an attribute called charset", "<meta charset=koi8-r>", IS_ANSI},
        {"an attribute called charset beside http-equiv", "<meta http-equiv=Content-Type charset=koi8-r>", IS_ANSI},
        {"content only", "<meta content='text/html; charset=koi8-r'>", IS_ANSI},
        {"http-equiv only", "<meta http-equiv=Content-Type>", IS_ANSI},
        {"another tag", "<metal http-equiv=Content-Type content='charset=koi8-r'>", IS_ANSI},
        {"another header", "<meta http-equiv=Refresh content='charset=koi8-r'>", IS_ANSI},
        {"a header with a blank", "<meta http-equiv='Content-Type ' content='charset=koi8-r'>", IS_ANSI},
        {"an attribute with another name", "<meta http-equiv=Content-Type contents='charset=koi8-r'>", IS_ANSI},
        {"a header without a value", "<meta http-equiv content='charset=koi8-r'>", IS_ANSI},
        {"the last header counts: not this one",
         "<meta http-equiv=Content-Type http-equiv=Refresh content='charset=koi8-r'>", IS_ANSI},
        {"the last header counts: this one",
         "<meta http-equiv=Refresh http-equiv=Content-Type content='charset=koi8-r'>", IS_KOI8_R},
        {"an end tag", "</meta>", IS_ANSI},
        {"a declaration", "<!meta http-equiv=Content-Type content=charset=koi8-r>", IS_ANSI},
        {"an instruction", "<?meta http-equiv=Content-Type content='charset=koi8-r' ?>", IS_ANSI},
        {"an instruction's attribute", "<meta encoding=koi8-r>", IS_ANSI},
    });
}

std::string Meta(const std::string& content) {
    return "<meta http-equiv=Content-Type content='" + content + "'>";
}

TEST(CharsetEventsTest, Parameters) {
    CheckDiscoveries({
        {"alone", Meta("charset=koi8-r"), IS_KOI8_R},
        {"blanks are stripped", Meta("a;  charset  =  koi8-r  "), IS_KOI8_R},
        {"tabs are not, at the name", Meta("charset\t=koi8-r"), IS_ANSI},
        {"tabs are not, at the value", Meta("charset=koi8-r\t"), IS_ANSI},
        {"empty parameters", Meta(";;charset=koi8-r;;"), IS_KOI8_R},
        {"parameters after it", Meta("charset=koi8-r; a=b"), IS_KOI8_R},
        {"the last one counts", Meta("charset=windows-1251;charset=koi8-r"), IS_KOI8_R},
        {"an empty last one", Meta("charset=koi8-r;charset="), IS_ANSI},
        {"a blank last one", Meta("charset=koi8-r;charset= "), IS_ANSI},
        {"the last attribute counts",
         "<meta http-equiv=Content-Type content='charset=windows-1251' content='charset=koi8-r'>", IS_KOI8_R},
        {"a last attribute without one", "<meta http-equiv=Content-Type content='charset=koi8-r' content='text/html'>",
         IS_KOI8_R},
        {"an empty last attribute", "<meta http-equiv=Content-Type content='charset=koi8-r' content='charset='>",
         IS_ANSI},
        {"an empty last attribute leaves what was given",
         "<meta http-equiv=Content-Type content='charset=koi8-r' content='charset= '>", IS_WINDOWS_1251, WINDOWS_1251},
        {"an empty attribute and then another one",
         "<meta http-equiv=Content-Type content='charset=' content='charset=koi8-r'>", IS_KOI8_R},
        {"more than one \"=\"", Meta("charset=koi8-r=x"), IS_ANSI},
        {"two \"=\" in a row", Meta("charset==koi8-r"), IS_ANSI},
        {"\"=\" in front", Meta("=charset=koi8-r"), IS_ANSI},
        {"a part with two \"=\" leaves the one in front", Meta("charset=koi8-r;charset=a=b"), IS_KOI8_R},
        {"no \"=\"", Meta("charset;koi8-r"), IS_ANSI},
        {"another name", Meta("xcharset=koi8-r"), IS_ANSI},
        {"a comma is no separator", Meta("text/html,charset=koi8-r"), IS_ANSI},
        {"quotes are part of the name", Meta("charset=\"koi8-r\""), IS_ANSI},
        {"an unknown name, with no charset before", Meta("charset=no-such-charset"), IS_ANSI},
        {"an unknown name, with one before", Meta("charset=no-such-charset"), IS_ANSI, KOI8_R},
        {"an empty name, with one before", Meta("charset="), IS_KOI8_R, KOI8_R},
    });
}

TEST(CharsetEventsTest, Instructions) {
    CheckDiscoveries({
        {"an encoding", "<?xml version='1.0' encoding='koi8-r'?>", IS_KOI8_R},
        {"case is ignored", "<?XML ENCODING='KOI8-R'?>", IS_KOI8_R},
        {"unquoted, with a blank", "<?xml encoding=koi8-r ?>", IS_KOI8_R},
        {"unquoted, the question mark is part of the name", "<?xml encoding=koi8-r?>", IS_ANSI},
        {"such a name is unknown and leaves none", "<?xml encoding=koi8-r?>", IS_ANSI, KOI8_R},
        {"nothing is trimmed", "<?xml encoding=' koi8-r'?>", IS_ANSI},
        {"the first one counts", "<?xml encoding='koi8-r' encoding='windows-1251'?>", IS_KOI8_R},
        {"even when it is empty", "<?xml encoding='' encoding='koi8-r'?>", IS_ANSI},
        {"an empty one changes nothing", "<?xml encoding=''?>", IS_KOI8_R, KOI8_R},
        {"an unknown one leaves none", "<?xml encoding='no-such-charset'?>", IS_ANSI, KOI8_R},
        {"none changes nothing", "<?xml version='1.0'?>", IS_KOI8_R, KOI8_R},
        {"another attribute", "<?xml charset='koi8-r'?>", IS_ANSI},
        {"another instruction", "<?xmls encoding='koi8-r'?>", IS_ANSI},
        {"a start tag of that name", "<xml encoding='koi8-r'>", IS_ANSI},
    });
}

TEST(CharsetEventsTest, Flags) {
    const std::string meta = Meta("charset=koi8-r");
    const std::string instruction = "<?xml encoding='koi8-r'?>";
    for (const std::string& tag : {meta, instruction}) {
        CheckDiscoveries({
            {"the markup replaces what was given", tag, IS_KOI8_R, WINDOWS_1251, 1},
            {"not without the flag", tag, IS_WINDOWS_1251, WINDOWS_1251, 0},
            {"unless nothing was given", tag, IS_KOI8_R, NONE, 0},
            {"other flags mean nothing", tag, IS_WINDOWS_1251, WINDOWS_1251, 0xFFFFFFFE},
            {"beside it either", tag, IS_KOI8_R, WINDOWS_1251, 0xFFFFFFFF},
            {"a second one replaces the first", Meta("charset=windows-1251") + tag, IS_KOI8_R, NONE, 1},
            {"not without the flag", Meta("charset=windows-1251") + tag, IS_WINDOWS_1251, NONE, 0},
            {"its name is never in the charset it replaces", tag, IS_KOI8_R, UTF16, 1},
            {"an unknown one makes way for a second one", Meta("charset=no-such-charset") + tag, IS_KOI8_R, NONE, 0},
        });
    }
}

const std::vector<EventRow> FROM_THE_TAG_ON = {
    {"not the text in front",
     "\xC1<?xml encoding=koi8-r b=\xC1 ?",
     ">\xC1<p>",
     {"text(\\u00C1)\nextern(xml|{encoding=koi8-r}{b=\\u0430})\ntext(\\u0430)\nstart(p|)\n",
      Place().Content(1).Bytes(28).Content(1).Bytes(3)},
     {"text(\\u00C1)\nextern(xml|{encoding=koi8-r}{b=\\u0430})\ntext(>\\u0430)\nstart(p|)\n",
      Place().Content(1).Bytes(27).Content(2).Bytes(3)}},
    {"the values of the tag itself",
     "<meta a=\xC1 http-equiv=content-type content=charset=koi8-r>",
     {"start(meta|{a=\\u0430}{http-equiv=content-type}{content=charset=koi8-r})\n", {1, 58}}},
    {"every other construct",
     "<meta http-equiv=content-type content=charset=koi8-r><!d \xC1><?i a=\xC1?><p a=\xC1>\xC1</p>",
     {"start(meta|{http-equiv=content-type}{content=charset=koi8-r})\nentity(d|{\\u0430})\nextern(i|{a=\\u0430?})\n"
      "start(p|{a=\\u0430})\ntext(\\u0430)\nend(p)\n",
      Place().Bytes(53 + 6 + 9 + 7).Content(1).Bytes(4)}},
    EventRow("a comment", "<!--\xC1-->", {"comment(\\u0430)\n", {1, 9}})
        .In(KOI8_R)
        .AfterAndBytewise("<!--\xC1", {"comment(\\u0430)\n", {1, 1 + 5 + 2 * 3}})
        .After("<!--\xC1-", {"comment(\\u0430)\n", {1, 1 + 6 + 2 * 2}})
        .After("<!--\xC1--", {"comment(\\u0430)\n", {1, 1 + 7 + 2 * 1}}),
    EventRow("not the body of a script, but the values before it", "<script a=\xC1>'\xC1'</script>\xC1<p>",
             {"script({a=\\u0430}|'\\u00C1')\ntext(\\u0430)\nstart(p|)\n",
              Place().Bytes(12 + 3 + 1).Content(8).Content(1).Bytes(3)})
        .In(KOI8_R),
    EventRow("nor that of a style sheet", "<style a=\xC1>\xC1</style>\xC1<p>",
             {"style({a=\\u0430}|\\u00C1)\ntext(\\u0430)\nstart(p|)\n",
              Place().Bytes(11).Content(1).Bytes(1).Content(8).Bytes(3)})
        .In(KOI8_R),
    EventRow("a character of two bytes", "\xC3\xA9<p a=\xC3\xA9>",
             {"text(\\u00E9)\nstart(p|{a=\\u00E9})\n", {1, 1 + 2 * 2 + 8}})
        .In(UTF8),
    EventRow("a charset without a converter falls back to the ANSI code page", "\xC1<p a=\xC1>",
             {"text(\\u00C1)\nstart(p|{a=\\u00C1})\n", {1, 1 + 2 * 1 + 7}})
        .In(NO_CONVERTER),
};

/// Pairs of bytes make characters; names and bodies stay bytes.
const std::vector<EventRow> PAIRS_OF_BYTES = {
    EventRow("text and values", "ab<p cd=ef>", {"text(\\u6261)\nstart(p|{cd=\\u6665})\n", {1, 14}}).In(UTF16),
    EventRow("an odd byte at the end", "abc<p cd=efg>",
             {"text(\\u6261\\uFFFD)\nstart(p|{cd=\\u6665\\uFFFD})\n", {1, 17}})
        .In(UTF16),
    EventRow("items, and the names of end tags", "<!d ab></p>", {"entity(d|{\\u6261})\nend(p)\n", {1, 12}}).In(UTF16),
    EventRow("the body of a script", "<script>ab</script>", {"script(|ab)\n", {1, 1 + 8 + 2 * 2 + 1 + 2 * 8}})
        .In(UTF16),
    EventRow("the body of a style sheet", "<style>ab</style>", {"style(|ab)\n", {1, 1 + 7 + 2 * 2 + 1 + 2 * 7}})
        .In(UTF16),
    {"chosen by the markup",
     "<?xml encoding=utf-16 a=bc ?",
     ">ab<p>",
     {"extern(xml|{encoding=\\u7475\\u2D66\\u3631}{a=\\u6362})\ntext(\\u6261)\nstart(p|)\n",
      Place().Bytes(29).Content(2).Bytes(3)},
     {"extern(xml|{encoding=\\u7475\\u2D66\\u3631}{a=\\u6362})\ntext(\\u613E\\uFFFD)\nstart(p|)\n",
      Place().Bytes(28).Content(3).Bytes(3)}},
};

/// A charset belongs to one document.
TEST(CharsetEventsTest, AnotherDocumentBeginsWithoutOne) {
    TracedParser parser;
    parser.StartParse(KOI8_R);
    parser.Feed("\xC1<p>");
    parser.EndParse();
    parser.StartParse(NONE);
    parser.Feed("\xC1<p>");
    parser.EndParse();
    EXPECT_EQ(parser.lines, (Lines{"start-parsing", IS_KOI8_R, "start(p|)", "stop-parsing", "start-parsing", IS_ANSI,
                                   "start(p|)", "stop-parsing"}));
}

const EventTables TABLES("CharsetEventsTest", {{"FromTheTagOn", FROM_THE_TAG_ON}, {"PairsOfBytes", PAIRS_OF_BYTES}});

}  // namespace
}  // namespace Kestra::Test
