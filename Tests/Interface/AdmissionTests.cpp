// Requests that are refused, and what is refused first.
#include "Scenes.h"

namespace
{
class Admission : public Host
{
protected:
    static Transfer toMesh() { return transferOf(linear, roomySource(), unitHexahedron({1, 1, 1})); }
    static Transfer toCloud() { return transferOf(linear, roomySource(), cloud({{1, 1, 1}, {2, 2, 2}})); }

    /// Refusals before any preparation write no value, not even the default.
    static void expectRefused(const Transfer& transfer, const std::string& message)
    {
        const Outcome outcome = run(transfer);
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.message, message);
        for (const std::vector<double>& values : outcome.fields)
        {
            EXPECT_EQ(values, constant(values.size(), untouched));
        }
        EXPECT_EQ(outcome.transcript, (std::vector<Report>{{0, "", "Mapping library exit.", 0}}));
        EXPECT_FALSE(outcome.hasLog());
    }
};

TEST_F(Admission, aMeshTransferKnowsModesZeroToTwo)
{
    for (const int mode : {0, 1, 2})
    {
        Transfer transfer = toMesh();
        transfer.mode = mode;
        EXPECT_EQ(run(transfer).code, 0);
    }
    for (const int mode : {3, -1, 2147483647})
    {
        Transfer transfer = toMesh();
        transfer.mode = mode;
        expectRefused(transfer, "Error: interpolation mode number " + std::to_string(mode) +
                                    " is unknown for 3D FE to 3D FE transfer.");
    }
}

TEST_F(Admission, aCloudTransferKnowsModesZeroAndOne)
{
    for (const int mode : {0, 1})
    {
        Transfer transfer = toCloud();
        transfer.mode = mode;
        EXPECT_EQ(run(transfer).code, 0);
    }
    for (const int mode : {2, 3, -1})
    {
        Transfer transfer = toCloud();
        transfer.mode = mode;
        expectRefused(transfer, "Error: interpolation mode number " + std::to_string(mode) +
                                    " is unknown for 3D FE to points cloud transfer.");
    }
}

constexpr const char* sourceFieldText = "Error: interpolation from a field defined at elements is not implemented yet.";
constexpr const char* targetFieldText = "Error: interpolation at elements is not implemented yet.";
constexpr const char* sourceTypeText =
    "Error: Interpolation from a mesh containing elements different from linear or quadratic tetrahedrons, linear "
    "hexahedrons, linear wedges and linear pyramids is not possible.";
constexpr const char* targetTypeText =
    "Error: Interpolation on a mesh containing elements different from\n"
    "linear or quadratic tetrahedrons, linear hexahedrons, linear wedges, linear pyramids,\n"
    "linear triangular elements, linear quadrilateral element\n"
    "is not possible.";

TEST_F(Admission, fieldsAtElementsAreRefusedTheSourceFirst)
{
    Transfer transfer = toMesh();
    transfer.sourceFields[0] = {.location = atElementsLocation, .values = constant(8, 1.0)};
    expectRefused(transfer, sourceFieldText);
    transfer.targetFields[0].location = atElementsLocation;
    expectRefused(transfer, sourceFieldText);
    transfer.sourceFields = toMesh().sourceFields;
    expectRefused(transfer, targetFieldText);
}

TEST_F(Admission, aFieldAtElementsIsFoundBehindOtherFields)
{
    Transfer transfer = toMesh();
    transfer.sourceFields.push_back({.location = atElementsLocation, .values = constant(8, 1.0)});
    transfer.targetFields.emplace_back();
    expectRefused(transfer, sourceFieldText);
    transfer.sourceFields[1] = transfer.sourceFields[0];
    transfer.targetFields[1].location = atElementsLocation;
    expectRefused(transfer, targetFieldText);
}

TEST_F(Admission, onlyVolumeElementsServeAsSource)
{
    for (const int type : {element::quadrilateral, element::triangle})
    {
        const Mesh skin = referenceElement(type, 0.5F, {2, 2, 2});
        Transfer transfer = toMesh();
        transfer.source = joined(transfer.source, skin);
        transfer.sourceFields = {nodal(transfer.source, linear)};
        expectRefused(transfer, sourceTypeText);
    }
    Transfer transfer = toMesh();
    transfer.source.types[7] = element::unknownWith8Nodes;
    expectRefused(transfer, sourceTypeText);
}

TEST_F(Admission, everyVolumeElementServesAsSource)
{
    for (const int type : element::volumes)
    {
        const Mesh source = box(type, {0, 0, 0}, {4, 4, 4}, {2, 2, 2});
        const Transfer transfer = transferOf(linear, source, unitHexahedron({1, 1, 1}));
        const Outcome outcome = run(transfer);
        EXPECT_EQ(outcome.code, 0);
        expectNear(outcome.fields[0], atNodes(transfer.target, linear), 1e-4);
    }
}

TEST_F(Admission, everyVolumeElementServesAsTarget)
{
    for (const int type : element::volumes)
    {
        const Transfer transfer = transferOf(linear, roomySource(), box(type, {1, 1, 1}, {3, 3, 3}));
        const Outcome outcome = run(transfer);
        EXPECT_EQ(outcome.code, 0);
        expectNear(outcome.fields[0], atNodes(transfer.target, linear), 1e-4);
    }
}

TEST_F(Admission, trianglesAndQuadrilateralsServeAsTarget)
{
    const Mesh skin = joined(referenceElement(element::triangle, 1.0F, {1, 1, 1}),
                             referenceElement(element::quadrilateral, 0.5F, {2, 2, 2}));
    Transfer transfer = transferOf(linear, roomySource(), skin);
    transfer.flags = {1, 1};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    expectNear(outcome.fields[0], atNodes(skin, linear), 1e-4);
}

TEST_F(Admission, otherTypesDoNotServeAsTarget)
{
    Transfer transfer = toMesh();
    transfer.target.types[0] = element::unknownWith8Nodes;
    expectRefused(transfer, targetTypeText);
}

TEST_F(Admission, theSourceIsCheckedBeforeTheTargetAndFieldsBeforeTypes)
{
    Transfer transfer = toMesh();
    transfer.target.types[0] = element::unknownWith8Nodes;
    transfer.source.types[0] = element::unknownWith8Nodes;
    expectRefused(transfer, sourceTypeText);
    transfer.targetFields[0].location = atElementsLocation;
    expectRefused(transfer, targetFieldText);
    transfer.mode = 5;
    expectRefused(transfer, "Error: interpolation mode number 5 is unknown for 3D FE to 3D FE transfer.");
}

class GridRefusal : public Host
{
protected:
    static constexpr const char* notIncluded = "Error: the target mesh is not included in the source mesh.\n";

    static Mesh triangleInPlane(float x) { return single(element::triangle, {{x, 30, 30}, {x, 60, 30}, {x, 30, 60}}); }
};

TEST_F(GridRefusal, noSelectedMaterial)
{
    for (const Mesh& target : {unitHexahedron({1, 1, 1}), cloud({{1, 1, 1}})})
    {
        Transfer transfer = transferOf(linear, roomySource(), target);
        transfer.flags = {0};
        const Outcome outcome = run(transfer);
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.message, "Error: please select at least one domain in the target model.\n");
        EXPECT_FALSE(outcome.hasLog());
        EXPECT_EQ(outcome.transcript.size(), 2U);
    }
}

TEST_F(GridRefusal, aTargetOnTheWidenedBoxOfTheSourceIsNotIncluded)
{
    // 5 % of 100 on either side: 105 and -5 are on the widened box.
    const Mesh source = box(element::hexahedron, {0, 0, 0}, {100, 100, 100});
    for (const float x : {105.0F, -5.0F, 106.0F})
    {
        Transfer transfer = transferOf(linear, source, triangleInPlane(x));
        transfer.mode = 1;
        const Outcome outcome = run(transfer);
        EXPECT_EQ(outcome.code, 1) << x;
        EXPECT_EQ(outcome.message, notIncluded);
        EXPECT_EQ(outcome.fields[0], constant(3, -7.0));
    }
    for (const float x : {104.99F, -4.99F})
    {
        Transfer transfer = transferOf(linear, source, triangleInPlane(x));
        transfer.mode = 1;
        EXPECT_EQ(run(transfer).code, 0) << x;
    }
}

TEST_F(GridRefusal, theBoxOfTheTargetIsWidenedByOnePercent)
{
    // A target of extent 50 that ends at 104.6 is widened by 0.5 beyond 105; one that ends at 104.4 is not.
    const Mesh source = box(element::hexahedron, {0, 0, 0}, {100, 100, 100});
    EXPECT_EQ(run(transferOf(linear, source, box(element::hexahedron, {54.6F, 10, 10}, {104.6F, 60, 60}))).message,
              notIncluded);
    Transfer transfer = transferOf(linear, source, box(element::hexahedron, {54.4F, 10, 10}, {104.4F, 60, 60}));
    transfer.mode = 1;
    EXPECT_EQ(run(transfer).code, 0);
}

TEST_F(GridRefusal, onlyTheSelectedPartOfTheTargetMustBeIncluded)
{
    const Mesh target = joined(unitHexahedron({1, 1, 1}), unitHexahedron({50, 1, 1}));
    Transfer transfer = transferOf(linear, roomySource(), target);
    transfer.flags = {1, 0};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    std::vector<double> expected = atNodes(target, linear);
    std::fill(expected.begin() + 8, expected.end(), untouched);
    expectNear(outcome.fields[0], expected, 1e-5);
    transfer.flags = {1, 1};
    EXPECT_EQ(run(transfer).message, notIncluded);
}

TEST_F(GridRefusal, theWholeSourceCountsWhateverItsMaterials)
{
    const Mesh source = joined(roomySource(), withStateCode(unitHexahedron({50, 1, 1}), 9));
    Transfer transfer = transferOf(linear, source, unitHexahedron({20, 1, 1}));
    transfer.mode = 1;
    EXPECT_EQ(run(transfer).code, 0);
}

TEST_F(GridRefusal, aCloudMayReachOutsideTheSource)
{
    Transfer transfer = transferOf(linear, roomySource(), cloud({{1, 1, 1}, {1000, 1, 1}, {1, -1000, 1}}));
    transfer.mode = 1;
    EXPECT_EQ(run(transfer).code, 0);
}

class NoTargetPoint : public Host
{
protected:
    static void expectNoTargetPoint(const Transfer& transfer, const std::string& title)
    {
        const Outcome outcome = run(transfer);
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.message, "There is no target point where fields should be interpolated.\n");
        EXPECT_EQ(outcome.transcript, (std::vector<Report>{{0, title, "Pretreatment", 1},
                                                           {5, title, "Computation", 1},
                                                           {0, title, "Mapping library exit.", 0}}));
        for (const std::vector<double>& values : outcome.fields)
        {
            EXPECT_EQ(values, constant(values.size(), untouched));
        }
        EXPECT_FALSE(outcome.hasLog());
    }
};

TEST_F(NoTargetPoint, whenAllNodesOfTheSelectedElementBelongToAnEarlierOne)
{
    Mesh target = unitHexahedron({1, 1, 1});
    target.connectivity.push_back(target.connectivity[0]);
    target.types.push_back(element::hexahedron);
    Transfer transfer = transferOf(linear, roomySource(), withMaterials(target, {0, 1}, {1, 1}));
    transfer.flags = {0, 1};
    expectNoTargetPoint(transfer, meshTitle);
}

TEST_F(NoTargetPoint, whenACloudHasOnlyFieldsAtGaussPoints)
{
    Transfer transfer = transferOf(linear, roomySource(), cloud({{1, 1, 1}}));
    transfer.targetFields = {atGaussPoints()};
    expectNoTargetPoint(transfer, cloudTitle);
}
} // namespace
