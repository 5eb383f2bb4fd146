#include <filesystem>

#include "tests/html/parser/DocumentRows.h"
#include "tests/html/parser/SpyStreams.h"
#include "tests/support/TemporaryFolder.h"

namespace Kestra::Test {
namespace {

constexpr std::uint32_t HOST_CODE = 4711;

TEST(ParseStreamTest, ANullStream) {
    StartedParser started;
    EXPECT_EQ(started.ParseStream(nullptr, false), 2U);
    EXPECT_EQ(started.ParseStream(nullptr, true), 2U);
    EXPECT_EQ(Join(started.lines), "");
}

TEST(ParseStreamTest, AnEmptyStream) {
    for (const GenericParser::DataStreamType type : {DATA_STREAM_AUTO, DATA_STREAM_8BIT, DATA_STREAM_UTF16}) {
        for (const bool neverEnds : {false, true}) {
            StartedParser started(1252, type);
            FaultyInputStream stream{std::string()};
            if (neverEnds)
                stream.NeverEnd();
            EXPECT_EQ(started.ParseStream(&stream, false), 0U);
            EXPECT_EQ(started.EndParse(), 0U);
            EXPECT_EQ(Join(started.lines), type == DATA_STREAM_AUTO ? "" : "end-parsing\n");
        }
    }
}

TEST(ParseStreamTest, PiecesAreAtMost16384Bytes) {
    std::vector<std::uint64_t> sizes;
    SpyStream stream(std::string(40000, 'x'), [&](std::uint64_t, std::uint64_t size) { sizes.push_back(size); });
    StartedParser started;
    EXPECT_EQ(started.ParseStream(&stream, false), 0U);
    EXPECT_EQ(sizes, (std::vector<std::uint64_t>{16384, 16384, 16384}));
    EXPECT_EQ(started.EndParse(), 0U);
    EXPECT_EQ(started.lines.front(), "text(" + std::string(40000, 'x') + ")");
}

TEST(ParseStreamTest, AStreamIsReadFromItsPosition) {
    VFS::MemoryInputStream stream("<a><b><c>");
    EXPECT_EQ(stream.Seek(3), 0U);
    StartedParser started;
    EXPECT_EQ(started.ParseStream(&stream, false), 0U);
    EXPECT_TRUE(stream.IsEnd());
    EXPECT_EQ(Join(started.lines), "start(|b||)\nstart(|c||)\n");
}

TEST(ParseStreamTest, ItDoesNotEndTheDocument) {
    StartedParser started;
    VFS::MemoryInputStream first("a<b");
    VFS::MemoryInputStream second("c>d");
    EXPECT_EQ(started.ParseStream(&first, false), 0U);
    EXPECT_EQ(started.Feed("x"), 0U);
    EXPECT_EQ(started.ParseStream(&second, false), 0U);
    EXPECT_EQ(Join(started.lines), "text(a)\nstart(|bxc||)\n");
    EXPECT_EQ(started.EndParse(), 0U);
    EXPECT_EQ(Join(started.lines), "text(a)\nstart(|bxc||)\ntext(d)\nend-parsing\n");
}

TEST(ParseStreamTest, TheReadPositionIsKeptAcrossJunk) {
    // The construct is read again while the next piece is still to come.
    for (std::uint64_t size = 1; size <= 20; ++size) {
        StartedParser started;
        BoundedInputStream stream("<a / ><b / ><c>x<d / ></e / >y", OnlyFrom(GenericParser::BUFFER_SIZE, AtMost(size)));
        EXPECT_EQ(started.ParseStream(&stream, false), 0U);
        EXPECT_EQ(started.EndParse(), 0U);
        EXPECT_EQ(Join(started.lines),
                  "junk(<a / )\njunk(>)\njunk(<b / )\njunk(>)\nstart(|c||)\ntext(x)\njunk(<d / )\njunk(>)\njunk(</e / "
                  ")\njunk(>y)\n"
                  "end-parsing\n");
    }
}

TEST(ParseStreamTest, AnOwnedStreamIsFreedOnceOnEveryPath) {
    struct Row {
        const char* note;
        const char* bytes;
        GenericParser::DataStreamType type;
        void (*spoil)(FaultyInputStream*);
        std::uint32_t result;
    };
    const Row rows[] = {
        {"to its end", "a<b>c", DATA_STREAM_8BIT, [](FaultyInputStream*) {}, 0},
        {"with an open construct", "a<b", DATA_STREAM_8BIT, [](FaultyInputStream*) {}, 0},
        {"with junk", "a<b / >c", DATA_STREAM_8BIT, [](FaultyInputStream*) {}, 0},
        {"with a construct that cannot be read again", "a<b / >c", DATA_STREAM_8BIT,
         [](FaultyInputStream* stream) { stream->FailGetPositionsFrom(1, HOST_CODE); }, 11},
        {"with a read error", "a<b", DATA_STREAM_8BIT,
         [](FaultyInputStream* stream) { stream->FailRead(1, HOST_CODE); }, HOST_CODE},
        {"with half a character", "a<b", DATA_STREAM_UTF16, [](FaultyInputStream*) {}, 2},
        {"empty", "", DATA_STREAM_8BIT, [](FaultyInputStream*) {}, 0},
        {"without a position", "a<b", DATA_STREAM_8BIT,
         [](FaultyInputStream* stream) { stream->FailGetPositionsFrom(1, HOST_CODE); }, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        int destructions = 0;
        {
            StartedParser started(1252, row.type);
            auto stream = std::make_unique<FaultyInputStream>(std::string(row.bytes));
            stream->CountDestructions(&destructions);
            row.spoil(stream.get());
            EXPECT_EQ(started.ParseStream(stream.release(), true), row.result);
            EXPECT_EQ(destructions, 1) << "freed before the call returns";
            started.EndParse();
        }
        EXPECT_EQ(destructions, 1);
    }
}

TEST(ParseStreamTest, OnlyAnOpenConstructIsKeptFromAnOwnedStream) {
    struct Row {
        const char* note;
        const char* bytes;
        bool kept;
    };
    const Row rows[] = {
        {"text", "<a>b", false},
        {"nothing open", "<a>", false},
        {"a regular expression, which is never junk", "<script>/a", false},
        {"a slash that may begin one", "<script>a/", false},
        {"a \"<\"", "a<", true},
        {"a start tag", "a<b", true},
        {"an end tag", "a</b", true},
        {"a single-quoted string", "<script>'a", true},
        {"a double-quoted string", "<script>\"a", true},
        {"a declaration", "a<!b", true},
        {"a processing instruction", "a<?b", true},
        {"a block comment of a script", "<script>/*a", true},
        {"a line comment", "<script>//a", true},
        {"a comment, which is never junk", "<!--a", false},
        {"a CDATA section", "<![CDATA[a", false},
        {"a conditional section", "<![if a", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        for (const bool owned : {false, true}) {
            int seeks = 0;
            StartedParser started;
            auto stream = std::make_unique<SpyStream>(row.bytes, nullptr, [&seeks] { ++seeks; });
            VFS::InputStream* const fed = owned ? stream.release() : stream.get();
            EXPECT_EQ(started.ParseStream(fed, owned), 0U);
            EXPECT_EQ(seeks > 0, owned && row.kept);
            EXPECT_EQ(started.EndParse(), 0U);
            EXPECT_EQ(started.lines.back(), "end-parsing");
        }
    }
}

TEST(ParseStreamTest, ABorrowedStreamIsForgottenAfterEveryEnd) {
    // The stream is destroyed at once; what comes next must not touch it.
    enum class Next { START_8BIT, START_AUTO, END, DESTROY, ASSIGN };
    for (const Next next : {Next::START_8BIT, Next::START_AUTO, Next::END, Next::DESTROY, Next::ASSIGN}) {
        auto started = std::make_unique<StartedParser>();
        auto stream = std::make_unique<VFS::MemoryInputStream>("a<b / >c<d");
        EXPECT_EQ(started->ParseStream(stream.get(), false), 0U);
        const GenericParser other;
        switch (next) {
            case Next::START_8BIT:
                EXPECT_EQ(started->StartParse(1252, DATA_STREAM_8BIT), 0U);
                break;
            case Next::START_AUTO:
                EXPECT_EQ(started->StartParse(1252, DATA_STREAM_AUTO), 0U);
                break;
            case Next::END:
                EXPECT_EQ(started->EndParse(), 0U);
                break;
            case Next::DESTROY:
                started.reset();
                break;
            case Next::ASSIGN:
                started->GenericParser::operator=(other);
                break;
        }
        stream.reset();
        if (started == nullptr)
            continue;
        EXPECT_EQ(started->ParseBuffer("x<e", 3), 0U);
        EXPECT_EQ(started->EndParse(), 16U);
    }
}

TEST(ParseStreamTest, AnOddReadOfUtf16IsRejected) {
    const std::string bytes = ToUtf16LE(std::string_view("a<b>"));
    for (std::uint64_t size = 1; size < bytes.size(); ++size) {
        StartedParser started(0, DATA_STREAM_UTF16);
        BoundedInputStream stream(bytes, AtMost(size));
        EXPECT_EQ(started.ParseStream(&stream, false), size % 2 == 0 ? 0U : 2U);
    }
}

TEST(ParseStreamTest, ReadsOfNothingAreNoEnd) {
    StartedParser started;
    FaultyInputStream stream("a<b>c");
    stream.ReadNothing(1).ReadNothing(2).ShortenRead(3, 2).ReadNothing(4).ShortenRead(5, 1).ReadNothing(6);
    EXPECT_EQ(started.ParseStream(&stream, false), 0U);
    EXPECT_EQ(started.EndParse(), 0U);
    EXPECT_EQ(Join(started.lines), "text(a)\nstart(|b||)\ntext(c)\nend-parsing\n");
}

TEST(ParseStreamTest, ThePositionIsAskedBeforeEveryRead) {
    // Also again after a read of no bytes: the position of this stream is known only then.
    for (const bool wide : {false, true}) {
        StartedParser started(1252, TypeFor(wide));
        FaultyInputStream stream(wide ? ToUtf16LE(std::string_view("<b")) : "<b");
        stream.FailGetPosition(1, HOST_CODE).ReadNothing(1);
        EXPECT_EQ(started.ParseStream(&stream, false), 0U);
        EXPECT_EQ(stream.GetPositionCalls(), 2U);
        EXPECT_EQ(started.EndParse(), 0U);
        EXPECT_EQ(Join(started.lines), wide ? "junk(<\\x00b\\x00)\nend-parsing\n" : "junk(<b)\nend-parsing\n");
    }
    StartedParser started;
    FaultyInputStream stream("a<b>c");
    stream.ReadNothing(1).ShortenRead(2, 2).ReadNothing(3).ReadNothing(4);
    EXPECT_EQ(started.ParseStream(&stream, false), 0U);
    EXPECT_EQ(stream.GetReadCalls(), 5U);
    EXPECT_EQ(stream.GetPositionCalls(), 5U);
}

TEST(ParseStreamTest, ACodeOfTheStreamIsReturnedWhateverItMeansElsewhere) {
    // 16 of a construct lets the reading go on; 16, 705 and 706 of a stream do not.
    for (const std::uint32_t code : {16U, 705U, 706U}) {
        for (const std::uint64_t call : {1U, 2U}) {
            SCOPED_TRACE(code);
            StartedParser started;
            FaultyInputStream stream("a<b c");
            stream.ShortenRead(1, 3).FailReadsFrom(call, code);
            EXPECT_EQ(started.ParseStream(&stream, false), code);
            EXPECT_EQ(stream.GetReadCalls(), call);
            EXPECT_EQ(started.EndParse(), call == 1 ? 0U : 16U) << "the stream is no longer in use";
        }
    }
}

TEST(ParseStreamTest, WhatAFailedReadSaysItReadDoesNotCount) {
    const auto boast = [](std::uint32_t code) {
        return [code](std::uint64_t* bytesRead) {
            *bytesRead = 100000;
            return code;
        };
    };
    StringNS::CharSet::Code code = 0;
    AnsweredStream ended(boast(RESULT_END_OF_DATA));
    AnsweredStream failed(boast(HOST_CODE));
    StartedParser started;
    EXPECT_EQ(started.DetectCharset(&ended, &code), 707U);
    EXPECT_EQ(started.DetectCharset(&failed, &code), HOST_CODE);
    EXPECT_EQ(started.ParseStream(&ended, false), 0U);
    EXPECT_EQ(started.ParseStream(&failed, false), HOST_CODE);
    EXPECT_EQ(Join(started.lines), "");
}

TEST(ParseStreamTest, AStreamThatNeverDeliversAnythingEndsWith507) {
    std::uint64_t reads = 0;
    AnsweredStream stream([&reads](std::uint64_t* bytesRead) {
        ++reads;
        *bytesRead = 0;
        return 0U;
    });
    StartedParser started;
    EXPECT_EQ(started.ParseStream(&stream, false), 507U);
    EXPECT_EQ(reads, 1000U);
    EXPECT_EQ(started.EndParse(), 0U);
    EXPECT_EQ(Join(started.lines), "end-parsing\n");
}

TEST(ParseStreamTest, AReadThatStatesMoreBytesThanAskedForIsAFailure) {
    for (const std::uint64_t count : {std::uint64_t{16385}, std::uint64_t{1} << 32, ~std::uint64_t{0}}) {
        StartedParser started;
        FaultyInputStream stream("a<b>c");
        stream.MisreportRead(1, count);
        EXPECT_NE(started.ParseStream(&stream, false), 0U);
        started.EndParse();
        StringNS::CharSet::Code code = 0;
        FaultyInputStream detected(std::string(300, 'x'));
        detected.MisreportRead(1, count);
        EXPECT_NE(started.DetectCharset(&detected, &code), 0U);
    }
    // While a construct is read again.
    StartedParser started;
    FaultyInputStream stream("a<b / >c");
    stream.MisreportRead(2, 16385);
    EXPECT_EQ(started.ParseStream(&stream, false), 11U);
}

TEST(ParseFileTest, WhatCannotBeOpenedIs2) {
    const TemporaryFolder folder;
    StartedParser started;
    EXPECT_EQ(started.ParseFile((folder.GetPath() / "missing.html").string<WideChar>().c_str()), 2U);
    EXPECT_EQ(started.ParseFile(folder.GetPath().string<WideChar>().c_str()), 2U);
    EXPECT_EQ(started.ParseFile((folder.GetPath() / "missing" / "a.html").string<WideChar>().c_str()), 2U);
    EXPECT_EQ(started.ParseFile(nullptr), 2U);
    EXPECT_EQ(started.ParseFile(KESTRA_WIDE("")), 2U);
    const WideChar loneSurrogate[] = {0xD800, 0};
    EXPECT_EQ(started.ParseFile(loneSurrogate), 2U);
    // The document goes on as if nothing had happened.
    EXPECT_EQ(started.Feed("a"), 0U);
    EXPECT_EQ(started.EndParse(), 0U);
    EXPECT_EQ(Join(started.lines), "text(a)\nend-parsing\n");
}

TEST(ParseFileTest, ARealFile) {
    const TemporaryFolder folder;
    const std::string text(20000, 'x');
    struct Row {
        const char* note;
        const char* name;
        std::string bytes;
        Tokens lines;
    };
    const Row rows[] = {
        {"an 8-bit file with junk in it and at its end", "a.html", "\xE9<a / >b<c d",
         "start-parsing\ntext(\\xE9)\njunk(<a / )\njunk(>b)\njunk(<c d)\nend-parsing"},
        {"more than one piece", "b.html", text + "<p>" + text,
         "start-parsing\ntext(" + text + ")\nstart(|p||)\ntext(" + text + ")\nend-parsing"},
        {"a UTF-8 mark", "c.html", "\xEF\xBB\xBF<a / >",
         "start-parsing\nbom(EF BB BF)\njunk(<a / )\njunk(>)\nend-parsing"},
        {"a UTF-16 mark", "d.html", "\xFF\xFE" + ToUtf16LE(std::string_view("<a>")),
         "start-parsing\nbom(FF FE)\nstart(|a\\x00||)\nend-parsing"},
        {"a name beyond ASCII", "\xD0\x96\xE3\x81\x82.html", "<a>", "start-parsing\nstart(|a||)\nend-parsing"},
        {"an empty file", "e.html", "", {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        const std::filesystem::path path = folder.Write(std::filesystem::path(row.name), row.bytes);
        StartedParser started(1252, DATA_STREAM_AUTO);
        EXPECT_EQ(started.ParseFile(path.string<WideChar>().c_str()), 0U);
        EXPECT_EQ(started.EndParse(), 0U);
        EXPECT_EQ(Join(started.lines), Join(row.lines));
    }
}

}  // namespace
}  // namespace Kestra::Test
