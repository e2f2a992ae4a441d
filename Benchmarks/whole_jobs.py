#!/usr/bin/python3
"""Whole jobs, files to files: the command veltrane beside the same job written with VTK's Python modules.

Both are processes of their own, started one after the other in turns; files lie in a memory file system. Needs Debian's
python3-vtk9 for the interpreter that runs this, nothing else. Prints a table in Markdown.

    /usr/bin/python3 Benchmarks/whole_jobs.py --bin build/release --runs 5
    /usr/bin/python3 Benchmarks/whole_jobs.py --jobs zlib,small
"""

import argparse
import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from typing import NamedTuple

HERE = pathlib.Path(__file__).resolve().parent
VTK_JOB = HERE / "whole_job_vtk.py"
FILES = HERE / "whole_job_files.py"

# name: what it is, source, target, what writes them, aim for wall time, aim for peak memory
JOBS = {
    "zlib": ("1.3·10⁶ tetrahedra → 10⁶ nodes, zlib in and out", "tetrahedra", 1 / 5, 0.9),
    "none": ("the same, nothing compressed in or out", "tetrahedra", 1 / 3, None),
    "quadratic": ("10⁵ quadratic tetrahedra → 10⁶ nodes, zlib", "quadratic", 1 / 12, None),
    "series": ("20 steps, 2·10⁵ hexahedra → 3·10⁵ nodes, `.pvd`, zlib", "series", 1 / 6, None),
    "small": ("10⁴ nodes, against a C++ program over VTK", "small", 1.2, None),
}


class Files(NamedTuple):
    source: str
    target: str
    ending: str


def make_files(model, folder, is_plain, scale):
    """In a process of its own: what this one holds counts as the memory of those that it starts."""
    command = [sys.executable, str(FILES), model, str(folder), "plain" if is_plain else "zlib", str(scale)]
    lines = subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout.splitlines()
    return Files(*lines)


def run(command):
    """Wall time in s, processor time in s, peak memory in MiB of a process."""
    begin = time.monotonic()
    process = os.posix_spawn(command[0], command, os.environ)
    _, status, usage = os.wait4(process, 0)
    wall = time.monotonic() - begin
    if os.waitstatus_to_exitcode(status) != 0:
        sys.exit(f"whole_jobs.py: this has failed: {' '.join(command)}")
    return wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


def commands_of(job, files, binaries, folder):
    """The command line of veltrane and the one of the VTK job."""
    veltrane = [str(binaries / "Host/veltrane"), "transfer"]
    ours, theirs = folder / f"veltrane{files.ending}", folder / f"vtk{files.ending}"
    options = ["--outside", "default", "--quiet"] + (["--compression", "none"] if job == "none" else [])
    inputs = [files.source, files.target]
    vtk = [str(binaries / "Benchmarks/whole_job_vtk")] if job == "small" else [sys.executable, str(VTK_JOB)]
    return (veltrane + inputs + ["-o", str(ours)] + options,
            vtk + inputs + [str(theirs)] + (["none"] if job == "none" else []))


def ratio_text(ours, theirs, aim):
    return f"{ours / theirs:.2f}" + (f" | {aim:.2f}" if aim else " | ")


def measure(job, arguments, folder):
    title, model, aim, memory_aim = JOBS[job]
    files = make_files(model, folder, job == "none", arguments.scale)
    lines = commands_of(job, files, arguments.bin, folder)
    runs = ([], [])
    for _ in range(arguments.runs):
        for line, results in zip(lines, runs):
            results.append(run(line))
    (wall, cpu, memory), (vtk_wall, vtk_cpu, vtk_memory) = ([statistics.median(one) for one in zip(*results)]
                                                             for results in runs)
    print(f"| {title} | {wall:.3f} | {vtk_wall:.3f} | {ratio_text(wall, vtk_wall, aim)} | {cpu:.3f} | {vtk_cpu:.3f} "
          f"| {memory:.0f} | {vtk_memory:.0f} | {ratio_text(memory, vtk_memory, memory_aim)} |", flush=True)
    missed = wall > aim * vtk_wall or (memory_aim is not None and memory > memory_aim * vtk_memory)
    return not missed


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--bin", type=pathlib.Path, default=HERE.parent / "build/release", help="the build to measure")
    parser.add_argument("--jobs", default=",".join(JOBS), help="which of " + ", ".join(JOBS))
    parser.add_argument("--runs", type=int, default=5, help="medians are of so many")
    parser.add_argument("--scale", type=float, default=1, help="of the meshes along each axis; below 1 for a trial")
    parser.add_argument("--folder", type=pathlib.Path, help="keeps the inputs here for the next time")
    arguments = parser.parse_args()
    folder = arguments.folder or pathlib.Path(tempfile.mkdtemp(dir="/dev/shm"))
    folder.mkdir(exist_ok=True)
    print("| job | wall s | VTK s | ratio | aim | processor s | VTK s | peak MiB | VTK MiB | ratio | aim |")
    print("|---|--:|--:|--:|--:|--:|--:|--:|--:|--:|--:|")
    try:
        reached = [measure(job, arguments, folder) for job in arguments.jobs.split(",")]
    finally:
        if not arguments.folder:
            shutil.rmtree(folder)
    return 0 if all(reached) or arguments.scale < 1 else 1


if __name__ == "__main__":
    sys.exit(main())
