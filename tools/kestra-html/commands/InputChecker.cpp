#include "tools/kestra-html/commands/InputChecker.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

#include "html/framework/ResultCodes.h"
#include "html/framework/TokenObserver.h"
#include "platform/Characters.h"
#include "platform/InputStream.h"
#include "platform/Results.h"
#include "tools/kestra-html/commands/TokenFinder.h"
#include "tools/kestra-html/output/CharsetText.h"

namespace Kestra::Tool {

namespace {

using HTML::GenericParser;
using StringNS::CharSet;

constexpr std::size_t BLOCK_SIZE = std::size_t{64} * 1024;

/// Counts the tokens of a parse.
///
/// A wide observer, because only such an observer gets every token of both parsers: an 8-bit
/// observer of the 8-bit parser gets no line comments of scripts.
class TokenCounter final : public HTML::TokenObserver<TokenCounter, WideChar, WideString> {
public:
    std::uint64_t GetCount() const {
        return count;
    }

    template <typename Record>
    void OnToken(const Record*) {
        ++count;
    }

private:
    std::uint64_t count = 0;
};

/// Binds an observer for the duration of a pass.
class ObserverBinding {
public:
    ObserverBinding(GenericParser* boundParser, HTML::ParserObserver<WideChar, WideString>* observer)
        : parser(boundParser) {
        parser->SetObserver(observer, false);
    }
    ObserverBinding(const ObserverBinding&) = delete;
    ObserverBinding& operator=(const ObserverBinding&) = delete;
    ~ObserverBinding() {
        parser->SetObserver(static_cast<HTML::ParserObserver<WideChar, WideString>*>(nullptr), false);
    }

private:
    GenericParser* parser;
};

/// @param copy  null for an empty copy; what cannot be read counts as missing
std::optional<std::uint64_t> FindFirstDifference(std::string_view input, VFS::InputStream* copy) {
    std::vector<char> block(BLOCK_SIZE);
    std::uint64_t offset = 0;
    while (copy != nullptr) {
        std::uint64_t count = 0;
        if (copy->Read(block.data(), block.size(), &count) != RESULT_OK || count == 0)
            break;
        const std::string_view expected = input.substr(offset, count);
        const auto [differing, end] = std::mismatch(expected.begin(), expected.end(), block.begin());
        const auto equal = static_cast<std::uint64_t>(differing - expected.begin());
        offset += equal;
        if (equal < count)
            return offset;
    }
    return offset == input.size() ? std::nullopt : std::optional(offset);
}

}  // namespace

bool CheckOutcome::IsReproduced() const {
    return !result.copyLost && !firstDifference;
}

bool CheckOutcome::HasLostMark() const {
    return firstDifference && *firstDifference < lostMarkBytes;
}

bool CheckOutcome::IsGood() const {
    return result.GetFirstFailure() == HTML::PARSER_OK && IsReproduced();
}

CharSet::Code FindConvertible(CharSet::Code code, const std::function<bool(CharSet::Code)>& hasConverter) {
    if (code == CharSet::UNKNOWN || hasConverter(code))
        return code;
    if (CharSet::IsIso2022(code)) {
        for (const CharSet::Code other : {CharSet::ISO_2022_JP, CharSet::ISO_2022_JP_SISO, CharSet::ISO_2022_KR}) {
            if (hasConverter(other))
                return other;
        }
    }
    return CharSet::WINDOWS_1252;
}

InputChecker::InputChecker(const CheckOptions& checkOptions) : options(checkOptions) {}

CheckOutcome InputChecker::Check(std::string_view input, const BytesDone& bytesDone) {
    CheckOutcome outcome;
    ParseStart start(options);
    do {
        using Clock = std::chrono::steady_clock;
        start.SetCharset(FindConvertible(start.GetCharset(), HasConverter));
        TokenCounter counter;
        const ObserverBinding binding(&parser, &counter);
        const Clock::time_point begin = Clock::now();
        outcome.result = RunParsePass(&parser, input, start, options, bytesDone);
        outcome.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
        outcome.tokens = counter.GetCount();
    } while (options.reparse && start.Restart(outcome.result));
    VFS::InputStream* const copy = parser.GetSelfCheckStream();
    outcome.hasCopy = copy != nullptr;
    outcome.lostMarkBytes = CountLostMarkBytes(input, start, options.pieceSize);
    if (!outcome.result.copyLost)
        outcome.firstDifference = FindFirstDifference(input, copy);
    if (outcome.hasCopy && !outcome.IsReproduced() && options.format == OutputFormat::TEXT)
        FindToken(input, start, bytesDone, &outcome);
    return outcome;
}

/// Parses once more, in the same way.
void InputChecker::FindToken(std::string_view input, const ParseStart& start, const BytesDone& bytesDone,
                             CheckOutcome* outcome) {
    TokenFinder finder(&parser, *outcome->firstDifference);
    const ObserverBinding binding(&parser, &finder);
    ParseOptions findOptions = options;
    findOptions.selfCheck = GenericParser::SELF_CHECK_OFF;
    RunParsePass(&parser, input, start, findOptions, bytesDone);
    outcome->token = finder.GetToken();
    outcome->tokenStart = finder.GetTokenStart();
}

}  // namespace Kestra::Tool
