"""HTML as it was written: tokens, links, text, charsets, and edits that keep every other byte.

    tokens(data)             the tokens of a document, as a sequence and as columns
    tokens_many(documents)   those of many documents, by several threads
    Parser()                 those of a document that comes in pieces
    links(data, base)        what its links lead to
    text(data)               what a reader sees of it
    rewrite(data, edits)     the document with edits, every other byte as it was
    detect(data)             its charset, and how sure that is
    check(data)              whether its tokens reproduce it to the last byte

A document is `bytes`, `bytearray`, a `memoryview`, an `mmap`, a path (`pathlib.Path`) or a binary
file. A `str` raises `TypeError`: encode it first. Offsets and lengths are in bytes of the document;
lines and columns count from 1, columns in bytes, or in units of 16 bits where the document is
UTF-16. A charset is a Windows code page (65001 is UTF-8) or a registered name ("utf-8"); 0 means
that it is to be found.

    >>> import kestra_html
    >>> page = b'<p>Tea &amp; <a href="/cake?a=1&amp;b=2">cake</a></p>'
    >>> kestra_html.links(page, "http://example.org/")
    ['http://example.org/cake?a=1&b=2']
    >>> [token.kind.name for token in kestra_html.tokens(page)]
    ['START_TAG', 'TEXT', 'START_TAG', 'TEXT', 'END_TAG', 'END_TAG']

No page is an error: what fits no construct is a token of the kind `JUNK`. What cannot be done, such
as a token over a limit, raises `HtmlError`, an unknown charset `LookupError`. Wrong arguments, and
files that cannot be read, raise what Python raises for them.

The GIL is released for the whole of a call that takes no callable, so that threads run at once. The
parser reads the bytes in place: do not change them meanwhile.
"""

from collections.abc import Sequence
from concurrent.futures import ThreadPoolExecutor
from enum import IntEnum
from typing import NamedTuple
from urllib.parse import urljoin

from . import _native

__all__ = ["Attribute", "AttributePlace", "Detection", "Element", "Failure", "HtmlError", "Kind", "Parser", "Place",
           "Token", "Tokens", "check", "detect", "links", "rewrite", "text", "tokens", "tokens_many"]
__version__ = _native.version()

DETECTED = (0,)
NOT_DETECTED = (706, 707, 708)
SELF_CHECK_FAILED = 704
STOPPED = 710
OVER = 720
NO_ATTRIBUTE = 722


def _describe(record, **fields):
    """Documents the fields of a named tuple."""
    for name, text in fields.items():
        getattr(record, name).__doc__ = text


class HtmlError(Exception):
    """What could not be done: `str()` says it, and `result` is the code that the library has for it."""

    def __init__(self, result):
        super().__init__(f"{_native.result_text(result)} ({result})")
        self.result = result


class Kind(IntEnum):
    """The kinds of tokens.

    Of tags: `START_TAG`, `SHORT_TAG` (it ends with "/>") and `END_TAG`. Of what is read: `TEXT` and
    `CDATA`. Of other markup: `COMMENT`, `DECLARATION` ("<!DOCTYPE html>"), `INSTRUCTION` ("<?xml ?>")
    and `CONDITIONAL`, a section "<![ ]>". In a script or a style sheet, when asked for:
    `BLOCK_COMMENT`, `LINE_COMMENT`, `SINGLE_QUOTED_STRING`, `DOUBLE_QUOTED_STRING`. And `JUNK`, which
    fits nothing of these.
    """

    TEXT = 1
    BLOCK_COMMENT = 2
    LINE_COMMENT = 3
    SINGLE_QUOTED_STRING = 4
    DOUBLE_QUOTED_STRING = 5
    START_TAG = 6
    SHORT_TAG = 7
    END_TAG = 8
    CDATA = 9
    CONDITIONAL = 10
    COMMENT = 11
    DECLARATION = 12
    INSTRUCTION = 13
    JUNK = 14


class Place(NamedTuple):
    """Where a token is in the document: `document[begin:end]` are its bytes."""

    begin: int
    end: int
    line: int
    column: int


_describe(Place, begin="The offset of its first byte.", end="The offset after its last byte.",
          line="The line of its first byte, from 1.", column="The column of its first byte, from 1.")


class AttributePlace(NamedTuple):
    """Where an attribute is in the document, in bytes from its first one.

    The whole is from `begin` to `end`, with the white space before it; its name is from `name_begin`
    to `name_end`, its value, without quotes, from `value_begin` to `value_end`.
    """

    begin: int
    end: int
    name_begin: int
    name_end: int
    value_begin: int
    value_end: int


_describe(AttributePlace, begin="Where the white space before it begins.", end="The offset after its last byte.",
          name_begin="Where its name begins.", name_end="The offset after its name.",
          value_begin="Where its value begins, after a quote.", value_end="The offset after its value.")


class Attribute(NamedTuple):
    """An attribute of a tag; or an item of a declaration, which has a value and an empty name."""

    name: str
    value: str | None
    quote: str
    place: AttributePlace


_describe(Attribute, name="The name, as written.",
          value='The value, with its character references decoded; None where there is no "=".',
          quote="""What is around the value: "'", '"' or nothing.""",
          place="Its `AttributePlace` in the document; all zero for an item of a declaration.")


QUOTES = ("", "'", '"')


class Token:
    """A token of a document. Comes from `Tokens`; what it says is worked out when it is asked for."""

    __slots__ = ("_tokens", "_index", "_read")

    def __init__(self, tokens, index):
        self._tokens = tokens
        self._index = index
        self._read = None

    @property
    def kind(self):
        """Its `Kind`."""
        return Kind(self._tokens.kind[self._index])

    @property
    def place(self):
        """Its `Place` in the document."""
        columns = self._tokens
        return Place(columns.begin[self._index], columns.end[self._index], columns.line[self._index],
                     columns.column[self._index])

    @property
    def raw(self):
        """Its bytes, as they are in the document."""
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
        """What a text, string, comment, section or junk says, as written: references are not decoded.

        Empty for a tag.
        """
        return self._get()[1]

    @property
    def attributes(self):
        """A tuple of `Attribute`: those of a tag, or the items of a declaration."""
        return tuple(Attribute(name, value, QUOTES[quote], AttributePlace(*place))
                     for name, value, quote, place in self._get()[2])

    def __repr__(self):
        return f"<Token {self.kind.name} {self.raw!r}>"


class Tokens(Sequence):
    """The tokens of a document: a sequence of `Token`, and columns that NumPy takes without a copy.

    The columns are read-only memoryviews with one item for each token: `kind` of bytes (see `Kind`),
    and `begin`, `end`, `line` and `column`, which are those of a `Place`, of 64-bit numbers. Together
    the tokens have every byte of the document.
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
        """The code page in force at the end of the document; 0 when it is not known."""
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

    With `utf16` the document is UTF-16, also without a byte-order mark. By default the content of a
    script, a style sheet and their like is one text, as browsers end it; with `scripts_as_tokens`
    strings and comments in them are tokens. A token of more than `max_token_size` bytes, or with more
    than `max_attributes`, raises `HtmlError` with 711; 0 is no limit.

        >>> for token in tokens(b'<a href="tea">Tea</a>'):
        ...     print(token.kind.name, token.raw)
        START_TAG b'<a href="tea">'
        TEXT b'Tea'
        END_TAG b'</a>'
        >>> tokens(b'<a href="tea">')[0].attributes[0].value
        'tea'
    """
    native = _native.tokens(data, _code(charset), 2 if utf16 else 0, scripts_as_tokens, max_token_size, max_attributes)
    _require(native.result)
    return Tokens(native)


class Parser:
    """Cuts a document that comes in pieces of any size, such as a download.

    The options are those of `tokens`. One thread at a time: a call during another one raises
    `RuntimeError`. With `scripts_as_tokens`, and without a `charset`, a page that declares another
    one after its first text raises `HtmlError` with 705: begin it again with the charset.

        >>> parser = Parser()
        >>> list(parser.feed(b"<p>Te")), list(parser.feed(b"a<b")), list(parser.close())
        ([<Token START_TAG b'<p>'>], [<Token TEXT b'Tea'>], [<Token JUNK b'<b'>])
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


_describe(Failure, error="What `tokens` raised.", result="The code of an `HtmlError`; 0 for any other error.")


def tokens_many(documents, *, threads=1, **options):
    """Yields the `Tokens`, or a `Failure`, of each document, in the order of the documents.

    At most four documents for each thread are taken from the iterable beforehand. The options are
    those of `tokens`; wrong ones raise at once.

        >>> for result in tokens_many([b"<p>Tea", b"<p>Cake</p>"], threads=2):
        ...     print(result.error if isinstance(result, Failure) else len(result))
        2
        3
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
    """The `href` of each `a` and `area`, references decoded; joined to `base` when that is given.

        >>> links(b'<a href="tea?a=1&amp;b=2">', "http://example.org/")
        ['http://example.org/tea?a=1&b=2']
    """
    found, result = _native.links(data, _code(charset))
    _require(result)
    return found if base is None else [urljoin(base, link) for link in found]


def text(data, *, charset=0):
    """What a reader sees, without tags, scripts and style sheets, a line for each block.

        >>> text(b"<h1>Menu</h1><p>Tea &amp; <b>cake</b>")
        'Menu\\nTea & cake'
    """
    found, result = _native.text(data, _code(charset))
    _require(result)
    return found


class Detection(NamedTuple):
    """The charset of a document, as `detect` finds it."""

    name: str
    code_page: int
    confidence: int
    source: str


_describe(Detection, name="The registered name; empty when it was not found.",
          code_page="The Windows code page; 0 when it was not found.", confidence="How sure that is, from 0 to 100.",
          source='What it was found by: "mark", a byte-order mark; "meta"; "detector", a guess; or empty.')


SOURCES = ("", "mark", "meta", "detector")


def detect(data):
    """Finds the charset by the first 16,384 bytes of a document. Returns a `Detection`.

        >>> detect(b'<meta charset="koi8-r">')
        Detection(name='KOI8-R', code_page=20866, confidence=100, source='meta')
    """
    code, name, confidence, source, result = _native.detect(data)
    if result not in DETECTED + NOT_DETECTED:
        raise HtmlError(result)
    return Detection(name, code, confidence, SOURCES[source])


def check(data, *, charset=0):
    """Whether the tokens of a document, written back, are the document to the last byte.

        >>> check(b"<p class=a  id='b' >Tea</P>")
        True
    """
    result = _native.check(data, _code(charset))
    if result not in (0, SELF_CHECK_FAILED):
        raise HtmlError(result)
    return result == 0


class Element:
    """An element whose start tag is being read: what the callable of `rewrite` gets. Its edits must
    be made before that returns.

    `content` is text, which is escaped; with `markup` it is markup, written as it is.
    """

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
        """The value of an attribute, references decoded; `default` when there is no such attribute."""
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
        """Writes something before the start tag."""
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

    `edits` is a callable, which gets every `Element`; or a list of tuples, each a CSS selector, and
    then a callable or an action with its arguments:

        ("a", "set_attribute", "rel", "nofollow")
        ("a", "remove_attribute", "onclick")
        ("p", "before", "text")                     or "after", "prepend", "append", "set_content",
                                                    "replace"
        ("p", "append", "<hr>", True)               the same with markup, written as it is
        ("script", "remove")                        the element with its content
        ("font", "unwrap")                          its two tags alone

    What a callable raises ends the call, and `rewrite` raises it.

        >>> rewrite(b"<a href=tea>Tea</a>", [("a[href]", "set_attribute", "rel", "nofollow")])
        b'<a href=tea rel="nofollow">Tea</a>'
        >>> rewrite(b"<p>Tea</p>", lambda element: element.append("!"))
        b'<p>Tea!</p>'
    """
    if callable(edits):
        edits = [("*", edits)]
    native = [(edit[0], _wrap(edit[1])) if callable(edit[1]) else tuple(edit) for edit in edits]
    output, result = _native.rewrite(data, native, _code(charset))
    _require(result)
    return output


def _wrap(callback):
    return lambda native: callback(Element(native))
