#include "html/text/Escape2022SimpleParser.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "html/framework/Instantiate.h"
#include "html/framework/Scan.h"

namespace Kestra::HTML {

namespace {

// "$(" is before the longer sequences that begin with it, so it completes first and they never
// match (kept).
constexpr std::string_view OPENING_SEQUENCES[] = {"$@",  "$B",  "$(",  "$A",  "$(C", "$(O", "$(P", "$(Q", "$)C",
                                                  "$)A", "$)G", "$*H", "$)E", "$+I", "$+J", "$+K", "$+L", "$+M"};

constexpr std::string_view CLOSING_SEQUENCES[] = {"(B", "(J", ".F", ".A", "(I"};

enum State : std::uint32_t {
    DESIGNATION = 0,
    RUN = 1,
    LATER_ESC = 2,
};

enum class Match {
    NONE,
    PARTIAL,
    COMPLETE,
};

/// Searches the table in order for an entry that begins with `pending`; the first one of the same
/// length completes.
template <typename S>
Match MatchSequence(const S& pending, std::span<const std::string_view> table) {
    Match best = Match::NONE;
    for (const std::string_view entry : table) {
        if (pending.size() > entry.size() || !std::equal(pending.begin(), pending.end(), entry.begin()))
            continue;
        if (pending.size() == entry.size())
            return Match::COMPLETE;
        best = Match::PARTIAL;
    }
    return best;
}

/// Moves the sequence read after an ESC into the text.
template <typename Data>
void KeepSequence(Data* data) {
    data->text += Scan::ESC;
    data->text += data->pending;
    data->pending.clear();
}

template <typename C, typename S, typename Data>
Match ReadSequenceCharacter(SimpleParserContext<C, S>* context, Data* data, std::span<const std::string_view> table) {
    data->pending += Scan::Next(*context);
    Scan::Advance(*context);
    return MatchSequence(data->pending, table);
}

}  // namespace

template <typename C, typename S>
std::uint32_t Escape2022SimpleParser<C, S>::BeginParse(Data* data) {
    data->state = DESIGNATION;
    data->text.clear();
    data->pending.clear();
    return SP_NEED_MORE_DATA;
}

//  state        sequence complete        sequence begun  no such sequence         ESC         other  end of input
//  0 first ESC  release, keep, to 1      hold            release, keep, complete  never       never  release, complete
//  1 run        never                    never           never                    hold, to 2  keep   complete
//  2 later ESC  release, keep, complete  hold            release, keep, to 1      never       never  release, complete
//
// Held is a sequence from its ESC on.
template <typename C, typename S>
std::uint32_t Escape2022SimpleParser<C, S>::Parse(SimpleParserContext<C, S>* context, Data* data) {
    while (!Scan::AtEnd(*context)) {
        switch (static_cast<State>(data->state)) {
            case DESIGNATION: {
                const Match match = ReadSequenceCharacter(context, data, OPENING_SEQUENCES);
                if (match == Match::PARTIAL)
                    continue;
                KeepSequence(data);
                if (match == Match::NONE)
                    return SP_TOKEN_COMPLETE;
                data->state = RUN;
                continue;
            }
            case RUN:
                data->text.append(Scan::ConsumeUntil<Scan::ESCAPE>(*context));
                if (!Scan::AtEnd(*context)) {
                    Scan::Advance(*context);
                    data->state = LATER_ESC;
                }
                continue;
            case LATER_ESC: {
                const Match match = ReadSequenceCharacter(context, data, CLOSING_SEQUENCES);
                if (match == Match::PARTIAL)
                    continue;
                KeepSequence(data);
                if (match == Match::COMPLETE)
                    return SP_TOKEN_COMPLETE;
                data->state = RUN;
                continue;
            }
        }
        return SP_MALFORMED;
    }
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
std::uint32_t Escape2022SimpleParser<C, S>::EndParse(Data* data) {
    if (data->state == DESIGNATION || data->state == LATER_ESC) {
        data->text += Scan::ESC;
        data->text += data->pending.c_str();
    }
    return SP_TOKEN_COMPLETE;
}

KESTRA_HTML_INSTANTIATE_RECOGNIZER(Escape2022);

}  // namespace Kestra::HTML
