#pragma once

#include "html/stateless/StatelessHTMLObserver.h"
#include "platform/Characters.h"

namespace Kestra::Test {

/// Calls every callback once, as for a document.
inline void CallEverything(HTML::StatelessHTMLObserver* observer) {
    HTML::StatelessHTMLObserver::Attributes attributes;
    HTML::StatelessHTMLObserver::Attributes none;
    HTML::StatelessHTMLObserver::Tokens tokens;
    attributes.push_back({KESTRA_WIDE("href"), WideString(KESTRA_WIDE("x\0\n"), 3)});
    attributes.push_back({KESTRA_WIDE("checked"), WideString()});
    tokens.push_back(KESTRA_WIDE("html"));
    tokens.push_back(WideString());
    observer->OnStartParsing();
    observer->OnStartTag(KESTRA_WIDE("a"), &attributes);
    observer->OnEndTag(KESTRA_WIDE("a"));
    observer->OnScript(&none, KESTRA_WIDE("x=1"));
    observer->OnExternTag(KESTRA_WIDE("xml"), &attributes);
    observer->OnEntityTag(KESTRA_WIDE("DOCTYPE"), &tokens);
    observer->OnComment(KESTRA_WIDE(" c\u00E9"));
    observer->OnText(KESTRA_WIDE("t\0u"));
    observer->OnStyle(&attributes, KESTRA_WIDE(""));
    observer->OnStopParsing();
}

}  // namespace Kestra::Test
