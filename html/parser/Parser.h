#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "html/framework/ParserObserver.h"
#include "html/framework/SimpleParserContext.h"
#include "html/framework/TokenPlace.h"
#include "html/output/ParserSelfCheck.h"
#include "html/parser/PieceOrigin.h"
#include "html/parser/RecordConverter.h"
#include "html/tags/EndTagSimpleParser.h"
#include "html/tags/EntityTagSimpleParser.h"
#include "html/tags/ExternTagSimpleParser.h"
#include "html/tags/GenericTagSimpleParser.h"
#include "html/tags/StartTagSimpleParser.h"
#include "html/text/CCommentSimpleParser.h"
#include "html/text/CDATATagSimpleParser.h"
#include "html/text/CPPCommentSimpleParser.h"
#include "html/text/CommentTagSimpleParser.h"
#include "html/text/ConditionalTagSimpleParser.h"
#include "html/text/DQuoteStringSimpleParser.h"
#include "html/text/JSRegExSimpleParser.h"
#include "html/text/JunkSimpleParser.h"
#include "html/text/RawText.h"
#include "html/text/SQuoteStringSimpleParser.h"
#include "html/text/TextSimpleParser.h"
#include "platform/BufferAllocPolicy.h"
#include "platform/CharSet.h"
#include "platform/InputStream.h"
#include "platform/Uninherited.h"

namespace Kestra::HTML {

class WholeTag;

/// Which recognizer is active. No state 9 exists.
enum ParserState : std::uint32_t {
    STATE_TEXT = 0,
    STATE_GENERIC_TAG = 1,
    STATE_START_TAG = 2,
    STATE_COMMENT_TAG = 3,
    STATE_CDATA_TAG = 4,
    STATE_CONDITIONAL_TAG = 5,
    STATE_END_TAG = 6,
    STATE_ENTITY_TAG = 7,
    STATE_EXTERN_TAG = 8,
    STATE_C_COMMENT = 10,
    STATE_CPP_COMMENT = 11,
    STATE_JS_REG_EX = 12,
    STATE_S_QUOTE_STRING = 13,
    STATE_D_QUOTE_STRING = 14,
    STATE_JUNK = 15,
    STATE_RAW_TEXT = 16,
};

/// Drives the recognizers of one flavour over a document: decides at every point which one runs, delivers finished tokens, and turns a
/// construct that fails into junk. Private to `GenericParser`.
template <typename C, typename S>
class Parser {
public:
    Parser();
    /// A copy goes on in the middle of a token; it has no backing stream. It must be settled.
    Parser(const Parser& other);
    Parser& operator=(const Parser& other) = delete;
    virtual ~Parser();

    /// Text that was being delivered when this copy was made is the copy's pending text, also when it lay in one piece.
    void SettleCopy();

    /// Begins a document and calls `OnStartParsing`.
    /// @param markLength       bytes of a byte-order mark before the first piece
    /// @param detectedCharset  the charset was chosen by the detector
    /// @param bytesDropped     bytes of the document that came before and belong to nothing
    /// @return 0
    std::uint32_t Start(std::uint64_t markLength, bool detectedCharset, std::uint64_t bytesDropped);

    /// So many bytes of the document have come, and a callback threw before any of them was parsed.
    void SkipTo(std::uint64_t bytes);

    /// Runs the recognizers over one piece. @return 0 when it is used up, 705, 710, 711, or the code of a failure that has no recovery
    std::uint32_t Parse(const C* piece, std::uint64_t length, const PieceOrigin& origin);

    /// The whole input has been given. Leaves the text state with no pending text, whatever it returns. In `OnEndParsing` the parser's name
    /// is still that of the recognizer that ran last.
    /// @return 0, 704, 710, 711, or the code of a failure that has no recovery; `OnEndParsing` is called only with 0, and with 710 out of
    /// it
    std::uint32_t End();

    /// Takes a byte-order mark into the self-check and tells the observer about it.
    virtual void OnBOM(const void* bytes, std::uint64_t size);
    void OnCharset(StringNS::CharSet::Code code);

    /// Binds one observer or none; `char` comes first when both are there.
    void SetObservers(ParserObserver<char, std::string>* narrow, ParserObserver<WideChar, WideString>* wide);

    /// The stream that the next pieces are read from, borrowed; null forgets it. Another stream than before cannot re-read an open token.
    void SetBackingStream(VFS::InputStream* stream);

    /// Reads the open construct back from the backing stream when `End` would have to, and when that is possible; null otherwise.
    std::unique_ptr<VFS::InputStream> KeepOpenConstruct();

    /// Puts a stream that holds the same bytes at the same offsets in place of the backing stream.
    void ReplaceBackingStream(VFS::InputStream* stream);

    void SetCharset(StringNS::CharSet::Code code);
    void SetDiscoverCharset(bool discover);
    void SetSelfCheckMode(std::uint32_t mode);
    void SetScriptsAsText(bool asText);
    void SetDetectCharsetErrors(bool detect);

    /// Ends the call that delivers, after the callback at work, with 710, as does every one that feeds until `Start`.
    void Stop();
    bool IsStopped() const;
    /// A stop, or a token that went over, has ended the document, and nothing has been fed since.
    bool IsHalted() const;
    /// @param bytes  0 for no limit
    void SetMaxTokenSize(std::uint64_t bytes);
    std::uint64_t GetMaxTokenSize() const;
    /// @param count  0 for no limit
    void SetMaxAttributes(std::uint64_t count);
    std::uint64_t GetMaxAttributes() const;

    /// The place of the token that is being delivered, or was delivered last.
    TokenPlace GetTokenPlace() const;
    /// The place of an attribute of the tag that is being delivered. @return false when there is none
    bool GetAttributePlace(std::size_t index, AttributePlace* place) const;
    /// The same for what a folded attribute was written as: the attribute itself, and then its bare words.
    bool GetAttributeParts(std::size_t index, std::vector<AttributePlace>* places) const;
    /// Where the name of the tag that is being delivered ends. @return false when there is none
    bool GetTagNameEnd(std::uint64_t* end) const;

    std::uint64_t GetLine() const;
    std::uint64_t GetColumn() const;
    WideStringView GetCurrentParserName() const;
    StringNS::CharSet::Code GetCharset() const;
    std::uint32_t GetSelfCheckMode() const;
    bool AreScriptsAsText() const;
    VFS::InputStream* GetSelfCheckStream();
    /// The parser of the other flavour begins a document: nothing is kept of the last one, neither memory nor the self-check's stream.
    void Rest();
    bool GetDetectCharsetErrors() const;
    bool HasCharsetErrors() const;
    /// The last failed conversion of the document, 0 for none.
    std::uint32_t GetConversionError() const;
    /// Whether a record has been lost for want of memory since the last call.
    bool TakeOutOfMemory();
    bool NeedsReparsing() const;
    bool WasCharsetDetectorUsed() const;

private:
    struct Construct;
    struct RecognizedTag {};  // a tag that its recognizer has completed; the other way is `WholeTag`
    class Unwinding;

    /// The attributes of a tag, and where the first of them begins, in characters of the document.
    struct DeliveredAttributes {
        const Vector<Attribute<C, S>>* list;
        std::uint64_t listBegin;
        bool bareValueEndsEscapeRuns;
    };

    static const Construct CONSTRUCTS[];

    static const Construct* FindByState(std::uint32_t wanted);
    static const Construct* FindByName(WideStringView name, std::uint32_t opener);

    // Starting a recognizer: `BeginParse`, then the options of the document.
    void Begin(const Construct& construct);
    void SetActive(const Construct& construct);
    template <auto RECOGNIZER, auto DATA>
    void BeginPlain();
    template <auto RECOGNIZER, auto DATA>
    void BeginTag();
    template <auto RECOGNIZER, auto DATA>
    void BeginSection();
    template <auto RECOGNIZER, auto DATA>
    void BeginLiteral();
    void BeginDQuoteString();

    // One step of the main loop: run the recognizer and settle what it answers. SP_NEED_MORE_DATA goes on, anything else has failed.
    std::uint32_t ParseText();
    void BeginBehindText(const Construct& construct);
    bool IsPlainText() const;
    std::uint32_t ParsePlainText();
    std::uint32_t ParseRawText();
    std::uint32_t ParseCutEndTag();
    std::uint32_t ReadTag();
    std::uint32_t ParseGenericTag();
    std::uint32_t ParseStartTag();
    template <typename Tag>
    std::uint32_t FinishStartTag(Tag tag);
    std::uint32_t ParseEndTag();
    template <typename Tag>
    std::uint32_t FinishEndTag(Tag tag);
    std::uint32_t ParseCPPComment();
    std::uint32_t ParseJunk();
    template <auto RECOGNIZER, auto DATA, auto DELIVER>
    std::uint32_t ParseConstruct();

    // The end of the input: SP_TOKEN_COMPLETE, or a failure.
    std::uint32_t EndText();
    std::uint32_t EndRawText();
    std::uint32_t EndUnfinishedTag();
    std::uint32_t EndJunk();
    template <auto RECOGNIZER, auto DATA, auto DELIVER>
    std::uint32_t EndConstruct();

    std::uint32_t BeginNamedTag(WideStringView name);
    void BeginTagOrText(const Construct& construct);
    void MarkTokenStart(std::uint64_t charactersBack);
    void EndToken(std::uint64_t charactersAhead);
    std::uint64_t ToBytes(std::uint64_t offset) const;
    DeliveredAttributes GetDeliveredAttributes() const;
    bool IsAfterBareValue(const DeliveredAttributes& delivered, std::size_t index) const;
    std::uint64_t FindAttribute(const DeliveredAttributes& delivered, std::size_t index) const;
    AttributePlace PlaceOf(const Attribute<C, S>& attribute, std::uint64_t offset) const;
    void BackToText();
    void BackToText(const char* prefix);
    void ReturnToText(WholeTag tag);
    void ReturnToText(RecognizedTag tag);
    void FinishToken();

    // Limits: the piece is read by slices, so that a token under way is judged before it has grown much.
    void BeginSlice();
    std::uint64_t GetLengthSoFar() const;
    bool IsTooLong(std::uint64_t charactersAhead) const;
    bool IsTooLongUnderWay() const;
    void ApplyLimits();
    void GoBackToToken();
    void LimitBuffers(bool isNewDocument);
    void CountParts();
    std::size_t GetRoomOfLists() const;
    template <typename Visitor>
    void VisitBuffers(Visitor& visit);

    std::uint32_t EndOpenConstruct();
    std::uint32_t Recover(std::uint32_t failure);
    bool CanReadBack() const;
    std::uint32_t ReadBack(std::string* bytes);

    // Deliveries: one per recognizer that makes tokens.
    void DeliverText(std::uint64_t charactersAhead);
    void DeliverTextWith(std::basic_string_view<C> run);
    void DeliverStartTag();
    void DeliverEndTag();
    void DeliverCommentTag();
    void DeliverCDATATag();
    void DeliverConditionalTag();
    void DeliverEntityTag();
    void DeliverExternTag();
    void DeliverCComment();
    std::uint64_t CountOpenerOfSection() const;
    void DeliverCPPComment();
    void DeliverJSRegEx();
    void DeliverSQuoteString();
    void DeliverDQuoteString();
    void DeliverJunk();
    void SettleScriptAndStyle(std::basic_string_view<C> name, bool starts);
    void NotifyOfRawText(RawTextElement element);
    bool NeedsOtherCharset();

    bool IsSelfChecking() const;
    template <typename Record>
    void Deliver(Record record, std::uint64_t charactersAhead = 0);
    template <typename Record>
    void DeliverToObserver(Record* record);
    template <typename Record, typename Converted>
    std::uint32_t ConvertRecord(const Record& record, Converted* converted);
    template <typename Callback>
    void Notify(Callback callback);

    /// Where a token ends and the next one begins.
    struct Boundary {
        std::uint64_t offset = 0;  // in characters, from the first one of the document
        std::uint64_t line = 1;
        std::uint64_t column = 1;
    };

    /// An attribute whose place is known; offsets in characters.
    struct AttributeCursor {
        std::uint64_t listBegin = UINT64_MAX;  // of its list; none yet
        std::size_t index = 0;
        std::uint64_t offset = 0;
    };

    SimpleParserContext<C, S> context;
    std::uint32_t state;  // a ParserState
    WideStringView currentParserName;

    TextSimpleParser<C, S> text;
    TextSimpleParserData<C, S> textData;
    S wholeText;              // text that lies in one piece as a whole; kept for its buffer
    bool isWholeTextPending;  // `wholeText` is being delivered: a copy has it as its pending text
    GenericTagSimpleParser<C, S> genericTag;
    GenericTagSimpleParserData<C, S> genericTagData;
    StartTagSimpleParser<C, S> startTag;
    StartTagSimpleParserData<C, S> startTagData;
    EndTagSimpleParser<C, S> endTag;
    EndTagSimpleParserData<C, S> endTagData;
    CommentTagSimpleParser<C, S> commentTag;
    CommentTagSimpleParserData<C, S> commentTagData;
    CDATATagSimpleParser<C, S> cdataTag;
    CDATATagSimpleParserData<C, S> cdataTagData;
    ConditionalTagSimpleParser<C, S> conditionalTag;
    ConditionalTagSimpleParserData<C, S> conditionalTagData;
    EntityTagSimpleParser<C, S> entityTag;
    EntityTagSimpleParserData<C, S> entityTagData;
    ExternTagSimpleParser<C, S> externTag;
    ExternTagSimpleParserData<C, S> externTagData;
    CCommentSimpleParser<C, S> cComment;
    CCommentSimpleParserData<C, S> cCommentData;
    CPPCommentSimpleParser<C, S> cppComment;
    CPPCommentSimpleParserData<C, S> cppCommentData;
    SQuoteStringSimpleParser<C, S> sQuoteString;
    SQuoteStringSimpleParserData<C, S> sQuoteStringData;
    DQuoteStringSimpleParser<C, S> dQuoteString;
    DQuoteStringSimpleParserData<C, S> dQuoteStringData;
    JunkSimpleParser<C, S> junk;
    JunkSimpleParserData<C, S> junkData;
    JSRegExSimpleParser<C, S> jsRegEx;
    JSRegExSimpleParserData<C, S> jsRegExData;
    RawText<C, S> rawText;  // its content is gathered in `textData`

    ParserObserver<char, std::string>* charObserver;  // called instead of the wide one when both are bound
    ParserObserver<WideChar, WideString>* wcharObserver;
    bool inScript;
    bool inStyle;
    bool scriptsAsText;  // the content of scripts and the like is one text; `inScript` and `inStyle` are then false
    std::uint32_t selfCheckMode;
    ParserSelfCheck<C, S> selfCheck;
    std::uint32_t inputCrc;
    bool detectCharsetErrors;
    bool hasCharsetErrors;
    bool convertedForObserver;  // a later change of charset in the markup then stops the parse
    bool needsReparsing;
    StringNS::CharSet::Code charset;
    bool discoverCharset;
    bool charsetFromMarkup;
    WideString declaredName;  // kept for its buffer
    bool charsetDetectorUsed;
    std::uint32_t charsetErrors;    // the last failed conversion, 0 for none
    Uninherited<bool> outOfMemory;  // one has failed for want of memory, and no call has told of it yet
    Uninherited<VFS::InputStream*> backingStream;
    std::uint64_t pieceBase;       // offset of the piece's first character in the stream, in bytes
    std::uint64_t tokenStartPos;   // where the token in progress began: characters into a piece,
    std::uint64_t tokenStartBase;  // and that piece's `pieceBase`
    std::uint64_t fedBefore;       // characters of the document before the piece
    std::uint64_t tokenStartFed;   // characters of the document before the token in progress
    std::uint64_t bytesDropped;    // bytes of the document before its first character
    Boundary boundaries[2];        // the begin and the end of the token that was delivered last, in turn
    unsigned lastEnd;              // index of the end
    mutable AttributeCursor attributeCursor;
    bool backingStreamPositioned;  // the current piece can be read again
    bool tokenStartPositioned;     // so can the piece in which the token began, in the same stream
    std::uint64_t buffersDue;      // where `LimitBuffers` is called next: characters into the piece
    std::size_t roomOfLists;       // `GetRoomOfLists` at the last look
    std::uint64_t pieceLength;     // in characters; the context ends earlier when the piece is read by slices
    std::uint64_t maxTokenSize;    // as set, in bytes
    std::uint64_t maxAttributes;   // as set
    std::uint64_t maxTokenLength;  // in characters; UINT64_MAX for no limit
    std::uint32_t halted;          // 710 or 711, once it has ended the document

    RecordConverter<C, S> converter;
    Uninherited<std::unique_ptr<Base::DefaultBufferAllocPolicy>> readBackBuffer;  // made at the first recovery
};

}  // namespace Kestra::HTML
