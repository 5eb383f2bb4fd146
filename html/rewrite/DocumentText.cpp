#include "html/rewrite/DocumentText.h"

#include <algorithm>

#include "platform/Results.h"

namespace Kestra::HTML {

namespace {

using StringNS::CharSet;

constexpr char32_t REPLACEMENT = 0xFFFD;
constexpr char32_t ILL_FORMED = 0xFFFFFFFF;
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

/// Reads the character at `*place`, and moves to the next one. @return ILL_FORMED, `*place` then means nothing
char32_t ReadCharacter(std::string_view utf8, std::size_t* place) {
    const auto lead = static_cast<unsigned char>(utf8[(*place)++]);
    if (lead < 0x80)
        return lead;
    const std::size_t more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    if (lead < 0xC2 || lead > 0xF4 || utf8.size() - *place < more)
        return ILL_FORMED;
    char32_t character = lead & (0x3FU >> more);
    for (std::size_t i = 0; i < more; ++i) {
        const auto trail = static_cast<unsigned char>(utf8[(*place)++]);
        if ((trail & 0xC0U) != 0x80)
            return ILL_FORMED;
        character = character << 6 | (trail & 0x3FU);
    }
    const char32_t least = more == 3 ? 0x10000 : more == 2 ? 0x800 : 0x80;
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    return character < least || character > 0x10FFFF || isSurrogate ? ILL_FORMED : character;
}

void AppendUtf8(char32_t character, std::string* utf8) {
    const auto add = [utf8](char32_t byte) { utf8->push_back(static_cast<char>(static_cast<unsigned char>(byte))); };
    if (character < 0x80) {
        add(character);
        return;
    }
    if (character < 0x800) {
        add(0xC0 | character >> 6);
    } else {
        if (character < 0x10000) {
            add(0xE0 | character >> 12);
        } else {
            add(0xF0 | character >> 18);
            add(0x80 | (character >> 12 & 0x3F));
        }
        add(0x80 | (character >> 6 & 0x3F));
    }
    add(0x80 | (character & 0x3F));
}

void AppendUtf16(char32_t character, WideString* wide) {
    if (character < 0x10000) {
        wide->push_back(static_cast<WideChar>(character));
    } else {
        wide->push_back(static_cast<WideChar>(0xD7C0 + (character >> 10)));  // 0xD800 - (0x10000 >> 10)
        wide->push_back(static_cast<WideChar>(0xDC00 | (character & 0x3FF)));
    }
}

bool IsHighSurrogate(WideChar unit) {
    return (static_cast<unsigned>(unit) & 0xFC00U) == 0xD800U;
}

bool IsLowSurrogate(WideChar unit) {
    return (static_cast<unsigned>(unit) & 0xFC00U) == 0xDC00U;
}

/// @return whether all of it is well-formed; a surrogate alone is appended as U+FFFD
bool AppendFromWide(WideStringView wide, std::string* utf8) {
    bool isWellFormed = true;
    for (std::size_t i = 0; i < wide.size(); ++i) {
        char32_t character = static_cast<unsigned>(wide[i]) & 0xFFFFU;
        if (IsHighSurrogate(wide[i]) && i + 1 < wide.size() && IsLowSurrogate(wide[i + 1])) {
            character = 0x10000 + ((character & 0x3FF) << 10) + (static_cast<unsigned>(wide[i + 1]) & 0x3FFU);
            ++i;
        } else if (IsHighSurrogate(wide[i]) || IsLowSurrogate(wide[i])) {
            character = REPLACEMENT;
            isWellFormed = false;
        }
        AppendUtf8(character, utf8);
    }
    return isWellFormed;
}

/// ISO-2022 and its like, EBCDIC with shifts, HZ, UTF-7, and those whose characters have two or four bytes: what a byte of theirs means
/// depends on others.
bool HasNoPlainBytes(CharSet::Code code) {
    return (code >= 50220 && code <= 50229) || (code >= 50930 && code <= 50939) || code == 52936 || code == CharSet::UTF7 ||
           code == CharSet::UTF16_LE || code == 1201 || code == 12000 || code == 12001 || code == 65005 || code == 65006;
}

/// A byte of a character beyond ASCII, not the first: a digit, or what the trail bytes of multi-byte charsets are. None of white space,
/// quotes and the marks of tags and comments.
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

/// Converts characters beyond ASCII. All bytes of ASCII stand for themselves, so a byte of ASCII that begins a character would not convert
/// back to one beyond it.
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
