#!/usr/bin/env python3
"""The translated documents of Debian packages, as text: message catalogues, manual pages, guides.

A document is a file of a package. It belongs to one of three parts, by a hash of its name: the
language models are made of "model", the confidence is fitted over "tune", and the detector is tested
with "test". A manual page with two names, one of them a link, can be in two parts, and catalogues of
different programs share lines.

As a program it prints the names of the packages.
"""
import functools, glob, gzip, hashlib, html.parser, os, random, re, struct

PACKAGES = (
    "adduser apt aptitude-common bash coreutils deja-dup diffutils dpkg evince-common findutils"
    " gedit-common gettext gimp-data gnome-calculator gnupg-l10n grep installation-guide-amd64 libglib2.0-data"
    " libgtk-3-common libgtk2.0-common make manpages-de manpages-es manpages-fr manpages-ja manpages-pl"
    " manpages-pt-br manpages-ru manpages-tr manpages-zh nano nautilus-data sed shared-mime-info synaptic tar"
    " totem-common util-linux-locales vlc-l10n wbulgarian wget wukrainian xz-utils yelp"
).split()

# The messages that programs are written with are English.
ENGLISH_FROM = "de"
ALIASES = {"pt_PT": "pt", "zh-cn": "zh_CN", "zh-tw": "zh_TW", "pt-br": "pt_BR", "am_ET": "am"}
# Files of the same name are translations of one text: a thousand of each language are enough.
MOST_FILES = 1000
SMALLEST = 2000  # characters
# Manual pages that list the characters of a charset are no text of their language.
CHARSET_TABLES = re.compile(r"/(iso[-_]8859|koi8|cp125|armscii|charsets|ascii|utf-8|unicode|latin)[^/]*$")


class Document:
    def __init__(self, name, language, read):
        self.name = name
        self.language = language
        self.read = functools.lru_cache(maxsize=1)(read)

    def find_part(self):
        return ("test", "test", "tune", "model", "model")[hashlib.sha256(self.name.encode()).digest()[0] % 5]


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


class TextOf(html.parser.HTMLParser):
    def __init__(self):
        super().__init__()
        self.pieces = []
        self.hidden = 0

    def handle_starttag(self, tag, attributes):
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
    return re.sub(r"\s+", " ", "".join(reader.pieces))


def read_words(path):
    with open(path, encoding="utf-8", errors="ignore") as file:
        words = file.read().split()
    random.Random(1).shuffle(words)
    return " ".join(words[:20000])


def find_documents(folder):
    """All documents below `folder`/PACKAGE, in the order of their names."""
    found = []

    def add(path, language, reader):
        name = os.path.relpath(path, folder)
        language = ALIASES.get(language, language)
        found.append(Document(name + ":" + language, language, functools.partial(reader, path)))

    for package in PACKAGES:
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
    for package, language in (("wbulgarian", "bg"), ("wukrainian", "uk")):
        for path in sorted(glob.glob(os.path.join(folder, package, "usr/share/dict/*"))):
            if not os.path.islink(path):
                add(path, language, read_words)
    return found


if __name__ == "__main__":
    print(" ".join(PACKAGES))
