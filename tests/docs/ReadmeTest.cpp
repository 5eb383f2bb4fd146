#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "html/output/ParserObserverOutput.h"
#include "html/parser/GenericParser.h"
#include "platform/MemoryInputStream.h"

/// @file
/// What README.md and the headers of the document parser say of documents that the tokens do not
/// give back, of places and of exceptions.

namespace Kestra::Test {
namespace {

using namespace std::string_literals;

using HTML::GenericParser;

std::string Utf16(std::string_view ascii) {
    std::string bytes;
    for (const char letter : ascii)
        bytes += {letter, '\0'};
    return bytes;
}

/// What became of a document.
struct Outcome {
    std::uint32_t parse = 0;
    std::uint32_t end = 0;
    std::string written;  ///< the output of the observer
};

/// Keeps the output, and with it what comments hold.
template <typename C, typename S>
class Writer final : public HTML::ParserObserverOutput<C, S> {
public:
    void OnOutput(const void* data, std::uint64_t byteCount, bool) override {
        output.append(static_cast<const char*>(data), static_cast<std::size_t>(byteCount));
    }

    std::string output;
};

/// @param pieceSize  0 for a stream
template <typename C, typename S>
Outcome Parse(const std::string& bytes, std::size_t pieceSize,
              GenericParser::DataStreamType type = GenericParser::DATA_STREAM_AUTO) {
    Writer<C, S> writer;
    GenericParser parser;
    parser.SetObserver(&writer, false);
    parser.SetSelfCheck(GenericParser::SELF_CHECK_CRC);
    parser.StartParse(StringNS::CharSet::UTF8, type);
    Outcome outcome;
    VFS::MemoryInputStream stream(bytes);
    if (pieceSize == 0)
        outcome.parse = parser.ParseStream(&stream, false);
    for (std::size_t begin = 0; pieceSize > 0 && begin < bytes.size() && outcome.parse == 0; begin += pieceSize) {
        const std::string piece = bytes.substr(begin, pieceSize);
        outcome.parse = parser.ParseBuffer(piece.data(), piece.size());
    }
    outcome.end = parser.EndParse();
    outcome.written = writer.output;
    return outcome;
}

TEST(Readme, WhatTheTokensDoNotGiveBack) {
    const struct {
        const char* note;
        std::string bytes;
        std::size_t pieceSize;
        std::uint32_t parse;
        std::uint32_t end;
        std::string written;
    } CASES[] = {
        {"a page in order", "<p a='b'>c</p><!--d--><script>e</script>", 0, 0, 0,
         "<p a='b'>c</p><!--d--><script>e</script>"},
        {"an unfinished mark", "\xEF\xBB", 0, 0, 0, ""},
        {"an unfinished mark in a piece", "\xEF\xBB<b>", 2, 0, 0, "<b>"},
        {"a mark as text", "\xEF\xBB<b>", 0, 0, 0, "\xEF\xBB<b>"},
        {"a tail in two pieces", "<![if !IE]tail and more>", 18, 0, 704, "<![if !IE] more>"},
        {"a tail in one piece", "<![if !IE]tail and more>", 0, 0, 0, "<![if !IE]tail and more>"},
        {"white space after a slash", "<?xml a/ >", 0, 0, 704, "<?xml a />"},
        {"a line comment, for an 8-bit observer", "<script>a//b\n</script>", 0, 0, 0, "<script>a\n</script>"},
        {"broken markup in a stream", "a<b / >c", 0, 0, 0, "a<b / >c"},
        {"broken markup in a buffer", "a<b / >c", 100, 11, 16, "a"},
        {"an open tag in a buffer", "a<b ", 100, 0, 16, "a"},
    };
    for (const auto& row : CASES) {
        const Outcome outcome = Parse<char, std::string>(row.bytes, row.pieceSize);
        EXPECT_EQ(outcome.parse, row.parse) << row.note;
        EXPECT_EQ(outcome.end, row.end) << row.note;
        EXPECT_EQ(outcome.written, row.written) << row.note;
    }
}

TEST(Readme, BodiesOfUtf16AreWrittenByHalf) {
    const struct {
        const char* page;
        const char* written;
        std::uint32_t end;
    } CASES[] = {
        {"<!--abcd-->", "<!--ab-->", 704},
        {"<![CDATA[abc]]>", "<![CDATA[a]]>", 704},
        {"<![if abc]>", "<![if a]>", 704},
        {"<!---->x", "<!---->x", 0},
        {"<![endif]>x", "<![endif]>x", 0},
        {"<p a=b>x</p>", "<p a=b>x</p>", 0},
        {"<script>a//b\n</script>", "<script>a//b\n</script>", 0},
    };
    for (const auto& row : CASES) {
        const Outcome utf16 = Parse<WideChar, WideString>(Utf16(row.page), 0, GenericParser::DATA_STREAM_UTF16);
        EXPECT_EQ(utf16.written, Utf16(row.written)) << row.page;
        EXPECT_EQ(utf16.end, row.end) << row.page;
        const Outcome wide = Parse<WideChar, WideString>(row.page, 0);
        EXPECT_EQ(wide.written, Utf16(row.written)) << row.page;
        EXPECT_EQ(wide.end, 0U) << row.page << ": the self-check of an 8-bit document writes in 8 bits";
    }
}

/// Notes a name, a comment and the places of texts and tags; throws at a tag "x".
class NarrowNotes final : public HTML::ParserObserver<char, std::string> {
public:
    explicit NarrowNotes(const GenericParser* observedParser) : parser(observedParser) {}

    void OnText(HTML::TextData<char, std::string>*) override {
        notes += "text " + Place();
    }
    void OnStartTag(HTML::StartTagData<char, std::string>* tag) override {
        if (*tag->name == "x")
            throw std::runtime_error("x");
        notes += "tag " + *tag->name + " " + Place();
    }
    void OnCommentTag(HTML::CommentTagData<char, std::string>* comment) override {
        notes += "comment " + *comment->text + " " + Place();
    }

    std::string notes;

private:
    std::string Place() const {
        return std::to_string(parser->GetLine()) + ":" + std::to_string(parser->GetColumn()) + ";";
    }

    const GenericParser* parser;
};

TEST(Readme, PlacesInCallbacks) {
    GenericParser parser;
    NarrowNotes notes(&parser);
    parser.SetObserver(&notes, false);
    parser.StartParse(StringNS::CharSet::UTF8, GenericParser::DATA_STREAM_AUTO);
    const std::string page = "ab\nc<b>d<!--e-->\n";
    VFS::MemoryInputStream stream(page);
    EXPECT_EQ(parser.ParseStream(&stream, false), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(notes.notes, "text 2:3;tag b 2:5;text 2:7;comment e 2:14;text 3:1;");
}

TEST(Readme, ANarrowObserverOfUtf16GetsItsBytes) {
    GenericParser parser;
    NarrowNotes notes(&parser);
    parser.SetObserver(&notes, false);
    parser.StartParse(StringNS::CharSet::UTF8, GenericParser::DATA_STREAM_UTF16);
    const std::string page = Utf16("<b><!--ef-->");
    EXPECT_EQ(parser.ParseBuffer(page.data(), page.size()), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(notes.notes, "tag b\0 1:4;comment e\0f\0 1:13;"s) << "the record has the whole body";
}

TEST(Readme, WhatACallbackThrowsLeavesTheParser) {
    GenericParser parser;
    NarrowNotes notes(&parser);
    parser.SetObserver(&notes, false);
    parser.StartParse(StringNS::CharSet::UTF8, GenericParser::DATA_STREAM_AUTO);
    const std::string page = "<x>";
    EXPECT_THROW(parser.ParseBuffer(page.data(), page.size()), std::runtime_error);
}

}  // namespace
}  // namespace Kestra::Test
