#pragma once

#include <string>
#include <string_view>
#include <vector>

/// @file
/// The tokens of the reference tokenizer, each as a line of the trace language and as the text that
/// it is written back to.

namespace Kestra::Test {

/// How a value was quoted.
enum class ReferenceQuote { NONE, SINGLE, DOUBLE };

/// An attribute of a tag, with the white space around its parts.
struct ReferenceAttribute {
    std::string prefix;
    std::string name;
    std::string beforeEquals;
    std::string afterEquals;
    std::string value;
    ReferenceQuote quote = ReferenceQuote::NONE;
    bool hasValue = false;
};

using ReferenceAttributes = std::vector<ReferenceAttribute>;

struct ReferenceStartTag {
    std::string prefix;
    std::string name;
    ReferenceAttributes attributes;
    ReferenceAttributes written;  ///< the same before bare words were folded
    std::string suffix;
    bool isShort = false;  ///< the tag ended with "/>"
};

struct ReferenceEndTag {
    std::string prefix;
    std::string name;
    std::string afterName;
    ReferenceAttributes attributes;
    ReferenceAttributes written;  ///< the same before bare words were folded
    std::string suffix;
    bool slashBeforeClose = false;
    bool closed = true;
};

struct ReferenceInstruction {
    std::string prefix;
    std::string name;
    ReferenceAttributes attributes;
    std::string suffix;
    bool slashBeforeClose = false;
    bool freeStyle = false;
    std::string text;                 ///< the whole instruction when it is free style
    bool swapsSlashAndSpace = false;  ///< white space stood after the slash; it is written before it
};

/// A word or string of a declaration.
struct ReferenceItem {
    std::string prefix;
    std::string value;
    ReferenceQuote quote = ReferenceQuote::NONE;
};

struct ReferenceDeclaration {
    std::string prefix;
    std::string name;
    std::vector<ReferenceItem> items;
    std::string suffix;
};

struct ReferenceComment {
    std::string text;
    bool closed = true;
};

struct ReferenceCDATA {
    std::string keyword;
    std::string text;
    bool closed = true;
};

struct ReferenceConditional {
    std::string keyword;
    std::string condition;
    std::string tail;
    bool bracketClosed = true;
    bool tagClosed = true;
};

/// The trace line of a token with one string: kind(text).
std::string ReferenceTrace(std::string_view kind, std::string_view text);
std::string ReferenceTrace(const ReferenceStartTag& tag);
std::string ReferenceTrace(const ReferenceEndTag& tag);
std::string ReferenceTrace(const ReferenceInstruction& instruction);
std::string ReferenceTrace(const ReferenceDeclaration& declaration);
std::string ReferenceTrace(const ReferenceComment& comment);
std::string ReferenceTrace(const ReferenceCDATA& section);
std::string ReferenceTrace(const ReferenceConditional& section);

/// The token written back as markup.
std::string ReferenceCopy(const ReferenceStartTag& tag);
std::string ReferenceCopy(const ReferenceEndTag& tag);
std::string ReferenceCopy(const ReferenceInstruction& instruction);
std::string ReferenceCopy(const ReferenceDeclaration& declaration);
std::string ReferenceCopy(const ReferenceComment& comment);
std::string ReferenceCopy(const ReferenceCDATA& section);
std::string ReferenceCopy(const ReferenceConditional& section);

}  // namespace Kestra::Test
