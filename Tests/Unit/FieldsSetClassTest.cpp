#include "FieldsSetClass.h"
#include "AllocationFailure.h"
#include "ProcessEnd.h"
#include "TestModels.h"

#include <gtest/gtest.h>

TEST(FieldsSetClass, IsEmptyUntilItIsSetUp)
{
    const FieldsSetClass set;
    EXPECT_EQ(set.itsNbFields, 0);
    EXPECT_EQ(set.itsFields, nullptr);
    EXPECT_TRUE(set.fields().empty());
}

TEST(FieldsSetClass, HoldsTheFieldsInTheirOrder)
{
    std::vector<float> floats(2);
    std::vector<double> doubles(2);
    FieldsSetClass set;
    loadFields(set, {fieldRecord(atNodes, 1, floats, "first"), fieldRecord(atGaussPoints, 2, doubles, "second")});
    ASSERT_EQ(set.itsNbFields, 2);
    EXPECT_STREQ(set.itsFields[0].itsName, "first");
    EXPECT_EQ(set.itsFields[0].itsValuesFloat, floats.data());
    EXPECT_STREQ(set.fields()[1].itsName, "second");
    EXPECT_EQ(set.fields()[1].itsLocation, atGaussPoints);
    EXPECT_EQ(set.fields()[1].itsValuesDouble, doubles.data());
}

TEST(FieldsSetClass, FieldsOfTheSameNameAreIndependent)
{
    std::vector<float> first{1};
    std::vector<float> second{2};
    FieldsSetClass set;
    loadFields(set, {fieldRecord(atNodes, 1, first, "same"), fieldRecord(atNodes, 1, second, "same")});
    set.fields()[0].setValue(0, 7);
    EXPECT_EQ(first[0], 7.0F);
    EXPECT_EQ(second[0], 2.0F);
}

TEST(FieldsSetClass, ASetWithoutFieldsEndsTheProcess)
{
    FieldsSetClass set;
    EXPECT_PROCESS_END(set.init({0, nullptr}), "Error in FieldsSetClass file at line 52: no field to be used. \n");
}

TEST(FieldsSetClass, ANegativeNumberOfFieldsCannotBeAllocated)
{
    FieldsSetClass set;
    EXPECT_PROCESS_END(set.init({-1, nullptr}),
                       "Error in FieldsSetClass file at line 61: impossible to allocate fields. \n");
}

TEST(FieldsSetClass, AFailedAllocationEndsTheProcess)
{
    std::vector<float> values(1);
    FieldStruct record = fieldRecord(atNodes, 1, values);
    EXPECT_EQ(outcomesOfFailedRequests(
                  [&]
                  {
                      FieldsSetClass set;
                      set.init({1, &record});
                  }),
              std::vector<std::string>{"Error in FieldsSetClass file at line 61: impossible to allocate fields. \n"});
}

TEST(FieldsSetClass, ABadPrecisionOfAnyFieldEndsTheProcess)
{
    std::vector<float> values(1);
    FieldStruct records[2] = {fieldRecord(atNodes, 1, values), fieldRecord(atNodes, 1, values)};
    records[1].precision = 3;
    FieldsSetClass set;
    EXPECT_PROCESS_END(set.init({2, records}), "Error in FieldClass file at line 71: bad value for itsPrecision \n");
}

TEST(FieldsSetClass, GivesBackItsFieldsWithTheirAverages)
{
    TestMesh mesh;
    mesh.addElement(2, referenceNodes(2));
    ModelClass model;
    mesh.loadInto(model);
    model.countEltsPerNode();
    std::vector<float> values{3};
    FieldStruct records[2] = {fieldRecord(atGaussPoints, 1, values), fieldRecord(atGaussPoints, 1, values)};
    const std::int64_t before = nbLiveAllocations();
    {
        FieldsSetClass set;
        set.init({2, records});
        for (FieldClass& field : set.fields())
        {
            ASSERT_EQ(field.interpoAtNodes(model), nullptr);
        }
        EXPECT_EQ(nbLiveAllocations(), before + 3);
    }
    EXPECT_EQ(nbLiveAllocations(), before);
}
