#include "ScratchRegistry.h"

#include <gtest/gtest.h>

namespace
{

std::wstring ScratchPath()
{
    return L"Software\\OvScratch" + std::to_wstring(::GetCurrentProcessId());
}

void Redirect(HKEY hRoot, const wchar_t* szName)
{
    HKEY hKey = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, ::RegCreateKeyExW(HKEY_CURRENT_USER, (ScratchPath() + L"\\" + szName).c_str(), 0, nullptr,
                                               REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr, &hKey, nullptr));
    EXPECT_EQ(ERROR_SUCCESS, ::RegOverridePredefKey(hRoot, hKey));
    ::RegCloseKey(hKey);
}

} // namespace

CScratchRegistry::CScratchRegistry()
{
    Redirect(HKEY_LOCAL_MACHINE, L"Machine");
    Redirect(HKEY_CURRENT_USER, L"User"); // last, as the scratch keys lie below the real one
}

CScratchRegistry::~CScratchRegistry()
{
    ::RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    ::RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    EXPECT_EQ(ERROR_SUCCESS, ::RegDeleteTreeW(HKEY_CURRENT_USER, ScratchPath().c_str()));
}
