#pragma once

#include <cstdint>

#include "html/framework/TokenObserver.h"
#include "platform/Characters.h"

namespace Kestra::Tool {

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

}  // namespace Kestra::Tool
