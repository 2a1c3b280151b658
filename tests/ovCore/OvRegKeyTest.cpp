#include "ovCore/OvRegKey.h"

#include "ovCore/OVProcessInfo.h"
#include "Raised.h"
#include "ScratchRegistry.h"

#include <functional>
#include <gtest/gtest.h>
#include <vector>

namespace
{

const wchar_t s_szPath[] = L"SOFTWARE\\OvRegKeyTest";
const wchar_t s_szValuePath[] = L"HKLM\\SOFTWARE\\OvRegKeyTest\\v";
constexpr DWORD NO_PROCESS = 0;
constexpr DWORD NO_SUCH_PROCESS = 0xFFFFFFF0u;
const std::wstring s_strWhere = L" | HKEY: HKLM | m_wzPath: SOFTWARE\\OvRegKeyTest | ";
const std::wstring s_strWrongType = L"0x80004005 OvRegKey | Info Msg: Unexpected value type" + s_strWhere;

/// A scratch registry with one key, open for everything.
class OvRegKey : public testing::Test
{
protected:
    OvRegKey() : m_key(RegView64)
    {
        EXPECT_TRUE(m_key.Create(s_szPath, HKEY_LOCAL_MACHINE, KEY_ALL_ACCESS, NO_PROCESS));
        ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, s_szPath, 0, KEY_ALL_ACCESS, &m_hRaw);
    }
    ~OvRegKey() override { ::RegCloseKey(m_hRaw); }

    void StoreRaw(DWORD dwType, const std::vector<BYTE>& data)
    {
        EXPECT_EQ(ERROR_SUCCESS,
                  ::RegSetValueExW(m_hRaw, L"v", 0, dwType, data.data(), static_cast<DWORD>(data.size())));
    }

    const CScratchRegistry m_registry;
    COvRegKey m_key;
    HKEY m_hRaw = nullptr;
};

/// Whether the value can be read past the class, in the view of that flag.
bool IsSeen(DWORD dwViewFlag)
{
    HKEY hKey = nullptr;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, s_szPath, 0, KEY_READ | dwViewFlag, &hKey) != ERROR_SUCCESS)
        return false;
    const LONG lResult = ::RegQueryValueExW(hKey, L"v", nullptr, nullptr, nullptr, nullptr);
    ::RegCloseKey(hKey);
    return lResult == ERROR_SUCCESS;
}

} // namespace

TEST(OvRegKeyNames, RootKeysHaveTwoNamesInAnyLetterCase)
{
    const struct
    {
        std::vector<const wchar_t*> names;
        HKEY hKey;
    } rows[] = {
        { { L"HKLM", L"HKEY_LOCAL_MACHINE", L"HkLm" }, HKEY_LOCAL_MACHINE },
        { { L"HKCU", L"HKEY_CURRENT_USER", L"hkey_current_user" }, HKEY_CURRENT_USER },
        { { L"HKCR", L"HKEY_CLASSES_ROOT" }, HKEY_CLASSES_ROOT },
        { { L"HKCC", L"HKEY_CURRENT_CONFIG" }, HKEY_CURRENT_CONFIG },
        { { L"HKU", L"HKEY_USERS" }, HKEY_USERS },
        { { L"HKDD", L"HKEY_DYN_DATA" }, HKEY_DYN_DATA },
    };
    for (const auto& row : rows)
    {
        for (const wchar_t* szName : row.names)
            EXPECT_EQ(row.hKey, COvRegKey::Str2HKEY(szName)) << szName;
        EXPECT_EQ(row.names[0], COvRegKey::HKEY2Str(row.hKey));
    }
    for (const wchar_t* szName : { L"", L"HKEY_LM", L"HKLM ", L"HKEY_USER\x017F" })
        EXPECT_EQ(L"0xc000b031 OvRegKey | Info Msg: Invalid HKEY string provided | strHkey: " + std::wstring(szName),
                  Raised([&] { COvRegKey::Str2HKEY(szName); }));
    EXPECT_EQ(L"", COvRegKey::HKEY2Str(nullptr));
    EXPECT_EQ(L"( 0 )( 11 )", COvRegKey::ValueType2Str(0) + COvRegKey::ValueType2Str(11));
    EXPECT_EQ(L"0x80004005 OvRegKey | Info Msg: Failed to convert enum to string | Enum: Registry Value Type | "
              L"Value to convert: 12",
              Raised([] { COvRegKey::ValueType2Str(12); }));
}

TEST(OvRegKeyNames, AFullPathIsSplitAtItsEnds)
{
    const struct
    {
        const wchar_t* szFull;
        bool bRoot;
        const wchar_t* szRest;
        bool bValue;
        const wchar_t* szKeyPath;
        const wchar_t* szValueName;
    } rows[] = {
        { L"HKLM\\SOFTWARE\\Vendor\\Level", true, L"SOFTWARE\\Vendor\\Level", true, L"SOFTWARE\\Vendor", L"Level" },
        { L"hklm\\a\\", true, L"a\\", true, L"a", L"" },
        { L"HKLM\\\\a", true, L"\\a", true, L"", L"a" },
        { L"HKLM\\Level", true, L"Level", false, L"", L"" },
        { L"HKLM", false, L"", false, L"", L"" },
    };
    for (const auto& row : rows)
    {
        HKEY hRoot = nullptr;
        std::wstring wzRest, wzKeyPath, wzValueName;
        EXPECT_EQ(row.bRoot, COvRegKey::Parse(row.szFull, &hRoot, &wzRest)) << row.szFull;
        EXPECT_EQ(row.bRoot ? HKEY_LOCAL_MACHINE : nullptr, hRoot);
        EXPECT_EQ(row.szRest, wzRest);
        EXPECT_EQ(row.bValue, COvRegKey::Parse(row.szFull, &hRoot, &wzKeyPath, &wzValueName)) << row.szFull;
        EXPECT_EQ(row.szKeyPath, wzKeyPath);
        EXPECT_EQ(row.szValueName, wzValueName);
    }
    EXPECT_TRUE(COvRegKey::Parse(L"HKXX\\a\\b", nullptr, nullptr, nullptr)); // nobody asked for the root
}

TEST(OvRegKeyNames, AViewIsAskedForOnlyWhereTheProcessHasTheOther)
{
    for (const bool bNative64 : { false, true })
    {
        EXPECT_EQ(DWORD{ bNative64 ? KEY_WOW64_32KEY : 0u }, COvRegKey::GetViewFlag(RegView32, bNative64));
        EXPECT_EQ(DWORD{ bNative64 ? 0u : KEY_WOW64_64KEY }, COvRegKey::GetViewFlag(RegView64, bNative64));
    }
    EXPECT_EQ(COvRegKey::GetViewFlag(RegView64, sizeof(void*) == 8), COvRegKey(RegView64).GetWOWDescriptor());
    EXPECT_EQ(DWORD{ REG_OPTION_VOLATILE }, COvRegKey::GetRegOption(1));
    EXPECT_EQ(DWORD{ REG_OPTION_NON_VOLATILE }, COvRegKey::GetRegOption(2));
}

TEST_F(OvRegKey, OpensMakesAndClosesKeys)
{
    EXPECT_FALSE(m_key.OpenOpt(L"SOFTWARE\\A\\B", HKEY_LOCAL_MACHINE, KEY_READ, NO_PROCESS));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, m_key.GetLastResult());
    EXPECT_FALSE(m_key.IsOpen());
    EXPECT_TRUE(m_key.Create(L"\\\\SOFTWARE\\A\\B", HKEY_LOCAL_MACHINE, KEY_ALL_ACCESS, NO_PROCESS));
    EXPECT_FALSE(m_key.Create(L"SOFTWARE\\A\\B", HKEY_LOCAL_MACHINE, KEY_ALL_ACCESS, NO_PROCESS));
    EXPECT_TRUE(m_key.OpenOpt(L"\\software\\a", HKEY_LOCAL_MACHINE, KEY_READ, NO_PROCESS));
    EXPECT_EQ(HKEY_LOCAL_MACHINE, m_key.GetRoot());
    EXPECT_EQ(L"software\\a", m_key.GetPath());
    DWORD dwDisposition = 0;
    EXPECT_EQ(ERROR_SUCCESS, m_key.CreateEx(L"A", HKEY_CURRENT_USER, KEY_ALL_ACCESS, NO_PROCESS, &dwDisposition, 1));
    EXPECT_EQ(DWORD{ REG_CREATED_NEW_KEY }, dwDisposition);
    EXPECT_EQ(DWORD{ KEY_ALL_ACCESS }, m_key.GetAccess());
    m_key.Close();
    m_key.Close();
    EXPECT_EQ(nullptr, m_key.GetRoot());
    EXPECT_EQ(DWORD{ KEY_READ }, m_key.GetAccess());
    EXPECT_EQ(L"0x80004005 OvRegKey | Info Msg: There is no registry key open.",
              Raised([&] { m_key.SetValue(L"a", L"b"); }));
}

TEST_F(OvRegKey, AFailedOpenLeavesNoKeyOpen)
{
    const HKEY hNoRoot = reinterpret_cast<HKEY>(ULONG_PTR{ 0x12340 });
    const std::wstring where =
        ErrorItem(L"Win32 Error", ERROR_INVALID_HANDLE) + L" | HKEY:  | strPath: a | samDesired: 131097";
    const auto open = [&](HKEY hRoot, DWORD dwProcess) { m_key.OpenOpt(L"\\a", hRoot, KEY_READ, dwProcess); };
    const auto create = [&](HKEY hRoot, DWORD dwProcess) { m_key.Create(L"\\a", hRoot, KEY_READ, dwProcess); };
    const std::pair<std::wstring, std::function<void()>> rows[] = {
        { L"Method: ::RegOpenKeyEx | " + where, [&] { open(hNoRoot, NO_PROCESS); } },
        { L"Method: ::RegCreateKeyEx | " + where, [&] { create(hNoRoot, NO_PROCESS); } },
        { L"dwProcessId: 4294967280 | Info Msg: Process id not found", [&] { open(HKEY_USERS, NO_SUCH_PROCESS); } },
        { L"dwProcessId: 4294967280 | Info Msg: Process id not found", [&] { create(HKEY_USERS, NO_SUCH_PROCESS); } },
    };
    for (const auto& [evidence, work] : rows)
    {
        EXPECT_TRUE(m_key.OpenOpt(s_szPath, HKEY_LOCAL_MACHINE, KEY_READ, NO_PROCESS));
        EXPECT_EQ(L"0x80004005 OvRegKey | " + evidence, Raised(work));
        EXPECT_FALSE(m_key.IsOpen()) << evidence;
    }
}

TEST_F(OvRegKey, TextsAreReadAsTheyStand)
{
    const std::pair<std::vector<BYTE>, std::wstring> rows[] = {
        { { 'a', 0, 'b', 0 }, L"ab" },
        { { 'a', 0, 0, 0, 0, 0 }, std::wstring(L"a\0", 2) },
        { { 0, 0 }, L"" },
        { {}, L"" },
        { { 'a', 0, 'b' }, L"a" },
        { { 'a' }, L"" },
    };
    for (const auto& [data, wzText] : rows)
    {
        StoreRaw(REG_EXPAND_SZ, data);
        EXPECT_EQ(wzText, m_key.GetStringValue(L"V")) << wzText;
    }
    for (const std::wstring& wzText : { std::wstring(), std::wstring(L"a\0b", 3), std::wstring(100000, L'x') })
    {
        m_key.SetValue(L"v", wzText);
        EXPECT_EQ(wzText, m_key.GetStringValue(L"v"));
    }
    m_key.SetValue(L"v", L"\xD83D\xDE00");
    COvByteBuffer data;
    DWORD dwType = REG_SZ;
    EXPECT_EQ(ERROR_SUCCESS, m_key.QueryValue(L"v", &dwType, data, QueryReadData | QueryCheckType));
    EXPECT_EQ(std::vector<BYTE>({ 0x3D, 0xD8, 0x00, 0xDE, 0, 0 }), std::vector<BYTE>(data.Data(), data.Data() + 6));
    EXPECT_EQ(6u, data.Size());
}

TEST_F(OvRegKey, AValueOfAnotherTypeIsNoText)
{
    StoreRaw(REG_DWORD, { 1, 2, 3, 4 });
    COvByteBuffer data;
    DWORD dwType = REG_SZ;
    EXPECT_EQ(ERROR_SUCCESS, m_key.QueryValue(L"v", &dwType, data, 0));
    EXPECT_EQ(0u, data.Size());
    EXPECT_EQ(DWORD{ REG_DWORD }, dwType);
    dwType = REG_SZ;
    EXPECT_EQ(s_strWrongType + L"tzName: v | Desired: REG_SZ or REG_EXPAND_SZ | Found: ( 4 )",
              Raised([&] { m_key.GetStringValue(L"v"); }));
    EXPECT_EQ(s_strWrongType + L"tzValNm: v | Desired: ( 1 ) | Found: ( 4 )",
              Raised([&] { m_key.QueryValue(L"v", &dwType, data, QueryCheckType); }));
}

TEST_F(OvRegKey, AMissingValueIsToldOrRaised)
{
    std::wstring text = L"old";
    DWORD dwType = 7;
    COvByteBuffer data;
    EXPECT_FALSE(m_key.GetOptStringValue(L"x", text));
    EXPECT_EQ(L"", text);
    EXPECT_FALSE(m_key.GetOptValueType(L"x", &dwType));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, m_key.QueryValue(L"x", &dwType, data, QueryReadData | QueryCheckType));
    EXPECT_EQ(L"0x80004005 OvRegKey | " + ErrorItem(L"Win32 Error", ERROR_FILE_NOT_FOUND) + L" | wzName: x",
              Raised([&] { m_key.GetStringValue(L"x"); }));
}

TEST_F(OvRegKey, WhatTheKeyMayNotDoIsAFailure)
{
    m_key.SetValue(L"v", L"old");
    const std::wstring denied = ErrorItem(L"Win32 Error", ERROR_ACCESS_DENIED) + s_strWhere;
    m_key.OpenOpt(s_szPath, HKEY_LOCAL_MACHINE, KEY_READ, NO_PROCESS);
    EXPECT_EQ(L"0x80004005 OvRegKey | Method: ::RegSetValueEx | " + denied + L"wszName: v | Info Msg: REG_SZ",
              Raised([&] { m_key.SetValue(L"v", L"new"); }));
    m_key.OpenOpt(s_szPath, HKEY_LOCAL_MACHINE, KEY_SET_VALUE, NO_PROCESS);
    EXPECT_EQ(L"0x80004005 OvRegKey | Method: ::RegQueryValueEx | " + denied + L"tzValNm: v",
              Raised([&] { m_key.GetStringValue(L"v"); }));
}

// In the machine's own registry: the scratch one has no views on every target.
TEST(OvRegKeyViews, EachViewIsReadByProgramsOfItsWidthAlone)
{
    const std::pair<LONG, DWORD> rows[] = { { RegView64, KEY_WOW64_64KEY }, { RegView32, KEY_WOW64_32KEY } };
    for (const auto& [nView, dwFlag] : rows)
    {
        COvRegKey key(nView);
        key.Create(s_szPath, HKEY_LOCAL_MACHINE, KEY_ALL_ACCESS, NO_PROCESS);
        key.SetValue(L"v", L"1");
        key.Close();
        EXPECT_TRUE(IsSeen(dwFlag)) << nView;
        EXPECT_FALSE(IsSeen(dwFlag ^ (KEY_WOW64_64KEY | KEY_WOW64_32KEY))) << nView;
        EXPECT_TRUE(COvRegKey::ValueExists(s_szValuePath, nView));
        EXPECT_FALSE(COvRegKey::ValueExists(std::wstring(s_szValuePath) + L"w", nView));
        EXPECT_EQ(ERROR_SUCCESS, ::RegDeleteKeyExW(HKEY_LOCAL_MACHINE, s_szPath, dwFlag, 0));
        EXPECT_FALSE(COvRegKey::ValueExists(s_szValuePath, nView)); // no such key
    }
    EXPECT_EQ(L"0xc000b031 OvRegKey | Info Msg: Unable to parse Registry Value string | tzName: HKLM",
              Raised([] { COvRegKey::ValueExists(L"HKLM", RegView64); }));
}

TEST(OvRegKeyViews, AKeyForAProcessLiesInItsUsersHive)
{
    const wchar_t szPath[] = L"Software\\OvRegKeyTest";
    const DWORD dwSelf = ::GetCurrentProcessId();
    COvRegKey key(RegView64);
    key.Create(szPath, HKEY_USERS, KEY_ALL_ACCESS, dwSelf);
    EXPECT_EQ(COvProcessInfo(L"", dwSelf).GetTextualSID(false) + L"\\" + szPath, key.GetPath());
    EXPECT_EQ(dwSelf, key.GetProcessId());
    key.SetValue(L"v", L"1");
    key.Close();
    EXPECT_TRUE(COvRegKey::ValueExists(L"HKCU\\Software\\OvRegKeyTest\\v", RegView64));
    EXPECT_EQ(ERROR_SUCCESS, ::RegDeleteKeyExW(HKEY_CURRENT_USER, szPath, 0, 0));
    HKEY hMachine = HKEY_LOCAL_MACHINE;
    EXPECT_EQ(L"a\\b", key.GetModifiedPath(&hMachine, L"a\\b", dwSelf)); // another root
}
