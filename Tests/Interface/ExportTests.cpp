// What the shared library exports, and what it says about itself.
#include "LibraryUnderTest.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <set>
#include <sstream>
#include <string>
#include <type_traits>

namespace
{
std::string outputOf(const std::string& command)
{
    std::string output;
    std::FILE* pipe = popen(command.c_str(), "r");
    std::array<char, 4096> buffer{};
    for (std::size_t count = 0; (count = std::fread(buffer.data(), 1, buffer.size(), pipe)) != 0;)
    {
        output.append(buffer.data(), count);
    }
    EXPECT_EQ(pclose(pipe), 0) << command;
    return output;
}

TEST(Exports, areTheDocumentedFunctionsAndNothingElse)
{
    std::istringstream listing(outputOf(VELTRANE_NM " -D --defined-only '" VELTRANE_LIBRARY "'"));
    std::set<std::string> exported;
    std::string address;
    std::string kind;
    std::string name;
    while (listing >> address >> kind >> name)
    {
        EXPECT_EQ(kind, "T") << name;
        exported.insert(name);
    }
    EXPECT_EQ(exported, (std::set<std::string>{"FE3DMeshToFE3DMesh_VariablesInterpolation", pointCloudEntryName,
                                               "FE3DMeshToFE3DMesh_NodeToNodeMapping",
                                               "FE3DMeshToFE3DMesh_GPToGPMapping", "Veltrane_get_module_info"}));
}

#ifdef __SANITIZE_ADDRESS__
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

TEST(SharedObject, needsNothingButTheRuntimesOfCAndCpp)
{
    const std::set<std::string> runtimes = {"libstdc++.so.6", "libm.so.6", "libgcc_s.so.1", "libc.so.6",
                                            "ld-linux-x86-64.so.2"};
    std::istringstream listing(outputOf(VELTRANE_READELF " --dynamic --wide '" VELTRANE_LIBRARY "'"));
    int nbNeeded = 0;
    for (std::string line; std::getline(listing, line);)
    {
        if (line.find("(NEEDED)") != std::string::npos)
        {
            ++nbNeeded;
            const std::string name = line.substr(line.find('[') + 1, line.find(']') - line.find('[') - 1);
            const bool isSanitizer = isSanitized && (name.starts_with("libasan") || name.starts_with("libubsan"));
            EXPECT_TRUE(runtimes.contains(name) || isSanitizer) << name;
        }
    }
    EXPECT_GT(nbNeeded, 0);
}

TEST(SharedObject, itsCodeIsNeverChangedByTheLoader)
{
    const std::string listing = outputOf(VELTRANE_READELF " --dynamic --program-headers --wide '" VELTRANE_LIBRARY "'");
    EXPECT_EQ(listing.find("TEXTREL"), std::string::npos);
    EXPECT_NE(listing.find(" R E "), std::string::npos);
    EXPECT_EQ(listing.find(" RWE "), std::string::npos);
}

TEST(Exports, thePointCloudEntryKeepsItsParameterList)
{
    // Its exported name encodes these types in this order.
    using Expected =
        void (*)(int, float, int, int, float(*)[3], int**, int*, int, int*, int*, int, float(*)[3], int, int*, int*,
                 int*, FieldsSetStruct, FieldsSetStruct, char*, int*, int (*)(int, char*, char*, int));
    EXPECT_TRUE((std::is_same_v<decltype(&FE3DMEshToPtCloud_VariablesInterpolation), Expected>));
    EXPECT_EQ(outputOf("c++filt " + std::string(pointCloudEntryName)),
              "FE3DMEshToPtCloud_VariablesInterpolation(int, float, int, int, float (*) [3], int**, int*, int, int*, "
              "int*, int, float (*) [3], int, int*, int*, int*, FieldsSetStruct, FieldsSetStruct, char*, int*, int "
              "(*)(int, char*, char*, int))\n");
}

TEST(Records, haveTheLayoutOfTheInterface)
{
    EXPECT_EQ(sizeof(FieldsSetStruct), 16U);
    EXPECT_EQ(offsetof(FieldsSetStruct, nbFields), 0U);
    EXPECT_EQ(offsetof(FieldsSetStruct, fields), 8U);
    EXPECT_EQ(sizeof(FieldStruct), 144U);
    EXPECT_EQ(offsetof(FieldStruct, name), 0U);
    EXPECT_EQ(offsetof(FieldStruct, matlStateFlag), 100U);
    EXPECT_EQ(offsetof(FieldStruct, location), 104U);
    EXPECT_EQ(offsetof(FieldStruct, nbComponents), 108U);
    EXPECT_EQ(offsetof(FieldStruct, precision), 112U);
    EXPECT_EQ(offsetof(FieldStruct, valuesFloat), 120U);
    EXPECT_EQ(offsetof(FieldStruct, valuesDouble), 128U);
    EXPECT_EQ(offsetof(FieldStruct, defaultValueFloat), 136U);
    EXPECT_EQ(offsetof(FieldStruct, defaultValueDouble), 140U);
}

TEST(ModuleInformation, kindAndVersion)
{
    EXPECT_STREQ(libraryUnderTest().moduleInfo(0), "Dynamic linked library");
    EXPECT_STREQ(libraryUnderTest().moduleInfo(1), "24.0.0.79dbf165755");
}

TEST(ModuleInformation, anyOtherNumberGivesTheBuildIdentification)
{
    const std::string identification = libraryUnderTest().moduleInfo(2);
    EXPECT_NE(identification.find("Veltrane"), std::string::npos) << identification;
    EXPECT_NE(identification.find("24.0.0.79dbf165755"), std::string::npos) << identification;
    EXPECT_EQ(identification.find('\n'), std::string::npos) << identification;
    // The marker that tools search for in the binary is not part of it.
    EXPECT_EQ(identification.find("@(#)"), std::string::npos) << identification;
    for (const int what : {-1, 3, 1000, 2147483647, -2147483647 - 1})
    {
        EXPECT_EQ(libraryUnderTest().moduleInfo(what), identification) << what;
    }
}

TEST(ModuleInformation, staysTheSameText)
{
    EXPECT_EQ(libraryUnderTest().moduleInfo(1), libraryUnderTest().moduleInfo(1));
}
} // namespace
