#!/usr/bin/env python3
"""What the Python package costs: beside PyVista's sample, beside the C++ interface, and to import.

    build/python/venv/bin/python Benchmarks/python_benchmark.py [--points 1000000] [--cells 1000000] [--runs 3]

Times are processor seconds of one thread, the shortest of some runs that take turns. The target interface_times of a
build with -DVELTRANE_BUILD_BENCHMARKS=ON is the C++ side; without it its rows are left out.
"""

import argparse
import pathlib
import subprocess
import sys
import tempfile
import time

import numpy as np
import pyvista
import veltrane

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "Tests" / "Python"))

import meshes  # noqa: E402


def shortest(runs, *works):
    """Per work the shortest processor time of some runs, in which they take turns, and its last result."""
    times, results = [float("inf")] * len(works), [None] * len(works)
    for _ in range(runs):
        for i, work in enumerate(works):
            begin = time.process_time()
            results[i] = work()
            times[i] = min(times[i], time.process_time() - begin)
    return times, results


def row(what, ours, theirs, most):
    print(f"| {what} | {ours:.4f} | {theirs:.4f} | {ours / theirs:.3f} | {most} |")


def distorted(cells_wanted):
    """The unit cube in about so many tetrahedra, inner points moved by up to 0.15 of a cell."""
    n = max(1, round((cells_wanted / 6) ** (1 / 3)))
    points, cells = meshes.tetrahedra(n)
    inner = np.all((points > 0.5 / n) & (points < 1 - 0.5 / n), axis=1)
    points[inner] += np.random.default_rng(1).uniform(-0.15 / n, 0.15 / n, (inner.sum(), 3))
    return points.astype(np.float32), cells


def beside_pyvista(points, cells, targets, runs):
    source = pyvista.UnstructuredGrid({pyvista.CellType.TETRA: cells}, points)
    source.point_data["T"] = meshes.linear(points)
    cloud = pyvista.PolyData(targets)
    times, (ours, theirs) = shortest(
        runs,
        lambda: veltrane.sample(source, cloud, outside="default", threads=1),
        lambda: cloud.sample(source),
    )
    both = (ours["vtkValidPointMask"] == 1) & (theirs["vtkValidPointMask"] == 1)
    assert np.mean(both) > 0.999 and np.allclose(ours["T"][both], theirs["T"][both], atol=1e-4)
    row("`sample` / PyVista's `sample`", *times, "0.25")


def beside_the_interface(program, points, cells, targets, runs):
    values = meshes.linear(points.astype(float))
    flat_cells = cells.astype(np.int32)

    def make():
        return veltrane.Map(veltrane.Mesh(points, cells, "tetra"), targets, outside="default", threads=1)

    mesh = veltrane.Mesh(points, cells, "tetra")
    the_map = make()
    with tempfile.TemporaryDirectory() as folder:
        for name, array in (
            ("points.f32", points), ("tetrahedra.i32", flat_cells), ("targets.f32", targets), ("values.f64", values)
        ):  # fmt: skip
            array.tofile(pathlib.Path(folder, name))
        best = [float("inf")] * 6
        for _ in range(runs):
            for_map = shortest(1, make)[0][0]
            for_map_alone = shortest(1, lambda: veltrane.Map(mesh, targets, outside="default", threads=1))[0][0]
            (for_values,), (result,) = shortest(5, lambda: the_map.apply(values, threads=1))
            done = subprocess.run([program, folder, "1"], capture_output=True, text=True, check=True)
            theirs = [float(number) for number in done.stdout.split()]
            best = [min(pair) for pair in zip(best, [for_map, for_map_alone, for_values, *theirs])]
        assert np.fromfile(pathlib.Path(folder, "results.f64")).tobytes() == result.tobytes()
    row("`Mesh` and `Map` / C++ interface", best[0], best[3], "1.05")
    row("`Map` / C++ interface", best[1], best[4], "1.05")
    row("`apply` / C++ interface", best[2], best[5], "1.05")


def importing(runs):
    def time_of(module):
        script = f"import numpy, time; t = time.process_time(); import {module}; print(time.process_time() - t)"
        return float(subprocess.run([sys.executable, "-c", script], capture_output=True, text=True, check=True).stdout)

    pairs = [(time_of("veltrane"), time_of("scipy.sparse")) for _ in range(3 * runs)]
    row("`import veltrane` / `import scipy.sparse`", *(min(times) for times in zip(*pairs)), "0.5")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--points", type=int, default=1_000_000)
    parser.add_argument("--cells", type=int, default=1_000_000)
    parser.add_argument("--runs", type=int, default=3)
    parser.add_argument("--interface-times", default=ROOT / "build/release/Benchmarks/interface_times")
    arguments = parser.parse_args()

    from vtkmodules.vtkCommonCore import vtkSMPTools

    vtkSMPTools.Initialize(1)
    points, cells = distorted(arguments.cells)
    targets = meshes.inner_points(arguments.points).astype(np.float32)
    print(f"{len(cells)} tetrahedra, {len(targets)} points, {arguments.runs} runs\n")
    print("| what | seconds | beside | ratio | at most |\n|---|---|---|---|---|")
    importing(arguments.runs)
    beside_pyvista(points, cells, targets, arguments.runs)
    if pathlib.Path(arguments.interface_times).exists():
        beside_the_interface(arguments.interface_times, points, cells, targets, arguments.runs)


if __name__ == "__main__":
    main()
