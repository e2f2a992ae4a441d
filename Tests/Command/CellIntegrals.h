/// What the order of a cell's nodes decides: its volume, and values between them.
#ifndef VELTRANE_TESTS_CELL_INTEGRALS_H
#define VELTRANE_TESTS_CELL_INTEGRALS_H

class vtkUnstructuredGrid;

/// Of a volume cell with plane sides, cut into tetrahedra in a way that needs its corners in order.
double volumeOf(vtkUnstructuredGrid& grid, long long cell);

/// How far nodes within the edges of a volume cell are from the middles between their corners at most.
double middleErrorOf(vtkUnstructuredGrid& grid, long long cell);

/// How far the shape functions of a volume cell are from a quadratic field at most, if the cell's nodes have its
/// values.
double quadraticErrorOf(vtkUnstructuredGrid& grid, long long cell);

#endif
