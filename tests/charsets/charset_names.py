"""In which charsets the languages of the samples are written, and what reads them.

The names of charsets are those of Python's codecs.
"""
import codecs, subprocess, unicodedata

WEST = "cp1252 iso8859-1 iso8859-15"
CENTRAL = "cp1250 iso8859-2 cp852"
MAC_CENTRAL = " mac-latin2"
DOS_WEST = " cp850 mac-roman"
BALTIC = "cp1257 iso8859-13 iso8859-4"
CYRILLIC = "cp1251 iso8859-5 cp855"

ENCODINGS = {
    "ar": "cp1256 iso8859-6",
    "be": "cp1251",
    "bg": CYRILLIC,
    "ca": WEST,
    "cs": CENTRAL + MAC_CENTRAL,
    "cy": "cp1252",
    "da": WEST,
    "de": WEST + DOS_WEST + " cp437",
    "el": "cp1253 iso8859-7 mac-greek",
    "en": "cp1252",
    "eo": "iso8859-3",
    "es": WEST + DOS_WEST,
    "et": "cp1257 iso8859-13 iso8859-15 cp1252",
    "eu": "cp1252",
    "fa": "cp1256",
    "fi": WEST,
    "fr": WEST + DOS_WEST,
    "ga": "cp1252",
    "gl": "cp1252 iso8859-1",
    "he": "cp1255 iso8859-8",
    "hr": CENTRAL,
    "hu": CENTRAL + MAC_CENTRAL,
    "is": "cp1252 iso8859-1",
    "it": WEST + DOS_WEST,
    "ja": "cp932 shift_jis euc-jp iso2022-jp",
    "kk": "kz1048 ptcp154",
    "ko": "cp949 euc-kr iso2022-kr",
    "lt": BALTIC,
    "lv": BALTIC,
    "mk": CYRILLIC,
    "nb": WEST,
    "nl": "cp1252 iso8859-1",
    "nn": "cp1252",
    "pl": CENTRAL + MAC_CENTRAL,
    "pt": WEST,
    "pt_BR": "cp1252 iso8859-1",
    "ro": CENTRAL,
    "ru": "cp1251 koi8-r iso8859-5 cp866 mac-cyrillic",
    "sk": CENTRAL,
    "sl": CENTRAL,
    "sq": "cp1252 cp1250",
    "sr": CYRILLIC,
    "sr@latin": CENTRAL,
    "sv": WEST + DOS_WEST,
    "th": "cp874 tis-620",
    "tr": "cp1254 iso8859-9 cp857 mac-turkish",
    "uk": "cp1251 koi8-u iso8859-5 mac-cyrillic",
    "vi": "cp1258 viscii tcvn",
    "zh_CN": "gb2312 gbk gb18030 hz",
    "zh_TW": "big5",
}

# Languages whose samples come in UTF-16 without a mark, too. All come in UTF-8.
UTF16 = "ar de el en he ja ko ru th uk zh_CN zh_TW".split()

# Charsets that have no code page: no answer for their text is right, so a sure one is wrong.
NAMELESS = {70001: "viscii", 70002: "tcvn", 70003: "kz1048", 70004: "ptcp154"}

# The code pages that the detector answers, and the codec that reads each.
CODECS = {
    437: "cp437", 850: "cp850", 852: "cp852", 855: "cp855", 857: "cp857", 866: "cp866", 874: "cp874", 932: "cp932",
    949: "cp949", 950: "cp950", 10000: "mac-roman", 10006: "mac-greek", 10081: "mac-turkish",
    1200: "utf-16-le", 1201: "utf-16-be", 1250: "cp1250", 1251: "cp1251", 1252: "cp1252", 1253: "cp1253",
    1254: "cp1254", 1255: "cp1255", 1256: "cp1256", 1257: "cp1257", 1258: "cp1258", 10007: "mac-cyrillic",
    10029: "mac-latin2", 12000: "utf-32-le", 12001: "utf-32-be", 20127: "ascii", 20866: "koi8-r", 21866: "koi8-u",
    28592: "iso8859-2", 28593: "iso8859-3", 28594: "iso8859-4", 28595: "iso8859-5", 28596: "iso8859-6",
    28597: "iso8859-7", 28598: "iso8859-8", 28603: "iso8859-13", 28605: "iso8859-15", 50221: "iso2022-jp",
    50225: "iso2022-kr", 51932: "euc-jp", 52936: "hz", 54936: "gb18030", 65001: "utf-8",
}

PLAIN = {
    "\u2018": "'", "\u2019": "'", "\u201a": ",", "\u201c": '"', "\u201d": '"', "\u201e": '"', "\u2013": "-",
    "\u2014": "-", "\u2010": "-", "\u2011": "-", "\u2012": "-", "\u2026": "...", "\u00a0": " ", "\u202f": " ",
    "\u2212": "-", "\u2022": "*", "\u00ab": '"', "\u00bb": '"', "\u2039": "'", "\u203a": "'", "\u2192": "->",
    "\u0219": "\u015f", "\u021b": "\u0163", "\u0218": "\u015e", "\u021a": "\u0162", "\u06cc": "\u064a",
    "\u06a9": "\u0643", "\u00d7": "x", "\u02bc": "'", "\u00b7": ".", "\u00b4": "'",
}
# A charset goes by the name of another that has more characters.
READ_AS = {"shift_jis": "cp932", "gb2312": "gb18030", "gbk": "gb18030", "euc-kr": "cp949", "big5": "cp950"}
# Every answer is taken so, whoever gives it: a charset that is a subset of a code page counts as
# that code page. The names are those of codecs.lookup.
FOLDED = {
    "iso8859-1": "cp1252", "iso8859-9": "cp1254", "iso8859-11": "cp874", "tis-620": "cp874",
    "shift_jis": "cp932", "gb2312": "gb18030", "gbk": "gb18030", "euc_kr": "cp949", "big5": "cp950",
}
TONES = "\u0300\u0301\u0303\u0309\u0323"


# Python has no codec for these; the C library has.
FROM_SYSTEM = {"viscii": "VISCII", "tcvn": "TCVN5712-1"}


def find_system_codec(name):
    if name not in FROM_SYSTEM:
        return None
    characters = [subprocess.run(["iconv", "-f", FROM_SYSTEM[name], "-t", "UTF-8"], input=bytes([byte]),
                                 capture_output=True, check=False).stdout.decode() for byte in range(256)]
    decoding = "".join(character if len(character) == 1 else "\ufffe" for character in characters)
    encoding = codecs.charmap_build(decoding)
    return codecs.CodecInfo(lambda text, errors="strict": codecs.charmap_encode(text, errors, encoding),
                            lambda data, errors="strict": codecs.charmap_decode(data, errors, decoding), name=name)


codecs.register(find_system_codec)


def can_write(text, codec):
    """Also as the other name of the charset has it: the two differ in some signs."""
    try:
        return text.encode(codec).decode(READ_AS.get(codec, codec)) == text
    except UnicodeError:
        return False


def fit(character, codec):
    """The character, or what a writer puts who has only that charset; empty when there is nothing."""
    parts = unicodedata.normalize("NFD", character)
    tones = "".join(part for part in parts if part in TONES)
    letter = unicodedata.normalize("NFC", "".join(part for part in parts if part not in TONES))
    for choice in (character, PLAIN.get(character, ""), letter + tones):
        if choice and can_write(choice, codec):
            return choice
    return ""


class Fitter(dict):
    """Text as it can be written in one charset; each character is looked at once."""

    def __init__(self, codec):
        super().__init__()
        self.codec = codec

    def __missing__(self, code):
        self[code] = fit(chr(code), self.codec)
        return self[code]


def reads_same(data, codec, answer):
    """Whether the codec `answer` reads `data`, which was written in `codec`, as its readers do."""
    try:
        return data.decode(answer) == data.decode(READ_AS.get(codec, codec))
    except UnicodeError:
        return False
