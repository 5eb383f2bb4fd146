#include "tools/kestra-html/commands/TokenFinder.h"

namespace Kestra::Tool {

TokenFinder::TokenFinder(const HTML::GenericParser* observedParser, std::uint64_t byte)
    : parser(observedParser), wanted(byte) {}

const std::string& TokenFinder::GetToken() const {
    return token;
}

std::uint64_t TokenFinder::GetTokenStart() const {
    return tokenStart;
}

}  // namespace Kestra::Tool
