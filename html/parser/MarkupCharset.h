#pragma once

#include "html/parser/TokenDelivery.h"
#include "html/tags/StartTagSimpleParser.h"
#include "platform/CharSet.h"
#include "platform/Characters.h"

namespace Kestra::HTML {

/// The charset that `meta` tags declare: whether it is wanted, and whether it was applied. Not
/// installed.
template <typename C, typename S>
class MarkupCharset {
public:
    /// @param isDetected  the charset of the document was chosen by the detector
    void BeginDocument(bool isDetected);

    /// Declarations are applied to the documents that begin from now on.
    void SetDiscovery(bool discover);

    /// Whether the next declaration is applied: the first one that reaches an observer is.
    bool IsWanted() const {
        return discoverCharset && !charsetFromMarkup;
    }

    /// Applies the declaration of a `meta` tag that has been delivered. In `OnCharset` the charset
    /// is in force, but whether the document must be parsed again is not yet decided; an exception
    /// in that callback does not change the decision.
    /// @param isHalted  the callback of the tag has ended the document, and nothing is applied
    /// @return true when text has been converted with another charset: the document must be parsed
    ///         again
    bool Apply(const StartTagSimpleParserData<C, S>& tag, bool isHalted, TokenDelivery<C, S>* delivery);

    bool NeedsReparsing() const;
    bool WasDetectorUsed() const;

    /// Retained for its buffer.
    WideString& GetNameBuffer() {
        return declaredName;
    }

private:
    bool needsReparsing = false;
    bool discoverCharset = false;
    bool charsetFromMarkup = false;
    bool charsetDetectorUsed = false;
    WideString declaredName;
};

}  // namespace Kestra::HTML
