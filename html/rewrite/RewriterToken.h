#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "../../platform/Characters.h"
#include "../../platform/Export.h"
#include "../framework/TokenKind.h"
#include "../framework/TokenPlace.h"
#include "RewriteResults.h"

namespace Kestra::HTML {

class RewriterEngine;

/// How content is given.
enum RewriteContent : std::uint32_t {
    /// What a reader shall see: "&", "<" and ">" are written as references, but not in scripts and
    /// similar elements. The first character is written as a reference too where it would continue
    /// a reference or a tag that the characters before it begin.
    CONTENT_TEXT = 0,
    CONTENT_MARKUP = 1,  ///< written unchanged, except for characters that the charset lacks
};

/// A token that is being delivered, to be edited.
///
/// It is over when the callback that got it returns: from then on every edit answers REWRITE_OVER,
/// and every query 0 or an empty result. Copies are cheap and may be kept. Texts are given as UTF-8
/// or as UTF-16, and written in the charset of the document; a character that the charset lacks
/// becomes a numeric character reference. Not thread-safe.
class KESTRA_HTML_API RewriterToken {
public:
    /// A token that is over.
    RewriterToken();
    /// The same token; it is over at the same time.
    RewriterToken(const RewriterToken& other);
    /// The same.
    RewriterToken& operator=(const RewriterToken& other);
    ~RewriterToken();

    bool IsOver() const;  ///< whether the callback that got it has returned
    /// TOKEN_NONE in a callback without a record, such as `OnJSTagStart`: its place is that of the
    /// tag that caused it, and every edit answers REWRITE_WRONG_KIND.
    TokenKind GetKind() const;
    TokenPlace GetPlace() const;  ///< as `GenericParser::GetTokenPlace`

    /// The bytes of the token as they came in, in the charset of the document. Borrowed until the
    /// callback returns.
    std::string_view GetBytes() const;

    /// Writes something else in place of the token. Insertions before and after it stay.
    std::uint32_t Replace(std::string_view content, RewriteContent kind);
    /// The same with UTF-16.
    std::uint32_t Replace(WideStringView content, RewriteContent kind);

    /// Writes nothing in place of the token. The characters around it can then join to a reference,
    /// as in "&<!---->amp;", or to a tag, as in "</<!---->b>": in a document that is not trusted,
    /// replace the token by an empty comment, given as markup. A text does not help after "</".
    std::uint32_t Remove();

    /// Writes something right before the token, after what earlier calls wrote there.
    std::uint32_t InsertBefore(std::string_view content, RewriteContent kind);
    /// The same with UTF-16.
    std::uint32_t InsertBefore(WideStringView content, RewriteContent kind);

    /// Writes something after the token, after what earlier calls wrote there.
    std::uint32_t InsertAfter(std::string_view content, RewriteContent kind);
    /// The same with UTF-16.
    std::uint32_t InsertAfter(WideStringView content, RewriteContent kind);

    /// Puts another text between the marks of a comment, or in place of a text. The text of a
    /// comment has no references: it is written as it is, and refused with REWRITE_ENDS_EARLY when
    /// it would end the comment, and with REWRITE_NOT_IN_CHARSET.
    /// @return 0; REWRITE_WRONG_KIND for what is neither text nor a comment tag
    std::uint32_t SetText(std::string_view text);
    /// The same with UTF-16.
    std::uint32_t SetText(WideStringView text);

    /// @name Attributes of a tag or an instruction
    ///
    /// Names are compared without the case of "A" to "Z"; the first attribute of a name counts.
    /// Bare words that were folded into a value are separate attributes here: `<a href="/one"
    /// download>` has two. Values are without references: they are decoded by the getter, and
    /// encoded by the setters where needed. An attribute without a name cannot be reached.
    /// REWRITE_WRONG_KIND is the answer for a tag that has no name or lacks its ">", and for a few
    /// odd tags in which the edit would change another attribute.
    /// @{

    bool HasAttribute(std::string_view name) const;  ///< false for what has no attributes

    /// Finds the value of an attribute.
    /// @param name   in UTF-8
    /// @param value  receives the value as UTF-8, empty when there is none; unchanged when the
    ///               answer is not 0
    /// @return 0; 2 for null; REWRITE_NO_ATTRIBUTE; REWRITE_WRONG_KIND for what has no attributes
    std::uint32_t GetAttribute(std::string_view name, std::string* value) const;

    /// Sets the value, or adds the attribute. The quotes of the value are kept where possible;
    /// quotation marks are added to a value that needs quotes and has none.
    std::uint32_t SetAttribute(std::string_view name, std::string_view value);
    /// The same with a value of UTF-16.
    std::uint32_t SetAttribute(std::string_view name, WideStringView value);

    /// Adds an attribute after the last one, also when there is one of that name.
    std::uint32_t AddAttribute(std::string_view name, std::string_view value);
    /// The same with a value of UTF-16.
    std::uint32_t AddAttribute(std::string_view name, WideStringView value);

    /// Writes another name; the value is unchanged.
    std::uint32_t RenameAttribute(std::string_view name, std::string_view newName);

    /// Removes the attribute and the white space before it.
    std::uint32_t RemoveAttribute(std::string_view name);

    /// @}

private:
    friend class RewriterEngine;

    RewriterToken(std::shared_ptr<RewriterEngine*> owner, std::uint64_t number);

    std::shared_ptr<RewriterEngine*> engine;  // null inside when the rewriter is gone
    std::uint64_t generation;                 // of the callback
};

}  // namespace Kestra::HTML
