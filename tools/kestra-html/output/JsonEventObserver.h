#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "html/stateless/StatelessHTMLObserver.h"
#include "html/stateless/StatelessHTMLParser.h"
#include "platform/Characters.h"
#include "tools/kestra-html/input/EventsPass.h"
#include "tools/kestra-html/output/EventPlaces.h"
#include "tools/kestra-html/output/JsonLine.h"
#include "tools/kestra-html/output/LineSink.h"

namespace Kestra::Tool {

/// Writes one object for each callback: `event` is the callback's name without "On", the other
/// members are its arguments.
class JsonEventObserver final : public HTML::StatelessHTMLObserver {
public:
    /// @param placesParser  borrowed; asked in each callback where it is. Null: no places are
    ///                      written
    explicit JsonEventObserver(LineSink* lineSink, const HTML::StatelessHTMLParser* placesParser = nullptr);

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

    /// Writes the last line of an input.
    /// @param inputName  as given on the command line
    void WriteResult(const EventsPassResult& result, const std::string& inputName);

private:
    void Tag(std::string_view event, const WideChar* name, const Attributes* attributes);
    void Element(std::string_view event, const Attributes* attributes, const WideChar* body);
    void StringOnly(std::string_view event, const char* member, const WideChar* text);

    void End();
    void EndWith(const Attributes& attributes);

    std::optional<EventPlaces> places;
    JsonLine line;
};

}  // namespace Kestra::Tool
