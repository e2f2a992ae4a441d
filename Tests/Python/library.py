"""The exported functions of libVeltrane.so, called through ctypes as a host calls them."""

import ctypes
import os

import numpy as np

import meshes

_INT = ctypes.c_int
_INTS = ctypes.POINTER(ctypes.c_int)
_TYPE_CODES = {"tetra": 2, "hexahedron": 1}


class _Field(ctypes.Structure):
    _fields_ = [
        ("name", ctypes.c_char * 100),
        ("matlStateFlag", _INT),
        ("location", _INT),
        ("nbComponents", _INT),
        ("precision", _INT),
        ("valuesFloat", ctypes.POINTER(ctypes.c_float)),
        ("valuesDouble", ctypes.POINTER(ctypes.c_double)),
        ("defaultValueFloat", ctypes.c_float),
        ("defaultValueDouble", ctypes.c_float),
    ]


class _FieldsSet(ctypes.Structure):
    _fields_ = [("nbFields", _INT), ("fields", ctypes.POINTER(_Field))]


def _ints(array):
    return array.ctypes.data_as(_INTS)


class Model:
    """A mesh of one kind and one material in a host's arrays, which it keeps alive."""

    def __init__(self, points, cells, kind):
        self.points = np.ascontiguousarray(points, np.float32)
        self.cells = np.ascontiguousarray(cells, np.int32)
        self.rows = (_INTS * len(cells))(*(_ints(row) for row in self.cells))
        self.types = np.full(len(cells), _TYPE_CODES[kind], np.int32)
        self.materials = np.zeros(len(cells), np.int32)
        self.states = np.ones(1, np.int32)

    def arguments(self):
        return [
            _INT(len(self.cells)), _INT(len(self.points)), self.points.ctypes.data_as(ctypes.c_void_p), self.rows,
            _ints(self.types), _INT(1), _ints(self.materials), _ints(self.states),
        ]  # fmt: skip


def _field(values, location):
    record = _Field(b"values", 2, location, 1 if values.ndim == 1 else values.shape[1])
    if values.dtype == np.float32:
        record.precision = 1
        record.valuesFloat = values.ctypes.data_as(ctypes.POINTER(ctypes.c_float))
    else:
        record.precision = 2
        record.valuesDouble = values.ctypes.data_as(ctypes.POINTER(ctypes.c_double))
    return _FieldsSet(1, ctypes.pointer(record))


class Library:
    def __init__(self, path):
        self._library = ctypes.CDLL(os.fspath(path))

    def transfer(self, mode, default, source, values, target, count, location=1):
        """Code, message and values at the target's nodes (location 1) or Gauss points (2)."""
        result = np.full((count, *values.shape[1:]), default, values.dtype)
        message = ctypes.create_string_buffer(1000)
        code = _INT(99)
        flags = np.ones(1, np.int32)
        self._library.FE3DMeshToFE3DMesh_VariablesInterpolation(
            _INT(mode), ctypes.c_float(default), *source.arguments(), *target.arguments(), _ints(flags),
            _field(values, 1), _field(result, location), message, ctypes.byref(code), None,
        )  # fmt: skip
        return code.value, message.value.decode(), result

    def match_nodes(self, source, target):
        result = np.full(len(target.points), -7, np.int32)
        message = ctypes.create_string_buffer(1000)
        code = _INT(99)
        flags = np.ones(1, np.int32)
        self._library.FE3DMeshToFE3DMesh_NodeToNodeMapping(
            *source.arguments(), *target.arguments(), _ints(flags), _ints(result), message, ctypes.byref(code), None
        )
        return code.value, message.value.decode(), result


def cube(kind, n, scale=1.0, shift=0.0):
    points, cells = {"tetra": meshes.tetrahedra, "hexahedron": meshes.hexahedra}[kind](n)
    return points * scale + shift, cells
