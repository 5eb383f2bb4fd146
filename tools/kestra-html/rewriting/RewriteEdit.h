#pragma once

#include <memory>
#include <string>
#include <vector>

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

    /// Replaces every match, from left to right.
    /// @param value  in UTF-8
    /// @return false when there is none
    bool Apply(std::string* value) const;

private:
    struct Engine;

    std::unique_ptr<const Engine> engine;
    std::string replacementText;
    std::string fault;
};

/// One edit that the command line asks for, to be made in every element that it names.
struct RewriteEdit {
    enum class Kind {
        SET,             ///< gives an attribute a value, or adds it
        REPLACE,         ///< replaces what matches in the value of an attribute
        REMOVE,          ///< removes an attribute
        REMOVE_ELEMENT,  ///< removes the element with its content
    };

    Kind kind = Kind::SET;
    std::string selector;                            ///< of the elements
    std::string attribute;                           ///< not for REMOVE_ELEMENT
    std::string value;                               ///< for SET, in UTF-8
    std::shared_ptr<const Replacement> replacement;  ///< for REPLACE
};

/// A selector for the elements of a name, of any characters; "*" is any element.
std::string ToSelector(const std::string& elementName);

}  // namespace Kestra::Tool
