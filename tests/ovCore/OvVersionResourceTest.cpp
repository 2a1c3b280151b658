// This program itself carries the project's version.
#include "ovCore/OvVersionResource.h"

#include "ovCore/OvFile.h"
#include "ovCore/OvVersion.h"
#include "TestFile.h"

#include <gtest/gtest.h>

namespace
{

std::wstring VersionIn(COvVersionResource& resource)
{
    COvVersion version(9, 9, 9, 9);
    const bool bFound = resource.GetVersion(version);
    return (bFound ? L"" : L"none: ") + version.AsStr();
}

template <class Source>
std::wstring VersionOf(const Source& source)
{
    COvVersionResource resource;
    const bool bOpened = resource.Open(source);
    return (bOpened ? L"" : L"not opened, ") + VersionIn(resource);
}

const wchar_t s_szNone[] = L"not opened, none: 0.0.0.0";

} // namespace

TEST(OvVersionResource, ReadsTheFixedVersion)
{
    EXPECT_EQ(OV_EXPECTED_VERSION, VersionOf(std::wstring())); // the process's executable
    EXPECT_EQ(OV_EXPECTED_VERSION, VersionOf(COvFile::GetModuleFileNameW(nullptr)));
    EXPECT_EQ(OV_EXPECTED_VERSION, VersionOf(::GetModuleHandleW(nullptr)));
}

TEST(OvVersionResource, WithoutAVersionThereIsNone)
{
    const CTestFile file("OvVersionResourceTest.txt");
    int nNoModule = 0;
    EXPECT_EQ(s_szNone, VersionOf(file.Name()));
    EXPECT_EQ(s_szNone, VersionOf(file.Name() + L"x"));
    EXPECT_EQ(s_szNone, VersionOf(file.Folder()));
    EXPECT_EQ(s_szNone, VersionOf(HMODULE{ nullptr }));
    EXPECT_EQ(s_szNone, VersionOf(reinterpret_cast<HMODULE>(&nNoModule)));
    COvVersionResource resource;
    EXPECT_EQ(L"none: 0.0.0.0", VersionIn(resource));
}

TEST(OvVersionResource, KeepsWhatItHasUntilAnotherIsRead)
{
    COvVersionResource resource;
    ASSERT_TRUE(resource.Open(std::wstring()));
    EXPECT_FALSE(resource.Open(L"no such file"));
    EXPECT_EQ(OV_EXPECTED_VERSION, VersionIn(resource));
    ASSERT_TRUE(resource.Open(std::wstring()));
    EXPECT_EQ(OV_EXPECTED_VERSION, VersionIn(resource));
}

TEST(OvVersionResource, QueriesPartsThatExist)
{
    COvVersionResource resource;
    void* pValue = nullptr;
    UINT nLength = 0;
    EXPECT_FALSE(resource.Query(L"\\", &pValue, &nLength));
    ASSERT_TRUE(resource.Open(std::wstring()));
    ASSERT_TRUE(resource.Query(L"\\", &pValue, &nLength));
    EXPECT_EQ(sizeof(VS_FIXEDFILEINFO), nLength);
    EXPECT_EQ(0xFEEF04BDu, static_cast<const VS_FIXEDFILEINFO*>(pValue)->dwSignature);
    EXPECT_FALSE(resource.Query(L"\\NoSuchPart", &pValue, &nLength));
}
