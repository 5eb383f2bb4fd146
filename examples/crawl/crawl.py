#!/usr/bin/env python3
"""Counts what the pages of WARC files link to and say, over a cluster.

    crawl.py [--scheduler ADDRESS | --processes N] FILE.warc.gz...

Each file is read as a stream, by whichever worker is free; nothing is kept but the counts. With
--scheduler the workers of a Dask cluster read the files, by the same paths; with --processes some
of this machine; otherwise this process alone. Prints one object of JSON. The exit status is 1 when
a file or a record could not be read; what was counted before is in the result.
"""

import argparse
import collections
import dataclasses
import gzip
import json
import re
import sys
import urllib.parse
import zlib

import kestra_html

LONGEST_TOKEN = 1 << 20  # bytes: a poisoned page costs no more than that
LONGEST_RECORD = 64 << 20  # bytes that are kept in memory; what is longer is passed over
TOO_LONG = "too long"  # the result of a page in such a record
PAGE_TYPES = ("text/html", "application/xhtml+xml")
READ_SIZE = 1 << 16


class BadRecord(Exception):
    """A record that is not what it says; the rest of its file cannot be read."""


@dataclasses.dataclass
class Counts:
    """What was found. Counts of parts add up to those of the whole, in any order."""

    pages: int = 0
    bytes: int = 0
    links: int = 0
    characters: int = 0  # of the texts that a reader sees
    charsets: collections.Counter = dataclasses.field(default_factory=collections.Counter)
    hosts: collections.Counter = dataclasses.field(default_factory=collections.Counter)  # that links lead to
    results: collections.Counter = dataclasses.field(default_factory=collections.Counter)  # of pages that failed
    failures: list = dataclasses.field(default_factory=list)  # files and records that could not be read

    def __add__(self, other):
        # By `vars`: the class itself is sent to the workers, and there `fields` does not know it.
        return Counts(**{name: value + getattr(other, name) for name, value in vars(self).items()})


def read_headers(stream):
    """The lines up to an empty one, as names in lower case and values; the first line by itself."""
    first = stream.readline(READ_SIZE)
    headers = {}
    while (line := stream.readline(READ_SIZE)) not in (b"\r\n", b"\n", b""):
        name, _, value = line.partition(b":")
        headers[name.strip().lower().decode("latin-1")] = value.strip().decode("latin-1")
    return first.strip(), headers


def skip(stream, length):
    """Reads bytes without keeping them. Returns how many there were."""
    left = length
    while left > 0 and (piece := stream.read(min(left, READ_SIZE))):
        left -= len(piece)
    return length - left


def read_records(stream):
    """The headers and the content of each record; of one that is too long only its beginning."""
    while True:
        version, headers = read_headers(stream)
        if not version and not headers:
            return
        if not version.startswith(b"WARC/"):
            raise BadRecord(f"a record begins with {version[:20]!r}")
        length = headers.get("content-length", "")
        if not (length.isascii() and length.isdigit() and len(length) < 20):
            raise BadRecord(f"a record has the length {length[:20]!r}")
        kept = int(length) if int(length) <= LONGEST_RECORD else READ_SIZE
        content = stream.read(kept)
        size = len(content) + skip(stream, int(length) - kept)
        if size < int(length):
            raise BadRecord(f"a record of {length} bytes ends after {size}")
        if stream.readline(READ_SIZE).strip() or stream.readline(READ_SIZE).strip():
            raise BadRecord(f"a record of {length} bytes goes on after them")
        yield headers, content


def find_page(headers, content):
    """The page in a record, or None."""
    if headers.get("warc-type") != "response":
        return None
    head, separator, page = content.partition(b"\r\n\r\n")
    lines = head.split(b"\r\n")
    if not separator or b" 200" not in lines[0]:
        return None
    for line in lines[1:]:
        name, _, value = line.partition(b":")
        if name.strip().lower() == b"content-type":
            return page if value.decode("latin-1").partition(";")[0].strip().lower() in PAGE_TYPES else None
    return None


def count_page(page, address):
    """What one page has. A page that fails is a count of its result."""
    counts = Counts(pages=1, bytes=len(page))
    try:
        charset = kestra_html.detect(page)
        kestra_html.tokens(page, charset=charset.code_page, max_token_size=LONGEST_TOKEN)
        links = kestra_html.links(page, charset=charset.code_page)
        counts.characters = len(kestra_html.text(page, charset=charset.code_page))
    except kestra_html.HtmlError as error:
        counts.results[str(error.result)] += 1
        return counts
    counts.charsets[charset.name or "unknown"] += 1
    counts.links = len(links)
    known = {}
    for link in links:
        counts.hosts[find_host(address, link, known)] += 1
    return counts


ORIGIN = re.compile(r"https?://[^/?#]+", re.IGNORECASE)


def find_host_of_address(address, known):
    if address not in known:
        try:
            known[address] = urllib.parse.urlsplit(address).hostname or ""
        except ValueError:
            known[address] = ""
    return known[address]


def find_host(address, link, known):
    """Where a link of a page leads to. Most links need not be joined to the address for that.

    `known` is a dictionary in which hosts that were found are kept.
    """
    if origin := ORIGIN.match(link):
        return find_host_of_address(origin.group(), known)
    # A link without these stays on the host.
    if ":" not in link and "//" not in link:
        return find_host_of_address(address, known)
    try:
        return find_host_of_address(urllib.parse.urljoin(address, link), known)
    except ValueError:
        return ""


def count_file(path):
    """What the pages of a file have, up to where it can be read."""
    counts = Counts()
    try:
        with gzip.open(path, "rb") as stream:
            for headers, content in read_records(stream):
                page = find_page(headers, content)
                if page is not None and int(headers["content-length"]) > LONGEST_RECORD:
                    counts += Counts(pages=1, results=collections.Counter([TOO_LONG]))
                elif page is not None:
                    counts += count_page(page, headers.get("warc-target-uri", ""))
    except (OSError, EOFError, zlib.error, BadRecord) as error:
        counts.failures.append(f"{path}: {error}")
    return counts


def count_by_cluster(client, paths):
    """The same for many files. A task whose worker ends is done again by another one."""
    from distributed import as_completed

    counts = Counts()
    futures = {client.submit(count_file, path, retries=3, pure=False): path for path in paths}
    for future in as_completed(futures):
        if future.status == "finished":
            counts += future.result()
        else:
            counts.failures.append(f"{futures[future]}: {future.exception()}")
    return counts


def connect(options):
    """A client of the cluster, or None."""
    if options.scheduler is None and options.processes is None:
        return None
    from distributed import Client, LocalCluster

    if options.scheduler is not None:
        try:
            return Client(options.scheduler, timeout="10s")
        except (OSError, TimeoutError) as error:
            sys.exit(f"crawl.py: the scheduler {options.scheduler} cannot be reached: {error}")
    return Client(LocalCluster(n_workers=options.processes, threads_per_worker=1, dashboard_address=None))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--scheduler", metavar="ADDRESS", help="of a Dask cluster, as tcp://host:8786")
    parser.add_argument("--processes", metavar="N", type=int, help="workers on this machine")
    parser.add_argument("files", nargs="+", metavar="FILE.warc.gz")
    options = parser.parse_args()
    client = connect(options)
    if client is None:
        counts = sum(map(count_file, options.files), Counts())
    else:
        with client:
            counts = count_by_cluster(client, options.files)
    counts.failures.sort()
    print(json.dumps(vars(counts), sort_keys=True))
    sys.exit(1 if counts.failures else 0)


if __name__ == "__main__":
    main()
