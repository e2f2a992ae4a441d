/* Writes two files with the CGNS library: all_kinds.cgns, a zone for each kind of cell, side by side, with a field at
 * the vertices and one in the cells; and steps.cgns, one cell with a field at two steps. cc make_cgns.c -lcgns &&
 * ./a.out */
#include <cgnslib.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum
{
    maxNodes = 20
};

struct Kind
{
    const char* name;
    ElementType_t type;
    int corners;
    int edges; /* pairs of corners, whose middles are the other nodes */
    int edge[12][2];
    double corner[8][3];
};

#define CUBE                                                                                                           \
    {                                                                                                                  \
        {0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1},                                   \
        {                                                                                                              \
            0, 1, 1                                                                                                    \
        }                                                                                                              \
    }
#define TETRAHEDRON                                                                                                    \
    {                                                                                                                  \
        {0, 0, 0}, {1, 0, 0}, {0, 1, 0},                                                                               \
        {                                                                                                              \
            0, 0, 1                                                                                                    \
        }                                                                                                              \
    }
#define WEDGE                                                                                                          \
    {                                                                                                                  \
        {0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1},                                                         \
        {                                                                                                              \
            0, 1, 1                                                                                                    \
        }                                                                                                              \
    }
#define PYRAMID                                                                                                        \
    {                                                                                                                  \
        {0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},                                                                    \
        {                                                                                                              \
            0.5, 0.5, 1                                                                                                \
        }                                                                                                              \
    }

/* The middles of edges in the order that the standard tells. */
static const struct Kind kinds[] = {
    {"tetrahedron", TETRA_4, 4, 0, {{0}}, TETRAHEDRON},
    {"hexahedron", HEXA_8, 8, 0, {{0}}, CUBE},
    {"wedge", PENTA_6, 6, 0, {{0}}, WEDGE},
    {"pyramid", PYRA_5, 5, 0, {{0}}, PYRAMID},
    {"curved tetrahedron", TETRA_10, 4, 6, {{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}}, TETRAHEDRON},
    {"curved hexahedron",
     HEXA_20,
     8,
     12,
     {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {0, 4}, {1, 5}, {2, 6}, {3, 7}, {4, 5}, {5, 6}, {6, 7}, {7, 4}},
     CUBE},
    {"curved wedge", PENTA_15, 6, 9, {{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 4}, {2, 5}, {3, 4}, {4, 5}, {5, 3}}, WEDGE},
    {"curved pyramid", PYRA_13, 5, 8, {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {0, 4}, {1, 4}, {2, 4}, {3, 4}}, PYRAMID},
};

static void check(int failure)
{
    if (failure)
    {
        cg_error_exit();
    }
}

/* The values, and twice the values. */
static void writeSteps(int file, int base, int zone, int nodes, double* values)
{
    static const char names[2][33] = {"step1", "step2"};
    char pointers[65];
    memset(pointers, ' ', sizeof pointers);
    for (int step = 0; step < 2; ++step)
    {
        int solution = 0;
        int index = 0;
        for (int node = 0; step == 1 && node < nodes; ++node)
        {
            values[node] *= 2;
        }
        check(cg_sol_write(file, base, zone, names[step], Vertex, &solution));
        check(cg_field_write(file, base, zone, solution, RealDouble, "T", values, &index));
        memcpy(pointers + 32 * step, names[step], strlen(names[step]));
    }
    const cgsize_t size[2] = {32, 2};
    check(cg_ziter_write(file, base, zone, "zone steps"));
    check(cg_goto(file, base, "Zone_t", zone, "ZoneIterativeData_t", 1, "end"));
    check(cg_array_write("FlowSolutionPointers", Character, 2, size, pointers));
}

static void writeZone(int file, int base, int place, const struct Kind* kind, int isInSteps)
{
    const int nodes = kind->corners + kind->edges;
    double place3[3][maxNodes];
    double values[maxNodes];
    cgsize_t connectivity[maxNodes];
    for (int node = 0; node < nodes; ++node)
    {
        for (int axis = 0; axis < 3; ++axis)
        {
            const int* edge = kind->edge[node < kind->corners ? 0 : node - kind->corners];
            place3[axis][node] = node < kind->corners
                                     ? kind->corner[node][axis]
                                     : 0.5 * (kind->corner[edge[0]][axis] + kind->corner[edge[1]][axis]);
        }
        place3[0][node] += 2 * place;
        const double x = place3[0][node];
        const double y = place3[1][node];
        const double z = place3[2][node];
        values[node] = 1 + 2 * x - 3 * y + 5 * z + x * x - 2 * y * y + z * x;
        connectivity[node] = node + 1;
    }
    const cgsize_t size[3] = {nodes, 1, 0};
    int zone = 0;
    int section = 0;
    int solution = 0;
    int index = 0;
    check(cg_zone_write(file, base, kind->name, size, Unstructured, &zone));
    check(cg_coord_write(file, base, zone, RealDouble, "CoordinateX", place3[0], &index));
    check(cg_coord_write(file, base, zone, RealDouble, "CoordinateY", place3[1], &index));
    check(cg_coord_write(file, base, zone, RealDouble, "CoordinateZ", place3[2], &index));
    check(cg_section_write(file, base, zone, "cells", kind->type, 1, 1, 0, connectivity, &section));
    if (isInSteps)
    {
        writeSteps(file, base, zone, nodes, values);
        return;
    }
    check(cg_sol_write(file, base, zone, "at vertices", Vertex, &solution));
    check(cg_field_write(file, base, zone, solution, RealDouble, "T", values, &index));
    const double number = 10.0 * place;
    check(cg_sol_write(file, base, zone, "in cells", CellCenter, &solution));
    check(cg_field_write(file, base, zone, solution, RealDouble, "damage", &number, &index));
}

static void writeAll(const char* path)
{
    int file = 0;
    int base = 0;
    check(cg_open(path, CG_MODE_WRITE, &file));
    check(cg_base_write(file, "base", 3, 3, &base));
    for (size_t i = 0; i < sizeof kinds / sizeof kinds[0]; ++i)
    {
        writeZone(file, base, (int)i, &kinds[i], 0);
    }
    check(cg_close(file));
}

static void writeInSteps(const char* path)
{
    const double times[2] = {0.5, 2.0};
    const cgsize_t count = 2;
    int file = 0;
    int base = 0;
    check(cg_open(path, CG_MODE_WRITE, &file));
    check(cg_base_write(file, "base", 3, 3, &base));
    check(cg_biter_write(file, base, "steps", 2));
    check(cg_goto(file, base, "BaseIterativeData_t", 1, "end"));
    check(cg_array_write("TimeValues", RealDouble, 1, &count, times));
    writeZone(file, base, 0, &kinds[4], 1);
    check(cg_close(file));
}

int main(void)
{
    writeAll("all_kinds.cgns");
    writeInSteps("steps.cgns");
    return EXIT_SUCCESS;
}
