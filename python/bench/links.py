#!/usr/bin/env python3
"""Finds the links of pages by this module and by other parsers, from bytes, in one run.

    python/bench/links.py FOLDER [--rounds N] [--corpus NAME...]

FOLDER is what setup/bench-corpora and python/bench/asian-pages make: lists of pages, NAME.txt.
Prints MB/s (millions of bytes a second of one thread, medians of the rounds), how many times as
fast as `html.parser` the module is, how many times it must be at least, and on how many pages the
links are not those of `lxml`, with the reason. Then two threads beside one. The exit status is 1
when a bound is missed, or links differ for another reason.
"""

import argparse
import collections
import gc
import html.parser
import pathlib
import statistics
import sys
import threading
import time

import html5_parser
import lxml.etree

import kestra_html

# How many times as fast as `html.parser` this module must be at least.
BOUNDS = {"web": 20, "wiki": 40, "large": 30, "scripts": 20, "asian": 33}
THREADS_BOUND = 1.7
LEAST_BYTES = 10_000_000  # of a run
OTHER = "other links"
LINKS = lxml.etree.XPath("//a/@href | //area/@href")


class LinkParser(html.parser.HTMLParser):
    def __init__(self):
        super().__init__()
        self.links = []

    def handle_starttag(self, tag, attrs):
        if tag in ("a", "area"):
            for name, value in attrs:
                if name == "href":
                    self.links.append(value or "")
                    return


def by_html_parser(page):
    parser = LinkParser()
    # It takes text alone. To take everything for UTF-8 is the cheapest way to come by that.
    parser.feed(page.decode(errors="replace"))
    parser.close()
    return parser.links


def by_lxml(page):
    return LINKS(lxml.etree.fromstring(page, lxml.etree.HTMLParser(huge_tree=True)))


def by_html5_parser(page):
    return LINKS(html5_parser.parse(page, sanitize_names=False))


FINDERS = {"kestra_html": kestra_html.links, "html.parser": by_html_parser, "lxml": by_lxml,
           "html5-parser": by_html5_parser}


def read_pages(folder, corpus):
    names = (folder / f"{corpus}.txt").read_text().split("\n")
    return [(folder / name).read_bytes() for name in names if name]


def time_once(find, pages, times):
    gc.collect()
    begin = time.process_time()
    for _ in range(times):
        for page in pages:
            find(page)
    return (time.process_time() - begin) / times


def time_finders(pages, rounds):
    """The median seconds of each, taken in turns."""
    # A small corpus is read several times, so that the clock is fine enough.
    times = max(1, LEAST_BYTES // sum(map(len, pages)))
    seconds = collections.defaultdict(list)
    for _ in range(rounds):
        for name, find in FINDERS.items():
            seconds[name].append(time_once(find, pages, times))
    return {name: statistics.median(values) for name, values in seconds.items()}


def name_difference(page, ours, theirs):
    """Why the links of a page are not those of lxml."""
    if len(ours) == len(theirs) and all(a in (b, b.removesuffix("/")) for a, b in zip(ours, theirs)):
        return "a value without quotes ends in a slash, which closes a short tag here"
    if ours == [link.encode("latin-1", "replace").decode(errors="replace") for link in theirs]:
        return "no charset is named: lxml takes single bytes, here it is detected"
    if ours == by_html5_parser(page):
        return "html5-parser has the links found here"
    return OTHER


def compare_links(pages):
    """How many pages have other links than those of lxml, by the reason."""
    differences = collections.Counter()
    for page in pages:
        ours, theirs = kestra_html.links(page), [str(link) for link in by_lxml(page)]
        if ours != theirs:
            differences[name_difference(page, ours, theirs)] += 1
    return differences


def time_threads(pages, rounds):
    """How many times as many pages two threads cut into tokens as one: the best of the rounds."""
    def work():
        for page in pages:
            kestra_html.tokens(page)

    def run(count):
        threads = [threading.Thread(target=work) for _ in range(count)]
        begin = time.perf_counter()
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        return time.perf_counter() - begin

    return 2 * min(run(1) for _ in range(rounds)) / min(run(2) for _ in range(rounds))


def bench_corpus(corpus, pages, rounds):
    """Prints a row. Returns whether the bounds are met."""
    seconds = time_finders(pages, rounds)
    size = sum(map(len, pages))
    speeds = "".join(f"{size / 1e6 / seconds[name]:14.1f}" for name in FINDERS)
    times = seconds["html.parser"] / seconds["kestra_html"]
    differences = compare_links(pages)
    missed = times < BOUNDS[corpus]
    print(f"{corpus:8}{len(pages):6}{size / 1e6:8.1f}{speeds}{times:8.1f}{BOUNDS[corpus]:6}"
          f"{'  MISSED' if missed else ''}", flush=True)
    for reason, count in differences.items():
        print(f"    {count} of {len(pages)} pages: {reason}")
    return not missed and OTHER not in differences


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--corpus", nargs="*", default=list(BOUNDS), choices=list(BOUNDS))
    options = parser.parse_args()
    names = "".join(f"{name:>14}" for name in FINDERS)
    print(f"{'':8}{'pages':>6}{'MB':>8}{names}{'times':>8}{'least':>6}")
    met = True
    for corpus in options.corpus:
        met = bench_corpus(corpus, read_pages(options.folder, corpus), options.rounds) and met
    times = time_threads(read_pages(options.folder, options.corpus[0]), options.rounds)
    missed = times < THREADS_BOUND
    print(f"two threads: {times:.2f} times one, at least {THREADS_BOUND}{'  MISSED' if missed else ''}")
    sys.exit(0 if met and not missed else 1)


if __name__ == "__main__":
    main()
