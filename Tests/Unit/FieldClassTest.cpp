#include "FieldClass.h"
#include "AllocationFailure.h"
#include "ProcessEnd.h"
#include "TestModels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace
{
/// A field at Gauss points, averaged to the nodes of a mesh.
class Averaging
{
public:
    explicit Averaging(TestMesh& mesh) { mesh.loadInto(itsModel); }

    template <class Value> std::string run(std::vector<Value> values, int nbComponents = 1)
    {
        itsField.init(fieldRecord(atGaussPoints, nbComponents, values, "temperature"));
        return takeText(itsField.interpoAtNodes(itsModel));
    }

    std::vector<float> nodeValues() const
    {
        const float* values = itsField.itsValuesInterpoNode.get();
        return {values, values + static_cast<std::ptrdiff_t>(itsModel.itsNbNodes) * itsField.itsNbComponents};
    }

    FieldClass& field() { return itsField; }
    ModelClass& model() { return itsModel; }

private:
    ModelClass itsModel;
    FieldClass itsField;
};

/// The nodal values of one element, whose nodes belong to nothing else.
std::vector<float> averagesOf(int type, const std::vector<float>& gaussPointValues)
{
    TestMesh mesh;
    mesh.addElement(type, referenceNodes(type));
    Averaging averaging(mesh);
    EXPECT_EQ(averaging.run(gaussPointValues), "(null)");
    return averaging.nodeValues();
}
} // namespace

TEST(FieldClass, IsEmptyUntilItIsSetUp)
{
    const FieldClass field;
    EXPECT_STREQ(field.itsName, "");
    EXPECT_EQ(field.itsMatlStateFlag, 0);
    EXPECT_EQ(field.itsLocation, 0);
    EXPECT_EQ(field.itsNbComponents, 0);
    EXPECT_EQ(field.itsPrecision, 0);
    EXPECT_EQ(field.itsValuesFloat, nullptr);
    EXPECT_EQ(field.itsValuesDouble, nullptr);
    EXPECT_FALSE(field.itsValuesInterpoNode);
}

TEST(FieldClass, ASinglePrecisionFieldTakesItsSinglePrecisionValues)
{
    std::vector<float> floats(6);
    double never = 0.0;
    FieldStruct record = fieldRecord(atNodes, 3, floats, "displacement");
    record.matlStateFlag = 1;
    record.valuesDouble = &never;
    record.defaultValueFloat = 1.5F;
    record.defaultValueDouble = 2.5F;
    FieldClass field;
    field.init(record);
    EXPECT_STREQ(field.itsName, "displacement");
    EXPECT_EQ(field.itsMatlStateFlag, 1);
    EXPECT_EQ(field.itsLocation, atNodes);
    EXPECT_EQ(field.itsNbComponents, 3);
    EXPECT_EQ(field.itsPrecision, singlePrecision);
    EXPECT_EQ(field.itsValuesFloat, floats.data());
    EXPECT_EQ(field.itsValuesDouble, nullptr);
    EXPECT_EQ(field.defaultValue(), 1.5F);
}

TEST(FieldClass, ADoublePrecisionFieldTakesItsDoublePrecisionValuesAndASingleDefault)
{
    std::vector<double> doubles(4);
    float never = 0.0F;
    FieldStruct record = fieldRecord(atGaussPoints, 1, doubles);
    record.valuesFloat = &never;
    record.defaultValueFloat = 1.5F;
    record.defaultValueDouble = 2.5F;
    FieldClass field;
    field.init(record);
    EXPECT_EQ(field.itsValuesFloat, nullptr);
    EXPECT_EQ(field.itsValuesDouble, doubles.data());
    EXPECT_EQ(field.defaultValue(), 2.5F);
}

TEST(FieldClass, ANameOfAllCharactersIsKept)
{
    std::vector<float> values(1);
    const std::string name(99, 'n');
    FieldClass field;
    field.init(fieldRecord(atNodes, 1, values, name.c_str()));
    EXPECT_EQ(field.itsName, name);
}

TEST(FieldClass, ANameWithoutAnEndIsCut)
{
    std::vector<float> values(1);
    FieldStruct record = fieldRecord(atNodes, 1, values);
    std::memset(record.name, 'n', sizeof record.name);
    FieldClass field;
    field.init(record);
    EXPECT_EQ(field.itsName, std::string(99, 'n'));
}

TEST(FieldClass, AnUnknownPrecisionEndsTheProcess)
{
    std::vector<float> values(1);
    for (const int precision : {0, 3, -1})
    {
        FieldStruct record = fieldRecord(atNodes, 1, values);
        record.precision = precision;
        FieldClass field;
        EXPECT_PROCESS_END(field.init(record), "Error in FieldClass file at line 71: bad value for itsPrecision \n");
    }
}

TEST(FieldClass, IsAbsentOnlyFromClassTwoAndOnlyIfFlaggedSo)
{
    std::vector<float> values(1);
    for (const int flag : {0, 1, 2, -1})
    {
        FieldStruct record = fieldRecord(atNodes, 1, values);
        record.matlStateFlag = flag;
        FieldClass field;
        field.init(record);
        EXPECT_TRUE(field.existsOn(1)) << flag;
        EXPECT_EQ(field.existsOn(2), flag != 1) << flag;
    }
}

TEST(FieldClass, ReadsAndWritesDoublesAsSingles)
{
    std::vector<double> values{0.1, 0.2};
    FieldClass field;
    field.init(fieldRecord(atNodes, 1, values));
    EXPECT_EQ(field.value(1), 0.2F);
    field.setValue(0, 0.3F);
    EXPECT_EQ(values[0], static_cast<double>(0.3F));
    EXPECT_EQ(values[1], 0.2);
}

TEST(FieldClass, FillsAllComponentsOfOneLocation)
{
    std::vector<float> floats(6, 9.0F);
    std::vector<double> doubles(6, 9.0);
    FieldClass floatField;
    FieldClass doubleField;
    floatField.init(fieldRecord(atNodes, 2, floats));
    doubleField.init(fieldRecord(atNodes, 2, doubles));
    floatField.fillLocation(1, 0.5F);
    doubleField.fillLocation(2, 0.5F);
    EXPECT_EQ(floats, (std::vector<float>{9, 9, 0.5F, 0.5F, 9, 9}));
    EXPECT_EQ(doubles, (std::vector<double>{9, 9, 9, 9, 0.5, 0.5}));
}

TEST(GaussPointAveraging, OfAHexahedronGivesEveryNodeItsPoint)
{
    EXPECT_EQ(averagesOf(1, {1, 2, 3, 4, 5, 6, 7, 8}), (std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(GaussPointAveraging, OfATetrahedronGivesEveryNodeItsOnePoint)
{
    EXPECT_EQ(averagesOf(2, {7}), (std::vector<float>{7, 7, 7, 7}));
}

TEST(GaussPointAveraging, OfAWedgeHalvesTheSumOfTwoPoints)
{
    EXPECT_EQ(averagesOf(3, {1, 2, 4, 8, 16, 32}), (std::vector<float>{2.5F, 1.5F, 3, 20, 12, 24}));
}

TEST(GaussPointAveraging, OfAQuadraticTetrahedronGoesByNumber)
{
    EXPECT_EQ(averagesOf(10, {3, 6, 12, 24, 48}), (std::vector<float>{6, 12, 24, 48, 7, 13, 11, 19, 21, 25}));
}

TEST(GaussPointAveraging, OfAPyramidGivesTheBaseTheLowerPointsAndTheApexTheMeanOfTheUpperOnes)
{
    EXPECT_EQ(averagesOf(12, {1, 2, 4, 8, 16, 32, 64, 128}), (std::vector<float>{16, 32, 64, 128, 3.75F}));
}

TEST(GaussPointAveraging, AThirdIsRoundedOnceBeforeItIsAdded)
{
    // Two elements on the same nodes: 7/3 and 8/3, each rounded to single, then added and halved.
    TestMesh mesh;
    mesh.addElement(10, referenceNodes(10));
    mesh.addElement(10, mesh.connectivity[0]);
    Averaging averaging(mesh);
    EXPECT_EQ(averaging.run(std::vector<float>{1, 2, 4, 0, 0, 0, 4, 4, 0, 0}), "(null)");
    EXPECT_EQ(averaging.nodeValues()[4], (2.33333325F + 2.66666675F) / 2.0F);
}

TEST(GaussPointAveraging, ASharedNodeTakesThePlainMeanOfItsElements)
{
    // A large and a small tetrahedron on one face: neither size nor material weighs.
    TestMesh mesh;
    mesh.matlStates = {1, 4};
    mesh.addElement(2, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 100}});
    mesh.nodes.push_back({0, 0, -1});
    mesh.addElement(2, std::vector<int>{0, 2, 1, 4}, 1);
    Averaging averaging(mesh);
    EXPECT_EQ(averaging.run(std::vector<float>{2, 10}), "(null)");
    EXPECT_EQ(averaging.nodeValues(), (std::vector<float>{6, 6, 6, 2, 10}));
}

TEST(GaussPointAveraging, AveragesAcrossElementKinds)
{
    // One element of each kind, all of which have node 0 as their first one. Gauss points follow one another.
    TestMesh mesh;
    mesh.nodes.push_back({0, 0, 0});
    std::vector<float> values;
    for (const int type : typesWithShapeFunctions)
    {
        std::vector<int> nodeNumbers{0};
        for (std::size_t i = 1; i < referenceNodes(type).size(); ++i)
        {
            nodeNumbers.push_back(mesh.nbNodes());
            mesh.nodes.push_back({});
        }
        mesh.addElement(type, nodeNumbers);
    }
    // What the first nodes take: point 1; point 1; points 1 and 3; point 2; point 5.
    const std::vector<float> hexahedron{1, 0, 0, 0, 0, 0, 0, 0};
    const std::vector<float> tetrahedron{10};
    const std::vector<float> wedge{100, 0, 300, 0, 0, 0};
    const std::vector<float> quadraticTetrahedron{0, 1000, 0, 0, 0};
    const std::vector<float> pyramid{0, 0, 0, 0, 10000, 0, 0, 4};
    for (const auto& part : {hexahedron, tetrahedron, wedge, quadraticTetrahedron, pyramid})
    {
        values.insert(values.end(), part.begin(), part.end());
    }
    Averaging averaging(mesh);
    EXPECT_EQ(averaging.run(values), "(null)");
    EXPECT_EQ(averaging.nodeValues()[0], (1.0F + 10.0F + 200.0F + 1000.0F + 10000.0F) / 5.0F);
    // The pyramid's fourth node, last but one of the mesh.
    EXPECT_EQ(averaging.nodeValues()[static_cast<std::size_t>(mesh.nbNodes()) - 2], 4.0F);
}

TEST(GaussPointAveraging, KeepsComponentsApart)
{
    TestMesh mesh;
    mesh.addElement(2, referenceNodes(2));
    mesh.addElement(2, referenceNodes(2));
    Averaging averaging(mesh);
    EXPECT_EQ(averaging.run(std::vector<float>{1, 2, 3, 4}, 2), "(null)");
    EXPECT_EQ(averaging.nodeValues(), (std::vector<float>{1, 2, 1, 2, 1, 2, 1, 2, 3, 4, 3, 4, 3, 4, 3, 4}));
}

TEST(GaussPointAveraging, HasNoLimitToTheNumberOfComponents)
{
    TestMesh mesh;
    mesh.addElement(1, referenceNodes(1));
    std::vector<float> values;
    for (int i = 0; i < 8 * 12; ++i)
    {
        values.push_back(static_cast<float>(i));
    }
    Averaging averaging(mesh);
    EXPECT_EQ(averaging.run(values, 12), "(null)");
    EXPECT_EQ(averaging.nodeValues(), values);
}

TEST(GaussPointAveraging, NarrowsDoublesBeforeItSums)
{
    // 1 + 2^-30 is 1 in single precision, in which the averages are.
    TestMesh mesh;
    mesh.addElement(3, referenceNodes(3));
    Averaging averaging(mesh);
    EXPECT_EQ(averaging.run(std::vector<double>{1.0 + 0x1p-30, 0.1, 1.0 + 0x1p-30, 0, 0, 0}), "(null)");
    EXPECT_EQ(averaging.nodeValues()[0], 1.0F);
    EXPECT_EQ(averaging.nodeValues()[1], (0.1F + 1.0F) * 0.5F);
}

TEST(GaussPointAveraging, ANodeInNoElementBecomesNotANumber)
{
    TestMesh mesh;
    mesh.nodes.push_back({5, 5, 5});
    mesh.addElement(2, referenceNodes(2));
    Averaging averaging(mesh);
    EXPECT_EQ(averaging.run(std::vector<float>{3}), "(null)");
    EXPECT_TRUE(std::isnan(averaging.nodeValues()[0]));
    EXPECT_EQ(averaging.nodeValues()[1], 3.0F);
}

TEST(GaussPointAveraging, ASecondRequestIsRefused)
{
    TestMesh mesh;
    mesh.addElement(2, referenceNodes(2));
    Averaging averaging(mesh);
    EXPECT_EQ(averaging.run(std::vector<float>{3}), "(null)");
    EXPECT_EQ(takeText(averaging.field().interpoAtNodes(averaging.model())),
              "Field temperature already interpolated at nodes of the same mesh.\n");
    EXPECT_EQ(averaging.nodeValues(), (std::vector<float>{3, 3, 3, 3}));
}

TEST(GaussPointAveraging, FieldsOfOneMeshShareItsCounts)
{
    TestMesh mesh;
    mesh.addElement(2, referenceNodes(2));
    Averaging averaging(mesh);
    EXPECT_EQ(averaging.run(std::vector<float>{3}), "(null)");
    const int* counts = averaging.model().itsEltNbPerNode.get();
    FieldClass second;
    std::vector<float> values{8};
    second.init(fieldRecord(atGaussPoints, 1, values));
    EXPECT_EQ(takeText(second.interpoAtNodes(averaging.model())), "(null)");
    EXPECT_EQ(second.itsValuesInterpoNode[0], 8.0F);
    EXPECT_EQ(averaging.model().itsEltNbPerNode.get(), counts);
}

TEST(GaussPointAveraging, AFieldAtNodesNeedsNone)
{
    TestMesh mesh;
    mesh.addElement(2, referenceNodes(2));
    ModelClass model;
    mesh.loadInto(model);
    std::vector<float> values(4);
    FieldClass field;
    field.init(fieldRecord(atNodes, 1, values, "pressure"));
    EXPECT_EQ(takeText(field.interpoAtNodes(model)), "Interpolation at source nodes of field pressure is not necessary "
                                                     "as the field is already defined at nodes.\n");
    EXPECT_FALSE(field.itsValuesInterpoNode);
    EXPECT_FALSE(model.itsEltNbPerNode);
}

TEST(GaussPointAveraging, AFieldAtElementsNeedsNone)
{
    TestMesh mesh;
    mesh.addElement(2, referenceNodes(2));
    ModelClass model;
    mesh.loadInto(model);
    std::vector<float> values(1);
    FieldClass field;
    field.init(fieldRecord(atElements, 1, values, "density"));
    EXPECT_EQ(takeText(field.interpoAtNodes(model)), "Interpolation at source nodes of field density is not necessary "
                                                     "as the field is defined at elements.\n");
    EXPECT_FALSE(field.itsValuesInterpoNode);
}

TEST(GaussPointAveraging, AFieldAtAnUnknownLocationIsLeftAlone)
{
    TestMesh mesh;
    mesh.addElement(2, referenceNodes(2));
    ModelClass model;
    mesh.loadInto(model);
    std::vector<float> values(4);
    const std::int64_t before = nbLiveAllocations();
    for (const int location : {0, 4, -1})
    {
        FieldClass field;
        field.init(fieldRecord(location, 1, values));
        EXPECT_EQ(takeText(field.interpoAtNodes(model)), "(null)");
        EXPECT_FALSE(field.itsValuesInterpoNode);
    }
    EXPECT_FALSE(model.itsEltNbPerNode);
    EXPECT_EQ(nbLiveAllocations(), before);
}

TEST(GaussPointAveraging, AnUnknownElementKindEndsItAndLeavesTheSums)
{
    TestMesh mesh;
    mesh.addElement(2, referenceNodes(2));
    mesh.addElement(2, mesh.connectivity[0]);
    mesh.addElement(6, std::vector<int>{0, 1, 2, 3});
    mesh.addElement(2, mesh.connectivity[0]);
    Averaging averaging(mesh);
    EXPECT_EQ(averaging.run(std::vector<float>{3, 5, 0, 0, 0, 0, 100}),
              "Error in FieldClass file at line 298: elements different from\nlinear or quadratic tetrahedrons, linear "
              "hexahedrons, linear wedges, and linear pyramids are not treated yet.\n");
    EXPECT_EQ(averaging.nodeValues(), (std::vector<float>{8, 8, 8, 8}));
}

TEST(GaussPointAveraging, FailedAllocationsAreReported)
{
    TestMesh mesh;
    mesh.addElement(2, referenceNodes(2));
    ModelClass model;
    mesh.loadInto(model);
    std::vector<float> values{3};
    FieldClass field;
    field.init(fieldRecord(atGaussPoints, 1, values));
    const std::vector<std::string> outcomes =
        outcomesOfFailedTables([&] { std::fputs(takeText(field.interpoAtNodes(model)).c_str(), stdout); });
    EXPECT_EQ(outcomes, (std::vector<std::string>{
                            "Allocation of itsValuesInterpoNode is not possible in FieldClass::interpoAtNodes() "
                            "function.\n",
                            "Error in ModelClass file at line 127: impossible to allocate itsEltNbPerNode \n"}));
}

TEST(FieldClass, LeavesTheHostsValuesWhenItEnds)
{
    std::vector<float> values{1, 2};
    const std::int64_t before = nbLiveAllocations();
    {
        FieldClass field;
        field.init(fieldRecord(atNodes, 1, values));
    }
    EXPECT_EQ(nbLiveAllocations(), before);
    EXPECT_EQ(values, (std::vector<float>{1, 2}));
}
