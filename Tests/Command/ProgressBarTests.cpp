// What the command shows while it works, on a terminal and in a file, with a clock that the tests set.
#include "ProgressBar.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace
{

using testing::EndsWith;
using veltrane::ProgressBar;
using veltrane::ProgressOutlet;

class ProgressBarTest : public testing::Test
{
protected:
    ProgressOutlet outlet(ProgressOutlet::Kind kind)
    {
        return {.kind = kind, .stream = stream, .now = [this] { return time; }};
    }

    void wait(double seconds)
    {
        time +=
            std::chrono::duration_cast<veltrane::StageTimes::Clock::duration>(std::chrono::duration<double>(seconds));
    }

    std::ostringstream stream;
    veltrane::StageTimes::Clock::time_point time{};
};

TEST_F(ProgressBarTest, DrawsOneLineOnATerminalAndTakesItAway)
{
    {
        ProgressBar bar(outlet(ProgressOutlet::Kind::terminal));
        bar.beginStage("reading source");
        const auto callback = bar.callback("interpolating");
        EXPECT_TRUE(callback({0, "title", "Pretreatment"}));
        EXPECT_TRUE(callback({5, "title", "Computation"}));
        EXPECT_TRUE(callback({50, "title", "Computation"}));
        EXPECT_TRUE(callback({100, "title", "finished"}));
    }
    const std::string clear = "\r\033[K";
    EXPECT_EQ(stream.str(), clear + "reading source ..." +                                                     //
                                clear + "preparing search ..." +                                               //
                                clear + "[                                        ]   0 %  preparing search" + //
                                clear + "interpolating ..." +                                                  //
                                clear + "[##                                      ]   5 %  interpolating" +    //
                                clear + "[####################                    ]  50 %  interpolating" +    //
                                clear + "[########################################] 100 %  interpolating" +    //
                                clear);
}

/// From 5 % to 24 % in 19 s: a second for each percent. From 5 % to 80 % in 7500 s: 100 s for each percent.
TEST_F(ProgressBarTest, EstimatesTheRemainingTimeFromTheStageSoFar)
{
    ProgressBar bar(outlet(ProgressOutlet::Kind::terminal));
    const auto callback = bar.callback("interpolating");
    wait(1000);
    callback({5, "", "Computation"});
    wait(0.5);
    callback({6, "", "Computation"});
    EXPECT_THAT(stream.str(), EndsWith("  6 %  interpolating")); // too early to say
    wait(18.5);
    callback({24, "", "Computation"});
    EXPECT_THAT(stream.str(), EndsWith(" 24 %  interpolating, 1 min 16 s left"));
    wait(7481);
    callback({80, "", "Computation"});
    EXPECT_THAT(stream.str(), EndsWith(" 80 %  interpolating, 33 min 20 s left"));
    callback({99, "", "Computation"});
    EXPECT_THAT(stream.str(), EndsWith(" 99 %  interpolating, 1 min 20 s left"));
    callback({100, "", "finished"});
    EXPECT_THAT(stream.str(), EndsWith("100 %  interpolating"));
}

TEST_F(ProgressBarTest, WritesALineForEachStageAndOneEveryTenSecondsIntoAFile)
{
    {
        ProgressBar bar(outlet(ProgressOutlet::Kind::lines));
        bar.beginStage("reading source");
        wait(30);
        const auto callback = bar.callback("interpolating");
        callback({0, "", "Pretreatment"});
        callback({5, "", "Computation"});
        for (int percent = 6; percent < 31; ++percent)
        {
            wait(1);
            callback({percent, "", "Computation"});
        }
        bar.beginStage("writing output");
    }
    EXPECT_EQ(stream.str(), "reading source ...\n"
                            "preparing search ...\n"
                            "interpolating ...\n"
                            "interpolating ... 15 %, 1 min 25 s left\n"
                            "interpolating ... 25 %, 1 min 15 s left\n"
                            "writing output ...\n");
}

TEST_F(ProgressBarTest, ShowsNothingIfNotWantedButKeepsTheTimes)
{
    ProgressBar bar(outlet(ProgressOutlet::Kind::none));
    bar.beginStage("reading source");
    wait(2);
    bar.callback("matching nodes")({5, "", "Computation"});
    wait(3);
    bar.beginStage("reading source"); // again, as with a series of files
    wait(4);
    bar.finish();
    wait(5);
    EXPECT_EQ(stream.str(), "");
    ASSERT_EQ(bar.times().times().size(), 2U);
    EXPECT_EQ(bar.times().times()[0].name, "reading source");
    EXPECT_DOUBLE_EQ(bar.times().times()[0].seconds, 6);
    EXPECT_EQ(bar.times().times()[1].name, "matching nodes");
    EXPECT_DOUBLE_EQ(bar.times().times()[1].seconds, 3);
    EXPECT_DOUBLE_EQ(bar.times().total(), 9);
}

} // namespace
