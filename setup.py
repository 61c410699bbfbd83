"""Builds the module by CMake, which has the list of sources, the flags and the version."""
import importlib.util
import re
import shutil
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = Path(__file__).resolve().parent
VERSION = re.search(r"VERSION ([\d.]+) LANG", (ROOT / "CMakeLists.txt").read_text()).group(1)


class ByCMake(build_ext):
    def build_extension(self, ext):
        build = Path(self.build_temp).resolve()
        wanted = Path(self.get_ext_fullpath(ext.name)).resolve()
        options = ["-DCMAKE_BUILD_TYPE=Release", "-DDORVEK_PYTHON=ON",
                   f"-DPython_EXECUTABLE={sys.executable}"]
        if importlib.util.find_spec("pybind11"):  # else that of the system, as Debian has it
            import pybind11

            options.append(f"-Dpybind11_DIR={pybind11.get_cmake_dir()}")
        subprocess.run(["cmake", "-S", ROOT, "-B", build, *options], check=True)
        subprocess.run(["cmake", "--build", build, "--target", "dorvek_python", "-j"], check=True)
        wanted.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy2(build / "module/dorvek" / wanted.name, wanted)


setup(version=VERSION, ext_modules=[Extension("dorvek._core", [])],
      cmdclass={"build_ext": ByCMake})
