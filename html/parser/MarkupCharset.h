#pragma once

#include "html/parser/TokenDelivery.h"
#include "html/tags/StartTagSimpleParser.h"
#include "platform/CharSet.h"
#include "platform/Characters.h"

namespace Kestra::HTML {

/// The charset that `meta` tags declare: who asks for it, and what came of it. Not installed.
template <typename C, typename S>
class MarkupCharset {
public:
    /// @param isDetected  the charset of the document was chosen by the detector
    void BeginDocument(bool isDetected);

    /// Declarations are applied to the documents that begin from now on.
    void SetDiscovery(bool discover);

    /// Whether the next declaration counts: the first one that an observer has heard of does.
    bool IsWanted() const {
        return discoverCharset && !charsetFromMarkup;
    }

    /// Applies what a `meta` tag that has been delivered declares. In `OnCharset` it is in force,
    /// and what follows from it is not yet decided; an exception out of that callback does not
    /// change what follows.
    /// @param isHalted  the callback of the tag has ended the document, and nothing is applied
    /// @return true when text has been converted with another charset: the document must be parsed
    /// again
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
