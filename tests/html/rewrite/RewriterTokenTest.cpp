#include <memory>
#include <type_traits>

#include "tests/html/rewrite/RewriteRun.h"
#include "tests/support/Flavours.h"

namespace Kestra::Test {
namespace {

using namespace HTML;

TEST(RewriterTokenTest, ReplacesRemovesAndInserts) {
    const std::vector<TokenRow> rows = {
        {"nothing", "a<b>c", TOKEN_TEXT, [](RewriterToken) { return 0U; }, "a<b>c"},
        {"a text", "a<b>c", TOKEN_TEXT, Replace("x"), "x<b>c"},
        {"text is escaped", "a<b>c", TOKEN_TEXT, Replace("<&>\"'"), "&lt;&amp;&gt;\"'<b>c"},
        {"markup is not", "a<b>c", TOKEN_TEXT, Replace("<i>&amp;", CONTENT_MARKUP), "<i>&amp;<b>c"},
        {"a tag", "a<b>c", TOKEN_START_TAG, Replace("<i>", CONTENT_MARKUP), "a<i>c"},
        {"an end tag", "a</b>c", TOKEN_END_TAG, Replace("</i>", CONTENT_MARKUP), "a</i>c"},
        {"a short tag", "a<b/>c", TOKEN_SHORT_TAG, Remove(), "ac"},
        {"a declaration", "<!DOCTYPE html>c", TOKEN_ENTITY_TAG, Remove(), "c"},
        {"an instruction", "a<?php b ?>c", TOKEN_EXTERN_TAG, Remove(), "ac"},
        {"a section", "a<![CDATA[b]]>c", TOKEN_CDATA_TAG, Remove(), "ac"},
        {"a conditional section", "a<![if b]>c", TOKEN_CONDITIONAL_TAG, Remove(), "ac"},
        {"junk", "a<b / >c", TOKEN_JUNK, Remove(), "a>c"},
        {"the last text", "<b>c", TOKEN_TEXT, Remove(), "<b>"},
        {"before and after, in the order of the calls", "a<b>c", TOKEN_START_TAG,
         All(Before("1"), After("3"), Before("2"), After("4")), "a12<b>34c"},
        {"a removed token keeps what stands around it", "a<b>c", TOKEN_START_TAG,
         All(Before("1"), After("2"), Remove()), "a12c"},
        {"the last replacement counts", "a<b>c", TOKEN_START_TAG, All(Replace("1"), Remove(), Replace("2")), "a2c"},
        {"what stands around a removed token grows together", "&<!--x-->amp;", TOKEN_COMMENT_TAG, Remove(), "&amp;"},
        {"to an end tag", "</<!--x-->b>", TOKEN_COMMENT_TAG, Remove(), "</b>"},
        {"unless something stands there", "&<!--x-->amp;", TOKEN_COMMENT_TAG, Replace(" "), "& amp;"},
        {"an empty comment keeps it apart", "</<!--x-->b>", TOKEN_COMMENT_TAG, Replace("<!---->", CONTENT_MARKUP),
         "</<!---->b>"},
        {"a text after the begin of a tag is a part of it", "</<!--x-->b>", TOKEN_COMMENT_TAG, Replace(" "),
         "</&#32;b>"},
        {"wide text", "a<b>c", TOKEN_TEXT,
         [](RewriterToken token) { return token.Replace(WideStringView(To<WideString>("<\xE9")), CONTENT_TEXT); },
         "&lt;\xC3\xA9<b>c"},
        {"characters beyond the first plane", "a<b>c", TOKEN_TEXT, Replace("\xF0\x9F\x98\x80"), "\xF0\x9F\x98\x80<b>c"},
        {"ill-formed UTF-8", "a<b>c", TOKEN_TEXT, Replace("x\xC3"), "a<b>c", 2},
        {"an overlong form", "a<b>c", TOKEN_TEXT, After("\xC0\x80", CONTENT_MARKUP), "a<b>c", 2},
        {"a surrogate in UTF-8", "a<b>c", TOKEN_TEXT, Before("\xED\xA0\x80"), "a<b>c", 2},
        {"half a surrogate pair", "a<b>c", TOKEN_TEXT,
         [](RewriterToken token) {
             return token.Replace(WideStringView(WideString(1, WideChar(0xD800))), CONTENT_TEXT);
         },
         "a<b>c", 2},
        {"no kind of content", "a<b>c", TOKEN_TEXT, Replace("x", static_cast<RewriteContent>(2)), "a<b>c", 2},
        {"what is refused leaves earlier edits", "a<b>c", TOKEN_TEXT, All(Replace("x"), Replace("\xFF")), "x<b>c", 2},
    };
    CheckRows(rows);
}

TEST(RewriterTokenTest, SetsTheTextOfTextsAndComments) {
    const std::vector<TokenRow> rows = {
        {"a text is escaped", "a<b>", TOKEN_TEXT, SetText("<"), "&lt;<b>"},
        {"a comment is written as it is", "<!--a-->b", TOKEN_COMMENT_TAG, SetText("<&"), "<!--<&-->b"},
        {"an open comment stays open", "<!--a", TOKEN_COMMENT_TAG, SetText("b"), "<!--b"},
        {"an empty comment", "<!---->", TOKEN_COMMENT_TAG, SetText("b"), "<!--b-->"},
        {"no text", "<!--a-->", TOKEN_COMMENT_TAG, SetText(""), "<!---->"},
        {"hyphens inside", "<!--a-->", TOKEN_COMMENT_TAG, SetText("a--b- -"), "<!--a-->", REWRITE_ENDS_EARLY},
        {"its end", "<!--a-->", TOKEN_COMMENT_TAG, SetText("b-->c"), "<!--a-->", REWRITE_ENDS_EARLY},
        {"what browsers take for its end", "<!--a-->", TOKEN_COMMENT_TAG, SetText("b--!>c"), "<!--a-->",
         REWRITE_ENDS_EARLY},
        {"a begin that ends it", "<!--a-->", TOKEN_COMMENT_TAG, SetText(">b"), "<!--a-->", REWRITE_ENDS_EARLY},
        {"and another one", "<!--a-->", TOKEN_COMMENT_TAG, SetText("->b"), "<!--a-->", REWRITE_ENDS_EARLY},
        {"a hyphen at the end", "<!--a-->", TOKEN_COMMENT_TAG, SetText("b-"), "<!--a-->", REWRITE_ENDS_EARLY},
        {"an exclamation mark at the end", "<!--a-->", TOKEN_COMMENT_TAG, SetText("b--!"), "<!--b--!-->"},
        {"in a script, its end", "<script><!--a--></script>", TOKEN_COMMENT_TAG, SetText("</script >"),
         "<script><!--a--></script>", REWRITE_ENDS_EARLY},
        {"no text of its own", "<b>", TOKEN_START_TAG, SetText("c"), "<b>", REWRITE_WRONG_KIND},
        {"ill-formed", "<!--a-->", TOKEN_COMMENT_TAG, SetText("\x80"), "<!--a-->", 2},
    };
    CheckRows(rows);
}

/// The same after an attribute of the tag has been set.
TokenEdit AfterChange(const TokenEdit& edit) {
    return [=](RewriterToken token) {
        EXPECT_EQ(token.SetAttribute("c", "e"), REWRITE_OK);
        return edit(token);
    };
}

TEST(RewriterTokenTest, LeavesScriptsAndTheirLikeWhole) {
    const std::vector<TokenRow> rows = {
        {"text in a script is not escaped", "<script>a</script>", TOKEN_TEXT, Replace("b<c&&d"),
         "<script>b<c&&d</script>"},
        {"nor in a style sheet", "<style>a</style>", TOKEN_TEXT, Replace("b>c"), "<style>b>c</style>"},
        {"after a start tag", "<script>a</script>", TOKEN_START_TAG, After("<&;"), "<script><&;a</script>"},
        {"before an end tag", "<script>a</script>", TOKEN_END_TAG, Before("<&;"), "<script>a<&;</script>"},
        {"but before the element", "<script>a</script>", TOKEN_START_TAG, Before("<"), "&lt;<script>a</script>"},
        {"and after it", "<script>a</script>", TOKEN_END_TAG, After("<"), "<script>a</script>&lt;"},
        {"a short tag opens no script", "<script/>a", TOKEN_TEXT, Replace("<"), "<script/>&lt;"},
        {"a string", "<script>'a'</script>", TOKEN_S_QUOTE_STRING, Replace("'b<'", CONTENT_MARKUP),
         "<script>'b<'</script>"},
        {"its end tag", "<script>a</script>", TOKEN_TEXT, Replace("b</script>"), "<script>a</script>",
         REWRITE_ENDS_EARLY},
        {"as markup too", "<script>a</script>", TOKEN_TEXT, Replace("</script>", CONTENT_MARKUP), "<script>a</script>",
         REWRITE_ENDS_EARLY},
        {"in any case", "<script>a</script>", TOKEN_TEXT, Replace("b</sCRipt\nc"), "<script>a</script>",
         REWRITE_ENDS_EARLY},
        {"with a slash", "<script>a</script>", TOKEN_TEXT, Replace("b</script/c"), "<script>a</script>",
         REWRITE_ENDS_EARLY},
        {"another end tag", "<script>a</script>", TOKEN_TEXT, Replace("</style>b"), "<script></style>b</script>"},
        {"a longer name", "<script>a</script>", TOKEN_TEXT, Replace("</scripts>b"), "<script></scripts>b</script>"},
        {"the begin of an end tag at the end", "<script>a</script>", TOKEN_TEXT, Replace("b</scr"),
         "<script>a</script>", REWRITE_ENDS_EARLY},
        {"one that goes on otherwise", "<script>a</script>", TOKEN_TEXT, Before("</scr"), "<script></scra</script>"},
        {"one that the next token completes", "<script>ipt >a</script>", TOKEN_TEXT, Before("</scr"),
         "<script>ipt >a</script>", REWRITE_ENDS_EARLY},
        {"one that grows together when a string goes", "<script>a<'b'/script >c</script>", TOKEN_S_QUOTE_STRING,
         Remove(), "<script>a<'b'/script >c</script>", REWRITE_ENDS_EARLY},
        {"one that an inserted text completes", "<script>a<'b'</script>", TOKEN_S_QUOTE_STRING, Before("/script>"),
         "<script>a<'b'</script>", REWRITE_ENDS_EARLY},
        {"a comment's opener in a script", "<script>a</script>", TOKEN_TEXT, Replace("b<!--c"), "<script>a</script>",
         REWRITE_ENDS_EARLY},
        {"not in a style sheet", "<style>a</style>", TOKEN_TEXT, Replace("b<!--c"), "<style>b<!--c</style>"},
        {"a start tag that hides the end tag", "<script>/*<!--*/'a'</script>", TOKEN_S_QUOTE_STRING, After("<script>"),
         "<script>/*<!--*/'a'</script>", REWRITE_ENDS_EARLY},
        {"the same without the opener, which may be there", "<script>a</script>", TOKEN_TEXT, Replace("b<sCript c"),
         "<script>a</script>", REWRITE_ENDS_EARLY},
        {"its begin", "<script>a</script>", TOKEN_TEXT, Replace("b<scr"), "<script>a</script>", REWRITE_ENDS_EARLY},
        {"a longer name of one", "<script>a</script>", TOKEN_TEXT, Replace("<scripts>b"),
         "<script><scripts>b</script>"},
        {"a start tag in a style sheet", "<style>a</style>", TOKEN_TEXT, Replace("<style>b"),
         "<style><style>b</style>"},
        {"two edits that would end it together", "<script>a</script>", TOKEN_TEXT,
         [](RewriterToken token) {
             EXPECT_EQ(token.InsertBefore("</scr", CONTENT_TEXT), REWRITE_OK);
             return token.Replace("ipt>", CONTENT_TEXT);
         },
         "<script></scra</script>", REWRITE_ENDS_EARLY},
        {"xmp", "<xmp>a</xmp>", TOKEN_TEXT, Replace("<b></xmp/"), "<xmp>a</xmp>", REWRITE_ENDS_EARLY},
        {"iframe", "<iframe>a</iframe>", TOKEN_TEXT, Replace("<b>"), "<iframe><b></iframe>"},
        {"noembed", "<noembed>a</noembed>", TOKEN_TEXT, Replace("</noembed>"), "<noembed>a</noembed>",
         REWRITE_ENDS_EARLY},
        {"noframes", "<noframes>a</noframes>", TOKEN_TEXT, Replace("</noframes>"), "<noframes>a</noframes>",
         REWRITE_ENDS_EARLY},
        {"nothing ends plaintext", "<plaintext>a", TOKEN_TEXT, Replace("</plaintext>"), "<plaintext></plaintext>"},
        {"before a tag that has changed", "<xmp><b c=d/></xmp>", TOKEN_SHORT_TAG, AfterChange(Before("</xm")),
         "<xmp></xm<b c=e/></xmp>"},
        {"a name that its \"<\" ends", "<xmp><b c=d/></xmp>", TOKEN_SHORT_TAG, AfterChange(Before("</xmp")),
         "<xmp><b c=e/></xmp>", REWRITE_ENDS_EARLY},
        {"after it", "<xmp><b c='</xm'/></xmp>", TOKEN_SHORT_TAG, AfterChange(After("p>")), "<xmp><b c='e'/>p></xmp>"},
        {"what may go on after it", "<xmp><b c=d/></xmp>", TOKEN_SHORT_TAG, AfterChange(After("</xm")),
         "<xmp><b c=e/></xmp>", REWRITE_ENDS_EARLY},
        {"a title has references", "<title>a</title>", TOKEN_TEXT, Replace("</title>"),
         "<title>&lt;/title&gt;</title>"},
        {"the end tag of a script may go", "<script>a</script>b", TOKEN_END_TAG, Remove(), "<script>ab"},
    };
    CheckRows(rows);
}

TEST(RewriterTokenTest, TextDoesNotGoOnWithMarkup) {
    const std::vector<TokenRow> rows = {
        {"with a reference", "x &am<b>", TOKEN_TEXT, After("p;"), "x &am&#112;;<b>"},
        {"with one that has no name yet", "x &<b>", TOKEN_TEXT, After("lt"), "x &&#108;t<b>"},
        {"with a tag", "x<b>", TOKEN_TEXT, All(After("<", CONTENT_MARKUP), After("i>")), "x<&#105;&gt;<b>"},
        {"within what is inserted", "x<b>", TOKEN_TEXT, All(After("&am", CONTENT_MARKUP), After("p;")),
         "x&am&#112;;<b>"},
        {"with a reference that inserted markup goes on with", "x &<b>", TOKEN_TEXT,
         All(After("am", CONTENT_MARKUP), After("p;")), "x &am&#112;;<b>"},
        {"with a tag that inserted markup goes on with", "x<b>", TOKEN_TEXT,
         All(Replace("<", CONTENT_MARKUP), After("/", CONTENT_MARKUP), After("i")), "</&#105;<b>"},
        {"an empty text between markup makes no text of it", "x &<b>", TOKEN_TEXT,
         All(After(""), After("a", CONTENT_MARKUP), After(""), After("mp;", CONTENT_MARKUP)), "x &amp;<b>"},
        {"markup is the host's affair", "x &am<b>", TOKEN_TEXT, After("p;", CONTENT_MARKUP), "x &amp;<b>"},
        {"nothing to go on with", "x &amp;<b>", TOKEN_TEXT, After("p"), "x &amp;p<b>"},
    };
    CheckRows(rows);
}

TEST(RewriterTokenTest, SaysWhatIsThere) {
    std::string seen;
    const std::string_view document = "<!--c-->a<b d=e>f</b><g/>";
    ExpectRewritten(document, document, [&](Rewriter* rewriter) {
        seen.clear();
        rewriter->OnContent("", [&](RewriterToken token) {
            const TokenPlace place = token.GetPlace();
            EXPECT_EQ(token.GetBytes().size(), place.end - place.begin);
            seen += std::to_string(token.GetKind()) + " ";
        });
    });
    EXPECT_EQ(seen, "11 1 6 1 8 7 ");
}

/// Keeps a token, and asks about it where it should not.
template <typename C, typename S>
class KeepingObserver final : public ParserObserver<C, S> {
public:
    explicit KeepingObserver(Rewriter* observedRewriter) : rewriter(observedRewriter) {}

    void OnStartTag(StartTagData<C, S>*) override {
        kept = rewriter->GetToken();
        EXPECT_FALSE(kept.IsOver());
        EXPECT_EQ(kept.GetKind(), TOKEN_START_TAG);
        EXPECT_EQ(kept.InsertAfter("!", CONTENT_TEXT), REWRITE_OK);
    }
    void OnJSTagStart() override {
        RewriterToken token = rewriter->GetToken();
        EXPECT_FALSE(token.IsOver());
        EXPECT_EQ(token.GetKind(), TOKEN_NONE);
        EXPECT_EQ(token.GetPlace().end, rewriter->GetParser().GetTokenPlace().end);
        EXPECT_EQ(token.InsertAfter("x", CONTENT_TEXT), REWRITE_WRONG_KIND);
        EXPECT_EQ(token.Remove(), REWRITE_WRONG_KIND);
        EXPECT_EQ(token.SetText("x"), REWRITE_WRONG_KIND);
        EXPECT_EQ(token.SetAttribute("x", "y"), REWRITE_WRONG_KIND);
        ++withoutRecord;
    }
    void OnText(TextData<C, S>*) override {
        ExpectOver();
    }
    void OnEndParsing() override {
        ExpectOver();
        ++withoutRecord;
    }

    void ExpectOver() {
        std::string value = "as it was";
        EXPECT_TRUE(kept.IsOver());
        EXPECT_EQ(kept.GetKind(), TOKEN_NONE);
        EXPECT_EQ(kept.GetPlace().end, 0U);
        EXPECT_TRUE(kept.GetBytes().empty());
        EXPECT_EQ(kept.Replace("x", CONTENT_TEXT), REWRITE_OVER);
        EXPECT_EQ(kept.Replace(WideStringView(), CONTENT_TEXT), REWRITE_OVER);
        EXPECT_EQ(kept.Remove(), REWRITE_OVER);
        EXPECT_EQ(kept.InsertBefore("x", CONTENT_TEXT), REWRITE_OVER);
        EXPECT_EQ(kept.InsertAfter("x", CONTENT_TEXT), REWRITE_OVER);
        EXPECT_EQ(kept.SetText("x"), REWRITE_OVER);
        EXPECT_FALSE(kept.HasAttribute("x"));
        EXPECT_EQ(kept.GetAttribute("x", &value), REWRITE_OVER);
        EXPECT_EQ(kept.SetAttribute("x", "y"), REWRITE_OVER);
        EXPECT_EQ(kept.AddAttribute("x", "y"), REWRITE_OVER);
        EXPECT_EQ(kept.RenameAttribute("x", "y"), REWRITE_OVER);
        EXPECT_EQ(kept.RemoveAttribute("x"), REWRITE_OVER);
        EXPECT_EQ(value, "as it was");
    }

    RewriterToken kept;
    int withoutRecord = 0;

private:
    Rewriter* rewriter;
};

template <typename Flavour>
class KeptTokenTest : public testing::Test {};

TYPED_TEST_SUITE(KeptTokenTest, Flavours);

TYPED_TEST(KeptTokenTest, IsOver) {
    CollectingHandler output;
    auto rewriter = std::make_unique<Rewriter>(&output);
    KeepingObserver<typename TypeParam::C, typename TypeParam::S> observer(rewriter.get());
    rewriter->SetObserver(&observer);
    EXPECT_TRUE(rewriter->GetToken().IsOver());
    rewriter->StartParse(StringNS::CharSet::UTF8, GenericParser::DATA_STREAM_8BIT);
    const std::string_view document = "<script>a</script>";
    EXPECT_EQ(rewriter->ParseBuffer(document.data(), document.size()), 0U);
    observer.ExpectOver();
    EXPECT_EQ(rewriter->EndParse(), 0U);
    EXPECT_EQ(observer.withoutRecord, 2);
    EXPECT_EQ(output.bytes, "<script>!a</script>");
    rewriter = nullptr;
    observer.ExpectOver();
    observer.kept = RewriterToken();
    observer.ExpectOver();
}

}  // namespace
}  // namespace Kestra::Test
