import os
import subprocess
import sys
import textwrap
import threading
import time

import pytest

import meshes
import veltrane


def test_a_callable_is_told_percent_and_stage(cube):
    told = []
    veltrane.Map(cube, meshes.inner_points(50), progress=lambda percent, stage: told.append((percent, stage)))
    assert told[0] == (0, "Pretreatment") and told[-1][0] == 100
    assert [percent for percent, _ in told] == sorted(percent for percent, _ in told)


def test_false_cancels(cube):
    with pytest.raises(veltrane.CancelledError):
        veltrane.Map(cube, meshes.inner_points(50), progress=lambda percent, stage: False)


def test_what_the_callable_raises_comes_out(cube):
    def fail(percent, stage):
        raise LookupError(stage)

    for threads in (1, 2):
        with pytest.raises(LookupError, match="Pretreatment"):
            veltrane.Map(cube, meshes.inner_points(50), progress=fail, threads=threads)


def test_the_callable_may_compute_itself(cube):
    inner = []

    def compute(percent, stage):
        inner.append(veltrane.Map(cube, [[0.5, 0.5, 0.5]], threads=1))

    veltrane.Map(cube, meshes.inner_points(50), progress=compute)
    assert all(one.inside.all() for one in inner)


def test_a_bar_is_shown(cube, capsys):
    pytest.importorskip("tqdm")
    veltrane.Map(cube, meshes.inner_points(50), progress=True)
    assert "100%" in capsys.readouterr().err


def test_without_tqdm_nothing_is_shown(cube, capsys, monkeypatch):
    monkeypatch.setitem(sys.modules, "tqdm.auto", None)
    veltrane.Map(cube, meshes.inner_points(50), progress=True)
    assert capsys.readouterr().err == ""


def test_anything_else_is_refused(cube):
    with pytest.raises(veltrane.WrongTypeError):
        veltrane.Map(cube, meshes.inner_points(50), progress="yes")


def test_other_threads_go_on_meanwhile():
    mesh, points = veltrane.Mesh(*meshes.tetrahedra(12), "tetra"), meshes.inner_points(400000)
    ticks, done = [], threading.Event()

    def tick():
        while not done.wait(0.001):
            ticks.append(time.perf_counter())

    ticking = threading.Thread(target=tick)
    ticking.start()
    begin = time.perf_counter()
    veltrane.Map(mesh, points, threads=1)
    end = time.perf_counter()
    done.set()
    ticking.join()
    assert sum(begin < tick < end for tick in ticks) > 3


@pytest.mark.parametrize("threads", [1, 2])
def test_ctrl_c_ends_the_search(threads):
    # The signal comes after a quarter of the processor time that the search takes, while nothing runs in Python. As
    # clocks are coarse, it is tried some times.
    script = f"""
        import signal, sys, time
        sys.path.insert(0, {os.path.dirname(__file__)!r})
        import meshes, veltrane

        mesh, points = veltrane.Mesh(*meshes.tetrahedra(12), "tetra"), meshes.inner_points(400000)

        interruptions = []

        def processor_time():
            begin = time.process_time()
            try:
                veltrane.Map(mesh, points, threads={threads})
            except KeyboardInterrupt:
                interruptions.append(True)
            return time.process_time() - begin

        def is_cut_short():
            signal.setitimer(signal.ITIMER_PROF, whole / 4)
            return processor_time() < 0.75 * whole

        whole = min(processor_time() for _ in range(3))
        signal.signal(signal.SIGPROF, signal.default_int_handler)  # as Ctrl-C does
        print(any(is_cut_short() for _ in range(10)))
        print(len(interruptions) > 0)
        print(veltrane.Map(mesh, [[0.5, 0.5, 0.5]]).inside.all())
    """
    done = subprocess.run(
        [sys.executable, "-c", textwrap.dedent(script)], capture_output=True, text=True, timeout=300, check=False
    )
    assert done.stdout.split() == ["True", "True", "True"], done.stderr
    assert done.returncode == 0
