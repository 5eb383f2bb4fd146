"""The example over a cluster: the same counts, also when a worker ends in the middle."""

import gzip
import json
import os
import pathlib
import signal
import subprocess
import sys
import urllib.parse

import pytest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "examples" / "crawl"))

import crawl  # noqa: E402

FILES = 6


def make_record(content, kind="response", length=None):
    length = len(content) if length is None else length
    head = (f"WARC/1.0\r\nWARC-Type: {kind}\r\nWARC-Target-URI: http://example.org/a/\r\n"
            f"Content-Length: {length}\r\n\r\n")
    return head.encode("latin-1") + content + b"\r\n\r\n"


def make_response(page, content_type="text/html; charset=utf-8", status="200 OK"):
    return f"HTTP/1.1 {status}\r\nContent-Type: {content_type}\r\n\r\n".encode() + page


def write_file(path, records):
    path.write_bytes(b"".join(map(gzip.compress, records)))
    return str(path)


@pytest.fixture(scope="module")
def files(tmp_path_factory):
    """Files of real pages: those that this system has, and the example page."""
    folder = tmp_path_factory.mktemp("warc")
    pages = sorted(pathlib.Path("/usr/share/doc").rglob("*.html"))[:120] + sorted((ROOT / "examples").rglob("*.html"))
    records = [make_record(make_response(page.read_bytes())) for page in pages if page.is_file()]
    records.append(make_record(b"software: x\r\n", kind="warcinfo"))
    records.append(make_record(make_response(b"{}", content_type="application/json")))
    records.append(make_record(make_response(b"<a href=gone>", status="404 Not Found")))
    return [write_file(folder / f"{i}.warc.gz", records[i::FILES]) for i in range(FILES)]


def test_a_page(tmp_path):
    page = "<meta charset=utf-8><a href=b>Tea é</a><a href=http://example.com/>".encode()
    counts = crawl.count_file(write_file(tmp_path / "a.warc.gz", [make_record(make_response(page))]))
    assert (counts.pages, counts.links, counts.characters) == (1, 2, 5)
    assert counts.hosts == {"example.org": 1, "example.com": 1}
    assert counts.charsets == {"UTF-8": 1}


@pytest.mark.parametrize("address", ["http://a.example/b/c?d", "https://u@A.example:81/", "http://[::1]/", "urn:x", ""])
@pytest.mark.parametrize("link", [
    "", "e", "/e", "//f.example/g", "?h", "#i", "../j", "mailto:k@l.example", "HTTP://M.example/n",
    "http://o.example:80",
    "https://p@q.example?r//s", "http:t", "http:/u", "http:///v", "http://[", "http://[::2]/", "http://w\n.example/",
    " http://x.example/", "javascript:void(0)", "y//z", "\\\\a.example", "http://\u2100.example/",
    "http://b.example#//c/",
])
def test_hosts_are_those_of_joined_addresses(address, link):
    try:
        host = urllib.parse.urlsplit(urllib.parse.urljoin(address, link)).hostname or ""
    except ValueError:
        host = ""
    known = {}
    assert [crawl.find_host(address, link, known) for _ in range(2)] == [host, host]


def test_a_poisoned_page_is_a_result(tmp_path):
    page = b"<p " + b"a " * (1 << 20) + b">"
    counts = crawl.count_file(write_file(tmp_path / "a.warc.gz", [make_record(make_response(page))] * 2))
    assert (counts.pages, counts.results) == (2, {"711": 2})


def test_a_page_that_is_too_long_is_a_result(tmp_path, monkeypatch):
    monkeypatch.setattr(crawl, "LONGEST_RECORD", 1 << 17)
    pages = [b"<a href=b>" + b"t" * size for size in (1 << 18, 10, (1 << 17) + 1)]
    path = write_file(tmp_path / "a.warc.gz", [make_record(make_response(page)) for page in pages])
    counts = crawl.count_file(path)
    assert (counts.pages, counts.links, counts.results) == (3, 1, {"too long": 2})
    assert not counts.failures


@pytest.mark.parametrize("spoil, message", [
    (lambda records: b"".join(map(gzip.compress, records))[:-20], "end"),
    (lambda records: gzip.compress(records[0]) + gzip.compress(make_record(b"x", length=7)), "ends after"),
    (lambda records: gzip.compress(records[0]) + gzip.compress(make_record(b"x" * 9, length=3)), "goes on"),
    (lambda records: gzip.compress(records[0]) + gzip.compress(make_record(b"x", length="many")), "has the length"),
    (lambda records: gzip.compress(records[0]) + gzip.compress(make_record(b"x", length="\xb2")), "has the length"),
    (lambda records: gzip.compress(records[0]) + gzip.compress(make_record(b"x", length=-1)), "has the length"),
    (lambda records: gzip.compress(records[0]) + gzip.compress(make_record(b"x", length=10 ** 18)), "ends after 5"),
    (lambda records: gzip.compress(records[0]) + gzip.compress(make_record(b"x", length="1" * 6000)), "has the length"),
    (lambda records: gzip.compress(records[0]) + gzip.compress(b"nothing\r\n\r\n"), "begins with"),
    (lambda records: gzip.compress(records[0])[:-8] + b"\xff" * 8, "CRC"),
    (lambda records: gzip.compress(records[0]) + b"no gzip", "Not a gzipped file"),
])
def test_what_cannot_be_read(tmp_path, spoil, message):
    records = [make_record(make_response(b"<a href=b>"))] * 2
    path = tmp_path / "a.warc.gz"
    path.write_bytes(spoil(records))
    counts = crawl.count_file(str(path))
    assert counts.links == 1
    assert len(counts.failures) == 1 and message in counts.failures[0] and str(path) in counts.failures[0]


def run(*arguments):
    return subprocess.run([sys.executable, ROOT / "examples/crawl/crawl.py", *arguments], capture_output=True,
                          text=True, timeout=120)


def test_the_program_goes_on_after_a_file_that_is_missing(files):
    finished = run("no such file.warc.gz", files[0])
    counts = json.loads(finished.stdout)
    assert finished.returncode == 1
    assert counts["pages"] > 0 and "no such file" in counts["failures"][0]


def test_a_scheduler_that_is_not_there(files):
    pytest.importorskip("distributed")
    finished = run("--scheduler", "tcp://127.0.0.1:9", files[0])
    assert finished.returncode == 1 and not finished.stdout
    assert finished.stderr.count("\n") == 1 and "cannot be reached" in finished.stderr


@pytest.mark.skipif("asan" in os.environ.get("LD_PRELOAD", ""), reason="a cluster under the sanitizer takes minutes")
def test_a_worker_that_ends_in_the_middle(files):
    distributed = pytest.importorskip("distributed")
    alone = sum(map(crawl.count_file, files), crawl.Counts())
    assert alone.pages > 60 and not alone.failures
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None) as cluster, \
            distributed.Client(cluster) as client:
        client.run(sys.path.insert, 0, str(ROOT / "examples" / "crawl"))
        killed = []

        def submit(function, path, **options):
            future = type(client).submit(client, function, path, **options)
            if len(killed) == 0 and path == files[2]:
                killed.append(next(iter(cluster.workers.values())).pid)
                os.kill(killed[0], signal.SIGKILL)
            return future

        client.submit = submit
        counts = crawl.count_by_cluster(client, files)
    assert killed and not counts.failures
    assert vars(counts) == vars(alone)
