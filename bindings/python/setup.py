"""The wheel of the package: any Python 3, one platform. bindings/python/build_wheel puts the libraries into
it."""

import pathlib
import sys

from setuptools import Distribution, setup

try:
    from setuptools.command.bdist_wheel import bdist_wheel
except ImportError:  # before setuptools 70
    from wheel.bdist_wheel import bdist_wheel


class PlatformDistribution(Distribution):
    """It has shared libraries, though no extension modules."""

    def has_ext_modules(self):
        return True


class PlatformWheel(bdist_wheel):
    """Called through ctypes, the libraries fit every version of Python."""

    def get_tag(self):
        _, _, platform = super().get_tag()
        return "py3", "none", platform

    def run(self):
        if not any(pathlib.Path("tavell", "_lib").glob("*tavellkit*")):
            sys.exit("the package has no libraries here; make its wheel with bindings/python/build_wheel")
        super().run()


setup(distclass=PlatformDistribution, cmdclass={"bdist_wheel": PlatformWheel})
