"""A wheel that carries the library is made for one platform, yet for every Python 3."""
from pathlib import Path

from setuptools import Distribution, setup
from wheel.bdist_wheel import bdist_wheel


class LibraryDistribution(Distribution):
    def has_ext_modules(self):
        return (Path(__file__).parent / "j4tavla/lib").exists()


class LibraryWheel(bdist_wheel):
    def get_tag(self):
        python, abi, platform = super().get_tag()
        return ("py3", "none", platform) if self.distribution.has_ext_modules() else (python, abi, platform)


setup(distclass=LibraryDistribution, cmdclass={"bdist_wheel": LibraryWheel})
