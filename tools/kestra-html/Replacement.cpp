#include "tools/kestra-html/Replacement.h"

#include <re2/re2.h>

namespace Kestra::Tool {

namespace {

RE2::Options QuietOptions() {
    RE2::Options options;
    options.set_log_errors(false);
    return options;
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

}  // namespace Kestra::Tool
