#include "html/parser/Parser.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "html/framework/Scan.h"
#include "html/output/ParserObserverOutput.h"
#include "platform/BufferAllocPolicy.h"
#include "platform/MemoryInputStream.h"
#include "platform/Results.h"
#include "platform/Services.h"

namespace Kestra::HTML {

namespace {

constexpr std::uint64_t READ_BACK_SIZE = 16384;  // bytes per read when a construct is read again

/// Appends what the serializer writes to a string.
template <typename C, typename S>
class AppendingHandler final : public ParserObserverOutputHandler {
public:
    explicit AppendingHandler(S* receivingText) : target(receivingText) {
    }

    void Write(const void* data, std::uint64_t byteCount, bool) override {
        target->append(static_cast<const C*>(data), static_cast<std::size_t>(byteCount / sizeof(C)));
    }

private:
    S* target;
};

/// Compares names as memory: `char_traits` of 16-bit characters goes one by one.
bool IsSameName(WideStringView one, WideStringView other) {
    return one.size() == other.size() && std::memcmp(one.data(), other.data(), one.size() * sizeof(WideChar)) == 0;
}

template <typename C, typename S>
void Call(ParserObserver<C, S>* observer, TextData<C, S>* data) {
    observer->OnText(data);
}

template <typename C, typename S>
void Call(ParserObserver<C, S>* observer, SQuoteStringData<C, S>* data) {
    observer->OnSQuoteString(data);
}

template <typename C, typename S>
void Call(ParserObserver<C, S>* observer, DQuoteStringData<C, S>* data) {
    observer->OnDQuoteString(data);
}

template <typename C, typename S>
void Call(ParserObserver<C, S>* observer, StartTagData<C, S>* data) {
    observer->OnStartTag(data);
}

template <typename C, typename S>
void Call(ParserObserver<C, S>* observer, ShortTagData<C, S>* data) {
    observer->OnShortTag(data);
}

template <typename C, typename S>
void Call(ParserObserver<C, S>* observer, EndTagData<C, S>* data) {
    observer->OnEndTag(data);
}

template <typename C, typename S>
void Call(ParserObserver<C, S>* observer, JunkData<C, S>* data) {
    observer->OnJunkData(data);
}

/// "<br/>" is read as the tag "br/"; a document wants the short tag "br". Only a bare name counts: "<br/ >" stays the tag "br/".
template <typename Data>
void SettleShortTag(Data* data) {
    if (!data->selfClosing && data->closed && data->attributes.empty() && data->suffix.empty() && data->name.size() > 1 &&
        data->name.back() == '/') {
        data->name.pop_back();
        data->selfClosing = true;
    }
}

}  // namespace

/// Who runs when the text recognizer hands over. Without a `begin` the construct fails, with its start recorded.
template <typename C, typename S>
struct Parser<C, S>::TextHandOver {
    WideStringView name;
    std::uint64_t charactersBack;  // from the current place to the first character of the construct
    void (Parser::*begin)();
};

// The opening slash of a regular expression lies in front of its recorded start; hosts rely on it.
template <typename C, typename S>
const typename Parser<C, S>::TextHandOver Parser<C, S>::TEXT_HAND_OVERS[] = {
    {ParserNames::GENERIC_TAG, 1, &Parser::BeginGenericTag},
    {ParserNames::S_QUOTE_STRING, 1, &Parser::BeginSQuoteString},
    {ParserNames::D_QUOTE_STRING, 1, &Parser::BeginDQuoteString},
    {ParserNames::JS_REG_EX, 0, &Parser::BeginJSRegEx},
    {ParserNames::C_COMMENT, 2, nullptr},
    {ParserNames::CPP_COMMENT, 2, nullptr},
};

/// Who runs behind a "<". Without a `begin` the construct fails.
template <typename C, typename S>
struct Parser<C, S>::TagHandOver {
    WideStringView name;
    void (Parser::*begin)();
    const char* textInScript;  // inside script and style the construct is no markup, and these characters are text; null: as outside
};

template <typename C, typename S>
const typename Parser<C, S>::TagHandOver Parser<C, S>::TAG_HAND_OVERS[] = {
    {ParserNames::START_TAG, &Parser::BeginStartTag, "<"},
    {ParserNames::END_TAG, &Parser::BeginEndTag, nullptr},
    {ParserNames::ENTITY_TAG, nullptr, "<!"},
    {ParserNames::EXTERN_TAG, nullptr, "<?"},
};

template <typename C, typename S>
Parser<C, S>::Parser()
    : state(STATE_TEXT),
      currentParserName(ParserNames::TEXT),
      charObserver(nullptr),
      wcharObserver(nullptr),
      inScript(false),
      inStyle(false),
      selfCheckMode(0),
      inputCrc(0),
      outputCrc(0),
      detectCharsetErrors(false),
      hasCharsetErrors(false),
      convertedForObserver(false),
      needsReparsing(false),
      charset(StringNS::CharSet::UNKNOWN),
      discoverCharset(false),
      charsetFromMarkup(false),
      charsetDetectorUsed(false),
      charsetErrors(0),
      pieceBase(0),
      tokenStartPos(0),
      tokenStartBase(0),
      backingStreamPositioned(false),
      tokenStartPositioned(false) {
}

template <typename C, typename S>
Parser<C, S>::Parser(const Parser&) = default;

template <typename C, typename S>
Parser<C, S>& Parser<C, S>::operator=(const Parser&) = default;

template <typename C, typename S>
Parser<C, S>::~Parser() = default;

template <typename C, typename S>
std::uint32_t Parser<C, S>::Start(std::uint64_t markLength) {
    context.Init();
    BackToText();
    tokenStartPos = 0;
    tokenStartBase = markLength;
    pieceBase = markLength;
    backingStreamPositioned = false;
    tokenStartPositioned = false;
    charsetDetectorUsed = false;
    charsetFromMarkup = false;
    inScript = false;
    inStyle = false;
    inputCrc = 0;
    outputCrc = 0;
    hasCharsetErrors = false;
    charsetErrors = 0;
    convertedForObserver = false;
    needsReparsing = false;
    Notify([](auto* observer) { observer->OnStartParsing(); });
    return PARSER_OK;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::Parse(const C* piece, std::uint64_t length, const PieceOrigin& origin) {
    if (length == 0)
        return PARSER_OK;
    context.buffer = piece;
    context.position = 0;
    context.length = length;
    backingStreamPositioned = origin.positioned;
    if (origin.positioned)
        pieceBase = origin.offset;
    if (!origin.fromStream)
        tokenStartPositioned = false;
    while (!Scan::AtEnd(context)) {
        const std::uint32_t stepState = state;
        const std::uint32_t result = Step();
        if (result == SP_NEED_MORE_DATA)
            continue;
        if (result == PARSER_PARSE_AGAIN || stepState == STATE_JUNK || Recover() != PARSER_OK)
            return result;
    }
    return PARSER_OK;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::Step() {
    switch (static_cast<ParserState>(state)) {
    case STATE_TEXT:
        return StepText();
    case STATE_GENERIC_TAG:
        return StepGenericTag();
    case STATE_START_TAG:
        return StepStartTag();
    case STATE_END_TAG:
        return StepEndTag();
    case STATE_JS_REG_EX:
        return StepJSRegEx();
    case STATE_S_QUOTE_STRING:
        return StepSQuoteString();
    case STATE_D_QUOTE_STRING:
        return StepDQuoteString();
    case STATE_JUNK:
        return StepJunk();
    case STATE_COMMENT_TAG:
    case STATE_CDATA_TAG:
    case STATE_CONDITIONAL_TAG:
    case STATE_ENTITY_TAG:
    case STATE_EXTERN_TAG:
    case STATE_C_COMMENT:
    case STATE_CPP_COMMENT:
        break;  // never entered: no hand-over begins them
    }
    return PARSER_UNKNOWN_RECOGNIZER;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::StepText() {
    const bool inRawText = inScript || inStyle;
    textData.allowCComment = inRawText;
    textData.allowCPPComment = inScript;
    textData.allowSQuoteString = inRawText;
    textData.allowDQuoteString = inRawText;
    textData.allowJSRegEx = inScript;
    textData.allowEscape2022 = StringNS::CharSet::IsIso2022(charset);
    const std::uint32_t result = text.Parse(&context, &textData);
    if (result != SP_TOKEN_COMPLETE)
        return result;
    if (!textData.text.empty()) {
        DeliverText(textData.text);
        textData.text.clear();
    }
    for (const TextHandOver& handOver : TEXT_HAND_OVERS) {
        if (!IsSameName(handOver.name, textData.nextParserName))
            continue;
        MarkTokenStart(handOver.charactersBack);
        if (handOver.begin == nullptr)
            break;
        (this->*handOver.begin)();
        return SP_NEED_MORE_DATA;
    }
    return PARSER_UNKNOWN_RECOGNIZER;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::StepGenericTag() {
    const std::uint32_t result = genericTag.Parse(&context, &genericTagData);
    return result == SP_TOKEN_COMPLETE ? BeginNamedTag(genericTagData.nextParser) : result;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::BeginNamedTag(WideStringView name) {
    for (const TagHandOver& handOver : TAG_HAND_OVERS) {
        if (!IsSameName(handOver.name, name))
            continue;
        if ((inScript || inStyle) && handOver.textInScript != nullptr) {
            BackToText(handOver.textInScript);
            return SP_NEED_MORE_DATA;
        }
        if (handOver.begin == nullptr)
            break;
        (this->*handOver.begin)();
        return SP_NEED_MORE_DATA;
    }
    return PARSER_UNKNOWN_RECOGNIZER;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::StepStartTag() {
    const std::uint32_t result = startTag.Parse(&context, &startTagData);
    if (result == SP_NOT_THIS_TOKEN) {
        BackToText("<");
        textData.text += startTagData.prefix;
        textData.text += startTagData.name;
        return SP_NEED_MORE_DATA;
    }
    if (result != SP_TOKEN_COMPLETE)
        return result;
    SettleShortTag(&startTagData);
    DeliverStartTag();
    if (!startTagData.selfClosing)
        SettleScriptAndStyle(startTagData.name, true);
    BackToText();
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::StepEndTag() {
    const std::uint32_t result = endTag.Parse(&context, &endTagData);
    if (result != SP_TOKEN_COMPLETE)
        return result;
    const bool isForeign = (inScript && !EqualsKeyword(endTagData.name, "script")) || (inStyle && !EqualsKeyword(endTagData.name, "style"));
    if (isForeign) {
        BackToText();
        AppendingHandler<C, S> handler(&textData.text);
        const EndTagData<C, S> record = {&endTagData.prefix,     &endTagData.name,           &endTagData.afterName, endTagData.closed,
                                         &endTagData.attributes, endTagData.slashBeforeClose, &endTagData.suffix};
        ParserObserverOutput<C, S>::GetEndTagOutput(&record, &handler);
        return SP_NEED_MORE_DATA;
    }
    DeliverEndTag();
    SettleScriptAndStyle(endTagData.name, false);
    BackToText();
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::StepJSRegEx() {
    const std::uint32_t result = jsRegEx.Parse(&context, &jsRegExData);
    if (result != SP_TOKEN_COMPLETE)
        return result;
    DeliverText(jsRegExData.text);
    FinishToken();
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::StepSQuoteString() {
    const std::uint32_t result = sQuoteString.Parse(&context, &sQuoteStringData);
    if (result != SP_TOKEN_COMPLETE)
        return result;
    DeliverSQuoteString();
    FinishToken();
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::StepDQuoteString() {
    const std::uint32_t result = dQuoteString.Parse(&context, &dQuoteStringData);
    if (result != SP_TOKEN_COMPLETE)
        return result;
    DeliverDQuoteString();
    FinishToken();
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::StepJunk() {
    const std::uint32_t result = junk.Parse(&context, &junkData);
    if (result != SP_TOKEN_COMPLETE)
        return result;
    if (!junkData.text.empty())
        DeliverJunk(junkData.text);
    MarkTokenStart(0);
    if (!Scan::AtEnd(context))
        Scan::Advance(context);
    BeginGenericTag();
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
void Parser<C, S>::BeginGenericTag() {
    genericTag.BeginParse(&genericTagData);
    currentParserName = ParserNames::GENERIC_TAG;
    state = STATE_GENERIC_TAG;
}

template <typename C, typename S>
void Parser<C, S>::BeginStartTag() {
    startTag.BeginParse(&startTagData);
    startTagData.iso2022 = StringNS::CharSet::IsIso2022(charset);
    currentParserName = ParserNames::START_TAG;
    state = STATE_START_TAG;
}

template <typename C, typename S>
void Parser<C, S>::BeginEndTag() {
    endTag.BeginParse(&endTagData);
    endTagData.iso2022 = StringNS::CharSet::IsIso2022(charset);
    currentParserName = ParserNames::END_TAG;
    state = STATE_END_TAG;
}

template <typename C, typename S>
void Parser<C, S>::BeginJSRegEx() {
    jsRegEx.BeginParse(&jsRegExData);
    jsRegExData.allowEscapes = true;
    currentParserName = ParserNames::JS_REG_EX;
    state = STATE_JS_REG_EX;
}

template <typename C, typename S>
void Parser<C, S>::BeginSQuoteString() {
    sQuoteString.BeginParse(&sQuoteStringData);
    sQuoteStringData.allowEscapes = true;
    currentParserName = ParserNames::S_QUOTE_STRING;
    state = STATE_S_QUOTE_STRING;
}

template <typename C, typename S>
void Parser<C, S>::BeginDQuoteString() {
    dQuoteString.BeginParse(&dQuoteStringData);
    dQuoteStringData.allowEscapes = true;
    dQuoteStringData.allowEscape2022 = StringNS::CharSet::IsIso2022(charset);
    currentParserName = ParserNames::D_QUOTE_STRING;
    state = STATE_D_QUOTE_STRING;
}

/// The token begins `charactersBack` in front of the current place; what lies in an earlier piece is out of its reach.
template <typename C, typename S>
void Parser<C, S>::MarkTokenStart(std::uint64_t charactersBack) {
    tokenStartPos = context.position - std::min(charactersBack, context.position);
    tokenStartBase = pieceBase;
    tokenStartPositioned = backingStreamPositioned;
}

template <typename C, typename S>
void Parser<C, S>::BackToText() {
    text.BeginParse(&textData);
    currentParserName = ParserNames::TEXT;
    state = STATE_TEXT;
}

/// What looked like a construct is text, from its first characters on.
template <typename C, typename S>
void Parser<C, S>::BackToText(const char* prefix) {
    BackToText();
    for (; *prefix != 0; ++prefix)
        textData.text += static_cast<C>(*prefix);
}

template <typename C, typename S>
void Parser<C, S>::FinishToken() {
    MarkTokenStart(0);
    BackToText();
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::End() {
    const std::uint32_t result = EndOpenConstruct();
    BackToText();
    SetBackingStream(nullptr);
    if (result != PARSER_OK)
        return result;
    Notify([](auto* observer) { observer->OnEndParsing(); });
    return PARSER_OK;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::EndOpenConstruct() {
    std::uint32_t result = SP_TOKEN_COMPLETE;
    switch (static_cast<ParserState>(state)) {
    case STATE_TEXT:
        result = text.EndParse(&textData);
        if (result == SP_TOKEN_COMPLETE && !textData.text.empty())
            DeliverText(textData.text);
        break;
    case STATE_GENERIC_TAG:
    case STATE_START_TAG:
        result = PARSER_UNTERMINATED;
        break;
    case STATE_END_TAG:
        result = endTag.EndParse(&endTagData);
        if (result == SP_TOKEN_COMPLETE)
            DeliverEndTag();
        break;
    case STATE_JS_REG_EX:
        result = jsRegEx.EndParse(&jsRegExData);
        if (result == SP_TOKEN_COMPLETE)
            DeliverText(jsRegExData.text);
        break;
    case STATE_S_QUOTE_STRING:
        result = sQuoteString.EndParse(&sQuoteStringData);
        if (result == SP_TOKEN_COMPLETE)
            DeliverSQuoteString();
        break;
    case STATE_D_QUOTE_STRING:
        result = dQuoteString.EndParse(&dQuoteStringData);
        if (result == SP_TOKEN_COMPLETE)
            DeliverDQuoteString();
        break;
    case STATE_JUNK:
        result = junk.EndParse(&junkData);
        if (result != SP_TOKEN_COMPLETE)
            return result;
        if (!junkData.text.empty())
            DeliverJunk(junkData.text);
        break;
    case STATE_COMMENT_TAG:
    case STATE_CDATA_TAG:
    case STATE_CONDITIONAL_TAG:
    case STATE_ENTITY_TAG:
    case STATE_EXTERN_TAG:
    case STATE_C_COMMENT:
    case STATE_CPP_COMMENT:
        break;  // never entered: no hand-over begins them
    }
    return result == SP_TOKEN_COMPLETE || Recover() == PARSER_OK ? std::uint32_t{PARSER_OK} : result;
}

/// Delivers the failed construct, from its first character to the current place, as junk, and goes on in the junk state.
template <typename C, typename S>
std::uint32_t Parser<C, S>::Recover() {
    if (!CanReadBack())
        return PARSER_RECOVERY_IMPOSSIBLE;
    std::string bytes;
    const std::uint32_t result = ReadBack(&bytes);
    if (result != PARSER_OK)
        return result;
    DeliverJunk(bytes);
    junk.BeginParse(&junkData);
    state = STATE_JUNK;
    return PARSER_OK;
}

template <typename C, typename S>
bool Parser<C, S>::CanReadBack() const {
    return backingStream.Get() != nullptr && backingStreamPositioned && tokenStartPositioned;
}

/// Reads the token in progress again. Offsets are in bytes; the stream is left where it was.
template <typename C, typename S>
std::uint32_t Parser<C, S>::ReadBack(std::string* bytes) {
    std::uint64_t from = tokenStartBase + tokenStartPos * sizeof(C);
    const std::uint64_t to = pieceBase + context.position * sizeof(C);
    Base::DefaultBufferAllocPolicy buffer;
    buffer.Initialize();
    std::uint32_t result = Base::GetServices().adjustBuffer(&buffer, READ_BACK_SIZE);
    std::uint64_t place = 0;
    if (result == RESULT_OK)
        result = backingStream.Get()->GetPosition(&place);
    if (result == RESULT_OK)
        result = backingStream.Get()->Seek(from);
    while (result == RESULT_OK && from < to) {
        const std::uint64_t wanted = std::min(READ_BACK_SIZE, to - from);
        std::uint64_t count = 0;
        result = backingStream.Get()->Read(buffer.GetData(), wanted, &count);
        if (result == RESULT_OK && count != wanted)
            result = PARSER_SHORT_READ;
        if (result == RESULT_OK)
            bytes->append(buffer.GetData(), static_cast<std::size_t>(count));
        from += wanted;
    }
    return result == RESULT_OK ? backingStream.Get()->Seek(place) : result;
}

template <typename C, typename S>
std::unique_ptr<VFS::InputStream> Parser<C, S>::KeepOpenConstruct() {
    switch (static_cast<ParserState>(state)) {
    case STATE_GENERIC_TAG:
    case STATE_START_TAG:
    case STATE_END_TAG:
    case STATE_ENTITY_TAG:
    case STATE_EXTERN_TAG:
    case STATE_C_COMMENT:
    case STATE_CPP_COMMENT:
    case STATE_S_QUOTE_STRING:
    case STATE_D_QUOTE_STRING:
        break;
    case STATE_TEXT:
    case STATE_COMMENT_TAG:
    case STATE_CDATA_TAG:
    case STATE_CONDITIONAL_TAG:
    case STATE_JS_REG_EX:
    case STATE_JUNK:
        return nullptr;  // the end of the input completes these
    }
    std::string bytes;
    if (!CanReadBack() || ReadBack(&bytes) != PARSER_OK)
        return nullptr;
    return std::make_unique<VFS::MemoryInputStream>(std::move(bytes), tokenStartBase + tokenStartPos * sizeof(C));
}

template <typename C, typename S>
void Parser<C, S>::SetBackingStream(VFS::InputStream* stream) {
    if (stream == backingStream.Get())
        return;
    backingStream = stream;
    backingStreamPositioned = false;
    tokenStartPositioned = false;
}

template <typename C, typename S>
void Parser<C, S>::ReplaceBackingStream(VFS::InputStream* stream) {
    backingStream = stream;
}

template <typename C, typename S>
template <typename Callback>
void Parser<C, S>::Notify(Callback callback) {
    if (charObserver != nullptr)
        callback(charObserver);
    else if (wcharObserver != nullptr)
        callback(wcharObserver);
}

/// Hands a record to the bound observer, converted when that one is of the other flavour. A record that cannot be converted is lost,
/// and the parse goes on.
template <typename C, typename S>
template <typename Record>
void Parser<C, S>::Deliver(Record record) {
    Notify([this, &record](auto* observer) {
        if constexpr (std::is_same_v<decltype(observer), ParserObserver<C, S>*>) {
            Call(observer, &record);
        } else {
            typename RecordOfOtherFlavour<Record>::Type converted{};
            converter.Begin(charset, detectCharsetErrors);
            converter.Convert(record, &converted);
            convertedForObserver = convertedForObserver || converter.HasConverted();
            hasCharsetErrors = hasCharsetErrors || converter.HasReplacements();
            if (converter.GetResult() == 0)
                Call(observer, &converted);
            else
                charsetErrors = converter.GetResult();
        }
    });
}

template <typename C, typename S>
void Parser<C, S>::DeliverText(const S& content) {
    Deliver(TextData<C, S>{&content});
}

template <typename C, typename S>
void Parser<C, S>::DeliverStartTag() {
    if (startTagData.selfClosing)
        Deliver(ShortTagData<C, S>{&startTagData.prefix, &startTagData.name, &startTagData.attributes, &startTagData.suffix,
                                   startTagData.closed});
    else
        Deliver(StartTagData<C, S>{&startTagData.prefix, &startTagData.name, &startTagData.attributes, &startTagData.suffix,
                                   startTagData.closed});
}

template <typename C, typename S>
void Parser<C, S>::DeliverEndTag() {
    Deliver(EndTagData<C, S>{&endTagData.prefix, &endTagData.name, &endTagData.afterName, endTagData.closed, &endTagData.attributes,
                             endTagData.slashBeforeClose, &endTagData.suffix});
}

template <typename C, typename S>
void Parser<C, S>::DeliverSQuoteString() {
    Deliver(SQuoteStringData<C, S>{&sQuoteStringData.text});
}

template <typename C, typename S>
void Parser<C, S>::DeliverDQuoteString() {
    Deliver(DQuoteStringData<C, S>{&dQuoteStringData.text});
}

template <typename C, typename S>
void Parser<C, S>::DeliverJunk(const std::string& bytes) {
    Deliver(JunkData<C, S>{&bytes});
}

/// A `script` or `style` tag was delivered: tells the observer and switches the mode, also when an end tag is a stray one.
template <typename C, typename S>
void Parser<C, S>::SettleScriptAndStyle(const S& name, bool starts) {
    if (EqualsKeyword(name, "script")) {
        Notify([starts](auto* observer) { starts ? observer->OnJSTagStart() : observer->OnJSTagEnd(); });
        inScript = starts;
    } else if (EqualsKeyword(name, "style")) {
        Notify([starts](auto* observer) { starts ? observer->OnCSSTagStart() : observer->OnCSSTagEnd(); });
        inStyle = starts;
    }
}

template <typename C, typename S>
void Parser<C, S>::OnBOM(const void* bytes, std::uint64_t size) {
    Notify([bytes, size](auto* observer) { observer->OnBOM(bytes, size); });
}

template <typename C, typename S>
void Parser<C, S>::OnCharset(StringNS::CharSet::Code code) {
    Notify([code](auto* observer) { observer->OnCharset(code); });
}

template <typename C, typename S>
void Parser<C, S>::SetObservers(ParserObserver<char, std::string>* narrow, ParserObserver<WideChar, WideString>* wide) {
    charObserver = narrow;
    wcharObserver = wide;
}

template <typename C, typename S>
void Parser<C, S>::SetCharset(StringNS::CharSet::Code code) {
    charset = code;
}

template <typename C, typename S>
void Parser<C, S>::SetDiscoverCharset(bool discover) {
    discoverCharset = discover;
}

template <typename C, typename S>
void Parser<C, S>::SetCharsetDetectorUsed(bool used) {
    charsetDetectorUsed = used;
}

template <typename C, typename S>
void Parser<C, S>::SetSelfCheckMode(std::uint32_t mode) {
    selfCheckMode = mode;
}

template <typename C, typename S>
void Parser<C, S>::SetDetectCharsetErrors(bool detect) {
    detectCharsetErrors = detect;
}

template <typename C, typename S>
std::uint64_t Parser<C, S>::GetLine() const {
    return context.line;
}

template <typename C, typename S>
std::uint64_t Parser<C, S>::GetColumn() const {
    return context.column;
}

template <typename C, typename S>
WideStringView Parser<C, S>::GetCurrentParserName() const {
    return currentParserName;
}

template <typename C, typename S>
StringNS::CharSet::Code Parser<C, S>::GetCharset() const {
    return charset;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::GetSelfCheckMode() const {
    return selfCheckMode;
}

template <typename C, typename S>
bool Parser<C, S>::GetDetectCharsetErrors() const {
    return detectCharsetErrors;
}

template <typename C, typename S>
bool Parser<C, S>::HasCharsetErrors() const {
    return detectCharsetErrors && hasCharsetErrors;
}

template <typename C, typename S>
bool Parser<C, S>::NeedsReparsing() const {
    return needsReparsing;
}

template <typename C, typename S>
bool Parser<C, S>::WasCharsetDetectorUsed() const {
    return charsetDetectorUsed;
}

KESTRA_HTML_INSTANTIATE(Parser);

}  // namespace Kestra::HTML
