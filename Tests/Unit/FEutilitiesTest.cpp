#include "FEutilities.h"
#include "ProcessEnd.h"
#include "TestModels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace
{
constexpr const char* shapeFunctionText =
    "Error in FEutilities file at line 290: shape functions of elements different from linear or quadratic "
    "tetrahedrons, linear wedges, linear hexahedrons, linear pyramids not implemented yet.\n";
constexpr const char* derivativeText =
    "Error in FEutilities file at line 384: derivatives of shape functions of elements different from linear or "
    "quadratic tetrahedrons, linear wedges, linear hexahedrons, linear pyramids not implemented yet.\n";

const std::vector<int> typesWithoutShapeFunctions{-1, 0, 4, 5, 6, 7, 8, 9, 11, 13, 14, 15};
} // namespace

TEST(FEUtilities, CountsNodesOfAllFifteenTypeCodes)
{
    const int expected[15] = {0, 8, 4, 6, 8, 6, 4, 3, 4, 2, 10, 12, 5, 4, 3};
    const FEUtilities utilities;
    EXPECT_EQ(std::size(utilities.itsNbNodesPerType), 15U);
    for (int typeCode = 0; typeCode < 15; ++typeCode)
    {
        EXPECT_EQ(utilities.nbNodes(typeCode), expected[typeCode]) << typeCode;
        EXPECT_EQ(utilities.itsNbNodesPerType[typeCode], expected[typeCode]) << typeCode;
    }
}

TEST(FEUtilities, CountsGaussPointsOfAllFifteenTypeCodes)
{
    const int expected[15] = {0, 8, 1, 6, 8, 6, 4, 3, 4, 2, 5, 8, 8, 0, 0};
    const FEUtilities utilities;
    EXPECT_EQ(std::size(utilities.itsNbGaussPointsPerType), 15U);
    for (int typeCode = 0; typeCode < 15; ++typeCode)
    {
        EXPECT_EQ(utilities.nbGaussPoints(typeCode), expected[typeCode]) << typeCode;
        EXPECT_EQ(utilities.itsNbGaussPointsPerType[typeCode], expected[typeCode]) << typeCode;
    }
}

TEST(FEUtilities, UnknownTypeCodesHaveNeitherNodesNorGaussPoints)
{
    const FEUtilities utilities;
    for (const int typeCode : {-1, 15, -2147483647 - 1, 2147483647})
    {
        EXPECT_EQ(utilities.nbNodes(typeCode), 0);
        EXPECT_EQ(utilities.nbGaussPoints(typeCode), 0);
    }
}

TEST(FEUtilities, TabulatesTheShapeFunctionsAtTheGaussPoints)
{
    const FEUtilities utilities;
    for (const int typeCode : typesWithShapeFunctions)
    {
        for (int gaussPoint = 0; gaussPoint < utilities.nbGaussPoints(typeCode); ++gaussPoint)
        {
            double sum = 0.0;
            for (int node = 0; node < utilities.nbNodes(typeCode); ++node)
            {
                sum += static_cast<double>(utilities.itsShapeValuesAtGaussPoints[typeCode][node][gaussPoint]);
            }
            EXPECT_NEAR(sum, 1.0, 1e-6) << "type " << typeCode << ", Gauss point " << gaussPoint;
        }
    }
    // One entry with all three indices different: the wedge's fifth Gauss point, on the edge of nodes 5 and 6.
    EXPECT_EQ(utilities.itsShapeValuesAtGaussPoints[3][5][4], 0.394337565F);
    EXPECT_EQ(utilities.itsShapeValuesAtGaussPoints[3][2][4], 0.105662435F);
    EXPECT_EQ(utilities.itsShapeValuesAtGaussPoints[3][3][4], 0.0F);
}

TEST(FEUtilities, TheTableIsZeroWhereATypeHasNoNodeOrGaussPoint)
{
    const FEUtilities utilities;
    for (int typeCode = 0; typeCode < 15; ++typeCode)
    {
        const bool isKnown = std::find(typesWithShapeFunctions.begin(), typesWithShapeFunctions.end(), typeCode) !=
                             typesWithShapeFunctions.end();
        for (int node = 0; node < 12; ++node)
        {
            for (int gaussPoint = 0; gaussPoint < 8; ++gaussPoint)
            {
                if (!isKnown || node >= utilities.nbNodes(typeCode) || gaussPoint >= utilities.nbGaussPoints(typeCode))
                {
                    EXPECT_EQ(utilities.itsShapeValuesAtGaussPoints[typeCode][node][gaussPoint], 0.0F)
                        << typeCode << ", " << node << ", " << gaussPoint;
                }
            }
        }
    }
}

TEST(FEUtilities, EvaluatesTheShapeFunctionsOfATypeAndNoMore)
{
    for (const int typeCode : typesWithShapeFunctions)
    {
        const std::vector<Vector3> nodes = referenceNodes(typeCode);
        for (std::size_t node = 0; node < nodes.size(); ++node)
        {
            std::vector<float> values(nodes.size() + 1, 77.0F);
            FEUtilities::shapeFunctions(typeCode, nodes[node], values.data());
            std::vector<float> expected(nodes.size() + 1, 0.0F);
            expected[node] = 1.0F;
            expected.back() = 77.0F;
            EXPECT_EQ(values, expected) << "type " << typeCode;
        }
    }
}

TEST(FEUtilities, WritesNoShapeFunctionsIntoANullArray)
{
    for (const int typeCode : typesWithShapeFunctions)
    {
        FEUtilities::shapeFunctions(typeCode, {0, 0, 0}, nullptr);
    }
    EXPECT_PROCESS_END(FEUtilities::shapeFunctions(6, {0, 0, 0}, nullptr), shapeFunctionText);
}

TEST(FEUtilities, EvaluatesThreeDerivativesPerNodeInNodeOrder)
{
    std::vector<float> derivatives(13, 77.0F);
    FEUtilities::shapeFunctionDerivatives(2, {0.1F, 0.2F, 0.3F}, derivatives.data());
    EXPECT_EQ(derivatives, (std::vector<float>{-1, -1, -1, 1, 0, 0, 0, 1, 0, 0, 0, 1, 77}));
    derivatives.assign(16, 77.0F);
    FEUtilities::shapeFunctionDerivatives(12, {0, 0, 0}, derivatives.data());
    EXPECT_EQ(derivatives, (std::vector<float>{-0.25F, -0.25F, -0.25F, 0.25F, -0.25F, -0.25F, 0.25F, 0.25F, -0.25F,
                                               -0.25F, 0.25F, -0.25F, 0, 0, 1, 77}));
}

TEST(FEUtilities, ShapeFunctionsOfOtherTypesEndTheProcess)
{
    for (const int typeCode : typesWithoutShapeFunctions)
    {
        float values[12];
        EXPECT_PROCESS_END(FEUtilities::shapeFunctions(typeCode, {0, 0, 0}, values), shapeFunctionText);
    }
}

TEST(FEUtilities, DerivativesOfOtherTypesEndTheProcess)
{
    for (const int typeCode : typesWithoutShapeFunctions)
    {
        float derivatives[36];
        EXPECT_PROCESS_END(FEUtilities::shapeFunctionDerivatives(typeCode, {0, 0, 0}, derivatives), derivativeText);
    }
}
