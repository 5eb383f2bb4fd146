"""`pip install .`, into an environment of its own, without a network; and its step that builds.

With KESTRA_BUILD_FOLDER the module is built there, or is there already; without, from the sources
alone, as a user builds it, which takes minutes.
"""

import os
import pathlib
import runpy
import shutil
import subprocess
import sys
import sysconfig

import pytest
import setuptools

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent


@pytest.fixture
def build(tmp_path, monkeypatch):
    """Runs the step of setup.py in a folder that is built."""
    monkeypatch.setattr(setuptools, "setup", lambda **options: None)
    commands = []
    monkeypatch.setattr(subprocess, "run", lambda arguments, **options: commands.append(arguments))
    monkeypatch.setenv("KESTRA_BUILD_FOLDER", str(tmp_path))
    command = runpy.run_path(str(ROOT / "setup.py"))["BuildByCMake"](setuptools.Distribution())
    monkeypatch.setattr(command, "get_ext_fullpath", lambda name: str(tmp_path / "target/module"))
    (tmp_path / "python/kestra_html").mkdir(parents=True)

    def run():
        command.build_extension(setuptools.Extension("kestra_html._native", []))
        return commands

    return run


def test_a_folder_with_modules_for_other_pythons(tmp_path, build):
    for suffix in (".cpython-300-other.so", sysconfig.get_config_var("EXT_SUFFIX"), ".cpython-301-other.so"):
        (tmp_path / f"python/kestra_html/_native{suffix}").write_text(suffix)
    build()
    assert (tmp_path / "target/module").read_text() == sysconfig.get_config_var("EXT_SUFFIX")


def test_as_many_jobs_as_there_are_cores_or_as_is_asked_for(tmp_path, build, monkeypatch):
    (tmp_path / f"python/kestra_html/_native{sysconfig.get_config_var('EXT_SUFFIX')}").touch()
    monkeypatch.delenv("CMAKE_BUILD_PARALLEL_LEVEL", raising=False)
    assert build()[-1][-2:] == ["--parallel", str(os.cpu_count())]
    monkeypatch.setenv("CMAKE_BUILD_PARALLEL_LEVEL", "7")
    assert build()[-1][-2:] == ["--parallel", "7"]


@pytest.mark.parametrize("names", [[], ["_native.cpython-300-other.so"]], ids=["none", "another"])
def test_a_folder_without_the_module(tmp_path, build, names):
    for name in names:
        (tmp_path / "python/kestra_html" / name).touch()
    with pytest.raises(SystemExit, match="_native.* was not built"):
        build()


@pytest.mark.skipif("asan" in os.environ.get("LD_PRELOAD", ""), reason="nothing that the sanitizer would see")
def test_the_package_is_installed_and_removed(tmp_path):
    environment = {name: value for name, value in os.environ.items() if name != "PYTHONPATH"}

    def run(*command, stdin=None):
        finished = subprocess.run(command, cwd=tmp_path, env=environment, stdin=stdin, capture_output=True,
                                  encoding="utf-8")
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
    # Those of other elements than the example program looks at come after its own.
    expected = (ROOT / "tests/examples/harbour.decoded-links").read_text(encoding="utf-8").splitlines()
    program = "import kestra_html, sys; print(kestra_html.__version__, *kestra_html.links(sys.stdin.buffer), sep='\\n')"
    with open(ROOT / "tests/examples/harbour.html", "rb") as page:
        version, *links = run(python, "-X", "utf8", "-c", program, stdin=page).splitlines()
    assert version == "0.1.0" and expected and links[:len(expected)] == expected
    files = run(python, "-m", "pip", "show", "--files", "kestra-html")
    for name in ("__init__.py", "__init__.pyi", "compat.py", "py.typed", "_native"):
        assert f"kestra_html/{name}" in files, name
    run(python, "-m", "pip", "uninstall", "--yes", "kestra-html")
    assert subprocess.run([python, "-c", "import kestra_html"], cwd=tmp_path, env=environment,
                          capture_output=True).returncode == 1
