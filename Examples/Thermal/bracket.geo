// An angle bracket, 40 x 10 x 40 with walls 10 thick, for the heat and for the stress. Lengths are in mm.
// swept = 1: hexahedra, the finer the larger fine is; swept = 0: tetrahedra of the given size.
DefineConstant[ swept = 0, size = 6, fine = 1 ];
thick = 10; long = 30; deep = 10;
cells = 2 * fine; along = 4 * fine; across = fine;

Point(1) = {0, 0, 0, size};                 Point(2) = {thick, 0, 0, size};
Point(3) = {thick, 0, thick, size};         Point(4) = {0, 0, thick, size};
Point(5) = {thick + long, 0, 0, size};      Point(6) = {thick + long, 0, thick, size};
Point(7) = {0, 0, thick + long, size};      Point(8) = {thick, 0, thick + long, size};
Line(1) = {1, 2}; Line(2) = {2, 3}; Line(3) = {3, 4}; Line(4) = {4, 1};
Line(5) = {2, 5}; Line(6) = {5, 6}; Line(7) = {6, 3};
Line(8) = {3, 8}; Line(9) = {8, 7}; Line(10) = {7, 4};
Curve Loop(1) = {1, 2, 3, 4}; Plane Surface(1) = {1};
Curve Loop(2) = {5, 6, 7, -2}; Plane Surface(2) = {2};
Curve Loop(3) = {-3, 8, 9, 10}; Plane Surface(3) = {3};

If (swept)
    Transfinite Curve {1, 2, 3, 4, 6, 9} = cells + 1;
    Transfinite Curve {5, 7, 8, 10} = along + 1;
    Transfinite Surface {1, 2, 3};
    Recombine Surface {1, 2, 3};
    corner[] = Extrude {0, deep, 0} { Surface{1}; Layers{across}; Recombine; };
    foot[] = Extrude {0, deep, 0} { Surface{2}; Layers{across}; Recombine; };
    wall[] = Extrude {0, deep, 0} { Surface{3}; Layers{across}; Recombine; };
Else
    corner[] = Extrude {0, deep, 0} { Surface{1}; };
    foot[] = Extrude {0, deep, 0} { Surface{2}; };
    wall[] = Extrude {0, deep, 0} { Surface{3}; };
EndIf

Physical Volume("STEEL", 1) = {corner[1], foot[1]};
Physical Volume("COPPER", 2) = {wall[1]};
Mesh.SecondOrderIncomplete = 1;
Mesh.SaveGroupsOfNodes = 0;
