#include "html/stateless/StatelessHTMLParser.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <memory>
#include <new>
#include <string_view>
#include <type_traits>
#include <utility>

#include "html/framework/TokenLimits.h"
#include "platform/BufferAllocPolicy.h"
#include "platform/KeptBuffers.h"
#include "platform/Results.h"
#include "platform/Services.h"
#include "platform/VirtualFileSystem.h"

namespace Kestra::HTML {

/// For `LimitBuffers`: there is no string in it.
template <typename Visitor>
void ForEachString(AttributePlace&, Visitor&) {}

namespace {

enum State : std::uint32_t {
    TEXT = 0,
    AFTER_LESS_THAN = 1,
    EXTERN_TAG = 2,
    AFTER_EXCLAMATION_MARK = 3,
    AFTER_HYPHEN = 4,
    COMMENT = 5,
    END_TAG = 6,
    START_TAG = 7,
    ENTITY_TAG = 8,
    SCRIPT = 9,
    STYLE = 10,
    RAW_TEXT = 11,
    RAW_TEXT_END = 12,
};

enum AttributeState : std::uint32_t { ATTRIBUTE_NAME = 0, ATTRIBUTE_EQUALS = 1, ATTRIBUTE_VALUE = 2 };

enum ValueState : std::uint32_t { VALUE_NOT_BEGUN = 0, VALUE_UNQUOTED = 1, VALUE_SINGLE_QUOTED = 2, VALUE_DOUBLE_QUOTED = 3 };

/// Of start tags, end tags, declarations and instructions. An end tag has no list: its name is followed by its end.
enum TagState : std::uint32_t { TAG_NAME = 0, TAG_LIST = 1, TAG_END = 2, TAG_LAST = 3 };

enum EndTagState : std::uint32_t { END_TAG_NAME = 0, END_TAG_LAST = 1 };

enum CommentState : std::uint32_t { COMMENT_BODY = 0, COMMENT_HYPHEN = 1, COMMENT_TWO_HYPHENS = 2 };

enum ScriptState : std::uint32_t {
    SCRIPT_CODE = 0,
    SCRIPT_BLOCK_COMMENT = 2,
    SCRIPT_LINE_COMMENT = 3,
    SCRIPT_SINGLE_QUOTED = 4,
    SCRIPT_DOUBLE_QUOTED = 5,
    SCRIPT_LESS_THAN = 6,
};

enum StyleState : std::uint32_t { STYLE_RULES = 0, STYLE_LESS_THAN = 1 };

enum RawTextState : std::uint32_t { RAW_CONTENT = 0, RAW_ESCAPED = 1, RAW_DOUBLE_ESCAPED = 2 };

/// The elements whose content may be read as text.
enum RawElement : std::uint32_t { RAW_NONE = 0, RAW_SCRIPT = 1, RAW_STYLE = 2 };

/// The beginnings of their end tags. Nothing ends the last one.
constexpr std::string_view RAW_ENDS[] = {"",      "</script", "</style",   "</textarea", "</title",
                                         "</xmp", "</iframe", "</noembed", "</noframes", "</plaintext"};
constexpr std::uint32_t RAW_PLAINTEXT = std::size(RAW_ENDS) - 1;

constexpr std::string_view ESCAPE_OPENER = "<!-";  // and "-"
constexpr std::string_view NESTED_SCRIPT = "<script";

constexpr std::uint32_t MARKUP_CHOOSES_CHARSET = 1;  // a bit of the flags

constexpr std::string_view SCRIPT_END = "</script>";
constexpr std::string_view STYLE_END = "/style>";  // the "<" in front is no longer there to compare

using Classes = std::uint8_t;

constexpr Classes WHITE_SPACE = 1 << 0;
constexpr Classes NAME_START = 1 << 1;   // letters and "_"
constexpr Classes NAME = 1 << 2;         // letters, digits, "_", ":" and "-"
constexpr Classes TAG_STOP = 1 << 3;     // "?", "/" and ">": an attribute list ends in front of them
constexpr Classes VALUE_STOP = 1 << 4;   // ">" and white space
constexpr Classes SCRIPT_STOP = 1 << 5;  // what may change the state of a script
constexpr Classes LINE_END = 1 << 6;     // CR and LF
constexpr Classes RAW_STOP = 1 << 7;     // "<" and ">": what may change the state of an escaped part

/// In the C locale: no byte from 128 up is in any class.
constexpr std::array<Classes, 256> MakeClassTable() {
    std::array<Classes, 256> table{};
    for (const char space : {' ', '\t', '\n', '\v', '\f', '\r'})
        table[static_cast<unsigned char>(space)] = WHITE_SPACE | VALUE_STOP;
    for (unsigned letter = 0; letter < 26; ++letter) {
        table['a' + letter] = NAME_START | NAME;
        table['A' + letter] = NAME_START | NAME;
    }
    for (unsigned digit = 0; digit < 10; ++digit)
        table['0' + digit] = NAME;
    table['_'] = NAME_START | NAME;
    table[':'] = NAME;
    table['-'] = NAME;
    table['?'] = TAG_STOP;
    table['/'] = TAG_STOP | SCRIPT_STOP;
    table['>'] = TAG_STOP | VALUE_STOP;
    for (const char stop : {'<', '*', '\'', '"'})
        table[static_cast<unsigned char>(stop)] |= SCRIPT_STOP;
    table['<'] |= RAW_STOP;
    table['>'] |= RAW_STOP;
    table['\r'] |= LINE_END;
    table['\n'] |= LINE_END;
    return table;
}

constexpr std::array<Classes, 256> CLASSES = MakeClassTable();

bool Is(unsigned char byte, Classes classes) {
    return (CLASSES[byte] & classes) != 0;
}

/// How many bytes in front of the first one that belongs to `stops`.
std::size_t RunUntil(const unsigned char* bytes, std::uint64_t size, Classes stops) {
    std::size_t count = 0;
    while (count < size && !Is(bytes[count], stops))
        ++count;
    return count;
}

/// How many bytes in front of the first `stop`.
std::size_t RunUntilByte(const unsigned char* bytes, std::uint64_t size, char stop) {
    const void* const found = std::memchr(bytes, stop, static_cast<std::size_t>(size));
    return found == nullptr ? static_cast<std::size_t>(size) : static_cast<std::size_t>(static_cast<const unsigned char*>(found) - bytes);
}

/// Whether browsers end a name there: they know less white space.
bool EndsRawName(unsigned char byte) {
    return byte == '>' || byte == '/' || (Is(byte, WHITE_SPACE) && byte != '\v');
}

std::uint32_t FindRawElement(std::string_view name) {
    const auto* const found = std::find_if(std::begin(RAW_ENDS) + 1, std::end(RAW_ENDS),
                                           [name](std::string_view end) { return EqualsKeyword(name, end.substr(2)); });
    return found == std::end(RAW_ENDS) ? RAW_NONE : static_cast<std::uint32_t>(found - std::begin(RAW_ENDS));
}

bool IsScriptOrStyle(std::uint32_t element) {
    return element == RAW_SCRIPT || element == RAW_STYLE;
}

const char* Characters(const unsigned char* bytes) {
    return reinterpret_cast<const char*>(bytes);
}

/// Takes the part in front of the next separator off `rest`, which is null behind the last one.
std::string_view TakePart(std::string_view* rest, char separator) {
    const std::size_t end = rest->find(separator);
    const std::string_view part = rest->substr(0, end);
    *rest = end == std::string_view::npos ? std::string_view() : rest->substr(end + 1);
    return part;
}

std::string_view StripBlanks(std::string_view part) {
    const std::size_t first = part.find_first_not_of(' ');
    return first == std::string_view::npos ? part.substr(0, 0) : part.substr(first, part.find_last_not_of(' ') - first + 1);
}

/// The last parameter "charset=name" of a content type; empty for none. A part with more than one "=" is none.
std::string_view FindCharSet(std::string_view content) {
    std::string_view name;
    while (content.data() != nullptr) {
        std::string_view parameter = TakePart(&content, ';');
        const std::string_view key = TakePart(&parameter, '=');
        if (parameter.data() != nullptr && parameter.find('=') == std::string_view::npos && EqualsKeyword(StripBlanks(key), "charset"))
            name = StripBlanks(parameter);
    }
    return name;
}

}  // namespace

/// A call that feeds, starts or ends is on the stack: callbacks cannot nest another one.
class StatelessHTMLParser::Busy {
public:
    explicit Busy(StatelessHTMLParser* busyParser) : parser(busyParser) {
        parser->busy = true;
    }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;
    ~Busy() {
        parser->busy = false;
    }

private:
    StatelessHTMLParser* parser;
};

StatelessHTMLParser::StatelessHTMLParser() = default;

StatelessHTMLParser::StatelessHTMLParser(const StatelessHTMLParser&) = default;

StatelessHTMLParser& StatelessHTMLParser::operator=(const StatelessHTMLParser& other) {
    if (this != &other) {
        StatelessHTMLParserData copy(other);
        Observable::operator=(other);
        static_assert(std::is_nothrow_move_assignable_v<StatelessHTMLParserData>);
        StatelessHTMLParserData::operator=(std::move(copy));
        busy = other.busy;
        converter = other.converter;
    }
    return *this;
}

StatelessHTMLParser::~StatelessHTMLParser() = default;

std::uint32_t StatelessHTMLParser::StartParse(StringNS::CharSet::Code newCharset) {
    if (busy.Get())
        return STATELESS_INVALID_ARGUMENT;
    const Busy guard(this);
    charset = newCharset;
    line = 1;
    column = 1;
    cursor = nullptr;
    position = 0;
    length = 0;
    lastByte = 0;
    state = TEXT;
    text.clear();
    heldBack.clear();
    LimitBuffers(true);
    afterNewline = false;
    stopped = false;
    wentOver = false;
    pieceLeft = false;
    pieceOffset = 0;
    attributePlaces.clear();
    BeginToken();
    GetDelegate().Call(ID_START_PARSING);
    started = true;
    return stopped ? STATELESS_STOPPED : STATELESS_OK;
}

std::uint32_t StatelessHTMLParser::EndParse() {
    if (busy.Get())
        return STATELESS_INVALID_ARGUMENT;
    const Busy guard(this);
    if (!started)
        return STATELESS_OK;
    const bool isOver = stopped || wentOver;
    attributePlaces.clear();
    if (!isOver)
        GetDelegate().Call(ID_STOP_PARSING);
    line = 1;
    charset = StringNS::CharSet::UNKNOWN;
    cursor = nullptr;
    position = 0;
    length = 0;
    started = false;
    column = 1;
    return stopped && !isOver ? STATELESS_STOPPED : STATELESS_OK;
}

std::uint32_t StatelessHTMLParser::Stop() {
    if (!busy.Get())
        return STATELESS_INVALID_ARGUMENT;
    stopped = true;
    return STATELESS_OK;
}

std::uint32_t StatelessHTMLParser::SetMaxTokenSize(std::uint64_t bytes) {
    maxTokenSize = bytes;
    ApplyLimits();
    return STATELESS_OK;
}

std::uint64_t StatelessHTMLParser::GetMaxTokenSize() const {
    return maxTokenSize;
}

std::uint32_t StatelessHTMLParser::SetMaxAttributes(std::uint64_t count) {
    maxAttributes = count;
    ApplyLimits();
    return STATELESS_OK;
}

std::uint64_t StatelessHTMLParser::GetMaxAttributes() const {
    return maxAttributes;
}

std::uint32_t StatelessHTMLParser::ParseBuffer(const void* data, std::size_t size) {
    if (busy.Get())
        return STATELESS_INVALID_ARGUMENT;
    const Busy guard(this);
    return ParsePiece(data, size);
}

std::uint32_t StatelessHTMLParser::ParseStream(VFS::InputStream* stream, bool release) {
    if (busy.Get())
        return STATELESS_INVALID_ARGUMENT;
    const Busy guard(this);
    const std::unique_ptr<VFS::InputStream> released(release ? stream : nullptr);
    return stream == nullptr ? std::uint32_t{STATELESS_INVALID_ARGUMENT} : FeedStream(stream);
}

std::uint32_t StatelessHTMLParser::ParseFile(const WideChar* path) {
    if (busy.Get())
        return STATELESS_INVALID_ARGUMENT;
    const std::unique_ptr<VFS::InputStream> stream(VFS::VirtualFileSystem::GetInputStreamEx(path));
    return stream == nullptr ? std::uint32_t{STATELESS_FILE_NOT_OPENED} : ParseStream(stream.get(), false);
}

std::uint32_t StatelessHTMLParser::FeedStream(VFS::InputStream* stream) {
    if (started && stopped)
        return STATELESS_STOPPED;
    Base::DefaultBufferAllocPolicy buffer;
    buffer.Initialize();
    std::uint32_t result = Base::GetServices().adjustBuffer(&buffer, BUFFER_SIZE);
    if (result != RESULT_OK)
        return result;
    while (result == STATELESS_OK || result == STATELESS_NEED_MORE_DATA) {
        std::uint64_t count = 0;
        const std::uint32_t readResult = stream->Read(buffer.GetData(), BUFFER_SIZE, &count);
        if (readResult == RESULT_END_OF_DATA)
            return STATELESS_OK;
        if (readResult != RESULT_OK)
            return readResult;
        if (count > BUFFER_SIZE)
            return RESULT_STREAM_FAILED;  // it claims more than there is room for
        result = ParsePiece(buffer.GetData(), static_cast<std::size_t>(count));
    }
    return result;
}

std::uint32_t StatelessHTMLParser::SetFlags(unsigned long newFlags) {
    flags = static_cast<std::uint32_t>(newFlags);
    return STATELESS_OK;
}

unsigned long StatelessHTMLParser::GetFlags() const {
    return flags;
}

std::uint32_t StatelessHTMLParser::SetScriptMode(ScriptMode newMode) {
    if (newMode != SCRIPT_AS_TOKENS && newMode != SCRIPT_AS_TEXT)
        return STATELESS_INVALID_ARGUMENT;
    scriptsAsText = newMode == SCRIPT_AS_TEXT;
    return STATELESS_OK;
}

StatelessHTMLParser::ScriptMode StatelessHTMLParser::GetScriptMode() const {
    return scriptsAsText ? SCRIPT_AS_TEXT : SCRIPT_AS_TOKENS;
}

std::uint32_t StatelessHTMLParser::GetCurrentLineNumber(std::size_t* out) const {
    *out = static_cast<std::size_t>(line);
    return STATELESS_OK;
}

std::uint32_t StatelessHTMLParser::GetCurrentColumnNumber(std::size_t* out) const {
    *out = static_cast<std::size_t>(column);
    return STATELESS_OK;
}

std::uint32_t StatelessHTMLParser::GetCurrentOffset(std::uint64_t* out) const {
    *out = started ? GetOffset() : 0;
    return STATELESS_OK;
}

std::uint32_t StatelessHTMLParser::GetAttributePlace(std::size_t index, AttributePlace* place) const {
    if (place == nullptr || !busy.Get() || index >= attributePlaces.size())
        return STATELESS_INVALID_ARGUMENT;
    *place = attributePlaces[index];
    return STATELESS_OK;
}

// Walking over the piece

/// What is held back counts as unread.
std::uint64_t StatelessHTMLParser::GetOffset() const {
    return pieceOffset + position - heldBack.size();
}

bool StatelessHTMLParser::AtEnd() const {
    return position >= length;
}

unsigned char StatelessHTMLParser::Next() const {
    return *cursor;
}

/// One byte that is not counted as content.
void StatelessHTMLParser::Consume() {
    ConsumeRun(1);
}

void StatelessHTMLParser::ConsumeRun(std::size_t count) {
    cursor += count;
    position += count;
    column += count;
}

/// Two line breaks in a row count as one; any other byte in between makes them two. Hosts rely on it.
void StatelessHTMLParser::CountContent(unsigned char byte) {
    if (!Is(byte, LINE_END)) {
        ++column;
        afterNewline = false;
    } else if (afterNewline) {
        afterNewline = false;
    } else {
        ++line;
        column = 1;
        afterNewline = true;
    }
}

/// One byte of content counts twice in its column; hosts rely on it.
void StatelessHTMLParser::ConsumeContent() {
    CountContent(Next());
    Consume();
}

void StatelessHTMLParser::ConsumeContentRun(std::size_t count) {
    std::uint64_t newColumn = column;
    bool isAfterNewline = afterNewline;
    for (const unsigned char* const end = cursor + count; cursor != end; ++cursor) {
        if (!Is(*cursor, LINE_END)) {
            newColumn += 2;
            isAfterNewline = false;
        } else if (isAfterNewline) {
            ++newColumn;
            isAfterNewline = false;
        } else {
            ++line;
            newColumn = 2;
            isAfterNewline = true;
        }
    }
    position += count;
    column = newColumn;
    afterNewline = isAfterNewline;
}

/// False when the piece is used up.
bool StatelessHTMLParser::SkipWhiteSpace() {
    while (!AtEnd() && Is(Next(), WHITE_SPACE)) {
        CountContent(Next());
        ++cursor;
        ++position;
    }
    return !AtEnd();
}

/// True when `byte` was the last one consumed, in this piece or an earlier one.
bool StatelessHTMLParser::IsBehind(char byte) const {
    return (position > 0 ? cursor[-1] : lastByte) == static_cast<unsigned char>(byte);
}

std::uint32_t StatelessHTMLParser::ParsePiece(const void* data, std::size_t size) {
    if (!started)
        return STATELESS_NOT_STARTED;
    if (data == nullptr && size > 0)
        return STATELESS_INVALID_ARGUMENT;
    if (stopped && size > 0)
        return STATELESS_STOPPED;
    buffersDue -= std::min(buffersDue, length);
    pieceOffset += length;
    wentOver = wentOver && size == 0;
    cursor = static_cast<const unsigned char*>(data);
    position = 0;
    length = size;
    if (pieceLeft) {
        heldBack.clear();
        BeginToken();
    }
    pieceLeft = true;
    std::uint32_t result = RunMachine();
    pieceLeft = false;
    if (result != STATELESS_STOPPED && GoesOver(0))
        result = STATELESS_LIMIT_EXCEEDED;
    if (position > 0)
        lastByte = cursor[-1];
    if (result == STATELESS_LIMIT_EXCEEDED)
        GoBackToToken();
    return result;
}

// Limits

/// Whether the token under way is longer than allowed with so many more bytes.
bool StatelessHTMLParser::GoesOver(std::size_t count) const {
    return GetOffset() + count - tokenOffset > maxBytes;
}

void StatelessHTMLParser::ApplyLimits() {
    maxBytes = maxTokenSize == 0 ? UINT64_MAX : maxTokenSize;
    maxItems = TokenLimits::GetMostParts(maxTokenSize);
    maxListed = maxAttributes == 0 ? maxItems : static_cast<std::size_t>(std::min<std::uint64_t>(maxAttributes, SIZE_MAX));
}

/// The next byte is the first one of a token.
void StatelessHTMLParser::BeginToken() {
    tokenOffset = GetOffset();
    tokenLine = line;
    tokenColumn = column;
    tokenAfterNewline = afterNewline;
}

/// The token under way went over: the next call that feeds goes on at its first byte.
void StatelessHTMLParser::GoBackToToken() {
    wentOver = true;
    // A script or a style sheet begins with its start tag, another content after it.
    const bool isInContent = (state == RAW_TEXT || state == RAW_TEXT_END) && !IsScriptOrStyle(rawElement);
    state = isInContent ? RAW_TEXT : TEXT;
    rawTextState = RAW_CONTENT;
    text.clear();
    heldBack.clear();
    pieceOffset = tokenOffset;
    cursor = nullptr;
    position = 0;
    length = 0;
    buffersDue = 0;
    line = tokenLine;
    column = tokenColumn;
    afterNewline = tokenAfterNewline;
}

/// A construct is complete: causes its events, unless it went over.
template <typename Event>
std::uint32_t StatelessHTMLParser::FinishToken(Event raiseEvent) {
    if (GoesOver(0))
        return STATELESS_LIMIT_EXCEEDED;
    BeginToken();
    raiseEvent();
    return stopped ? STATELESS_STOPPED : STATELESS_OK;
}

// The main machine

//  state        "<"             "?"    "/"    "!"    "-"    white space   letter, "_"   other
//  0 text       text; to 1      keep                                                    keep
//  1 "<"        703             to 2   to 6   to 3   703    to 7          to 7, unread  703
//  3 "<!"       703             703    703    703    to 4   to 8          to 8, unread  703
//  4 "<!-"      703             703    703    703    to 5   703           703           703
//  2, 5 to 12   the construct's own parser reads on; to 0 when it is complete, from 7 also to 9, 10 or 11, from 11 to 12
std::uint32_t StatelessHTMLParser::RunMachine() {
    std::uint32_t result = STATELESS_OK;
    while (!AtEnd() && result == STATELESS_OK) {
        if (position >= buffersDue)
            LimitBuffers(false);
        switch (static_cast<State>(state)) {
            case TEXT:
                result = ParseText();
                break;
            case AFTER_LESS_THAN:
                result = ParseAfterLessThan();
                break;
            case EXTERN_TAG:
                result = ParseExternTag();
                if (result == STATELESS_OK)
                    result = FinishToken([this] { RaiseExternTag(); });
                break;
            case AFTER_EXCLAMATION_MARK:
                result = ParseAfterExclamationMark();
                break;
            case AFTER_HYPHEN:
                result = ParseAfterHyphen();
                break;
            case COMMENT:
                result = ParseCommentTag();
                if (result == STATELESS_OK) {
                    state = TEXT;
                    result = FinishToken([this] { RaiseString(ID_COMMENT, &identifier); });
                }
                break;
            case END_TAG:
                result = ParseEndTag();
                if (result == STATELESS_OK)
                    result = FinishToken([this] { RaiseEndTag(); });
                break;
            case START_TAG:
                result = ParseStartTag();
                if (result == STATELESS_OK)
                    result = FinishStartTag();
                break;
            case ENTITY_TAG:
                result = ParseEntityTag();
                if (result == STATELESS_OK)
                    result = FinishToken([this] { RaiseEntityTag(); });
                break;
            case SCRIPT:
                result = ParseScriptTag();
                if (result == STATELESS_OK)
                    result = FinishToken([this] { RaiseBody(ID_SCRIPT); });
                break;
            case STYLE:
                result = ParseStyleTag();
                if (result == STATELESS_OK)
                    result = FinishToken([this] { RaiseBody(ID_STYLE); });
                break;
            case RAW_TEXT:
                result = ParseRawText();
                break;
            case RAW_TEXT_END:
                result = ParseRawTextEnd();
                if (result == STATELESS_OK)
                    result = FinishToken([this] { RaiseRawTextEnd(); });
                break;
        }
    }
    return result;
}

/// Looks whether too much memory is kept, when no construct is under way: the text of one may lie in any string.
void StatelessHTMLParser::LimitBuffers(bool isNewDocument) {
    if (state != TEXT)
        return;
    const auto visitBuffers = [this](auto& visit) {
        for (std::string* const string : {&identifier, &value, &tagName})
            visit(*string);
        if (text.empty())
            visit(text);
        visit(attributes);
        visit(attributePlaces);
        visit(tokens);
        visit(wideName);
        visit(wideText);
        visit(wideAttributes);
        visit(wideTokens);
    };
    buffersDue = position + Kestra::LimitBuffers(isNewDocument, visitBuffers, TokenLimits::GetKeptBytes(maxTokenSize));
}

/// State 0: the text up to "<", or that "<".
std::uint32_t StatelessHTMLParser::ParseText() {
    const std::size_t count = RunUntilByte(cursor, length - position, '<');
    if (GoesOver(count))
        return STATELESS_LIMIT_EXCEEDED;
    text.append(Characters(cursor), count);
    ConsumeContentRun(count);
    if (AtEnd())
        return STATELESS_OK;
    if (!text.empty()) {
        BeginToken();
        RaiseString(ID_TEXT, &text);
        if (stopped)
            return STATELESS_STOPPED;
    }
    Consume();
    state = AFTER_LESS_THAN;
    return STATELESS_OK;
}

/// State 1.
std::uint32_t StatelessHTMLParser::ParseAfterLessThan() {
    const unsigned char next = Next();
    if (next == '?') {
        Consume();
        InitExternTagParser();
        state = EXTERN_TAG;
    } else if (next == '/') {
        Consume();
        InitEndTagParser();
        state = END_TAG;
    } else if (next == '!') {
        Consume();
        state = AFTER_EXCLAMATION_MARK;
    } else if (Is(next, WHITE_SPACE | NAME_START)) {
        isBrowsersName = !Is(next, WHITE_SPACE);
        if (!isBrowsersName)
            Consume();
        InitStartTagParser();
        state = START_TAG;
    } else {
        return STATELESS_UNKNOWN_CONSTRUCT;
    }
    return STATELESS_OK;
}

/// State 3.
std::uint32_t StatelessHTMLParser::ParseAfterExclamationMark() {
    const unsigned char next = Next();
    if (next == '-') {
        Consume();
        state = AFTER_HYPHEN;
    } else if (Is(next, WHITE_SPACE | NAME_START)) {
        if (Is(next, WHITE_SPACE))
            Consume();
        InitEntityTagParser();
        state = ENTITY_TAG;
    } else {
        return STATELESS_UNKNOWN_CONSTRUCT;
    }
    return STATELESS_OK;
}

/// State 4.
std::uint32_t StatelessHTMLParser::ParseAfterHyphen() {
    if (Next() != '-')
        return STATELESS_UNKNOWN_CONSTRUCT;
    Consume();
    InitCommentTagParser();
    state = COMMENT;
    return STATELESS_OK;
}

/// A script or a style sheet is reported as one, behind its end tag; a "/" in front of the ">" changes nothing about it.
std::uint32_t StatelessHTMLParser::FinishStartTag() {
    if (scriptsAsText)
        return FinishStartTagAsText();
    if (EqualsKeyword(tagName, "script")) {
        InitScriptTagParser();
        state = SCRIPT;
    } else if (EqualsKeyword(tagName, "style")) {
        InitStyleTagParser();
        state = STYLE;
    } else {
        return FinishToken([this] { RaiseStartTag(); });
    }
    return STATELESS_OK;
}

/// The same when contents are text. An exception out of the callback, or what stops the parser there, ends the content.
std::uint32_t StatelessHTMLParser::FinishStartTagAsText() {
    rawElement = isBrowsersName ? FindRawElement(tagName) : std::uint32_t{RAW_NONE};
    const bool hasContent = rawElement != RAW_NONE;
    selfClosing = selfClosing && !hasContent;
    const std::uint32_t result = IsScriptOrStyle(rawElement) ? STATELESS_OK : FinishToken([this] { RaiseStartTag(); });
    if (result == STATELESS_OK && hasContent)
        InitRawTextParser();
    return result;
}

// Names, values and lists

void StatelessHTMLParser::InitIdentifierParser() {
    identifier.clear();
}

/// A name that ends with its piece goes on in the next one.
std::uint32_t StatelessHTMLParser::ParseIdentifier() {
    if (identifier.empty()) {
        if (!SkipWhiteSpace())
            return STATELESS_NEED_MORE_DATA;
        if (!Is(Next(), NAME_START))
            return STATELESS_NAME_EXPECTED;
    }
    std::size_t count = 0;
    while (count < length - position && Is(cursor[count], NAME))
        ++count;
    if (GoesOver(count))
        return STATELESS_LIMIT_EXCEEDED;
    identifier.append(Characters(cursor), count);
    ConsumeRun(count);
    return AtEnd() ? STATELESS_NEED_MORE_DATA : STATELESS_OK;
}

void StatelessHTMLParser::InitValueParser() {
    value.clear();
    valueState = VALUE_NOT_BEGUN;
}

//  state               "'"        quotation mark   ">"        white space   other
//  0 not begun         to 2       to 3             to 1       skip          to 1
//  1 unquoted          keep       keep             complete   complete      keep
//  2 single-quoted     complete   keep             keep       keep          keep
//  3 double-quoted     keep       complete         keep       keep          keep
//
// Only a closing quote is consumed on completion. One that ends the piece does not complete: the value goes on in the next piece, up to
// another quote, and hosts rely on it.
std::uint32_t StatelessHTMLParser::ParseValue() {
    if (valueState == VALUE_NOT_BEGUN) {
        if (!SkipWhiteSpace())
            return STATELESS_NEED_MORE_DATA;
        valueState = Next() == '\'' ? VALUE_SINGLE_QUOTED : Next() == '"' ? VALUE_DOUBLE_QUOTED : VALUE_UNQUOTED;
        if (valueState != VALUE_UNQUOTED)
            Consume();
        attributePlace.valueBegin = GetOffset();
    }
    if (valueState != VALUE_UNQUOTED)
        return ReadQuoted(valueState == VALUE_SINGLE_QUOTED ? '\'' : '"');
    const std::size_t count = RunUntil(cursor, length - position, VALUE_STOP);
    if (GoesOver(count))
        return STATELESS_LIMIT_EXCEEDED;
    value.append(Characters(cursor), count);
    ConsumeRun(count);
    return AtEnd() ? STATELESS_NEED_MORE_DATA : STATELESS_OK;
}

std::uint32_t StatelessHTMLParser::ReadQuoted(char quote) {
    if (AtEnd())
        return STATELESS_NEED_MORE_DATA;
    const std::size_t count = RunUntilByte(cursor, length - position, quote);
    if (GoesOver(count))
        return STATELESS_LIMIT_EXCEEDED;
    value.append(Characters(cursor), count);
    ConsumeRun(count);
    if (!AtEnd())
        Consume();
    return AtEnd() ? STATELESS_NEED_MORE_DATA : STATELESS_OK;
}

void StatelessHTMLParser::InitAttrParser() {
    attributeState = ATTRIBUTE_NAME;
    InitIdentifierParser();
    value.clear();
    attributePlace.begin = GetOffset();
}

/// One attribute; completes with an empty name when there is none.
std::uint32_t StatelessHTMLParser::ParseAttr() {
    if (AtEnd())
        return STATELESS_NEED_MORE_DATA;
    if (attributeState == ATTRIBUTE_NAME) {
        const std::uint32_t result = ParseIdentifier();
        if (result == STATELESS_NAME_EXPECTED && Is(Next(), TAG_STOP))
            return STATELESS_OK;
        if (result == STATELESS_LIMIT_EXCEEDED)
            return result;
        if (result != STATELESS_OK)
            return SkipBadAttribute();
        attributeState = ATTRIBUTE_EQUALS;
        attributePlace.nameEnd = GetOffset();
        attributePlace.nameBegin = attributePlace.nameEnd - identifier.size();
    }
    if (attributeState == ATTRIBUTE_EQUALS) {
        if (!SkipWhiteSpace())
            return STATELESS_NEED_MORE_DATA;
        if (Next() != '=') {
            value.clear();
            attributePlace.valueBegin = attributePlace.valueEnd = attributePlace.end = attributePlace.nameEnd;
            return STATELESS_OK;
        }
        Consume();
        attributeState = ATTRIBUTE_VALUE;
        InitValueParser();
    }
    const std::uint32_t result = ParseValue();
    attributePlace.end = GetOffset();
    attributePlace.valueEnd = attributePlace.end - (valueState == VALUE_UNQUOTED ? 0 : 1);
    return result;
}

/// An attribute that begins with a byte that no name begins with takes the rest of the tag with it.
std::uint32_t StatelessHTMLParser::SkipBadAttribute() {
    if (!AtEnd()) {
        ConsumeRun(RunUntilByte(cursor, length - position, '>'));
        attributePlace.begin = GetOffset();  // of the attribute that the next piece begins with
    }
    return AtEnd() ? STATELESS_NEED_MORE_DATA : STATELESS_OK;
}

void StatelessHTMLParser::InitAttrsParser() {
    attributes.clear();
    attributePlaces.clear();
    InitAttrParser();
}

std::uint32_t StatelessHTMLParser::ParseAttrs() {
    if (AtEnd())
        return STATELESS_NEED_MORE_DATA;
    for (;;) {
        const std::uint32_t result = ParseAttr();
        if (result != STATELESS_OK || identifier.empty())
            return result;
        if (attributes.size() >= maxListed)
            return STATELESS_LIMIT_EXCEEDED;
        std::pair<std::string, std::string>& attribute = attributes.AppendRecycled();
        attribute.first.swap(identifier);
        attribute.second.swap(value);
        attributePlaces.push_back(attributePlace);
        InitAttrParser();
        attributePlace.begin = attributePlace.end;  // white space after a name has been read already
        if (!SkipWhiteSpace())
            return STATELESS_NEED_MORE_DATA;
        if (Is(Next(), TAG_STOP))
            return STATELESS_OK;
    }
}

void StatelessHTMLParser::InitTokensParser() {
    tokens.clear();
    InitValueParser();
}

std::uint32_t StatelessHTMLParser::ParseTokens() {
    if (AtEnd())
        return STATELESS_NEED_MORE_DATA;
    for (;;) {
        const std::uint32_t result = ParseValue();
        if (result != STATELESS_OK)
            return result;
        if (tokens.size() >= maxItems)
            return STATELESS_LIMIT_EXCEEDED;
        tokens.AppendRecycled().swap(value);
        InitValueParser();
        if (!SkipWhiteSpace())
            return STATELESS_NEED_MORE_DATA;
        if (Next() == '/' || Next() == '>')
            return STATELESS_OK;
    }
}

// Tags. A "/" or "?" that ends the piece completes its tag, and the ">" in the next piece is text; hosts rely on it.

void StatelessHTMLParser::InitStartTagParser() {
    startTagState = TAG_NAME;
    InitIdentifierParser();
}

std::uint32_t StatelessHTMLParser::ParseStartTag() {
    while (!AtEnd()) {
        std::uint32_t result = STATELESS_OK;
        switch (static_cast<TagState>(startTagState)) {
            case TAG_NAME:
                result = ParseIdentifier();
                if (result != STATELESS_OK)
                    return result;
                tagName = identifier;
                isBrowsersName = isBrowsersName && EndsRawName(Next());
                startTagState = TAG_LIST;
                InitAttrsParser();
                break;
            case TAG_LIST:
                result = ParseAttrs();
                if (result != STATELESS_OK)
                    return result;
                startTagState = TAG_END;
                break;
            case TAG_END:
                if (!SkipWhiteSpace())
                    return STATELESS_NEED_MORE_DATA;
                if (Next() != '>' && Next() != '/')
                    return STATELESS_TAG_END_EXPECTED;
                selfClosing = Next() == '/';
                Consume();
                if (!selfClosing)
                    return STATELESS_OK;
                startTagState = TAG_LAST;
                break;
            case TAG_LAST:
                if (Next() != '>')
                    return STATELESS_TAG_END_EXPECTED;
                Consume();
                return STATELESS_OK;
        }
    }
    return STATELESS_OK;
}

void StatelessHTMLParser::InitEndTagParser() {
    endTagState = END_TAG_NAME;
    InitIdentifierParser();
}

std::uint32_t StatelessHTMLParser::ParseEndTag() {
    if (endTagState == END_TAG_NAME) {
        const std::uint32_t result = ParseIdentifier();
        if (result != STATELESS_OK)
            return result;
        tagName = identifier;
        endTagState = END_TAG_LAST;
    }
    if (Next() != '>')
        return STATELESS_TAG_END_EXPECTED;
    Consume();
    return STATELESS_OK;
}

void StatelessHTMLParser::InitEntityTagParser() {
    entityTagState = TAG_NAME;
    InitIdentifierParser();
}

std::uint32_t StatelessHTMLParser::ParseEntityTag() {
    while (!AtEnd()) {
        std::uint32_t result = STATELESS_OK;
        switch (static_cast<TagState>(entityTagState)) {
            case TAG_NAME:
                result = ParseIdentifier();
                if (result != STATELESS_OK)
                    return result;
                tagName = identifier;
                entityTagState = TAG_LIST;
                InitTokensParser();
                break;
            case TAG_LIST:
                result = ParseTokens();
                if (result != STATELESS_OK)
                    return result;
                entityTagState = TAG_END;
                break;
            case TAG_END:
                if (!SkipWhiteSpace())
                    return STATELESS_NEED_MORE_DATA;
                if (Next() != '>' && Next() != '/')
                    return STATELESS_TAG_END_EXPECTED;
                entityTagState = TAG_LAST;
                if (Next() == '/')
                    Consume();
                break;
            case TAG_LAST:
                if (Next() != '>')
                    return STATELESS_TAG_END_EXPECTED;
                Consume();
                return STATELESS_OK;
        }
    }
    return STATELESS_OK;
}

void StatelessHTMLParser::InitExternTagParser() {
    externTagState = TAG_NAME;
    InitIdentifierParser();
}

std::uint32_t StatelessHTMLParser::ParseExternTag() {
    while (!AtEnd()) {
        std::uint32_t result = STATELESS_OK;
        switch (static_cast<TagState>(externTagState)) {
            case TAG_NAME:
                result = ParseIdentifier();
                if (result != STATELESS_OK)
                    return result;
                tagName = identifier;
                externTagState = TAG_LIST;
                InitAttrsParser();
                break;
            case TAG_LIST:
                result = ParseAttrs();
                if (result != STATELESS_OK)
                    return result;
                externTagState = TAG_END;
                break;
            case TAG_END:
                if (!SkipWhiteSpace())
                    return STATELESS_NEED_MORE_DATA;
                // An unquoted value takes the "?" with it.
                if (Next() == '?')
                    Consume();
                else if (!IsBehind('?'))
                    return STATELESS_TAG_END_EXPECTED;
                externTagState = TAG_LAST;
                break;
            case TAG_LAST:
                if (Next() != '>')
                    return STATELESS_TAG_END_EXPECTED;
                Consume();
                return STATELESS_OK;
        }
    }
    return STATELESS_OK;
}

// Bodies

void StatelessHTMLParser::InitCommentTagParser() {
    commentState = COMMENT_BODY;
    InitIdentifierParser();
}

//  state     "-"            ">"          other        end of the piece
//  0 body    to 1           keep         keep         complete
//  1 "-"     to 2           keep, to 0   keep, to 0   complete
//  2 "--"    "---", to 0    complete     "--", to 0   complete
//
// A hyphen that no other one follows is lost, and a comment is over with its piece; hosts rely on both.
std::uint32_t StatelessHTMLParser::ParseCommentTag() {
    while (!AtEnd()) {
        switch (static_cast<CommentState>(commentState)) {
            case COMMENT_BODY: {
                const std::size_t count = RunUntilByte(cursor, length - position, '-');
                if (GoesOver(count))
                    return STATELESS_LIMIT_EXCEEDED;
                identifier.append(Characters(cursor), count);
                ConsumeRun(count);
                if (!AtEnd()) {
                    Consume();
                    commentState = COMMENT_HYPHEN;
                }
                break;
            }
            case COMMENT_HYPHEN:
                if (Next() == '-') {
                    Consume();
                    commentState = COMMENT_TWO_HYPHENS;
                } else {
                    identifier += static_cast<char>(Next());
                    ConsumeContent();
                    commentState = COMMENT_BODY;
                }
                break;
            case COMMENT_TWO_HYPHENS:
                if (Next() == '>') {
                    Consume();
                    return STATELESS_OK;
                }
                identifier += "--";
                identifier += static_cast<char>(Next());
                ConsumeContent();
                commentState = COMMENT_BODY;
                break;
        }
    }
    return STATELESS_OK;
}

void StatelessHTMLParser::InitScriptTagParser() {
    text.clear();
    scriptState = SCRIPT_CODE;
}

//  state               "/"           "*"           "'"       '"'       "<"    CR, LF   other
//  0 code              keep, or      keep, or      to 4      to 5      to 6   keep     keep
//                      "//": to 3    "/*": to 2
//  2 block comment     "*/": to 0    drop          drop      drop      drop   drop     drop
//  3 line comment      drop          drop          drop      drop      drop   to 0     drop
//  4, 5 quoted         keep          keep          4: to 0   5: to 0   keep   keep     keep
//  6 after "<"         compared with the end tag: complete when it is there; back to the code, to 0, when it is not
std::uint32_t StatelessHTMLParser::ParseScriptTag() {
    while (!AtEnd()) {
        const unsigned char next = Next();
        std::uint32_t result = STATELESS_OK;
        switch (static_cast<ScriptState>(scriptState)) {
            case SCRIPT_CODE:
                result = ParseScriptCode();
                break;
            case SCRIPT_BLOCK_COMMENT:
                if (next == '/' && scriptPrevious == '*')
                    scriptState = SCRIPT_CODE;
                else
                    scriptPrevious = next;
                Consume();
                break;
            case SCRIPT_LINE_COMMENT:
                if (Is(next, LINE_END))
                    scriptState = SCRIPT_CODE;
                Consume();
                break;
            case SCRIPT_SINGLE_QUOTED:
            case SCRIPT_DOUBLE_QUOTED:
                result = ParseScriptString();
                break;
            case SCRIPT_LESS_THAN:
                if (ParseScriptEnd())
                    return STATELESS_OK;
                break;
        }
        if (result != STATELESS_OK)
            return result;
    }
    return STATELESS_NEED_MORE_DATA;
}

/// State 0: a run of code, or a byte that may end it.
std::uint32_t StatelessHTMLParser::ParseScriptCode() {
    const std::size_t count = RunUntil(cursor, length - position, SCRIPT_STOP);
    if (GoesOver(count))
        return STATELESS_LIMIT_EXCEEDED;
    text.append(Characters(cursor), count);
    ConsumeContentRun(count);
    if (AtEnd())
        return STATELESS_OK;
    const unsigned char next = Next();
    const bool isBehindSlash = !text.empty() && text.back() == '/';
    if (next == '<') {
        scriptEnd.assign(1, '<');
        scriptState = SCRIPT_LESS_THAN;
        Consume();
    } else if ((next == '/' || next == '*') && isBehindSlash) {
        text.pop_back();
        scriptPrevious = ' ';
        scriptState = next == '/' ? SCRIPT_LINE_COMMENT : SCRIPT_BLOCK_COMMENT;
        Consume();
    } else if (next == '\'' || next == '"') {
        text += static_cast<char>(next);
        scriptPrevious = ' ';
        scriptState = next == '\'' ? SCRIPT_SINGLE_QUOTED : SCRIPT_DOUBLE_QUOTED;
        Consume();
    } else {
        text += static_cast<char>(next);
        ConsumeContent();
    }
    return STATELESS_OK;
}

/// States 4 and 5: what comes before a quote, and that quote.
std::uint32_t StatelessHTMLParser::ParseScriptString() {
    const char quote = scriptState == SCRIPT_SINGLE_QUOTED ? '\'' : '"';
    const std::size_t count = RunUntilByte(cursor, length - position, quote);
    if (GoesOver(count))
        return STATELESS_LIMIT_EXCEEDED;
    text.append(Characters(cursor), count);
    if (count > 0)
        scriptPrevious = cursor[count - 1];
    ConsumeRun(count);
    if (AtEnd())
        return STATELESS_OK;
    text += quote;
    if (scriptPrevious != '\\')
        scriptState = SCRIPT_CODE;
    else
        scriptPrevious = static_cast<unsigned char>(quote);
    Consume();
    return STATELESS_OK;
}

/// State 6. True when the end tag is complete. A "<" right behind another one begins no end tag; hosts rely on it.
bool StatelessHTMLParser::ParseScriptEnd() {
    scriptEnd += static_cast<char>(Next());
    ConsumeContent();
    if (EqualsKeyword(scriptEnd, SCRIPT_END.substr(0, scriptEnd.size())))
        return scriptEnd.size() == SCRIPT_END.size();
    text += scriptEnd;
    scriptState = SCRIPT_CODE;
    return false;
}

void StatelessHTMLParser::InitStyleTagParser() {
    text.clear();
    styleState = STYLE_RULES;
}

//  state          "<"    other
//  0 rules        to 1   keep
//  1 after "<"    compared with the end tag: complete when it is there; back to the rules, to 0, when it is not
std::uint32_t StatelessHTMLParser::ParseStyleTag() {
    while (!AtEnd()) {
        switch (static_cast<StyleState>(styleState)) {
            case STYLE_RULES: {
                const std::size_t count = RunUntilByte(cursor, length - position, '<');
                if (GoesOver(count))
                    return STATELESS_LIMIT_EXCEEDED;
                text.append(Characters(cursor), count);
                ConsumeContentRun(count);
                if (!AtEnd()) {
                    styleEnd.clear();
                    Consume();
                    styleState = STYLE_LESS_THAN;
                }
                break;
            }
            case STYLE_LESS_THAN:
                if (ParseStyleEnd())
                    return STATELESS_OK;
                break;
        }
    }
    return STATELESS_NEED_MORE_DATA;
}

/// State 1. True when the end tag is complete. A "<" that does not begin it is lost; hosts rely on it.
bool StatelessHTMLParser::ParseStyleEnd() {
    styleEnd += static_cast<char>(Next());
    ConsumeContent();
    if (EqualsKeyword(styleEnd, STYLE_END.substr(0, styleEnd.size())))
        return styleEnd.size() == STYLE_END.size();
    text += styleEnd;
    styleState = STYLE_RULES;
    return false;
}

void StatelessHTMLParser::InitRawTextParser() {
    text.clear();
    heldBack.clear();
    rawTextState = RAW_CONTENT;
    state = RAW_TEXT;
}

//  state              "<!--"   "<script"   "</script"   ">" after "--"   other
//  0 content          to 1     keep        complete     keep             keep
//  1 escaped          keep     to 2        complete     to 0             keep
//  2 double escaped   keep     keep        to 1         to 0             keep
//
// States 1 and 2 are those of a script; other elements stay in state 0 and are complete at their own name. A name counts only
// with what ends it in browsers after it. The hyphens of "<!--" count for the ">".
std::uint32_t StatelessHTMLParser::ParseRawText() {
    while (!AtEnd()) {
        if (!heldBack.empty()) {
            if (JudgeHeldBack())
                return FinishRawText();
            continue;
        }
        const std::uint64_t left = length - position;
        std::size_t count = static_cast<std::size_t>(left);
        if (rawElement != RAW_PLAINTEXT)
            count = rawTextState == RAW_CONTENT ? RunUntilByte(cursor, left, '<') : RunUntil(cursor, left, RAW_STOP);
        if (GoesOver(count))
            return STATELESS_LIMIT_EXCEEDED;
        text.append(Characters(cursor), count);
        ConsumeContentRun(count);
        if (AtEnd())
            break;
        if (Next() == '<') {
            HoldBack();
        } else {
            if (text.ends_with("--"))
                rawTextState = RAW_CONTENT;
            text += '>';
            ConsumeContent();
        }
    }
    return IsScriptOrStyle(rawElement) ? STATELESS_NEED_MORE_DATA : STATELESS_OK;
}

/// The next byte neither belongs to the content nor is it counted until it is known what it is part of.
void StatelessHTMLParser::HoldBack() {
    heldBack += static_cast<char>(Next());
    ++cursor;
    ++position;
}

/// Looks at the byte after what is held back. True when it ends the name of the end tag, and it stays unread.
bool StatelessHTMLParser::JudgeHeldBack() {
    const char next = static_cast<char>(Next());
    const auto mayBegin = [&](std::string_view mark) {
        const std::size_t size = heldBack.size();
        return size < mark.size() && EqualsKeyword(heldBack, mark.substr(0, size)) &&
               EqualsKeyword(std::string_view(&next, 1), mark.substr(size, 1));
    };
    const std::string_view end = RAW_ENDS[rawElement];
    std::string_view opener;
    if (rawElement == RAW_SCRIPT && rawTextState != RAW_DOUBLE_ESCAPED)
        opener = rawTextState == RAW_CONTENT ? ESCAPE_OPENER : NESTED_SCRIPT;
    if (mayBegin(end) || mayBegin(opener)) {
        HoldBack();
        return false;
    }
    if (EqualsKeyword(heldBack, end) && EndsRawName(Next())) {
        if (rawTextState != RAW_DOUBLE_ESCAPED)
            return true;
        rawTextState = RAW_ESCAPED;
    } else if (EqualsKeyword(heldBack, opener) && (opener == ESCAPE_OPENER ? next == '-' : EndsRawName(Next()))) {
        ++rawTextState;
    }
    for (const char byte : heldBack)
        CountContent(static_cast<unsigned char>(byte));
    column += heldBack.size();
    text += heldBack;
    heldBack.clear();
    return false;
}

/// The content is complete. In its event the parser is before the end tag, however the input is cut.
std::uint32_t StatelessHTMLParser::FinishRawText() {
    if (!IsScriptOrStyle(rawElement) && !text.empty()) {
        if (GoesOver(0))
            return STATELESS_LIMIT_EXCEEDED;
        BeginToken();
        state = TEXT;  // an exception ends the content
        RaiseString(ID_TEXT, &text);
        if (stopped)
            return STATELESS_STOPPED;
    }
    tagName.assign(heldBack, 2);
    column += heldBack.size();
    heldBack.clear();
    state = RAW_TEXT_END;
    return STATELESS_OK;
}

/// What stands between the name of such an end tag and its ">" is dropped.
std::uint32_t StatelessHTMLParser::ParseRawTextEnd() {
    while (!AtEnd() && Next() != '>') {
        CountContent(Next());
        ++cursor;
        ++position;
    }
    if (AtEnd())
        return STATELESS_NEED_MORE_DATA;
    Consume();
    return STATELESS_OK;
}

// From bytes to events

bool StatelessHTMLParser::MayChangeCharSet() const {
    return charset == StringNS::CharSet::UNKNOWN || (flags & MARKUP_CHOOSES_CHARSET) != 0;
}

std::uint32_t StatelessHTMLParser::CharSetKnown() const {
    return charset != StringNS::CharSet::UNKNOWN ? STATELESS_OK : STATELESS_NO_CHARSET;
}

/// `<meta http-equiv=Content-Type content='...; charset=name'>`; the attribute `charset` is not looked at.
std::uint32_t StatelessHTMLParser::GetCharSetFromStartTag() {
    if (!MayChangeCharSet())
        return STATELESS_INVALID_ARGUMENT;
    if (!EqualsKeyword(tagName, "meta"))
        return CharSetKnown();
    std::string_view httpEquiv;
    std::string_view name;
    for (const auto& [attributeName, attributeValue] : attributes) {
        if (EqualsKeyword(attributeName, "http-equiv")) {
            httpEquiv = attributeValue;
        } else if (EqualsKeyword(attributeName, "content")) {
            const std::string_view found = FindCharSet(attributeValue);
            if (found.data() != nullptr)
                name = found;
        }
    }
    if (EqualsKeyword(httpEquiv, "content-type") && !name.empty()) {
        ToWide(StringNS::CharSet::UNKNOWN, std::string(name), &wideName);
        charset = StringNS::CharSet::GetCharSetCode(wideName);
    }
    return CharSetKnown();
}

/// `<?xml encoding='name'?>`; the first such attribute counts.
std::uint32_t StatelessHTMLParser::GetCharSetFromExternTag() {
    if (!MayChangeCharSet())
        return STATELESS_INVALID_ARGUMENT;
    if (!EqualsKeyword(tagName, "xml"))
        return CharSetKnown();
    const auto encoding = std::find_if(attributes.begin(), attributes.end(),
                                       [](const auto& attribute) { return EqualsKeyword(attribute.first, "encoding"); });
    if (encoding != attributes.end() && !encoding->second.empty()) {
        ToWide(StringNS::CharSet::UNKNOWN, encoding->second, &wideName);
        charset = StringNS::CharSet::GetCharSetCode(wideName);
    }
    return CharSetKnown();
}

/// A charset without a converter falls back to the ANSI rule, so that no event is lost. Want of memory says nothing of the charset.
void StatelessHTMLParser::ToWide(StringNS::CharSet::Code code, const std::string& bytes, WideString* output) {
    const Base::Services& services = Base::GetServices();
    std::uint32_t result = services.toWide(&converter, code, bytes.data(), bytes.size(), output);
    if (result != RESULT_OK && result != RESULT_OUT_OF_MEMORY)
        result = services.toWide(&converter, StringNS::CharSet::UNKNOWN, bytes.data(), bytes.size(), output);
    if (result == RESULT_OUT_OF_MEMORY)
        throw std::bad_alloc();
}

std::uint32_t StatelessHTMLParser::ConvertStr(const std::string& bytes, WideString* output) {
    ToWide(charset, bytes, output);
    return STATELESS_OK;
}

std::uint32_t StatelessHTMLParser::ConvertAttrs(Attributes* output) {
    for (const auto& [attributeName, attributeValue] : attributes) {
        auto& converted = output->AppendRecycled();
        ToWide(StringNS::CharSet::UNKNOWN, attributeName, &converted.first);
        ConvertStr(attributeValue, &converted.second);
    }
    return STATELESS_OK;
}

std::uint32_t StatelessHTMLParser::ConvertTokens(Tokens* output) {
    for (const std::string& token : tokens)
        ConvertStr(token, &output->AppendRecycled());
    return STATELESS_OK;
}

void StatelessHTMLParser::Raise(unsigned long id, const void* first, const void* second) {
    const void* const arguments[] = {first, second};
    GetDelegate().Call(id, arguments);
}

void StatelessHTMLParser::RaiseStartTag() {
    state = TEXT;
    GetCharSetFromStartTag();
    if (GetDelegate().IsBound(ID_START_TAG)) {
        ToWide(StringNS::CharSet::UNKNOWN, tagName, &wideName);
        wideAttributes.clear();
        ConvertAttrs(&wideAttributes);
        Raise(ID_START_TAG, wideName.c_str(), &wideAttributes);
    }
    if (selfClosing && !stopped)
        RaiseEndTag();
}

void StatelessHTMLParser::RaiseEndTag() {
    state = TEXT;
    attributePlaces.clear();
    if (!GetDelegate().IsBound(ID_END_TAG))
        return;
    ToWide(StringNS::CharSet::UNKNOWN, tagName, &wideName);
    Raise(ID_END_TAG, wideName.c_str());
}

void StatelessHTMLParser::RaiseRawTextEnd() {
    if (rawElement == RAW_SCRIPT)
        RaiseBody(ID_SCRIPT);
    else if (rawElement == RAW_STYLE)
        RaiseBody(ID_STYLE);
    else
        RaiseEndTag();
}

void StatelessHTMLParser::RaiseExternTag() {
    state = TEXT;
    GetCharSetFromExternTag();
    if (!GetDelegate().IsBound(ID_EXTERN_TAG))
        return;
    ToWide(StringNS::CharSet::UNKNOWN, tagName, &wideName);
    wideAttributes.clear();
    ConvertAttrs(&wideAttributes);
    Raise(ID_EXTERN_TAG, wideName.c_str(), &wideAttributes);
}

void StatelessHTMLParser::RaiseEntityTag() {
    state = TEXT;
    attributePlaces.clear();
    if (!GetDelegate().IsBound(ID_ENTITY_TAG))
        return;
    ToWide(StringNS::CharSet::UNKNOWN, tagName, &wideName);
    wideTokens.clear();
    ConvertTokens(&wideTokens);
    Raise(ID_ENTITY_TAG, wideName.c_str(), &wideTokens);
}

/// Text or a comment, which is over before anybody hears of it: an exception out of a callback must not bring it back.
void StatelessHTMLParser::RaiseString(unsigned long id, std::string* bytes) {
    attributePlaces.clear();
    const bool isBound = GetDelegate().IsBound(id);
    if (isBound)
        ConvertStr(*bytes, &wideText);
    bytes->clear();
    if (isBound)
        Raise(id, wideText.c_str());
}

/// A script or a style sheet, whose body follows the ANSI rule whatever the charset; hosts rely on it.
void StatelessHTMLParser::RaiseBody(unsigned long id) {
    state = TEXT;
    const bool isBound = GetDelegate().IsBound(id);
    if (isBound) {
        wideAttributes.clear();
        ConvertAttrs(&wideAttributes);
        ToWide(StringNS::CharSet::UNKNOWN, text, &wideText);
    }
    text.clear();
    if (isBound)
        Raise(id, &wideAttributes, wideText.c_str());
}

}  // namespace Kestra::HTML
