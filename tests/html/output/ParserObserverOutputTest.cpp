#include "html/output/ParserObserverOutput.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "tests/support/Flavours.h"
#include "tools/trace/TokenTrace.h"

namespace Kestra::Test {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

struct Piece {
    std::string bytes;
    bool isMarkup = false;
};

/// Keeps the pieces apart.
class PieceSink final : public HTML::ParserObserverOutputHandler {
public:
    void Write(const void* data, std::uint64_t byteCount, bool isMarkup) override {
        std::string bytes;
        if (byteCount > 0)
            bytes.assign(static_cast<const char*>(data), static_cast<std::size_t>(byteCount));
        pieces.push_back({bytes, isMarkup});
    }

    std::vector<Piece> pieces;
};

/// A serializer that keeps the pieces apart.
template <typename C, typename S>
class PieceOutput final : public HTML::ParserObserverOutput<C, S> {
public:
    void OnOutput(const void* data, std::uint64_t byteCount, bool isMarkup) override {
        sink.Write(data, byteCount, isMarkup);
    }

    PieceSink sink;
};

/// Each piece in brackets, one that is no markup in braces. A wide piece must be whole characters, one that is no markup need not be:
/// its bytes are shown.
template <typename Flavour>
std::string Show(const std::vector<Piece>& pieces) {
    std::string line;
    for (const Piece& piece : pieces) {
        if (!piece.isMarkup) {
            line += "{" + Trace::Escape(piece.bytes) + "}";
        } else if (Flavour::WIDE) {
            WideString text;
            for (std::size_t i = 0; i + 1 < piece.bytes.size(); i += 2) {
                text.push_back(static_cast<WideChar>(static_cast<unsigned char>(piece.bytes[i]) |
                                                     static_cast<unsigned char>(piece.bytes[i + 1]) << 8));
            }
            line += "[" + Trace::Escape(text) + (piece.bytes.size() % 2 == 0 ? "]" : " and a half]");
        } else {
            line += "[" + Trace::Escape(piece.bytes) + "]";
        }
    }
    return line;
}

/// The pieces that a static writer gives for a record.
template <typename Flavour, typename Record>
std::string Written(void (*writer)(const Record*, HTML::ParserObserverOutputHandler*), const Record& record) {
    PieceSink sink;
    writer(&record, &sink);
    return Show<Flavour>(sink.pieces);
}

/// The records and the serializer of a flavour.
template <typename Flavour>
struct Records {
    using C = typename Flavour::C;
    using S = typename Flavour::S;
    using Output = HTML::ParserObserverOutput<C, S>;
    using Text = HTML::TextData<C, S>;
    using CComment = HTML::CCommentData<C, S>;
    using CPPComment = HTML::CPPCommentData<C, S>;
    using SQuoteString = HTML::SQuoteStringData<C, S>;
    using DQuoteString = HTML::DQuoteStringData<C, S>;
    using Junk = HTML::JunkData<C, S>;
    using StartTag = HTML::StartTagData<C, S>;
    using ShortTag = HTML::ShortTagData<C, S>;
    using EndTag = HTML::EndTagData<C, S>;
    using CDATATag = HTML::CDATATagData<C, S>;
    using ConditionalTag = HTML::ConditionalTagData<C, S>;
    using CommentTag = HTML::CommentTagData<C, S>;
    using EntityTag = HTML::EntityTagData<C, S>;
    using ExternTag = HTML::ExternTagData<C, S>;
};

/// Makes strings and lists for records to point to; they live as long as the test.
template <typename Flavour>
class ParserObserverOutputTest : public testing::Test {
protected:
    using Char = typename Flavour::C;
    using String = typename Flavour::S;

    const String* Str(std::string_view latin1) {
        strings.push_back(std::make_unique<String>(To<String>(latin1)));
        return strings.back().get();
    }

    void Add(std::string_view prefix, std::string_view name) {
        HTML::Attribute<Char, String> attribute;
        attribute.prefix = To<String>(prefix);
        attribute.name = To<String>(name);
        attributes.push_back(attribute);
    }

    void Add(std::string_view prefix, std::string_view name, std::string_view beforeEquals, std::string_view afterEquals,
             std::string_view value, std::uint32_t quote) {
        Add(prefix, name);
        attributes.back().beforeEquals = To<String>(beforeEquals);
        attributes.back().afterEquals = To<String>(afterEquals);
        attributes.back().value = To<String>(value);
        attributes.back().quote = quote;
        attributes.back().hasValue = true;
    }

    void AddToken(std::string_view prefix, std::string_view value, std::uint32_t quote) {
        HTML::EntityToken<Char, String> token;
        token.prefix = To<String>(prefix);
        token.value = To<String>(value);
        token.quote = quote;
        tokens.push_back(token);
    }

    Vector<HTML::Attribute<Char, String>> attributes;
    Vector<HTML::EntityToken<Char, String>> tokens;

private:
    std::vector<std::unique_ptr<String>> strings;
};

TYPED_TEST_SUITE(ParserObserverOutputTest, Flavours);

TYPED_TEST(ParserObserverOutputTest, TextAndScriptTokens) {
    using R = Records<TypeParam>;
    using Output = typename R::Output;
    EXPECT_EQ((Written<TypeParam>(&Output::GetTextOutput, {this->Str("a<b")})), "[a<b]");
    EXPECT_EQ((Written<TypeParam>(&Output::GetTextOutput, {this->Str("")})), "[]");
    EXPECT_EQ((Written<TypeParam>(&Output::GetTextOutput, {this->Str("a\0b"sv)})), "[a\\x00b]");
    EXPECT_EQ((Written<TypeParam>(&Output::GetCCommentOutput, {this->Str(" c ")})), "[/][*][ c ][*][/]");
    EXPECT_EQ((Written<TypeParam>(&Output::GetCCommentOutput, {this->Str("")})), "[/][*][][*][/]");
    EXPECT_EQ((Written<TypeParam>(&Output::GetCPPCommentOutput, {this->Str(" c")})), "[/][/][ c]");
    EXPECT_EQ((Written<TypeParam>(&Output::GetSQuoteStringOutput, {this->Str("s\\'")})), "['][s\\\\'][']");
    EXPECT_EQ((Written<TypeParam>(&Output::GetDQuoteStringOutput, {this->Str("d\\\"")})), "[\"][d\\\\\"][\"]");
}

TYPED_TEST(ParserObserverOutputTest, StartTags) {
    using R = Records<TypeParam>;
    using StartTag = typename R::StartTag;
    const auto write = [](const StartTag& record) { return Written<TypeParam>(&R::Output::GetStartTagOutput, record); };
    EXPECT_EQ(write({this->Str(""), this->Str("a"), &this->attributes, this->Str(""), true}), "[<][][a][][>]");
    EXPECT_EQ(write({this->Str(" "), this->Str("a"), &this->attributes, this->Str("\n"), true}), "[<][ ][a][\\n][>]");
    EXPECT_EQ(write({this->Str(" "), this->Str("a"), &this->attributes, this->Str("\n"), false}), "[<][ ][a]")
        << "an unclosed tag loses its suffix together with its closing mark";
    this->Add(" ", "b", " ", " ", "c", 1);
    this->Add(" ", "d");
    EXPECT_EQ(write({this->Str(""), this->Str("a"), &this->attributes, this->Str(" "), true}),
              "[<][][a][ ][b][ ][=][ ]['][c]['][ ][d][ ][>]");
    EXPECT_EQ(write({this->Str(""), this->Str("a"), &this->attributes, this->Str(" "), false}), "[<][][a][ ][b][ ][=][ ]['][c]['][ ][d]");
}

TYPED_TEST(ParserObserverOutputTest, ShortTags) {
    using R = Records<TypeParam>;
    using ShortTag = typename R::ShortTag;
    const auto write = [](const ShortTag& record) { return Written<TypeParam>(&R::Output::GetShortTagOutput, record); };
    EXPECT_EQ(write({this->Str(""), this->Str("br"), &this->attributes, this->Str(""), true}), "[<][][br][][/][>]");
    EXPECT_EQ(write({this->Str(" "), this->Str("br"), &this->attributes, this->Str(" "), true}), "[<][ ][br][ ][/][>]");
    EXPECT_EQ(write({this->Str(" "), this->Str("br"), &this->attributes, this->Str(" "), false}), "[<][ ][br][ ][/]")
        << "an unclosed short tag keeps its suffix and its slash";
    this->Add(" ", "b", "", "", "c", 2);
    EXPECT_EQ(write({this->Str(""), this->Str("br"), &this->attributes, this->Str(""), true}), "[<][][br][ ][b][][=][][\"][c][\"][][/][>]");
    EXPECT_EQ(write({this->Str(""), this->Str("br"), &this->attributes, this->Str(""), false}), "[<][][br][ ][b][][=][][\"][c][\"][][/]");
}

TYPED_TEST(ParserObserverOutputTest, AttributeValuesAndTheirQuotes) {
    using R = Records<TypeParam>;
    using StartTag = typename R::StartTag;
    const auto write = [](const StartTag& record) { return Written<TypeParam>(&R::Output::GetStartTagOutput, record); };
    struct Case {
        const char* note;
        std::string_view value;
        std::uint32_t quote;
        std::string_view expected;
    };
    const Case CASES[] = {
        {"bare", "c", 0, "[<][][a][ ][b][\\t][=][\\n][c][][>]"},
        {"in apostrophes", "c", 1, "[<][][a][ ][b][\\t][=][\\n]['][c]['][][>]"},
        {"in quotation marks", "c", 2, "[<][][a][ ][b][\\t][=][\\n][\"][c][\"][][>]"},
        {"any other kind writes nothing for the value", "c", 3, "[<][][a][ ][b][\\t][=][\\n][][>]"},
        {"a huge kind writes nothing for the value", "c", 0xFFFFFFFF, "[<][][a][ ][b][\\t][=][\\n][][>]"},
        {"an empty bare value is an empty piece", "", 0, "[<][][a][ ][b][\\t][=][\\n][][][>]"},
        {"an empty quoted value is an empty piece", "", 2, "[<][][a][ ][b][\\t][=][\\n][\"][][\"][][>]"},
    };
    for (const Case& c : CASES) {
        SCOPED_TRACE(c.note);
        this->attributes.clear();
        this->Add(" ", "b", "\t", "\n", c.value, c.quote);
        EXPECT_EQ(write({this->Str(""), this->Str("a"), &this->attributes, this->Str(""), true}), c.expected);
    }
    this->attributes.back().hasValue = false;
    EXPECT_EQ(write({this->Str(""), this->Str("a"), &this->attributes, this->Str(""), true}), "[<][][a][ ][b][][>]")
        << "without a value only prefix and name mean something";
}

TYPED_TEST(ParserObserverOutputTest, EndTags) {
    using R = Records<TypeParam>;
    using EndTag = typename R::EndTag;
    const auto write = [](const EndTag& record) { return Written<TypeParam>(&R::Output::GetEndTagOutput, record); };
    EXPECT_EQ(write({this->Str(""), this->Str("a"), this->Str(" "), true, &this->attributes, false, this->Str("")}), "[<][/][][a][ ][>]");
    EXPECT_EQ(write({this->Str(" "), this->Str("a"), this->Str(""), false, &this->attributes, false, this->Str("")}), "[<][/][ ][a][]");
    EXPECT_EQ(write({this->Str(""), this->Str("a"), this->Str(" "), true, &this->attributes, true, this->Str("")}), "[<][/][][a][ ][/][>]");
    EXPECT_EQ(write({this->Str(""), this->Str("a"), this->Str(" "), false, &this->attributes, true, this->Str("")}), "[<][/][][a][ ][/]");
    EXPECT_EQ(write({this->Str(""), this->Str("a"), this->Str(" "), true, &this->attributes, false, this->Str("\n")}), "[<][/][][a][ ][>]")
        << "an empty list takes the suffix with it";
    EXPECT_EQ(write({this->Str(""), this->Str("a"), this->Str(" "), true, nullptr, false, this->Str("\n")}), "[<][/][][a][ ][>]")
        << "so does no list at all";
    this->Add("", "x");
    this->Add(" ", "y", "", "", "z", 1);
    EXPECT_EQ(write({this->Str(""), this->Str("a"), this->Str(" "), true, &this->attributes, true, this->Str("\n")}),
              "[<][/][][a][ ][][x][ ][y][][=][]['][z]['][\\n][/][>]");
    EXPECT_EQ(write({this->Str(""), this->Str("a"), this->Str(" "), false, &this->attributes, false, this->Str("\n")}),
              "[<][/][][a][ ][][x][ ][y][][=][]['][z]['][\\n]")
        << "an unclosed end tag keeps its suffix";
}

TYPED_TEST(ParserObserverOutputTest, Declarations) {
    using R = Records<TypeParam>;
    using EntityTag = typename R::EntityTag;
    const auto write = [](const EntityTag& record) { return Written<TypeParam>(&R::Output::GetEntityTagOutput, record); };
    EXPECT_EQ(write({this->Str(""), this->Str("DOCTYPE"), &this->tokens, this->Str("")}), "[<][!][][DOCTYPE][][>]");
    this->AddToken(" ", "html", 0);
    this->AddToken("\n", "a", 1);
    this->AddToken("", "b", 2);
    EXPECT_EQ(write({this->Str(" "), this->Str("DOCTYPE"), &this->tokens, this->Str("\t")}),
              "[<][!][ ][DOCTYPE][ ][html][\\n]['][a]['][][\"][b][\"][\\t][>]");
}

TYPED_TEST(ParserObserverOutputTest, ExternTags) {
    using R = Records<TypeParam>;
    using ExternTag = typename R::ExternTag;
    const auto write = [](const ExternTag& record) { return Written<TypeParam>(&R::Output::GetExternTagOutput, record); };
    EXPECT_EQ(write({this->Str(" "), this->Str("xml"), &this->attributes, this->Str("\n"), false, this->Str("ignored"), false}),
              "[<][?][ ][xml][\\n][?][>]");
    EXPECT_EQ(write({this->Str(""), this->Str("xml"), &this->attributes, this->Str(""), false, this->Str("ignored"), true}),
              "[<][?][][xml][][/][>]");
    this->Add(" ", "version", "", "", "1.0", 2);
    this->Add(" ", "x");
    EXPECT_EQ(write({this->Str(""), this->Str("xml"), &this->attributes, this->Str(" "), false, this->Str(""), false}),
              "[<][?][][xml][ ][version][][=][][\"][1.0][\"][ ][x][ ][?][>]");
    EXPECT_EQ(write({this->Str(" "), this->Str("php"), &this->attributes, this->Str(" "), true, this->Str("<?php a ?>"), true}),
              "[<?php a ?>]")
        << "free style is its text and nothing else";
}

/// The bytes of the first `count` bytes of a body in memory.
template <typename S>
std::string BodyBytes(const S& body, std::size_t count) {
    return std::string(reinterpret_cast<const char*>(body.data()), count);
}

TYPED_TEST(ParserObserverOutputTest, Sections) {
    using R = Records<TypeParam>;
    using Output = typename R::Output;
    // As many bytes as the body has characters: the whole narrow body, the first half of the wide one.
    const auto body = [this](std::string_view latin1) { return "{" + Trace::Escape(BodyBytes(*this->Str(latin1), latin1.size())) + "}"; };
    const typename R::CommentTag comment = {this->Str(" x-y"), true};
    EXPECT_EQ(Written<TypeParam>(&Output::GetCommentTagOutput, comment), "[<][!][-][-]" + body(" x-y") + "[-][-][>]");
    const typename R::CommentTag openComment = {this->Str(" x-"), false};
    EXPECT_EQ(Written<TypeParam>(&Output::GetCommentTagOutput, openComment), "[<][!][-][-]" + body(" x-"));
    const typename R::CommentTag emptyComment = {this->Str(""), true};
    EXPECT_EQ(Written<TypeParam>(&Output::GetCommentTagOutput, emptyComment), "[<][!][-][-]{}[-][-][>]");

    const typename R::CDATATag cdata = {this->Str("CDATA"), this->Str("[x"), true};
    EXPECT_EQ(Written<TypeParam>(&Output::GetCDATATagOutput, cdata), "[<][!][[][CDATA]" + body("[x") + "[]][]][>]");
    const typename R::CDATATag openCdata = {this->Str("cdata"), this->Str("[x]"), false};
    EXPECT_EQ(Written<TypeParam>(&Output::GetCDATATagOutput, openCdata), "[<][!][[][cdata]" + body("[x]"));

    struct Case {
        bool bracketClosed;
        bool tagClosed;
        std::string expected;
    };
    const Case CASES[] = {
        {true, true, "[<][!][[][if]" + body(" IE 6") + "[]]" + body(" --") + "[>]"},
        {true, false, "[<][!][[][if]" + body(" IE 6") + "[]]"},
        {false, true, "[<][!][[][if]" + body(" IE 6") + body(" --") + "[>]"},
        {false, false, "[<][!][[][if]" + body(" IE 6")},
    };
    for (const Case& c : CASES) {
        const typename R::ConditionalTag record = {this->Str("if"), this->Str(" IE 6"), this->Str(" --"), c.bracketClosed, c.tagClosed};
        EXPECT_EQ(Written<TypeParam>(&Output::GetConditionalTagOutput, record), c.expected);
    }
}

TEST(ParserObserverOutputTest, OnlyTheFirstHalfOfAWideBodyIsWritten) {
    using Output = HTML::ParserObserverOutput<WideChar, WideString>;
    const WideString text = KESTRA_WIDE("abc");
    PieceSink sink;
    const HTML::CommentTagData<WideChar, WideString> comment = {&text, false};
    Output::GetCommentTagOutput(&comment, &sink);
    ASSERT_EQ(sink.pieces.size(), 5U);
    EXPECT_EQ(sink.pieces[3].bytes, "-\0"s);
    EXPECT_TRUE(sink.pieces[3].isMarkup);
    EXPECT_EQ(sink.pieces[4].bytes, "a\0b"s);
    EXPECT_FALSE(sink.pieces[4].isMarkup);
}

TYPED_TEST(ParserObserverOutputTest, JunkIsWrittenByteForByte) {
    using Output = typename Records<TypeParam>::Output;
    const std::string bytes = "<b\0\xE9\x01"s;
    EXPECT_EQ((Written<TypeParam>(&Output::GetJunkDataOutput, {&bytes})), "{<b\\x00\\xE9\\x01}");
}

TYPED_TEST(ParserObserverOutputTest, NullStringsAndListsCountAsEmpty) {
    using R = Records<TypeParam>;
    using Output = typename R::Output;
    EXPECT_EQ((Written<TypeParam>(&Output::GetTextOutput, {nullptr})), "[]");
    EXPECT_EQ((Written<TypeParam>(&Output::GetCCommentOutput, {nullptr})), "[/][*][][*][/]");
    EXPECT_EQ((Written<TypeParam>(&Output::GetCPPCommentOutput, {nullptr})), "[/][/][]");
    EXPECT_EQ((Written<TypeParam>(&Output::GetSQuoteStringOutput, {nullptr})), "['][][']");
    EXPECT_EQ((Written<TypeParam>(&Output::GetDQuoteStringOutput, {nullptr})), "[\"][][\"]");
    EXPECT_EQ((Written<TypeParam>(&Output::GetJunkDataOutput, {nullptr})), "{}");
    EXPECT_EQ((Written<TypeParam>(&Output::GetStartTagOutput, {nullptr, nullptr, nullptr, nullptr, true})), "[<][][][][>]");
    EXPECT_EQ((Written<TypeParam>(&Output::GetShortTagOutput, {nullptr, nullptr, nullptr, nullptr, true})), "[<][][][][/][>]");
    EXPECT_EQ((Written<TypeParam>(&Output::GetEndTagOutput, {nullptr, nullptr, nullptr, true, nullptr, true, nullptr})),
              "[<][/][][][][/][>]");
    this->Add("", "x");
    EXPECT_EQ((Written<TypeParam>(&Output::GetEndTagOutput, {nullptr, nullptr, nullptr, true, &this->attributes, false, nullptr})),
              "[<][/][][][][][x][][>]");
    EXPECT_EQ((Written<TypeParam>(&Output::GetCDATATagOutput, {nullptr, nullptr, true})), "[<][!][[][]{}[]][]][>]");
    EXPECT_EQ((Written<TypeParam>(&Output::GetConditionalTagOutput, {nullptr, nullptr, nullptr, true, true})), "[<][!][[][]{}[]]{}[>]");
    EXPECT_EQ((Written<TypeParam>(&Output::GetCommentTagOutput, {nullptr, true})), "[<][!][-][-]{}[-][-][>]");
    EXPECT_EQ((Written<TypeParam>(&Output::GetEntityTagOutput, {nullptr, nullptr, nullptr, nullptr})), "[<][!][][][][>]");
    EXPECT_EQ((Written<TypeParam>(&Output::GetExternTagOutput, {nullptr, nullptr, nullptr, nullptr, false, nullptr, false})),
              "[<][?][][][][?][>]");
    EXPECT_EQ((Written<TypeParam>(&Output::GetExternTagOutput, {nullptr, nullptr, nullptr, nullptr, true, nullptr, false})), "[]");
}

TYPED_TEST(ParserObserverOutputTest, EveryCallbackCallsItsWriter) {
    using R = Records<TypeParam>;
    using Output = typename R::Output;
    this->Add(" ", "x");
    this->AddToken(" ", "t", 1);
    const std::string junkBytes = "<j";
    typename R::Text text = {this->Str("t")};
    typename R::CComment cComment = {this->Str("c")};
    typename R::CPPComment cppComment = {this->Str("p")};
    typename R::SQuoteString sQuoteString = {this->Str("s")};
    typename R::DQuoteString dQuoteString = {this->Str("d")};
    typename R::StartTag startTag = {this->Str(""), this->Str("a"), &this->attributes, this->Str(" "), true};
    typename R::ShortTag shortTag = {this->Str(""), this->Str("b"), &this->attributes, this->Str(" "), true};
    typename R::EndTag endTag = {this->Str(""), this->Str("e"), this->Str(" "), true, &this->attributes, true, this->Str("")};
    typename R::CDATATag cdataTag = {this->Str("CDATA"), this->Str("[x"), true};
    typename R::ConditionalTag conditionalTag = {this->Str("if"), this->Str(" c"), this->Str("t"), true, true};
    typename R::CommentTag commentTag = {this->Str("m"), true};
    typename R::EntityTag entityTag = {this->Str(""), this->Str("DOCTYPE"), &this->tokens, this->Str(" ")};
    typename R::ExternTag externTag = {this->Str(""), this->Str("xml"), &this->attributes, this->Str(""), false, this->Str(""), true};
    typename R::Junk junk = {&junkBytes};

    PieceOutput<typename TypeParam::C, typename TypeParam::S> output;
    PieceSink expected;
    const auto check = [&](auto callback, auto writer, auto* record) {
        (output.*callback)(record);
        writer(record, &expected);
        EXPECT_GT(expected.pieces.size(), 0U);
        EXPECT_EQ(Show<TypeParam>(output.sink.pieces), Show<TypeParam>(expected.pieces));
        output.sink.pieces.clear();
        expected.pieces.clear();
    };
    check(&Output::OnText, &Output::GetTextOutput, &text);
    check(&Output::OnCComment, &Output::GetCCommentOutput, &cComment);
    check(&Output::OnCPPComment, &Output::GetCPPCommentOutput, &cppComment);
    check(&Output::OnSQuoteString, &Output::GetSQuoteStringOutput, &sQuoteString);
    check(&Output::OnDQuoteString, &Output::GetDQuoteStringOutput, &dQuoteString);
    check(&Output::OnStartTag, &Output::GetStartTagOutput, &startTag);
    check(&Output::OnShortTag, &Output::GetShortTagOutput, &shortTag);
    check(&Output::OnEndTag, &Output::GetEndTagOutput, &endTag);
    check(&Output::OnCDATATag, &Output::GetCDATATagOutput, &cdataTag);
    check(&Output::OnConditionalTag, &Output::GetConditionalTagOutput, &conditionalTag);
    check(&Output::OnCommentTag, &Output::GetCommentTagOutput, &commentTag);
    check(&Output::OnEntityTag, &Output::GetEntityTagOutput, &entityTag);
    check(&Output::OnExternTag, &Output::GetExternTagOutput, &externTag);
    check(&Output::OnJunkData, &Output::GetJunkDataOutput, &junk);
}

TYPED_TEST(ParserObserverOutputTest, AMarkIsWrittenAsItIs) {
    PieceOutput<typename TypeParam::C, typename TypeParam::S> output;
    output.OnBOM("\xEF\xBB\xBF", 3);
    output.OnBOM("\xFF\xFE", 2);
    output.OnBOM("x", 1);
    EXPECT_EQ(Show<TypeParam>(output.sink.pieces), "{\\xEF\\xBB\\xBF}{\\xFF\\xFE}{x}");
}

TYPED_TEST(ParserObserverOutputTest, TheOtherCallbacksWriteNothing) {
    PieceOutput<typename TypeParam::C, typename TypeParam::S> output;
    output.OnStartParsing();
    output.OnCharset(65001);
    output.OnJSTagStart();
    output.OnJSTagEnd();
    output.OnCSSTagStart();
    output.OnCSSTagEnd();
    output.OnEndParsing();
    EXPECT_TRUE(output.sink.pieces.empty());
}

TYPED_TEST(ParserObserverOutputTest, EachCopyWritesToItself) {
    using Output = PieceOutput<typename TypeParam::C, typename TypeParam::S>;
    typename Records<TypeParam>::Text first = {this->Str("first")};
    typename Records<TypeParam>::Text second = {this->Str("second")};
    auto original = std::make_unique<Output>();
    original->OnText(&first);
    Output copy(*original);
    Output assigned;
    assigned.OnStartParsing();
    assigned = *original;
    original->sink.pieces.clear();
    copy.sink.pieces.clear();
    assigned.sink.pieces.clear();

    copy.OnText(&first);
    assigned.OnText(&second);
    EXPECT_EQ(Show<TypeParam>(original->sink.pieces), "");
    EXPECT_EQ(Show<TypeParam>(copy.sink.pieces), "[first]");
    EXPECT_EQ(Show<TypeParam>(assigned.sink.pieces), "[second]");

    original.reset();
    copy.OnText(&second);
    assigned.OnText(&first);
    EXPECT_EQ(Show<TypeParam>(copy.sink.pieces), "[first][second]");
    EXPECT_EQ(Show<TypeParam>(assigned.sink.pieces), "[second][first]");

    copy.OnStartParsing();
    copy.OnText(&first);
    EXPECT_EQ(Show<TypeParam>(copy.sink.pieces), "[first][second][first]");
}

/// A host's observer over the wide records, as it derives from the class that is made for it.
class HostOutput final : public HTML::GenericParserObserverOutput {
public:
    void OnOutput(const void* data, std::uint64_t byteCount, bool isMarkup) override {
        sink.Write(data, byteCount, isMarkup);
    }

    PieceSink sink;
};

TEST(ParserObserverOutputTest, TheSerializerOfHosts) {
    static_assert(std::is_base_of_v<HTML::ParserObserverOutput<WideChar, WideString>, HTML::GenericParserObserverOutput>);
    static_assert(std::is_abstract_v<HTML::GenericParserObserverOutput>);
    const WideString text = KESTRA_WIDE("t");
    HTML::TextData<WideChar, WideString> record = {&text};
    auto original = std::make_unique<HostOutput>();
    original->OnText(&record);
    HostOutput copy(*original);
    HostOutput assigned;
    assigned = *original;
    original.reset();
    copy.OnText(&record);
    assigned.OnText(&record);
    EXPECT_EQ(Show<Wide>(copy.sink.pieces), "[t][t]");
    EXPECT_EQ(Show<Wide>(assigned.sink.pieces), "[t][t]");
}

TYPED_TEST(ParserObserverOutputTest, IsAbstract) {
    static_assert(std::is_abstract_v<typename Records<TypeParam>::Output>);
    static_assert(
        std::is_base_of_v<HTML::ParserObserver<typename TypeParam::C, typename TypeParam::S>, typename Records<TypeParam>::Output>);
}

TEST(ParserObserverOutputHandlerTest, TheBaseDoesNothing) {
    HTML::ParserObserverOutputHandler handler;
    handler.Write("x", 1, true);
    handler.Write(nullptr, 0, false);
    HTML::ParserObserverOutputHandler copy(handler);
    copy = handler;
    copy.Write("x", 1, true);
    static_assert(std::has_virtual_destructor_v<HTML::ParserObserverOutputHandler>);
}

}  // namespace
}  // namespace Kestra::Test
