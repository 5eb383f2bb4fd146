#include "html/parser/StreamPieces.h"

#include "html/parser/GenericParser.h"
#include "platform/Results.h"
#include "platform/Services.h"

namespace Kestra::HTML {

StreamPieces::StreamPieces(VFS::InputStream* readStream) : stream(readStream), reader(readStream) {}

std::uint32_t StreamPieces::Allocate() {
    buffer.Initialize();
    return Base::GetServices().adjustBuffer(&buffer, GenericParser::BUFFER_SIZE);
}

std::uint32_t StreamPieces::Read(const char** data, std::uint64_t* count, PieceOrigin* origin) {
    *data = buffer.GetData();
    *origin = PieceOrigin();
    origin->fromStream = true;
    origin->positioned = stream->GetPosition(&origin->offset) == RESULT_OK;
    return reader.Read(buffer.GetData(), GenericParser::BUFFER_SIZE, count);
}

std::uint32_t StreamPieces::FillBuffer(const char** data, std::uint64_t* count) {
    *data = buffer.GetData();
    *count = 0;
    std::uint32_t result = RESULT_OK;
    while (result == RESULT_OK && *count < GenericParser::BUFFER_SIZE && !stream->IsEnd()) {
        std::uint64_t added = 0;
        result = reader.Read(buffer.GetData() + *count, GenericParser::BUFFER_SIZE - *count, &added);
        *count += added;
    }
    return result == RESULT_END_OF_DATA ? std::uint32_t{RESULT_OK} : result;
}

}  // namespace Kestra::HTML
