// A clevis joint as an assembly: an eye plate (1) between the cheeks of a fork (2), a pin (3) through both, and a rod
// (4) behind the fork. Lengths in mm. Everything but the rod is drawn in the plane of the plates and swept through
// layers along z.

pinRadius = 8;      collarRadius = 12;   headRadius = 18;
eyeLength = 55;     forkLength = 30;     baseLength = 15;   rodRadius = 10;   rodLength = 30;
eyeHalf = 6;        forkHalf = 14;       pinHalf = 18;
quarter = 6;        // elements in a quarter of the pin's circumference
size = 3.5;

// The rod, of tetrahedra: it touches the fork's base, and their meshes do not match
x = forkLength + baseLength;
p = newp;
Point(p) = {x, 0, 0};
For i In {0 : 3}
  Point(p + 1 + i) = {x, rodRadius * Cos(i * Pi / 2), rodRadius * Sin(i * Pi / 2), 1.2 * size};
EndFor
c = newl;
For i In {0 : 3}
  Circle(c + i) = {p + 1 + i, p, p + 1 + (i + 1) % 4};
EndFor
l = newll;
Curve Loop(l) = {c : c + 3};
s = news;
Plane Surface(s) = {l};
rod[] = Extrude{rodLength, 0, 0}{ Surface{s}; };

// Each sweep is a volume of its own from here on, meshed alike where it touches the next one; the coinciding nodes
// are merged after meshing
Geometry.AutoCoherence = 0;

eye[] = {};
fork[] = {};
pin[] = {};

// A plate with a round head around the pin from z = bottom to top, straight to x = side * length
Macro Plate
  p = newp;
  Point(p) = {0, 0, bottom};
  For i In {0 : 3}
    a = Pi / 4 + i * Pi / 2;
    Point(p + 1 + i) = {pinRadius * Cos(a), pinRadius * Sin(a), bottom};
    Point(p + 5 + i) = {collarRadius * Cos(a), collarRadius * Sin(a), bottom};
  EndFor
  Point(p + 9) = {0, headRadius, bottom, size};
  Point(p + 10) = {-side * headRadius, 0, bottom, size};
  Point(p + 11) = {0, -headRadius, bottom, size};
  Point(p + 12) = {side * length, -headRadius, bottom, size};
  Point(p + 13) = {side * length, headRadius, bottom, size};
  c = newl;
  For i In {0 : 3}
    Circle(c + i) = {p + 1 + i, p, p + 1 + (i + 1) % 4};
    Circle(c + 4 + i) = {p + 5 + i, p, p + 5 + (i + 1) % 4};
    Line(c + 8 + i) = {p + 1 + i, p + 5 + i};
  EndFor
  Circle(c + 12) = {p + 9, p, p + 10};
  Circle(c + 13) = {p + 10, p, p + 11};
  Line(c + 14) = {p + 11, p + 12};
  Line(c + 15) = {p + 12, p + 13};
  Line(c + 16) = {p + 13, p + 9};
  Transfinite Curve{c : c + 7} = quarter + 1;
  Transfinite Curve{c + 8 : c + 11} = 3;
  Transfinite Curve{c + 15} = 2 * quarter + 1;
  l = newll;
  Curve Loop(l) = {c + 12 : c + 16};
  Curve Loop(l + 1) = {c + 4 : c + 7};
  s = news;
  Plane Surface(s) = {l, l + 1};
  For i In {0 : 3}
    Curve Loop(l + 2 + i) = {c + 8 + i, c + 4 + i, -(c + 8 + (i + 1) % 4), -(c + i)};
    Plane Surface(s + 1 + i) = {l + 2 + i};
    Transfinite Surface{s + 1 + i};
    Recombine Surface{s + 1 + i};
  EndFor
  plate[] = {};
  For i In {0 : 4}
    swept[] = Extrude{0, 0, top - bottom}{ Surface{s + i}; Layers{layers}; Recombine; };
    plate[] += swept[1];
  EndFor
Return

// A block behind the fork's cheeks
Macro Base
  p = newp;
  Point(p) = {forkLength, -headRadius, bottom};
  Point(p + 1) = {forkLength + baseLength, -headRadius, bottom};
  Point(p + 2) = {forkLength + baseLength, headRadius, bottom};
  Point(p + 3) = {forkLength, headRadius, bottom};
  c = newl;
  For i In {0 : 3}
    Line(c + i) = {p + i, p + (i + 1) % 4};
  EndFor
  Transfinite Curve{c, c + 2} = 5;
  Transfinite Curve{c + 1, c + 3} = 2 * quarter + 1;
  l = newll;
  Curve Loop(l) = {c : c + 3};
  s = news;
  Plane Surface(s) = {l};
  Transfinite Surface{s};
  Recombine Surface{s};
  swept[] = Extrude{0, 0, top - bottom}{ Surface{s}; Layers{layers}; Recombine; };
  fork[] += swept[1];
Return

// A length of the pin: a square core and four blocks around it
Macro Pin
  p = newp;
  Point(p) = {0, 0, bottom};
  For i In {0 : 3}
    a = Pi / 4 + i * Pi / 2;
    Point(p + 1 + i) = {pinRadius / 2 * Cos(a), pinRadius / 2 * Sin(a), bottom};
    Point(p + 5 + i) = {pinRadius * Cos(a), pinRadius * Sin(a), bottom};
  EndFor
  c = newl;
  For i In {0 : 3}
    Line(c + i) = {p + 1 + i, p + 1 + (i + 1) % 4};
    Circle(c + 4 + i) = {p + 5 + i, p, p + 5 + (i + 1) % 4};
    Line(c + 8 + i) = {p + 1 + i, p + 5 + i};
  EndFor
  Transfinite Curve{c : c + 7} = quarter + 1;
  Transfinite Curve{c + 8 : c + 11} = 3;
  l = newll;
  Curve Loop(l) = {c : c + 3};
  s = news;
  Plane Surface(s) = {l};
  For i In {0 : 3}
    Curve Loop(l + 1 + i) = {c + 8 + i, c + 4 + i, -(c + 8 + (i + 1) % 4), -(c + i)};
    Plane Surface(s + 1 + i) = {l + 1 + i};
  EndFor
  For i In {0 : 4}
    Transfinite Surface{s + i};
    Recombine Surface{s + i};
    swept[] = Extrude{0, 0, top - bottom}{ Surface{s + i}; Layers{layers}; Recombine; };
    pin[] += swept[1];
  EndFor
Return

levels[] = {-pinHalf, -forkHalf, -eyeHalf, eyeHalf, forkHalf, pinHalf};
layerCounts[] = {2, 3, 4, 3, 2};
For level In {0 : 4}
  bottom = levels[level];
  top = levels[level + 1];
  layers = layerCounts[level];
  Call Pin;
  If (level == 2)
    side = -1;
    length = eyeLength;
    Call Plate;
    eye[] += plate[];
    Call Base;
  ElseIf (level == 1 || level == 3)
    side = 1;
    length = forkLength;
    Call Plate;
    fork[] += plate[];
    Call Base;
  EndIf
EndFor

Physical Volume("eye", 1) = {eye[]};
Physical Volume("fork", 2) = {fork[]};
Physical Volume("pin", 3) = {pin[]};
Physical Volume("rod", 4) = {rod[1]};

Mesh.MshFileVersion = 2.2;
Mesh 3;
Coherence Mesh;
