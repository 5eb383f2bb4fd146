#pragma once

#include <cstdint>

#include "../../platform/CharSet.h"
#include "../../platform/Characters.h"
#include "../../platform/Export.h"
#include "TokenRecords.h"

namespace Kestra::HTML {

/// Receives the tokens of a parse in document order, on the caller's thread, inside the call that
/// fed the input.
///
/// Every operation does nothing by default. There is no virtual destructor: a parser that owns its
/// observer frees it with plain `operator delete(void*)`, so an owned observer needs no
/// destruction and lies at the start of its block. An exception that an operation throws passes
/// through the call that fed the input; `StartParse`, `EndParse`, the queries and destruction are
/// safe afterwards.
template <typename C, typename S>
class KESTRA_HTML_API ParserObserver {
public:
    ParserObserver();
    /// An observer of this class has no state: there is nothing to copy.
    ParserObserver(const ParserObserver& other);
    /// Copies nothing.
    ParserObserver& operator=(const ParserObserver& other);

    /// Before everything else of a document.
    virtual void OnStartParsing();
    /// After the last token; not called when the parse ended with an error.
    virtual void OnEndParsing();
    /// A byte-order mark at the start of the document: its bytes and their count.
    virtual void OnBOM(const void* bytes, std::uint64_t size);
    /// The charset in force from here on: that of `StartParse`, right after `OnStartParsing`; one
    /// declared by a `meta` tag, after the callback of that tag. Not called for one found by a
    /// byte-order mark or by the detector.
    virtual void OnCharset(StringNS::CharSet::Code code);
    /// Text between two constructs, and a regular expression of a script.
    virtual void OnText(TextData<C, S>* data);
    /// A block comment of a script or a style sheet.
    virtual void OnCComment(CCommentData<C, S>* data);
    /// A line comment of a script. An 8-bit observer of an 8-bit document gets none.
    virtual void OnCPPComment(CPPCommentData<C, S>* data);
    /// A string in "'" of a script or a style sheet.
    virtual void OnSQuoteString(SQuoteStringData<C, S>* data);
    /// A string in quotation marks of a script or a style sheet.
    virtual void OnDQuoteString(DQuoteStringData<C, S>* data);
    /// A tag, unless it ends with "/>".
    virtual void OnStartTag(StartTagData<C, S>* data);
    /// A tag that ends with "/>".
    virtual void OnShortTag(ShortTagData<C, S>* data);
    /// An end tag, "</name>".
    virtual void OnEndTag(EndTagData<C, S>* data);
    /// A CDATA section, "<![CDATA[...]]>".
    virtual void OnCDATATag(CDATATagData<C, S>* data);
    /// A mark of a conditional section, "<![if ...]>" or "<![endif]>".
    virtual void OnConditionalTag(ConditionalTagData<C, S>* data);
    /// A markup comment, "<!--...-->".
    virtual void OnCommentTag(CommentTagData<C, S>* data);
    /// A declaration, such as "<!DOCTYPE html>".
    virtual void OnEntityTag(EntityTagData<C, S>* data);
    /// A processing instruction, "<?...>".
    virtual void OnExternTag(ExternTagData<C, S>* data);
    /// After the `OnStartTag` of a `script` element.
    virtual void OnJSTagStart();
    /// After the `OnEndTag` of a `script` element, also of a stray one.
    virtual void OnJSTagEnd();
    /// After the `OnStartTag` of a `style` element.
    virtual void OnCSSTagStart();
    /// After the `OnEndTag` of a `style` element, also of a stray one.
    virtual void OnCSSTagEnd();
    /// What fits no construct.
    virtual void OnJunkData(JunkData<C, S>* data);
};

/// The observer of hosts that want every document as UTF-16, whatever its charset.
class KESTRA_HTML_API GenericParserObserver : public ParserObserver<WideChar, WideString> {
public:
    GenericParserObserver();
    /// As of `ParserObserver`: there is nothing to copy.
    GenericParserObserver(const GenericParserObserver& other);
    /// Copies nothing.
    GenericParserObserver& operator=(const GenericParserObserver& other);
};

}  // namespace Kestra::HTML
