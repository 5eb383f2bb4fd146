#include "tests/html/rewrite/RewriteRun.h"
#include "tests/support/Flavours.h"

namespace Kestra::Test {
namespace {

using namespace HTML;

/// Writes a mark wherever something can be written.
std::uint32_t WriteAround(RewriterElement element) {
    return element.InsertBefore("1", CONTENT_TEXT) + element.Prepend("2", CONTENT_TEXT) +
           element.Append("3", CONTENT_TEXT) + element.InsertAfter("4", CONTENT_TEXT);
}

TEST(RewriterElementTest, WritesAroundAndInside) {
    CheckRows(std::vector<ElementRow>{
        {"an element", "a<b>c</b>d", "b", WriteAround, "a1<b>2c3</b>4d"},
        {"an empty one", "a<b></b>d", "b", WriteAround, "a1<b>23</b>4d"},
        {"in the order of the calls", "<b>c</b>", "b", All(WriteAround, WriteAround), "11<b>22c33</b>44"},
        {"without an end tag", "a<b>c", "b", WriteAround, "a1<b>2c34"},
        {"ended by the element around it", "<p>a<b>c</p>d", "b", WriteAround, "<p>a1<b>2c34</p>d"},
        {"both", "<p>a<p>c</div></p>d", "p", WriteAround, "1<p>2a1<p>2c</div>3</p>4d34"},
        {"several that end together, the innermost first", "<p><b><i>x</p>", "p *", WriteAround,
         "<p>1<b>21<i>2x3434</p>"},
        {"an end tag of another one", "<b>a</i>c</b>", "b", WriteAround, "1<b>2a</i>c3</b>4"},
        {"one within another of the name", "<b>a<b>c</b>d</b>", "b", WriteAround, "1<b>2a1<b>2c3</b>4d3</b>4"},
        {"a short tag that opens", "<b/>a</b>", "b", WriteAround, "1<b/>2a3</b>4"},
        {"names in any case", "<B>a</b>", "b", WriteAround, "1<B>2a3</b>4"},
        {"a stray end tag", "</b>a<b>c</b></b>", "b", WriteAround, "</b>a1<b>2c3</b>4</b>"},
        {"markup", "<b>c</b>", "b", Append("<i>", CONTENT_MARKUP), "<b>c<i></b>"},
        {"text", "<b>c</b>", "b", Prepend("<i>"), "<b>&lt;i&gt;c</b>"},
        {"wide text", "<b>c</b>", "b",
         [](RewriterElement element) { return element.Append(WideStringView(To<WideString>("\xE9")), CONTENT_TEXT); },
         "<b>c\xC3\xA9</b>"},
        {"text after what it could go on with", "<b>&am</b>", "b", Append("p;"), "<b>&am&#112;;</b>"},
    });
}

TEST(RewriterElementTest, LeavesOut) {
    CheckRows(std::vector<ElementRow>{
        {"an element", "a<b>c<i>d</i></b>e", "b", Remove(), "ae"},
        {"without an end tag", "a<b>c<i>d", "b", Remove(), "a"},
        {"one that another element ends", "<p>a<b>c</p>d", "b", Remove(), "<p>a</p>d"},
        {"one within another", "<p>a<b>c</b>d</p>e", "*", Remove(), "e"},
        {"several", "<b>1</b>2<b>3</b>4", "b", Remove(), "24"},
        {"a void element", "a<br>c", "br", Remove(), "ac"},
        {"a short one", "<svg><a/>b</svg>", "a", Remove(), "<svg>b</svg>"},
        {"replaced", "a<b>c</b>d", "b", Replace("<r>", CONTENT_MARKUP), "a<r>d"},
        {"a void element replaced", "a<br>d", "br", Replace("<r>", CONTENT_MARKUP), "a<r>d"},
        {"content", "a<b>c<i>d</i></b>e", "b", SetContent("<c>"), "a<b>&lt;c&gt;</b>e"},
        {"content without an end tag", "a<b>c<i>d", "b", SetContent("<c>"), "a<b>&lt;c&gt;"},
        {"content that another element ends", "<p>a<b>c</p>d", "b", SetContent("<c>"), "<p>a<b>&lt;c&gt;</p>d"},
        {"unwrapped", "a<b>c<i>d</i></b>e", "b", Unwrap(), "ac<i>d</i>e"},
        {"unwrapped without an end tag", "a<b>c", "b", Unwrap(), "ac"},
        {"all unwrapped", "a<b>c<i>d</i></b>e", "*", Unwrap(), "acde"},
        {"a void element unwrapped", "a<br>c", "br", Unwrap(), "ac"},
        {"nothing of what was to be written inside", "a<b>c</b>d", "b", All(WriteAround, Remove(), WriteAround),
         "a1144d"},
        {"content in place of what was to be written inside", "a<b>c</b>d", "b",
         All(WriteAround, SetContent("<c>"), Append("5")), "a1<b>&lt;c&gt;5</b>4d"},
        {"what is written inside stays when the tags go", "a<b>c</b>d", "b", All(WriteAround, Unwrap()), "a12c34d"},
        {"removed and then replaced", "a<b>c</b>d", "b", All(Remove(), Replace("<r>", CONTENT_MARKUP)), "a<r>d"},
        {"removed and then unwrapped", "a<b>c</b>d", "b", All(Remove(), Unwrap()), "ad"},
        {"attributes of the start tag", "a<b>c</b>d", "b",
         [](RewriterElement element) {
             return element.GetStartTag().SetAttribute("x", "y") + element.InsertAfter("!", CONTENT_TEXT);
         },
         "a<b x=\"y\">c</b>!d"},
    });
}

TEST(RewriterElementTest, RefusesWhatCannotBe) {
    CheckRows(std::vector<ElementRow>{
        {"content of a void element", "<br>", "br", Prepend("x"), "<br>", REWRITE_NO_CONTENT},
        {"at its end", "<br>", "br", Append("x"), "<br>", REWRITE_NO_CONTENT},
        {"in place of it", "<br>", "br", SetContent("<c>"), "<br>", REWRITE_NO_CONTENT},
        {"content of a short tag that closes itself", "<svg><g/></svg>", "g", SetContent("<c>"), "<svg><g/></svg>",
         REWRITE_NO_CONTENT},
        {"ill-formed text", "<b></b>", "b", Append("\xFF"), "<b></b>", 2},
        {"text in a script", "<script>a</script>", "script", Append("b<c"), "<script>ab<c</script>"},
        {"its end tag", "<script>a</script>", "script", Append("</script>", CONTENT_MARKUP), "<script>a</script>",
         REWRITE_ENDS_EARLY},
        {"a script's comment", "<script>a</script>", "script", Append("<!--"), "<script>a</script>",
         REWRITE_ENDS_EARLY},
        {"the begin of an end tag at the begin", "<script>a</script>", "script", Prepend("</"), "<script>a</script>",
         REWRITE_ENDS_EARLY},
        {"in place of a script", "<script>a</script>", "script", All(SetContent("</script"), SetContent("x")),
         "<script>x</script>", REWRITE_ENDS_EARLY},
    });
}

TEST(RewriterElementTest, SaysWhatItIs) {
    std::string seen;
    ExpectRewritten("<P><br><x-Y a=b/><svg><g/>", "<P><br><x-Y a=b/><svg><g/>", [&](Rewriter* rewriter) {
        seen.clear();
        rewriter->OnElement("*", [&](RewriterElement element) {
            EXPECT_FALSE(element.IsOver());
            seen += element.GetName() + (element.HasContent() ? "+ " : "- ");
        });
    });
    EXPECT_EQ(seen, "p+ br- x-y+ svg+ g- ");
}

TEST(RewriterElementTest, SelectorsChoose) {
    const auto mark = [](RewriterElement element) { element.GetStartTag().AddAttribute("m", ""); };
    const struct {
        std::string_view selector;
        std::string_view expected;
    } rows[] = {
        {"a", "<p class='x y'><a m=\"\" href='u'><b></b></a></p><a m=\"\" id=i>"},
        {"p a", "<p class='x y'><a m=\"\" href='u'><b></b></a></p><a id=i>"},
        {"p > b", "<p class='x y'><a href='u'><b></b></a></p><a id=i>"},
        {"a > b", "<p class='x y'><a href='u'><b m=\"\"></b></a></p><a id=i>"},
        {".y b", "<p class='x y'><a href='u'><b m=\"\"></b></a></p><a id=i>"},
        {"#i", "<p class='x y'><a href='u'><b></b></a></p><a m=\"\" id=i>"},
        {"[href^=u]", "<p class='x y'><a m=\"\" href='u'><b></b></a></p><a id=i>"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.selector);
        const RewriteRun run = Rewrite("<p class='x y'><a href='u'><b></b></a></p><a id=i>", [&](Rewriter* rewriter) {
            EXPECT_EQ(rewriter->OnElement(row.selector, mark), REWRITE_OK);
        });
        std::string expected(row.expected);
        // An attribute is added after the last one.
        for (const auto& [from, to] : {std::pair<std::string, std::string>{" m=\"\" href='u'", " href='u' m=\"\""},
                                       {" m=\"\" id=i", " id=i m=\"\""}}) {
            for (std::size_t place = expected.find(from); place != std::string::npos;
                 place = expected.find(from, place + to.size()))
                expected.replace(place, from.size(), to);
        }
        EXPECT_EQ(run.output, expected);
    }
    RewriterBench rewriter;
    std::string message;
    EXPECT_EQ(rewriter.OnElement("a,b", mark, &message), REWRITE_BAD_SELECTOR);
    EXPECT_FALSE(message.empty());
    EXPECT_EQ(rewriter.OnElement("", mark), REWRITE_BAD_SELECTOR);
    EXPECT_EQ(rewriter.OnContent(
                  "a:b", [](RewriterToken) {}, &message),
              REWRITE_BAD_SELECTOR);
    EXPECT_EQ(rewriter.OnElement("a", nullptr), 2U);
    EXPECT_EQ(rewriter.OnContent("a", nullptr), 2U);
}

TEST(RewriterElementTest, ContentIsWhatLiesBetweenTheTags) {
    std::string seen;
    const std::string_view document = "a<p>b<b>c</b><br></p>d<p>e";
    ExpectRewritten(document, document, [&](Rewriter* rewriter) {
        seen.clear();
        rewriter->OnContent("p", [&](RewriterToken token) { seen += std::to_string(token.GetKind()) + " "; });
    });
    EXPECT_EQ(seen, "1 6 1 8 6 1 ");
}

TEST(RewriterElementTest, CallsInTheOrderOfTheCalls) {
    std::string seen;
    const RewriteRun run = Rewrite("<p><a>", [&](Rewriter* rewriter) {
        rewriter->OnContent("", [&](RewriterToken) { seen += "1"; });
        rewriter->OnElement("a", [&](RewriterElement) { seen += "2"; });
        rewriter->OnContent("p", [&](RewriterToken) { seen += "3"; });
        rewriter->OnElement("p a", [&](RewriterElement) { seen += "4"; });
        rewriter->OnContent("", [&](RewriterToken) { seen += "5"; });
    });
    EXPECT_EQ(run.output, "<p><a>");
    EXPECT_EQ(seen, "1512345");
}

TEST(RewriterElementTest, IsOverAfterItsCallback) {
    RewriterElement kept;
    EXPECT_TRUE(kept.IsOver());
    const RewriteRun run = Rewrite("<p>a</p>", [&](Rewriter* rewriter) {
        rewriter->OnElement("p", [&](RewriterElement element) { kept = element; });
        rewriter->OnElement("p", [&](RewriterElement element) {
            EXPECT_FALSE(element.IsOver());
            EXPECT_TRUE(kept.IsOver());
            EXPECT_EQ(kept.GetName(), "");
            EXPECT_FALSE(kept.HasContent());
            EXPECT_TRUE(kept.GetStartTag().IsOver());
            EXPECT_EQ(kept.InsertBefore("x", CONTENT_TEXT), REWRITE_OVER);
            EXPECT_EQ(kept.InsertAfter("x", CONTENT_TEXT), REWRITE_OVER);
            EXPECT_EQ(kept.Prepend("x", CONTENT_TEXT), REWRITE_OVER);
            EXPECT_EQ(kept.Append("x", CONTENT_TEXT), REWRITE_OVER);
            EXPECT_EQ(kept.SetContent("x", CONTENT_TEXT), REWRITE_OVER);
            EXPECT_EQ(kept.Replace("x", CONTENT_TEXT), REWRITE_OVER);
            EXPECT_EQ(kept.Remove(), REWRITE_OVER);
            EXPECT_EQ(kept.Unwrap(), REWRITE_OVER);
        });
    });
    EXPECT_EQ(run.output, "<p>a</p>");
    EXPECT_TRUE(kept.IsOver());
}

TEST(RewriterElementTest, WhatIsChangedInRemovedContentGoesWithIt) {
    int calls = 0;
    ExpectRewritten("a<p>b<i>c</i>d</p>e", "ae", [&](Rewriter* rewriter) {
        calls = 0;
        rewriter->OnElement("p", [](RewriterElement element) { element.Remove(); });
        rewriter->OnElement("i", [](RewriterElement element) { EXPECT_EQ(WriteAround(element), 0U); });
        rewriter->OnContent("p", [&](RewriterToken token) {
            ++calls;
            EXPECT_EQ(token.InsertAfter("x", CONTENT_TEXT), 0U);
        });
    });
    EXPECT_EQ(calls, 5);
}

TEST(RewriterElementTest, EditsManyOpenElementsInLinearTime) {
    // Moving the edits of all open elements for each one would be 5 * 10^9 moves.
    constexpr std::size_t COUNT = 100000;
    std::string document;
    for (std::size_t i = 0; i < COUNT; ++i)
        document += "<b>";
    const RewriteRun run = Rewrite(document, [](Rewriter* rewriter) {
        rewriter->OnElement("b", [](RewriterElement element) { EXPECT_EQ(element.Append("!", CONTENT_TEXT), 0U); });
    });
    EXPECT_EQ(run.feeding, 0U);
    EXPECT_EQ(run.output, document + std::string(COUNT, '!'));
}

TEST(RewriterElementTest, ScriptsEndAsTheirModeSays) {
    struct ModeRow {
        GenericParser::ScriptMode mode;
        std::string_view document;
        std::string_view expected;
    };
    for (const ModeRow& row : {
             ModeRow{GenericParser::SCRIPT_AS_TEXT, "1<script>a = '</script><p>2", "1<p>2"},
             ModeRow{GenericParser::SCRIPT_AS_TOKENS, "1<script>a = '</script><p>2", "1"},
             ModeRow{GenericParser::SCRIPT_AS_TEXT, "1<script><!--<script></script>--></script>2", "12"},
             ModeRow{GenericParser::SCRIPT_AS_TEXT, "1<xmp><script></xmp>2", "1<xmp><script></xmp>2"},
         }) {
        ExpectRewritten(row.document, row.expected, [&](Rewriter* rewriter) {
            EXPECT_EQ(rewriter->SetScriptMode(row.mode), 0U);
            EXPECT_EQ(
                rewriter->OnElement("script", [](RewriterElement element) { EXPECT_EQ(element.Remove(), REWRITE_OK); }),
                REWRITE_OK);
        });
    }
}

}  // namespace
}  // namespace Kestra::Test
