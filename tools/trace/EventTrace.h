#pragma once

#include <string>
#include <string_view>

#include "html/stateless/StatelessHTMLObserver.h"
#include "platform/Characters.h"
#include "tools/trace/TokenTrace.h"

/// @file
/// The trace language of events: one line of text for each callback of an observer of the stateless
/// parser.
///
///     start-parsing  stop-parsing
///     start(name|attributes)     extern(name|attributes)     end(name)
///     script(attributes|body)    style(attributes|body)
///     entity(name|tokens)
///     comment(text)              text(text)
///
/// An attribute is {name=value}, a token {token}; strings have the escapes of the tokens' trace
/// language.

namespace Kestra::Trace {

/// Turns each callback into its line.
class EventLineObserver : public HTML::StatelessHTMLObserver {
public:
    explicit EventLineObserver(const Options& options = {});

    void OnStartParsing() override;
    void OnStopParsing() override;
    void OnStartTag(const WideChar* name, const Attributes* attributes) override;
    void OnEndTag(const WideChar* name) override;
    void OnScript(const Attributes* attributes, const WideChar* body) override;
    void OnExternTag(const WideChar* name, const Attributes* attributes) override;
    void OnEntityTag(const WideChar* name, const Tokens* tokens) override;
    void OnComment(const WideChar* text) override;
    void OnText(const WideChar* text) override;
    void OnStyle(const Attributes* attributes, const WideChar* body) override;

protected:
    /// @param event  an identifier of `StatelessHTMLParser`, from `ID_START_PARSING` to `ID_STYLE`
    virtual void OnLine(unsigned long event, const std::string& line) = 0;

private:
    void Append(const WideChar* text);
    void Append(const Attributes* attributes);
    void Append(const Tokens* tokens);

    /// Makes a line of one or two parts.
    template <typename... Parts>
    void MakeLine(unsigned long event, std::string_view word, Parts... parts);

    Options stringOptions;
    std::string built;  ///< its memory is retained
};

}  // namespace Kestra::Trace
