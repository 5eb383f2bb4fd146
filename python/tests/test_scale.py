"""The commands and the code of docs/scale.md, as they are printed there."""

import contextlib
import gzip
import json
import os
import pathlib
import re
import shutil
import signal
import socket
import subprocess
import sys

import pytest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
TEXT = (ROOT / "docs/scale.md").read_text(encoding="utf-8")
TOOLS = ROOT / os.environ.get("KESTRA_BUILD_FOLDER", "build/release") / "bin"


def make_warc(pages):
    records = []
    for page in pages:
        answer = b"HTTP/1.1 200 OK\r\nContent-Type: text/html\r\n\r\n" + page
        head = b"WARC/1.0\r\nWARC-Type: response\r\nWARC-Target-URI: http://example.org/\r\nContent-Length: "
        records.append(gzip.compress(head + b"%d\r\n\r\n" % len(answer) + answer + b"\r\n\r\n"))
    return b"".join(records)


@pytest.fixture
def folder(tmp_path):
    """What the commands expect: the example, two files of pages, and the pages themselves."""
    shutil.copy(ROOT / "examples/crawl/crawl.py", tmp_path)
    (tmp_path / "pages").mkdir()
    pages = [b"<p>%d <a href='http://a.example/%d'>a</a> <a href=b>b</a></p>" % (i, i) for i in range(20)]
    for number, page in enumerate(pages):
        (tmp_path / f"pages/{number}.html").write_bytes(page)
    (tmp_path / "first.warc.gz").write_bytes(make_warc(pages[:12]))
    (tmp_path / "second.warc.gz").write_bytes(make_warc(pages[12:]))
    return tmp_path


def free_port():
    with socket.socket() as listener:
        listener.bind(("127.0.0.1", 0))
        return str(listener.getsockname()[1])


@pytest.mark.skipif("asan" in os.environ.get("LD_PRELOAD", ""), reason="a cluster under the sanitizer takes minutes")
def test_the_commands(folder):
    commands = re.findall(r"^    \$ (.*)$", TEXT, re.MULTILINE)
    assert len(commands) == 9
    script = "set -eu -o pipefail\n" + "\n".join(commands).replace("8786", free_port()).replace(
        "python3", sys.executable)
    environment = dict(os.environ, PATH=f"{TOOLS}:{pathlib.Path(sys.executable).parent}:{os.environ['PATH']}",
                       PARALLEL_HOME=str(folder))
    with open(folder / "output", "w") as output, open(folder / "errors", "w+") as errors:
        shell = subprocess.Popen(["bash", "-c", script], cwd=folder, env=environment, text=True,
                                 stdin=subprocess.DEVNULL, stdout=output, stderr=errors, start_new_session=True)
        try:
            status = shell.wait(timeout=100)
        finally:
            # The scheduler and its workers. When none is left, the errors below say why.
            with contextlib.suppress(ProcessLookupError):
                os.killpg(shell.pid, signal.SIGKILL)
        errors.seek(0)
        assert status == 0, errors.read()
    counts = [json.loads(line) for line in (folder / "output").read_text().splitlines() if line.startswith("{")]
    assert len(counts) == 3 and counts[0] == counts[1] == counts[2]
    assert (counts[0]["pages"], counts[0]["links"], counts[0]["failures"]) == (20, 40, [])
    parts = [json.loads((folder / f"{name}.warc.json").read_text()) for name in ("first", "second")]
    assert [part["pages"] for part in parts] == [12, 8]
    assert (folder / "secure/3.html").read_bytes() == b"<p>3 <a href='https://a.example/3'>a</a> <a href=b>b</a></p>"
    assert len(list((folder / "secure").iterdir())) == 20


def test_the_function_for_partitions(folder, monkeypatch):
    monkeypatch.syspath_prepend(folder)
    code, = re.findall(r"^```python\n(.*?)^```$", TEXT, re.MULTILINE | re.DOTALL)
    names = {}
    exec(code, names)
    counts = names["count_files"](iter([folder / "first.warc.gz", folder / "second.warc.gz"]))
    assert [part.pages for part in counts] == [12, 8]
