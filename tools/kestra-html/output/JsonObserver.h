#pragma once

#include <cstdint>
#include <string>

#include "html/framework/Attribute.h"
#include "html/framework/EntityToken.h"
#include "html/framework/TokenObserver.h"
#include "html/parser/GenericParser.h"
#include "platform/CharSet.h"
#include "platform/Characters.h"
#include "platform/Vector.h"
#include "tools/kestra-html/input/ParsePass.h"
#include "tools/kestra-html/output/JsonLine.h"
#include "tools/kestra-html/output/LineSink.h"

namespace Kestra::Tool {

/// Writes one object for each callback: `event` is the callback's name without "On", the other
/// members are the fields of its record.
template <typename C, typename S>
class JsonObserver final : public HTML::EventObserver<JsonObserver<C, S>, C, S> {
public:
    /// @param placesParser  borrowed; asked for the place of each token and attribute. Null: no
    ///                      places are written
    explicit JsonObserver(LineSink* lineSink, const HTML::GenericParser* placesParser = nullptr);

    void OnBOM(const void* bytes, std::uint64_t size) override;
    void OnCharset(StringNS::CharSet::Code code) override;
    void OnEvent(HTML::ObserverEvent event);
    template <template <typename, typename> class Record>
    void OnToken(Record<C, S>* record);

    /// Writes the last line of an input.
    /// @param inputName  as given on the command line
    void WriteResult(const ParsePassResult& result, const std::string& inputName);

private:
    template <typename Value>
    [[gnu::always_inline]] void Member(const char* name, const Value* value) {
        line.String(name, value);
    }
    [[gnu::always_inline]] void Member(const char* name, bool value) {
        line.Bool(name, value);
    }
    void Member(const char* name, const Vector<HTML::Attribute<C, S>>* attributes);
    void Member(const char* name, const Vector<HTML::EntityToken<C, S>>* tokens);
    void End();

    const HTML::GenericParser* parser;
    JsonLine line;
};

}  // namespace Kestra::Tool
