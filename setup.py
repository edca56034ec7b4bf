"""The Python package for pip: what CMake builds and installs, the library beside the module."""

import os
import re
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

SOURCE = os.path.dirname(os.path.abspath(__file__))


class BuildByCMake(build_ext):
    def build_extension(self, ext):
        build = os.path.abspath(self.build_temp)
        target = os.path.abspath(self.build_lib)
        jobs = str(len(os.sched_getaffinity(0)))
        for command in (
                ["cmake", "-S", SOURCE, "-B", build, "-DCMAKE_BUILD_TYPE=Release",
                 "-DKORVEX_TESTS=OFF", "-DKORVEX_BENCHMARKS=OFF", "-DKORVEX_PYTHON_WHEEL=ON",
                 f"-DPython3_EXECUTABLE={sys.executable}"],
                ["cmake", "--build", build, "-j", jobs, "--target", "korvex_python"],
                ["cmake", "--install", build, "--prefix", target, "--component", "python"]):
            subprocess.run(command, check=True)


with open(os.path.join(SOURCE, "CMakeLists.txt")) as file:
    version = re.search(r"project\(korvex VERSION (\S+)", file.read()).group(1)

os.makedirs(os.path.join(SOURCE, "build"), exist_ok=True)
setup(version=version, packages=[], ext_modules=[Extension("korvex._core", [])],
      cmdclass={"build_ext": BuildByCMake}, options={"egg_info": {"egg_base": "build"}})
