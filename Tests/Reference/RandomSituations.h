/// Situations that ordinary random problems hardly ever meet.
#ifndef RANDOM_SITUATIONS_H
#define RANDOM_SITUATIONS_H

#include "RandomModels.h"

#include <vector>

namespace random_models
{

/// Four nodes of a tetrahedron in a plane of constant z through a target node (its Jacobian is singular), or all at
/// that node (its box has no extent).
void addDegenerateElement(Random& random, TransferProblem& problem, bool isPoint);

/// Requests that the library refuses, and data that end the process.
void spoilRequest(Random& random, TransferProblem& problem);

/// Puts a copy of some elements in front of all others, in a material of its own that is not selected: the nodes of the
/// copied elements belong to it.
void shadow(Random& random, Mesh& mesh, std::vector<int>& mappingFlags);

/// Moves some target nodes by about the tolerance of the correspondences, 0.001 of the source's mean box size. Nodes at
/// 0 move by exactly that, or by the next numbers.
void moveNodesByTolerance(Random& random, Mesh& source, Mesh& target);

/// Moves inner target points onto the planes between buckets, or as far from them as a point's reach, give or take a
/// few steps of the floating-point numbers.
void snapToBuckets(Random& random, TransferProblem& problem);

/// Moves a target's lowest node so that the grid over the target begins exactly where the source, widened by 5 %, does,
/// or at the next number: just included, or just not.
void touchInclusionLimit(Random& random, TransferProblem& problem);

/// Turns the corners of an element, which keeps its shape and changes the order of its Gauss points.
void turnElements(Random& random, Mesh& mesh);

} // namespace random_models

#endif
