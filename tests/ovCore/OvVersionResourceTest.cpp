// This program itself carries the project's version.
#include "ovCore/OvVersionResource.h"

#include "ovCore/OvVersion.h"
#include "TestFile.h"

#include <gtest/gtest.h>

TEST(OvVersionResource, ReadsTheFixedVersionAndKeepsItUntilAnotherIsRead)
{
    const CTestFile file("OvVersionResourceTest.txt");
    COvVersionResource resource;
    COvVersion version(9, 9, 9, 9);
    EXPECT_FALSE(resource.GetVersion(version));
    EXPECT_EQ(L"0.0.0.0", version.AsStr());
    ASSERT_TRUE(resource.Open(::GetModuleHandleW(nullptr)));
    ASSERT_TRUE(resource.Open(std::wstring())); // the process's executable
    for (const std::wstring& strNone : { file.Name(), file.Name() + L"x", file.Folder(), std::wstring(L"\\\\srv") })
        EXPECT_FALSE(resource.Open(strNone)) << strNone;
    int nNoModule = 0;
    EXPECT_FALSE(resource.Open(HMODULE{ nullptr }));
    EXPECT_FALSE(resource.Open(reinterpret_cast<HMODULE>(&nNoModule)));
    EXPECT_TRUE(resource.GetVersion(version));
    EXPECT_EQ(OV_EXPECTED_VERSION, version.AsStr());
    void* pValue = nullptr;
    UINT nLength = 0;
    EXPECT_FALSE(resource.Query(L"\\NoSuchPart", &pValue, &nLength));
}
