"""Writes a result of LS-DYNA as its manual describes the format: two cubes of two parts, with displacements and stresses
at two times. Usage: make_d3plot.py DIRECTORY"""
import pathlib
import struct
import sys

NODES = [(x, y, z) for x in (0, 1, 2) for y in (0, 1) for z in (0, 1)]


def node(x, y, z):
    return NODES.index((x, y, z)) + 1


def cube(x):
    return [node(x, 0, 0), node(x + 1, 0, 0), node(x + 1, 1, 0), node(x, 1, 0),
            node(x, 0, 1), node(x + 1, 0, 1), node(x + 1, 1, 1), node(x, 1, 1)]


parts = 2
header = [0] * 64
header[11] = 1           # d3plot
header[15] = 4           # three dimensions
header[16] = len(NODES)
header[17] = 6
header[18] = 6 + 7 * parts  # global values
header[20] = 1           # coordinates
header[23] = 2           # hexahedra
header[24] = parts
header[27] = 7           # values of each: stresses and plastic strain
header[39] = 16 + len(NODES) + 2 + 3 * parts  # words about numbers
data = bytearray(struct.pack("<64i", *header))
data[0:40] = b"two cubes".ljust(40)
data[56:60] = struct.pack("<f", 971.0)  # release of the program
data += struct.pack("<%df" % (3 * len(NODES)), *(c for place in NODES for c in place))
for part in range(parts):
    data += struct.pack("<9i", *cube(part), part + 1)
data += struct.pack("<16i", -1, 0, 0, 0, 0, len(NODES), 2, 0, 0, 0, 0, 0, 0, 0, 0, parts)
data += struct.pack("<%di" % len(NODES), *range(1, len(NODES) + 1))
data += struct.pack("<2i", 1, 2)
data += struct.pack("<%di" % (3 * parts), *([1, 2] * 3))
states = []
for step, time in enumerate((0.5, 2.0)):
    states.append(struct.pack("<f", time))
    states[-1] += struct.pack("<%df" % header[18], *([0.0] * header[18]))
    states[-1] += struct.pack("<%df" % (3 * len(NODES)), *(c + 0.125 * (step + 1) for place in NODES for c in place))
    for cell in range(2):
        states[-1] += struct.pack("<7f", *(10.0 * cell + component for component in range(7)))
states[-1] += struct.pack("<f", -999999.0)  # the end
directory = pathlib.Path(sys.argv[1]) / "dyna"
directory.mkdir(exist_ok=True)
(directory / "d3plot").write_bytes(data)
for number, state in enumerate(states, 1):
    (directory / f"d3plot{number:02}").write_bytes(state)
