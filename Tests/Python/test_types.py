"""What a type checker says of the package, and of a program that uses it."""

import subprocess
import sys

import pytest

pytest.importorskip("mypy")

PROGRAM = """
import numpy as np
import veltrane

mesh = veltrane.Mesh(np.zeros((4, 3)), [[0, 1, 2, 3]], "tetra")
the_map = veltrane.Map(mesh, np.zeros((1, 3)), outside="nan", threads=1)
reveal_type(the_map.apply(np.zeros(4)))
reveal_type(the_map.element)
reveal_type(veltrane.cell_kinds()[0].n_points)
reveal_type(mesh.n_cells)
"""


@pytest.fixture
def check(request, tmp_path):
    """Calls mypy, which remembers between runs what it knows of other packages."""
    root = request.config.rootpath

    def run(*arguments):
        command = [sys.executable, "-m", "mypy", "--cache-dir", root / "build/python/mypy", *arguments]
        done = subprocess.run(command, cwd=tmp_path, capture_output=True, text=True, timeout=600, check=False)
        return done.returncode, done.stdout + done.stderr

    return run


def test_the_package_agrees_with_its_types_and_the_stub(request, check):
    status, said = check("--config-file", request.config.rootpath / "pyproject.toml", "-p", "veltrane")
    assert status == 0, said


def test_a_program_that_uses_the_package_is_checked(check, tmp_path):
    (tmp_path / "program.py").write_text(PROGRAM)
    status, said = check("--strict", "program.py")
    assert status == 0, said
    revealed = [line.split('"')[1].replace("builtins.", "") for line in said.splitlines() if "Revealed type" in line]
    assert revealed[2:] == ["int", "int"] and all("numpy.ndarray" in one for one in revealed[:2])
    (tmp_path / "wrong.py").write_text("import veltrane\nveltrane.Map(1, 2, threads='two')\n")
    status, said = check("--strict", "wrong.py")
    assert status == 1 and 'Argument "threads" to "Map" has incompatible type' in said
