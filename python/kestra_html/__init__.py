"""HTML as it was written: a lossless tokenizer, a rewriter, links, text and charsets.

Every function takes a document as `bytes`, `bytearray`, `memoryview`, `mmap`, a path
(`pathlib.Path`) or a binary file. A `str` is refused: it is neither. Offsets and lengths are in
bytes of the document, lines and columns count from 1, a charset is a Windows code page (65001 is
UTF-8) or a registered name, 0 means that it is not known.

The GIL is dropped for the whole of a call that takes no callback, so threads run at once. The bytes
must not be changed meanwhile: the parser reads them in place.

    >>> import kestra_html
    >>> kestra_html.links(b'<a href="/tea?a=1&amp;b=2">')
    ['/tea?a=1&b=2']
    >>> [token.name for token in kestra_html.tokens(b'<p>Tea</p>')]
    ['p', '', 'p']
"""

from collections.abc import Sequence
from concurrent.futures import ThreadPoolExecutor
from enum import IntEnum
from typing import NamedTuple
from urllib.parse import urljoin

from . import _native

__all__ = ["Attribute", "Detection", "Element", "Failure", "HtmlError", "Kind", "Parser", "Place", "Token", "Tokens",
           "check", "detect", "links", "rewrite", "text", "tokens", "tokens_many"]
__version__ = _native.version()

DETECTED = (0,)
NOT_DETECTED = (706, 707, 708)
SELF_CHECK_FAILED = 704
STOPPED = 710
OVER = 720
NO_ATTRIBUTE = 722


class HtmlError(Exception):
    """What could not be done. `result` is the library's code, `str()` says what it means."""

    def __init__(self, result):
        super().__init__(f"{_native.result_text(result)} ({result})")
        self.result = result


class Kind(IntEnum):
    """The kinds of tokens."""

    TEXT = 1
    BLOCK_COMMENT = 2  # of a script or style sheet
    LINE_COMMENT = 3
    SINGLE_QUOTED_STRING = 4  # of a script
    DOUBLE_QUOTED_STRING = 5
    START_TAG = 6
    SHORT_TAG = 7  # ends with "/>"
    END_TAG = 8
    CDATA = 9
    CONDITIONAL = 10
    COMMENT = 11
    DECLARATION = 12
    INSTRUCTION = 13
    JUNK = 14


class Place(NamedTuple):
    """Where a token lies: bytes from `begin` to before `end`; line and column, from 1, of `begin`."""

    begin: int
    end: int
    line: int
    column: int


class AttributePlace(NamedTuple):
    """Where an attribute lies, the white space before it included, and its name and value in it."""

    begin: int
    end: int
    name_begin: int
    name_end: int
    value_begin: int
    value_end: int


class Attribute(NamedTuple):
    """An attribute of a tag, or an item of a declaration, whose name is empty.

    `value` has its character references decoded; it is None where there is no "=". `quote` is "'",
    '"' or "".
    """

    name: str
    value: "str | None"
    quote: str
    place: AttributePlace


QUOTES = ("", "'", '"')


class Token:
    """A token of a document. What it says is worked out when it is asked for."""

    __slots__ = ("_tokens", "_index", "_read")

    def __init__(self, tokens, index):
        self._tokens = tokens
        self._index = index
        self._read = None

    @property
    def kind(self):
        """The `Kind`."""
        return Kind(self._tokens.kind[self._index])

    @property
    def place(self):
        """The `Place` in the document."""
        columns = self._tokens
        return Place(columns.begin[self._index], columns.end[self._index], columns.line[self._index],
                     columns.column[self._index])

    @property
    def raw(self):
        """The bytes of the document."""
        return self._tokens._native.raw(self._index)

    def _get(self):
        if self._read is None:
            self._read = self._tokens._native.read(self._index)
        return self._read

    @property
    def name(self):
        """The name of a tag, a declaration, an instruction or a section, as written; else ""."""
        return self._get()[0]

    @property
    def text(self):
        """What a text, string, comment, section or junk says, as written: references are not decoded."""
        return self._get()[1]

    @property
    def attributes(self):
        """A tuple of `Attribute`."""
        return tuple(Attribute(name, value, QUOTES[quote], AttributePlace(*place))
                     for name, value, quote, place in self._get()[2])

    def __repr__(self):
        return f"<Token {self.kind.name} {self.raw!r}>"


class Tokens(Sequence):
    """The tokens of a document: a sequence of `Token`, and columns that NumPy takes without a copy.

    `kind` is a read-only memoryview of bytes; `begin`, `end`, `line` and `column` are of 64-bit
    numbers. All have one item for each token.
    """

    def __init__(self, native):
        self._native = native
        self.kind = native.kind
        self.begin = native.begin
        self.end = native.end
        self.line = native.line
        self.column = native.column

    @property
    def charset(self):
        """The charset in force at the end, a Windows code page; 0 when it is not known."""
        return self._native.charset

    def __len__(self):
        return len(self._native)

    def __getitem__(self, index):
        if isinstance(index, slice):
            return [Token(self, i) for i in range(*index.indices(len(self)))]
        if index < 0:
            index += len(self)
        if not 0 <= index < len(self):
            raise IndexError("no such token")
        return Token(self, index)


def _code(charset):
    """The code page of a charset that is given as such, or by its name."""
    if not isinstance(charset, str):
        return charset
    code = _native.charset_code(charset)
    if code == 0:
        raise LookupError(f"unknown charset: {charset}")
    return code


def _require(result):
    if result != 0:
        raise HtmlError(result)


def tokens(data, *, charset=0, utf16=False, scripts_as_tokens=False, max_token_size=0, max_attributes=0):
    """Cuts a document into `Tokens`.

    By default the content of a script, a style sheet and their like is one text, as browsers end
    it; with `scripts_as_tokens` strings and comments in them are tokens. A token of more than
    `max_token_size` bytes, or with more than `max_attributes`, raises `HtmlError` with 711; 0 is no
    limit.
    """
    native = _native.tokens(data, _code(charset), 2 if utf16 else 0, scripts_as_tokens, max_token_size, max_attributes)
    _require(native.result)
    return Tokens(native)


class Parser:
    """Cuts a document that comes in pieces of any size, such as a download.

    The options are those of `tokens`. One thread at a time: a call during another one raises
    `RuntimeError`. With `scripts_as_tokens`, and without a `charset`, a page that declares another
    one after its first text raises `HtmlError` with 705: begin it again with the charset.
    """

    def __init__(self, *, charset=0, utf16=False, scripts_as_tokens=False, max_token_size=0, max_attributes=0):
        self._native = _native.Parser(_code(charset), 2 if utf16 else 0, scripts_as_tokens, max_token_size,
                                      max_attributes)

    def feed(self, data):
        """Returns the `Tokens` that a piece completes."""
        return self._make(self._native.feed(data))

    def close(self):
        """Ends the document. Returns the `Tokens` that were open."""
        return self._make(self._native.end())

    @staticmethod
    def _make(native):
        _require(native.result)
        return Tokens(native)


class Failure(NamedTuple):
    """What `tokens_many` yields in place of the tokens of a document that could not be parsed."""

    error: Exception
    result: int


def tokens_many(documents, *, threads=1, **options):
    """Yields the `Tokens`, or a `Failure`, of each document, in their order, by several threads.

    At most four documents for each thread are taken from the iterable beforehand. The options are
    those of `tokens`; wrong ones raise at once.
    """
    tokens(b"", **options)
    return _yield_tokens(documents, ThreadPoolExecutor(threads), threads, options)


def _yield_tokens(documents, executor, threads, options):
    def parse(document):
        try:
            return tokens(document, **options)
        except Exception as error:  # `read` and the buffer protocol may raise anything
            return Failure(error, error.result if isinstance(error, HtmlError) else 0)

    with executor as pool:
        waiting = []
        for document in documents:
            waiting.append(pool.submit(parse, document))
            if len(waiting) >= 4 * threads:
                yield waiting.pop(0).result()
        for future in waiting:
            yield future.result()


def links(data, base=None, *, charset=0):
    """The `href` of each `a` and `area`, references decoded; joined to `base` when that is given."""
    found, result = _native.links(data, _code(charset))
    _require(result)
    return found if base is None else [urljoin(base, link) for link in found]


def text(data, *, charset=0):
    """What a reader sees, without tags, scripts and style sheets, a line for each block."""
    found, result = _native.text(data, _code(charset))
    _require(result)
    return found


class Detection(NamedTuple):
    """The charset of a document: its registered name, its Windows code page, the confidence of 100,
    and where it comes from: "mark", "meta", "detector", or "" when it was not found."""

    name: str
    code_page: int
    confidence: int
    source: str


SOURCES = ("", "mark", "meta", "detector")


def detect(data):
    """Finds the charset by the first 16,384 bytes of a document."""
    code, name, confidence, source, result = _native.detect(data)
    if result not in DETECTED + NOT_DETECTED:
        raise HtmlError(result)
    return Detection(name, code, confidence, SOURCES[source])


def check(data, *, charset=0):
    """Whether the document is reproduced from its tokens, to the last byte."""
    result = _native.check(data, _code(charset))
    if result not in (0, SELF_CHECK_FAILED):
        raise HtmlError(result)
    return result == 0


class Element:
    """An element whose start tag is being read, for the callback of `rewrite`; over when that
    returns."""

    __slots__ = ("_native",)

    def __init__(self, native):
        self._native = native

    @property
    def name(self):
        """The name, in lower case."""
        return self._native.name

    @property
    def has_content(self):
        """False for a void element."""
        return self._native.has_content

    def get(self, name, default=None):
        """The value of an attribute, references decoded."""
        result, value = self._native.get_attribute(name)
        if result == NO_ATTRIBUTE:
            return default
        _require(result)
        return value

    def set(self, name, value):
        """Sets an attribute, or adds it."""
        _require(self._native.set_attribute(name, value))

    def remove_attribute(self, name):
        """Removes an attribute, if there is one of the name."""
        result = self._native.remove_attribute(name)
        if result != NO_ATTRIBUTE:
            _require(result)

    def before(self, content, *, markup=False):
        """Writes something before the start tag; text, unless `markup`."""
        _require(self._native.before(content, markup))

    def after(self, content, *, markup=False):
        """Writes something after the end tag."""
        _require(self._native.after(content, markup))

    def prepend(self, content, *, markup=False):
        """Writes something right after the start tag."""
        _require(self._native.prepend(content, markup))

    def append(self, content, *, markup=False):
        """Writes something right before the end tag."""
        _require(self._native.append(content, markup))

    def set_content(self, content, *, markup=False):
        """Replaces all between the two tags."""
        _require(self._native.set_content(content, markup))

    def replace(self, content, *, markup=False):
        """Replaces the element."""
        _require(self._native.replace(content, markup))

    def remove(self):
        """Removes the element, its content included."""
        _require(self._native.remove())

    def unwrap(self):
        """Removes the two tags and keeps the content."""
        _require(self._native.unwrap())


def rewrite(data, edits, *, charset=0):
    """Makes edits in a document and copies every other byte. Returns bytes.

    `edits` is a callable, which gets every `Element`; or a list of tuples, each a CSS selector and
    either a callable or an action: `("a", "set_attribute", "rel", "nofollow")`,
    `("a", "remove_attribute", "onclick")`, `("p", "before", "text")`, in the same way "after",
    "prepend", "append", "set_content" and "replace", each with a fourth item True for markup; and
    `("script", "remove")`, `("font", "unwrap")`. What a callable raises ends the call.
    """
    if callable(edits):
        edits = [("*", edits)]
    native = [(edit[0], _wrap(edit[1])) if callable(edit[1]) else tuple(edit) for edit in edits]
    output, result = _native.rewrite(data, native, _code(charset))
    _require(result)
    return output


def _wrap(callback):
    return lambda native: callback(Element(native))
