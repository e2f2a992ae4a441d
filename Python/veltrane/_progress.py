"""Who is told the progress of a computation."""

from __future__ import annotations

from collections.abc import Iterator
from contextlib import contextmanager
from typing import Any, Callable, Optional, Union

from ._errors import WrongTypeError

#: True shows a bar if tqdm is there. A callable gets percent and stage; if it returns False, CancelledError is raised.
Progress = Union[bool, None, Callable[[int, str], Any]]


@contextmanager
def told(progress: Progress) -> Iterator[Optional[Callable[[int, str], Any]]]:
    if callable(progress):
        yield progress
        return
    if progress is not None and not isinstance(progress, bool):
        raise WrongTypeError("progress= is True, False or a callable")
    bar = _bar() if progress else None
    if bar is None:
        yield None
        return

    def show(percent: int, stage: str) -> None:
        bar.set_description_str(stage, refresh=False)
        bar.update(percent - bar.n)

    with bar:
        yield show


def _bar() -> Any:
    try:
        from tqdm.auto import tqdm
    except ImportError:
        return None
    return tqdm(total=100, unit="%", bar_format="{desc}: {percentage:3.0f}%|{bar}| {elapsed}")
