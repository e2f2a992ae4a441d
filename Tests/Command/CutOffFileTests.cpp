// Exodus files that end too early: the NetCDF library would take zeros for what is missing.
#include "CommandRunner.h"
#include "FileErrors.h"
#include "NetcdfStructure.h"
#include "TestGrids.h"

#include <vtkCellType.h>
#include <vtkExodusIIWriter.h>
#include <vtkNew.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <initializer_list>
#include <iterator>

namespace
{

void writeExodus(const std::filesystem::path& path)
{
    const auto grid = makeGrid(VTK_TETRA, 1);
    addDoubles(*grid, "T", linear);
    vtkNew<vtkExodusIIWriter> writer;
    writer->SetInputData(grid);
    writer->SetFileName(path.c_str());
    ASSERT_EQ(writer->Write(), 1);
}

bool isAccepted(const std::filesystem::path& path)
{
    try
    {
        veltrane::checkNetcdfSize(path);
        return true;
    }
    catch (const veltrane::BadFile&)
    {
        return false;
    }
}

TEST(CutOffExodus, IsRefusedWhereverItEnds)
{
    const CommandRunner runner;
    const std::filesystem::path file = runner.file("mesh.e");
    writeExodus(file);
    ASSERT_EQ(runner.run({"info", "mesh.e"}).status, 0);
    const auto size = std::filesystem::file_size(file);
    const std::string full = std::to_string(size);
    for (auto length = size - 1; length >= 4; --length)
    {
        std::filesystem::resize_file(file, length);
        ASSERT_FALSE(isAccepted(file)) << length;
        if (length == size - 1 || length == size - 8)
        {
            expectFailure(runner, 65,
                          "cannot read 'mesh.e': it has " + std::to_string(length) +
                              " bytes, but its header tells of " + full,
                          {"info", "mesh.e"});
        }
    }
    expectFailure(runner, 65, "cannot read 'mesh.e': it ends within its header", {"info", "mesh.e"});
    std::filesystem::resize_file(file, 3);
    expectFailure(runner, 65, "cannot read 'mesh.e': it is not an Exodus file", {"info", "mesh.e"});
}

TEST(CutOffExodus, BasedOnHdf5IsRefusedByItsLibrary)
{
    const CommandRunner runner;
    // Of version 2 with numbers of 8 bytes, for a file from 0 to 30275 that has nothing else.
    std::string heading("\x89HDF\r\n\x1a\n\2\10\10\0", 12);
    for (const unsigned value : {0U, ~0U, 30275U, 48U})
    {
        for (unsigned i = 0; i < 8; ++i)
        {
            heading += static_cast<char>(i < 4 ? value >> 8 * i & 255 : value == ~0U ? 255 : 0);
        }
    }
    std::ofstream(runner.file("mesh.e"), std::ios::binary) << heading;
    expectFailure(runner, 65, "cannot read 'mesh.e': it is not an Exodus file, or damaged or cut off",
                  {"info", "mesh.e"});
}

/// Puts a header together.
class Header
{
public:
    explicit Header(char version) : version_(version), bytes_(std::string("CDF") + version) {}

    Header& tag(unsigned value) { return number(value, 4); }
    Header& count(unsigned long long value) { return number(value, version_ == 5 ? 8 : 4); }
    Header& begin(unsigned long long value) { return number(value, version_ == 1 ? 4 : 8); }

    /// Of one to four letters, with what pads it.
    Header& name(const std::string& name)
    {
        count(name.size());
        bytes_ += name + std::string(4 - name.size(), '\0');
        return *this;
    }

    Header& noAttributes() { return tag(0).count(0); }

    /// The dimensions "rec", of the records, "n" and "m".
    Header& dimensions(unsigned long long n, unsigned long long m)
    {
        return tag(10).count(3).name("rec").count(0).name("n").count(n).name("m").count(m).noAttributes();
    }

    /// \param size  what the header says about it, which need not be true
    Header& variable(const std::string& itsName, std::initializer_list<unsigned> itsDimensions, unsigned type,
                     unsigned long long place, unsigned long long size = 0)
    {
        name(itsName).count(itsDimensions.size());
        for (const unsigned dimension : itsDimensions)
        {
            count(dimension);
        }
        return noAttributes().tag(type).count(size).begin(place);
    }

    const std::string& bytes() const { return bytes_; }

private:
    Header& number(unsigned long long value, int byteCount)
    {
        for (int i = byteCount - 1; i >= 0; --i)
        {
            bytes_ += static_cast<char>(value >> 8 * i & 255);
        }
        return *this;
    }

    char version_;
    std::string bytes_;
};

class NetcdfSize : public testing::TestWithParam<char>
{
protected:
    Header header() const { return Header(GetParam()); }

    /// With zeros up to a length of the whole.
    bool isAcceptedWith(const Header& header, std::uintmax_t length) const
    {
        std::ofstream(file_, std::ios::binary) << header.bytes();
        return isAcceptedOf(length);
    }

    void expectEnd(const Header& header, std::uintmax_t end) const
    {
        EXPECT_TRUE(isAcceptedWith(header, end + 3));
        EXPECT_TRUE(isAcceptedOf(end));
        EXPECT_FALSE(isAcceptedOf(end - 1));
        for (std::uintmax_t length = header.bytes().size(); length >= 4; --length)
        {
            EXPECT_FALSE(isAcceptedOf(length)) << length;
        }
    }

private:
    bool isAcceptedOf(std::uintmax_t length) const
    {
        std::filesystem::resize_file(file_, length);
        return isAccepted(file_);
    }

    TemporaryDirectory directory_;
    std::filesystem::path file_ = directory_ / "mesh.e";
};

constexpr unsigned byteType = 1;
constexpr unsigned shortType = 3;
constexpr unsigned doubleType = 6;

TEST_P(NetcdfSize, FollowsFromTheVariableThatEndsLast)
{
    // 5 bytes from 1000 on, and 5 * 7 doubles from 600 on
    expectEnd(header()
                  .count(0)
                  .dimensions(5, 7)
                  .tag(11)
                  .count(2)
                  .variable("b", {1}, byteType, 1000)
                  .variable("a", {1, 2}, doubleType, 600),
              1005);
    expectEnd(header()
                  .count(0)
                  .dimensions(5, 7)
                  .tag(11)
                  .count(2)
                  .variable("b", {1}, byteType, 800)
                  .variable("a", {1, 2}, doubleType, 600),
              880);
    expectEnd(header().count(0).dimensions(5, 7).tag(11).count(1).variable("a", {}, doubleType, 600), 608);
}

TEST_P(NetcdfSize, OfRecordsOfSeveralVariablesIsPadded)
{
    // per record 3 shorts in 8 bytes and 3 bytes in 4; the last record's 3 bytes begin at 1008 + 2 * 12
    expectEnd(header()
                  .count(3)
                  .dimensions(3, 1)
                  .tag(11)
                  .count(2)
                  .variable("a", {0, 1}, shortType, 1000)
                  .variable("b", {0, 1}, byteType, 1008),
              1035);
}

TEST_P(NetcdfSize, OfRecordsOfOneVariableIsNot)
{
    // 3 records of 3 shorts
    expectEnd(header().count(3).dimensions(3, 1).tag(11).count(1).variable("a", {0, 1}, shortType, 1000), 1018);
}

TEST_P(NetcdfSize, WithoutRecordsIsThatOfTheOthers)
{
    const unsigned long long unknown = GetParam() == 5 ? ~0ULL : 0xFFFFFFFF;
    for (const unsigned long long recordCount : {0ULL, unknown}) // which then follows from the size
    {
        expectEnd(header()
                      .count(recordCount)
                      .dimensions(3, 1)
                      .tag(11)
                      .count(2)
                      .variable("a", {0, 1}, shortType, 1000)
                      .variable("b", {1}, byteType, 900),
                  903);
    }
}

TEST_P(NetcdfSize, OfMoreThanCanBeCountedIsTooLarge)
{
    const Header large =
        header().count(0).dimensions(0x7FFFFFFF, 0x7FFFFFFF).tag(11).count(1).variable("a", {1, 2, 1}, doubleType, 600);
    EXPECT_FALSE(isAcceptedWith(large, 5000));
}

TEST_P(NetcdfSize, OfWhatIsNoHeaderIsLeftToTheLibrary)
{
    EXPECT_TRUE(isAcceptedWith(header().count(0).tag(99).count(1), 5000));
    EXPECT_TRUE(
        isAcceptedWith(header().count(0).dimensions(5, 7).tag(11).count(1).variable("a", {3}, byteType, 9000), 5000));
    EXPECT_TRUE(isAcceptedWith(header().count(0).dimensions(5, 7).tag(11).count(1).variable("a", {1}, 12, 9000), 5000));
}

INSTANTIATE_TEST_SUITE_P(Versions, NetcdfSize, testing::Values('\1', '\2', '\5'));

} // namespace
