#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "html/framework/TokenPlace.h"
#include "html/parser/ParserCore.h"
#include "html/parser/PieceOrigin.h"
#include "platform/Characters.h"
#include "platform/InputStream.h"

namespace Kestra::HTML {

/// Drives the recognizers of one flavour over a document: decides at every point which one runs,
/// and turns a construct that fails into junk. `Construct.h` has the table that it follows. Private
/// to `GenericParser`.
template <typename C, typename S>
class Parser {
public:
    Parser();
    /// A copy continues even inside a token; it has no backing stream.
    Parser(const Parser& other);
    Parser& operator=(const Parser& other) = delete;
    virtual ~Parser();

    /// Begins a document and calls `OnStartParsing`.
    /// @param markLength       bytes of a byte-order mark before the first piece
    /// @param detectedCharset  the charset was chosen by the detector
    /// @param bytesDropped     earlier bytes of the document, which are in no token
    /// @return 0
    std::uint32_t Start(std::uint64_t markLength, bool detectedCharset, std::uint64_t bytesDropped);

    /// A callback threw before any of these bytes of the document was parsed.
    void SkipTo(std::uint64_t bytes);

    /// Runs the recognizers over one piece.
    /// @return 0 when it is used up, 705, 710, 711, or the code of a failure that has no recovery
    std::uint32_t Parse(const C* piece, std::uint64_t length, const PieceOrigin& origin);

    /// The whole input has been given. Leaves the text state with no pending text, whatever it
    /// returns. In `OnEndParsing` the parser's name is still that of the recognizer that ran last.
    /// @return 0, 704, 710, 711, or the code of a failure that has no recovery; `OnEndParsing` is
    ///         called only with 0, and with 710 out of it
    std::uint32_t End();

    /// Adds a byte-order mark to the self-check and calls `OnBOM`.
    virtual void OnBOM(const void* bytes, std::uint64_t size);

    /// Makes the running call end with 710 after its callback, and every feeding call until
    /// `Start`.
    void Stop();
    bool IsStopped() const;
    /// Whether a stop, or a token over its limit, has ended the document, and nothing was fed
    /// since.
    bool IsHalted() const;

    /// The parser of the other flavour begins a document: frees the memory and the self-check's
    /// stream of the last one.
    void Release();

    /// Sets the stream of the next pieces, borrowed; null for none. An open token cannot be re-read
    /// from a stream other than the one it began in.
    void SetBackingStream(VFS::InputStream* stream);
    /// Reads the open construct back from the backing stream when `End` would have to, and when
    /// that is possible; null otherwise.
    std::unique_ptr<VFS::InputStream> KeepOpenConstruct();
    /// Replaces the backing stream by another one with the same bytes at the same offsets.
    void ReplaceBackingStream(VFS::InputStream* stream);

    void SetScriptsAsText(bool asText);
    bool AreScriptsAsText() const;
    /// @param bytes  0 for no limit
    void SetMaxTokenSize(std::uint64_t bytes);
    std::uint64_t GetMaxTokenSize() const;
    /// @param count  0 for no limit
    void SetMaxAttributes(std::uint64_t count);
    std::uint64_t GetMaxAttributes() const;

    /// The observers, the charset and the self-check.
    TokenDelivery<C, S>& GetDelivery();
    const TokenDelivery<C, S>& GetDelivery() const;
    MarkupCharset<C, S>& GetMarkupCharset();
    const MarkupCharset<C, S>& GetMarkupCharset() const;

    /// The place of the token that is being delivered, or was delivered last.
    TokenPlace GetTokenPlace() const;
    /// The place of an attribute of the tag that is being delivered.
    /// @return false when there is none
    bool GetAttributePlace(std::size_t index, AttributePlace* place) const;
    /// The same for the parts of a folded attribute: the attribute itself, and then its bare words.
    bool GetAttributeParts(std::size_t index, std::vector<AttributePlace>* places) const;
    /// Where the name of the tag that is being delivered ends.
    /// @return false when there is none
    bool GetTagNameEnd(std::uint64_t* end) const;
    std::uint64_t GetLine() const;
    std::uint64_t GetColumn() const;
    WideStringView GetCurrentParserName() const;

private:
    auto BeginDelivering();
    void BeginPiece(const C* piece, std::uint64_t length, const PieceOrigin& origin);
    std::uint32_t ParsePiece();
    std::uint32_t EndOpenConstruct();
    std::uint32_t Recover(std::uint32_t failure);

    ParserCore<C, S> core;
};

}  // namespace Kestra::HTML
