/// Which element types the computations admit.
#ifndef VELTRANE_ADMISSION_H
#define VELTRANE_ADMISSION_H

#include "../ModelClass.h"

/// Whether every element of a model can be the source of an interpolation.
bool areSourceTypes(const ModelClass& model);

/// Whether every element of a model can be a target.
bool areTargetTypes(const ModelClass& model);

/// Why fields cannot be interpolated from one model to another, as far as their element types go, or null.
const char* interpolationRefusal(const ModelClass& source, const ModelClass& target);

/// Whether points can be matched one to one from the elements of one mesh to those of another, as far as their types
/// go. A pyramid is looked for in the target, at the index of the source element: a source pyramid passes only where
/// the target has one too, and where it has one every source element passes. Hosts rely on it as it is.
bool areMatchableTypes(const ModelClass& source, const ModelClass& target);

/// Why the nodes, or the Gauss points, of two models cannot be matched, as far as their element types go, or null.
const char* nodeMatchingRefusal(const ModelClass& source, const ModelClass& target);
const char* gaussPointMatchingRefusal(const ModelClass& source, const ModelClass& target);

#endif
