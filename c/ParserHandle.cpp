#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "c/Guard.h"
#include "c/HostStreams.h"
#include "c/Paths.h"
#include "c/TokenHandle.h"
#include "c/kestra/html.h"
#include "html/framework/TokenObserver.h"
#include "html/parser/GenericParser.h"

namespace Kestra::C {

namespace {

using HTML::GenericParser;
using HTML::ObserverEvent;

constexpr std::uint32_t ALL_FLAGS = KESTRA_HTML_EVENTS | KESTRA_HTML_WORDS_IN_VALUES | KESTRA_HTML_CHARSET_ERRORS;
constexpr std::uint32_t MOST_CONFIDENCE = 100;

constexpr std::uint32_t GetKind(ObserverEvent event) {
    switch (event) {
        case ObserverEvent::StartParsing:
            return KESTRA_HTML_DOCUMENT_START;
        case ObserverEvent::EndParsing:
            return KESTRA_HTML_DOCUMENT_END;
        case ObserverEvent::JSTagStart:
            return KESTRA_HTML_SCRIPT_START;
        case ObserverEvent::JSTagEnd:
            return KESTRA_HTML_SCRIPT_END;
        case ObserverEvent::CSSTagStart:
            return KESTRA_HTML_STYLE_START;
        case ObserverEvent::CSSTagEnd:
            return KESTRA_HTML_STYLE_END;
    }
    return 0;
}

/// Hands the tokens of one flavour to the host.
template <typename C, typename S>
class TokenSender final : public HTML::EventObserver<TokenSender<C, S>, C, S> {
public:
    TokenSender(GenericParser* tokenParser, const kestra_html_options& hostOptions)
        : parser(tokenParser), options(hostOptions), token(tokenParser, hostOptions) {}

    template <template <typename, typename> class Record>
    void OnToken(Record<C, S>* record) {
        token.Show(record);
        if (options.on_summary != nullptr)
            token.template SummarizeRecord<Record>(&summary);
        Send();
    }

    void OnEvent(ObserverEvent event) {
        SendEvent(GetKind(event), nullptr);
    }

    void OnBOM(const void* bytes, std::uint64_t size) override {
        const std::string mark(static_cast<const char*>(bytes), static_cast<std::size_t>(size));
        SendEvent(KESTRA_HTML_MARK, &mark);
    }

    void OnCharset(StringNS::CharSet::Code) override {
        SendEvent(KESTRA_HTML_CHARSET, nullptr);
    }

    /// Whether an exception has left the callback since the last call.
    bool TakeFailure() {
        return std::exchange(hasFailed, false);
    }

    /// Whether the callback is at work.
    bool IsSending() const {
        return isSending;
    }

private:
    void SendEvent(std::uint32_t kind, const std::string* text) {
        if ((options.flags & KESTRA_HTML_EVENTS) == 0)
            return;
        token.ShowEvent(kind, text);
        if (options.on_summary != nullptr)
            token.SummarizeEvent(&summary);
        Send();
    }

    void Send() {
        isSending = true;
        std::uint32_t answer = 0;
        try {
            answer = options.on_summary != nullptr ? options.on_summary(options.user, &token, &summary)
                                                   : options.on_token(options.user, &token);
        } catch (...) {
            hasFailed = true;
            answer = KESTRA_HTML_CALLBACK_FAILED;
        }
        isSending = false;
        if (answer != 0)
            parser->Stop();
    }

    GenericParser* parser;
    const kestra_html_options& options;
    TokenHandle<C, S> token;
    kestra_html_summary summary{sizeof(kestra_html_summary), 0, 0, {}, {}, 0};
    bool isSending = false;
    bool hasFailed = false;
};

using NarrowSender = TokenSender<char, std::string>;
using WideSender = TokenSender<WideChar, WideString>;

/// Compares what a document is with what its tokens are, written back.
std::uint32_t CheckDocument(const void* data, std::size_t size, std::uint32_t charset) {
    GenericParser parser;
    parser.SetSelfCheck(GenericParser::SELF_CHECK_CRC);
    for (bool isAgain = false;; isAgain = true) {
        parser.StartParse(charset, GenericParser::DATA_STREAM_AUTO);
        parser.SetSelfCheck(GenericParser::SELF_CHECK_CRC);
        const std::uint32_t result = parser.ParseStream(MakeBorrowedStream(data, size).release(), true);
        if (result == HTML::PARSER_PARSE_AGAIN && !isAgain) {
            charset = parser.GetCharset();
            continue;
        }
        if (result != HTML::PARSER_OK && result != HTML::PARSER_CHARSET_NOT_DETECTED)
            return result;
        return parser.EndParse();
    }
}

bool AreGood(const kestra_html_options& options) {
    return options.encoding <= KESTRA_HTML_UTF16 && (options.flags & ~ALL_FLAGS) == 0 &&
           options.script_mode <= KESTRA_HTML_SCRIPT_AS_TEXT && options.self_check <= KESTRA_HTML_CHECK_COPY &&
           options.min_confidence <= MOST_CONFIDENCE && options.reserved == 0 &&
           (options.on_token == nullptr || options.on_summary == nullptr);
}

bool WantsTokens(const kestra_html_options& options) {
    return options.on_token != nullptr || options.on_summary != nullptr;
}

}  // namespace

}  // namespace Kestra::C

struct kestra_html_parser {
    explicit kestra_html_parser(const kestra_html_options& hostOptions) : options(hostOptions) {
        if (Kestra::C::WantsTokens(options) && options.encoding == KESTRA_HTML_BYTES) {
            narrow = std::make_unique<Kestra::C::NarrowSender>(&parser, options);
            parser.SetObserver(narrow.get(), false);
        } else if (Kestra::C::WantsTokens(options)) {
            wide = std::make_unique<Kestra::C::WideSender>(&parser, options);
            parser.SetObserver(wide.get(), false);
        }
        parser.SetScriptMode(static_cast<Kestra::HTML::GenericParser::ScriptMode>(options.script_mode));
        parser.SetSelfCheck(static_cast<Kestra::HTML::GenericParser::SelfCheck>(options.self_check));
        parser.SetDetectCharsetErrors((options.flags & KESTRA_HTML_CHARSET_ERRORS) != 0);
        parser.SetMaxTokenSize(options.max_token_size);
        parser.SetMaxAttributes(options.max_attributes);
        if (options.min_confidence != 0)
            parser.SetChrDetMinConfidence(options.min_confidence);
        if (options.max_detect_size != 0)
            parser.SetChrDetMaxSize(options.max_detect_size);
    }
    kestra_html_parser(const kestra_html_parser&) = delete;
    kestra_html_parser& operator=(const kestra_html_parser&) = delete;
    ~kestra_html_parser() = default;

    /// What a call that may have delivered tokens answers.
    std::uint32_t Answer(std::uint32_t result) {
        const bool hasFailed = narrow != nullptr ? narrow->TakeFailure() : wide != nullptr && wide->TakeFailure();
        return hasFailed ? std::uint32_t{KESTRA_HTML_CALLBACK_FAILED} : result;
    }

    /// Parses a stream to its end. The parser frees it, unless a callback is at work.
    std::uint32_t Feed(std::unique_ptr<Kestra::VFS::InputStream> stream) {
        const bool isSending = narrow != nullptr ? narrow->IsSending() : wide != nullptr && wide->IsSending();
        return isSending ? std::uint32_t{KESTRA_HTML_INVALID_ARGUMENT} : parser.ParseStream(stream.release(), true);
    }

    kestra_html_options options;
    Kestra::HTML::GenericParser parser;
    std::unique_ptr<Kestra::C::NarrowSender> narrow;
    std::unique_ptr<Kestra::C::WideSender> wide;
};

using Kestra::C::Guard;
using Kestra::HTML::GenericParser;

namespace {

kestra_html_place MakePlace(const Kestra::HTML::TokenPlace& place) {
    return {place.begin, place.end, place.line, place.column};
}

/// Asks a token that is there. @return 2 when something is null
template <typename Question, typename... Outputs>
std::uint32_t AskToken(const kestra_html_token* token, Question question, const Outputs*... outputs) {
    if (token == nullptr || (... || (outputs == nullptr)))
        return KESTRA_HTML_INVALID_ARGUMENT;
    return Guard([&] { return Kestra::C::Ask(*token, question); });
}

/// Has a parser do what may deliver tokens.
template <typename Call>
std::uint32_t CallParser(kestra_html_parser* parser, Call call) {
    if (parser == nullptr)
        return KESTRA_HTML_INVALID_ARGUMENT;
    const std::uint32_t result = Guard([&] { return call(*parser); });
    return parser->Answer(result);
}

/// Whether a struct of the host says how large it is.
template <typename Struct>
bool HasSize(const Struct& answer) {
    return answer.size >= sizeof(answer.size);
}

template <typename Answer, typename Query>
Answer QueryParser(const kestra_html_parser* parser, Query query) {
    return parser == nullptr ? Answer{} : static_cast<Answer>(query(parser->parser));
}

}  // namespace

uint32_t kestra_html_token_kind(const kestra_html_token* token) {
    return token == nullptr ? 0 : token->kind;
}

uint32_t kestra_html_token_flags(const kestra_html_token* token) {
    return token == nullptr ? 0 : Kestra::C::Ask(*token, [](const auto& asked) { return asked.GetFlags(); });
}

uint32_t kestra_html_token_place(const kestra_html_token* token, kestra_html_place* place) {
    if (token == nullptr || place == nullptr)
        return KESTRA_HTML_INVALID_ARGUMENT;
    *place = MakePlace(token->parser->GetTokenPlace());
    return KESTRA_HTML_OK;
}

uint32_t kestra_html_token_string(const kestra_html_token* token, uint32_t part, kestra_html_string* string) {
    return AskToken(
        token, [&](const auto& asked) { return asked.GetString(part, string); }, string);
}

uint32_t kestra_html_token_decoded_text(const kestra_html_token* token, kestra_html_string* string) {
    return AskToken(
        token, [&](const auto& asked) { return asked.GetDecodedText(string); }, string);
}

uint32_t kestra_html_token_attribute_count(const kestra_html_token* token, size_t* count) {
    const auto ask = [&](const auto& asked) {
        *count = asked.CountAttributes();
        return std::uint32_t{KESTRA_HTML_OK};
    };
    return AskToken(token, ask, count);
}

uint32_t kestra_html_token_summary(const kestra_html_token* token, kestra_html_summary* summary) {
    const auto ask = [&](const auto& asked) {
        return HasSize(*summary) ? asked.Summarize(summary) : std::uint32_t{KESTRA_HTML_INVALID_ARGUMENT};
    };
    return AskToken(token, ask, summary);
}

uint32_t kestra_html_token_attribute(const kestra_html_token* token, size_t index, kestra_html_attribute* attribute) {
    const auto ask = [&](const auto& asked) {
        return HasSize(*attribute) ? asked.GetAttribute(index, attribute) : std::uint32_t{KESTRA_HTML_INVALID_ARGUMENT};
    };
    return AskToken(token, ask, attribute);
}

uint32_t kestra_html_token_decoded_value(const kestra_html_token* token, size_t index, kestra_html_string* value) {
    return AskToken(
        token, [&](const auto& asked) { return asked.GetDecodedValue(index, value); }, value);
}

uint32_t kestra_html_token_attribute_place(const kestra_html_token* token, size_t index,
                                           kestra_html_attribute_place* place) {
    return AskToken(
        token, [&](const auto& asked) { return asked.GetAttributePlace(index, place); }, place);
}

uint32_t kestra_html_token_find_attribute(const kestra_html_token* token, const char* name, size_t name_size,
                                          size_t* index) {
    const auto ask = [&](const auto& asked) { return asked.FindAttribute(std::string_view(name, name_size), index); };
    return AskToken(token, ask, name, index);
}

uint32_t kestra_html_parser_create(const kestra_html_options* options, kestra_html_parser** parser) {
    if (parser == nullptr)
        return KESTRA_HTML_INVALID_ARGUMENT;
    *parser = nullptr;
    kestra_html_options known{};
    if (options != nullptr && !Kestra::C::CopyStruct(options, &known))
        return KESTRA_HTML_INVALID_ARGUMENT;
    if (!Kestra::C::AreGood(known))
        return KESTRA_HTML_INVALID_ARGUMENT;
    return Guard([&] {
        *parser = new kestra_html_parser(known);
        return std::uint32_t{KESTRA_HTML_OK};
    });
}

void kestra_html_parser_destroy(kestra_html_parser* parser) {
    delete parser;
}

uint32_t kestra_html_parser_start(kestra_html_parser* parser, uint32_t charset, uint32_t data_type) {
    if (data_type > KESTRA_HTML_DATA_UTF16)
        return KESTRA_HTML_INVALID_ARGUMENT;
    return CallParser(parser, [&](kestra_html_parser& called) {
        return called.parser.StartParse(charset, static_cast<GenericParser::DataStreamType>(data_type));
    });
}

uint32_t kestra_html_parser_feed(kestra_html_parser* parser, const void* data, size_t size) {
    return CallParser(parser, [&](kestra_html_parser& called) {
        return called.parser.ParseBuffer(static_cast<const char*>(data), size);
    });
}

uint32_t kestra_html_parser_feed_document(kestra_html_parser* parser, const void* data, size_t size) {
    if (data == nullptr && size > 0)
        return KESTRA_HTML_INVALID_ARGUMENT;
    return CallParser(
        parser, [&](kestra_html_parser& called) { return called.Feed(Kestra::C::MakeBorrowedStream(data, size)); });
}

uint32_t kestra_html_parser_feed_stream(kestra_html_parser* parser, const kestra_html_stream* stream) {
    kestra_html_stream known{};
    if (stream == nullptr || !Kestra::C::CopyStruct(stream, &known) || known.read == nullptr)
        return KESTRA_HTML_INVALID_ARGUMENT;
    return CallParser(parser,
                      [&](kestra_html_parser& called) { return called.Feed(Kestra::C::MakeHostStream(known)); });
}

uint32_t kestra_html_parser_feed_file(kestra_html_parser* parser, const char* path) {
    return CallParser(parser, [&](kestra_html_parser& called) {
        return called.parser.ParseFile(Kestra::C::MakeWidePath(path).c_str());
    });
}

uint32_t kestra_html_parser_end(kestra_html_parser* parser) {
    return CallParser(parser, [](kestra_html_parser& called) { return called.parser.EndParse(); });
}

uint32_t kestra_html_parser_stop(kestra_html_parser* parser) {
    return parser == nullptr ? std::uint32_t{KESTRA_HTML_INVALID_ARGUMENT} : parser->parser.Stop();
}

uint32_t kestra_html_parser_charset(const kestra_html_parser* parser) {
    return QueryParser<uint32_t>(parser, [](const GenericParser& asked) { return asked.GetCharset(); });
}

uint32_t kestra_html_parser_is_utf16(const kestra_html_parser* parser) {
    return QueryParser<uint32_t>(parser, [](const GenericParser& asked) { return asked.IsWParser(); });
}

uint32_t kestra_html_parser_used_detector(const kestra_html_parser* parser) {
    return QueryParser<uint32_t>(parser, [](const GenericParser& asked) { return asked.WasCharsetDetectorUsed(); });
}

uint32_t kestra_html_parser_detected_confidence(const kestra_html_parser* parser) {
    return QueryParser<uint32_t>(parser, [](const GenericParser& asked) { return asked.GetDetectedConfidence(); });
}

uint32_t kestra_html_parser_has_charset_errors(const kestra_html_parser* parser) {
    return QueryParser<uint32_t>(parser, [](const GenericParser& asked) { return asked.HasCharsetErrors(); });
}

uint32_t kestra_html_parser_conversion_error(const kestra_html_parser* parser) {
    return QueryParser<uint32_t>(parser, [](const GenericParser& asked) { return asked.GetConversionError(); });
}

uint64_t kestra_html_parser_line(const kestra_html_parser* parser) {
    return QueryParser<uint64_t>(parser, [](const GenericParser& asked) { return asked.GetLine(); });
}

uint64_t kestra_html_parser_column(const kestra_html_parser* parser) {
    return QueryParser<uint64_t>(parser, [](const GenericParser& asked) { return asked.GetColumn(); });
}

uint32_t kestra_html_parser_place(const kestra_html_parser* parser, kestra_html_place* place) {
    if (parser == nullptr || place == nullptr)
        return KESTRA_HTML_INVALID_ARGUMENT;
    *place = MakePlace(parser->parser.GetTokenPlace());
    return KESTRA_HTML_OK;
}

uint32_t kestra_html_parser_set_limits(kestra_html_parser* parser, uint64_t max_token_size, uint64_t max_attributes) {
    if (parser == nullptr)
        return KESTRA_HTML_INVALID_ARGUMENT;
    parser->parser.SetMaxTokenSize(max_token_size);
    parser->parser.SetMaxAttributes(max_attributes);
    return KESTRA_HTML_OK;
}

uint32_t kestra_html_parser_write_copy(kestra_html_parser* parser, kestra_html_write_callback write, void* user) {
    if (parser == nullptr || write == nullptr)
        return KESTRA_HTML_INVALID_ARGUMENT;
    return Guard([&] {
        Kestra::VFS::InputStream* const copy = parser->parser.GetSelfCheckStream();
        if (copy == nullptr)
            return std::uint32_t{KESTRA_HTML_INVALID_ARGUMENT};
        return Kestra::C::WriteStream(copy, write, user);
    });
}

uint32_t kestra_html_check(const void* data, size_t size, uint32_t charset) {
    if (data == nullptr && size > 0)
        return KESTRA_HTML_INVALID_ARGUMENT;
    return Guard([&] { return Kestra::C::CheckDocument(data, size, charset); });
}
