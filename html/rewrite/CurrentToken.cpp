#include "html/rewrite/CurrentToken.h"

#include <algorithm>
#include <new>

#include "html/references/CharacterReferences.h"
#include "platform/Results.h"

namespace Kestra::HTML {

namespace {

bool IsScriptOrStyle(std::uint32_t raw) {
    return raw == RAW_SCRIPT || raw == RAW_STYLE;
}

}  // namespace

CurrentToken::CurrentToken(const GenericParser* documentParser, RewriterOutput* documentOutput)
    : parser(documentParser), output(documentOutput), view(documentOutput->GetView()) {}

void CurrentToken::SetTagName(const std::string& name) {
    const bool isAscii = std::all_of(name.begin(), name.end(),
                                     [](char character) { return static_cast<unsigned char>(character) < 0x80; });
    if (isAscii && !parser->IsWParser())
        tagName = name;
    else
        GetText().Decode(name, &tagName);
    std::transform(tagName.begin(), tagName.end(), tagName.begin(), FoldAscii<char>);
}

void CurrentToken::SetTagName(const WideString& name) {
    DocumentText::FromWide(name, &tagName);
    std::transform(tagName.begin(), tagName.end(), tagName.begin(), FoldAscii<char>);
}

void CurrentToken::OpenRawElement() {
    const std::uint32_t raw = FindRawElement(tagName);
    const bool isShort = tokenKind == TOKEN_SHORT_TAG;
    if (!isShort || !IsScriptOrStyle(raw) || parser->GetScriptMode() == GenericParser::SCRIPT_AS_TEXT)
        rawElements |= raw;
}

void CurrentToken::CloseRawElement() {
    rawElements &= ~(FindRawElement(tagName) & ~std::uint32_t{RAW_PLAINTEXT});
}

TokenEdits* CurrentToken::CompleteEdits() {
    if (!edits.isEdited && !tag.IsChanged())
        return nullptr;
    if (tag.IsChanged() && !edits.hasBody)
        tag.Write(&edits.body.bytes);
    edits.hasBody = edits.hasBody || tag.IsChanged();
    return &edits;
}

void CurrentToken::AbandonEdits() {
    std::vector<ElementEdits> ended;
    ended.swap(edits.closing);
    const bool endsEdited = edits.closesEdited;
    ClearEdits();
    edits.closing.swap(ended);
    edits.closesEdited = endsEdited;
    edits.isEdited = !edits.closing.empty();
}

void CurrentToken::ClearEdits() {
    edits.Clear();
    tag.Forget();
}

TokenPlace CurrentToken::GetPlace() const {
    return parser->GetTokenPlace();
}

std::string_view CurrentToken::GetBytes() {
    return output->GetBytes(parser->GetTokenPlace());
}

DocumentText& CurrentToken::GetText() {
    text.SetCharset(parser->GetCharset(), parser->IsWParser());
    return text;
}

// -------------------------------------------------------------------------------------------------
// attributes

/// Takes the attributes of the tag apart, once.
bool CurrentToken::LoadTag() {
    if (!canHaveAttributes)
        return false;
    if (tag.IsLoaded())
        return true;
    const TokenPlace place = GetPlace();
    const std::string_view bytes = output->GetBytes(place);
    DocumentText& charset = GetText();
    if (!layoutReader.Read(*parser, tokenKind, place.begin, bytes, charset))
        return false;
    tag.Load(bytes, layoutReader.GetLayout(), &charset);
    return true;
}

bool CurrentToken::FindAttribute(std::string_view name, std::string* value) {
    LoadTag();
    return value == nullptr ? tag.Has(name) : tag.Get(name, value) == REWRITE_OK;
}

bool CurrentToken::HasAttribute(std::string_view name) {
    return LoadTag() && tag.Has(name);
}

std::uint32_t CurrentToken::GetAttribute(std::string_view name, std::string* value) {
    if (value == nullptr)
        return PARSER_INVALID_ARGUMENT;
    return CatchOutOfMemory(
        [&]() -> std::uint32_t { return LoadTag() ? tag.Get(name, value) : std::uint32_t{REWRITE_WRONG_KIND}; });
}

std::uint32_t CurrentToken::SetAttribute(std::string_view name, std::string_view value, bool adds) {
    return CatchOutOfMemory([&]() -> std::uint32_t {
        if (!LoadTag())
            return REWRITE_WRONG_KIND;
        if (!DocumentText::IsWellFormed(name) || !DocumentText::IsWellFormed(value))
            return PARSER_INVALID_ARGUMENT;
        if (rawBefore != RAW_NONE && EndsRawElement(rawBefore, value, {"", "\"", true}))
            return REWRITE_ENDS_EARLY;
        return adds ? tag.Add(name, value) : tag.Set(name, value);
    });
}

std::uint32_t CurrentToken::SetAttribute(std::string_view name, WideStringView value, bool adds) {
    return ConvertAndEdit(value, [&](std::string_view utf8) { return SetAttribute(name, utf8, adds); });
}

std::uint32_t CurrentToken::RenameAttribute(std::string_view name, std::string_view newName) {
    return CatchOutOfMemory([&]() -> std::uint32_t {
        if (!LoadTag())
            return REWRITE_WRONG_KIND;
        return DocumentText::IsWellFormed(newName) ? tag.Rename(name, newName) : std::uint32_t{PARSER_INVALID_ARGUMENT};
    });
}

std::uint32_t CurrentToken::RemoveAttribute(std::string_view name) {
    return CatchOutOfMemory(
        [&]() -> std::uint32_t { return LoadTag() ? tag.Remove(name) : std::uint32_t{REWRITE_WRONG_KIND}; });
}

// -------------------------------------------------------------------------------------------------
// edits

template <typename Edit>
std::uint32_t CurrentToken::CatchOutOfMemory(Edit edit) {
    try {
        return edit();
    } catch (const std::bad_alloc&) {
        return RESULT_OUT_OF_MEMORY;
    }
}

template <typename Edit>
std::uint32_t CurrentToken::ConvertAndEdit(WideStringView wide, Edit edit) {
    return CatchOutOfMemory([&]() -> std::uint32_t {
        std::string converted;
        return DocumentText::FromWide(wide, &converted) ? edit(std::string_view(converted))
                                                        : std::uint32_t{PARSER_INVALID_ARGUMENT};
    });
}

/// The elements whose content a text becomes that is written there.
std::uint32_t CurrentToken::GetRawElements(Spot spot) const {
    switch (spot) {
        case Spot::BEFORE:
        case Spot::INSTEAD:
        case Spot::AFTER_ELEMENT:
        case Spot::INSTEAD_OF_ELEMENT:
            return rawBefore;
        case Spot::AFTER:
        case Spot::CONTENT_BEGIN:
        case Spot::CONTENT_END:
        case Spot::INSTEAD_OF_CONTENT:
            return rawElements;
    }
    return RAW_NONE;
}

/// @param raw  not RAW_NONE
std::uint32_t CurrentToken::Encode(std::string_view utf8Text, RewriteContent kind, std::uint32_t raw,
                                   std::string* bytes) {
    if (!DocumentText::IsWellFormed(utf8Text) || (kind != CONTENT_TEXT && kind != CONTENT_MARKUP))
        return PARSER_INVALID_ARGUMENT;
    if (raw != RAW_NONE)
        return GetText().Append(utf8Text, DocumentText::Lacking::REFUSED, bytes) ? REWRITE_OK : REWRITE_NOT_IN_CHARSET;
    if (kind == CONTENT_MARKUP) {
        GetText().Append(utf8Text, DocumentText::Lacking::REFERENCE, bytes);
        return REWRITE_OK;
    }
    std::string encoded(utf8Text);
    CharacterReferences<char, std::string>::EncodeText(encoded, &encoded);
    GetText().Append(encoded, DocumentText::Lacking::REFERENCE, bytes);
    return REWRITE_OK;
}

std::uint32_t CurrentToken::Write(Spot spot, std::string_view content, RewriteContent kind) {
    return CatchOutOfMemory([&]() -> std::uint32_t {
        if (tokenKind == TOKEN_NONE)
            return REWRITE_WRONG_KIND;
        const bool isInside =
            spot == Spot::CONTENT_BEGIN || spot == Spot::CONTENT_END || spot == Spot::INSTEAD_OF_CONTENT;
        if (isInside && !elementHasContent)
            return REWRITE_NO_CONTENT;
        const std::uint32_t raw = GetRawElements(spot);
        std::string bytes;
        const std::uint32_t result = Encode(content, kind, raw, &bytes);
        if (result != REWRITE_OK)
            return result;
        if (raw != RAW_NONE && EndsRaw(spot, raw, content))
            return REWRITE_ENDS_EARLY;
        StoreInsertion(spot, &bytes, kind == CONTENT_TEXT && raw == RAW_NONE);
        edits.isEdited = true;
        return REWRITE_OK;
    });
}

std::uint32_t CurrentToken::Write(Spot spot, WideStringView content, RewriteContent kind) {
    return ConvertAndEdit(content, [&](std::string_view converted) { return Write(spot, converted, kind); });
}

/// Whether the text would end the raw elements that it is written into, together with what lies
/// around it. An end tag that ends one itself may be replaced by anything.
bool CurrentToken::EndsRaw(Spot spot, std::uint32_t raw, std::string_view inserted) {
    const auto fits = [&](std::string_view before, std::string_view after, bool isAfterKnown) {
        return !EndsRawElement(raw, inserted, {before, after, isAfterKnown});
    };
    switch (spot) {
        case Spot::BEFORE: {
            const std::string after = view.ViewHead(edits.after.bytes, GetBody());
            return !fits(view.ViewTail(edits.before.bytes, GetTail()), after,
                         after.size() >= DocumentView::SURROUNDING_UNITS);
        }
        case Spot::INSTEAD:
        case Spot::INSTEAD_OF_ELEMENT: {
            if (tokenKind == TOKEN_END_TAG && rawElements != rawBefore)
                return false;
            const std::string after = view.ViewHead(edits.after.bytes, "");
            return !fits(view.ViewTail(edits.before.bytes, GetTail()), after,
                         after.size() >= DocumentView::SURROUNDING_UNITS);
        }
        case Spot::AFTER: {
            const std::string before = DocumentView::LastOf(edits.before.bytes, GetTail());
            return !fits(view.ViewTail(edits.after.bytes, DocumentView::LastOf(GetBody(), before)), "", false);
        }
        case Spot::CONTENT_BEGIN:
            return !fits(view.ViewTail(edits.after.bytes, ""), "", false);
        case Spot::CONTENT_END:
            return !fits(view.ViewTail(edits.element.end.bytes, ""), "</", true);
        case Spot::INSTEAD_OF_CONTENT:
            return !fits("", "</", true);
        case Spot::AFTER_ELEMENT:
            return !fits(view.ViewTail(edits.element.after.bytes, ""), "", false);
    }
    return false;
}

/// Keeps what is to be written. Takes the bytes; all that may fail comes first.
void CurrentToken::StoreInsertion(Spot spot, std::string* bytes, bool isText) {
    const auto put = [&](Insertion* insertion) {
        insertion->bytes.swap(*bytes);
        insertion->textBegin = isText ? 0 : Insertion::NO_TEXT;
    };
    switch (spot) {
        case Spot::BEFORE:
            AppendInsertion(bytes, isText, &edits.before);
            break;
        case Spot::AFTER:
        case Spot::CONTENT_BEGIN:
            AppendInsertion(bytes, isText, &edits.after);
            break;
        case Spot::CONTENT_END:
            AppendInsertion(bytes, isText, &edits.element.end);
            edits.element.raw = rawElements;
            break;
        case Spot::AFTER_ELEMENT:
            AppendInsertion(bytes, isText, &edits.element.after);
            break;
        case Spot::INSTEAD:
            put(&edits.body);
            edits.hasBody = true;
            break;
        case Spot::INSTEAD_OF_CONTENT:
            put(&edits.after);
            edits.element.end.Clear();
            edits.element.hasNoContent = true;
            break;
        case Spot::INSTEAD_OF_ELEMENT:
            put(&edits.body);
            LeaveElementOut();
            break;
    }
}

/// After what was to be written there before.
void CurrentToken::AppendInsertion(std::string* bytes, bool isText, Insertion* insertion) const {
    const std::size_t begin = insertion->bytes.size();
    if (begin == 0) {
        insertion->bytes.swap(*bytes);
        insertion->textBegin = isText ? 0 : Insertion::NO_TEXT;
        return;
    }
    const std::size_t size = bytes->size();
    if (isText)
        view.Guard(view.ViewTail(insertion->bytes, ""), bytes);
    insertion->bytes.append(*bytes);
    // All that comes before the first text is known only when it is written.
    const bool isGuarded = bytes->size() != size;
    if (isText && size > 0 && !isGuarded && insertion->textBegin == Insertion::NO_TEXT)
        insertion->textBegin = begin;
}

/// Of the element nothing is written but what takes its place.
void CurrentToken::LeaveElementOut() {
    edits.hasBody = true;
    edits.element.isRemoved = true;
    edits.element.end.Clear();
    edits.element.hasNoContent = elementHasContent;
    edits.element.hasNoEndTag = elementHasContent;
    if (elementHasContent)
        edits.after.Clear();
    edits.isEdited = true;
}

std::uint32_t CurrentToken::Remove() {
    return CatchOutOfMemory([&]() -> std::uint32_t {
        if (tokenKind == TOKEN_NONE)
            return REWRITE_WRONG_KIND;
        if (rawBefore != RAW_NONE && EndsRaw(Spot::INSTEAD, rawBefore, ""))
            return REWRITE_ENDS_EARLY;
        edits.body.Clear();
        edits.hasBody = true;
        edits.isEdited = true;
        return REWRITE_OK;
    });
}

std::uint32_t CurrentToken::RemoveElement() {
    return CatchOutOfMemory([&]() -> std::uint32_t {
        if (rawBefore != RAW_NONE && EndsRaw(Spot::INSTEAD, rawBefore, ""))
            return REWRITE_ENDS_EARLY;
        edits.body.Clear();
        LeaveElementOut();
        return REWRITE_OK;
    });
}

std::uint32_t CurrentToken::Unwrap() {
    return CatchOutOfMemory([&]() -> std::uint32_t {
        if (edits.element.isRemoved)
            return REWRITE_OK;
        if (rawBefore != RAW_NONE && EndsRaw(Spot::INSTEAD, rawBefore, ""))
            return REWRITE_ENDS_EARLY;
        edits.body.Clear();
        edits.hasBody = true;
        edits.element.hasNoEndTag = elementHasContent;
        edits.isEdited = true;
        return REWRITE_OK;
    });
}

std::uint32_t CurrentToken::SetText(std::string_view newText) {
    if (tokenKind == TOKEN_TEXT)
        return Write(Spot::INSTEAD, newText, CONTENT_TEXT);
    if (tokenKind != TOKEN_COMMENT_TAG)
        return REWRITE_WRONG_KIND;
    return CatchOutOfMemory([&]() -> std::uint32_t {
        if (!DocumentText::IsWellFormed(newText))
            return PARSER_INVALID_ARGUMENT;
        if (EndsComment(newText) || (rawBefore != RAW_NONE && EndsRawElement(rawBefore, newText, {"", "-->", true})))
            return REWRITE_ENDS_EARLY;
        constexpr std::string_view OPENER = "<!--";
        constexpr std::string_view CLOSER = "-->";
        const std::string_view bytes = GetBytes();
        const std::size_t unit = GetText().GetUnitSize();
        std::string body(bytes.substr(0, OPENER.size() * unit));
        if (!GetText().Append(newText, DocumentText::Lacking::REFUSED, &body))
            return REWRITE_NOT_IN_CHARSET;
        const std::size_t closerSize = CLOSER.size() * unit;
        const bool isClosed = bytes.size() >= (OPENER.size() + CLOSER.size()) * unit &&
                              view.ViewOf(bytes.substr(bytes.size() - closerSize)) == CLOSER;
        if (isClosed)
            body.append(bytes.substr(bytes.size() - closerSize));
        edits.body.bytes.swap(body);
        edits.body.textBegin = Insertion::NO_TEXT;
        edits.hasBody = true;
        edits.isEdited = true;
        return REWRITE_OK;
    });
}

std::uint32_t CurrentToken::SetText(WideStringView newText) {
    return ConvertAndEdit(newText, [&](std::string_view converted) { return SetText(converted); });
}

/// What is written in place of the token so far, or its own bytes, as far as it matters for a raw
/// element. Changed attributes do not matter: such a tag still begins with its "<" and ends with
/// its ">", and what could end a raw element crosses neither. So the tag is not written for every
/// text that is inserted there. Borrowed until the next edit.
std::string_view CurrentToken::GetBody() {
    return edits.hasBody ? std::string_view(edits.body.bytes) : GetBytes();
}

std::string CurrentToken::GetTail() const {
    return output->GetTail(parser->GetTokenPlace().begin);
}

}  // namespace Kestra::HTML
