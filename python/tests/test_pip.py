"""`pip install .`, into an environment of its own, without a network."""

import os
import pathlib
import shutil
import subprocess
import sys

import pytest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent


@pytest.mark.skipif("asan" in os.environ.get("LD_PRELOAD", ""), reason="nothing that the sanitizer would see")
def test_the_package_is_installed_and_removed(tmp_path):
    environment = {name: value for name, value in os.environ.items() if name != "PYTHONPATH"}

    def run(*command):
        finished = subprocess.run(command, cwd=tmp_path, env=environment, capture_output=True, text=True)
        assert finished.returncode == 0, finished.stdout + finished.stderr
        return finished.stdout

    # A copy, so that what setuptools writes beside the sources is not theirs.
    source = tmp_path / "source"
    shutil.copytree(ROOT, source, ignore=shutil.ignore_patterns("build", "build-*", ".git", "*.egg-info"))
    if folder := environment.get("KESTRA_BUILD_FOLDER"):
        environment["KESTRA_BUILD_FOLDER"] = str(ROOT / folder)

    run(sys.executable, "-m", "venv", "--system-site-packages", "environment")
    python = tmp_path / "environment/bin/python"
    run(python, "-m", "pip", "install", "--no-build-isolation", "--no-index", "--no-deps", source)
    program = "import kestra_html; print(kestra_html.links(b'<a href=x>'), kestra_html.__version__)"
    assert run(python, "-c", program).split() == ["['x']", "0.1.0"]
    files = run(python, "-m", "pip", "show", "--files", "kestra-html")
    for name in ("__init__.py", "__init__.pyi", "compat.py", "py.typed", "_native"):
        assert f"kestra_html/{name}" in files, name
    run(python, "-m", "pip", "uninstall", "--yes", "kestra-html")
    assert subprocess.run([python, "-c", "import kestra_html"], cwd=tmp_path, env=environment,
                          capture_output=True).returncode == 1
