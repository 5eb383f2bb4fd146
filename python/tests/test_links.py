"""Links, by the tokens of the same document: long scripts are left out, and pieces end anywhere."""

import os
import subprocess
import sys

import pytest

import kestra_html
from kestra_html import Kind

PIECE = 4096  # bytes that are read first; then twice as many
LINK = b"<a href=x>"


def links_by_tokens(page, **options):
    """The slow way, which reads everything."""
    links = []
    for token in kestra_html.tokens(page, **options):
        if token.kind in (Kind.START_TAG, Kind.SHORT_TAG) and token.name.lower() in ("a", "area"):
            values = [attribute.value or "" for attribute in token.attributes if attribute.name.lower() == "href"]
            links += values[:1]
    return links


@pytest.mark.parametrize("content, count", [
    (b"", 2),
    (b"a < b", 2),
    (b"'<a href=y>'", 2),
    (b"'</span><a href=y>'", 2),
    (b"'</scripts><a href=y>'", 2),
    (b"<!--<script><a href=y></script>--><a href=y>", 2),
    (b"<!--<script><a href=y></script><a href=y>", 2),
    (b"<!--<a href=y>", 2),
    (b"</style><a href=y>", 2),
    (b"</SCRIPT ><a href=y><script>", 3),
    (b"</script><a href=y><script>", 3),
    (b"</script/><a href=y><style></script></style><script>", 3),
])
@pytest.mark.parametrize("size", [0, PIECE, 3 * PIECE, 7 * PIECE])
def test_scripts_that_pieces_cut(content, count, size):
    for shift in range(-40, 40):
        # What matters lies where a piece ends, or after a part that is left out.
        before = b"<script>" + b"s" * max(0, size + shift)
        page = LINK + before + content + b"</script>" + LINK
        assert kestra_html.links(page) == links_by_tokens(page), shift
        assert len(kestra_html.links(page)) == count, shift
        page += b" " * PIECE + LINK
        assert len(kestra_html.links(page)) == count + 1, shift


@pytest.mark.parametrize("begin", [
    b"<script src=a>", b"<SCRIPT\n>", b"<style>", b"<style type='a'>", b"\xef\xbb\xbf<script>",
    b"<title>", b"<textarea>", b"<script/>", b"<script/a>", b"<script\v>", b"< script>", b"<xmp>",
])
@pytest.mark.parametrize("end", [b"</script>", b"</style>", b"</title>", b"</textarea>", b"</xmp>", b""])
def test_what_begins_and_ends_a_content(begin, end):
    for size in (PIECE - 100, 2 * PIECE, 5 * PIECE + 7):
        page = begin + b"c <a href=y> " * (size // 13) + end + LINK
        assert kestra_html.links(page) == links_by_tokens(page)


def test_many_scripts():
    page = b"".join(b"<script>" + b"var a = '<b>';\n" * i + b"</script><a href=%d>" % i for i in range(0, 4000, 371))
    assert kestra_html.links(page) == [str(i) for i in range(0, 4000, 371)]


def test_a_script_that_never_ends():
    assert kestra_html.links(LINK + b"<script>" + LINK * PIECE) == ["x"]


@pytest.mark.parametrize("content", [
    b"\x1b$B" + b"s" * 2 * PIECE,
    b"s" * 2 * PIECE + b"\x1b$B",
], ids=["first", "last"])
@pytest.mark.parametrize("charset, links", [(0, ["x"]), (50221, ["x"]), (65001, ["y", "x"])])
def test_escapes_that_hide_an_end(content, charset, links):
    page = b"<script>" + content + b"</script><a href=y>\x1b(B</script>" + LINK
    assert links_by_tokens(page, charset=charset) == links
    assert kestra_html.links(page, charset=charset) == links


LATE = ("чай с лимоном и пирогом " * 800).encode("koi8-r")  # longer than what a detector reads


@pytest.mark.parametrize("page, charset, links", [
    # The charset is declared after the link.
    (b"<a href='\xc3\xa9'></a><meta charset=utf-8>", 0, ["é"]),
    (b"<a href=\xc3\xa9></a><meta charset=utf-8><a href=\xc3\xa9>", 0, ["é", "é"]),
    (b"<a href='&eacute;\xca'></a><meta charset=koi8-r><p / ", 0, ["éй"]),
    (b"<a href='~{<rLe~}'><meta charset=hz-gb-2312>", 0, ["简体"]),
    pytest.param(b"<p>" + LATE + b"<a href=\xca><meta charset=windows-1251>", 0, ["К"], id="late"),
    # ASCII is not kept.
    (b"<a href='~{<rLe~}'>", 52936, ["简体"]),
    (b"<a href='~{<rLe~}'>", 65001, ["~{<rLe~}"]),
    (b"<a href='\x0e1\x0f'>", 50222, ["ｱ"]),
    (b"<a href='\x1b$B!<\x1b(B'>" + LINK, 50221, ["ー", "x"]),
    (b"<a href='\x1b$B!<\x1b(B'>" + LINK, 65001, ["\x1b$B!<\x1b(B", "x"]),
    (b"<a href='\x0e1\x0f'>", 65001, ["\x0e1\x0f"]),
    (b"<a href='~[\\'>", 20106, ["ßÄÖ"]),
    (b"<a href='~[&amp;'>", 20106, ["ßÄ&"]),
    (b"<a href='+AOk-'>", 65000, ["+AOk-"]),
    (b"<a href='+AOk-'><meta charset=utf-7>", 0, ["+AOk-"]),
    (b"<a href='\x1a\x7f'>", 866, ["\x1a\x7f"]),
    (b"<a href='\0\xc3\xa9\0\0'>", 65001, ["\0é\0\0"]),
])
def test_charset_of_links(page, charset, links):
    assert links_by_tokens(page, charset=charset) == links
    assert kestra_html.links(page, charset=charset) == links


@pytest.mark.parametrize("charset", ["utf-8", "koi8-r", "shift_jis", "euc-jp", "big5", "gb18030", "euc-kr", "utf-16"])
def test_charsets_that_are_not_named(charset):
    texts = {"koi8-r": "Чай с лимоном и пирогом ", "big5": "檸檬茶和蛋糕 ", "gb18030": "柠檬茶和蛋糕 ",
             "euc-kr": "레몬차와 케이크 "}
    text = texts.get(charset, "レモンティーとケーキ ") * 100
    page = f"<p>{text}<a href='a?b&amp;c'><a href='{text[:5]}&amp;'>".encode(charset)
    assert kestra_html.links(page) == links_by_tokens(page)


def test_broken_markup_is_read_again():
    page = b"<a / " + LINK + b"<a href=y" + b"t" * PIECE + b"<a / >" + LINK
    assert kestra_html.links(page) == links_by_tokens(page)


def test_documents_share_nothing():
    assert kestra_html.links(b"<script>" + b"s" * 2 * PIECE) == []
    assert kestra_html.links(LINK + b"<a href='y") == ["x"]
    assert kestra_html.links("<meta charset=koi8-r><a href=й>".encode("koi8-r")) == ["й"]
    assert kestra_html.links("<a href=é>".encode(), charset=65001) == ["é"]
    assert kestra_html.links(b"t" * (2 << 20) + LINK) == ["x"]
    assert kestra_html.links(LINK) == ["x"]


@pytest.mark.skipif("asan" in os.environ.get("LD_PRELOAD", ""), reason="the sanitizer keeps memory that was freed")
@pytest.mark.parametrize("begin, end", [
    (b"<a", b">"), (b"<p", b">"), (b"<p", b"/>"), (b"</p", b">"), (b"<!x", b">"), (b"<p", b"/ >"), (b"<p", b""),
    (b"<!x", b""), (b"", b""), (b"<!--", b"-->"), (b"<script>", b""),
])
def test_memory_that_a_page_leaves(begin, end):
    """A thread keeps its parser, but no more than some times what is long in the page."""
    program = ("import ctypes, os, sys, kestra_html\n"
               "def resident():\n"
               "    ctypes.CDLL(None).malloc_trim(0)\n"
               "    return int(open('/proc/self/statm').read().split()[1]) * os.sysconf('SC_PAGE_SIZE')\n"
               "page = sys.stdin.buffer.read()\n"
               "kestra_html.links(b'<a href=x>')\n"
               "before = resident()\n"
               "kestra_html.links(page)\n"
               "print(resident() - before)")
    page = begin + b" b" * ((1 << 19) - 8) + end
    finished = subprocess.run([sys.executable, "-c", program], input=page, check=True, capture_output=True)
    assert int(finished.stdout) < 4 * len(page)
