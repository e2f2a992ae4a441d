#include "Survey.h"

#include "../MappingStringUtilities.h"
#include "../Search/ElementBoxes.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr Stage surveyStage{"Pretreatment", 0, 2};

bool hasNumbersOnly(const Box& box)
{
    const auto isNumber = [](float value) { return !std::isnan(value); };
    return std::ranges::all_of(box.low, isNumber) && std::ranges::all_of(box.high, isNumber);
}

/// Visits items in pieces, visit(item, survey), and joins what the pieces have found in the order of the items.
/// `running` is the box of the survey that the items are added to. False if the workers were stopped.
template <class Visit>
bool surveyItems(int nbItems, RunningBox SurveyedBoxes::*running, SurveyedBoxes& surveyed, Workers& workers,
                 Visit visit)
{
    const Pieces pieces = onePiecePerWorker(workers, std::max(nbItems, 0));
    OwnedArray<SurveyedBoxes> shares;
    const auto visitPiece = [&](std::int64_t piece, SurveyedBoxes& survey)
    {
        for (auto item = pieces.first(piece); item < pieces.end(piece); ++item)
        {
            visit(static_cast<int>(item), survey);
        }
    };
    if (pieces.count() < 2 || !shares.allocate(pieces.count()))
    {
        for (std::int64_t piece = 0; piece < pieces.count(); ++piece)
        {
            visitPiece(piece, surveyed);
        }
        return true;
    }
    const auto surveyPiece = [&](std::int64_t piece, int)
    {
        SurveyedBoxes survey;
        visitPiece(piece, survey);
        shares[piece] = survey;
    };
    if (!workers.run(surveyStage, pieces.count(), surveyPiece))
    {
        return false;
    }
    for (std::int64_t piece = 0; piece < pieces.count(); ++piece)
    {
        const RunningBox& found = shares[piece].*running;
        surveyed.areExact = surveyed.areExact && shares[piece].areExact;
        if (found.isEmpty())
        {
            continue;
        }
        if ((surveyed.*running).isEmpty() || hasNumbersOnly(found.box()))
        {
            (surveyed.*running).add(found.box());
        }
        else
        {
            // A coordinate that is not a number sticks if it comes first of all, not if it comes first in its piece.
            visitPiece(piece, surveyed);
        }
    }
    return true;
}
} // namespace

void addExtents(float& sum, const Box& box)
{
    for (const float extent : box.extents())
    {
        sum += absoluteValue(extent);
    }
}

bool surveySource(const ModelClass& source, float marginRatio, const BoxTable& boxes, SurveyedBoxes& surveyed,
                  float& sizeSum, Workers& workers)
{
    const bool isSerial = workers.nbWorkers() == 1;
    float sum = 0.0F;
    const auto surveyElt = [&](int elt, SurveyedBoxes& survey)
    {
        const BoxLanes box = boxLanesOfElt(source, elt);
        const Box inflatedBox = boxOf(inflated(box, marginRatio));
        survey.add(survey.source, boxOf(box));
        storeBox(boxes, elt, inflatedBox);
        if (isSerial)
        {
            addExtents(sum, inflatedBox);
        }
    };
    if (!surveyItems(source.itsNbElts, &SurveyedBoxes::source, surveyed, workers, surveyElt))
    {
        return false;
    }
    for (int elt = 0; !isSerial && elt < source.itsNbElts; ++elt)
    {
        addExtents(sum, boxOfElement(boxes, elt));
    }
    sizeSum = sum;
    return true;
}

bool surveyTarget(const Target& target, SurveyedBoxes& surveyed, Workers& workers)
{
    const ModelClass& model = target.model;
    const int* flags = target.matlMappingFlags;
    // Gauss points of curved elements may lie beyond the nodes.
    const bool isCurved = std::any_of(model.itsEltTypes, model.itsEltTypes + model.itsNbElts,
                                      [&](int type) { return type >= nbTypeCodes && model.itsAdmitsAllKinds; });
    const bool areNodesEnough = !isCurved && target.nodes.mappingFlags != nullptr &&
                                std::all_of(flags, flags + model.itsNbMatls, [](int flag) { return flag == 1; });
    if (areNodesEnough)
    {
        return surveyItems(model.itsNbNodes, &SurveyedBoxes::selectedTarget, surveyed, workers,
                           [&](int node, SurveyedBoxes& survey)
                           {
                               if (target.nodes.mappingFlags[node] == 1)
                               {
                                   survey.addNode(survey.selectedTarget, model.itsNodeCoords[node]);
                               }
                           });
    }
    return surveyItems(model.itsNbElts, &SurveyedBoxes::selectedTarget, surveyed, workers,
                       [&](int elt, SurveyedBoxes& survey)
                       {
                           if (target.isEltSelected(elt))
                           {
                               survey.add(survey.selectedTarget, boxOf(boxLanesOfElt(model, elt)));
                           }
                       });
}
