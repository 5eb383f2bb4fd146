#include "tools/kestra-html/rewriting/RewriteEdit.h"

#include <fmt/format.h>
#include <re2/re2.h>

namespace Kestra::Tool {

namespace {

RE2::Options QuietOptions() {
    RE2::Options options;
    options.set_log_errors(false);
    return options;
}

bool IsIdentifierByte(unsigned char byte) {
    return byte >= 0x80 || (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= 'a' && byte <= 'z') || byte == '-' || byte == '_';
}

}  // namespace

struct Replacement::Engine {
    explicit Engine(const std::string& regex) : expression(regex, QuietOptions()) {}

    RE2 expression;
};

Replacement::Replacement(const std::string& regex, const std::string& text)
    : engine(std::make_unique<const Engine>(regex)), replacementText(text) {
    if (!engine->expression.ok())
        fault = engine->expression.error();
    else
        engine->expression.CheckRewriteString(replacementText, &fault);
}

Replacement::~Replacement() = default;

const std::string& Replacement::GetFault() const {
    return fault;
}

bool Replacement::Apply(std::string* value) const {
    return RE2::GlobalReplace(value, engine->expression, replacementText) > 0;
}

/// Escapes of CSS: a backslash, the character in hexadecimal digits, and the space that ends them.
std::string ToSelector(const std::string& elementName) {
    if (elementName == "*")
        return elementName;
    std::string selector;
    for (const char letter : elementName) {
        const auto byte = static_cast<unsigned char>(letter);
        const bool canBegin =
            byte >= 0x80 || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') || byte == '_';
        if (selector.empty() ? canBegin : IsIdentifierByte(byte))
            selector += letter;
        else
            selector += fmt::format("\\{:x} ", byte);
    }
    return selector;
}

}  // namespace Kestra::Tool
