#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "RewriterToken.h"

namespace Kestra::HTML {

/// An element whose start tag is being delivered, to be edited. It is over when the callback that
/// got it returns, as a `RewriterToken` is.
///
/// The element ends with its end tag. Without one it ends right before the end tag of an element
/// around it, or where the document ends: no end tag is implied, so that a `p` lasts until `</p>`
/// or until its parent ends. A void element (`br`, `img`, ...) has a start tag alone. A short tag,
/// "<b/>", opens an element like a start tag, as in browsers; inside `svg` and `math` it closes
/// itself.
class KESTRA_HTML_API RewriterElement {
public:
    /// An element that is over.
    RewriterElement();
    /// The same element; it is over at the same time.
    RewriterElement(const RewriterElement& other);
    /// The same.
    RewriterElement& operator=(const RewriterElement& other);
    ~RewriterElement();

    bool IsOver() const;                ///< whether the callback that got it has returned
    std::string GetName() const;        ///< with "A" to "Z" in lower case
    RewriterToken GetStartTag() const;  ///< its attributes are those of the element
    bool HasContent() const;            ///< false for a void element, and for a short tag that closes itself

    std::uint32_t InsertBefore(std::string_view content, RewriteContent kind);  ///< before the start tag
    std::uint32_t InsertBefore(WideStringView content, RewriteContent kind);    ///< the same with UTF-16
    std::uint32_t InsertAfter(std::string_view content, RewriteContent kind);   ///< after the end tag
    std::uint32_t InsertAfter(WideStringView content, RewriteContent kind);     ///< the same with UTF-16

    /// Right after the start tag, after what earlier calls wrote there.
    /// @return 0; REWRITE_NO_CONTENT; REWRITE_ENDS_EARLY and REWRITE_NOT_IN_CHARSET in a script or
    ///         similar element
    std::uint32_t Prepend(std::string_view content, RewriteContent kind);
    /// The same with UTF-16.
    std::uint32_t Prepend(WideStringView content, RewriteContent kind);

    /// Right before the end tag, after what earlier calls wrote there. In a script, what would make
    /// its end tag together with the last characters of the script is left out.
    /// @return as `Prepend`
    std::uint32_t Append(std::string_view content, RewriteContent kind);
    /// The same with UTF-16.
    std::uint32_t Append(WideStringView content, RewriteContent kind);

    /// In place of everything between the two tags, earlier insertions included.
    /// @return as `Prepend`
    std::uint32_t SetContent(std::string_view content, RewriteContent kind);
    /// The same with UTF-16.
    std::uint32_t SetContent(WideStringView content, RewriteContent kind);

    /// In place of the element. Insertions inside it are dropped, insertions before and after it
    /// stay.
    std::uint32_t Replace(std::string_view content, RewriteContent kind);
    /// The same with UTF-16.
    std::uint32_t Replace(WideStringView content, RewriteContent kind);

    /// Writes nothing of the element, its content included. The characters around it can join, as
    /// with `RewriterToken::Remove`.
    std::uint32_t Remove();

    /// Writes the content without the two tags. The content of a script or similar element is then
    /// markup, even what was written into it as text. Characters can join as with
    /// `RewriterToken::Remove`.
    std::uint32_t Unwrap();

private:
    friend class RewriterEngine;

    explicit RewriterElement(const RewriterToken& tag);

    RewriterToken startTag;
};

}  // namespace Kestra::HTML
