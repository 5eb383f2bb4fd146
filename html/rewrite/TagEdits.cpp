#include "html/rewrite/TagEdits.h"

#include <algorithm>

#include "html/framework/QuoteKind.h"
#include "html/references/CharacterReferences.h"
#include "html/rewrite/RewriteResults.h"
#include "platform/Characters.h"

namespace Kestra::HTML {

namespace {

constexpr std::size_t FEW = 32;                // parts, or searches, for which no index pays
constexpr std::size_t LONGEST_KEPT_NAME = 64;  // bytes

bool IsSameName(std::string_view one, std::string_view other) {
    return one.size() == other.size() && std::equal(one.begin(), one.end(), other.begin(), [](char left, char right) {
               return FoldAscii(left) == FoldAscii(right);
           });
}

/// @return less than 0, 0, or greater
int CompareNames(std::string_view left, std::string_view right) {
    const std::size_t common = std::min(left.size(), right.size());
    for (std::size_t i = 0; i < common; ++i) {
        const int difference = FoldAscii(left[i]) - FoldAscii(right[i]);
        if (difference != 0)
            return difference;
    }
    return left.size() < right.size() ? -1 : left.size() > right.size() ? 1 : 0;
}

bool IsAscii(char character) {
    return static_cast<unsigned char>(character) < 0x80;
}

/// White space beyond ASCII, which ends a value or a name for the 16-bit parser.
bool HasWideSpace(std::string_view utf8) {
    if (std::all_of(utf8.begin(), utf8.end(), IsAscii))
        return false;
    constexpr std::string_view SPACES[] = {"\xC2\x85",     "\xC2\xA0",     "\xE1\x9A\x80", "\xE2\x80\xA8",
                                           "\xE2\x80\xA9", "\xE2\x80\xAF", "\xE2\x81\x9F", "\xE3\x80\x80"};
    for (const std::string_view space : SPACES) {
        if (utf8.find(space) != std::string_view::npos)
            return true;
    }
    for (std::size_t place = utf8.find("\xE2\x80"); place != std::string_view::npos;
         place = utf8.find("\xE2\x80", place + 1)) {
        const auto last = static_cast<unsigned char>(utf8[place + 2]);
        if (last >= 0x80 && last <= 0x8A)  // U+2000 to U+200A
            return true;
    }
    return false;
}

bool IsControlOrSpace(char character) {
    return static_cast<unsigned char>(character) <= ' ' || character == 0x7F;
}

/// Whether a value can be written without quotes, for the parser and for browsers.
bool NeedsNoQuotes(std::string_view value, char closingMark) {
    const auto needsQuotes = [](char character) {
        return IsControlOrSpace(character) || std::string_view("\"'=<>`").find(character) != std::string_view::npos;
    };
    return !value.empty() && value.back() != '/' && value.back() != closingMark &&
           std::none_of(value.begin(), value.end(), needsQuotes) && !HasWideSpace(value);
}

}  // namespace

bool TagEdits::ByName::operator()(std::size_t left, std::size_t right) const {
    const int order = CompareNames((*parts)[left].GetName(), (*parts)[right].GetName());
    return order < 0 || (order == 0 && left < right);
}

bool TagEdits::ByName::operator()(std::size_t left, std::string_view name) const {
    return CompareNames((*parts)[left].GetName(), name) < 0;
}

TagEdits::TagEdits() : byName(ByName(&parts)) {}

void TagEdits::Load(std::string_view tagBytes, const TagLayout& layout, DocumentText* charset) {
    parts.clear();
    parts.reserve(layout.attributes.size());
    lastPart = NONE;
    searches = 0;
    byName.clear();
    countByName = 0;
    for (const AttributePlace& place : layout.attributes) {
        const auto inTag = [&](std::uint64_t offset) { return static_cast<std::size_t>(offset - layout.offset); };
        Part& part = parts.emplace_back();
        part.begin = inTag(place.begin);
        part.nameBegin = inTag(place.nameBegin);
        part.nameEnd = inTag(place.nameEnd);
        part.valueBegin = inTag(place.valueBegin);
        part.valueEnd = inTag(place.valueEnd);
        part.end = inTag(place.end);
        part.nameInTag = tagBytes.substr(part.nameBegin, part.nameEnd - part.nameBegin);
        part.hasOwnName = !charset->IsPlain(part.nameInTag);
        if (part.hasOwnName)
            charset->Decode(part.nameInTag, &part.ownName);
        AppendPart(parts.size() - 1);
    }
    tag = tagBytes;
    nameBegin = layout.nameBegin;
    nameEnd = layout.nameEnd;
    changed = false;
    text = charset;
    canChange = nameBegin != nameEnd && !tag.empty() && text->GetUnit(tag, tag.size() - text->GetUnitSize()) == U'>';
    const char32_t second = tag.size() > text->GetUnitSize() ? text->GetUnit(tag, text->GetUnitSize()) : U'\0';
    isInstruction = second == U'?';
    isEndTag = second == U'/';
}

void TagEdits::Forget() {
    text = nullptr;
    changed = false;
}

/// Puts a part after the last one that is not removed.
void TagEdits::AppendPart(std::size_t index) {
    parts[index].before = lastPart;
    if (lastPart != NONE)
        parts[lastPart].after = index;
    lastPart = index;
}

/// The first part of a name.
std::size_t TagEdits::Find(std::string_view name) {
    if (name.empty())
        return NONE;
    if (parts.size() > FEW && ++searches > FEW)
        return FindByName(name);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (!parts[i].isRemoved && IsSameName(parts[i].GetName(), name))
            return i;
    }
    return NONE;
}

/// Adds the missing parts to the index, and searches it.
std::size_t TagEdits::FindByName(std::string_view name) {
    for (; countByName < parts.size(); ++countByName) {
        if (!parts[countByName].isRemoved && !parts[countByName].GetName().empty())
            byName.insert(countByName);
    }
    const auto found = byName.lower_bound(name);
    return found != byName.end() && IsSameName(parts[*found].GetName(), name) ? *found : NONE;
}

bool TagEdits::Has(std::string_view name) {
    return Find(name) != NONE;
}

std::uint32_t TagEdits::Get(std::string_view name, std::string* value) {
    const std::size_t index = Find(name);
    if (index == NONE)
        return REWRITE_NO_ATTRIBUTE;
    const Part& part = parts[index];
    if (part.hasNewValue) {
        *value = part.value;
        return REWRITE_OK;
    }
    std::string found;
    if (part.HasOldValue()) {
        text->Decode(tag.substr(part.valueBegin, part.valueEnd - part.valueBegin), &found);
        CharacterReferences<char, std::string>::DecodeAttributeValue(found, &found);
    }
    value->swap(found);
    return REWRITE_OK;
}

/// A name that both flavours of the parser, and browsers, read as one.
bool TagEdits::CanHaveName(std::string_view name) {
    if (!isInstruction && !name.empty() && name == lastName)  // hosts mostly set the same attribute again and again
        return true;
    const auto endsName = [this](char character) {
        return IsControlOrSpace(character) || character == '"' || character == '\'' || character == '=' ||
               character == '<' || character == '>' || character == '/' || (isInstruction && character == '?');
    };
    if (name.empty() || std::any_of(name.begin(), name.end(), endsName))
        return false;
    if (std::all_of(name.begin(), name.end(), IsAscii)) {
        if (name.size() <= LONGEST_KEPT_NAME)
            lastName.assign(name);
        return true;
    }
    if (HasWideSpace(name))
        return false;
    nameBytes.clear();
    return text->Append(name, DocumentText::Lacking::REFUSED, &nameBytes);
}

std::uint32_t TagEdits::Set(std::string_view name, std::string_view value) {
    const std::size_t index = Find(name);
    if (index == NONE)
        return Add(name, value);
    if (!canChange)
        return REWRITE_WRONG_KIND;
    parts[index].value = value;
    parts[index].hasNewValue = true;
    changed = true;
    return REWRITE_OK;
}

std::uint32_t TagEdits::Add(std::string_view name, std::string_view value) {
    if (!canChange)
        return REWRITE_WRONG_KIND;
    if (!CanHaveName(name))
        return REWRITE_BAD_NAME;
    // A bare word that ends like the tag can only be at the end of it.
    if (lastPart != NONE && !parts[lastPart].HasValue() &&
        parts[lastPart].GetName().ends_with(isInstruction ? '?' : '/'))
        return REWRITE_WRONG_KIND;
    Part part;
    part.isAdded = true;
    part.hasNewValue = true;
    part.hasOwnName = true;
    part.ownName = name;
    part.value = value;
    parts.push_back(std::move(part));
    AppendPart(parts.size() - 1);
    changed = true;
    return REWRITE_OK;
}

std::uint32_t TagEdits::Rename(std::string_view name, std::string_view newName) {
    const std::size_t index = Find(name);
    if (index == NONE)
        return REWRITE_NO_ATTRIBUTE;
    if (!canChange)
        return REWRITE_WRONG_KIND;
    if (!CanHaveName(newName))
        return REWRITE_BAD_NAME;
    std::string ownName(newName);
    // Nothing fails from here on. The index is ordered by names, so the part is taken out of it
    // while its name changes.
    auto entry = byName.extract(index);
    Part& part = parts[index];
    part.ownName.swap(ownName);
    part.hasOwnName = true;
    part.hasNewName = true;
    if (!entry.empty())
        byName.insert(std::move(entry));
    changed = true;
    return REWRITE_OK;
}

/// Refused where the next attribute would be read in another way: one without a name, `="2"`, would
/// become the value of a bare word before it, and a "<" ends an end tag that has no attribute
/// before it.
std::uint32_t TagEdits::Remove(std::string_view name) {
    const std::size_t index = Find(name);
    if (index == NONE)
        return REWRITE_NO_ATTRIBUTE;
    if (!canChange)
        return REWRITE_WRONG_KIND;
    Part& part = parts[index];
    const bool becomesValue = part.after != NONE && parts[part.after].GetName().empty() && part.before != NONE &&
                              !parts[part.before].HasValue();
    const bool endsTag =
        part.after != NONE && isEndTag && part.before == NONE && parts[part.after].GetName().starts_with('<');
    if (becomesValue || endsTag)
        return REWRITE_WRONG_KIND;
    byName.erase(index);
    if (part.before != NONE)
        parts[part.before].after = part.after;
    if (part.after != NONE)
        parts[part.after].before = part.before;
    else
        lastPart = part.before;
    part.isRemoved = true;
    changed = true;
    return REWRITE_OK;
}

/// The quote around the old value; 0 for none.
char TagEdits::GetQuote(const Part& part) const {
    return part.end == part.valueEnd ? '\0' : static_cast<char>(text->GetUnit(tag, part.valueEnd));
}

/// The quote around the new one.
char TagEdits::ChooseQuote(const Part& part) const {
    if (part.isAdded || !part.HasOldValue())
        return '"';
    const char quote = GetQuote(part);
    return quote != '\0' || NeedsNoQuotes(part.value, isInstruction ? '?' : '/') ? quote : '"';
}

void TagEdits::WriteAscii(std::string_view ascii, std::string* bytes) const {
    if (text->GetUnitSize() == 1)
        bytes->append(ascii);
    else
        text->Append(ascii, DocumentText::Lacking::REFERENCE, bytes);
}

void TagEdits::WriteNewValue(const Part& part, std::string* bytes) const {
    const char quote = ChooseQuote(part);
    const std::string_view quotes(&quote, quote == '\0' ? 0 : 1);
    const bool isPlain = std::none_of(part.value.begin(), part.value.end(), [](char character) {
        return character == '&' || character == '"' || character == '\'';
    });
    WriteAscii(quotes, bytes);
    if (isPlain) {
        text->Append(part.value, DocumentText::Lacking::REFERENCE, bytes);
    } else {
        std::string encoded(part.value);
        CharacterReferences<char, std::string>::EncodeAttributeValue(
            encoded, quote == '\'' ? QUOTE_SINGLE : QUOTE_DOUBLE, &encoded);
        text->Append(encoded, DocumentText::Lacking::REFERENCE, bytes);
    }
    WriteAscii(quotes, bytes);
}

/// Whether what has been written and what comes next would join.
bool TagEdits::NeedsSpace(const Written& written, std::size_t next) const {
    const std::string& bytes = *written.bytes;
    return !written.endsInQuote && !text->IsSpaceAt(tag, next) &&
           !text->IsSpaceAt(bytes, bytes.size() - text->GetUnitSize());
}

/// A value that is missing would take what follows it.
void TagEdits::CompleteValue(Written* written) const {
    if (!written->endsInMissingValue)
        return;
    WriteAscii("\"\"", written->bytes);
    written->endsInMissingValue = false;
    written->endsInQuote = true;
    written->endsInBareValue = false;
}

void TagEdits::WritePart(const Part& part, Written* written) const {
    std::string* const bytes = written->bytes;
    if (part.isAdded) {
        CompleteValue(written);
        WriteAscii(" ", bytes);
        text->Append(part.GetName(), DocumentText::Lacking::REFERENCE, bytes);
        WriteAscii("=", bytes);
        WriteNewValue(part, bytes);
        written->endsInQuote = true;
        written->endsInBareValue = false;
        return;
    }
    if (written->isAfterRemoved || part.hasNewName) {
        CompleteValue(written);
        if (NeedsSpace(*written, part.begin))
            WriteAscii(" ", bytes);
    }
    bytes->append(tag, part.begin, part.nameBegin - part.begin);
    if (part.hasNewName)
        text->Append(part.GetName(), DocumentText::Lacking::REFERENCE, bytes);
    else
        bytes->append(tag, part.nameBegin, part.nameEnd - part.nameBegin);
    char quote = GetQuote(part);
    if (part.hasNewValue) {
        const std::size_t quoteLength = quote == '\0' ? 0 : text->GetUnitSize();
        if (part.HasOldValue())
            bytes->append(tag, part.nameEnd, part.valueBegin - quoteLength - part.nameEnd);
        else
            WriteAscii("=", bytes);
        WriteNewValue(part, bytes);
        quote = ChooseQuote(part);
    } else {
        bytes->append(tag, part.nameEnd, part.end - part.nameEnd);
    }
    EndPart(part, quote, written);
}

/// An attribute of the tag has been written with a quote around its value, or without one.
void TagEdits::EndPart(const Part& part, char quote, Written* written) {
    written->endsInQuote = quote != '\0';
    written->endsInBareValue = part.HasValue() && quote == '\0';
    written->endsInMissingValue = written->endsInBareValue && !part.hasNewValue && part.valueBegin == part.valueEnd;
    written->isAfterRemoved = false;
}

/// The mark at the end of the tag must not become a part of a value, nor the end of a value or a
/// name such a mark.
void TagEdits::SeparateTail(std::size_t tail, Written* written) const {
    const char32_t next = text->GetUnit(tag, tail);
    const char32_t last = text->GetUnit(*written->bytes, written->bytes->size() - text->GetUnitSize());
    const bool isMark = next == U'/' || next == U'?';
    if (next != U'>')
        CompleteValue(written);
    const bool growsTogether =
        isMark ? written->endsInBareValue : next == U'>' && last == (isInstruction ? U'?' : U'/');
    if (growsTogether && !written->endsInQuote)
        WriteAscii(" ", written->bytes);
}

void TagEdits::Write(std::string* bytes) const {
    Written written{bytes};
    std::size_t tail = nameEnd;
    std::size_t copied = 0;  // so many bytes of the tag are written, or are left out
    const auto copyUntil = [&](std::size_t end) {
        bytes->append(tag, copied, end - copied);
        copied = end;
    };
    for (const Part& part : parts) {
        if (part.isAdded) {
            copyUntil(tail);
        } else {
            tail = part.end;
            if (part.IsAsItWas() && !written.isAfterRemoved) {
                EndPart(part, GetQuote(part), &written);
                continue;
            }
            copyUntil(part.begin);
            copied = part.end;
        }
        if (part.isRemoved)
            written.isAfterRemoved = written.isAfterRemoved || !part.isAdded;
        else
            WritePart(part, &written);
    }
    if (written.isAfterRemoved)
        SeparateTail(tail, &written);
    copyUntil(tag.size());
}

}  // namespace Kestra::HTML
