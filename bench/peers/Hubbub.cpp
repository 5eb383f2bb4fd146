#include <hubbub/parser.h>

#include <algorithm>
#include <string_view>

#include "bench/peers/Peers.h"

namespace Kestra::Bench {

namespace {

struct Reader {
    hubbub_parser* parser = nullptr;
    std::uint64_t counted = 0;
};

/// The elements whose content is no markup, as the tree builder treats them.
hubbub_content_model ContentModel(std::string_view name) {
    if (name == "script" || name == "style" || name == "xmp" || name == "iframe" || name == "noembed" ||
        name == "noframes")
        return HUBBUB_CONTENT_MODEL_CDATA;
    if (name == "title" || name == "textarea")
        return HUBBUB_CONTENT_MODEL_RCDATA;
    return HUBBUB_CONTENT_MODEL_PCDATA;
}

hubbub_error OnToken(const hubbub_token* token, void* context) {
    auto* const reader = static_cast<Reader*>(context);
    ++reader->counted;
    if (token->type == HUBBUB_TOKEN_CHARACTER) {
        reader->counted += token->data.character.len;
    } else if (token->type == HUBBUB_TOKEN_START_TAG) {
        const hubbub_string& name = token->data.tag.name;
        reader->counted += token->data.tag.n_attributes;
        hubbub_parser_optparams option{};
        option.content_model.model = ContentModel(std::string_view(reinterpret_cast<const char*>(name.ptr), name.len));
        if (option.content_model.model != HUBBUB_CONTENT_MODEL_PCDATA)
            return hubbub_parser_setopt(reader->parser, HUBBUB_PARSER_CONTENT_MODEL, &option);
    }
    return HUBBUB_OK;
}

}  // namespace

std::uint64_t ReadWithHubbub(const std::string& document) {
    Reader reader;
    if (hubbub_parser_create("UTF-8", false, &reader.parser) != HUBBUB_OK)
        return 0;
    hubbub_parser_optparams option{};
    option.token_handler.handler = OnToken;
    option.token_handler.pw = &reader;
    hubbub_parser_setopt(reader.parser, HUBBUB_PARSER_TOKEN_HANDLER, &option);
    for (std::size_t fed = 0; fed < document.size(); fed += PEER_PIECE) {
        hubbub_parser_parse_chunk(reader.parser, reinterpret_cast<const std::uint8_t*>(document.data() + fed),
                                  std::min(PEER_PIECE, document.size() - fed));
    }
    hubbub_parser_completed(reader.parser);
    hubbub_parser_destroy(reader.parser);
    return reader.counted;
}

}  // namespace Kestra::Bench
