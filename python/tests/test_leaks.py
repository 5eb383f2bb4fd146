"""Nothing is kept of a page when it is done."""

import gc
import os

import pytest

import kestra_html

PAGES = int(os.environ.get("KESTRA_LEAK_PAGES", "100000"))
PAGE = b"""<!DOCTYPE html><meta charset=utf-8><title>Tea</title><style>p { color: red }</style>
<p class="a">Tea &amp; <a href="/cake?a=1&amp;b=2">c\xc3\xa4ke</a><br/><!--c--><script>'a' // b</script></p>"""


def resident():
    """Bytes of memory that the process has."""
    with open("/proc/self/statm") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def edit(element):
    element.set("id", element.get("class", "b"))


def use_page(number):
    """Everything that the module does with a page, failures as well."""
    page = PAGE + b"<p id=%d>" % number
    tokens = kestra_html.tokens(page)
    tag = tokens[9]
    assert [attribute[:3] for attribute in tag.attributes] == [("class", "a", '"')]
    assert (tag.kind.name, tag.raw, tag.text) == ("START_TAG", b'<p class="a">', "")
    assert tokens.begin[1] == 15
    kestra_html.links(page, "http://example.org/")
    kestra_html.text(page)
    kestra_html.check(page)
    if number % 10 == 0:
        kestra_html.detect(page)
        kestra_html.rewrite(page, [("a[href]", "set_attribute", "rel", "nofollow")])
        kestra_html.rewrite(page, edit)
        parser = kestra_html.Parser()
        assert len(parser.feed(page[:90])) + len(parser.feed(page[90:])) + len(parser.close()) == len(tokens)
        for call in (lambda: kestra_html.tokens(page, max_token_size=4), lambda: kestra_html.links("<p>"),
                     lambda: kestra_html.rewrite(page, [("p", lambda element: 1 // 0)])):
            with pytest.raises(Exception):
                call()


@pytest.mark.skipif("asan" in os.environ.get("LD_PRELOAD", ""), reason="the sanitizer keeps memory that was freed")
def test_memory_stays():
    for number in range(PAGES // 10):
        use_page(number)
    gc.collect()
    before = resident()
    for number in range(PAGES):
        use_page(number)
    gc.collect()
    # A leak of 16 bytes for each page is seen.
    assert resident() - before < max(PAGES * 16, 1 << 20)
