#pragma once

#include <memory>
#include <string>

namespace Kestra::Tool {

/// Replaces what a regular expression matches. It takes time in proportion to the text, whatever
/// the expression is.
class Replacement {
public:
    /// @param regex  in the syntax of RE2
    /// @param text   in place of each match; \1 to \9 are what the groups matched, \0 is the whole, \\ is a backslash
    Replacement(const std::string& regex, const std::string& text);
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    ~Replacement();

    /// What is wrong with the two, in English; empty for nothing.
    const std::string& GetFault() const;

    /// Replaces every match, from left to right. @param value  in UTF-8. @return false when there
    /// is none
    bool Apply(std::string* value) const;

private:
    struct Engine;

    std::unique_ptr<const Engine> engine;
    std::string replacementText;
    std::string fault;
};

}  // namespace Kestra::Tool
