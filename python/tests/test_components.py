"""What is installed by CMake, with the module among it."""

import os
import pathlib
import subprocess

import pytest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
FOLDER = os.environ.get("KESTRA_BUILD_FOLDER")


@pytest.mark.skipif("asan" in os.environ.get("LD_PRELOAD", ""), reason="nothing that the sanitizer would see")
@pytest.mark.skipif(not FOLDER, reason="needs a build")
def test_each_component_is_installed_alone():
    finished = subprocess.run(["ctest", "--test-dir", ROOT / FOLDER, "-R", r"^Package\.(Archive|Components)$",
                               "--output-on-failure"], capture_output=True, text=True)
    assert "100% tests passed, 0 tests failed out of 2" in finished.stdout, finished.stdout + finished.stderr
    listed = pathlib.Path(ROOT, FOLDER, "tests/package/components/python.listed").read_text(encoding="utf-8")
    assert "kestra_html/__init__.py\n" in listed
