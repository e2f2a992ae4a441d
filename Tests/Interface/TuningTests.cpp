// The small files that change settings of one call.
#include "Scenes.h"

namespace
{
class Tuning : public Host
{
protected:
    static constexpr const char* transferFile = "mappingInputs.txt";

    /// The bucket count, from the first line of the log.
    static long long bucketsOf(const Outcome& outcome)
    {
        const std::string start = "Total number of buckets = ";
        EXPECT_EQ(outcome.log().compare(0, start.size(), start), 0);
        return std::stoll(outcome.log().substr(start.size()));
    }

    /// Unit hexahedra, so that buckets are 1.02 wide, and a target of extent 4.7: 4.794 / 1.02 = 4.7, five buckets
    /// along each axis; three when they are twice as wide, two when four times, one from eight times on.
    static Transfer overManyBuckets()
    {
        return transferOf(linear, box(element::hexahedron, {0, 0, 0}, {6, 6, 6}, {6, 6, 6}),
                          box(element::hexahedron, {0.65F, 0.65F, 0.65F}, {5.35F, 5.35F, 5.35F}));
    }

    /// A point 0.01 reference units outside a hexahedron of side 2, in a cloud with default -1.
    static Transfer justOutside()
    {
        Transfer transfer;
        transfer.mode = 1;
        transfer.source = referenceElement(element::hexahedron);
        transfer.sourceFields = {{.values = constant(8, 8.0)}};
        transfer.target = cloud({{1.01F, 0, 0}});
        transfer.targetFields = {{.defaultValue = -1.0F}};
        return transfer;
    }

    static Outcome runWith(const Transfer& transfer, const std::string& contents)
    {
        const Outcome outcome = run(transfer, {.files = {{transferFile, contents}}});
        // The file is only read.
        EXPECT_EQ(outcome.files.at(transferFile), contents);
        return outcome;
    }
};

TEST_F(Tuning, withoutAFileTheDefaultsHold)
{
    EXPECT_EQ(bucketsOf(run(overManyBuckets())), 125);
    EXPECT_EQ(run(justOutside()).fields[0][0], -1.0);
    EXPECT_EQ(run(reachedByWideningOnly()).code, 0);
}

TEST_F(Tuning, theFirstNumberWidensTheElements)
{
    EXPECT_EQ(runWith(reachedByWideningOnly(), "0.1").code, 0);
    // Widened by a hundredth, the element ends at 1.0202, before the bucket that begins at 1.05.
    EXPECT_EQ(runWith(reachedByWideningOnly(), "0.01").code, 2);
    EXPECT_EQ(runWith(reachedByWideningOnly(), "0.03").code, 2);
    EXPECT_EQ(runWith(reachedByWideningOnly(), "0.05").code, 0);
}

TEST_F(Tuning, theSecondNumberIsTheToleranceOfReferenceCoordinates)
{
    // The margin of the inside test is twice the tolerance.
    EXPECT_EQ(runWith(justOutside(), "0.1 0.004").fields[0][0], -1.0);
    EXPECT_NEAR(runWith(justOutside(), "0.1 0.006").fields[0][0], 8.0, 1e-4);
}

TEST_F(Tuning, theThirdNumberLimitsTheBuckets)
{
    const Outcome untuned = run(overManyBuckets());
    for (const auto& [limit, buckets] : std::vector<std::pair<std::string, long long>>{
             {"125", 125}, {"124", 27}, {"27", 27}, {"26", 8}, {"8", 8}, {"7", 1}, {"1", 1}, {"0", 1}, {"-3", 1}})
    {
        const Outcome outcome = runWith(overManyBuckets(), "0.1 0.001 " + limit);
        EXPECT_EQ(outcome.code, 0);
        EXPECT_EQ(bucketsOf(outcome), buckets) << limit;
        expectNear(outcome.fields[0], untuned.fields[0], 1e-4);
    }
}

TEST_F(Tuning, allThreeNumbersAreReadWhateverTheWhitespace)
{
    Transfer transfer = overManyBuckets();
    transfer.target = cloud({{0.75F, 0.75F, 0.75F}, {5.25F, 5.25F, 5.25F}, {5.0F, 6.002F, 5.0F}});
    transfer.mode = 1;
    transfer.targetFields[0].defaultValue = -1.0F;
    const std::string contents = "  0.2\t\n\n 0.004\n\t 50 \n";
    const Outcome outcome = runWith(transfer, contents);
    EXPECT_NEAR(outcome.fields[0][2], linear({5.0F, 6.002F, 5.0F}), 1e-3);
    EXPECT_LE(bucketsOf(outcome), 50);
    const Outcome untuned = run(transfer);
    EXPECT_EQ(untuned.fields[0][2], -1.0);
    EXPECT_GT(bucketsOf(untuned), 50);
}

TEST_F(Tuning, holdsForOneCallOnly)
{
    EXPECT_EQ(bucketsOf(runWith(overManyBuckets(), "0.1 0.01 8")), 8);
    EXPECT_EQ(bucketsOf(run(overManyBuckets())), 125);
    EXPECT_NEAR(runWith(justOutside(), "0.1 0.01 8").fields[0][0], 8.0, 1e-4);
    EXPECT_EQ(run(justOutside()).fields[0][0], -1.0);
}

TEST_F(Tuning, aSingleNumberChangesTheFirstSettingOnly)
{
    EXPECT_EQ(runWith(reachedByWideningOnly(), "0.01\n").code, 2);
    EXPECT_EQ(runWith(justOutside(), "0.01\n").fields[0][0], -1.0);
    EXPECT_EQ(bucketsOf(runWith(overManyBuckets(), "0.01\n")), 125);
}

TEST_F(Tuning, twoNumbersLeaveTheLimitOfBuckets)
{
    EXPECT_NEAR(runWith(justOutside(), "0.1 0.01").fields[0][0], 8.0, 1e-4);
    EXPECT_EQ(bucketsOf(runWith(overManyBuckets(), "0.1 0.01")), 125);
}

TEST_F(Tuning, whatCannotBeReadChangesNothing)
{
    for (const std::string& contents : {std::string("bucket factor: 0.01 0.01 8"), std::string(), std::string("\n\n"),
                                        std::string("\0\x01\xff", 3), std::string(100000, 'x')})
    {
        EXPECT_EQ(runWith(reachedByWideningOnly(), contents).code, 0);
        EXPECT_EQ(runWith(justOutside(), contents).fields[0][0], -1.0);
        EXPECT_EQ(bucketsOf(runWith(overManyBuckets(), contents)), 125);
    }
}

TEST_F(Tuning, readingStopsAtTheFirstThingThatIsNoNumber)
{
    EXPECT_EQ(runWith(reachedByWideningOnly(), "0.01 x 8").code, 2);
    EXPECT_EQ(runWith(justOutside(), "0.1 x 0.01").fields[0][0], -1.0);
    EXPECT_EQ(bucketsOf(runWith(overManyBuckets(), "0.1 x 8")), 125);
    // A count of buckets is a whole number: what follows the 8 is not read.
    EXPECT_EQ(bucketsOf(runWith(overManyBuckets(), "0.1 0.001 8.9e9")), 8);
}

TEST_F(Tuning, enormousNumbersAreHarmless)
{
    EXPECT_EQ(runWith(reachedByWideningOnly(), "1e30").code, 0);
    EXPECT_EQ(runWith(reachedByWideningOnly(), "1e99").code, 0);
    EXPECT_EQ(bucketsOf(runWith(overManyBuckets(), "0.1 0.001 9223372036854775807")), 125);
    EXPECT_EQ(bucketsOf(runWith(overManyBuckets(), "0.1 0.001 99999999999999999999999999")), 125);
    EXPECT_EQ(bucketsOf(runWith(overManyBuckets(), "0.1 0.001 -99999999999999999999999999")), 1);
}

TEST_F(Tuning, aToleranceOfZeroLeavesEveryPointAtTheFirstGuess)
{
    // No iteration is done: the point takes the value in the middle of the element whose box holds it.
    Transfer transfer = transferOf(linear, roomySource(), cloud({{0.5F, 1.5F, 3.5F}}));
    expectNear(runWith(transfer, "0.1 0").fields[0], {linear({1, 1, 3})}, 1e-5);
}

TEST_F(Tuning, aDirectoryOfThatNameIsNoFile)
{
    EXPECT_EQ(bucketsOf(run(overManyBuckets(), {.files = {{"mappingInputs.txt/occupant", ""}}})), 125);
}

TEST_F(Tuning, theFilesOfOtherComputationsHaveNoEffect)
{
    const std::map<std::string, std::string> files = {{"nodToNodInputs.txt", "0.01 0.01 8"},
                                                      {"GPToGPInputs.txt", "0.01 0.01 8"}};
    EXPECT_EQ(run(reachedByWideningOnly(), {.files = files}).code, 0);
    EXPECT_EQ(run(justOutside(), {.files = files}).fields[0][0], -1.0);
    EXPECT_EQ(bucketsOf(run(overManyBuckets(), {.files = files})), 125);
}
} // namespace
