#pragma once

#include <functional>
#include <initializer_list>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "html/framework/TokenObserver.h"
#include "tests/support/DocumentRun.h"
#include "tests/support/Splits.h"
#include "tools/trace/TokenTrace.h"

namespace Kestra::Test {

/// The lines of a trace.
using Lines = std::vector<std::string>;

std::string Join(const Lines& lines);

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
inline constexpr Route ROUTES[] = {NARROW_TO_NARROW, NARROW_TO_WIDE, WIDE_TO_WIDE, WIDE_TO_NARROW};

/// A document in which every construct is whole: the same tokens whatever feeds it and wherever it
/// is cut.
struct DocumentRow {
    const char* note;
    std::string input;  ///< Latin-1
    Lines
        tokens;  ///< between the charset and the end of parsing, as the 8-bit parser makes them, line comments included
    StringNS::CharSet::Code charset = 1252;
    HTML::GenericParser::ScriptMode scriptMode = HTML::GenericParser::SCRIPT_AS_TOKENS;
};

/// A document with a construct that fails or stays open: junk when its bytes can be read again, a
/// result code when they cannot.
struct BrokenRow {
    const char* note;
    std::string input;
    Lines tokens;               ///< read from a stream
    Lines tokensWithoutStream;  ///< fed by `ParseBuffer`, up to the failure
    std::uint32_t
        parseResult;  ///< of the `ParseBuffer` that meets the failure, 0 when the end of the input is the failure
    std::uint32_t endResult;  ///< of `EndParse` after it
    std::size_t uncut = 0;    ///< no cut falls here, between the two characters of an opener; 0 for no such place
    HTML::GenericParser::ScriptMode scriptMode = HTML::GenericParser::SCRIPT_AS_TOKENS;
};

/// Checks tokens, results, place and the text written back by all routes: every split, fed by
/// `ParseBuffer` and read from a stream. The uncut document and those in two pieces are parsed with
/// the self-check.
void CheckRow(const DocumentRow& row);
void CheckRow(const BrokenRow& row);

/// The same by one route only.
void CheckRow(const DocumentRow& row, const Route& route);

template <typename Row, std::size_t N>
void CheckRows(const Row (&rows)[N]) {
    for (const Row& row : rows)
        CheckRow(row);
}

/// The settings for a route: type 1 in `charset`, or type 2.
DocumentSettings SettingsFor(const Route& route, Feed feed = Feed::BUFFER, StringNS::CharSet::Code charset = 1252);

/// Parses Latin-1 text by a route; for the wide parser every byte becomes one character, and the
/// cuts are in characters.
DocumentRun ParseBy(const Route& route, std::string_view latin1, const Cuts& cuts, const DocumentSettings& settings);

/// The trace of a whole document: the tokens between the events that surround them. Line comments
/// are left out for the 8-bit observer of the 8-bit parser, which is not given them.
/// @param tokens  as the 8-bit parser makes them in charset 1252
Lines WholeTrace(const Lines& tokens, const Route& route, StringNS::CharSet::Code charset = 1252);

/// The same without the end of parsing.
Lines OpenTrace(const Lines& tokens, const Route& route, StringNS::CharSet::Code charset = 1252);

/// The lines by a route, in a form that can be compared with `WholeTrace`.
Lines Comparable(Lines lines, const Route& route);

/// The bytes that the tokens of an unchanged document are written back as by an observer of the
/// parser's own flavour: those of the document without the line comments that it is not given, and
/// of every body of a wide comment, CDATA or conditional section only the first half.
/// @param tokens  as the 8-bit parser makes them; no other part of the document looks like one of
/// their sections
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
    std::function<void(const std::string&)> hook;

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

/// A document that makes every callback but that of a mark, when it is read from a stream. Its
/// sections have empty bodies.
extern const char EVERY_CALLBACK[];

/// Its trace from the first token to the last, line comments included.
extern const Lines EVERY_CALLBACK_TOKENS;

}  // namespace Kestra::Test
