#include "MappingStringUtilities.h"
#include "AllocationFailure.h"
#include "ProcessEnd.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>

namespace
{
struct CloseFile
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;
} // namespace

TEST(MappingStringUtilities, AMessageHasRoomForAThousandBytes)
{
    EXPECT_EQ(messageCapacity, 1000);
}

TEST(MappingStringUtilities, AStringIsAllocatedWithTheBytesAskedFor)
{
    const std::int64_t before = nbLiveAllocations();
    char* text = nullptr;
    allocateString(&text, 40, "caller()");
    ASSERT_NE(text, nullptr);
    std::fill_n(text, 40, 'x');
    EXPECT_EQ(nbLiveAllocations(), before + 1);
    releaseString(text);
    EXPECT_EQ(nbLiveAllocations(), before);
    releaseString(nullptr);
}

TEST(MappingStringUtilities, AStringWithoutBytesEndsTheProcess)
{
    char* text = nullptr;
    EXPECT_PROCESS_END(allocateString(&text, 0, "caller()"),
                       "Error in MappingStringUtilities file at line 14: allocation of an empty string in caller() is "
                       "not possible\n");
}

TEST(MappingStringUtilities, AStringThatIsAlreadySetEndsTheProcess)
{
    char used = 'u';
    char* text = &used;
    EXPECT_PROCESS_END(allocateString(&text, 1000, "Some::caller()"),
                       "Error in MappingStringUtilities file at line 21: allocation of a string is not possible in "
                       "Some::caller() because the string pointer is already used\n");
}

TEST(MappingStringUtilities, TheMissingSizeIsNoticedBeforeTheUsedPointer)
{
    char used = 'u';
    char* text = &used;
    EXPECT_PROCESS_END(allocateString(&text, 0, "caller()"),
                       "Error in MappingStringUtilities file at line 14: allocation of an empty string in caller() is "
                       "not possible\n");
}

TEST(MappingStringUtilities, AStringThatCannotBeAllocatedEndsTheProcess)
{
    char* text = nullptr;
    EXPECT_PROCESS_END(
        {
            const AllocationFailure failure(1);
            allocateString(&text, 1000, "caller()");
        },
        "Error in MappingStringUtilities file at line 30: impossible to allocate a string in caller()\n");
}

TEST(MappingStringUtilities, MessagesGoToStandardOutput)
{
    testing::internal::CaptureStdout();
    printMessage("%s %d %.2f\n", "text", 7, 0.5);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "text 7 0.50\n");
}

TEST(MappingStringUtilities, AFatalMessageEndsTheProcessWithStatusZero)
{
    EXPECT_PROCESS_END(endProcess("the end of %s, %d\n", "it", 3), "the end of it, 3\n");
}

TEST(MappingStringUtilities, AMessageIsFormattedIntoItsBuffer)
{
    char buffer[messageCapacity];
    formatMessage(buffer, "%s-%d", "a", 12);
    EXPECT_STREQ(buffer, "a-12");
}

TEST(MappingStringUtilities, AMessageNeverLeavesItsBuffer)
{
    const std::string tooLong(1500, 'x');
    char buffer[messageCapacity + 1];
    buffer[messageCapacity] = '!';
    formatMessage(buffer, "%s", tooLong.c_str());
    EXPECT_EQ(std::string(buffer), std::string(999, 'x'));
    EXPECT_EQ(buffer[messageCapacity], '!');
}

TEST(MappingStringUtilities, FilesAreWrittenAndRead)
{
    const File file(std::tmpfile());
    ASSERT_TRUE(file);
    printToFile(file.get(), "%d %s", 42, "words");
    std::rewind(file.get());
    int number = 0;
    int unread = 5;
    EXPECT_EQ(readFromFile(file.get(), "%d", &number), 1);
    EXPECT_EQ(number, 42);
    EXPECT_EQ(readFromFile(file.get(), "%d", &unread), 0);
    EXPECT_EQ(unread, 5);
}

TEST(MappingStringUtilities, TheMagnitudeOfASingleHasNoSign)
{
    EXPECT_EQ(absoluteValue(-2.5F), 2.5F);
    EXPECT_EQ(absoluteValue(2.5F), 2.5F);
    EXPECT_FALSE(std::signbit(absoluteValue(-0.0F)));
}

TEST(MessageBuffer, IsGivenBackAtItsEnd)
{
    const std::int64_t before = nbLiveAllocations();
    {
        MessageBuffer buffer("caller()");
        std::fill_n(buffer.text(), messageCapacity, 'x');
    }
    EXPECT_EQ(nbLiveAllocations(), before);
}

TEST(MessageBuffer, AReleasedTextOutlivesIt)
{
    char* text = nullptr;
    {
        MessageBuffer buffer("caller()");
        formatMessage(buffer.text(), "kept");
        text = buffer.release();
        EXPECT_EQ(buffer.text(), nullptr);
    }
    EXPECT_STREQ(text, "kept");
    releaseString(text);
}

TEST(MessageBuffer, NamesItsCallerInTheFault)
{
    EXPECT_PROCESS_END(
        {
            const AllocationFailure failure(1);
            MessageBuffer buffer("Some::operation()");
        },
        "Error in MappingStringUtilities file at line 30: impossible to allocate a string in Some::operation()\n");
}
