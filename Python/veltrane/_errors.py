"""The exceptions of the package. Each carries one clear sentence."""

from __future__ import annotations

from collections.abc import Iterator
from contextlib import contextmanager
from typing import Callable


class Error(Exception):
    """What every exception of the package is; itself, of files that cannot be read or written."""


class WrongTypeError(Error, TypeError):
    """An argument is not of a kind that can be used."""


class InvalidDataError(Error, ValueError):
    """A mesh, points or values contradict themselves, or cannot be worked on."""


class InvalidOptionError(Error, ValueError):
    """A setting is outside its range, or does not go with the computation."""


class TransferError(Error, RuntimeError):
    """The computation has ended without a result."""


class OutsideError(TransferError):
    """Target locations lie outside the source, and ``outside="error"`` says that this is an error."""


class SingularElementError(TransferError):
    """The Jacobian of a source element becomes singular on the way to a target location.

    ``element`` is its number, from 0.
    """

    def __init__(self, sentence: str, element: int = -1) -> None:
        super().__init__(sentence, element)
        self.element = element

    def __str__(self) -> str:
        return str(self.args[0])


class CancelledError(Error):
    """The progress callback has returned False."""


@contextmanager
def advising(kind: type[Error], reworded: Callable[[str], str]) -> Iterator[None]:
    """Gives exceptions of just this kind the sentence that is made of their own: what to do, in the package's terms."""
    try:
        yield
    except Error as error:
        if type(error) is not kind:
            raise
        raise kind(reworded(str(error))) from None


for _error in list(globals().values()):
    if isinstance(_error, type) and issubclass(_error, Error):
        _error.__module__ = "veltrane"
