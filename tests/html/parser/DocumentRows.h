#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "html/framework/TokenObserver.h"
#include "platform/MemoryInputStream.h"
#include "platform/Results.h"
#include "tests/support/DocumentRun.h"
#include "tests/support/Flavours.h"
#include "tests/support/Splits.h"
#include "tests/support/TestStreams.h"
#include "tools/trace/TokenTrace.h"

namespace Kestra::Test {

using HTML::GenericParser;
inline constexpr auto DATA_STREAM_AUTO = GenericParser::DATA_STREAM_AUTO;
inline constexpr auto DATA_STREAM_8BIT = GenericParser::DATA_STREAM_8BIT;
inline constexpr auto DATA_STREAM_UTF16 = GenericParser::DATA_STREAM_UTF16;
inline constexpr auto SELF_CHECK_OFF = GenericParser::SELF_CHECK_OFF;
inline constexpr auto SELF_CHECK_CRC = GenericParser::SELF_CHECK_CRC;
inline constexpr auto SELF_CHECK_COPY = GenericParser::SELF_CHECK_COPY;
inline constexpr auto SCRIPT_AS_TOKENS = GenericParser::SCRIPT_AS_TOKENS;
inline constexpr auto SCRIPT_AS_TEXT = GenericParser::SCRIPT_AS_TEXT;

/// The lines of a trace.
using Lines = std::vector<std::string>;

std::string Join(const Lines& lines);

/// Lines in one text, as rows have them: a line feed between two of them, none in an empty text.
struct Tokens : Lines {
    Tokens() = default;
    Tokens(Lines lines) : Lines(std::move(lines)) {}
    Tokens(const char* text) : Tokens(std::string(text)) {}
    Tokens(std::string_view text) : Tokens(std::string(text)) {}
    Tokens(const std::string& text);
};

Lines operator+(Lines front, const Lines& back);

/// Which parser reads a document, and which observer receives it.
struct Route {
    const char* name;
    bool wideInput;
    Observed observed;
};

inline constexpr Route NARROW_TO_NARROW{"8-bit parser, 8-bit observer", false, Observed::NARROW};
inline constexpr Route NARROW_TO_WIDE{"8-bit parser, wide observer", false, Observed::WIDE};
inline constexpr Route WIDE_TO_WIDE{"wide parser, wide observer", true, Observed::WIDE};
inline constexpr Route WIDE_TO_NARROW{"wide parser, 8-bit observer", true, Observed::NARROW};
/// The routes by which tokens are compared with their zero characters.
inline constexpr Route ROUTES_WITH_NULS[] = {NARROW_TO_NARROW, NARROW_TO_WIDE, WIDE_TO_WIDE};
inline constexpr Route ROUTES[] = {NARROW_TO_NARROW, NARROW_TO_WIDE, WIDE_TO_WIDE, WIDE_TO_NARROW};

/// A document in which every construct is whole: the same tokens whatever feeds it and wherever it
/// is cut.
struct DocumentRow {
    const char* note;
    std::string input;  ///< Latin-1
    Tokens tokens;      ///< as the 8-bit parser makes them, line comments included, and without the events around them
    StringNS::CharSet::Code charset = 1252;
    GenericParser::ScriptMode scriptMode = SCRIPT_AS_TOKENS;
};

/// A document with a construct that fails or stays open: junk when its bytes can be read again, a
/// result code when they cannot.
struct BrokenRow {
    const char* note;
    std::string input;
    Tokens tokens;          ///< read from a stream; fed by `ParseBuffer`, those before the first junk
    std::size_t uncut = 0;  ///< no cut falls here, between the two characters of an opener; 0 for no such place
    GenericParser::ScriptMode scriptMode = SCRIPT_AS_TOKENS;
};

/// The tags of an element whose content hides markup, and the tokens between them.
struct ContentRow {
    const char* note;
    std::string content;
    Tokens tokens;
};

/// The start tag of a script or style, and its event.
Lines Open(const std::string& element);

/// The same, the tokens of the content and the end tag.
Lines Inside(const std::string& element, const Tokens& tokens);

/// Checks tokens, results, place and the text written back by all routes: every split, fed by
/// `ParseBuffer` and read from a stream. The uncut document and those in two pieces are parsed with
/// the self-check.
void CheckRow(const DocumentRow& row);

/// The same by one route only.
void CheckRow(const DocumentRow& row, const Route& route);

/// The same of a construct that fails, in a buffer with a code of its own.
void CheckFailing(const BrokenRow& row);

/// The same of a construct that the end of the input leaves open.
void CheckOpen(const BrokenRow& row);

template <std::size_t N>
void CheckRows(const DocumentRow (&rows)[N]) {
    for (const DocumentRow& row : rows)
        CheckRow(row);
}

template <std::size_t N>
void CheckInside(const std::string& element, const ContentRow (&rows)[N]) {
    for (const ContentRow& row : rows)
        CheckRow({row.note, "<" + element + ">" + row.content + "</" + element + ">", Inside(element, row.tokens)});
}

template <std::size_t N>
void CheckFailing(const BrokenRow (&rows)[N]) {
    for (const BrokenRow& row : rows)
        CheckFailing(row);
}

template <std::size_t N>
void CheckOpen(const BrokenRow (&rows)[N]) {
    for (const BrokenRow& row : rows)
        CheckOpen(row);
}

/// The settings for a route: type 1 in `charset`, or type 2.
DocumentSettings SettingsFor(const Route& route, Feed feed = Feed::BUFFER, StringNS::CharSet::Code charset = 1252);

/// Parses Latin-1 text by a route; for the wide parser every byte becomes one character, and the
/// cuts are in characters.
DocumentRun ParseBy(const Route& route, std::string_view latin1, const Cuts& cuts, const DocumentSettings& settings);

/// The trace of a whole document: the tokens between the events that surround them. Line comments
/// are left out for the 8-bit observer of the 8-bit parser, which is not given them.
/// @param tokens  as the 8-bit parser makes them in charset 1252
Lines WholeTrace(const Tokens& tokens, const Route& route, StringNS::CharSet::Code charset = 1252);

/// The same without the end of parsing.
Lines OpenTrace(const Tokens& tokens, const Route& route, StringNS::CharSet::Code charset = 1252);

/// Expects the tokens by a route, and results of 0.
void ExpectTokens(const DocumentRun& run, const Tokens& tokens, const Route& route,
                  StringNS::CharSet::Code charset = 1252);

/// Expects nothing to have failed, from the first byte to the end.
template <typename Run>
void ExpectSuccess(const Run& run) {
    EXPECT_EQ(run.parseResult, 0U);
    EXPECT_EQ(run.endResult, 0U);
}

/// Calls `run` for both ways to feed a document, and every split of it.
void ForEveryFeeding(std::size_t length, const std::function<void(Feed feed, const Cuts& cuts)>& run);

/// Expects the tokens of a wide document by the route from wide to wide, however it is fed, and the
/// document written back.
void CheckWide(const char* note, WideStringView input, const Tokens& tokens);

/// The lines by a route, in a form that can be compared with `WholeTrace`.
Lines Comparable(Lines lines, const Route& route);

/// The bytes that the tokens of an unchanged document are written back as by an observer of the
/// parser's own flavour: those of the document without the line comments that it is not given, and
/// of every body of a wide comment, CDATA or conditional section only the first half.
/// @param tokens  as the 8-bit parser makes them; no other part of the document looks like one of
///                their sections
std::string WrittenBack(std::string_view latin1, const Lines& tokens, const Route& route);

/// True when the self-check of a route takes the tokens for what was read: always, unless the wide
/// serializer halves a body.
bool PassesSelfCheck(std::string_view latin1, const Lines& tokens, const Route& route);

/// Traces every callback, and then calls back.
template <typename C, typename S>
class HookedObserver final : public HTML::CallbackObserver<HookedObserver<C, S>, C, S> {
public:
    /// @param target  borrowed
    explicit HookedObserver(Lines* target) : tracer(target), lines(target) {}

    /// Called with the line of each callback, inside the callback.
    std::function<void(const std::string& line)> hook;

    template <typename Call>
    void OnCallback(Call call) {
        call(&tracer);
        if (hook) {
            const std::string line = lines->back();
            hook(line);
        }
    }

private:
    Trace::TraceObserver<C, S> tracer;
    Lines* lines;
};

using NarrowObserver = HookedObserver<char, std::string>;
using WideObserver = HookedObserver<WideChar, WideString>;

/// Leaves a parser without an observer.
void UnbindObserver(GenericParser* parser);

/// A call that feeds or ends a document, its result, and the lines that it brings.
struct Step {
    enum Call { FEED, FEED_STREAM, FEED_OWNED_STREAM, END };

    Call call;
    std::string bytes;
    std::uint32_t result = 0;
    Tokens lines = {};
};

inline constexpr auto FEED = Step::FEED;
inline constexpr auto FEED_STREAM = Step::FEED_STREAM;
inline constexpr auto FEED_OWNED_STREAM = Step::FEED_OWNED_STREAM;
inline constexpr auto END = Step::END;

/// A parser that is fed step by step. Its observers note what they are given.
class FedParser : public GenericParser {
public:
    /// @param observed  which of the observers is bound
    explicit FedParser(Observed observed = Observed::NARROW);

    void Start(StringNS::CharSet::Code charset = 1252, DataStreamType type = DATA_STREAM_8BIT);

    /// The same, without the lines of the start.
    void StartSilently(StringNS::CharSet::Code charset = 1252, DataStreamType type = DATA_STREAM_8BIT);

    std::uint32_t Feed(std::string_view piece);

    /// A stream over the bytes. One that is not owned is kept for the life of the parser.
    std::uint32_t FeedStream(std::string_view bytes, bool owned = false);

    /// Does the steps, and expects what they say. The lines are taken.
    void Check(const std::vector<Step>& steps);

    /// Sets the hook of both observers.
    void SetHook(const std::function<void(const std::string& line)>& hook);

    /// The lines since the last call, each ended by a line feed.
    std::string TakeLines();

    /// The name of the recognizer at work, in 8 bits.
    std::string GetParserName();

    Lines lines;
    NarrowObserver narrow;
    WideObserver wide;

private:
    std::vector<std::unique_ptr<VFS::InputStream>> streams;
};

/// One whose document has begun; the lines of the start are left out.
class StartedParser : public FedParser {
public:
    explicit StartedParser(StringNS::CharSet::Code charset = 1252, DataStreamType type = DATA_STREAM_8BIT,
                           Observed observed = Observed::NARROW);
};

/// Of Latin-1 text for the parser of a flavour.
std::string BytesFor(std::string_view latin1, bool wide);
GenericParser::DataStreamType TypeFor(bool wide);

/// A document that makes every callback but that of a mark, when it is read from a stream. Its
/// sections have empty bodies.
extern const char EVERY_CALLBACK[];

/// Its trace from the first token to the last, line comments included.
extern const Lines EVERY_CALLBACK_TOKENS;

}  // namespace Kestra::Test
