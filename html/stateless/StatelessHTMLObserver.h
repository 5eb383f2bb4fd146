#pragma once

#include <utility>

#include "../../platform/Characters.h"
#include "../../platform/Export.h"
#include "../../platform/Observable.h"
#include "../../platform/Vector.h"

namespace Kestra::HTML {

/// Receives the events of a `StatelessHTMLParser`. A host derives from it, overrides what it needs,
/// and attaches it with `Attach`.
///
/// Every callback does nothing by default. Strings and lists are valid for the call only. Names,
/// texts and bodies are NUL-terminated and end at their first NUL; values of attributes and items
/// of declarations are whole. A callback must not feed, start or end its parser: such a call gets 2
/// and nothing changes.
class KESTRA_HTML_API StatelessHTMLObserver : public Base::Observer {
public:
    using Attributes = Vector<std::pair<WideString, WideString>>;  ///< names and values, in document order
    using Tokens = Vector<WideString>;                             ///< words and quoted strings, in document order

    StatelessHTMLObserver();
    /// Attached to nothing.
    StatelessHTMLObserver(const StatelessHTMLObserver& other);
    /// Stays attached to what it is attached to.
    StatelessHTMLObserver& operator=(const StatelessHTMLObserver& other);
    ~StatelessHTMLObserver() override;

    /// Binds the callbacks below to the events `ID_START_PARSING` to `ID_STYLE`, in this order.
    void RegisterCalls(Base::MultiDelegate* delegate) override;

    /// From `StartParse`, before everything else of a document.
    virtual void OnStartParsing();
    /// From `EndParse`, after everything else of a document; not of one that was stopped or went
    /// over a limit.
    virtual void OnStopParsing();
    /// A start tag, except those of scripts and style sheets. A tag that ends in "/>" causes
    /// `OnEndTag` as well, unless text follows as its content.
    virtual void OnStartTag(const WideChar* name, const Attributes* attributes);
    /// An end tag, and the end of a tag that ends in "/>".
    virtual void OnEndTag(const WideChar* name);
    /// A whole script, from its start tag to its end tag.
    /// @param attributes  of the start tag
    /// @param body        without its comments, unless scripts are read as text
    virtual void OnScript(const Attributes* attributes, const WideChar* body);
    /// An instruction, "<?name attributes?>".
    virtual void OnExternTag(const WideChar* name, const Attributes* attributes);
    /// A declaration, "<!name tokens>".
    virtual void OnEntityTag(const WideChar* name, const Tokens* tokens);
    /// A markup comment, without its marks. It ends with its piece of input; what follows is text.
    virtual void OnComment(const WideChar* text);
    /// Text before a "<". Text after the last tag of a document causes no event.
    virtual void OnText(const WideChar* text);
    /// A whole style sheet, from its start tag to its end tag.
    virtual void OnStyle(const Attributes* attributes, const WideChar* body);
};

}  // namespace Kestra::HTML
