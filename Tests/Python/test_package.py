"""What the installed package has and is."""

import importlib.metadata
import importlib.resources
import inspect
import subprocess
import sys

import pytest

import veltrane


def test_version_is_that_of_the_distribution():
    assert importlib.metadata.version("veltrane") == veltrane.__version__


def test_needs_numpy_only():
    required = importlib.metadata.requires("veltrane")
    assert [one for one in required if "extra ==" not in one] == ["numpy>=1.22"]


@pytest.mark.parametrize("name", ["py.typed", "_core.pyi"])
def test_types_come_along(name):
    assert importlib.resources.files("veltrane").joinpath(name).is_file()


def test_everything_that_is_public_is_documented():
    for name in veltrane.__all__:
        one = getattr(veltrane, name)
        assert inspect.getdoc(one), name
        if inspect.isclass(one):
            for member, value in vars(one).items():
                if not member.startswith("_") and (callable(value) or isinstance(value, property)):
                    assert inspect.getdoc(value), f"{name}.{member}"


def test_importing_brings_no_other_package_than_numpy():
    script = (
        "import sys, numpy; before = set(sys.modules); import veltrane; "
        "print([m for m in set(sys.modules) - before if m.split('.')[0] in "
        "('scipy', 'pyvista', 'vtkmodules', 'meshio', 'tqdm', 'matplotlib')])"
    )
    assert subprocess.run([sys.executable, "-c", script], capture_output=True, text=True, check=True).stdout == "[]\n"


def test_the_example_of_the_package_runs():
    import doctest

    assert doctest.testmod(veltrane).failed == 0
