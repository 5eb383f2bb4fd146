"""A parser with the callbacks of Python's `html.parser.HTMLParser`, to ease the move."""

from . import Kind, Parser

__all__ = ["HTMLParser"]


class HTMLParser:
    """Derive from it and override what is needed, as with `html.parser.HTMLParser`.

    What differs: `feed` takes bytes too, tags are cut as this library cuts them, and a text may come
    in other parts.
    """

    def __init__(self, *, convert_charrefs=True):
        self.convert_charrefs = convert_charrefs
        self.reset()

    def reset(self):
        """Forgets everything and begins again."""
        self._parser = Parser(charset=65001)
        self._token = None
        self._inside_raw_text = False

    def feed(self, data):
        """Parses a piece. A `str` is taken as UTF-8."""
        self._handle(self._parser.feed(data.encode() if isinstance(data, str) else data))

    def close(self):
        """Handles what is open."""
        self._handle(self._parser.close())

    def getpos(self):
        """The line, from 1, and the offset in it, from 0, of the token at hand."""
        place = self._token.place
        return place.line, place.column - 1

    def get_starttag_text(self):
        """The start tag at hand, as written."""
        return self._token.raw.decode(errors="replace")

    def _handle(self, tokens):
        for self._token in tokens:
            HANDLERS[self._token.kind](self, self._token)

    def _handle_start(self, token):
        self.handle_starttag(token.name.lower(), _attributes(token))
        self._inside_raw_text = token.name.lower() in RAW_TEXT

    def _handle_short(self, token):
        self.handle_startendtag(token.name.lower(), _attributes(token))

    def _handle_end(self, token):
        self._inside_raw_text = False
        self.handle_endtag(token.name.lower())

    def _handle_text(self, token):
        from html import unescape

        text = token.text
        self.handle_data(unescape(text) if self.convert_charrefs and not self._inside_raw_text else text)

    def _handle_comment(self, token):
        self.handle_comment(token.text)

    def _handle_declaration(self, token):
        self.handle_decl(_inside(token, 2))

    def _handle_instruction(self, token):
        self.handle_pi(_inside(token, 2))

    def _handle_section(self, token):
        self.unknown_decl(_inside(token, 3).removesuffix("]").removesuffix("]"))

    def handle_starttag(self, tag, attrs):
        """A start tag: its name in lower case, and a list of names and values."""

    def handle_startendtag(self, tag, attrs):
        """A tag that ends with "/>"."""
        self.handle_starttag(tag, attrs)
        self.handle_endtag(tag)

    def handle_endtag(self, tag):
        """An end tag."""

    def handle_data(self, data):
        """A text."""

    def handle_comment(self, data):
        """A comment, without its marks."""

    def handle_decl(self, decl):
        """A declaration, without "<!" and ">"."""

    def handle_pi(self, data):
        """An instruction, without "<?" and ">"."""

    def unknown_decl(self, data):
        """A section: what is between "<![" and "]>"."""


RAW_TEXT = frozenset(("script", "style", "xmp", "iframe", "noembed", "noframes", "plaintext"))


def _attributes(token):
    return [(attribute.name.lower(), attribute.value) for attribute in token.attributes]


def _inside(token, marks):
    """A token as written, without the marks at its begin and the ">" at its end."""
    return token.raw.decode(errors="replace")[marks:].removesuffix(">")


HANDLERS = {kind: HTMLParser._handle_text for kind in Kind}
HANDLERS.update({
    Kind.START_TAG: HTMLParser._handle_start,
    Kind.SHORT_TAG: HTMLParser._handle_short,
    Kind.END_TAG: HTMLParser._handle_end,
    Kind.COMMENT: HTMLParser._handle_comment,
    Kind.DECLARATION: HTMLParser._handle_declaration,
    Kind.INSTRUCTION: HTMLParser._handle_instruction,
    Kind.CDATA: HTMLParser._handle_section,
    Kind.CONDITIONAL: HTMLParser._handle_section,
})
