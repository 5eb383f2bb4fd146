"""Builds the module by CMake; everything else is in pyproject.toml.

KESTRA_BUILD_FOLDER names a folder of CMake that is configured with -DKESTRA_BUILD_PYTHON=ON: the
module is then built there, with its options.
"""

import os
import pathlib
import subprocess
import sys
import sysconfig

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = pathlib.Path(__file__).resolve().parent


class BuildByCMake(build_ext):
    def build_extension(self, extension):
        target = pathlib.Path(self.get_ext_fullpath(extension.name)).resolve()
        build = pathlib.Path(os.environ.get("KESTRA_BUILD_FOLDER") or self.configure()).resolve()
        # Without a number make starts as many compilers as there are sources.
        jobs = self.parallel or os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL") or os.cpu_count()
        subprocess.run(["cmake", "--build", build, "--target", "kestra-html-python", "--parallel", str(jobs)],
                       check=True)
        target.parent.mkdir(parents=True, exist_ok=True)
        # A folder that exists may have modules for other Pythons.
        module = build / "python" / "kestra_html" / ("_native" + sysconfig.get_config_var("EXT_SUFFIX"))
        if not module.is_file():
            sys.exit(f"{module} was not built: is {build} configured with -DPython_EXECUTABLE={sys.executable}?")
        self.copy_file(str(module), str(target))

    def configure(self):
        build = (pathlib.Path(self.build_temp) / "cmake").resolve()
        options = ["-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_INTERPROCEDURAL_OPTIMIZATION=ON", "-DKESTRA_BUILD_PYTHON=ON",
                   f"-DPython_EXECUTABLE={sys.executable}"]
        for part in ("TOOLS", "TESTS", "EXAMPLES"):
            options.append(f"-DKESTRA_BUILD_{part}=OFF")
        subprocess.run(["cmake", "-S", ROOT, "-B", build, *options], check=True)
        return build


setup(ext_modules=[Extension("kestra_html._native", [])], cmdclass={"build_ext": BuildByCMake})
