#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "html/stateless/StatelessHTMLParser.h"
#include "platform/InputStream.h"
#include "tools/kestra-html/input/InputSource.h"
#include "tools/kestra-html/input/PieceStream.h"

namespace Kestra::Tool {

/// An input for `StatelessHTMLParser::ParseStream` that is handed over as it comes, and causes the
/// events of one that is handed over in whole pieces.
///
/// That parser remembers where its pieces end: a comment is complete with its piece, for one. A
/// piece that is not yet whole therefore ends only right after what causes an event, where nothing
/// is open. A second parser finds that place by reading the bytes first, so that each is parsed at
/// least three times; where a construct is long in coming, once more for each read. A whole piece
/// ends where it would in any case, by its number of bytes.
class EventPieces final : public VFS::InputStream {
public:
    /// @param started        a parser without observers, as `StartParse` has left the one that reads the
    ///                       stream; it is copied
    /// @param inputSource    borrowed for the life of the stream; read from its start
    /// @param pieceSettings  the functions are called for each read
    EventPieces(const HTML::StatelessHTMLParser& started, InputSource* inputSource, PieceSettings pieceSettings);

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override;
    std::uint32_t GetPosition(std::uint64_t* position) override;
    /// Not possible: RESULT_STREAM_FAILED.
    std::uint32_t Seek(std::uint64_t position) override;
    bool IsEnd() override;

private:
    std::uint32_t ReadMore(std::size_t most);
    std::size_t FindEnd() const;
    void HandOver(std::size_t count, void* buffer);

    InputSource* source;
    PieceSettings settings;
    HTML::StatelessHTMLParser follower;  ///< has read what has been handed over
    std::string pending;                 ///< has been read and not been handed over
    std::uint64_t next = 0;              ///< position of its first byte
    std::uint64_t pieceEnd = 0;          ///< position of the end of the whole piece
};

}  // namespace Kestra::Tool
