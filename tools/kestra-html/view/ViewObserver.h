#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "html/framework/TokenObserver.h"
#include "html/parser/GenericParser.h"
#include "platform/Characters.h"
#include "tools/kestra-html/view/ShownSource.h"
#include "tools/kestra-html/view/ViewTokens.h"

namespace Kestra::Tool {

/// Writes the tokens of a document into the page. What lies between two tokens, or after the last
/// one, is written as well, so that the page shows every byte.
class ViewObserver final : public HTML::EventObserver<ViewObserver, WideChar, WideString> {
public:
    /// @param observedParser  borrowed; asked for places and for the charset
    /// @param shownSource     borrowed; what the parser reads
    ViewObserver(const HTML::GenericParser* observedParser, ShownSource* shownSource, WritePage writePage);

    void OnBOM(const void* bytes, std::uint64_t size) override;
    void OnEvent(HTML::ObserverEvent event);
    template <template <typename, typename> class Record>
    void OnToken(Record<WideChar, WideString>* record);

    /// Writes what is left when the parser has ended, and reads the input to its end for that.
    void Finish();

    /// The kinds in the order of their positions, by the words of the trace language, then those of
    /// the page: "mark" for a byte-order mark and "lost" for bytes in no token.
    static std::vector<std::string> GetKinds();

private:
    /// Adds the bytes up to the token as lost, and sets its place, its bytes and its charset.
    void Begin(std::size_t kind);
    void AddLost(std::uint64_t end);
    /// Adds the token; its bytes are not needed any more.
    void AddToken();
    void AddAttributes(std::size_t count);
    StringNS::CharSet::Code GetCharset() const;

    const HTML::GenericParser* parser;
    ShownSource* source;
    ViewTokens tokens;
    ViewToken token;
    std::uint64_t done = 0;  ///< bytes in the page so far
    std::vector<HTML::AttributePlace> places;
};

}  // namespace Kestra::Tool
