#!/usr/bin/env python3
"""The translated documents of Debian packages, as text: message catalogues, manual pages, guides.

A document is a file of a package. It belongs to one of three parts: the language models are made of
"model", the confidence is fitted over "tune", and the detector is tested with "test". Documents for
tests come from packages of their own; of the others a hash of the name decides. `UsedText` finds the
text that a document shares with those of another part.

As a program it prints the names of the packages.
"""
import functools, glob, gzip, hashlib, html.parser, os, random, re, struct, unicodedata

PACKAGES = (
    "adduser apt aptitude-common bash coreutils deja-dup diffutils dpkg evince-common findutils"
    " gedit-common gettext gimp-data gnome-calculator gnupg-l10n grep installation-guide-amd64 libglib2.0-data"
    " libgtk-3-common libgtk2.0-common make manpages-de manpages-es manpages-fr manpages-ja manpages-pl"
    " manpages-pt-br manpages-ru manpages-tr manpages-zh nano nautilus-data sed shared-mime-info synaptic tar"
    " totem-common util-linux-locales vlc-l10n wbulgarian wget wukrainian xz-utils yelp"
).split()
TEST_PACKAGES = (
    "epiphany-browser-data evolution-common file-roller gnome-control-center-data gnome-user-docs gnucash-common"
    " gnumeric-common manpages-cs manpages-da manpages-el manpages-fi manpages-hu manpages-it manpages-mk"
    " manpages-nb manpages-nl manpages-ro manpages-sr manpages-sv manpages-uk manpages-vi pidgin-data rhythmbox-data"
).split()

# The messages that programs are written with are English.
ENGLISH_FROM = "de"
ALIASES = {"pt_PT": "pt", "zh-cn": "zh_CN", "zh-tw": "zh_TW", "pt-br": "pt_BR", "am_ET": "am"}
# Files of the same name are translations of one text: a thousand of each language are enough.
MOST_FILES = 1000
MOST_GUIDES = 3000  # of all languages
MOST_CHARACTERS = 600000  # of a language in a part
# Languages whose text is close enough to add to another's.
ALSO = {"nb": ["nn"], "pt": ["pt_BR"]}
# Variants of a language share texts, so they are compared as one.
VARIANTS = ({"nb", "nn"}, {"pt", "pt_BR"}, {"zh_TW", "zh_HK"})
SMALLEST = 2000  # characters
# Letters that two texts have in common, in a row: they share it. Where a character is a syllable or
# a word, fewer are as much.
LONG_RUN, SHORT_RUN = 30, 12
SYLLABLES = "ja ko zh_CN zh_TW zh_HK".split()
SPELLINGS = {0x06CC: 0x064A, 0x06A9: 0x0643, 0x0131: 0x0069}
# Manual pages that list the characters of a charset are no text of their language.
CHARSET_TABLES = re.compile(r"/(iso[-_]8859|koi8|cp125|armscii|charsets|ascii|utf-8|unicode|latin)[^/]*$")


class Document:
    def __init__(self, name, language, read):
        self.name = name
        self.language = language
        self.read = functools.lru_cache(maxsize=1)(read)

    def find_part(self):
        if self.name.split("/")[0] in TEST_PACKAGES:
            return "test"
        return ("tune", "tune", "tune", "model", "model")[hashlib.sha256(self.name.encode()).digest()[0] % 5]


class UsedText:
    """The text of one language that is used already, and what other text shares with it.

    Only letters are compared, without their case and marks. Text shares what is used when it has a
    run of as many letters in common, or a whole line, however short that is.
    """

    def __init__(self, language):
        self.run = SHORT_RUN if language in SYLLABLES else LONG_RUN
        self.runs = set()
        self.lines = set()

    def add(self, text):
        letters = find_letters(text)
        self.runs.update(letters[i : i + self.run] for i in range(len(letters) - self.run + 1))
        self.lines.update(map(find_letters, text.split("\n")))

    def shares(self, text):
        """Whether a run or a line of the text is used."""
        letters = find_letters(text)
        if any(letters[i : i + self.run] in self.runs for i in range(len(letters) - self.run + 1)):
            return True
        lines = map(find_letters, text.split("\n"))
        return any(line in self.lines for line in lines if line)

    def leave(self, text):
        """The lines of the text that share nothing."""
        return "\n".join(line for line in text.split("\n") if not self.shares(line))


def find_letters(text):
    """As they are compared; spellings of one letter are the same."""
    text = unicodedata.normalize("NFKD", text).translate(SPELLINGS)
    return "".join(character for character in text.lower() if character.isalpha())


def take(texts, most):
    """So many characters at most of all together, of long ones no more than of others."""
    taken = []
    left = most
    for position, text in enumerate(sorted(texts, key=len)):
        taken.append(text[: left // (len(texts) - position)])
        left -= len(taken[-1])
    return taken


def tidy(text):
    """Without the marks for keys and the placeholders of messages, which no page has."""
    text = re.sub(r"(?<=\w)_(?=\w)|(?<!\w)[_&](?=\w)", "", text)
    text = re.sub(r"\([_&]\w\)", "", text)
    text = re.sub(r"%[-+0-9.]*l*[a-zA-Z]|\\n|\\t", "", text)
    return re.sub(r"[ \t]+", " ", text)


def read_messages(path):
    """The pairs of messages of a compiled catalogue, with the charset that its header names."""
    with open(path, "rb") as file:
        data = file.read()
    order = "<" if data[:4] == b"\xde\x12\x04\x95" else ">"
    count, sources, translations = struct.unpack_from(order + "3I", data, 8)
    pairs = []
    for i in range(count):
        pair = []
        for table in (sources, translations):
            length, offset = struct.unpack_from(order + "2I", data, table + 8 * i)
            pair.append(data[offset : offset + length].split(b"\0")[0])
        pairs.append(pair)
    header = b"".join(translation for source, translation in pairs if not source)
    charset = "utf-8"  # also of some that name another
    try:
        b"".join(translation for _, translation in pairs).decode(charset)
    except UnicodeError:
        named = re.search(rb"charset=([-\w]+)", header)
        charset = named[1].decode() if named else charset
    return [(source.decode("utf-8", "ignore"), translation.decode(charset, "ignore")) for source, translation in pairs]


def read_catalogue(path, english=False):
    messages = []
    for source, translation in read_messages(path):
        message = source.split("\x04")[-1] if english else translation
        if source and (english or translation != source):
            messages.append(tidy(message))
    # In a catalogue, messages are in the order of their English: neighbours share their first word.
    random.Random(1).shuffle(messages)
    return "\n".join(messages)


def read_manual(path):
    with gzip.open(path, "rt", encoding="utf-8", errors="ignore") as file:
        lines = [line for line in file.read().split("\n") if not re.match(r"[.']", line)]
    text = "\n".join(lines)
    text = re.sub(r"\\f\[[^]]*\]|\\f\(..|\\f.|\\[&%/,|^]|\\s[-+]?\d", "", text)
    return re.sub(r"\\(\(..|\[[^]]*\]|\*.|.)", lambda found: "-" if found[1] == "-" else " ", text)


BLOCKS = "p h1 h2 h3 h4 li dt dd td th div title desc item note section".split()


class TextOf(html.parser.HTMLParser):
    def __init__(self):
        super().__init__()
        self.pieces = []
        self.hidden = 0

    def handle_starttag(self, tag, attributes):
        self.pieces.append("\0" if tag in BLOCKS else "")
        self.hidden += tag in ("script", "style", "pre")

    def handle_endtag(self, tag):
        self.hidden -= tag in ("script", "style", "pre")

    def handle_data(self, data):
        if not self.hidden:
            self.pieces.append(data)


def read_page(path):
    with open(path, encoding="utf-8", errors="ignore") as file:
        reader = TextOf()
        reader.feed(file.read())
    # A line of the source ends anywhere, a paragraph where its element does.
    paragraphs = "".join(reader.pieces).split("\0")
    return "\n".join(re.sub(r"\s+", " ", paragraph).strip() for paragraph in paragraphs)


def read_guide(path):
    """Without what is not translated."""
    english = re.sub(r"/usr/share/help/[^/]*/", "/usr/share/help/C/", path)
    same = set(read_page(english).split("\n")) if os.path.exists(english) else set()
    return "\n".join(line for line in read_page(path).split("\n") if line not in same)


def read_words(path):
    with open(path, encoding="utf-8", errors="ignore") as file:
        words = file.read().split()
    random.Random(1).shuffle(words)
    return " ".join(words[:20000])


def read_part(found, part, languages):
    """The texts of a part in these languages."""
    texts = [document.read() for document in found if document.language in languages and document.find_part() == part]
    return take([text for text in texts if len(text) >= SMALLEST], MOST_CHARACTERS)


def read_model(found, language):
    """The texts that the model of a language is made of."""
    return read_part(found, "model", [language] + ALSO.get(language, []))


def read_parts(found, language):
    """The texts for "tune" and "test" in a language, {part: texts}, none of which shares any with the
    models or with the other, and {part: UsedText} with all that each must not share."""
    variants = next((group for group in VARIANTS if language in group), {language})
    used = {"tune": UsedText(language), "test": UsedText(language)}
    for variant in sorted(variants):
        for text in read_model(found, variant):
            used["tune"].add(text)
            used["test"].add(text)
    texts = {}
    for variant in sorted(variants):
        tune = [used["tune"].leave(text) for text in read_part(found, "tune", [variant])]
        for text in tune:
            used["test"].add(text)
        if variant == language:
            texts["tune"] = tune
    texts["test"] = [used["test"].leave(text) for text in read_part(found, "test", [language])]
    for part in texts:
        texts[part] = [text for text in texts[part] if len(text) >= SMALLEST]
    return texts, used


def find_documents(folder):
    """All documents below `folder`/PACKAGE, in the order of their names. A link is none."""
    found = []

    def add(path, language, reader):
        if os.path.islink(path):
            return
        name = os.path.relpath(path, folder)
        language = ALIASES.get(language, language)
        found.append(Document(name + ":" + language, language, functools.partial(reader, path)))

    for package in PACKAGES + TEST_PACKAGES:
        root = os.path.join(folder, package)
        for path in sorted(glob.glob(root + "/usr/share/locale*/*/LC_MESSAGES/*.mo")):
            language = path.split("/LC_MESSAGES/")[0].rsplit("/", 1)[1]
            add(path, language, read_catalogue)
            if language == ENGLISH_FROM:
                add(path, "en", functools.partial(read_catalogue, english=True))
        manuals = sorted(glob.glob(root + "/usr/share/man/*/man*/*.gz"))
        manuals = [path for path in manuals if not CHARSET_TABLES.search(path)]
        for path in manuals[:: 1 + len(manuals) // MOST_FILES]:
            add(path, path.split("/usr/share/man/")[1].split("/")[0], read_manual)
        for path in sorted(glob.glob(root + "/usr/share/doc/installation-guide-amd64/*/*.html")):
            add(path, path.split("/")[-2], read_page)
        guides = sorted(glob.glob(root + "/usr/share/help/*/*/*.page"))
        for path in guides[:: 1 + len(guides) // MOST_GUIDES]:
            add(path, path.split("/usr/share/help/")[1].split("/")[0], read_guide)
    for package, language in (("wbulgarian", "bg"), ("wukrainian", "uk")):
        for path in sorted(glob.glob(os.path.join(folder, package, "usr/share/dict/*"))):
            add(path, language, read_words)
    return found


if __name__ == "__main__":
    print(" ".join(PACKAGES + TEST_PACKAGES))
