/// The fallback for a point that lies in no element: of the elements of its bucket the one whose centre is nearest.
#ifndef VELTRANE_NEAREST_ELEMENT_H
#define VELTRANE_NEAREST_ELEMENT_H

#include "../BucketSpaceClass.h"
#include "../ModelClass.h"
#include "../Search/PointLocator.h"

/// The mean of an element's nodes into centre[3].
void computeCentre(const ModelClass& model, int elt, float* centre);

class NearestElement
{
public:
    /// The objects are borrowed. `centres` are float[nbElts][3], or null: then they are computed where they are needed.
    /// `singularElts` is as for PointLocator.
    NearestElement(const ModelClass& sourceModel, const BoxTable& boxes, const BucketSpaceClass& space,
                   float precisionFactor, const float* centres,
                   SingularElements rule = SingularElements::endComputation, unsigned char* singularElts = nullptr)
        : itsMesh(sourceModel), itsBoxes(boxes), itsSpace(space), itsPrecisionFactor(precisionFactor),
          itsCentres(centres), itsRule(rule), itsSingularElts(singularElts)
    {
    }

    /// Of the elements of the point's bucket, whatever the bucket's state, that have the material state, the one with
    /// the nearest centre; of equally near ones the last. No element if the inversion there does not converge. Where a
    /// singular Jacobian ends the computation, the element with isSingular; otherwise the next element is taken.
    LocatedPoint find(const Vector3& point, int matlState) const;

private:
    /// An element and the squared distance of its centre. Those that come later in the search are farther away, or as
    /// far and of a lower number.
    struct Candidate
    {
        int elt = -1;
        float distance = 0.0F;

        bool comesAfter(const Candidate& other) const
        {
            return other.elt == -1 || distance > other.distance || (distance == other.distance && elt < other.elt);
        }
    };
    Candidate nextCandidate(const Vector3& point, int matlState, const Candidate& last) const;
    float squaredDistanceToCentre(const Vector3& point, int elt) const;

    const ModelClass& itsMesh;
    const BoxTable& itsBoxes;
    const BucketSpaceClass& itsSpace;
    float itsPrecisionFactor;
    const float* itsCentres;
    SingularElements itsRule;
    unsigned char* itsSingularElts;
};

#endif
