#pragma once

#include <cstdint>
#include <string_view>

#include "html/framework/TokenObserver.h"
#include "html/parser/GenericParser.h"
#include "platform/CharSet.h"
#include "tools/kestra-html/input/ParsePass.h"
#include "tools/kestra-html/output/LineSink.h"
#include "tools/kestra-html/output/TextReport.h"

namespace Kestra::Tool {

/// Writes one line for each callback, for reading: where the token starts, and the token in the
/// trace language with its long texts cut.
template <typename C, typename S>
class TextObserver final : public HTML::EventObserver<TextObserver<C, S>, C, S> {
public:
    /// @param observedParser  borrowed; asked for the place of each token
    /// @param withOffsets     lines also have the offsets in bytes
    TextObserver(LineSink* lineSink, const HTML::GenericParser* observedParser, bool inColour,
                 bool withOffsets = false);

    void OnBOM(const void* bytes, std::uint64_t size) override;
    void OnCharset(StringNS::CharSet::Code code) override;
    void OnEvent(HTML::ObserverEvent event);
    template <template <typename, typename> class Record>
    void OnToken(Record<C, S>* record);

    /// Writes what became of the input: bytes, tokens by kind, charset, result.
    /// @param restarted  an earlier pass was abandoned because it found the charset
    void WriteSummary(const ParsePassResult& result, const std::string& size, bool restarted);

private:
    void WriteEvent(std::string_view text);

    const HTML::GenericParser* parser;
    TextReport report;
};

}  // namespace Kestra::Tool
