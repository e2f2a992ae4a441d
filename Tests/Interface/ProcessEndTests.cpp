// Faults in the data that end the host process: one line on standard output, status 0, nothing handed back.
#include "Scenes.h"

namespace
{
class ProcessEnd : public Host
{
protected:
    static Transfer toMesh() { return transferOf(linear, roomySource(), unitHexahedron({1, 1, 1})); }
    static Transfer toCloud() { return transferOf(linear, roomySource(), cloud({{1, 1, 1}})); }

    static void expectEnd(const Ending& ending, const std::string& line)
    {
        EXPECT_FALSE(ending.returned);
        EXPECT_EQ(ending.exitStatus, 0);
        EXPECT_EQ(ending.printed, line);
        EXPECT_TRUE(ending.outputsUntouched);
    }
};

constexpr const char* noMaterial = "Error in ModelClass file at line 76: no material in this model \n";
constexpr const char* noField = "Error in FieldsSetClass file at line 52: no field to be used. \n";
constexpr const char* noMemoryForFields = "Error in FieldsSetClass file at line 61: impossible to allocate fields. \n";
constexpr const char* badPrecision = "Error in FieldClass file at line 71: bad value for itsPrecision \n";
constexpr const char* singularJacobian = "A 3*3 Matrix is not inversable in invMatrix33() function.\n";

TEST_F(ProcessEnd, aModelWithoutMaterials)
{
    for (Transfer transfer : {toMesh(), toCloud()})
    {
        Transfer withoutSource = transfer;
        withoutSource.source.matlStates.clear();
        expectEnd(runToTheEnd(withoutSource), noMaterial);
        transfer.target.matlStates.clear();
        expectEnd(runToTheEnd(transfer), noMaterial);
    }
}

TEST_F(ProcessEnd, aModelWithoutMaterialsInACorrespondence)
{
    for (const Correspondence kind : {Correspondence::nodes, Correspondence::gaussPoints})
    {
        Matching matching = {.kind = kind, .source = roomySource(), .target = roomySource()};
        matching.source.matlStates.clear();
        expectEnd(runToTheEnd(matching), noMaterial);
        matching.source = roomySource();
        matching.target.matlStates.clear();
        expectEnd(runToTheEnd(matching), noMaterial);
    }
}

TEST_F(ProcessEnd, aSetWithoutFields)
{
    for (const Transfer& transfer : {toMesh(), toCloud()})
    {
        expectEnd(runToTheEndWithFieldCounts(transfer, 0, 1), noField);
        expectEnd(runToTheEndWithFieldCounts(transfer, 1, 0), noField);
    }
}

TEST_F(ProcessEnd, aNegativeNumberOfFields)
{
    for (const int count : {-1, -1000, -2147483647 - 1})
    {
        expectEnd(runToTheEndWithFieldCounts(toMesh(), count, 1), noMemoryForFields);
        expectEnd(runToTheEndWithFieldCounts(toMesh(), 1, count), noMemoryForFields);
    }
}

TEST_F(ProcessEnd, anUnknownPrecision)
{
    for (const int precision : {0, 3, -1})
    {
        Transfer transfer = toMesh();
        transfer.sourceFields[0].precision = precision;
        expectEnd(runToTheEnd(transfer), badPrecision);
        transfer = toMesh();
        transfer.targetFields = {Field{}, Field{}};
        transfer.targetFields[1].precision = precision;
        expectEnd(runToTheEnd(transfer), badPrecision);
    }
}

TEST_F(ProcessEnd, theSourceSetIsLoadedBeforeTheTargetSetAndModelsBeforeFields)
{
    Transfer transfer = toMesh();
    transfer.targetFields[0].precision = 5;
    expectEnd(runToTheEndWithFieldCounts(transfer, 0, 1), noField);
    transfer.target.matlStates.clear();
    expectEnd(runToTheEndWithFieldCounts(transfer, 0, 1), noMaterial);
}

TEST_F(ProcessEnd, faultsInTheDataComeBeforeRefusals)
{
    Transfer transfer = toMesh();
    transfer.mode = 7;
    transfer.sourceFields[0].precision = 0;
    expectEnd(runToTheEnd(transfer), badPrecision);
}

TEST_F(ProcessEnd, theLogOfAnEarlierCallIsRemovedFirst)
{
    // The mapping is set up before its data are looked at; nothing else is printed when the log is a directory.
    Transfer transfer = toMesh();
    transfer.source.matlStates.clear();
    expectEnd(runToTheEnd(transfer, {.files = {{"interpoLog.txt/occupant", ""}}}), noMaterial);
}

TEST_F(ProcessEnd, aFlatElementHasASingularJacobian)
{
    const Mesh flatTetrahedron = single(element::tetrahedron, {{0, 0, 1}, {3, 0, 1}, {0, 3, 1}, {3, 3, 1}});
    const Mesh flatHexahedron = single(
        element::hexahedron, {{0, 0, 1}, {3, 0, 1}, {3, 3, 1}, {0, 3, 1}, {0, 0, 1}, {3, 0, 1}, {3, 3, 1}, {0, 3, 1}});
    for (const Mesh& source : {flatTetrahedron, flatHexahedron})
    {
        expectEnd(runToTheEnd(transferOf(linear, source, cloud({{1, 1, 1}}))), singularJacobian);
    }
}

/// Points in a sound hexahedron and one in a flat one.
class FlatElementAmongOthers : public ProcessEnd
{
protected:
    static Transfer toPoints(const std::vector<Point>& points)
    {
        Mesh source = joined(roomySource(), single(element::tetrahedron, {{6, 0, 1}, {9, 0, 1}, {6, 3, 1}, {9, 3, 1}}));
        source.matlStates = {1, 1};
        return transferOf(linear, source, cloud(points));
    }

    static constexpr Point inFlatElement = {7, 1, 1};
};

TEST_F(FlatElementAmongOthers, endsTheProcessWhenItsPointIsReached)
{
    const Ending ending = runToTheEnd(toPoints({{1, 1, 1}, {3, 3, 3}, inFlatElement, {2, 2, 1}}));
    EXPECT_FALSE(ending.returned);
    EXPECT_EQ(ending.exitStatus, 0);
    EXPECT_EQ(ending.printed, singularJacobian);
    // The points before it have their values.
    expectNear(ending.fields[0], {linear({1, 1, 1}), linear({3, 3, 3}), untouched, untouched}, 1e-5);
}

TEST_F(FlatElementAmongOthers, isNotReachedAfterACancellation)
{
    const Outcome outcome = run(toPoints({{1, 1, 1}, {3, 3, 3}, inFlatElement}), {.cancelAt = 2 + 2});
    EXPECT_EQ(outcome.code, -1);
    expectNear(outcome.fields[0], {linear({1, 1, 1}), linear({3, 3, 3}), untouched}, 1e-5);
}

TEST_F(FlatElementAmongOthers, isNotReachedAfterAPointOutside)
{
    const Outcome outcome = run(toPoints({{1, 1, 1}, {50, 1, 1}, inFlatElement}));
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.fields[0], constant(3, -7.0));
}

TEST_F(ProcessEnd, aSourceElementWithoutShapeFunctionsCannotBeSearched)
{
    // The types of source elements are not looked at where the target has a pyramid.
    Matching matching;
    matching.kind = Correspondence::gaussPoints;
    matching.source = box(element::hexahedron, {-1, -1, -1}, {1, 1, 1});
    matching.source.types[0] = element::unknownWith8Nodes;
    matching.target = referenceElement(element::pyramid, 0.5F);
    expectEnd(runToTheEnd(matching),
              "Error in FEutilities file at line 290: shape functions of elements different from linear or quadratic "
              "tetrahedrons, linear wedges, linear hexahedrons, linear pyramids not implemented yet.\n");
}
} // namespace
