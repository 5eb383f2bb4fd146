#include "tools/kestra-html/TokenKind.h"

namespace Kestra::Tool {

namespace {

// ECMA-48, select graphic rendition.
constexpr std::string_view BOLD = "\x1B[1m";
constexpr std::string_view FAINT = "\x1B[2m";
constexpr std::string_view RED = "\x1B[31m";
constexpr std::string_view GREEN = "\x1B[32m";
constexpr std::string_view YELLOW = "\x1B[33m";
constexpr std::string_view MAGENTA = "\x1B[35m";
constexpr std::string_view CYAN = "\x1B[36m";

constexpr std::array<TokenKindInfo, TOKEN_KIND_COUNT> KINDS = {{
    {"text", BOLD},
    {"start", CYAN},
    {"short", CYAN},
    {"end", CYAN},
    {"comment", GREEN},
    {"cdata", MAGENTA},
    {"conditional", MAGENTA},
    {"entity", MAGENTA},
    {"extern", MAGENTA},
    {"c-comment", GREEN},
    {"cpp-comment", GREEN},
    {"s-string", YELLOW},
    {"d-string", YELLOW},
    {"script", YELLOW},
    {"style", YELLOW},
    {"junk", RED},
    {"event", FAINT},
}};

}  // namespace

const TokenKindInfo& GetTokenKindInfo(TokenKind kind) {
    return KINDS[static_cast<std::size_t>(kind)];
}

}  // namespace Kestra::Tool
