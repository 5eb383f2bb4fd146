#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "html/framework/TokenKind.h"
#include "html/output/ParserObserverOutputHandler.h"
#include "html/parser/GenericParser.h"
#include "html/rewrite/DocumentText.h"
#include "html/rewrite/OpenElements.h"
#include "html/rewrite/Rewriter.h"
#include "html/rewrite/RewriterObserver.h"
#include "html/rewrite/Selectors.h"
#include "html/rewrite/TagEdits.h"

/// @file
/// What `Rewriter` does. Not installed.
///
/// All offsets are those of the document. What lies before `written` has been settled: written as
/// it came in, written with edits, or left out. A token's edits settle all up to its end; the end
/// of a feeding call settles what lies before the token under way, in one write. The bytes of that
/// token are kept until they are settled, and the parser reads them from there when a construct has
/// failed.

namespace Kestra::HTML {

class RewriterEngine {
public:
    /// Where a text is to be written.
    enum class Spot {
        BEFORE,         ///< a token
        INSTEAD,        ///< of a token
        AFTER,          ///< a token
        AFTER_ELEMENT,  ///< after its end tag
        CONTENT_BEGIN,  ///< after its start tag
        CONTENT_END,    ///< before its end tag
        INSTEAD_OF_CONTENT,
        INSTEAD_OF_ELEMENT,
    };

    explicit RewriterEngine(ParserObserverOutputHandler* handler);
    RewriterEngine(const RewriterEngine&) = delete;
    RewriterEngine& operator=(const RewriterEngine&) = delete;
    ~RewriterEngine();

    // What `Rewriter` offers.
    std::uint32_t SetObserver(ParserObserver<char, std::string>* narrow, ParserObserver<WideChar, WideString>* wide);
    std::uint32_t OnElement(std::string_view selector, Rewriter::ElementCallback callback, std::string* message);
    std::uint32_t OnContent(std::string_view selector, Rewriter::TokenCallback callback, std::string* message);
    RewriterToken GetToken() const;
    std::uint32_t StartParse(StringNS::CharSet::Code code, GenericParser::DataStreamType type);
    std::uint32_t ParseBuffer(const char* data, std::uint64_t size);
    std::uint32_t ParseStream(VFS::InputStream* stream, bool ownsStream);
    std::uint32_t ParseFile(const WideChar* path);
    std::uint32_t EndParse();
    void SetMaxDepth(std::uint64_t count);
    void SetMaxOpenAttributes(std::uint64_t count);

    GenericParser& GetParser() {
        return parser;
    }

    // What its tokens and elements offer. Null for one that is over.
    static RewriterEngine* Find(const RewriterToken& token);
    TokenKind GetKind() const;
    TokenPlace GetPlace() const;
    std::string_view GetBytes();
    bool HasContent() const;
    const std::string& GetTagName() const;

    /// @name Edits
    /// @return 0, 2, 8 or a `RewriteResult`; other than with 0 nothing has changed
    /// @{
    std::uint32_t Write(Spot spot, std::string_view text, RewriteContent kind);
    std::uint32_t Write(Spot spot, WideStringView text, RewriteContent kind);
    std::uint32_t SetText(std::string_view text);
    std::uint32_t SetText(WideStringView text);
    std::uint32_t Remove();
    std::uint32_t RemoveElement();
    std::uint32_t Unwrap();
    bool HasAttribute(std::string_view name);
    std::uint32_t GetAttribute(std::string_view name, std::string* value);
    std::uint32_t SetAttribute(std::string_view name, std::string_view value, bool adds);
    std::uint32_t SetAttribute(std::string_view name, WideStringView value, bool adds);
    std::uint32_t RenameAttribute(std::string_view name, std::string_view newName);
    std::uint32_t RemoveAttribute(std::string_view name);
    /// @}

    // What the observers between the parser and the host call.
    bool IsOverLimit() const {
        return isOverLimit;
    }
    void BindFlavour();
    void BeginToken(TokenKind kind, bool hasAttributes) {
        current = ++generation;
        tokenKind = kind;
        canHaveAttributes = hasAttributes;
        isOpening = false;
        isEdited = false;
        rawBefore = rawElements;
        matches.clear();
        if (removals > 0 && kind != TOKEN_NONE) [[unlikely]]
            LeaveOutBeforeToken();
    }
    /// @return false when a limit forbids it: the token reaches nobody
    template <typename S>
    bool OpenElement(const S& name, std::uint64_t attributeCount);
    template <typename S>
    void CloseElements(const S& name);
    /// Finds, and calls, what was registered for the token.
    bool HasCallbacks() const {
        return !registrations.empty();
    }
    void FindCallbacks();
    void CallBack();
    void FinishToken() {
        current = 0;
        if (isEdited || tag.IsLoaded() || removals > 0) [[unlikely]]
            SettleToken();
    }

    /// Calls the host. When it throws, the token is written without its edits.
    template <typename Callback>
    void Call(Callback callback) {
        try {
            callback();
        } catch (...) {
            AbandonToken();
            throw;
        }
    }

private:
    class Running;
    class Backing;
    class AttributesOfTag;

    /// What is to be written somewhere, in the bytes of the document.
    struct Insertion {
        static constexpr std::size_t NO_TEXT = std::string::npos;

        std::string bytes;
        std::size_t textBegin = NO_TEXT;  // of what was given as text first

        void Clear() {
            bytes.clear();
            textBegin = NO_TEXT;
        }
    };

    struct TokenEdits {
        Insertion before;
        bool hasBody = false;
        Insertion body;  // in place of the token
        Insertion after;
    };

    /// What becomes of an open element.
    struct ElementEdits {
        Insertion end;    // of the content
        Insertion after;  // the element
        std::uint32_t raw = 0;
        std::uint64_t removalSeries = 0;
        bool hasNoContent = false;  // its content is left out, unless its series is over
        bool hasNoEndTag = false;
        bool isRemoved = false;  // the whole element

        void Clear() {
            end.Clear();
            after.Clear();
            raw = 0;
            removalSeries = 0;
            hasNoContent = hasNoEndTag = isRemoved = false;
        }
        bool IsEmpty() const {
            return end.bytes.empty() && after.bytes.empty() && !hasNoContent && !hasNoEndTag && !isRemoved;
        }
    };

    static constexpr std::size_t SURROUNDING_UNITS = 40;  // more than an end tag, or the name of a reference, has
    static constexpr std::size_t TAIL_SIZE = SURROUNDING_UNITS * sizeof(WideChar);

    struct Registration {
        Rewriter::ElementCallback onElement;  // one of the two
        Rewriter::TokenCallback onContent;
    };

    // Feeding.
    void Bind();
    void BeginDocument();
    std::uint32_t Feed(const char* data, std::uint64_t size);
    std::uint32_t FeedPiece(const char* data, std::uint64_t size);
    void CopyPiece(const char* data, std::uint64_t size);
    std::uint32_t SettlePiece(std::uint32_t result, std::exception_ptr* failure);
    void KeepFrom(std::uint64_t begin);
    std::exception_ptr CopyAll() noexcept;
    std::exception_ptr CopyWhateverHappens(std::uint64_t offset) noexcept;
    std::uint32_t Fail(std::uint32_t result);
    void EndDocument();
    void EndRemovals();
    void EndRemoval(const ElementEdits& edited);
    void CloseAll();

    // Output.
    void CopyUntil(std::uint64_t offset);
    void Emit(std::string_view bytes);
    void EmitInsertion(const Insertion& insertion);
    void EmitEndOfContent(const ElementEdits& edited);

    // The token at hand.
    std::string_view GetBytes(const TokenPlace& place);
    void LeaveOutBeforeToken();
    void SettleToken();
    void AbandonToken();
    void ClearEdits();
    template <typename S>
    static bool MayBeRaw(const S& name);
    bool TracksElements() const {
        return hasLimits || !ofSelectors.empty();
    }
    void FindContentMatches();
    void AddDue(const std::vector<std::size_t>& matched, bool isContent);
    void TakeTagName(const std::string& name);
    void TakeTagName(const WideString& name);
    bool OpenTag(std::uint64_t attributeCount);
    void CloseTag();
    void WriteToken();
    bool LoadTag();
    bool MayBeFolded(const AttributePlace& place, std::string_view bytes) const;
    DocumentText& Text();

    // Edits.
    template <typename Edit>
    std::uint32_t Try(Edit edit);
    template <typename Edit>
    std::uint32_t TryWide(WideStringView wide, Edit edit);
    std::uint32_t Encode(std::string_view utf8, RewriteContent kind, std::uint32_t raw, std::string* bytes);
    std::uint32_t GetRawElements(Spot spot) const;
    bool EndsRaw(Spot spot, std::uint32_t raw, std::string_view inserted);
    void Insert(std::string* bytes, bool isText, Insertion* insertion) const;
    void Put(Spot spot, std::string* bytes, bool isText);
    void LeaveElementOut();
    std::string_view GetBody();
    std::string GetTail() const;
    static std::string LastOf(std::string_view bytes, std::string_view before);
    std::string ViewOf(std::string_view bytes) const;
    std::string ViewTail(std::string_view bytes, std::string_view before) const;
    std::string ViewHead(std::string_view bytes, std::string_view before) const;
    void Guard(std::string_view before, std::string* bytes) const;

    ParserObserverOutputHandler* output;
    std::shared_ptr<RewriterEngine*> self;
    GenericParser parser;
    RewriterObserver<char, std::string> narrowObserver;
    RewriterObserver<WideChar, WideString> wideObserver;
    std::unique_ptr<Backing> backing;

    SelectorSet selectors;
    std::vector<Registration> registrations;
    std::vector<std::size_t> ofSelectors;   // their registrations
    std::vector<std::size_t> ofAllContent;  // registrations for the whole document
    std::size_t contentSelectors = 0;       // selectors that are for content
    OpenElements elements;
    bool hasLimits = false;
    std::vector<ElementEdits>
        elementEdits;                 // of the open elements that have any; such an element knows its number, from 1
    std::uint64_t removals = 0;       // open elements whose content is left out, of the present series:
    std::uint64_t removalSeries = 0;  // each ends where all content is written again

    // The document.
    bool isRunning = false;     // a call of the host is on the stack
    bool isCopying = false;     // an answer was not 0
    bool isOverLimit = false;   // the observers are to be silent
    bool isHostsFault = false;  // the exception on its way came out of the host's code
    std::uint64_t fed = 0;
    std::uint64_t written = 0;
    std::string kept;
    std::uint64_t keptBegin = 0;
    const char* piece = nullptr;
    std::uint64_t pieceBegin = 0;
    bool hasHalfUnit = false;  // of UTF-16
    char halfUnit = 0;
    std::uint32_t rawElements = 0;       // open ones, after the token at hand
    std::array<char, TAIL_SIZE> tail{};  // the last bytes written
    std::size_t tailSize = 0;

    // The token at hand.
    std::uint64_t generation = 0;
    std::uint64_t current = 0;  // of the running callback; 0 for none
    TokenKind tokenKind = TOKEN_NONE;
    bool canHaveAttributes = false;
    bool isOpening = false;
    bool elementHasContent = false;
    bool isEdited = false;
    std::uint32_t rawBefore = 0;
    std::string tagName;
    TokenEdits edits;
    TagEdits tag;
    TagLayout layout;
    std::vector<AttributePlace> attributeParts;
    ElementEdits element;  // of the one that the token opens
    std::vector<ElementEdits>
        closing;                // of the elements that the token closes, innermost first; only those that have any
    bool closesEdited = false;  // the last of them is the element of the end tag
    std::vector<std::size_t> matches;
    std::vector<std::size_t> contentMatches;
    std::vector<std::size_t> due;  // registrations
    DocumentText text;
};

}  // namespace Kestra::HTML
