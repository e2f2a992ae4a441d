// The figures that summaries and reports give of a field.
#include "FieldStatistics.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{

using veltrane::ComponentStatistics;
using veltrane::Field;
using veltrane::Location;
using veltrane::statisticsOf;

TEST(FieldStatistics, AreOfOneComponent)
{
    const Field field("U", Location::nodes, 2, std::vector<float>{1, 10, 4, 20, 1, 60});
    const ComponentStatistics first = statisticsOf(field, 0);
    EXPECT_EQ(first.min, 1);
    EXPECT_EQ(first.max, 4);
    EXPECT_EQ(first.mean, 2);
    EXPECT_EQ(first.unusableCount, 0U);
    EXPECT_EQ(statisticsOf(field, 1).mean, 30);
}

TEST(FieldStatistics, LeaveOutWhatIsNoUsableValue)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const Field field("T", Location::nodes, 1,
                      std::vector<double>{std::nan(""), 3, -infinity, infinity, -99990001156096.0, -5});
    const ComponentStatistics figures = statisticsOf(field, 0);
    EXPECT_EQ(figures.min, -5);
    EXPECT_EQ(figures.max, 3);
    EXPECT_EQ(figures.mean, -1);
    EXPECT_EQ(figures.unusableCount, 4U);
}

TEST(FieldStatistics, AreNoNumbersWithoutAnyUsableValue)
{
    const ComponentStatistics figures =
        statisticsOf(Field("T", Location::nodes, 1, std::vector<float>{std::nanf("")}), 0);
    EXPECT_TRUE(std::isnan(figures.min));
    EXPECT_TRUE(std::isnan(figures.max));
    EXPECT_TRUE(std::isnan(figures.mean));
    EXPECT_EQ(figures.unusableCount, 1U);
}

} // namespace
