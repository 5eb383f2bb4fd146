#include "html/rewrite/DocumentText.h"

#include <algorithm>

#include "platform/CodePoints.h"
#include "platform/Results.h"

namespace Kestra::HTML {

namespace {

using StringNS::CharSet;

constexpr std::size_t CHUNK = 64;  // characters that are converted at once, and one by one when that fails

bool IsAscii(char character) {
    return static_cast<unsigned char>(character) < 0x80;
}

std::size_t CountAscii(std::string_view text) {
    std::size_t count = 0;
    while (count < text.size() && IsAscii(text[count]))
        ++count;
    return count;
}

/// Reads the character at `*place`, and moves to the next one.
/// @return ILL_FORMED; `*place` is then unspecified
char32_t ReadCharacter(std::string_view utf8, std::size_t* place) {
    const char* next = utf8.data() + *place;
    const char32_t character = ReadUtf8(&next, utf8.data() + utf8.size());
    *place = static_cast<std::size_t>(next - utf8.data());
    return character;
}

void AppendUtf16(char32_t character, WideString* wide) {
    WriteUtf16(character, [wide](WideChar unit) { wide->push_back(unit); });
}

/// @return whether all of it is well-formed; a surrogate alone is appended as U+FFFD
bool AppendFromWide(WideStringView wide, std::string* utf8) {
    bool isWellFormed = true;
    const WideChar* next = wide.data();
    const WideChar* const end = next + wide.size();
    while (next != end) {
        const char32_t character = ReadUtf16(&next, end);
        const bool isLone = IsSurrogate(character);
        isWellFormed = isWellFormed && !isLone;
        WriteUtf8(isLone ? REPLACEMENT_CHARACTER : character, [utf8](char byte) { utf8->push_back(byte); });
    }
    return isWellFormed;
}

/// ISO-2022 and similar ones, EBCDIC with shifts, HZ, UTF-7, and those whose characters have two or
/// four bytes: what a byte of theirs means depends on others.
bool HasNoPlainBytes(CharSet::Code code) {
    return (code >= 50220 && code <= 50229) || (code >= 50930 && code <= 50939) || code == 52936 ||
           code == CharSet::UTF7 || code == CharSet::UTF16_LE || code == 1201 || code == 12000 || code == 12001 ||
           code == 65005 || code == 65006;
}

/// A byte of a character beyond ASCII, not the first: a digit, or what the trail bytes of
/// multi-byte charsets are. None of white space, quotes and the marks of tags and comments.
bool IsHarmlessTrail(char byte) {
    return !IsAscii(byte) || (byte >= '0' && byte <= '9') || (byte >= '@' && byte <= '~');
}

}  // namespace

bool DocumentText::IsWellFormed(std::string_view utf8) {
    for (std::size_t place = CountAscii(utf8); place < utf8.size();) {
        if (ReadCharacter(utf8, &place) == ILL_FORMED)
            return false;
        place += CountAscii(utf8.substr(place));
    }
    return true;
}

bool DocumentText::FromWide(WideStringView wide, std::string* utf8) {
    utf8->clear();
    return AppendFromWide(wide, utf8);
}

void DocumentText::SetCharset(CharSet::Code code, bool isUtf16) {
    isWide = isUtf16;
    if (code == charset)
        return;
    charset = code;
    kind = Kind::UNKNOWN;
}

char32_t DocumentText::GetUnit(std::string_view bytes, std::size_t place) const {
    const auto byte = [&](std::size_t at) { return static_cast<char32_t>(static_cast<unsigned char>(bytes[at])); };
    return isWide ? byte(place) | byte(place + 1) << 8 : byte(place);
}

bool DocumentText::IsSpaceAt(std::string_view bytes, std::size_t place) const {
    return isWide ? IsSpace(static_cast<WideChar>(GetUnit(bytes, place))) : IsSpace(bytes[place]);
}

DocumentText::Kind DocumentText::GetKind() {
    if (kind == Kind::UNKNOWN) {
        if (charset == CharSet::UTF8)
            kind = Kind::UTF8;
        else if (charset == CharSet::UNKNOWN || HasNoPlainBytes(charset) || !converter.KeepsAscii(charset))
            kind = Kind::NONE;
        else
            kind = Kind::EXTENDS_ASCII;
    }
    return kind;
}

bool DocumentText::IsPlain(std::string_view bytes) const {
    return !isWide && CountAscii(bytes) == bytes.size() && !HasNoPlainBytes(charset);
}

bool DocumentText::Append(std::string_view utf8, Lacking lacking, std::string* bytes) {
    if (isWide)
        return AppendWide(utf8, bytes);
    for (;;) {
        const std::size_t ascii = CountAscii(utf8);
        bytes->append(utf8, 0, ascii);
        utf8.remove_prefix(ascii);
        if (utf8.empty())
            return true;
        const auto end = static_cast<std::size_t>(std::find_if(utf8.begin(), utf8.end(), IsAscii) - utf8.begin());
        if (!AppendBeyondAscii(utf8.substr(0, end), lacking, bytes))
            return false;
        utf8.remove_prefix(end);
    }
}

bool DocumentText::AppendWide(std::string_view utf8, std::string* bytes) const {
    WideString units;
    for (std::size_t place = 0; place < utf8.size();)
        AppendUtf16(ReadCharacter(utf8, &place), &units);
    for (const WideChar unit : units) {
        bytes->push_back(static_cast<char>(static_cast<unsigned char>(static_cast<unsigned>(unit) & 0xFFU)));
        bytes->push_back(static_cast<char>(static_cast<unsigned char>(static_cast<unsigned>(unit) >> 8 & 0xFFU)));
    }
    return true;
}

/// A run without ASCII, many characters at once.
bool DocumentText::AppendBeyondAscii(std::string_view run, Lacking lacking, std::string* bytes) {
    const Kind kindOfCharset = GetKind();
    if (kindOfCharset == Kind::UTF8) {
        bytes->append(run);
        return true;
    }
    std::size_t place = 0;
    while (place < run.size()) {
        const std::size_t begin = place;
        wideText.clear();
        while (place < run.size() && wideText.size() < CHUNK)
            AppendUtf16(ReadCharacter(run, &place), &wideText);
        if (kindOfCharset == Kind::EXTENDS_ASCII && Convert(WideString(wideText))) {
            bytes->append(converted);
            continue;
        }
        for (place = begin; place < run.size() && place < begin + CHUNK;) {
            const char32_t character = ReadCharacter(run, &place);
            WideString one;
            AppendUtf16(character, &one);
            if (kindOfCharset == Kind::EXTENDS_ASCII && Convert(one))
                bytes->append(converted);
            else if (!AppendLacking(character, lacking, bytes))
                return false;
        }
    }
    return true;
}

/// Converts characters beyond ASCII. All bytes of ASCII stand for themselves, so a byte of ASCII
/// that begins a character would not convert back to one beyond it.
/// @return whether `converted` has what can be written
bool DocumentText::Convert(WideStringView characters) {
    if (converter.FromWide(charset, characters.data(), characters.size(), &converted) != RESULT_OK || converted.empty())
        return false;
    if (IsAscii(converted.front()) || !std::all_of(converted.begin(), converted.end(), IsHarmlessTrail))
        return false;
    return converter.ToWide(charset, converted.data(), converted.size(), &again) == RESULT_OK && again == characters;
}

bool DocumentText::AppendLacking(char32_t character, Lacking lacking, std::string* bytes) const {
    if (lacking == Lacking::REFUSED)
        return false;
    bytes->append("&#").append(std::to_string(static_cast<std::uint32_t>(character))).append(";");
    return true;
}

void DocumentText::Decode(std::string_view bytes, std::string* utf8) {
    utf8->clear();
    if (isWide) {
        again.clear();
        for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
            const unsigned low = static_cast<unsigned char>(bytes[i]);
            const unsigned high = static_cast<unsigned char>(bytes[i + 1]);
            again.push_back(static_cast<WideChar>(high << 8 | low));
        }
        AppendFromWide(again, utf8);
        return;
    }
    const bool maybeUtf8 = charset == CharSet::UTF8 || charset == CharSet::UNKNOWN;
    if (IsPlain(bytes) || (maybeUtf8 && IsWellFormed(bytes))) {
        utf8->assign(bytes);
        return;
    }
    const CharSet::Code code = charset == CharSet::UNKNOWN ? CharSet::WINDOWS_1252 : charset;
    if (converter.ToWide(code, bytes.data(), bytes.size(), &again) != RESULT_OK &&
        converter.ToWide(CharSet::WINDOWS_1252, bytes.data(), bytes.size(), &again) != RESULT_OK)
        return;
    AppendFromWide(again, utf8);
}

}  // namespace Kestra::HTML
