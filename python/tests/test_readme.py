"""The example in README.md, as it is printed there."""

import contextlib
import io
import pathlib
import re

README = pathlib.Path(__file__).resolve().parent.parent.parent / "README.md"


def test_the_example():
    example, = re.findall(r"^```python\n(.*?)^```$", README.read_text(encoding="utf-8"), re.MULTILINE | re.DOTALL)
    assert 10 <= len(example.splitlines()) <= 12
    output = io.StringIO()
    with contextlib.redirect_stdout(output):
        exec(compile(example, str(README), "exec"), {})
    assert output.getvalue().splitlines() == [
        "START_TAG b'<p>' 1",
        "TEXT b'Tea &amp; ' 1",
        "START_TAG b'<a href=\"/cake?a=1&amp;b=2\">' 1",
        "TEXT b'cake' 1",
        "END_TAG b'</a>' 1",
        "END_TAG b'</p>' 1",
        "6",
        "6",
    ]
