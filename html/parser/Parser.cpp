#include "html/parser/Parser.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "html/fastpath/WholeTag.h"
#include "html/fastpath/WholeText.h"
#include "html/framework/Instantiate.h"
#include "html/framework/Scan.h"
#include "html/framework/TakeText.h"
#include "html/framework/TokenLimits.h"
#include "html/output/AttributesNormalizer.h"
#include "html/output/Crc32.h"
#include "html/output/ParserObserverOutput.h"
#include "html/output/SelfCheckSink.h"
#include "html/parser/DeclaredCharset.h"
#include "html/parser/RecognizerBuffers.h"
#include "html/parser/RecordCalls.h"
#include "html/tags/TagGrammar.h"
#include "platform/AtScopeEnd.h"
#include "platform/BufferAllocPolicy.h"
#include "platform/MemoryInputStream.h"
#include "platform/Results.h"
#include "platform/Services.h"

namespace Kestra::HTML {

namespace {

constexpr std::uint64_t READ_BACK_SIZE = 16384;       // bytes per read when a construct is read again
constexpr std::uint64_t LEAST_READ_BACK_SIZE = 1024;  // with a limit, as that construct is hardly longer than the limit

/// Which recognizer hands over to another one.
enum Opener : std::uint32_t {
    OPENED_BY_NONE,
    OPENED_BY_TEXT,  // at the characters that stop text
    OPENED_BY_TAG,   // behind "<"
};

/// Appends what the serializer writes to a string.
template <typename C, typename S>
class AppendingHandler final : public ParserObserverOutputHandler {
public:
    explicit AppendingHandler(S* receivingText) : target(receivingText) {}

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
StartTagData<C, S> GetRecord(const StartTagSimpleParserData<C, S>& data) {
    return {&data.prefix, &data.name, &data.attributes, &data.suffix, data.closed};
}

template <typename C, typename S>
EndTagData<C, S> GetRecord(const EndTagSimpleParserData<C, S>& data) {
    return {&data.prefix, &data.name, &data.afterName, data.closed, &data.attributes, data.slashBeforeClose, &data.suffix};
}

/// Characters of one quote of a value.
template <typename C, typename S>
std::uint64_t GetQuoteLength(const Attribute<C, S>& attribute) {
    return attribute.quote == QUOTE_SINGLE || attribute.quote == QUOTE_DOUBLE ? 1 : 0;
}

/// Characters that an attribute has in the document.
template <typename C, typename S>
std::uint64_t GetWrittenLength(const Attribute<C, S>& attribute) {
    const std::uint64_t name = attribute.prefix.size() + attribute.name.size();
    if (!attribute.hasValue)
        return name;
    return name + attribute.beforeEquals.size() + 1 + attribute.afterEquals.size() + attribute.value.size() + 2 * GetQuoteLength(attribute);
}

/// The element whose content follows as text. Browsers see a start tag only where the name follows its "<" at once, and a name only where
/// white space of theirs, "/" or ">" ends it.
template <typename C, typename S>
RawTextElement FindRawTextElement(const StartTagSimpleParserData<C, S>& tag) {
    const std::basic_string_view<C> name = tag.name;
    const std::basic_string_view<C> element = RawText<C, S>::CutName(name);
    if (!tag.closed || !tag.prefix.empty())
        return RawTextElement::NONE;
    const S& following = tag.attributes.empty() ? tag.suffix : tag.attributes[0].prefix;
    const bool isEnded = following.empty() ? tag.attributes.empty() : RawText<C, S>::EndsName(following[0]);
    return isEnded || element.size() < name.size() ? RawText<C, S>::FindElement(element) : RawTextElement::NONE;
}

}  // namespace

/// Brings the driver back to a clean text state when an observer throws, so that the next call starts from there.
template <typename C, typename S>
class Parser<C, S>::Unwinding {
public:
    explicit Unwinding(Parser* runningParser) : parser(runningParser) {}
    Unwinding(const Unwinding&) = delete;
    Unwinding& operator=(const Unwinding&) = delete;
    ~Unwinding() {
        if (parser == nullptr)
            return;
        parser->isWholeTextPending = false;
        parser->BackToText();
        // What is left of the piece is in no token.
        const SimpleParserContext<C, S>& left = parser->context;
        parser->boundaries[parser->lastEnd] = {parser->fedBefore + parser->pieceLength, left.line, left.column};
    }

    /// The call ends in its ordinary way.
    void Cancel() {
        parser = nullptr;
    }

private:
    Parser* parser;
};

/// All that the driver knows about one construct: who names it, how it starts, and what a piece and the end of the input do to it.
template <typename C, typename S>
struct Parser<C, S>::Construct {
    ParserState state;
    std::uint32_t opener;  // an Opener: who hands over to it by name
    WideStringView name;
    std::uint64_t charactersBack;  // from the current place to its first character, when text hands over to it
    const char* textInScript;      // inside script and style it is no markup, and these characters are text; null: as outside
    void (Parser::*begin)();       // null: nobody hands over to it by name
    std::uint32_t (Parser::*parse)();
    std::uint32_t (Parser::*end)();
    bool isOpenAtEnd;  // the end of the input leaves it unfinished, so that its bytes must be read again
};

// In the order of the states. The opening slash of a regular expression lies in front of its recorded start; hosts rely on it.
// clang-format off
template <typename C, typename S>
const typename Parser<C, S>::Construct Parser<C, S>::CONSTRUCTS[] = {
    {STATE_TEXT, OPENED_BY_NONE, ParserNames::TEXT, 0, nullptr,
        nullptr,
        &Parser::ParseText,
        &Parser::EndText, false},
    {STATE_GENERIC_TAG, OPENED_BY_TEXT, ParserNames::GENERIC_TAG, 1, nullptr,
        &Parser::BeginPlain<&Parser::genericTag, &Parser::genericTagData>,
        &Parser::ParseGenericTag,
        &Parser::EndUnfinishedTag, true},
    {STATE_START_TAG, OPENED_BY_TAG, ParserNames::START_TAG, 0, "<",
        &Parser::BeginTag<&Parser::startTag, &Parser::startTagData>,
        &Parser::ParseStartTag,
        &Parser::EndUnfinishedTag, true},
    {STATE_COMMENT_TAG, OPENED_BY_TAG, ParserNames::COMMENT_TAG, 0, nullptr,
        &Parser::BeginPlain<&Parser::commentTag, &Parser::commentTagData>,
        &Parser::ParseConstruct<&Parser::commentTag, &Parser::commentTagData, &Parser::DeliverCommentTag>,
        &Parser::EndConstruct<&Parser::commentTag, &Parser::commentTagData, &Parser::DeliverCommentTag>, false},
    {STATE_CDATA_TAG, OPENED_BY_TAG, ParserNames::CDATA_TAG, 0, nullptr,
        &Parser::BeginSection<&Parser::cdataTag, &Parser::cdataTagData>,
        &Parser::ParseConstruct<&Parser::cdataTag, &Parser::cdataTagData, &Parser::DeliverCDATATag>,
        &Parser::EndConstruct<&Parser::cdataTag, &Parser::cdataTagData, &Parser::DeliverCDATATag>, false},
    {STATE_CONDITIONAL_TAG, OPENED_BY_TAG, ParserNames::CONDITIONAL_TAG, 0, nullptr,
        &Parser::BeginSection<&Parser::conditionalTag, &Parser::conditionalTagData>,
        &Parser::ParseConstruct<&Parser::conditionalTag, &Parser::conditionalTagData, &Parser::DeliverConditionalTag>,
        &Parser::EndConstruct<&Parser::conditionalTag, &Parser::conditionalTagData, &Parser::DeliverConditionalTag>, false},
    {STATE_END_TAG, OPENED_BY_TAG, ParserNames::END_TAG, 0, nullptr,
        &Parser::BeginTag<&Parser::endTag, &Parser::endTagData>,
        &Parser::ParseEndTag,
        &Parser::EndConstruct<&Parser::endTag, &Parser::endTagData, &Parser::DeliverEndTag>, true},
    {STATE_ENTITY_TAG, OPENED_BY_TAG, ParserNames::ENTITY_TAG, 0, "<!",
        &Parser::BeginTag<&Parser::entityTag, &Parser::entityTagData>,
        &Parser::ParseConstruct<&Parser::entityTag, &Parser::entityTagData, &Parser::DeliverEntityTag>,
        &Parser::EndConstruct<&Parser::entityTag, &Parser::entityTagData, &Parser::DeliverEntityTag>, true},
    {STATE_EXTERN_TAG, OPENED_BY_TAG, ParserNames::EXTERN_TAG, 0, "<?",
        &Parser::BeginTag<&Parser::externTag, &Parser::externTagData>,
        &Parser::ParseConstruct<&Parser::externTag, &Parser::externTagData, &Parser::DeliverExternTag>,
        &Parser::EndConstruct<&Parser::externTag, &Parser::externTagData, &Parser::DeliverExternTag>, true},
    {STATE_C_COMMENT, OPENED_BY_TEXT, ParserNames::C_COMMENT, 2, nullptr,
        &Parser::BeginPlain<&Parser::cComment, &Parser::cCommentData>,
        &Parser::ParseConstruct<&Parser::cComment, &Parser::cCommentData, &Parser::DeliverCComment>,
        &Parser::EndConstruct<&Parser::cComment, &Parser::cCommentData, &Parser::DeliverCComment>, true},
    {STATE_CPP_COMMENT, OPENED_BY_TEXT, ParserNames::CPP_COMMENT, 2, nullptr,
        &Parser::BeginPlain<&Parser::cppComment, &Parser::cppCommentData>,
        &Parser::ParseCPPComment,
        &Parser::EndConstruct<&Parser::cppComment, &Parser::cppCommentData, &Parser::DeliverCPPComment>, true},
    {STATE_JS_REG_EX, OPENED_BY_TEXT, ParserNames::JS_REG_EX, 0, nullptr,
        &Parser::BeginLiteral<&Parser::jsRegEx, &Parser::jsRegExData>,
        &Parser::ParseConstruct<&Parser::jsRegEx, &Parser::jsRegExData, &Parser::DeliverJSRegEx>,
        &Parser::EndConstruct<&Parser::jsRegEx, &Parser::jsRegExData, &Parser::DeliverJSRegEx>, false},
    {STATE_S_QUOTE_STRING, OPENED_BY_TEXT, ParserNames::S_QUOTE_STRING, 1, nullptr,
        &Parser::BeginLiteral<&Parser::sQuoteString, &Parser::sQuoteStringData>,
        &Parser::ParseConstruct<&Parser::sQuoteString, &Parser::sQuoteStringData, &Parser::DeliverSQuoteString>,
        &Parser::EndConstruct<&Parser::sQuoteString, &Parser::sQuoteStringData, &Parser::DeliverSQuoteString>, true},
    {STATE_D_QUOTE_STRING, OPENED_BY_TEXT, ParserNames::D_QUOTE_STRING, 1, nullptr,
        &Parser::BeginDQuoteString,
        &Parser::ParseConstruct<&Parser::dQuoteString, &Parser::dQuoteStringData, &Parser::DeliverDQuoteString>,
        &Parser::EndConstruct<&Parser::dQuoteString, &Parser::dQuoteStringData, &Parser::DeliverDQuoteString>, true},
    {STATE_JUNK, OPENED_BY_NONE, ParserNames::JUNK, 0, nullptr,
        nullptr,
        &Parser::ParseJunk,
        &Parser::EndJunk, false},
    {STATE_RAW_TEXT, OPENED_BY_NONE, ParserNames::TEXT, 0, nullptr,
        nullptr,
        &Parser::ParseRawText,
        &Parser::EndRawText, false},
};
// clang-format on

template <typename C, typename S>
auto Parser<C, S>::FindByState(std::uint32_t wanted) -> const Construct* {
    return &CONSTRUCTS[wanted < STATE_C_COMMENT ? wanted : wanted - 1];
}

template <typename C, typename S>
auto Parser<C, S>::FindByName(WideStringView name, std::uint32_t opener) -> const Construct* {
    for (const Construct& construct : CONSTRUCTS) {
        if (construct.opener == opener && IsSameName(construct.name, name))
            return &construct;
    }
    return nullptr;
}

template <typename C, typename S>
Parser<C, S>::Parser()
    : state(STATE_TEXT),
      currentParserName(ParserNames::TEXT),
      isWholeTextPending(false),
      charObserver(nullptr),
      wcharObserver(nullptr),
      inScript(false),
      inStyle(false),
      scriptsAsText(false),
      selfCheckMode(0),
      inputCrc(0),
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
      fedBefore(0),
      tokenStartFed(0),
      bytesDropped(0),
      lastEnd(0),
      backingStreamPositioned(false),
      tokenStartPositioned(false),
      buffersDue(0),
      roomOfLists(0),
      pieceLength(0),
      maxTokenSize(0),
      maxAttributes(0),
      maxTokenLength(UINT64_MAX),
      halted(PARSER_OK) {}

template <typename C, typename S>
Parser<C, S>::Parser(const Parser&) = default;

template <typename C, typename S>
Parser<C, S>::~Parser() = default;

template <typename C, typename S>
void Parser<C, S>::SettleCopy() {
    if (isWholeTextPending)
        textData.text = wholeText;
    isWholeTextPending = false;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::Start(std::uint64_t markLength, bool detectedCharset, std::uint64_t dropped) {
    context.Init();
    BackToText();
    tokenStartPos = 0;
    tokenStartBase = markLength;
    pieceBase = markLength;
    fedBefore = 0;
    tokenStartFed = 0;
    pieceLength = 0;
    halted = PARSER_OK;
    bytesDropped = dropped;
    boundaries[0] = boundaries[1] = Boundary();
    attributeCursor = AttributeCursor();
    backingStreamPositioned = false;
    tokenStartPositioned = false;
    LimitBuffers(true);
    charsetDetectorUsed = detectedCharset;
    charsetFromMarkup = false;
    inScript = false;
    inStyle = false;
    inputCrc = 0;
    selfCheck.Reset(false);
    hasCharsetErrors = false;
    charsetErrors = 0;
    outOfMemory = false;
    convertedForObserver = false;
    needsReparsing = false;
    Notify([](auto* observer) { observer->OnStartParsing(); });
    selfCheck.OnStartParsing();
    selfCheck.Reset(selfCheckMode == 2);
    return halted;
}

template <typename C, typename S>
void Parser<C, S>::SkipTo(std::uint64_t bytes) {
    fedBefore = (bytes - bytesDropped) / sizeof(C);
    boundaries[lastEnd] = {fedBefore, context.line, context.column};
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::Parse(const C* piece, std::uint64_t length, const PieceOrigin& origin) {
    if (halted == PARSER_STOPPED)
        return halted;
    if (length == 0)
        return PARSER_OK;
    if (halted == PARSER_LIMIT_EXCEEDED) {
        halted = PARSER_OK;
        inputCrc = 0;
        selfCheck.Reset(selfCheckMode == 2);
    }
    if (IsSelfChecking())
        inputCrc = UpdateCrc32(inputCrc, piece, length * sizeof(C));
    if (state == STATE_TEXT)
        currentParserName = ParserNames::TEXT;  // a copy made in `OnEndParsing` has the name of the last recognizer
    buffersDue -= std::min(buffersDue, pieceLength);
    fedBefore += pieceLength;
    pieceLength = length;
    context.buffer = piece;
    context.position = 0;
    BeginSlice();
    backingStreamPositioned = origin.positioned;
    if (origin.positioned)
        pieceBase = origin.offset;
    if (!origin.fromStream)
        tokenStartPositioned = false;
    Unwinding unwinding(this);
    // A limit may have been set since the last piece.
    std::uint32_t result = IsTooLongUnderWay() ? PARSER_LIMIT_EXCEEDED : PARSER_OK;
    while (result == PARSER_OK) {
        if (Scan::AtEnd(context)) {
            if (halted != PARSER_OK || context.position == pieceLength)
                break;
            BeginSlice();
        }
        if (context.position >= buffersDue)
            LimitBuffers(false);
        const Construct* const construct = FindByState(state);
        result = (this->*construct->parse)();
        if (result != SP_NEED_MORE_DATA && construct->state != STATE_JUNK)
            result = Recover(result);
        if (result == PARSER_OK && Scan::AtEnd(context) && IsTooLongUnderWay())
            result = PARSER_LIMIT_EXCEEDED;
    }
    unwinding.Cancel();
    if (halted != PARSER_OK)
        return halted;
    if (result == PARSER_LIMIT_EXCEEDED)
        GoBackToToken();
    return result;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::ParseText() {
    if (IsPlainText())
        return ParsePlainText();
    const bool inRawText = inScript || inStyle;
    textData.allowCComment = inRawText;
    textData.allowCPPComment = inScript;
    textData.allowSQuoteString = inRawText;
    textData.allowDQuoteString = inRawText;
    textData.allowJSRegEx = inScript;
    textData.allowEscape2022 = StringNS::CharSet::IsIso2022(charset);
    const C opener = text.ReadUntilOpener(&context, &textData);
    if (opener != 0) {
        DeliverText(1);
        if (opener == '<')
            return ReadTag();
        BeginBehindText(*FindByState(opener == '"' ? STATE_D_QUOTE_STRING : STATE_S_QUOTE_STRING));
        return SP_NEED_MORE_DATA;
    }
    const std::uint32_t result = text.Parse(&context, &textData);
    if (result != SP_TOKEN_COMPLETE)
        return result;
    const Construct* const construct = FindByName(textData.nextParserName, OPENED_BY_TEXT);
    const bool isOpenedByTwo = construct != nullptr && construct->charactersBack == 2;  // "/*" and "//"
    // A "/" may have turned out to be text.
    if (IsTooLong(isOpenedByTwo ? 2 : 1))
        return PARSER_LIMIT_EXCEEDED;
    DeliverText(isOpenedByTwo ? 2 : 1);
    if (construct == nullptr)
        return PARSER_UNKNOWN_RECOGNIZER;
    BeginBehindText(*construct);
    return SP_NEED_MORE_DATA;
}

/// Behind the opener of a construct, the text in front of it delivered.
template <typename C, typename S>
void Parser<C, S>::BeginBehindText(const Construct& construct) {
    MarkTokenStart(construct.charactersBack);
    Begin(construct);
}

/// Text that only a "<" stops.
template <typename C, typename S>
bool Parser<C, S>::IsPlainText() const {
    return state == STATE_TEXT && textData.state == 0 && !inScript && !inStyle && !StringNS::CharSet::IsIso2022(charset);
}

/// Most of a document: plain text and tags that lie in the piece as a whole, one after the other. No recognizer runs.
template <typename C, typename S>
std::uint32_t Parser<C, S>::ParsePlainText() {
    std::uint32_t result = SP_NEED_MORE_DATA;
    while (result == SP_NEED_MORE_DATA && IsPlainText() && context.position < buffersDue) {
        const WholeText<C> run = ReadWholeText(&context);
        if (!run.endsAtTag) {
            textData.text.append(run.characters);
            break;
        }
        DeliverTextWith(run.characters);
        result = ReadTag();
    }
    return result;
}

/// After a "<": the text before it, with its end, which lies in the piece. Most texts do so as a whole.
template <typename C, typename S>
void Parser<C, S>::DeliverTextWith(std::basic_string_view<C> run) {
    if (!textData.text.empty()) {
        textData.text.append(run);
        DeliverText(1);
    } else if (!run.empty()) {
        AssignText(run.data(), run.data() + run.size(), &wholeText);
        isWholeTextPending = true;
        Deliver(TextData<C, S>{&wholeText}, 1);
        isWholeTextPending = false;
    }
}

/// The content of an element that has no markup, and its end tag.
template <typename C, typename S>
std::uint32_t Parser<C, S>::ParseRawText() {
    std::basic_string_view<C> run;
    const bool isAtEndTag = rawText.Read(&context, &textData.text, &run);
    if (!isAtEndTag) {
        textData.text.append(run);
        const std::uint64_t begun = rawText.GetBegun();
        if (begun > 0 && begun <= context.position)  // in this piece
            MarkTokenStart(begun);
        return SP_NEED_MORE_DATA;
    }
    if (rawText.GetBegun() > 0)
        return ParseCutEndTag();
    Scan::Advance(context);
    DeliverTextWith(run);
    return ReadTag();
}

/// An end tag whose first characters lie in earlier pieces, and were taken for content.
template <typename C, typename S>
std::uint32_t Parser<C, S>::ParseCutEndTag() {
    const std::size_t contentLength = textData.text.size() - static_cast<std::size_t>(rawText.GetBegun());
    const S opener = textData.text.substr(contentLength);
    textData.text.resize(contentLength);
    rawText.DropBegun();
    // In the callback only the "<" has been read, wherever the input is cut.
    const std::uint64_t ahead = opener.size() - 1;
    context.position -= ahead;
    context.column -= ahead;
    DeliverText(1);
    if (halted != PARSER_OK)
        return SP_NEED_MORE_DATA;
    context.position += ahead;
    context.column += ahead;
    BeginSlice();  // the callback may have set a limit
    Begin(*FindByState(STATE_END_TAG));
    if (opener.size() == 1) {
        Scan::Advance(context);  // the "/"
        return SP_NEED_MORE_DATA;
    }
    SimpleParserContext<C, S> name;
    name.buffer = opener.data();
    name.position = 2;
    name.length = opener.size();
    return endTag.Parse(&name, &endTagData);
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::ParseGenericTag() {
    const std::uint32_t result = genericTag.Parse(&context, &genericTagData);
    return result == SP_TOKEN_COMPLETE ? BeginNamedTag(genericTagData.nextParser) : result;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::BeginNamedTag(WideStringView name) {
    const Construct* const construct = FindByName(name, OPENED_BY_TAG);
    if (construct == nullptr)
        return PARSER_UNKNOWN_RECOGNIZER;
    BeginTagOrText(*construct);
    return SP_NEED_MORE_DATA;
}

/// After "<", the text before it delivered. Start and end tags are known by the next character, and mostly lie in the piece as a whole:
/// for them no recognizer runs.
template <typename C, typename S>
std::uint32_t Parser<C, S>::ReadTag() {
    const C next = Scan::AtEnd(context) ? C('!') : Scan::Next(context);
    if (next == '!' || next == '?') {
        BeginBehindText(*FindByState(STATE_GENERIC_TAG));
        return SP_NEED_MORE_DATA;
    }
    const bool hasNoEscapeRuns = !StringNS::CharSet::IsIso2022(charset);
    if (next == '/') {
        Scan::Advance(context);
        if (hasNoEscapeRuns) {
            if (const std::optional<WholeTag> tag = WholeTagReader<C, S>(&context).Read(&endTagData)) {
                SetActive(*FindByState(STATE_END_TAG));
                return FinishEndTag(*tag);
            }
        }
        MarkTokenStart(2);
        BeginTagOrText(*FindByState(STATE_END_TAG));
        return SP_NEED_MORE_DATA;
    }
    if (hasNoEscapeRuns && !(inScript || inStyle)) {
        const std::optional<WholeTag> tag = WholeTagReader<C, S>(&context, startTag.maxParts).Read(&startTagData);
        CountParts();
        if (tag) {
            SetActive(*FindByState(STATE_START_TAG));
            return FinishStartTag(*tag);
        }
    }
    MarkTokenStart(1);
    BeginTagOrText(*FindByState(STATE_START_TAG));
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
void Parser<C, S>::BeginTagOrText(const Construct& construct) {
    if ((inScript || inStyle) && construct.textInScript != nullptr)
        BackToText(construct.textInScript);
    else
        Begin(construct);
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::ParseStartTag() {
    const std::uint32_t result = startTag.Parse(&context, &startTagData);
    if (result == SP_NOT_THIS_TOKEN) {
        BackToText("<");
        textData.text += startTagData.prefix;
        textData.text += startTagData.name;
        return SP_NEED_MORE_DATA;
    }
    if (result == SP_TOKEN_COMPLETE && IsTooLong(0))
        return PARSER_LIMIT_EXCEEDED;
    CountParts();
    return result == SP_TOKEN_COMPLETE ? FinishStartTag(RecognizedTag()) : result;
}

template <typename C, typename S>
template <typename Tag>
std::uint32_t Parser<C, S>::FinishStartTag(Tag tag) {
    TagGrammar::SettleShortTag(&startTagData);
    const bool asText = scriptsAsText;
    const RawTextElement element = asText ? FindRawTextElement(startTagData) : RawTextElement::NONE;
    DeliverStartTag();
    if (NeedsOtherCharset())
        return PARSER_PARSE_AGAIN;
    if (asText)
        NotifyOfRawText(element);
    else if (!startTagData.selfClosing)
        SettleScriptAndStyle(startTagData.name, true);
    ReturnToText(tag);
    if (element != RawTextElement::NONE) {
        rawText.Begin(element, StringNS::CharSet::IsIso2022(charset));
        SetActive(*FindByState(STATE_RAW_TEXT));
    }
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::ParseEndTag() {
    const std::uint32_t result = endTag.Parse(&context, &endTagData);
    if (result == SP_TOKEN_COMPLETE && IsTooLong(0))
        return PARSER_LIMIT_EXCEEDED;
    CountParts();
    return result == SP_TOKEN_COMPLETE ? FinishEndTag(RecognizedTag()) : result;
}

template <typename C, typename S>
template <typename Tag>
std::uint32_t Parser<C, S>::FinishEndTag(Tag tag) {
    const bool isForeign = (inScript && !EqualsKeyword(endTagData.name, "script")) || (inStyle && !EqualsKeyword(endTagData.name, "style"));
    if (isForeign) {
        ReturnToText(tag);
        AppendingHandler<C, S> handler(&textData.text);
        const EndTagData<C, S> record = GetRecord(endTagData);
        ParserObserverOutput<C, S>::GetEndTagOutput(&record, &handler);
        return SP_NEED_MORE_DATA;
    }
    DeliverEndTag();
    const std::basic_string_view<C> name = endTagData.name;
    SettleScriptAndStyle(scriptsAsText ? RawText<C, S>::CutName(name) : name, false);
    ReturnToText(tag);
    return SP_NEED_MORE_DATA;
}

/// A construct whose recognizer either needs more or yields one token.
template <typename C, typename S>
template <auto RECOGNIZER, auto DATA, auto DELIVER>
std::uint32_t Parser<C, S>::ParseConstruct() {
    const std::uint32_t result = (this->*RECOGNIZER).Parse(&context, &(this->*DATA));
    if (result != SP_TOKEN_COMPLETE)
        return result;
    if (IsTooLong(0))
        return PARSER_LIMIT_EXCEEDED;
    (this->*DELIVER)();
    FinishToken();
    return SP_NEED_MORE_DATA;
}

/// A line comment is delivered before the section that interrupts it starts.
template <typename C, typename S>
std::uint32_t Parser<C, S>::ParseCPPComment() {
    const std::uint32_t result = cppComment.Parse(&context, &cppCommentData);
    if (result != SP_TOKEN_COMPLETE)
        return result;
    // What looked like the opener of a section may have turned out to be none.
    if (IsTooLong(CountOpenerOfSection()))
        return PARSER_LIMIT_EXCEEDED;
    DeliverCPPComment();
    FinishToken();
    if (cppCommentData.nextParserName.empty())
        return SP_NEED_MORE_DATA;
    TakeText(&cppCommentData.keyword, &genericTagData.keyword);
    return BeginNamedTag(cppCommentData.nextParserName);
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::ParseJunk() {
    const std::uint32_t result = junk.Parse(&context, &junkData);
    if (result != SP_TOKEN_COMPLETE)
        return result;
    if (!junkData.text.empty())
        DeliverJunk();
    MarkTokenStart(0);
    if (!Scan::AtEnd(context))
        Scan::Advance(context);
    Begin(*FindByState(STATE_GENERIC_TAG));
    return SP_NEED_MORE_DATA;
}

/// Makes a construct's recognizer the active one.
template <typename C, typename S>
void Parser<C, S>::Begin(const Construct& construct) {
    (this->*construct.begin)();
    SetActive(construct);
}

template <typename C, typename S>
void Parser<C, S>::SetActive(const Construct& construct) {
    currentParserName = construct.name;
    state = construct.state;
}

template <typename C, typename S>
template <auto RECOGNIZER, auto DATA>
void Parser<C, S>::BeginPlain() {
    (this->*RECOGNIZER).BeginParse(&(this->*DATA));
}

/// A construct with quoted strings, in which an ISO-2022 document may hold escape runs.
template <typename C, typename S>
template <auto RECOGNIZER, auto DATA>
void Parser<C, S>::BeginTag() {
    BeginPlain<RECOGNIZER, DATA>();
    (this->*DATA).iso2022 = StringNS::CharSet::IsIso2022(charset);
}

/// A section whose keyword has been read.
template <typename C, typename S>
template <auto RECOGNIZER, auto DATA>
void Parser<C, S>::BeginSection() {
    BeginPlain<RECOGNIZER, DATA>();
    TakeText(&genericTagData.keyword, &(this->*DATA).keyword);
}

/// A literal of a script or a style sheet.
template <typename C, typename S>
template <auto RECOGNIZER, auto DATA>
void Parser<C, S>::BeginLiteral() {
    BeginPlain<RECOGNIZER, DATA>();
    (this->*DATA).allowEscapes = true;
}

template <typename C, typename S>
void Parser<C, S>::BeginDQuoteString() {
    BeginLiteral<&Parser::dQuoteString, &Parser::dQuoteStringData>();
    dQuoteStringData.allowEscape2022 = StringNS::CharSet::IsIso2022(charset);
}

/// The token begins `charactersBack` in front of the current place; what lies in an earlier piece is out of its reach.
template <typename C, typename S>
void Parser<C, S>::MarkTokenStart(std::uint64_t charactersBack) {
    tokenStartPos = context.position - std::min(charactersBack, context.position);
    tokenStartBase = pieceBase;
    tokenStartFed = fedBefore + tokenStartPos;
    tokenStartPositioned = backingStreamPositioned;
}

/// The token that is about to be delivered ends so many characters before the current place: those of an opener that has been read already,
/// in which there is no line feed. It begins where the one before it ended.
template <typename C, typename S>
void Parser<C, S>::EndToken(std::uint64_t charactersAhead) {
    lastEnd ^= 1U;
    boundaries[lastEnd] = {fedBefore + context.position - charactersAhead, context.line, context.column - charactersAhead};
}

template <typename C, typename S>
void Parser<C, S>::BackToText() {
    text.BeginParse(&textData);
    currentParserName = ParserNames::TEXT;
    state = STATE_TEXT;
}

/// After a tag without a recognizer that of text is as it was, at the beginning of a text; what text may hold is settled when it is read.
template <typename C, typename S>
void Parser<C, S>::ReturnToText(WholeTag) {
    SetActive(*FindByState(STATE_TEXT));
}

template <typename C, typename S>
void Parser<C, S>::ReturnToText(RecognizedTag) {
    BackToText();
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

/// Looks whether too much memory is kept, when no construct is under way: the text of one may lie in any string.
template <typename C, typename S>
void Parser<C, S>::LimitBuffers(bool isNewDocument) {
    if (state != STATE_TEXT && state != STATE_JUNK)
        return;
    const std::uint64_t bytes = Kestra::LimitBuffers(
        isNewDocument, [this](auto& visit) { this->VisitBuffers(visit); }, TokenLimits::GetKeptBytes(maxTokenSize));
    buffersDue = context.position + bytes / sizeof(C);
    roomOfLists = GetRoomOfLists();
}

/// A list of parts takes far more than its characters in the document. With a limit the buffers are looked at as soon as a list has grown.
template <typename C, typename S>
void Parser<C, S>::CountParts() {
    if (maxTokenSize != 0 && GetRoomOfLists() > roomOfLists)
        buffersDue = 0;
}

/// The attributes and items that there is memory for.
template <typename C, typename S>
std::size_t Parser<C, S>::GetRoomOfLists() const {
    return startTagData.attributes.capacity() + endTagData.attributes.capacity() + externTagData.attributes.capacity() +
           entityTagData.tokens.capacity();
}

/// Hands a visitor all that is kept for the next tokens, which is all but the text, or the junk, that is being read.
template <typename C, typename S>
template <typename Visitor>
void Parser<C, S>::VisitBuffers(Visitor& visit) {
    using Buffers = RecognizerBuffers<C, S>;
    if (textData.text.empty() && textData.state == 0)
        Buffers::Visit(text, textData, visit);
    visit(wholeText);
    Buffers::Visit(genericTag, genericTagData, visit);
    Buffers::Visit(startTag, startTagData, visit);
    Buffers::Visit(endTag, endTagData, visit);
    Buffers::Visit(commentTag, commentTagData, visit);
    Buffers::Visit(cdataTag, cdataTagData, visit);
    Buffers::Visit(conditionalTag, conditionalTagData, visit);
    Buffers::Visit(entityTag, entityTagData, visit);
    Buffers::Visit(externTag, externTagData, visit);
    Buffers::Visit(cComment, cCommentData, visit);
    Buffers::Visit(cppComment, cppCommentData, visit);
    Buffers::Visit(sQuoteString, sQuoteStringData, visit);
    Buffers::Visit(dQuoteString, dQuoteStringData, visit);
    if (state != STATE_JUNK)
        Buffers::Visit(junk, junkData, visit);
    Buffers::Visit(jsRegEx, jsRegExData, visit);
    Buffers::Visit(rawText, visit);
    visit(declaredName);
    Buffers::Visit(converter, visit);
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::End() {
    std::uint32_t result = PARSER_OK;
    WideStringView lastParserName;
    {
        Unwinding unwinding(this);
        result = EndOpenConstruct();
        lastParserName = currentParserName;
        if (result == PARSER_LIMIT_EXCEEDED) {
            unwinding.Cancel();
            GoBackToToken();
        }
    }
    SetBackingStream(nullptr);
    if (result != PARSER_OK)
        return result;
    selfCheck.OnEndParsing();
    if (IsSelfChecking() && (!selfCheck.CheckCopy() || inputCrc != selfCheck.GetOutputCrc()))
        return PARSER_SELF_CHECK_FAILED;
    EndToken(0);  // nothing is left: parsing ends where the last token ended
    currentParserName = lastParserName;
    const Unwinding unwinding(this);
    Notify([](auto* observer) { observer->OnEndParsing(); });
    return halted;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::EndOpenConstruct() {
    const Construct* const construct = FindByState(state);
    if (IsTooLong(0))
        return PARSER_LIMIT_EXCEEDED;
    const std::uint32_t result = (this->*construct->end)();
    if (result != SP_TOKEN_COMPLETE && construct->state == STATE_JUNK)
        return result;
    const std::uint32_t settled = result == SP_TOKEN_COMPLETE ? std::uint32_t{PARSER_OK} : Recover(result);
    return settled == PARSER_OK ? halted : settled;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::EndText() {
    const std::uint32_t result = text.EndParse(&textData);
    if (result == SP_TOKEN_COMPLETE)
        DeliverText(0);
    return result;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::EndRawText() {
    rawText.End(&textData.text);
    DeliverText(0);
    return SP_TOKEN_COMPLETE;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::EndUnfinishedTag() {
    return PARSER_UNTERMINATED;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::EndJunk() {
    const std::uint32_t result = junk.EndParse(&junkData);
    if (result == SP_TOKEN_COMPLETE && !junkData.text.empty())
        DeliverJunk();
    return result;
}

template <typename C, typename S>
template <auto RECOGNIZER, auto DATA, auto DELIVER>
std::uint32_t Parser<C, S>::EndConstruct() {
    const std::uint32_t result = (this->*RECOGNIZER).EndParse(&(this->*DATA));
    if (result == SP_TOKEN_COMPLETE)
        (this->*DELIVER)();
    return result;
}

/// Delivers the failed construct, from its first character to the current place, as junk, and goes on in the junk state.
/// @param failure  what the recognizer answered, or what ends the document
/// @return 0; 711; `failure` when it ends the document, or has no recovery
template <typename C, typename S>
std::uint32_t Parser<C, S>::Recover(std::uint32_t failure) {
    if (failure == PARSER_PARSE_AGAIN || failure == PARSER_LIMIT_EXCEEDED)
        return failure;
    if (IsTooLong(0))
        return PARSER_LIMIT_EXCEEDED;
    if (!CanReadBack())
        return failure;
    junk.BeginParse(&junkData);
    if (ReadBack(&junkData.text) != PARSER_OK)
        return failure;
    DeliverJunk();
    junk.BeginParse(&junkData);
    state = STATE_JUNK;
    return PARSER_OK;
}

// Limits and stops cost the loops over text and tags nothing: all of it is done where a piece ends. With a limit of the size a piece is
// read by slices. One ends where the token under way has as many characters as allowed, so that a longer one never lies in a slice as a
// whole; the next one, of a single character, tells whether it ends there. A stop ends the slice, and the piece.

/// Without a limit the rest of the piece; with one, as much as the token under way may have.
template <typename C, typename S>
void Parser<C, S>::BeginSlice() {
    context.length = pieceLength;
    if (halted != PARSER_OK)
        context.length = context.position;
    else if (maxTokenLength != UINT64_MAX)
        context.length =
            context.position + std::min(pieceLength - context.position,
                                        std::max<std::uint64_t>(1, maxTokenLength - std::min(maxTokenLength, GetLengthSoFar())));
    conditionalTag.pieceGoesOn = context.length != pieceLength;
}

/// Characters between the end of the last token and the current place. After an exception the last token ends with the piece.
template <typename C, typename S>
std::uint64_t Parser<C, S>::GetLengthSoFar() const {
    const std::uint64_t begin = boundaries[lastEnd].offset;
    return std::max(begin, fedBefore + context.position) - begin;
}

/// Whether the token that ends so many characters before the current place is longer than allowed.
template <typename C, typename S>
bool Parser<C, S>::IsTooLong(std::uint64_t charactersAhead) const {
    const std::uint64_t length = GetLengthSoFar();
    return length > charactersAhead && length - charactersAhead > maxTokenLength;
}

/// Whether the token under way is longer than allowed whatever follows. Characters that may turn out to be the opener of the next token do
/// not count yet: every way of cutting the document must find the same token too long.
template <typename C, typename S>
bool Parser<C, S>::IsTooLongUnderWay() const {
    if (!IsTooLong(0))
        return false;
    if (state == STATE_TEXT)
        return IsTooLong(textData.state == 1 ? 1 : 0);
    if (state == STATE_RAW_TEXT)
        return IsTooLong(rawText.GetBegun());
    if (state != STATE_CPP_COMMENT)
        return true;
    constexpr std::uint64_t LONGEST_SECTION_OPENER = 8;  // "<![CDATA"
    const std::uint64_t opener = GetLengthSoFar() - 2 - cppCommentData.text.size();
    return IsTooLong(opener <= LONGEST_SECTION_OPENER ? opener : 0);
}

template <typename C, typename S>
void Parser<C, S>::ApplyLimits() {
    maxTokenLength = maxTokenSize == 0 ? UINT64_MAX : maxTokenSize / sizeof(C);
    entityTag.maxParts = TokenLimits::GetMostParts(maxTokenSize);
    startTag.maxParts =
        maxAttributes == 0 ? entityTag.maxParts : static_cast<std::size_t>(std::min<std::uint64_t>(maxAttributes, SIZE_MAX));
    endTag.maxParts = startTag.maxParts;
    externTag.maxParts = startTag.maxParts;
    BeginSlice();
}

/// The token under way is too long: the next call that feeds goes on at its first character.
template <typename C, typename S>
void Parser<C, S>::GoBackToToken() {
    halted = PARSER_LIMIT_EXCEEDED;
    if (state == STATE_JUNK)
        junk.BeginParse(&junkData);
    else if (state == STATE_RAW_TEXT)
        rawText.Restart();
    else
        BackToText();
    textData.text.clear();
    const Boundary& begin = boundaries[lastEnd];
    fedBefore = begin.offset;
    pieceLength = 0;
    context.position = 0;
    context.length = 0;
    context.line = begin.line;
    context.column = begin.column;
    buffersDue = 0;
}

template <typename C, typename S>
void Parser<C, S>::Stop() {
    halted = PARSER_STOPPED;
    BeginSlice();
}

template <typename C, typename S>
bool Parser<C, S>::IsStopped() const {
    return halted == PARSER_STOPPED;
}

template <typename C, typename S>
bool Parser<C, S>::IsHalted() const {
    return halted != PARSER_OK;
}

template <typename C, typename S>
void Parser<C, S>::SetMaxTokenSize(std::uint64_t bytes) {
    maxTokenSize = bytes;
    ApplyLimits();
}

template <typename C, typename S>
std::uint64_t Parser<C, S>::GetMaxTokenSize() const {
    return maxTokenSize;
}

template <typename C, typename S>
void Parser<C, S>::SetMaxAttributes(std::uint64_t count) {
    maxAttributes = count;
    ApplyLimits();
}

template <typename C, typename S>
std::uint64_t Parser<C, S>::GetMaxAttributes() const {
    return maxAttributes;
}

template <typename C, typename S>
bool Parser<C, S>::CanReadBack() const {
    return backingStream.Get() != nullptr && backingStreamPositioned && tokenStartPositioned;
}

/// Reads the token in progress again. Offsets are in bytes; the stream is left where it was. A token has no more bytes than have been fed
/// since it began, whatever the stream says of its position.
template <typename C, typename S>
std::uint32_t Parser<C, S>::ReadBack(std::string* bytes) {
    std::uint64_t from = tokenStartBase + tokenStartPos * sizeof(C);
    const std::uint64_t to = pieceBase + context.position * sizeof(C);
    const std::uint64_t fed = (fedBefore + context.position - tokenStartFed) * sizeof(C);
    if (from < to && to - from > fed)
        return PARSER_SHORT_READ;
    if (readBackBuffer.Get() == nullptr)
        readBackBuffer = std::make_unique<Base::DefaultBufferAllocPolicy>();
    Base::DefaultBufferAllocPolicy& buffer = *readBackBuffer.Get();
    const std::uint64_t size = maxTokenSize == 0 ? READ_BACK_SIZE : std::min(READ_BACK_SIZE, std::max(maxTokenSize, LEAST_READ_BACK_SIZE));
    std::uint32_t result = Base::GetServices().adjustBuffer(&buffer, size);
    std::uint64_t place = 0;
    if (result == RESULT_OK)
        result = backingStream.Get()->GetPosition(&place);
    if (result == RESULT_OK)
        result = backingStream.Get()->Seek(from);
    while (result == RESULT_OK && from < to) {
        const std::uint64_t wanted = std::min(size, to - from);
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
    std::string bytes;
    if (!FindByState(state)->isOpenAtEnd || !CanReadBack() || ReadBack(&bytes) != PARSER_OK)
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

template <typename C, typename S>
bool Parser<C, S>::IsSelfChecking() const {
    return selfCheckMode == 1 || selfCheckMode == 2;
}

/// Hands a record to the self-check, and then to the bound observer.
template <typename C, typename S>
template <typename Record>
void Parser<C, S>::Deliver(Record record, std::uint64_t charactersAhead) {
    EndToken(charactersAhead);
    if (IsSelfChecking())
        WriteToSelfCheck(&selfCheck, record);
    DeliverToObserver(&record);
}

/// A record for an observer of the other flavour is converted. One that cannot be is lost, and the parse goes on.
template <typename C, typename S>
template <typename Record>
void Parser<C, S>::DeliverToObserver(Record* record) {
    Notify([this, record](auto* observer) {
        if constexpr (std::is_same_v<decltype(observer), ParserObserver<C, S>*>) {
            CallObserver(observer, record);
        } else {
            typename RecordOfOtherFlavour<Record>::Type converted{};
            const std::uint32_t result = ConvertRecord(*record, &converted);
            convertedForObserver = convertedForObserver || converter.HasConverted();
            hasCharsetErrors = hasCharsetErrors || converter.HasReplacements() || (detectCharsetErrors && result != RESULT_OK);
            if (result == RESULT_OK) {
                CallObserver(observer, &converted);
            } else {
                charsetErrors = result;
                outOfMemory = outOfMemory.Get() || result == RESULT_OUT_OF_MEMORY;
            }
        }
    });
}

/// @return 0, or why the record is lost
template <typename C, typename S>
template <typename Record, typename Converted>
std::uint32_t Parser<C, S>::ConvertRecord(const Record& record, Converted* converted) {
    converter.Begin(charset, detectCharsetErrors);
    try {
        converter.Convert(record, converted);
    } catch (const std::bad_alloc&) {
        return RESULT_OUT_OF_MEMORY;
    }
    return converter.GetResult();
}

template <typename C, typename S>
void Parser<C, S>::DeliverText(std::uint64_t charactersAhead) {
    if (textData.text.empty())
        return;
    Deliver(TextData<C, S>{&textData.text}, charactersAhead);
    textData.text.clear();
}

template <typename C, typename S>
void Parser<C, S>::DeliverStartTag() {
    const StartTagData<C, S> record = GetRecord(startTagData);
    if (startTagData.selfClosing)
        Deliver(ShortTagData<C, S>{record.prefix, record.name, record.attributes, record.suffix, record.closed});
    else
        Deliver(record);
}

template <typename C, typename S>
void Parser<C, S>::DeliverEndTag() {
    Deliver(GetRecord(endTagData));
}

template <typename C, typename S>
void Parser<C, S>::DeliverCommentTag() {
    Deliver(CommentTagData<C, S>{&commentTagData.text, commentTagData.closed});
}

template <typename C, typename S>
void Parser<C, S>::DeliverCDATATag() {
    Deliver(CDATATagData<C, S>{&cdataTagData.keyword, &cdataTagData.text, cdataTagData.closed});
}

template <typename C, typename S>
void Parser<C, S>::DeliverConditionalTag() {
    Deliver(ConditionalTagData<C, S>{&conditionalTagData.keyword, &conditionalTagData.condition, &conditionalTagData.tail,
                                     conditionalTagData.bracketClosed, conditionalTagData.tagClosed});
}

template <typename C, typename S>
void Parser<C, S>::DeliverEntityTag() {
    CountParts();
    Deliver(EntityTagData<C, S>{&entityTagData.prefix, &entityTagData.name, &entityTagData.tokens, &entityTagData.suffix});
}

template <typename C, typename S>
void Parser<C, S>::DeliverExternTag() {
    CountParts();
    Deliver(ExternTagData<C, S>{&externTagData.prefix, &externTagData.name, &externTagData.attributes, &externTagData.suffix,
                                externTagData.freeStyle, &externTagData.text, externTagData.slashBeforeClose});
}

template <typename C, typename S>
void Parser<C, S>::DeliverCComment() {
    Deliver(CCommentData<C, S>{&cCommentData.text});
}

/// Characters that have been read of the section that interrupts a line comment: "<!--", or "<![" and its word.
template <typename C, typename S>
std::uint64_t Parser<C, S>::CountOpenerOfSection() const {
    if (cppCommentData.nextParserName.empty())
        return 0;
    return cppCommentData.nextParserName == ParserNames::COMMENT_TAG ? 4 : 3 + cppCommentData.keyword.size();
}

/// An 8-bit observer of the 8-bit parser gets no line comments; hosts rely on it.
template <typename C, typename S>
void Parser<C, S>::DeliverCPPComment() {
    EndToken(CountOpenerOfSection());
    CPPCommentData<C, S> record{&cppCommentData.text};
    if (IsSelfChecking())
        WriteToSelfCheck(&selfCheck, record);
    if (std::is_same_v<C, WideChar> || charObserver == nullptr)
        DeliverToObserver(&record);
}

/// A regular expression is text to an observer.
template <typename C, typename S>
void Parser<C, S>::DeliverJSRegEx() {
    Deliver(TextData<C, S>{&jsRegExData.text});
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
void Parser<C, S>::DeliverJunk() {
    Deliver(JunkData<C, S>{&junkData.text});
}

/// A `script` or `style` tag was delivered: tells the observer and switches the mode, also when an end tag is a stray one.
template <typename C, typename S>
void Parser<C, S>::SettleScriptAndStyle(std::basic_string_view<C> name, bool starts) {
    if (EqualsKeyword(name, "script")) {
        if (halted == PARSER_OK)
            Notify([starts](auto* observer) { starts ? observer->OnJSTagStart() : observer->OnJSTagEnd(); });
        inScript = starts;
    } else if (EqualsKeyword(name, "style")) {
        if (halted == PARSER_OK)
            Notify([starts](auto* observer) { starts ? observer->OnCSSTagStart() : observer->OnCSSTagEnd(); });
        inStyle = starts;
    }
}

/// The same for a tag after which the content is text.
template <typename C, typename S>
void Parser<C, S>::NotifyOfRawText(RawTextElement element) {
    if (halted != PARSER_OK)
        return;
    if (element == RawTextElement::SCRIPT)
        Notify([](auto* observer) { observer->OnJSTagStart(); });
    else if (element == RawTextElement::STYLE)
        Notify([](auto* observer) { observer->OnCSSTagStart(); });
}

/// Applies the charset that a `meta` tag declares, the first one that an observer has heard of. In `OnCharset` it is in force, and what
/// follows from it is not yet decided; an exception out of that callback does not change what follows.
/// @return true when text has been converted with another one: the document must be parsed again
template <typename C, typename S>
bool Parser<C, S>::NeedsOtherCharset() {
    if (!discoverCharset || charsetFromMarkup || !EqualsKeyword(startTagData.name, "meta"))
        return false;
    const StringNS::CharSet::Code declared = FindDeclaredCharset(startTagData.attributes, &declaredName);
    if (declared == StringNS::CharSet::UNKNOWN || halted != PARSER_OK)
        return false;
    const bool isTooLate = declared != charset && convertedForObserver;
    const bool isObserved = charObserver != nullptr || wcharObserver != nullptr;
    charset = declared;
    const AtScopeEnd settle([this, isTooLate, isObserved] {
        charsetFromMarkup = isObserved;
        needsReparsing = needsReparsing || isTooLate;
    });
    OnCharset(declared);
    return isTooLate;
}

template <typename C, typename S>
void Parser<C, S>::OnBOM(const void* bytes, std::uint64_t size) {
    fedBefore += size / sizeof(C);
    EndToken(0);
    if (IsSelfChecking()) {
        inputCrc = UpdateCrc32(inputCrc, bytes, size);
        selfCheck.OnBOM(bytes, size);
    }
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
void Parser<C, S>::SetSelfCheckMode(std::uint32_t mode) {
    selfCheckMode = mode;
}

template <typename C, typename S>
void Parser<C, S>::SetScriptsAsText(bool asText) {
    scriptsAsText = asText;
}

template <typename C, typename S>
void Parser<C, S>::SetDetectCharsetErrors(bool detect) {
    detectCharsetErrors = detect;
}

template <typename C, typename S>
TokenPlace Parser<C, S>::GetTokenPlace() const {
    const Boundary& begin = boundaries[lastEnd ^ 1U];
    return {ToBytes(begin.offset), ToBytes(boundaries[lastEnd].offset), begin.line, begin.column};
}

/// From characters of the document to bytes.
template <typename C, typename S>
std::uint64_t Parser<C, S>::ToBytes(std::uint64_t offset) const {
    return bytesDropped + offset * sizeof(C);
}

/// The attributes of the tag that is being delivered.
template <typename C, typename S>
auto Parser<C, S>::GetDeliveredAttributes() const -> DeliveredAttributes {
    const std::uint64_t tagBegin = boundaries[lastEnd ^ 1U].offset;
    switch (state) {
        case STATE_START_TAG:
            return {&startTagData.attributes, tagBegin + 1 + startTagData.prefix.size() + startTagData.name.size(), true};
        case STATE_END_TAG:
            return {&endTagData.attributes, tagBegin + 2 + endTagData.prefix.size() + endTagData.name.size() + endTagData.afterName.size(),
                    false};
        case STATE_EXTERN_TAG:
            return {&externTagData.attributes, tagBegin + 2 + externTagData.prefix.size() + externTagData.name.size(), true};
        default:
            return {nullptr, 0, false};
    }
}

template <typename C, typename S>
bool Parser<C, S>::GetAttributePlace(std::size_t index, AttributePlace* place) const {
    const DeliveredAttributes delivered = GetDeliveredAttributes();
    if (delivered.list == nullptr || index >= delivered.list->size())
        return false;
    *place = PlaceOf((*delivered.list)[index], FindAttribute(delivered, index));
    return true;
}

template <typename C, typename S>
bool Parser<C, S>::GetAttributeParts(std::size_t index, std::vector<AttributePlace>* places) const {
    const DeliveredAttributes delivered = GetDeliveredAttributes();
    if (delivered.list == nullptr || index >= delivered.list->size())
        return false;
    Vector<Attribute<C, S>> parts;
    const bool mayHaveEscapeRuns = StringNS::CharSet::IsIso2022(charset) && !IsAfterBareValue(delivered, index);
    AttributesNormalizer<C, S>::Split((*delivered.list)[index], mayHaveEscapeRuns ? SPLIT_ESCAPE_RUNS : SPLIT_PLAIN, &parts);
    std::vector<AttributePlace> found;
    std::uint64_t offset = FindAttribute(delivered, index);
    for (const Attribute<C, S>& part : parts) {
        found.push_back(PlaceOf(part, offset));
        offset += GetWrittenLength(part);
    }
    places->swap(found);
    return true;
}

template <typename C, typename S>
bool Parser<C, S>::GetTagNameEnd(std::uint64_t* end) const {
    const DeliveredAttributes delivered = GetDeliveredAttributes();
    if (delivered.list == nullptr)
        return false;
    *end = ToBytes(delivered.listBegin - (state == STATE_END_TAG ? endTagData.afterName.size() : 0));
    return true;
}

/// After an unquoted value without words the recognizers of some tags take no escape runs.
template <typename C, typename S>
bool Parser<C, S>::IsAfterBareValue(const DeliveredAttributes& delivered, std::size_t index) const {
    if (!delivered.bareValueEndsEscapeRuns || index == 0)
        return false;
    const Attribute<C, S>& before = (*delivered.list)[index - 1];
    if (!before.hasValue || before.quote != QUOTE_NONE || before.value.empty())
        return false;
    Vector<Attribute<C, S>> parts;
    AttributesNormalizer<C, S>::Split(before, SPLIT_ESCAPE_RUNS, &parts);
    return parts.size() == 1 && parts[0].quote == QUOTE_NONE;
}

/// Adds up what the attributes before it are written as, from the one that was asked for last.
/// @return where the attribute begins, in characters
template <typename C, typename S>
std::uint64_t Parser<C, S>::FindAttribute(const DeliveredAttributes& delivered, std::size_t index) const {
    AttributeCursor& cursor = attributeCursor;
    if (cursor.listBegin != delivered.listBegin || cursor.index > index)
        cursor = {delivered.listBegin, 0, delivered.listBegin};
    for (; cursor.index < index; ++cursor.index)
        cursor.offset += GetWrittenLength((*delivered.list)[cursor.index]);
    return cursor.offset;
}

/// @param offset  where it begins, in characters
template <typename C, typename S>
AttributePlace Parser<C, S>::PlaceOf(const Attribute<C, S>& attribute, std::uint64_t offset) const {
    const std::uint64_t nameBegin = offset + attribute.prefix.size();
    const std::uint64_t nameEnd = nameBegin + attribute.name.size();
    std::uint64_t valueBegin = nameEnd;
    if (attribute.hasValue)
        valueBegin += attribute.beforeEquals.size() + 1 + attribute.afterEquals.size() + GetQuoteLength(attribute);
    AttributePlace place;
    place.begin = ToBytes(offset);
    place.end = ToBytes(offset + GetWrittenLength(attribute));
    place.nameBegin = ToBytes(nameBegin);
    place.nameEnd = ToBytes(nameEnd);
    place.valueBegin = ToBytes(valueBegin);
    place.valueEnd = ToBytes(valueBegin + (attribute.hasValue ? attribute.value.size() : 0));
    return place;
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
bool Parser<C, S>::AreScriptsAsText() const {
    return scriptsAsText;
}

template <typename C, typename S>
VFS::InputStream* Parser<C, S>::GetSelfCheckStream() {
    return selfCheck.GetSelfCheckStream();
}

template <typename C, typename S>
void Parser<C, S>::Rest() {
    BackToText();
    selfCheck.Reset(false);
    BufferRelease release;
    VisitBuffers(release);
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
std::uint32_t Parser<C, S>::GetConversionError() const {
    return charsetErrors;
}

template <typename C, typename S>
bool Parser<C, S>::TakeOutOfMemory() {
    return std::exchange(outOfMemory.Get(), false);
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
