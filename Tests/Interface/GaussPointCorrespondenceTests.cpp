// Matching the Gauss points of a target with those of a source of the same geometry.
#include "Scenes.h"

#include <cmath>
#include <numeric>

namespace
{
constexpr const char* termination = "Gauss point to Gauss point correspondence computation normal termination.";
constexpr const char* success = "Gauss point to Gauss point correspondence computation terminated successfully.";
constexpr const char* cancelText = "Gauss point to Gauss point correspondence computation cancelled.\n";
constexpr const char* noPartner =
    "At least one gauss point of the target mesh does not correspond to one gauss point of the source mesh.\n";
constexpr const char* sourceTypeText =
    "Error: GP to GP correspondence computation from a mesh containing elements different from linear or quadratic "
    "tetrahedrons, linear hexahedrons, linear wedges or linear pyramids is not possible yet.";
constexpr const char* targetTypeText =
    "Error: GP to GP correspondence computation to\n"
    " a mesh containing elements different from\n"
    " linear or quadratic tetrahedrons, linear hexahedrons, linear wedges, linear pyramids\n"
    " linear triangular elements, linear quadrilateral element\n"
    " is not possible.";

using Table = std::vector<std::vector<int>>;

class GaussPointCorrespondence : public Host
{
protected:
    static Matching between(Mesh source, Mesh target)
    {
        const std::vector<int> flags(target.matlStates.size(), 1);
        return {.kind = Correspondence::gaussPoints,
                .source = std::move(source),
                .target = std::move(target),
                .flags = flags};
    }

    static Mesh twoHexahedra() { return box(element::hexahedron, {0, 0, 0}, {2, 1, 1}, {2, 1, 1}); }

    /// One element of every kind, none touching another.
    static Mesh oneOfEach()
    {
        Mesh mesh = referenceElement(element::volumes[0]);
        for (std::size_t i = 1; i < element::volumes.size(); ++i)
        {
            mesh = joined(mesh, referenceElement(element::volumes[i], 1.0F, {3.0F * static_cast<float>(i), 0, 0}));
        }
        return mesh;
    }

    /// Element numbers of a target whose element e matches source element sourceOf[e] (from 0).
    static Table elementTable(const Mesh& target, const std::vector<int>& sourceOf)
    {
        Table table;
        for (std::size_t e = 0; e < target.types.size(); ++e)
        {
            table.emplace_back(static_cast<std::size_t>(gaussPointsOfType(target.types[e])), sourceOf[e] + 1);
        }
        return table;
    }

    /// Gauss point g matches Gauss point g.
    static Table pointTable(const Mesh& target)
    {
        Table table = constantTable(target, 0);
        for (std::vector<int>& row : table)
        {
            std::iota(row.begin(), row.end(), 1);
        }
        return table;
    }

    static Table constantTable(const Mesh& target, int entry)
    {
        Table table;
        for (const int type : target.types)
        {
            table.emplace_back(static_cast<std::size_t>(gaussPointsOfType(type)), entry);
        }
        return table;
    }

    static std::vector<int> sameOrder(const Mesh& mesh)
    {
        std::vector<int> order(mesh.connectivity.size());
        std::iota(order.begin(), order.end(), 0);
        return order;
    }

    static void expectMatched(const Outcome& outcome, const Mesh& target, const std::vector<int>& sourceOf)
    {
        EXPECT_EQ(outcome.code, 0);
        EXPECT_EQ(outcome.message, termination);
        EXPECT_EQ(outcome.elementsOfGaussPoints, elementTable(target, sourceOf));
        EXPECT_EQ(outcome.pointsOfGaussPoints, pointTable(target));
    }

    static void expectFailure(const Outcome& outcome, const std::string& message, const Table& table)
    {
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.message, message);
        EXPECT_EQ(outcome.elementsOfGaussPoints, table);
        EXPECT_EQ(outcome.pointsOfGaussPoints, table);
        EXPECT_TRUE(outcome.files.empty());
    }
};

TEST_F(GaussPointCorrespondence, ofAnExactCopyIsTheIdentity)
{
    for (const int type : element::volumes)
    {
        const Mesh mesh = distorted(box(type, {0, 0, 0}, {3, 3, 3}, {3, 3, 3}), {0, 0, 0}, {3, 3, 3}, 0.1F);
        expectMatched(run(between(mesh, mesh)), mesh, sameOrder(mesh));
    }
    expectMatched(run(between(oneOfEach(), oneOfEach())), oneOfEach(), sameOrder(oneOfEach()));
}

TEST_F(GaussPointCorrespondence, followsTheNumberingOfTheSource)
{
    const Mesh source = box(element::hexahedron, {0, 0, 0}, {3, 1, 1}, {3, 1, 1});
    const Mesh target = reordered(source, {2, 0, 1});
    expectMatched(run(between(source, target)), target, {2, 0, 1});
    const Mesh part = unitHexahedron({2, 0, 0});
    expectMatched(run(between(source, part)), part, {2});
}

TEST_F(GaussPointCorrespondence, findsTheGaussPointsOfATurnedElement)
{
    // The target's hexahedron begins at another corner: the four Gauss points of each layer move on by one.
    Mesh target = unitHexahedron({0, 0, 0});
    const std::vector<int> n = target.connectivity[0];
    target.connectivity[0] = {n[1], n[2], n[3], n[0], n[5], n[6], n[7], n[4]};
    const Outcome outcome = run(between(unitHexahedron({0, 0, 0}), target));
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.pointsOfGaussPoints, (Table{{2, 3, 4, 1, 6, 7, 8, 5}}));
}

TEST_F(GaussPointCorrespondence, reportsItsProgress)
{
    const Mesh mesh = unitHexahedron({0, 0, 0});
    const std::string title = "Gauss point to Gauss point correspondence computation";
    const std::vector<Report> expected = {
        {0, title, "Pretreatment", 1},
        {5, title, "Computation", 1},
        {12, title, "Computation", 1},
        {25, title, "Computation", 1},
        {37, title, "Computation", 1},
        {50, title, "Computation", 1},
        {62, title, "Computation", 1},
        {75, title, "Computation", 1},
        {87, title, "Computation", 1},
        {100, title, "Computation", 1},
        {100, title, "Gauss point to Gauss point correspondence computation terminated successfully.", 1},
        {0, title, "Mapping library exit.", 0}};
    EXPECT_EQ(run(between(mesh, mesh)).transcript, expected);
}

TEST_F(GaussPointCorrespondence, reportsAboutOncePerPercent)
{
    const Mesh source = box(element::tetrahedron, {0, 0, 0}, {3, 3, 1}, {3, 3, 1});
    std::vector<int> fifty(50);
    std::iota(fifty.begin(), fifty.end(), 0);
    EXPECT_EQ(run(between(source, reordered(source, fifty))).transcript,
              successfulTranscript(gaussPointTitle, success, 50));
    const Mesh larger = box(element::quadraticTetrahedron, {0, 0, 0}, {3, 3, 1}, {3, 3, 1});
    EXPECT_EQ(run(between(larger, reordered(larger, fifty))).transcript,
              successfulTranscript(gaussPointTitle, success, 250));
}

TEST_F(GaussPointCorrespondence, withoutACallbackGivesTheSame)
{
    const Outcome unheard = run(between(twoHexahedra(), twoHexahedra()), {.withCallback = false});
    expectMatched(unheard, twoHexahedra(), {0, 1});
    EXPECT_TRUE(unheard.transcript.empty());
}

TEST_F(GaussPointCorrespondence, leavesUnselectedElementsAlone)
{
    const Mesh target = withMaterials(twoHexahedra(), {0, 1}, {1, 1});
    Matching matching = between(twoHexahedra(), target);
    matching.flags = {0, 1};
    const Outcome outcome = run(matching);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.elementsOfGaussPoints, (Table{std::vector<int>(8, untouchedEntry), std::vector<int>(8, 2)}));
    EXPECT_EQ(outcome.pointsOfGaussPoints[0], std::vector<int>(8, untouchedEntry));
    EXPECT_EQ(outcome.pointsOfGaussPoints[1], pointTable(target)[1]);
    EXPECT_EQ(outcome.transcript, successfulTranscript(gaussPointTitle, success, 8));
}

TEST_F(GaussPointCorrespondence, tellsCoincidentElementsApartByStateCode)
{
    const Mesh source = joined(unitHexahedron({0, 0, 0}), withStateCode(unitHexahedron({0, 0, 0}), 4));
    expectMatched(run(between(source, withStateCode(unitHexahedron({0, 0, 0}), 4))), unitHexahedron({0, 0, 0}), {1});
    expectMatched(run(between(source, unitHexahedron({0, 0, 0}))), unitHexahedron({0, 0, 0}), {0});
    expectFailure(run(between(source, withStateCode(unitHexahedron({0, 0, 0}), 2))), noPartner,
                  Table{std::vector<int>(8, 0)});
}

TEST_F(GaussPointCorrespondence, amongGaussPointsWithinTheToleranceTheLowestNumberedWins)
{
    // In a hexahedron this thin the four lower Gauss points lie within the tolerance of the four upper ones.
    const Mesh thin = box(element::hexahedron, {0, 0, 0}, {1, 1, 0.0005F});
    const Outcome outcome = run(between(joined(thin, unitHexahedron({2, 0, 0})), thin));
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.elementsOfGaussPoints, (Table{std::vector<int>(8, 1)}));
    EXPECT_EQ(outcome.pointsOfGaussPoints, (Table{{1, 2, 3, 4, 1, 2, 3, 4}}));
}

/// A tetrahedron whose only Gauss point has x = 0; the target's last node moves its Gauss point by a quarter.
class GaussPointTolerance : public GaussPointCorrespondence
{
protected:
    static Mesh withLastNode(Point last)
    {
        return single(element::tetrahedron, {{-1, 0, 0}, {1, 0, 0}, {0, 2, 0}, last});
    }

    /// A thousandth of the mean extent of the source element's box, in the arithmetic of the library: its extents are
    /// 2, inflated by a hundredth of that on either side.
    static float tolerance()
    {
        const float margin = 0.01F * 2.0F;
        const float alongX = (1.0F + margin) - (-1.0F - margin);
        const float alongYAndZ = (2.0F + margin) - (0.0F - margin);
        const float mean = (alongX + alongYAndZ + alongYAndZ) / 3.0F;
        return mean * 0.001F;
    }

    static Outcome runWithOffset(float x, float y)
    {
        return run(between(withLastNode({0, 0, 2}), withLastNode({4.0F * x, 4.0F * y, 2})));
    }
};

TEST_F(GaussPointTolerance, isInclusive)
{
    EXPECT_EQ(runWithOffset(tolerance(), 0).code, 0);
    EXPECT_EQ(runWithOffset(-tolerance(), 0).code, 0);
    const float more = std::nextafter(tolerance(), 1.0F);
    expectFailure(runWithOffset(more, 0), noPartner, Table{{0}});
    expectFailure(runWithOffset(-more, 0), noPartner, Table{{0}});
}

TEST_F(GaussPointTolerance, isADistance)
{
    expectFailure(runWithOffset(tolerance(), tolerance()), noPartner, Table{{0}});
    EXPECT_EQ(runWithOffset(0.7F * tolerance(), 0.7F * tolerance()).code, 0);
}

TEST_F(GaussPointCorrespondence, onlyTheElementAroundTheCentreIsLookedAt)
{
    // Half of the target's Gauss points coincide with Gauss points of the first source element, half with some of the
    // second; its centre lies on their common face.
    const auto halfWidth = static_cast<float>(0.5 * std::sqrt(3.0) - 0.5);
    const Mesh target = box(element::hexahedron, {1 - halfWidth, 0, 0}, {1 + halfWidth, 1, 1});
    expectFailure(run(between(twoHexahedra(), target)), noPartner, constantTable(target, 0));
}

TEST_F(GaussPointCorrespondence, aCentreInNoSourceElementFails)
{
    const Mesh source = joined(unitHexahedron({0, 0, 0}), unitHexahedron({5, 0, 0}));
    const Mesh target = joined(unitHexahedron({0, 0, 0}), unitHexahedron({2.5F, 0, 0}));
    Matching matching = between(source, target);
    matching.source.matlStates = {1, 1};
    const Outcome outcome = run(matching);
    expectFailure(outcome, noPartner, constantTable(target, 0));
    // The eight Gauss points of the first element were reported.
    EXPECT_EQ(outcome.transcript.size(), 2U + 8U + 1U);
    EXPECT_EQ(outcome.transcript[9], (Report{50, gaussPointTitle, "Computation", 1}));
}

TEST_F(GaussPointCorrespondence, aFailureZeroesSelectedElementsOnly)
{
    // Not selected, matching, and moved too far.
    const Mesh source = box(element::hexahedron, {0, 0, 0}, {3, 1, 1}, {3, 1, 1});
    Mesh target = joined(joined(unitHexahedron({0, 0, 0}), unitHexahedron({1, 0, 0})), unitHexahedron({1.9F, 0, 0}));
    Matching matching = between(source, target);
    matching.flags = {0, 1, 1};
    expectFailure(run(matching), noPartner,
                  Table{std::vector<int>(8, untouchedEntry), std::vector<int>(8, 0), std::vector<int>(8, 0)});
}

TEST_F(GaussPointCorrespondence, aDifferentKindOfElementFails)
{
    // One of the wedges lies inside the hexahedron, but its Gauss points are elsewhere.
    const Mesh target = box(element::wedge, {0, 0, 0}, {1, 1, 1});
    expectFailure(run(between(unitHexahedron({0, 0, 0}), target)), noPartner, constantTable(target, 0));
}

TEST_F(GaussPointCorrespondence, withoutSelectedMaterialFails)
{
    Matching matching = between(twoHexahedra(), twoHexahedra());
    matching.flags = {0};
    expectFailure(run(matching), "Error: please select at least one domain in the target model.\n",
                  constantTable(twoHexahedra(), untouchedEntry));
}

TEST_F(GaussPointCorrespondence, ofATargetBesideTheSourceFails)
{
    const Outcome outcome = run(between(twoHexahedra(), unitHexahedron({1.5F, 0, 0})));
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.message, "Error: the target mesh is not included in the source mesh.\n");
}

TEST_F(GaussPointCorrespondence, cancelledAtTheFirstReport)
{
    const Outcome outcome = run(between(twoHexahedra(), twoHexahedra()), {.cancelAt = 1});
    EXPECT_EQ(outcome.code, -1);
    EXPECT_EQ(outcome.message, "Gauss point to Gauss point correspondence computation cancelled.\n");
    EXPECT_EQ(outcome.transcript, cancelledTranscript(gaussPointTitle, cancelText, 16, 1));
    EXPECT_EQ(outcome.elementsOfGaussPoints, constantTable(twoHexahedra(), untouchedEntry));
    EXPECT_EQ(outcome.pointsOfGaussPoints, constantTable(twoHexahedra(), untouchedEntry));
}

TEST_F(GaussPointCorrespondence, cancelledLaterKeepsWhatWasMatched)
{
    for (const int matched : {0, 3, 11, 16})
    {
        const Outcome outcome = run(between(twoHexahedra(), twoHexahedra()), {.cancelAt = 2 + matched});
        EXPECT_EQ(outcome.code, -1);
        EXPECT_EQ(outcome.message, cancelText);
        EXPECT_EQ(outcome.transcript, cancelledTranscript(gaussPointTitle, cancelText, 16, 2 + matched));
        Table elements = elementTable(twoHexahedra(), {0, 1});
        Table points = pointTable(twoHexahedra());
        for (std::size_t entry = static_cast<std::size_t>(matched); entry < 16; ++entry)
        {
            elements[entry / 8][entry % 8] = untouchedEntry;
            points[entry / 8][entry % 8] = untouchedEntry;
        }
        EXPECT_EQ(outcome.elementsOfGaussPoints, elements);
        EXPECT_EQ(outcome.pointsOfGaussPoints, points);
    }
}

TEST_F(GaussPointCorrespondence, theAnswerToTheReportOfSuccessIsIgnored)
{
    const Outcome outcome = run(between(twoHexahedra(), twoHexahedra()), {.cancelAt = 2 + 16 + 1});
    expectMatched(outcome, twoHexahedra(), {0, 1});
    EXPECT_EQ(outcome.transcript, successfulTranscript(gaussPointTitle, success, 16));
}

TEST_F(GaussPointCorrespondence, leavesNoLogAndRemovesThatOfAnEarlierCall)
{
    const std::map<std::string, std::string> files = {{"interpoLog.txt", "old"}};
    EXPECT_TRUE(run(between(twoHexahedra(), twoHexahedra()), {.files = files}).files.empty());
    EXPECT_TRUE(run(between(twoHexahedra(), withStateCode(twoHexahedra(), 4)), {.files = files}).files.empty());
    EXPECT_TRUE(run(between(twoHexahedra(), twoHexahedra()), {.files = files, .cancelAt = 3}).files.empty());
}

// ---------------------------------------------------------------------------------------------------------------------

/// The Gauss points of surface elements all lie at the origin, where this source has its only one. The place of the
/// surface element decides whether it is found.
class SurfaceTarget : public GaussPointCorrespondence
{
protected:
    static Mesh sourceAroundTheOrigin()
    {
        return single(element::tetrahedron, {{-1, -1, -1}, {3, -1, -1}, {-1, 3, -1}, {-1, -1, 3}});
    }

    /// A triangle around the z axis. At z = -1.02 it lies 0.005 reference units outside the source.
    static Mesh triangleAt(float z)
    {
        return single(element::triangle, {{0.5F, 0, z}, {-0.25F, 0.25F, z}, {-0.25F, -0.25F, z}});
    }
};

TEST_F(SurfaceTarget, isAccepted)
{
    Outcome outcome = run(between(sourceAroundTheOrigin(), triangleAt(0.1F)));
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.elementsOfGaussPoints, (Table{{1, 1, 1}}));
    EXPECT_EQ(outcome.pointsOfGaussPoints, (Table{{1, 1, 1}}));
    const Mesh quadrilateral = referenceElement(element::quadrilateral, 0.25F);
    outcome = run(between(sourceAroundTheOrigin(), quadrilateral));
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.elementsOfGaussPoints, (Table{{1, 1, 1, 1}}));
    EXPECT_EQ(outcome.pointsOfGaussPoints, (Table{{1, 1, 1, 1}}));
}

TEST_F(SurfaceTarget, isLocatedByItsCentreWithTheSearchOfTransfers)
{
    // The margin of the inside test is 0.002.
    EXPECT_EQ(run(between(sourceAroundTheOrigin(), triangleAt(-1.004F))).code, 0);
    expectFailure(run(between(sourceAroundTheOrigin(), triangleAt(-1.02F))), noPartner, Table{{0, 0, 0}});
}

TEST_F(SurfaceTarget, isFoundFurtherOutWithALargerTolerance)
{
    const Matching matching = between(sourceAroundTheOrigin(), triangleAt(-1.02F));
    EXPECT_EQ(run(matching, {.files = {{"GPToGPInputs.txt", "0.1 0.01"}}}).code, 0);
    EXPECT_EQ(run(matching, {.files = {{"GPToGPInputs.txt", "0.1 0.01 1"}}}).code, 0);
    // For that call only, with a second number, from the file of this computation.
    EXPECT_EQ(run(matching).code, 1);
    EXPECT_EQ(run(matching, {.files = {{"GPToGPInputs.txt", "0.01"}}}).code, 1);
    EXPECT_EQ(run(matching, {.files = {{"GPToGPInputs.txt", "x 0.01"}}}).code, 1);
    EXPECT_EQ(run(matching, {.files = {{"mappingInputs.txt", "0.1 0.01"}, {"nodToNodInputs.txt", "0.1 0.01"}}}).code,
              1);
}

TEST_F(GaussPointCorrespondence, givesTheSameInFewerBuckets)
{
    const Mesh mesh = distorted(box(element::wedge, {0, 0, 0}, {3, 3, 3}, {3, 3, 3}), {0, 0, 0}, {3, 3, 3}, 0.1F);
    for (const std::string contents : {"0.1 0.001 1", "0.1 0.001 10", "nonsense"})
    {
        const std::map<std::string, std::string> files = {{"GPToGPInputs.txt", contents}};
        const Outcome outcome = run(between(mesh, mesh), {.files = files});
        expectMatched(outcome, mesh, sameOrder(mesh));
        EXPECT_EQ(outcome.files, files);
    }
}

// ---------------------------------------------------------------------------------------------------------------------

/// The types of the source: a pyramid passes only where the target has one at the same index, and there any type does.
class TypesOfTheGaussPointCorrespondence : public GaussPointCorrespondence
{
protected:
    static Mesh pyramid() { return referenceElement(element::pyramid); }
    static Mesh quadrilateral() { return referenceElement(element::quadrilateral, 0.5F, {0, 0, 3}); }

    static void expectRefused(const Outcome& outcome, const Mesh& target, const std::string& message)
    {
        expectFailure(outcome, message, constantTable(target, untouchedEntry));
        EXPECT_EQ(outcome.transcript, (std::vector<Report>{{0, "", "Mapping library exit.", 0}}));
    }
};

TEST_F(TypesOfTheGaussPointCorrespondence, aSourcePyramidNeedsATargetPyramidAtItsIndex)
{
    expectMatched(run(between(pyramid(), pyramid())), pyramid(), {0});
    const Mesh mixed = joined(pyramid(), unitHexahedron({2, 0, 0}));
    expectMatched(run(between(mixed, mixed)), mixed, {0, 1});
    const Mesh swapped = reordered(mixed, {1, 0});
    expectRefused(run(between(mixed, swapped)), swapped, sourceTypeText);
}

TEST_F(TypesOfTheGaussPointCorrespondence, anySourceTypePassesWhereTheTargetHasAPyramid)
{
    Mesh twoPyramids = pyramid();
    twoPyramids.connectivity.push_back(twoPyramids.connectivity[0]);
    twoPyramids.types.push_back(element::pyramid);
    twoPyramids.matlIds.push_back(0);
    Mesh source = joined(quadrilateral(), pyramid());
    expectMatched(run(between(source, twoPyramids)), twoPyramids, {1, 1});
    expectRefused(run(between(joined(quadrilateral(), unitHexahedron({0, 0, 0})), unitHexahedron({0, 0, 0}))),
                  unitHexahedron({0, 0, 0}), sourceTypeText);
}

TEST_F(TypesOfTheGaussPointCorrespondence, aMissingTargetElementIsNoPyramid)
{
    const Mesh hexahedron = unitHexahedron({2, 0, 0});
    expectRefused(run(between(joined(hexahedron, pyramid()), hexahedron)), hexahedron, sourceTypeText);
    expectRefused(run(between(joined(pyramid(), quadrilateral()), pyramid())), pyramid(), sourceTypeText);
    expectMatched(run(between(joined(pyramid(), hexahedron), pyramid())), pyramid(), {0});
}

TEST_F(TypesOfTheGaussPointCorrespondence, unknownTypesAreNoTarget)
{
    Mesh target = twoHexahedra();
    target.types[1] = element::unknownWith8Nodes;
    expectRefused(run(between(twoHexahedra(), target)), target, targetTypeText);
    // The source is looked at first.
    expectRefused(run(between(target, target)), target, sourceTypeText);
}
} // namespace
