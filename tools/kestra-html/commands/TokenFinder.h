#pragma once

#include <cstdint>
#include <string>

#include "html/framework/TokenObserver.h"
#include "html/parser/GenericParser.h"
#include "platform/Characters.h"
#include "tools/trace/TokenTrace.h"

namespace Kestra::Tool {

/// Finds the token that holds one byte of an input. A wide observer, for the reason of
/// `TokenCounter`.
class TokenFinder final : public HTML::TokenObserver<TokenFinder, WideChar, WideString> {
public:
    static constexpr std::uint64_t LONGEST_TEXT = 40;  ///< characters of each string of the token that are shown

    /// @param observedParser  borrowed; asked in callbacks
    /// @param byte            offset of the byte to find; the size of the input for what follows
    ///                        its last token
    TokenFinder(const HTML::GenericParser* observedParser, std::uint64_t byte);

    /// For the pass as a whole: the token in the trace language, its long texts cut. Empty when no
    /// token starts at or before the byte.
    const std::string& GetToken() const;
    std::uint64_t GetTokenStart() const;  ///< byte offset

    template <typename Record>
    void OnToken(const Record* record) {
        const std::uint64_t begin = parser->GetTokenPlace().begin;
        if (begin > wanted)
            return;
        token = Trace::Format(*record, {LONGEST_TEXT, true});
        tokenStart = begin;
    }

private:
    const HTML::GenericParser* parser;
    std::uint64_t wanted;
    std::string token;
    std::uint64_t tokenStart = 0;
};

}  // namespace Kestra::Tool
