import os
from collections.abc import Callable, Iterable, Iterator, Sequence
from enum import IntEnum
from typing import BinaryIO, NamedTuple, TypeVar, overload

# What has the buffer protocol, a path, or a binary file.
Document = bytes | bytearray | memoryview | os.PathLike[str] | os.PathLike[bytes] | BinaryIO
Charset = int | str
Edit = (
    tuple[str, str]
    | tuple[str, str, str]
    | tuple[str, str, str, str | bool]
    | tuple[str, Callable[["Element"], object]]
)
T = TypeVar("T")

__version__: str

class HtmlError(Exception):
    result: int
    def __init__(self, result: int) -> None: ...

class Kind(IntEnum):
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
    begin: int
    end: int
    line: int
    column: int

class AttributePlace(NamedTuple):
    begin: int
    end: int
    name_begin: int
    name_end: int
    value_begin: int
    value_end: int

class Attribute(NamedTuple):
    name: str
    value: str | None
    quote: str
    place: AttributePlace

class Token:
    @property
    def kind(self) -> Kind: ...
    @property
    def place(self) -> Place: ...
    @property
    def raw(self) -> bytes: ...
    @property
    def name(self) -> str: ...
    @property
    def text(self) -> str: ...
    @property
    def attributes(self) -> tuple[Attribute, ...]: ...

class Tokens(Sequence[Token]):
    kind: memoryview
    begin: memoryview
    end: memoryview
    line: memoryview
    column: memoryview
    @property
    def charset(self) -> int: ...
    def __len__(self) -> int: ...
    @overload
    def __getitem__(self, index: int) -> Token: ...
    @overload
    def __getitem__(self, index: slice) -> list[Token]: ...

class Parser:
    def __init__(
        self,
        *,
        charset: Charset = 0,
        utf16: bool = False,
        scripts_as_tokens: bool = False,
        max_token_size: int = 0,
        max_attributes: int = 0,
    ) -> None: ...
    def feed(self, data: Document) -> Tokens: ...
    def close(self) -> Tokens: ...

class Failure(NamedTuple):
    error: Exception
    result: int

class Detection(NamedTuple):
    name: str
    code_page: int
    confidence: int
    source: str

class Element:
    @property
    def name(self) -> str: ...
    @property
    def has_content(self) -> bool: ...
    @overload
    def get(self, name: str) -> str | None: ...
    @overload
    def get(self, name: str, default: T) -> str | T: ...
    def set(self, name: str, value: str) -> None: ...
    def remove_attribute(self, name: str) -> None: ...
    def before(self, content: str, *, markup: bool = False) -> None: ...
    def after(self, content: str, *, markup: bool = False) -> None: ...
    def prepend(self, content: str, *, markup: bool = False) -> None: ...
    def append(self, content: str, *, markup: bool = False) -> None: ...
    def set_content(self, content: str, *, markup: bool = False) -> None: ...
    def replace(self, content: str, *, markup: bool = False) -> None: ...
    def remove(self) -> None: ...
    def unwrap(self) -> None: ...

def tokens(
    data: Document,
    *,
    charset: Charset = 0,
    utf16: bool = False,
    scripts_as_tokens: bool = False,
    max_token_size: int = 0,
    max_attributes: int = 0,
) -> Tokens: ...
def tokens_many(
    documents: Iterable[Document],
    *,
    threads: int = 1,
    charset: Charset = 0,
    utf16: bool = False,
    scripts_as_tokens: bool = False,
    max_token_size: int = 0,
    max_attributes: int = 0,
) -> Iterator[Tokens | Failure]: ...
def links(data: Document, base: str | None = None, *, charset: Charset = 0) -> list[str]: ...
def text(data: Document, *, charset: Charset = 0) -> str: ...
def detect(data: Document) -> Detection: ...
def check(data: Document, *, charset: Charset = 0) -> bool: ...
def rewrite(
    data: Document, edits: Callable[[Element], object] | Iterable[Edit], *, charset: Charset = 0
) -> bytes: ...
