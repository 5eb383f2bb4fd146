#include "tools/kestra-html/commands/InputChecker.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "html/framework/ResultCodes.h"
#include "html/framework/TokenObserver.h"
#include "platform/Characters.h"
#include "platform/InputStream.h"
#include "platform/Results.h"
#include "tools/kestra-html/commands/TokenFinder.h"
#include "tools/kestra-html/input/Input.h"
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

/// Reads a stream block by block.
class BlockReader {
public:
    /// @param readStream  null for an empty one
    explicit BlockReader(VFS::InputStream* readStream) : stream(readStream), block(BLOCK_SIZE) {}

    /// Bytes that have been read and not been taken; none at the end, and where reading fails.
    std::string_view Peek() {
        if (taken == size && stream != nullptr) {
            taken = 0;
            if (stream->Read(block.data(), block.size(), &size) != RESULT_OK)
                size = 0;
        }
        return std::string_view(block.data(), static_cast<std::size_t>(size)).substr(static_cast<std::size_t>(taken));
    }

    void Take(std::size_t count) {
        taken += count;
    }

private:
    VFS::InputStream* stream;
    std::vector<char> block;
    std::uint64_t size = 0;
    std::uint64_t taken = 0;
};

/// @param copy  null for an empty copy; what cannot be read counts as missing
std::optional<std::uint64_t> FindFirstDifference(InputSource* source, VFS::InputStream* copy) {
    source->Seek(0);
    BlockReader inputReader(source);
    BlockReader copyReader(copy);
    std::uint64_t offset = 0;
    while (true) {
        const std::string_view expected = inputReader.Peek();
        const std::string_view found = copyReader.Peek();
        const std::size_t count = std::min(expected.size(), found.size());
        const auto differing =
            std::mismatch(expected.begin(), expected.begin() + static_cast<std::ptrdiff_t>(count), found.begin()).first;
        const auto equal = static_cast<std::size_t>(differing - expected.begin());
        offset += equal;
        if (equal < count || expected.empty() != found.empty())
            return offset;
        if (count == 0)
            return std::nullopt;
        inputReader.Take(count);
        copyReader.Take(count);
    }
}

/// The first bytes, those that can be a byte-order mark and one more.
std::string ReadFront(InputSource* source) {
    std::string front;
    source->Seek(0);
    ReadRest(source, 4, &front);
    return front;
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

CheckOutcome InputChecker::Check(InputSource* source, const BytesDone& bytesDone) {
    CheckOutcome outcome;
    ParseStart start(options);
    do {
        using Clock = std::chrono::steady_clock;
        start.SetCharset(FindConvertible(start.GetCharset(), HasConverter));
        TokenCounter counter;
        const ObserverBinding binding(&parser, &counter);
        const Clock::time_point begin = Clock::now();
        outcome.result = RunParsePass(&parser, source, start, options, bytesDone);
        outcome.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
        outcome.tokens = counter.GetCount();
    } while (options.reparse && start.Restart(outcome.result));
    VFS::InputStream* const copy = parser.GetSelfCheckStream();
    outcome.hasCopy = copy != nullptr;
    outcome.lostMarkBytes = CountLostMarkBytes(ReadFront(source), start, options.pieceSize);
    if (!outcome.result.copyLost)
        outcome.firstDifference = FindFirstDifference(source, copy);
    if (outcome.hasCopy && !outcome.IsReproduced() && options.format == OutputFormat::TEXT)
        FindToken(source, start, bytesDone, &outcome);
    return outcome;
}

/// Parses once more, in the same way.
void InputChecker::FindToken(InputSource* source, const ParseStart& start, const BytesDone& bytesDone,
                             CheckOutcome* outcome) {
    TokenFinder finder(&parser, *outcome->firstDifference);
    const ObserverBinding binding(&parser, &finder);
    ParseOptions findOptions = options;
    findOptions.selfCheck = GenericParser::SELF_CHECK_OFF;
    RunParsePass(&parser, source, start, findOptions, bytesDone);
    outcome->token = finder.GetToken();
    outcome->tokenStart = finder.GetTokenStart();
}

}  // namespace Kestra::Tool
