#include "MappingClass.h"
#include "TestInOwnDirectory.h"

#include <gtest/gtest.h>

namespace
{
struct Reader
{
    const char* fileName;
    void (MappingClass::*read)();
};

const Reader readers[] = {{"mappingInputs.txt", &MappingClass::readMappingInputs},
                          {"nodToNodInputs.txt", &MappingClass::readNodToNodInputs},
                          {"GPToGPInputs.txt", &MappingClass::readGPToGPInputs}};

class MappingTuningTest : public TestInOwnDirectory
{
protected:
    /// What the settings are after a file with these contents was read.
    static void expectSettings(const std::string& contents, float bucketFactor, float refCoordTolerance,
                               std::int64_t maxNbBuckets)
    {
        writeFile("mappingInputs.txt", contents);
        MappingClass mapping;
        mapping.readMappingInputs();
        EXPECT_EQ(mapping.itsBucketFactor, bucketFactor) << contents;
        EXPECT_EQ(mapping.itsRefCoordTolerance, refCoordTolerance) << contents;
        EXPECT_EQ(mapping.itsBucketSpace.itsMaxNbBuckets, maxNbBuckets) << contents;
        EXPECT_EQ(mapping.itsBoxMarginRatio, 0.01F) << contents;
    }
};
} // namespace

TEST_F(MappingTuningTest, WithoutAFileTheSettingsStay)
{
    for (const Reader& reader : readers)
    {
        MappingClass mapping;
        (mapping.*reader.read)();
        EXPECT_EQ(mapping.itsBucketFactor, 0.1F);
        EXPECT_EQ(mapping.itsRefCoordTolerance, 0.001F);
        EXPECT_EQ(mapping.itsBucketSpace.itsMaxNbBuckets, 10000000);
    }
    EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST_F(MappingTuningTest, EachComputationReadsItsOwnFile)
{
    writeFile("mappingInputs.txt", "1 10 100");
    writeFile("nodToNodInputs.txt", "2 20 200");
    writeFile("GPToGPInputs.txt", "3 30 300");
    for (int i = 0; i < 3; ++i)
    {
        MappingClass mapping;
        (mapping.*readers[i].read)();
        EXPECT_EQ(mapping.itsBucketFactor, static_cast<float>(i + 1));
        EXPECT_EQ(mapping.itsRefCoordTolerance, static_cast<float>(10 * (i + 1)));
        EXPECT_EQ(mapping.itsBucketSpace.itsMaxNbBuckets, 100 * (i + 1));
    }
}

TEST_F(MappingTuningTest, ThreeNumbersSetThreeSettings)
{
    expectSettings("0.25 0.5 1234\n", 0.25F, 0.5F, 1234);
    expectSettings("\n\n  2.5e-1\n\t5E-1\n-7 and more", 0.25F, 0.5F, -7);
    expectSettings("0.1 0.3 9000000000000", 0.1F, 0.3F, 9000000000000);
}

TEST_F(MappingTuningTest, AShortFileChangesTheFirstSettingsOnly)
{
    expectSettings("0.25", 0.25F, 0.001F, 10000000);
    expectSettings("0.25 0.5\n", 0.25F, 0.5F, 10000000);
    expectSettings("", 0.1F, 0.001F, 10000000);
}

TEST_F(MappingTuningTest, WhatCannotBeReadStaysAsItWas)
{
    expectSettings("nonsense 0.5 1234", 0.1F, 0.001F, 10000000);
    expectSettings("0.25 nonsense 1234", 0.25F, 0.001F, 10000000);
    expectSettings("0.25 0.5 many", 0.25F, 0.5F, 10000000);
}

TEST_F(MappingTuningTest, ANumberEndsWhereItsFormatEnds)
{
    // The comma is what the second number finds; the third one is read up to its point.
    expectSettings("0.25,0.5 1234", 0.25F, 0.001F, 10000000);
    expectSettings("0.25 0.5 12.75", 0.25F, 0.5F, 12);
}

TEST_F(MappingTuningTest, TheNextObjectStartsFromTheUsualSettings)
{
    expectSettings("0.25 0.5 1234", 0.25F, 0.5F, 1234);
    const MappingClass mapping;
    EXPECT_EQ(mapping.itsBucketFactor, 0.1F);
    EXPECT_EQ(mapping.itsRefCoordTolerance, 0.001F);
    EXPECT_EQ(mapping.itsBucketSpace.itsMaxNbBuckets, 10000000);
}

TEST_F(MappingTuningTest, TheFileIsLeftAsItIs)
{
    expectSettings("0.25 0.5 1234\n", 0.25F, 0.5F, 1234);
    EXPECT_EQ(contentsOf("mappingInputs.txt"), "0.25 0.5 1234\n");
}
