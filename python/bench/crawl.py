#!/usr/bin/env python3
"""What one core does with the pages of a WARC file: pages and MB a second, and memory.

    python/bench/crawl.py FOLDER        with FOLDER/web.txt, which setup/bench-corpora makes

Writes the pages as a WARC file of gzip members, counts them by examples/crawl/crawl.py, and runs
the parts of that over the same pages. Times are of the processor, the best of three runs.
"""

import gzip
import pathlib
import resource
import sys
import tempfile
import time

import kestra_html

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "examples" / "crawl"))

import crawl  # noqa: E402


def write_warc(path, pages):
    with open(path, "wb") as file:
        for page in pages:
            answer = b"HTTP/1.1 200 OK\r\nContent-Type: text/html\r\n\r\n" + page
            head = (f"WARC/1.0\r\nWARC-Type: response\r\nWARC-Target-URI: http://example.org/\r\n"
                    f"Content-Length: {len(answer)}\r\n\r\n")
            file.write(gzip.compress(head.encode() + answer + b"\r\n\r\n"))


def seconds(work):
    """The best of three runs."""
    times = []
    for _ in range(3):
        begin = time.process_time()
        work()
        times.append(time.process_time() - begin)
    return min(times)


def main():
    folder = pathlib.Path(sys.argv[1])
    pages = [(folder / name).read_bytes() for name in (folder / "web.txt").read_text().split()]
    size = sum(map(len, pages))

    def each(call):
        return lambda: [call(page) for page in pages]

    with tempfile.TemporaryDirectory() as temporary:
        path = pathlib.Path(temporary) / "pages.warc.gz"
        write_warc(path, pages)

        def unpack():
            with gzip.open(path) as stream:
                while stream.read(crawl.READ_SIZE):
                    pass

        parts = {"crawl.py, everything": lambda: crawl.count_file(str(path)), "of that gzip": unpack,
                 "links": each(kestra_html.links), "text": each(kestra_html.text),
                 "tokens": each(kestra_html.tokens), "detect": each(kestra_html.detect)}
        print(f"{'':22}{'pages/s':>10}{'MB/s':>10}")
        for name, work in parts.items():
            taken = seconds(work)
            print(f"{name:22}{len(pages) / taken:10.0f}{size / 1e6 / taken:10.1f}")
    print(f"most memory of the process: {resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024:.0f} MiB, "
          f"{size / 2 ** 20:.0f} of them the pages")


main()
