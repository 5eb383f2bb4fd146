"""The module by its behaviour."""

import ast
import doctest
import gc
import inspect
import io
import mmap
import os
import pathlib
import subprocess
import sys
import threading

import pytest

import kestra_html
from kestra_html import Kind

PAGE = b'<!DOCTYPE html><p class=a id="b&lt;">Tea &amp; <b>cake</b><br/><!--c--></p>'


def kinds(tokens):
    return [token.kind for token in tokens]


def test_tokens_have_every_byte():
    assert b"".join(token.raw for token in kestra_html.tokens(PAGE)) == PAGE


@pytest.mark.parametrize("make", [bytes, bytearray, memoryview, io.BytesIO], ids=lambda make: make.__name__)
def test_kinds_of_documents(make):
    assert kinds(kestra_html.tokens(make(PAGE))) == kinds(kestra_html.tokens(PAGE))


def test_files(tmp_path):
    path = tmp_path / "page.html"
    path.write_bytes(PAGE)
    assert kestra_html.check(path)
    with open(path, "rb") as file:
        assert kestra_html.check(file)
    with open(path, "rb") as file, mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ) as mapped:
        assert kestra_html.check(mapped)


@pytest.mark.parametrize("document, error", [
    ("<p>", TypeError),
    (1, TypeError),
    (None, TypeError),
    (io.StringIO("<p>"), TypeError),
    (pathlib.Path("no such page"), FileNotFoundError),
    (pathlib.Path("."), IsADirectoryError),
])
def test_what_is_no_document(document, error):
    for call in (kestra_html.tokens, kestra_html.links, kestra_html.text, kestra_html.detect, kestra_html.check):
        with pytest.raises(error):
            call(document)


class Reader:
    """Has nothing of a file but `read`."""

    def __init__(self, content):
        self.read = lambda: content


@pytest.mark.parametrize("content", [PAGE, bytearray(PAGE), memoryview(PAGE)],
                         ids=lambda content: type(content).__name__)
def test_whatever_has_read(content):
    assert b"".join(token.raw for token in kestra_html.tokens(Reader(content))) == PAGE


@pytest.mark.parametrize("content", [None, "<p>", 1])
def test_read_that_answers_no_bytes(content):
    with pytest.raises(TypeError, match="binary mode"):
        kestra_html.tokens(Reader(content))


@pytest.mark.parametrize("size", [0, 1, 65535, 65536, 65537, 5_000_000])
def test_files_of_any_size(tmp_path, size):
    path = tmp_path / "page.html"
    page = (PAGE * (size // len(PAGE) + 1))[:size]
    path.write_bytes(page)
    assert b"".join(token.raw for token in kestra_html.tokens(path)) == page


@pytest.mark.parametrize("size", [0, 65536, 1_000_000])
def test_a_pipe(tmp_path, size):
    path = tmp_path / "pipe"
    os.mkfifo(path)
    writer = threading.Thread(target=path.write_bytes, args=[b"t" * size])
    writer.start()
    tokens = kestra_html.tokens(path)
    writer.join()
    assert sum(len(token.raw) for token in tokens) == size


def get_peak_of_path(path):
    """How many KiB more a process takes at most when it reads a path."""
    program = ("import sys, pathlib, kestra_html\n"
               "def peak():\n"
               "    return next(int(line.split()[1]) for line in open('/proc/self/status') if 'VmHWM' in line)\n"
               "before = peak()\n"
               "try:\n"
               "    kestra_html.detect(pathlib.Path(sys.argv[1]))\n"
               "except IsADirectoryError:\n"
               "    pass\n"
               "print(peak() - before)")
    finished = subprocess.run([sys.executable, "-c", program, path], check=True, capture_output=True, text=True)
    return int(finished.stdout)


@pytest.mark.skipif("asan" in os.environ.get("LD_PRELOAD", ""), reason="the sanitizer takes more memory")
def test_a_path_is_read_once(tmp_path):
    """The document and nothing else of its size is in memory."""
    path = tmp_path / "page.html"
    path.touch()
    os.truncate(path, 64 << 20)
    assert 64 << 10 <= get_peak_of_path(path) < 68 << 10


@pytest.mark.skipif("asan" in os.environ.get("LD_PRELOAD", ""), reason="the sanitizer takes more memory")
@pytest.mark.parametrize("folder", [".", "/proc", "/dev"])
def test_a_folder_takes_no_memory(folder):
    """Whatever size the file system reports for it."""
    assert get_peak_of_path(folder) < 4 << 10


def close_map():
    mapped = mmap.mmap(-1, 4096)
    mapped.close()
    return mapped


def close_view():
    view = memoryview(PAGE)
    view.release()
    return view


def close_file():
    with open(__file__, "rb") as file:
        return file


def close_bytes():
    with io.BytesIO(PAGE) as file:
        return file


@pytest.mark.parametrize("close", [close_map, close_view, close_file, close_bytes])
def test_what_is_closed(close):
    closed = close()
    for call in (kestra_html.tokens, kestra_html.links, kestra_html.text, kestra_html.detect, kestra_html.check,
                 lambda page: kestra_html.rewrite(page, []), kestra_html.Parser().feed):
        with pytest.raises(ValueError, match="closed|released"):
            call(closed)


def test_a_closed_file_among_many():
    results = list(kestra_html.tokens_many([PAGE, close_file(), PAGE]))
    assert [type(result) for result in results] == [kestra_html.Tokens, kestra_html.Failure, kestra_html.Tokens]
    assert isinstance(results[1].error, ValueError)


def test_columns_are_read_only_and_last():
    numpy = pytest.importorskip("numpy")
    begins = numpy.asarray(kestra_html.tokens(PAGE).begin)
    gc.collect()
    assert begins.dtype == numpy.uint64 and not begins.flags.writeable
    assert begins[:2].tolist() == [0, 15]
    tokens = kestra_html.tokens(PAGE)
    for column in (tokens.kind, tokens.begin, tokens.end, tokens.line, tokens.column):
        assert column.readonly and len(column) == len(tokens)


def test_a_token_says_what_it_is():
    tag = kestra_html.tokens(PAGE)[1]
    assert (tag.kind, tag.name, tag.raw) == (Kind.START_TAG, "p", b'<p class=a id="b&lt;">')
    assert tag.place == (15, 37, 1, 16)
    assert [attribute[:3] for attribute in tag.attributes] == [("class", "a", ""), ("id", "b<", '"')]
    place = tag.attributes[1].place
    assert PAGE[place.name_begin:place.name_end] == b"id"
    assert PAGE[place.value_begin:place.value_end] == b"b&lt;"


@pytest.mark.parametrize("page, kind, name, text", [
    (b"Tea &amp;", Kind.TEXT, "", "Tea &amp;"),
    (b"Tea\0", Kind.TEXT, "", "Tea\0"),
    (b"Tea\0\0", Kind.TEXT, "", "Tea\0\0"),
    (b"<!--a--b-->", Kind.COMMENT, "", "a--b"),
    (b"<!--open", Kind.COMMENT, "", "open"),
    (b"<![CDATA[a]]>", Kind.CDATA, "CDATA", "[a"),
    (b"<![if !IE]>", Kind.CONDITIONAL, "if", " !IE"),
    (b"<?php a?>", Kind.INSTRUCTION, "php", "<?php a?>"),
    (b"<!ENTITY a>", Kind.DECLARATION, "ENTITY", ""),
    (b"</p >", Kind.END_TAG, "p", ""),
    (b"<br/>", Kind.SHORT_TAG, "br", ""),
    (b"<a / ", Kind.JUNK, "", "<a / "),
])
def test_names_and_texts(page, kind, name, text):
    token = kestra_html.tokens(page)[0]
    assert (token.kind, token.name, token.text) == (kind, name, text)


def test_scripts_as_tokens():
    page = b"<script>'a' /*b*/ //c\n\"d\"</script>"
    tokens = kestra_html.tokens(page, scripts_as_tokens=True)
    texts = {token.kind: token.text for token in tokens}
    assert texts[Kind.SINGLE_QUOTED_STRING] == "a"
    assert texts[Kind.BLOCK_COMMENT] == "b"
    assert texts[Kind.LINE_COMMENT] == "c"
    assert texts[Kind.DOUBLE_QUOTED_STRING] == "d"
    assert b"".join(token.raw for token in tokens) == page


def test_tags_without_an_end():
    token = kestra_html.tokens(b"</a<b>")[0]
    assert (token.kind, token.name, token.raw) == (Kind.END_TAG, "a", b"</a")


def test_utf16():
    page = "<p title='é'>naïve</p>".encode("utf-16-le")
    tokens = kestra_html.tokens(b"\xff\xfe" + page)
    assert [token.text for token in tokens] == ["", "naïve", ""]
    assert tokens[0].attributes[0].value == "é"
    assert kestra_html.links("<a href=é>".encode("utf-16")) == ["é"]


def test_utf7_hides_nothing():
    page = b"<meta charset=utf-7><p title=+AOk->+AOk-"
    tokens = kestra_html.tokens(page)
    assert (tokens[1].attributes[0].value, tokens[2].text, kestra_html.text(page)) == ("+AOk-",) * 3


def test_charsets_have_names():
    assert kestra_html.tokens("<p>é".encode(), charset="utf-8")[1].text == "é"
    assert kestra_html.tokens("<p>й".encode("koi8-r"), charset="KOI8-R")[1].text == "й"
    with pytest.raises(LookupError):
        kestra_html.tokens(b"", charset="no such charset")


def test_slices_and_indexes():
    tokens = kestra_html.tokens(b"<a><b><c>")
    assert [token.name for token in tokens[1:]] == ["b", "c"]
    assert tokens[-1].name == "c"
    with pytest.raises(IndexError):
        tokens[3]


@pytest.mark.parametrize("limit, page", [({"max_token_size": 4}, b"<abcdef>"), ({"max_attributes": 1}, b"<a b c>")])
def test_limits(limit, page):
    with pytest.raises(kestra_html.HtmlError) as raised:
        kestra_html.tokens(page, **limit)
    assert raised.value.result == 711 and "711" in str(raised.value)


@pytest.mark.parametrize("page, links", [
    (b"<a href=/a><A HREF='b&amp;c'>", ["/a", "b&c"]),
    (b"<a href=/a download><area href=b>", ["/a", "b"]),
    (b"<a href=a href=b><link href=c>", ["a"]),
    (b"<a href>", [""]),
    (b"<script>'<a href=x>'</script>", []),
    ("<meta charset=utf-8><a href=é>".encode(), ["é"]),
    (b"<a / ><a href=x>", ["x"]),
])
def test_links(page, links):
    assert kestra_html.links(page) == links


def test_links_with_a_base():
    assert kestra_html.links(b"<a href=../b>", "http://example.org/a/c") == ["http://example.org/b"]


@pytest.mark.parametrize("page, text", [
    (b"<p>A <b>b</b>&lt;</p><p>c</p>", "A b<\nc"),
    (b"<style>a</style>b<script>c</script>", "b"),
    (b"a<br>b\n  c", "a\nb c"),
    (b"<pre>a\n  b</pre>", "a\n  b"),
    (b"", ""),
])
def test_text(page, text):
    assert kestra_html.text(page) == text


def test_detection():
    assert kestra_html.detect(b"\xef\xbb\xbf") == ("UTF-8", 65001, 100, "mark")
    assert kestra_html.detect(b"<meta charset=koi8-r>") == ("KOI8-R", 20866, 100, "meta")
    assert kestra_html.detect("schöne grüne Wörter ".encode() * 20)[::3] == ("UTF-8", "detector")
    assert kestra_html.detect(b"plain").source == ""


def test_check():
    assert kestra_html.check(PAGE)
    assert not kestra_html.check(b"<?xml a/ >")


@pytest.mark.parametrize("edit, output", [
    (("a", "set_attribute", "c", "d"), b"<p><a b c=\"d\">x</a></p>"),
    (("a", "remove_attribute", "b"), b"<p><a>x</a></p>"),
    (("a", "remove_attribute", "e"), b"<p><a b>x</a></p>"),
    (("a", "before", "<"), b"<p>&lt;<a b>x</a></p>"),
    (("a", "before", "<i>", True), b"<p><i><a b>x</a></p>"),
    (("a", "after", "y"), b"<p><a b>x</a>y</p>"),
    (("a", "prepend", "y"), b"<p><a b>yx</a></p>"),
    (("a", "append", "y"), b"<p><a b>xy</a></p>"),
    (("a", "set_content", "y"), b"<p><a b>y</a></p>"),
    (("a", "replace", "y"), b"<p>y</p>"),
    (("a", "remove"), b"<p></p>"),
    (("a", "unwrap"), b"<p>x</p>"),
])
def test_edits(edit, output):
    assert kestra_html.rewrite(b"<p><a b>x</a></p>", [edit]) == output


def test_rewriting_by_a_callback():
    def edit(element):
        if element.name == "a":
            element.set("href", element.get("href", "") + "?")
            assert element.get("no") is None and element.has_content

    assert kestra_html.rewrite(b"<a href=x>y</a><br>", edit) == b"<a href=x?>y</a><br>"


def test_what_a_callback_raises_is_raised():
    with pytest.raises(KeyError):
        kestra_html.rewrite(b"<a>", lambda element: {}["no"])


def test_an_element_is_over_after_its_callback():
    kept = []
    kestra_html.rewrite(b"<a>", kept.append)
    with pytest.raises(kestra_html.HtmlError):
        kept[0].remove()


@pytest.mark.parametrize("edits, error", [
    ([("a:b", "remove")], ValueError),
    ([("a", "no such edit")], ValueError),
    ([("a", "before")], TypeError),
])
def test_edits_that_are_none(edits, error):
    with pytest.raises(error):
        kestra_html.rewrite(b"<a>", edits)


def test_pieces():
    parser = kestra_html.Parser()
    raw = [token.raw for i in range(len(PAGE)) for token in parser.feed(PAGE[i:i + 1])]
    raw += [token.raw for token in parser.close()]
    assert b"".join(raw) == PAGE
    assert raw == [token.raw for token in kestra_html.tokens(PAGE)]


@pytest.mark.parametrize("page, text, charset", [
    (b"<meta charset=utf-8>\xc3\xa4", "\xe4", 65001),
    (b"<p>\xc3\xa4</p><meta charset=utf-8>\xc3\xa4", "\xe4", 65001),
    (b"<p>a</p><meta charset=koi8-r>\xca", "\u0439", 20866),
    (b"\xef\xbb\xbf<p>a</p><meta charset=koi8-r>\xc3\xa4", "\xe4", 65001),
    ("<p>\xe4</p>\xe4".encode("utf-16"), "\xe4", 0),
])
def test_pieces_that_declare_a_charset(page, text, charset):
    for cut in range(len(page)):
        parser = kestra_html.Parser()
        parts = parser.feed(page[:cut]), parser.feed(page[cut:]), parser.close()
        raw = b"".join(token.raw for part in parts for token in part)
        assert raw == page.removeprefix(b"\xef\xbb\xbf").removeprefix(b"\xff\xfe")
        assert parts[2][-1].text == text
        assert charset in (0, parts[2].charset)


def test_a_charset_too_late_for_tokens_of_scripts():
    page = b"<p>a</p><meta charset=koi8-r><script>//\xca\n</script>"
    with pytest.raises(kestra_html.HtmlError, match="705"):
        kestra_html.Parser(scripts_as_tokens=True).feed(page)
    tokens = kestra_html.Parser(scripts_as_tokens=True, charset="koi8-r").feed(page)
    assert "\u0439" in [token.text for token in tokens]


def test_a_parser_in_two_threads():
    """A call during another one is refused, and the other one goes on."""
    page = b"<p>text</p>" * 400_000
    for _ in range(10):  # when the machine gives no time to this thread during the call
        parser = kestra_html.Parser()
        begun = threading.Event()
        fed = []

        def work():
            begun.set()
            fed.append(parser.feed(page))

        thread = threading.Thread(target=work)
        thread.start()
        begun.wait()
        refused = []
        while not fed and not refused:
            try:
                parser.feed(b"")
            except RuntimeError as error:
                refused.append(error)
                with pytest.raises(RuntimeError, match="one thread"):
                    parser.close()
        thread.join()
        assert len(fed[0]) == 3 * 400_000
        assert [token.raw for token in parser.feed(b"<b>")] == [b"<b>"]
        if refused:
            assert "one thread" in str(refused[0])
            return
    pytest.fail("no call was made during the other one")


def test_pieces_with_a_broken_construct():
    parser = kestra_html.Parser()
    tokens = list(parser.feed(b"<a ")) + list(parser.feed(b"/ x")) + list(parser.close())
    assert kinds(tokens) == [Kind.JUNK] * len(tokens)
    assert b"".join(token.raw for token in tokens) == b"<a / x"


def test_many():
    results = list(kestra_html.tokens_many([PAGE, b"<abcdefgh>" * 2, "no", PAGE], threads=2, max_token_size=40))
    assert [len(result) if isinstance(result, kestra_html.Tokens) else type(result.error) for result in results] == [
        9, 2, TypeError, 9]
    failure, = kestra_html.tokens_many([b"<abcdefgh>"], max_token_size=4)
    assert failure.result == 711


class FailingReader:
    def __init__(self, error):
        self.error = error

    def read(self):
        raise self.error


@pytest.mark.parametrize("document, error", [
    (memoryview(b"abcd")[::2], BufferError),
    (FailingReader(RuntimeError("no")), RuntimeError),
    (FailingReader(KeyError("no")), KeyError),
    (FailingReader(MemoryError()), MemoryError),
    (FailingReader(kestra_html.HtmlError(705)), kestra_html.HtmlError),
])
def test_a_bad_document_among_many(document, error):
    first, failure, last = kestra_html.tokens_many([PAGE, document, PAGE])
    assert len(first) == len(last) == 9
    assert type(failure.error) is error
    assert failure.result == (705 if error is kestra_html.HtmlError else 0)


@pytest.mark.parametrize("options, error", [
    ({"max_token_size": -1}, TypeError),
    ({"no_such_option": 1}, TypeError),
    ({"charset": "no such charset"}, LookupError),
    ({"threads": 0}, ValueError),
])
def test_wrong_options_for_many(options, error):
    with pytest.raises(error):
        kestra_html.tokens_many([PAGE], **options)


def test_threads_share_nothing():
    failures = []

    def work():
        for _ in range(50):
            if len(kestra_html.tokens(PAGE * 20)) != 180:
                failures.append(1)

    threads = [threading.Thread(target=work) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not failures


@pytest.mark.parametrize("call", [
    kestra_html.tokens, kestra_html.links, kestra_html.text, kestra_html.check,
    lambda page: kestra_html.rewrite(page, [("p", "remove")]),
    lambda page: kestra_html.Parser().feed(page),
], ids=["tokens", "links", "text", "check", "rewrite", "feed"])
def test_the_gil_is_dropped(call):
    """Another thread runs during a call. With the GIL it would run when the call is over."""
    page = b"<p>text</p>" * 400_000
    interval = sys.getswitchinterval()
    sys.setswitchinterval(1000)
    try:
        for _ in range(10):  # when the machine gives no time to this thread during the call
            begun = threading.Event()
            finished = []

            def work():
                begun.set()
                call(page)
                finished.append(True)

            thread = threading.Thread(target=work)
            thread.start()
            begun.wait()
            was_finished = bool(finished)
            thread.join()
            if not was_finished:
                return
    finally:
        sys.setswitchinterval(interval)
    pytest.fail("no other thread ran")


def test_documents_are_let_go():
    data = bytearray(PAGE)
    tokens = kestra_html.tokens(data)
    with pytest.raises(BufferError):
        data.append(0)
    del tokens
    gc.collect()
    data.append(0)


# The stubs

def read_stubs():
    path = pathlib.Path(kestra_html.__file__).with_suffix(".pyi")
    return ast.parse(path.read_text())


def argument_names(function):
    arguments = function.args
    return [argument.arg for argument in arguments.posonlyargs + arguments.args], \
        [argument.arg for argument in arguments.kwonlyargs]


def test_the_stubs_name_all_that_is_public():
    stubbed = {node.name for node in read_stubs().body if isinstance(node, (ast.FunctionDef, ast.ClassDef))}
    assert stubbed == set(kestra_html.__all__)


def test_the_stubs_have_the_arguments_of_the_functions():
    for node in read_stubs().body:
        if not isinstance(node, ast.FunctionDef) or node.name == "tokens_many":
            continue
        parameters = inspect.signature(getattr(kestra_html, node.name)).parameters.values()
        positional = [parameter.name for parameter in parameters if parameter.kind != parameter.KEYWORD_ONLY]
        named = [parameter.name for parameter in parameters if parameter.kind == parameter.KEYWORD_ONLY]
        assert argument_names(node) == (positional, named), node.name


def test_the_stubs_have_the_members_of_the_classes():
    for node in read_stubs().body:
        if not isinstance(node, ast.ClassDef):
            continue
        stubbed = {member.name for member in node.body if isinstance(member, ast.FunctionDef)}
        defined = vars(getattr(kestra_html, node.name))
        public = {name for name, member in defined.items()
                  if not name.startswith("_") and (callable(member) or isinstance(member, property))}
        if not issubclass(getattr(kestra_html, node.name), (tuple, int)):
            assert {name for name in stubbed if not name.startswith("_")} == public, node.name


def test_everything_public_is_documented():
    for name in kestra_html.__all__:
        public = getattr(kestra_html, name)
        assert public.__doc__, name
        # What comes from a class of Python's is documented there, but for the fields of a tuple.
        for member, value in vars(public).items():
            if not member.startswith("_") and not issubclass(public, kestra_html.Kind):
                assert inspect.getdoc(value), f"{name}.{member}"
                assert not inspect.getdoc(value).startswith("Alias for field"), f"{name}.{member}"


def test_the_documentation_names_every_function_and_kind_and_its_examples_run():
    for name in kestra_html.__all__:
        if inspect.isfunction(getattr(kestra_html, name)):
            assert f"    {name}(" in kestra_html.__doc__, name
    for kind in kestra_html.Kind:
        assert f"`{kind.name}`" in kestra_html.Kind.__doc__, kind.name
    results = doctest.testmod(kestra_html)
    assert results.attempted >= 10 and results.failed == 0
