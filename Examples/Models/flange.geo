// A welding-neck flange on a pipe: flange, weld and pipe as three volumes with shared interfaces. Lengths in mm.
//
// The part is a meridian section turned about the z axis in four quadrants, and a plate ring with one bolt hole per
// quadrant around it. The same geometry is meshed in two ways:
//   swept = 0   tetrahedra of about `size` (plate), `wall` (hub, weld, pipe) and `detail` (fillet, holes)
//   swept = 1   the section and the plate ring carry quadrilaterals and triangles that the sweep turns into
//               hexahedra and wedges; `division` is the number of elements through the pipe's wall
DefineConstant[ swept = 0, size = 9, wall = 6, detail = 4, division = 2 ];

// Sweeps create their own copies of what they share; Coherence merges them once, at the end
Geometry.AutoCoherence = 0;

boreRadius = 24;        pipeRadius = 30;       hubRadius = 34;         plateRadius = 70;
plateThickness = 16;    filletRadius = 6;      capHeight = 1.2;        pipeEnd = 120;
boltCircleRadius = 54;  holeRadius = 7;        collarRadius = 11;
weldStart = 38;         weldEnd = 48;          // on the outside; the V-shaped weld narrows towards the bore
rootStart = 41;         rootEnd = 45;          // on the bore

ringRadius = hubRadius + filletRadius;         // where the fillet runs out on the plate
filletTop = plateThickness + filletRadius;
capHalf = (weldEnd - weldStart) / 2;
capCurvature = (capHalf * capHalf + capHeight * capHeight) / (2 * capHeight);

// The meridian section in the plane y = 0
Point(1) = {boreRadius, 0, 0, size};
Point(2) = {ringRadius, 0, 0, size};
Point(3) = {ringRadius, 0, plateThickness, detail};
Point(4) = {ringRadius - filletRadius * Sqrt(0.5), 0, filletTop - filletRadius * Sqrt(0.5), detail};
Point(5) = {hubRadius, 0, filletTop, detail};
Point(6) = {pipeRadius, 0, weldStart, wall};
Point(7) = {pipeRadius, 0, weldEnd, wall};
Point(8) = {pipeRadius, 0, pipeEnd, wall};
Point(9) = {boreRadius, 0, pipeEnd, wall};
Point(10) = {boreRadius, 0, rootEnd, wall};
Point(11) = {boreRadius, 0, rootStart, wall};
Point(12) = {boreRadius, 0, filletTop, wall};
Point(13) = {boreRadius, 0, plateThickness - 2, size};
Point(14) = {ringRadius, 0, filletTop};
Point(15) = {pipeRadius + capHeight - capCurvature, 0, (weldStart + weldEnd) / 2};

Line(1) = {1, 2};
Line(2) = {2, 3};
Circle(3) = {3, 14, 4};
Circle(4) = {4, 14, 5};
Line(5) = {5, 6};
Circle(6) = {6, 15, 7};
Line(7) = {7, 8};
Line(8) = {8, 9};
Line(9) = {9, 10};
Line(10) = {10, 11};
Line(16) = {11, 6};
Line(17) = {10, 7};
If (swept)
  Line(11) = {11, 12};
  Line(12) = {12, 13};
  Line(13) = {13, 1};
  Line(14) = {13, 4};
  Line(15) = {12, 5};
  Curve Loop(1) = {1, 2, 3, -14, 13};
  Curve Loop(2) = {14, 4, -15, 12};
  Curve Loop(3) = {15, 5, -16, 11};
Else
  Line(11) = {11, 1};
  Curve Loop(1) = {1, 2, 3, 4, 5, -16, 11};
EndIf
Curve Loop(4) = {16, 6, -17, 10};
Curve Loop(5) = {17, 7, 8, 9};

Plane Surface(1) = {1};
Plane Surface(4) = {4};
Plane Surface(5) = {5};
flangeSections[] = {1};
sideCounts[] = {7};         // boundary curves of each section, in the order of `sections`
If (swept)
  Plane Surface(2) = {2};
  Plane Surface(3) = {3};
  flangeSections[] = {1, 2, 3};
  sideCounts[] = {5, 4, 4};

  alongFillet = Ceil(0.75 * division);
  plateLayers = 2 * division;
  Transfinite Curve{14, 15, 16, 17, 8} = division + 1;
  Transfinite Curve{1} = division + alongFillet + 1;
  Transfinite Curve{2, 13} = plateLayers + 1;
  Transfinite Curve{3, 4, 12} = alongFillet + 1;
  Transfinite Curve{5, 11} = 2 * division + 1;
  Transfinite Curve{6, 10} = Ceil(1.5 * division) + 1;
  Transfinite Curve{7} = 6 * division + 1 Using Progression 1.08;
  Transfinite Curve{9} = 6 * division + 1 Using Progression 1 / 1.08;
  Transfinite Surface{1} = {1, 2, 3, 13};
  Transfinite Surface{2} = {13, 4, 5, 12};
  Transfinite Surface{3} = {12, 5, 6, 11};
  Transfinite Surface{4} = {11, 6, 7, 10};
  Transfinite Surface{5} = {10, 7, 8, 9};
  Recombine Surface{1, 2, 3, 4, 5};
EndIf
sections[] = {flangeSections[], 4, 5};
sideCounts[] += {4, 4};
perQuadrant = 4 * division + 2;

flange[] = {};
weld[] = {};
pipe[] = {};
For quadrant In {0 : 3}
  If (swept)
    copies[] = Extrude{{0, 0, 1}, {0, 0, 0}, Pi / 2}{ Surface{sections[]}; Layers{perQuadrant}; Recombine; };
  Else
    copies[] = Extrude{{0, 0, 1}, {0, 0, 0}, Pi / 2}{ Surface{sections[]}; };
  EndIf
  // Extrude lists for each section its copy at the far end, the volume, and one side per boundary curve
  next[] = {};
  first = 0;
  For i In {0 : #sections[] - 1}
    next[] += copies[first];
    If (i < #flangeSections[])
      flange[] += copies[first + 1];
    ElseIf (i == #flangeSections[])
      weld[] += copies[first + 1];
    Else
      pipe[] += copies[first + 1];
    EndIf
    first += 2 + sideCounts[i];
  EndFor
  sections[] = next[];
EndFor

// The plate ring outside the fillet, one bolt hole in the middle of each quadrant
centre = newp;
Point(centre) = {0, 0, 0};
plate[] = {};
For quadrant In {0 : 3}
  angle = quadrant * Pi / 2;
  p = newp;
  Point(p) = {ringRadius * Cos(angle), ringRadius * Sin(angle), 0, size};
  Point(p + 1) = {plateRadius * Cos(angle), plateRadius * Sin(angle), 0, size};
  Point(p + 2) = {plateRadius * Cos(angle + Pi / 2), plateRadius * Sin(angle + Pi / 2), 0, size};
  Point(p + 3) = {ringRadius * Cos(angle + Pi / 2), ringRadius * Sin(angle + Pi / 2), 0, size};
  c = newl;
  Line(c) = {p, p + 1};
  Circle(c + 1) = {p + 1, centre, p + 2};
  Line(c + 2) = {p + 2, p + 3};
  Circle(c + 3) = {p + 3, centre, p};

  x = boltCircleRadius * Cos(angle + Pi / 4);
  y = boltCircleRadius * Sin(angle + Pi / 4);
  h = newp;
  Point(h) = {x, y, 0};
  For i In {0 : 3}
    a = angle + Pi / 4 + i * Pi / 2;
    Point(h + 1 + i) = {x + holeRadius * Cos(a), y + holeRadius * Sin(a), 0, detail};
    Point(h + 5 + i) = {x + collarRadius * Cos(a), y + collarRadius * Sin(a), 0, size};
  EndFor
  e = newl;
  For i In {0 : 3}
    Circle(e + i) = {h + 1 + i, h, h + 1 + (i + 1) % 4};
  EndFor
  l = newll;
  Curve Loop(l) = {c, c + 1, c + 2, c + 3};
  Curve Loop(l + 1) = {e, e + 1, e + 2, e + 3};
  If (swept)
    For i In {0 : 3}
      Circle(e + 4 + i) = {h + 5 + i, h, h + 5 + (i + 1) % 4};
      Line(e + 8 + i) = {h + 1 + i, h + 5 + i};
    EndFor
    Transfinite Curve{c, -(c + 2)} = 3 * division + 1;
    Transfinite Curve{c + 1} = perQuadrant + Ceil(1.5 * division) + 1;
    Transfinite Curve{c + 3} = perQuadrant + 1;
    Transfinite Curve{e : e + 7} = division + 2;
    Transfinite Curve{e + 8 : e + 11} = Ceil(0.5 * division) + 1;
    Curve Loop(l + 2) = {e + 4, e + 5, e + 6, e + 7};
    s = news;
    Plane Surface(s) = {l, l + 2};
    faces[] = {s};
    For i In {0 : 3}
      Curve Loop(l + 3 + i) = {e + 8 + i, e + 4 + i, -(e + 8 + (i + 1) % 4), -(e + i)};
      Plane Surface(s + 1 + i) = {l + 3 + i};
      Transfinite Surface{s + 1 + i};
      Recombine Surface{s + 1 + i};
      faces[] += s + 1 + i;
    EndFor
    For i In {0 : 4}
      copies[] = Extrude{0, 0, plateThickness}{ Surface{faces[i]}; Layers{plateLayers}; Recombine; };
      flange[] += copies[1];
    EndFor
  Else
    s = news;
    Plane Surface(s) = {l, l + 1};
    copies[] = Extrude{0, 0, plateThickness}{ Surface{s}; };
    flange[] += copies[1];
  EndIf
EndFor
Coherence;

Physical Volume("flange", 1) = {flange[]};
Physical Volume("weld", 2) = {weld[]};
Physical Volume("pipe", 3) = {pipe[]};

Mesh.MshFileVersion = 2.2;
Mesh.CharacteristicLengthExtendFromBoundary = 1;
Mesh.Optimize = 1;
Mesh.HighOrderOptimize = 1;  // repairs ten-node tetrahedra that the curved fillet would turn inside out
