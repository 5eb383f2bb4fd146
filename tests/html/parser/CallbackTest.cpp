#include <map>
#include <stdexcept>

#include "tests/html/parser/DocumentRows.h"
#include "tests/support/TemporaryFolder.h"

namespace Kestra::Test {
namespace {

/// Two documents that make every callback together, and the lines of both for the observer of their
/// parser's flavour.
struct Scene {
    bool wide = false;

    void Play(GenericParser* parser) const {
        EXPECT_EQ(parser->StartParse(1252, TypeFor(wide)), 0U);
        VFS::MemoryInputStream stream(BytesFor(EVERY_CALLBACK, wide));
        EXPECT_EQ(parser->ParseStream(&stream, false), 0U);
        EXPECT_EQ(parser->EndParse(), 0U);

        EXPECT_EQ(parser->StartParse(1252, DATA_STREAM_AUTO), 0U);
        const std::string marked = (wide ? "\xFF\xFE" : "\xEF\xBB\xBF") + BytesFor("a<b>c", wide);
        EXPECT_EQ(parser->ParseBuffer(marked.data(), marked.size()), 0U);
        EXPECT_EQ(parser->EndParse(), 0U);
    }

    Lines Trace() const {
        Lines lines = WholeTrace(EVERY_CALLBACK_TOKENS, wide ? WIDE_TO_WIDE : NARROW_TO_NARROW);
        for (const char* const line : {"start-parsing", wide ? "bom(FF FE)" : "bom(EF BB BF)", "text(a)", "start(|b||)",
                                       "text(c)", "end-parsing"})
            lines.push_back(line);
        return lines;
    }
};

/// A parser of one flavour, and an observer of the same.
class ReentranceTest : public testing::TestWithParam<bool> {
protected:
    const bool wide = GetParam();
    const Observed observed = wide ? Observed::WIDE : Observed::NARROW;
    const Scene scene{wide};
    FedParser parser{observed};
};

INSTANTIATE_TEST_SUITE_P(Flavours, ReentranceTest, testing::Bool());

TEST_P(ReentranceTest, CallsThatFeedGive2AndChangeNothing) {
    const TemporaryFolder folder;
    const WideString file = folder.Write("document.html", "<file>").string<WideChar>();
    int callbacks = 0;
    int destructions = 0;
    parser.SetHook([&](const std::string& line) {
        SCOPED_TRACE("in " + line);
        ++callbacks;
        const std::uint64_t lineNumber = parser.GetLine();
        const std::uint64_t column = parser.GetColumn();
        const WideString name = parser.GetCurrentParserName();
        EXPECT_EQ(parser.StartParse(65001, DATA_STREAM_8BIT), 2U);
        EXPECT_EQ(parser.StartParse(65001, DATA_STREAM_UTF16), 2U);
        EXPECT_EQ(parser.StartParse(65001, DATA_STREAM_AUTO), 2U);
        EXPECT_EQ(parser.ParseBuffer("<buffer>", 8), 2U);
        FaultyInputStream borrowed("<borrowed>");
        EXPECT_EQ(parser.ParseStream(&borrowed, false), 2U);
        EXPECT_EQ(borrowed.GetReadCalls(), 0U);
        // A stream that is not taken stays the caller's.
        auto owned = std::make_unique<FaultyInputStream>("<owned>");
        owned->CountDestructions(&destructions);
        EXPECT_EQ(parser.ParseStream(owned.get(), true), 2U);
        EXPECT_EQ(parser.ParseStream(nullptr, true), 2U);
        EXPECT_EQ(destructions, 0);
        owned.reset();
        EXPECT_EQ(destructions, 1);
        destructions = 0;
        EXPECT_EQ(parser.ParseFile(file.c_str()), 2U);
        EXPECT_EQ(parser.EndParse(), 2U);
        EXPECT_EQ(parser.GetLine(), lineNumber);
        EXPECT_EQ(parser.GetColumn(), column);
        EXPECT_TRUE(parser.GetCurrentParserName() == name);
        EXPECT_EQ(parser.IsWParser(), scene.wide);
    });
    scene.Play(&parser);
    EXPECT_EQ(Join(parser.lines), Join(scene.Trace()));
    EXPECT_EQ(static_cast<std::size_t>(callbacks), parser.lines.size());
}

/// The word of a trace line: all of it up to the bracket.
std::string WordOf(const std::string& line) {
    return line.substr(0, line.find('('));
}

// In a callback of a token the name is that of its recognizer, also where the token was read
// without one.
TEST_P(ReentranceTest, TheParserNameInACallback) {
    const std::map<std::string, std::string> names = {
        {"text", "TextSimpleParser"},
        {"start", "StartTagSimpleParser"},
        {"short", "StartTagSimpleParser"},
        {"js-start", "StartTagSimpleParser"},
        {"css-start", "StartTagSimpleParser"},
        {"end", "EndTagSimpleParser"},
        {"js-end", "EndTagSimpleParser"},
        {"css-end", "EndTagSimpleParser"},
        {"comment", "CommentTagSimpleParser"},
        {"cdata", "CDATATagSimpleParser"},
        {"conditional", "ConditionalTagSimpleParser"},
        {"entity", "EntityTagSimpleParser"},
        {"extern", "ExternTagSimpleParser"},
        {"extern-text", "ExternTagSimpleParser"},
        {"s-string", "SQuoteStringSimpleParser"},
        {"d-string", "DQuoteStringSimpleParser"},
        {"c-comment", "CCommentSimpleParser"},
        {"cpp-comment", "CPPCommentSimpleParser"},
    };
    const std::string_view all = EVERY_CALLBACK;
    const std::string_view document = all.substr(0, all.find("<i j"));  // what follows needs a stream
    ForEverySplit(document, [&](const Cuts& cuts) {
        FedParser fed(observed);
        std::map<std::string, std::string> found;
        fed.SetHook([&](const std::string& line) {
            const std::string name = fed.GetParserName();
            const auto expected = names.find(WordOf(line));
            if (expected == names.end())
                return;
            found.insert({expected->first, name});
            EXPECT_EQ(name, expected->second) << line;
        });
        fed.Start(1252, TypeFor(wide));
        for (const auto& [begin, end] : PiecesOf(cuts, document.size())) {
            EXPECT_EQ(fed.Feed(BytesFor(document.substr(begin, end - begin), wide)), 0U);
        }
        EXPECT_EQ(fed.EndParse(), 0U);
        EXPECT_EQ(found.size(), names.size() - (wide ? 0 : 1));  // no line comments for 8-bit observers
    });
}

/// Looks at the attributes that have no value.
template <typename C, typename S>
class BareAttributeObserver final : public HTML::ParserObserver<C, S> {
public:
    void OnStartTag(HTML::StartTagData<C, S>* data) override {
        Check(*data->attributes);
    }
    void OnShortTag(HTML::ShortTagData<C, S>* data) override {
        Check(*data->attributes);
    }
    void OnEndTag(HTML::EndTagData<C, S>* data) override {
        Check(*data->attributes);
    }
    void OnExternTag(HTML::ExternTagData<C, S>* data) override {
        Check(*data->attributes);
    }

    std::size_t bare = 0;
    std::size_t others = 0;

private:
    void Check(const Vector<HTML::Attribute<C, S>>& attributes) {
        for (const HTML::Attribute<C, S>& attribute : attributes) {
            ++(attribute.hasValue ? others : bare);
            if (attribute.hasValue)
                continue;
            EXPECT_TRUE(attribute.beforeEquals.empty());
            EXPECT_TRUE(attribute.afterEquals.empty());
            EXPECT_TRUE(attribute.value.empty());
            EXPECT_EQ(attribute.quote, HTML::QUOTE_NONE);
        }
    }
};

template <typename Flavour>
class BareAttributeTest : public testing::Test {};

TYPED_TEST_SUITE(BareAttributeTest, Flavours);

// Whatever the list held before in that place.
TYPED_TEST(BareAttributeTest, HasNothingButItsName) {
    constexpr std::size_t COUNT = 10;  // more than the recognizer reads by itself in a cut tag
    const struct {
        const char* start;
        const char* end;
    } tags[] = {{"<p", ">"}, {"<p", "/>"}, {"</p", ">"}, {"<?xml", "?>"}};
    for (const auto& tag : tags) {
        std::string document = tag.start;
        for (std::size_t i = 0; i < COUNT; ++i)
            document += " a  =   'v'";
        document = document + tag.end + tag.start;
        const std::size_t bareTag = document.size();
        for (std::size_t i = 0; i < COUNT; ++i)
            document += " b";
        document += tag.end;
        SCOPED_TRACE(document);
        for (std::size_t cut = bareTag; cut <= document.size(); ++cut) {
            BareAttributeObserver<typename TypeParam::C, typename TypeParam::S> observer;
            GenericParser parser;
            parser.SetObserver(&observer, false);
            EXPECT_EQ(parser.StartParse(1252, TypeFor(TypeParam::WIDE)), 0U);
            for (const std::string& piece : {document.substr(0, cut), document.substr(cut)}) {
                const std::string bytes = BytesFor(piece, TypeParam::WIDE);
                EXPECT_EQ(parser.ParseBuffer(bytes.data(), bytes.size()), 0U);
            }
            EXPECT_EQ(parser.EndParse(), 0U);
            EXPECT_EQ(observer.bare, COUNT);
            EXPECT_EQ(observer.others, COUNT);
        }
    }
}

TEST_P(ReentranceTest, QueriesAndSettersWork) {
    parser.SetHook([&](const std::string& line) {
        SCOPED_TRACE("in " + line);
        EXPECT_GE(parser.GetLine(), 1U);
        EXPECT_FALSE(parser.GetCurrentParserName().empty());
        EXPECT_EQ(parser.IsWParser(), scene.wide);
        EXPECT_FALSE(parser.NeedsReparsing());
        EXPECT_FALSE(parser.WasCharsetDetectorUsed());
        EXPECT_EQ(parser.SetDetectCharsetErrors(true), 0U);
        EXPECT_TRUE(parser.GetDetectCharsetErrors());
        EXPECT_EQ(parser.SetDetectCharsetErrors(false), 0U);
        EXPECT_EQ(parser.SetChrDetMinConfidence(60), 0U);
        EXPECT_EQ(parser.GetChrDetMinConfidence(), 60U);
        StringNS::CharSet::Code code = 1;
        EXPECT_EQ(parser.DetectCharset("abc", 3, &code), 707U);
        EXPECT_EQ(code, 1U);
    });
    scene.Play(&parser);
    EXPECT_EQ(Join(parser.lines), Join(scene.Trace()));
}

TEST_P(ReentranceTest, AnObserverBoundInACallbackGetsTheNextOne) {
    // At every callback of the scene the second observer takes over, at once and for good.
    const Lines trace = scene.Trace();
    for (std::size_t handOver = 0; handOver < trace.size(); ++handOver) {
        SCOPED_TRACE("after " + trace[handOver]);
        FedParser first(observed);
        FedParser second(observed);
        first.SetHook([&](const std::string&) {
            if (first.lines.size() != handOver + 1)
                return;
            EXPECT_EQ(wide ? first.SetObserver(&second.wide, false) : first.SetObserver(&second.narrow, false), 0U);
        });
        scene.Play(&first);
        const auto middle = trace.begin() + static_cast<std::ptrdiff_t>(handOver) + 1;
        EXPECT_EQ(Join(first.lines), Join(Lines(trace.begin(), middle)));
        EXPECT_EQ(Join(second.lines), Join(Lines(middle, trace.end())));
    }
}

TEST_P(ReentranceTest, AnObserverUnboundInACallbackGetsNothingMore) {
    const Lines trace = scene.Trace();
    for (std::size_t last = 0; last < trace.size(); ++last) {
        SCOPED_TRACE("after " + trace[last]);
        FedParser fed(observed);
        fed.SetHook([&](const std::string&) {
            if (fed.lines.size() == last + 1)
                UnbindObserver(&fed);
        });
        scene.Play(&fed);
        EXPECT_EQ(fed.lines.size(), last + 1);
    }
}

TEST(ObserverTest, AnObserverOfTheOtherFlavourBoundInACallbackGetsTheNextOne) {
    Lines lines;
    NarrowObserver narrow(&lines);
    WideObserver wide(&lines);
    GenericParser parser;
    parser.SetObserver(&narrow, false);
    // Each takes turns with the other.
    narrow.hook = [&](const std::string&) { parser.SetObserver(&wide, false); };
    wide.hook = [&](const std::string&) { parser.SetObserver(&narrow, false); };
    EXPECT_EQ(parser.StartParse(1252, DATA_STREAM_8BIT), 0U);
    const std::string document = "\xE9<\xE9>\xE9</\xE9>\xE9";
    EXPECT_EQ(parser.ParseBuffer(document.data(), document.size()), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(Join(lines), Join({"start-parsing", "charset(1252)", "text(\\xE9)", "start(|\\u00E9||)", "text(\\xE9)",
                                 "end(|\\u00E9|||)", "text(\\xE9)", "end-parsing"}));
}

TEST(ObserverTest, ACallbackMayFeedAnotherParser) {
    Lines lines;
    Lines innerLines;
    NarrowObserver observer(&lines);
    NarrowObserver innerObserver(&innerLines);
    GenericParser parser;
    GenericParser inner;
    parser.SetObserver(&observer, false);
    inner.SetObserver(&innerObserver, false);
    innerObserver.hook = [&](const std::string&) {
        // Both calls are on the stack.
        EXPECT_EQ(parser.ParseBuffer("x", 1), 2U);
        EXPECT_EQ(inner.ParseBuffer("x", 1), 2U);
    };
    observer.hook = [&](const std::string& line) {
        EXPECT_EQ(inner.StartParse(1252, DATA_STREAM_AUTO), 0U);
        EXPECT_EQ(inner.ParseBuffer(line.data(), line.size()), 0U);
        EXPECT_EQ(inner.EndParse(), 0U);
    };
    EXPECT_EQ(parser.StartParse(1252, DATA_STREAM_AUTO), 0U);
    EXPECT_EQ(parser.ParseBuffer("a<b>", 4), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(Join(lines), "start-parsing\ntext(a)\nstart(|b||)\nend-parsing\n");
    EXPECT_EQ(Join(innerLines),
              "start-parsing\ntext(start-parsing)\nend-parsing\nstart-parsing\ntext(text(a))\nend-parsing\n"
              "start-parsing\ntext(start(|b||))\nend-parsing\nstart-parsing\ntext(end-parsing)\nend-parsing\n");
}

TEST(ObserverTest, ACopyMadeInACallbackMayBeFed) {
    FedParser parser;
    std::unique_ptr<GenericParser> copy;
    parser.narrow.hook = [&](const std::string& line) {
        if (line == "start(|b||)")
            copy = std::make_unique<GenericParser>(parser);
    };
    parser.Start(1252, DATA_STREAM_AUTO);
    EXPECT_EQ(parser.Feed("a<b>c"), 0U);
    ASSERT_NE(copy, nullptr);
    parser.lines.clear();
    EXPECT_EQ(copy->StartParse(1252, DATA_STREAM_AUTO), 0U);
    EXPECT_EQ(copy->ParseBuffer("d<e>", 4), 0U);
    EXPECT_EQ(copy->EndParse(), 0U);
    EXPECT_EQ(Join(parser.lines), "start-parsing\ntext(d)\nstart(|e||)\nend-parsing\n");
}

TEST(ObserverTest, WhatBelongsToOneDocumentIsClearedBeforeTheNextOneStarts) {
    FedParser parser(Observed::WIDE);
    parser.SetDetectCharsetErrors(true);
    parser.Start(65001);
    EXPECT_EQ(parser.Feed("\n\xFF<a><script>'"), 0U);
    EXPECT_TRUE(parser.HasCharsetErrors());
    bool started = false;
    parser.wide.hook = [&](const std::string& line) {
        if (line != "start-parsing")
            return;
        started = true;
        EXPECT_FALSE(parser.HasCharsetErrors());
        EXPECT_FALSE(parser.NeedsReparsing());
        EXPECT_FALSE(parser.WasCharsetDetectorUsed());
        EXPECT_EQ(parser.GetLine(), 1U);
        EXPECT_EQ(parser.GetColumn(), 1U);
        EXPECT_TRUE(parser.GetCurrentParserName() == KESTRA_WIDE("TextSimpleParser"));
    };
    parser.Start(65001);
    EXPECT_TRUE(started);
}

TEST(ObserverTest, OnlyTheObserverBoundLastIsCalled) {
    Lines lines;
    Lines wideLines;
    Trace::TraceObserver<char, std::string> narrow(&lines);
    Trace::TraceObserver<WideChar, WideString> wide(&wideLines);
    GenericParser parser;
    EXPECT_EQ(parser.SetObserver(&narrow, false), 0U);
    EXPECT_EQ(parser.SetObserver(&wide, false), 0U);
    EXPECT_EQ(parser.StartParse(1252, DATA_STREAM_8BIT), 0U);
    EXPECT_EQ(parser.ParseBuffer("a<b>", 4), 0U);
    EXPECT_EQ(Join(lines), "");
    EXPECT_EQ(Join(wideLines), "start-parsing\ncharset(1252)\ntext(a)\nstart(|b||)\n");
    wideLines.clear();
    EXPECT_EQ(parser.SetObserver(&narrow, false), 0U);
    EXPECT_EQ(parser.ParseBuffer("c<d>", 4), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(Join(lines), "text(c)\nstart(|d||)\nend-parsing\n");
    EXPECT_EQ(Join(wideLines), "");
}

/// Thrown by an observer.
struct ObserverError : std::runtime_error {
    ObserverError() : std::runtime_error("the observer gives up") {}
};

/// Runs `step` and answers whether the observer's exception came through.
template <typename Step>
bool Throws(Step step) {
    try {
        step();
    } catch (const ObserverError&) {
        return true;
    }
    return false;
}

enum class AfterException { START, END, DESTROY, FEED };

class ExceptionTest : public ReentranceTest {};

INSTANTIATE_TEST_SUITE_P(Flavours, ExceptionTest, testing::Bool());

TEST_P(ExceptionTest, PassesThroughEveryCallback) {
    const Lines trace = WholeTrace(EVERY_CALLBACK_TOKENS, wide ? WIDE_TO_WIDE : NARROW_TO_NARROW);
    for (const AfterException after :
         {AfterException::START, AfterException::END, AfterException::DESTROY, AfterException::FEED}) {
        for (const bool owned : {false, true}) {
            for (std::size_t throwing = 0; throwing < trace.size(); ++throwing) {
                SCOPED_TRACE("from " + trace[throwing] + (owned ? ", owned stream" : ", borrowed stream"));
                int destructions = 0;
                auto stream = std::make_unique<FaultyInputStream>(BytesFor(EVERY_CALLBACK, wide));
                stream->CountDestructions(&destructions);
                auto fed = std::make_unique<FedParser>(observed);
                fed->SetHook([&fed, throwing](const std::string&) {
                    if (fed->lines.size() == throwing + 1)
                        throw ObserverError();
                });
                bool thrown = Throws([&] { fed->StartParse(1252, TypeFor(wide)); });
                if (!thrown) {
                    VFS::InputStream* const given = owned ? stream.release() : stream.get();
                    thrown = Throws([&] { fed->ParseStream(given, owned); });
                    // The end of the stream is after every token but the last junk.
                    EXPECT_EQ(destructions, owned ? 1 : 0);
                    if (!thrown)
                        thrown = Throws([&] { fed->EndParse(); });
                }
                EXPECT_TRUE(thrown);
                EXPECT_EQ(Join(fed->lines),
                          Join(Lines(trace.begin(), trace.begin() + static_cast<std::ptrdiff_t>(throwing) + 1)));

                EXPECT_GE(fed->GetLine(), 1U);
                EXPECT_FALSE(fed->NeedsReparsing());
                switch (after) {
                    case AfterException::START:
                        break;
                    case AfterException::END:
                        fed->EndParse();
                        EXPECT_EQ(fed->EndParse(), 0U);
                        break;
                    case AfterException::DESTROY:
                        fed.reset();
                        break;
                    case AfterException::FEED: {
                        const std::string more = BytesFor("x<y>'z", wide);
                        fed->ParseBuffer(more.data(), more.size());
                        fed->EndParse();
                        break;
                    }
                }
                stream.reset();
                EXPECT_EQ(destructions, 1);
                if (fed == nullptr)
                    continue;
                fed->lines.clear();
                fed->SetHook(nullptr);
                fed->Start(1252, TypeFor(wide));
                EXPECT_EQ(fed->FeedStream(BytesFor(EVERY_CALLBACK, wide)), 0U);
                EXPECT_EQ(fed->EndParse(), 0U);
                EXPECT_EQ(Join(fed->lines), Join(trace));
            }
        }
    }
}

TEST_P(ExceptionTest, PassesThroughAMark) {
    const std::string mark = wide ? "\xFF\xFE" : "\xEF\xBB\xBF";
    for (const char* const thrower : {"start-parsing", wide ? "bom(FF FE)" : "bom(EF BB BF)"}) {
        SCOPED_TRACE(thrower);
        FedParser fed(observed);
        fed.SetHook([&](const std::string& line) {
            if (line == thrower)
                throw ObserverError();
        });
        fed.Start(0, DATA_STREAM_AUTO);
        EXPECT_TRUE(Throws([&] { fed.Feed(mark); }));
        fed.GetCharset();
        fed.SetHook(nullptr);
        fed.EndParse();
        fed.lines.clear();
        const std::string document = mark + BytesFor("a<b>", wide);
        fed.Start(0, DATA_STREAM_AUTO);
        EXPECT_EQ(fed.Feed(document), 0U);
        EXPECT_EQ(fed.EndParse(), 0U);
        EXPECT_EQ(Join(fed.lines), Join({"start-parsing", wide ? "bom(FF FE)" : "bom(EF BB BF)", "text(a)",
                                         "start(|b||)", "end-parsing"}));
    }
}

TEST_P(ExceptionTest, PassesThroughTheEnd) {
    // The callbacks that `EndParse` itself makes: pending text, junk of an open construct, the end.
    for (const char* const document : {"a", "<b", "<script>'", "<a / >x", "<a>"}) {
        for (const int throwing : {1, 2}) {
            SCOPED_TRACE(document);
            FedParser fed(observed);
            fed.Start(1252, TypeFor(wide));
            auto stream = std::make_unique<VFS::MemoryInputStream>(BytesFor(document, wide));
            EXPECT_EQ(fed.ParseStream(stream.get(), false), 0U);
            int calls = 0;
            fed.SetHook([&](const std::string&) {
                if (++calls == throwing)
                    throw ObserverError();
            });
            const bool thrown = Throws([&] { fed.EndParse(); });
            EXPECT_EQ(thrown, calls == throwing);
            // The borrowed stream has been forgotten.
            stream.reset();
            fed.SetHook(nullptr);
            fed.EndParse();
            EXPECT_EQ(fed.EndParse(), 0U);
            fed.lines.clear();
            const std::string next = BytesFor("'x'<b>", wide);
            fed.Start(1252, TypeFor(wide));
            EXPECT_EQ(fed.Feed(next), 0U);
            EXPECT_EQ(fed.EndParse(), 0U);
            EXPECT_EQ(Join(fed.lines), Join({"start-parsing", Trace::FormatCharset(wide ? 1200 : 1252), "text('x')",
                                             "start(|b||)", "end-parsing"}));
        }
    }
}

/// What the queries answer inside a callback.
struct Answers {
    std::string callback;
    StringNS::CharSet::Code charset = 0;
    bool needsReparsing = false;
    bool isWParser = false;
};

/// The answers inside each callback of one document.
class AnswerRecorder {
public:
    explicit AnswerRecorder(GenericParser* queriedParser) : parser(queriedParser), observer(&lines) {
        parser->SetObserver(&observer, false);
        observer.hook = [this](const std::string& line) {
            answers.push_back({line, parser->GetCharset(), parser->NeedsReparsing(), parser->IsWParser()});
        };
    }

    /// Those of the first callback with this line, since the last `Forget`.
    Answers In(const std::string& callback) const {
        for (const Answers& candidate : answers) {
            if (candidate.callback == callback)
                return candidate;
        }
        ADD_FAILURE() << "no callback " << callback;
        return {};
    }

    void Forget() {
        answers.clear();
    }

private:
    GenericParser* parser;
    Lines lines;
    WideObserver observer;
    std::vector<Answers> answers;
};

TEST(QueryTest, TheCharsetIsSetWhenTheParserHasStarted) {
    struct Row {
        const char* note;
        StringNS::CharSet::Code code;
        GenericParser::DataStreamType type;
        std::string bytes;
        std::string first;  // callback in which the charset is the one of the document, "" for the start
        StringNS::CharSet::Code charset;
    };
    const std::string mark16 = "\xFF\xFE";
    const Row rows[] = {
        {"8-bit text", 65001, DATA_STREAM_8BIT, "a<b>", "charset(65001)", 65001},
        {"UTF-7 is replaced", 65000, DATA_STREAM_8BIT, "a<b>", "charset(1252)", 1252},
        {"UTF-16", 0, DATA_STREAM_UTF16, BytesFor("a<b>", true), "charset(1200)", 1200},
        {"no mark", 65001, DATA_STREAM_AUTO, "a<b>", "text(a)", 65001},
        {"a UTF-8 mark is reported before", 1251, DATA_STREAM_AUTO,
         "\xEF\xBB\xBF"
         "a<b>",
         "text(a)", 65001},
        {"a UTF-16 mark says it at once", 1251, DATA_STREAM_AUTO, mark16 + BytesFor("a<b>", true), "", 1200},
    };
    for (const Row& row : rows) {
        for (const bool second : {false, true}) {
            SCOPED_TRACE(std::string(row.note) + (second ? ", second document" : ", first document"));
            GenericParser parser;
            AnswerRecorder recorder(&parser);
            // In the second document both parsers have the charset of one before.
            StringNS::CharSet::Code before = 0;
            const bool wide = row.charset == 1200;
            if (second) {
                EXPECT_EQ(parser.StartParse(1250, DATA_STREAM_8BIT), 0U);
                EXPECT_EQ(parser.EndParse(), 0U);
                if (wide) {
                    EXPECT_EQ(parser.StartParse(1250, DATA_STREAM_UTF16), 0U);
                    EXPECT_EQ(parser.EndParse(), 0U);
                }
                before = wide ? 1200 : 1250;
                recorder.Forget();
            }
            EXPECT_EQ(parser.StartParse(row.code, row.type), 0U);
            EXPECT_EQ(parser.ParseBuffer(row.bytes.data(), row.bytes.size()), 0U);
            const Answers start = recorder.In("start-parsing");
            EXPECT_EQ(start.charset, row.first.empty() ? row.charset : before);
            EXPECT_EQ(start.isWParser, wide);
            if (row.bytes[0] == '\xEF') {
                EXPECT_EQ(recorder.In("bom(EF BB BF)").charset, before);
            }
            if (row.bytes[0] == '\xFF') {
                EXPECT_EQ(recorder.In("bom(FF FE)").charset, 1200U);
            }
            if (!row.first.empty()) {
                EXPECT_EQ(recorder.In(row.first).charset, row.charset);
            }
            EXPECT_EQ(parser.GetCharset(), row.charset);
        }
    }
}

TEST(QueryTest, AnExceptionBeforeTheCharsetIsSetDoesNotKeepItAway) {
    struct Row {
        const char* note;
        GenericParser::DataStreamType type;
        StringNS::CharSet::Code code;
        std::string bytes;
        const char* thrower;
        StringNS::CharSet::Code charset;
        bool discovers;
    };
    const Row rows[] = {
        {"at the start", DATA_STREAM_8BIT, 1250, "", "start-parsing", 1250, false},
        {"at the start, unknown", DATA_STREAM_8BIT, 0, "", "start-parsing", 0, true},
        {"at the charset", DATA_STREAM_8BIT, 1250, "", "charset(1250)", 1250, false},
        {"at the charset, unknown", DATA_STREAM_8BIT, 0, "", "charset(0)", 0, true},
        {"at the start of UTF-16", DATA_STREAM_UTF16, 0, "", "start-parsing", 1200, false},
        {"at the start of what has no mark", DATA_STREAM_AUTO, 1250, "a", "start-parsing", 1250, false},
        {"at a UTF-8 mark", DATA_STREAM_AUTO, 0, "\xEF\xBB\xBF", "bom(EF BB BF)", 65001, false},
        {"at a UTF-16 mark", DATA_STREAM_AUTO, 0, "\xFF\xFE", "bom(FF FE)", 1200, false},
    };
    for (const Row& row : rows) {
        for (const StringNS::CharSet::Code before : {0U, 1251U}) {
            SCOPED_TRACE(row.note);
            FedParser parser;
            parser.Start(before);
            EXPECT_EQ(parser.EndParse(), 0U);
            parser.narrow.hook = [&row](const std::string& line) {
                if (line == row.thrower)
                    throw ObserverError();
            };
            EXPECT_TRUE(Throws([&] {
                parser.Start(row.code, row.type);
                parser.Feed(row.bytes);
            }));
            parser.narrow.hook = nullptr;
            EXPECT_EQ(parser.GetCharset(), row.charset);
            if (row.charset == 1200)
                continue;
            const std::string meta = "<meta charset=koi8-r>";
            EXPECT_EQ(parser.Feed(meta), 0U);
            EXPECT_EQ(parser.GetCharset(), row.discovers ? 20866U : row.charset);
        }
    }
}

TEST(QueryTest, InTheCallbackForADeclaredCharsetReparsingIsNotYetDecided) {
    GenericParser parser;
    AnswerRecorder recorder(&parser);
    EXPECT_EQ(parser.StartParse(0, DATA_STREAM_8BIT), 0U);
    const std::string document = "a<meta charset=windows-1251>";
    EXPECT_EQ(parser.ParseBuffer(document.data(), document.size()), 705U);
    const Answers declared = recorder.In("charset(1251)");
    EXPECT_EQ(declared.charset, 1251U);
    EXPECT_FALSE(declared.needsReparsing);
    EXPECT_TRUE(parser.NeedsReparsing());
}

TEST(QueryTest, AtTheEndTheNameIsThatOfTheRecognizerThatRanLast) {
    struct Row {
        const char* note;
        const char* document;
        const char* name;
    };
    const Row rows[] = {
        {"text", "a", "TextSimpleParser"},
        {"nothing", "", "TextSimpleParser"},
        {"text after a tag", "<a>b", "TextSimpleParser"},
        {"an open comment", "a<!--b", "CommentTagSimpleParser"},
        {"an open section", "<![CDATA[b", "CDATATagSimpleParser"},
        {"an open regular expression", "<script>/a", "JSRegExSimpleParser"},
        {"a tag that becomes junk at the end", "a<b", "StartTagSimpleParser"},
        {"a \"<\" that becomes junk at the end", "a<", "GenericTagSimpleParser"},
        {"in junk, the one that failed", "<a / >b", "StartTagSimpleParser"},
        {"in junk after an end tag", "</a / >b", "EndTagSimpleParser"},
    };
    for (const Row& row : rows) {
        for (const bool wide : {false, true}) {
            SCOPED_TRACE(std::string(row.note) + (wide ? ", wide" : ", 8-bit"));
            FedParser parser;
            std::unique_ptr<GenericParser> copy;
            std::string name;
            parser.narrow.hook = [&](const std::string& line) {
                const WideString answer = parser.GetCurrentParserName();
                name.assign(answer.begin(), answer.end());
                if (line == "end-parsing" && copy == nullptr)
                    copy = std::make_unique<GenericParser>(parser);
            };
            parser.Start(1252, TypeFor(wide));
            EXPECT_EQ(parser.FeedStream(BytesFor(row.document, wide)), 0U);
            EXPECT_EQ(parser.EndParse(), 0U);
            EXPECT_EQ(name, row.name);
            EXPECT_TRUE(parser.GetCurrentParserName() == KESTRA_WIDE("TextSimpleParser"));

            // A copy made in that callback goes on with text, as the parser does.
            ASSERT_NE(copy, nullptr);
            parser.narrow.hook = nullptr;
            for (GenericParser* const next : {copy.get(), static_cast<GenericParser*>(&parser)}) {
                parser.lines.clear();
                const std::string more = BytesFor("x<y", wide);
                EXPECT_EQ(next->ParseBuffer(more.data(), 2 * more.size() / 3), 0U);
                EXPECT_EQ(parser.lines.size(), 1U);
                EXPECT_FALSE(next->GetCurrentParserName() == KESTRA_WIDE("TextSimpleParser"));
            }
        }
    }
}

}  // namespace
}  // namespace Kestra::Test
