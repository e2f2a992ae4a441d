/// Values of a set of fields at single points of a target.
#ifndef VELTRANE_FIELDS_AT_POINTS_H
#define VELTRANE_FIELDS_AT_POINTS_H

#include "../FieldsSetClass.h"
#include "Evaluation.h"

#include <cstdint>

/// Writes the source fields' values at a point into the target fields at its kind of location that exist on materials
/// of its state class.
void evaluateFields(const FieldsSetClass& sources, FieldsSetClass& targets, Location pointKind, std::int64_t pointIndex,
                    int matlStateClass, const WeightedNodes& at);

/// Asks for the source values that such an evaluation is going to read.
void prefetchFields(const FieldsSetClass& sources, std::span<const int> nodes);

/// Writes a value into every field at a kind of location that exists on materials of this state class.
void fillFields(FieldsSetClass& targets, Location pointKind, std::int64_t pointIndex, int matlStateClass,
                float (*valueFor)(const FieldClass&));

#endif
