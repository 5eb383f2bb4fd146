#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "html/framework/TokenKind.h"
#include "html/parser/GenericParser.h"
#include "html/rewrite/DocumentText.h"
#include "html/rewrite/RawElements.h"
#include "html/rewrite/RewriteResults.h"
#include "html/rewrite/RewriterOutput.h"
#include "html/rewrite/RewriterToken.h"
#include "html/rewrite/Selectors.h"
#include "html/rewrite/TagEdits.h"
#include "html/rewrite/TagLayoutReader.h"
#include "html/rewrite/TokenEdits.h"

/// @file
/// The token whose callbacks run, and the edits that they ask for. Not installed.

namespace Kestra::HTML {

/// Does the operations of `RewriterToken` and `RewriterElement` while these are not over.
class CurrentToken {
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

    /// Both are borrowed for as long as this lives.
    CurrentToken(const GenericParser* documentParser, RewriterOutput* documentOutput);
    CurrentToken(const CurrentToken&) = delete;
    CurrentToken& operator=(const CurrentToken&) = delete;

    /// @name Called by the engine
    /// @{
    void Begin(TokenKind kind, bool hasAttributes) {
        tokenKind = kind;
        canHaveAttributes = hasAttributes;
        isOpening = false;
        edits.isEdited = false;
        rawBefore = rawElements;
    }
    /// The token is a start tag. Its element has no content until `SetHasContent` says so.
    void BeginElement() {
        isOpening = true;
        elementHasContent = false;
    }
    void SetHasContent(bool hasContent) {
        elementHasContent = hasContent;
    }
    /// @param name  as an 8-bit observer gets it: in the charset of the document, also when that is
    ///              UTF-16
    void SetTagName(const std::string& name);
    void SetTagName(const WideString& name);
    /// Notes the raw element that the tag opens, if it does. A short tag opens no script for a
    /// parser that cuts scripts into tokens.
    void OpenRawElement();
    void CloseRawElement();
    void CloseRawElements() {
        rawElements = RAW_NONE;
    }
    bool HasOpenRawElements() const {
        return rawElements != RAW_NONE;
    }
    /// Whether there is something to settle: edits, or a tag that was taken apart.
    bool IsTouched() const {
        return edits.isEdited || tag.IsLoaded();
    }
    /// @return the edits if there are any, with the changed tag written among them; else null
    TokenEdits* CompleteEdits();
    /// Drops what was asked for the token, but not for the elements that it ends.
    void AbandonEdits();
    void ClearEdits();
    void ForgetTag() {
        tag.Forget();
    }
    TokenEdits* GetEdits() {
        return &edits;
    }
    bool IsOpening() const {
        return isOpening;
    }
    /// What a selector asks: whether the tag has an attribute, and its value.
    /// @param value  null when only that is asked
    bool FindAttribute(std::string_view name, std::string* value);
    /// @}

    TokenKind GetKind() const {
        return tokenKind;
    }
    TokenPlace GetPlace() const;
    std::string_view GetBytes();
    bool HasContent() const {
        return isOpening && elementHasContent;
    }
    const std::string& GetTagName() const {
        return tagName;
    }

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

private:
    bool LoadTag();
    DocumentText& GetText();
    template <typename Edit>
    std::uint32_t CatchOutOfMemory(Edit edit);
    template <typename Edit>
    std::uint32_t ConvertAndEdit(WideStringView wide, Edit edit);
    std::uint32_t Encode(std::string_view utf8Text, RewriteContent kind, std::uint32_t raw, std::string* bytes);
    std::uint32_t GetRawElements(Spot spot) const;
    bool EndsRaw(Spot spot, std::uint32_t raw, std::string_view inserted);
    void AppendInsertion(std::string* bytes, bool isText, Insertion* insertion) const;
    void StoreInsertion(Spot spot, std::string* bytes, bool isText);
    void LeaveElementOut();
    std::string_view GetBody();
    std::string GetTail() const;

    const GenericParser* parser;
    RewriterOutput* output;
    const DocumentView& view;

    TokenKind tokenKind = TOKEN_NONE;
    bool canHaveAttributes = false;
    bool isOpening = false;
    bool elementHasContent = false;
    std::uint32_t rawBefore = 0;    // the raw elements that the token lies in
    std::uint32_t rawElements = 0;  // those that are open after it
    std::string tagName;
    TokenEdits edits;
    TagEdits tag;
    TagLayoutReader layoutReader;
    DocumentText text;
};

/// The attributes of the current tag, for selectors.
class CurrentAttributes final : public TagAttributes {
public:
    explicit CurrentAttributes(CurrentToken* currentTag) : tag(currentTag) {}

    bool Find(std::string_view name, std::string* value) const override {
        return tag->FindAttribute(name, value);
    }

private:
    CurrentToken* tag;
};

}  // namespace Kestra::HTML
