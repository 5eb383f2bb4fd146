#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>

#include "html/framework/TokenPlace.h"
#include "html/output/ParserObserverOutputHandler.h"
#include "html/parser/GenericParser.h"
#include "html/rewrite/DocumentView.h"
#include "html/rewrite/TokenEdits.h"
#include "platform/VirtualFileSystem.h"

/// @file
/// The bytes of the document: what came in, what is retained, what has been written. Not installed.

namespace Kestra::HTML {

/// Writes a document piece by piece.
///
/// All offsets are those of the document. What lies before `written` has been settled: written as
/// it came in, written with edits, or left out. The bytes of the token under way are retained until
/// they are settled, and the parser reads them from there when a construct has failed.
class RewriterOutput {
public:
    /// @param handler  null for none
    RewriterOutput(ParserObserverOutputHandler* handler, const GenericParser* documentParser);
    RewriterOutput(const RewriterOutput&) = delete;
    RewriterOutput& operator=(const RewriterOutput&) = delete;
    ~RewriterOutput();

    /// @name Input
    /// @{
    void BeginDocument();
    /// @param data  borrowed until the next piece, or `EndPieces`
    void BeginPiece(const char* data, std::uint64_t size);
    void EndPieces();
    /// Retains the bytes from `begin` on: those of the piece, and those retained before. Bytes
    /// dropped earlier stay dropped.
    void RetainFrom(std::uint64_t begin);
    void ForgetRetained();
    /// The retained bytes and the piece, for the parser to read a failed construct again.
    VFS::InputStream* GetRetainedBytes();
    std::uint64_t GetPieceBegin() const {
        return pieceBegin;
    }
    std::uint64_t GetFed() const {
        return fed;
    }
    /// The bytes of a token lie in the piece or, when it began earlier, in the retained ones, which
    /// then get the rest of it.
    std::string_view GetBytes(const TokenPlace& place);
    /// The last bytes before a token, as they will be written.
    std::string GetTail(std::uint64_t tokenBegin) const;
    /// @}

    /// @name Output
    /// @{
    /// Settles all up to an offset: writes it as it came in, or leaves it out.
    void CopyUntil(std::uint64_t offset);
    /// The same, also when the handler throws.
    /// @return what it has thrown first
    std::exception_ptr CopyWhateverHappens(std::uint64_t offset) noexcept;
    /// Settles all up to an offset without writing it.
    void Skip(std::uint64_t offset);
    void Emit(std::string_view bytes);
    void EmitInsertion(const Insertion& insertion);
    /// Text that would end its script together with the last characters of the script is left out,
    /// and so is text for which there is no memory to decide that.
    void EmitEndOfContent(const ElementEdits& edited);
    /// @}

    /// @name Contents that are left out
    /// @{
    bool IsRemoving() const {
        return removals > 0;
    }
    /// An element begins; counts it if its content is left out.
    void BeginRemoval(ElementEdits* edited);
    /// An element ends, or is forgotten.
    void EndRemoval(const ElementEdits& edited);
    /// From here on all content is written. In constant time, as callbacks may throw again and
    /// again.
    void EndRemovals();
    /// @}

    const DocumentView& GetView() const {
        return view;
    }

    /// Whether the exception on its way came out of the host's code.
    bool IsHostsFault() const {
        return isHostsFault;
    }
    void SetHostsFault(bool isHosts) {
        isHostsFault = isHosts;
    }

private:
    class RetainedBytesStream;

    ParserObserverOutputHandler* output;
    DocumentView view;
    std::unique_ptr<RetainedBytesStream> retainedBytesStream;

    bool isHostsFault = false;
    std::uint64_t fed = 0;
    std::uint64_t written = 0;
    std::string retained;
    std::uint64_t retainedBegin = 0;
    const char* piece = nullptr;
    std::uint64_t pieceBegin = 0;
    std::array<char, DocumentView::TAIL_SIZE> tail{};  // the last bytes written
    std::size_t tailSize = 0;

    std::uint64_t removals = 0;       // open elements whose content is left out, of the present series:
    std::uint64_t removalSeries = 0;  // each ends where all content is written again
};

}  // namespace Kestra::HTML
