#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// @file
/// What the second stateless parser makes of a finished construct: a charset learned from it, and
/// its line of the trace.

namespace Kestra::Test {

/// An attribute in the bytes of the markup.
struct ReferencePair {
    std::string name;
    std::string value;
};

using ReferencePairs = std::vector<ReferencePair>;

/// Whether two strings are the same when "A" to "Z" are folded; a NUL is a byte like any other.
bool EqualsFolded(const std::string& left, const std::string& right);

/// The charset in force after a start tag, before its event. Bit 0 of `flags` lets the markup
/// replace a charset that is set.
std::uint32_t CharsetAfterStartTag(const std::string& name, const ReferencePairs& attributes, std::uint32_t charset,
                                   std::uint32_t flags);

/// The charset in force after a "<?...?>" tag, before its event.
std::uint32_t CharsetAfterExternTag(const std::string& name, const ReferencePairs& attributes, std::uint32_t charset,
                                    std::uint32_t flags);

std::string StartLine(const std::string& name, const ReferencePairs& attributes, std::uint32_t charset);
std::string EndLine(const std::string& name);
std::string ScriptLine(const ReferencePairs& attributes, const std::string& body, std::uint32_t charset);
std::string StyleLine(const ReferencePairs& attributes, const std::string& body, std::uint32_t charset);
std::string ExternLine(const std::string& name, const ReferencePairs& attributes, std::uint32_t charset);
std::string EntityLine(const std::string& name, const std::vector<std::string>& tokens, std::uint32_t charset);
std::string CommentLine(const std::string& text, std::uint32_t charset);
std::string TextLine(const std::string& text, std::uint32_t charset);

}  // namespace Kestra::Test
