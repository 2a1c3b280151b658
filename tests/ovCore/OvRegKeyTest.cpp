#include "ovCore/OvRegKey.h"

#include "ovCore/OVProcessInfo.h"
#include "Raised.h"
#include "ScratchRegistry.h"

#include <gtest/gtest.h>
#include <vector>

namespace
{

const wchar_t s_szPath[] = L"SOFTWARE\\OvRegKeyTest";
constexpr DWORD NO_PROCESS = 0;

/// A scratch registry with one key, open for everything.
class CScratchKey
{
public:
    CScratchKey() : m_key(RegView64)
    {
        EXPECT_TRUE(m_key.Create(s_szPath, HKEY_LOCAL_MACHINE, KEY_ALL_ACCESS, NO_PROCESS));
        ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, s_szPath, 0, KEY_ALL_ACCESS, &m_hRaw);
    }
    ~CScratchKey() { ::RegCloseKey(m_hRaw); }

    COvRegKey& Key() { return m_key; }

    void StoreRaw(const wchar_t* szName, DWORD dwType, const std::vector<BYTE>& data)
    {
        EXPECT_EQ(ERROR_SUCCESS,
                  ::RegSetValueExW(m_hRaw, szName, 0, dwType, data.data(), static_cast<DWORD>(data.size())));
    }

    std::vector<BYTE> ReadRaw(const wchar_t* szName)
    {
        std::vector<BYTE> data(1000);
        DWORD dwSize = static_cast<DWORD>(data.size());
        DWORD dwType = 0;
        EXPECT_EQ(ERROR_SUCCESS, ::RegQueryValueExW(m_hRaw, szName, nullptr, &dwType, data.data(), &dwSize));
        EXPECT_EQ(DWORD{ REG_SZ }, dwType);
        data.resize(dwSize);
        return data;
    }

private:
    CScratchRegistry m_registry;
    COvRegKey m_key;
    HKEY m_hRaw = nullptr;
};

} // namespace

TEST(OvRegKey, RootKeysHaveTwoNamesInAnyLetterCase)
{
    const struct
    {
        const wchar_t* szShort;
        const wchar_t* szLong;
        const wchar_t* szMixed;
        HKEY hKey;
    } rows[] = {
        { L"HKLM", L"HKEY_LOCAL_MACHINE", L"HkLm", HKEY_LOCAL_MACHINE },
        { L"HKCU", L"HKEY_CURRENT_USER", L"hkey_current_user", HKEY_CURRENT_USER },
        { L"HKCR", L"HKEY_CLASSES_ROOT", L"hkcr", HKEY_CLASSES_ROOT },
        { L"HKCC", L"HKEY_CURRENT_CONFIG", L"hkcC", HKEY_CURRENT_CONFIG },
        { L"HKU", L"HKEY_USERS", L"Hkey_Users", HKEY_USERS },
        { L"HKDD", L"HKEY_DYN_DATA", L"hkDD", HKEY_DYN_DATA },
    };
    for (const auto& row : rows)
    {
        for (const wchar_t* szName : { row.szShort, row.szLong, row.szMixed })
            EXPECT_EQ(row.hKey, COvRegKey::Str2HKEY(szName)) << szName;
        EXPECT_EQ(row.szShort, COvRegKey::HKEY2Str(row.hKey));
    }
    for (const wchar_t* szName : { L"", L"HKEY_LM", L"HKLM ", L"HKEY_USER\x017F" })
        EXPECT_EQ(L"0xc000b031 OvRegKey | Info Msg: Invalid HKEY string provided | strHkey: " + std::wstring(szName),
                  Raised([&] { COvRegKey::Str2HKEY(szName); }));
    EXPECT_EQ(L"", COvRegKey::HKEY2Str(nullptr));
}

TEST(OvRegKey, ValueTypesAreNumbersUpToEleven)
{
    EXPECT_EQ(L"( 0 )", COvRegKey::ValueType2Str(0));
    EXPECT_EQ(L"( 11 )", COvRegKey::ValueType2Str(11));
    for (const DWORD dwType : { DWORD{ 12 }, DWORD{ 0xFFFFFFFF } })
        EXPECT_EQ(L"0x80004005 OvRegKey | Info Msg: Failed to convert enum to string | Enum: Registry Value Type | "
                  L"Value to convert: " +
                      std::to_wstring(dwType),
                  Raised([&] { COvRegKey::ValueType2Str(dwType); }));
}

TEST(OvRegKey, AFullPathIsSplitAtItsEnds)
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
        { L"HKLM\\", true, L"", false, L"", L"" },
        { L"HKLM", false, L"", false, L"", L"" },
        { L"", false, L"", false, L"", L"" },
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
        EXPECT_EQ(row.bValue, COvRegKey::Parse(row.szFull, nullptr, nullptr, nullptr));
    }
    HKEY hRoot = nullptr;
    EXPECT_EQ(L"0xc000b031 OvRegKey | Info Msg: Invalid HKEY string provided | strHkey: HKXX",
              Raised([&] { COvRegKey::Parse(L"HKXX\\a\\b", &hRoot, nullptr); }));
    EXPECT_TRUE(COvRegKey::Parse(L"HKXX\\a\\b", nullptr, nullptr, nullptr)); // nobody asked for the root
}

TEST(OvRegKey, AViewIsAskedForOnlyWhereTheProcessHasTheOther)
{
    const struct
    {
        LONG nView;
        bool bNative64;
        DWORD dwFlag;
    } rows[] = {
        { RegView32, false, 0 },
        { RegView64, false, KEY_WOW64_64KEY },
        { RegView32, true, KEY_WOW64_32KEY },
        { RegView64, true, 0 },
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.dwFlag, COvRegKey::GetViewFlag(row.nView, row.bNative64)) << row.nView << row.bNative64;
    EXPECT_EQ(COvRegKey::GetViewFlag(RegView64, sizeof(void*) == 8), COvRegKey(RegView64).GetWOWDescriptor());
    EXPECT_EQ(COvRegKey::GetViewFlag(RegView32, sizeof(void*) == 8), COvRegKey(RegView32).GetWOWDescriptor());
    EXPECT_EQ(DWORD{ REG_OPTION_VOLATILE }, COvRegKey::GetRegOption(1));
    EXPECT_EQ(DWORD{ REG_OPTION_NON_VOLATILE }, COvRegKey::GetRegOption(0));
    EXPECT_EQ(DWORD{ REG_OPTION_NON_VOLATILE }, COvRegKey::GetRegOption(2));
}

TEST(OvRegKey, OpensMakesAndClosesKeys)
{
    const CScratchRegistry registry;
    COvRegKey key(RegView64);
    EXPECT_FALSE(key.OpenOpt(L"SOFTWARE\\A\\B", HKEY_LOCAL_MACHINE, KEY_READ, NO_PROCESS));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, key.GetLastResult());
    EXPECT_FALSE(key.IsOpen());
    EXPECT_TRUE(key.Create(L"\\\\SOFTWARE\\A\\B", HKEY_LOCAL_MACHINE, KEY_ALL_ACCESS, NO_PROCESS));
    EXPECT_FALSE(key.Create(L"SOFTWARE\\A\\B", HKEY_LOCAL_MACHINE, KEY_ALL_ACCESS, NO_PROCESS));
    EXPECT_TRUE(key.OpenOpt(L"\\software\\a", HKEY_LOCAL_MACHINE, KEY_READ, NO_PROCESS));
    EXPECT_TRUE(key.IsOpen());
    EXPECT_EQ(HKEY_LOCAL_MACHINE, key.GetRoot());
    EXPECT_EQ(L"software\\a", key.GetPath());
    EXPECT_EQ(DWORD{ KEY_READ }, key.GetAccess());

    DWORD dwDisposition = 0;
    EXPECT_EQ(ERROR_SUCCESS,
              key.CreateEx(L"SOFTWARE\\A\\C", HKEY_LOCAL_MACHINE, KEY_ALL_ACCESS, NO_PROCESS, &dwDisposition, 1));
    EXPECT_EQ(DWORD{ REG_CREATED_NEW_KEY }, dwDisposition);
    EXPECT_EQ(DWORD{ KEY_ALL_ACCESS }, key.GetAccess());
    key.Close();
    key.Close();
    EXPECT_FALSE(key.IsOpen());
    EXPECT_EQ(nullptr, key.GetRoot());
    EXPECT_EQ(DWORD{ KEY_READ }, key.GetAccess());
}

TEST(OvRegKey, AFailedOpenLeavesNoKeyOpen)
{
    CScratchKey scratch;
    COvRegKey& key = scratch.Key();
    const HKEY hNoRoot = reinterpret_cast<HKEY>(ULONG_PTR{ 0x12340 });
    const std::wstring where =
        ErrorItem(L"Win32 Error", ERROR_INVALID_HANDLE) + L" | HKEY:  | strPath: a | samDesired: 131097";
    EXPECT_EQ(L"0x80004005 OvRegKey | Method: ::RegOpenKeyEx | " + where,
              Raised([&] { key.OpenOpt(L"\\a", hNoRoot, KEY_READ, NO_PROCESS); }));
    EXPECT_FALSE(key.IsOpen());
    EXPECT_EQ(ERROR_INVALID_HANDLE, key.GetLastResult());

    EXPECT_TRUE(key.OpenOpt(s_szPath, HKEY_LOCAL_MACHINE, KEY_READ, NO_PROCESS));
    EXPECT_EQ(L"0x80004005 OvRegKey | Method: ::RegCreateKeyEx | " + where,
              Raised([&] { key.Create(L"\\a", hNoRoot, KEY_READ, NO_PROCESS); }));
    EXPECT_FALSE(key.IsOpen());

    const std::wstring closed = L"0x80004005 OvRegKey | Info Msg: There is no registry key open.";
    std::wstring text;
    DWORD dwType = 0;
    EXPECT_EQ(closed, Raised([&] { key.VerifyKeyOpen(); }));
    EXPECT_EQ(closed, Raised([&] { key.SetValue(L"a", L"b"); }));
    EXPECT_EQ(closed, Raised([&] { key.GetOptStringValue(L"a", text); }));
    EXPECT_EQ(closed, Raised([&] { key.GetOptValueType(L"a", &dwType); }));
}

TEST(OvRegKey, TextsAreStoredAsBytesAndReadBackWhole)
{
    const struct
    {
        std::wstring wzText;
        std::vector<BYTE> data;
    } rows[] = {
        { L"", { 0, 0 } },
        { L"a", { 'a', 0, 0, 0 } },
        { L"\x20AC\xD83D\xDE00", { 0xAC, 0x20, 0x3D, 0xD8, 0x00, 0xDE, 0, 0 } },
        { std::wstring(L"a\0b", 3), { 'a', 0, 0, 0, 'b', 0, 0, 0 } },
        { std::wstring(2, L'\0'), { 0, 0, 0, 0, 0, 0 } },
    };
    CScratchKey scratch;
    COvRegKey& key = scratch.Key();
    for (const auto& row : rows)
    {
        key.SetValue(L"Text", row.wzText);
        EXPECT_EQ(row.data, scratch.ReadRaw(L"Text"));
        EXPECT_EQ(row.wzText, key.GetStringValue(L"tEXT"));
    }
    const std::wstring wzLong(100000, L'x');
    key.SetValue(L"", wzLong); // the key's default value
    EXPECT_EQ(wzLong, key.GetStringValue(L""));
}

TEST(OvRegKey, TextsOfOthersAreReadAsTheyStand)
{
    const struct
    {
        DWORD dwType;
        std::vector<BYTE> data;
        std::wstring wzText;
    } rows[] = {
        { REG_SZ, { 'a', 0, 'b', 0 }, L"ab" },
        { REG_SZ, { 'a', 0, 0, 0, 0, 0 }, std::wstring(L"a\0", 2) },
        { REG_SZ, { 0, 0 }, L"" },
        { REG_SZ, {}, L"" },
        { REG_SZ, { 'a', 0, 'b' }, L"a" },
        { REG_SZ, { 'a' }, L"" },
        { REG_EXPAND_SZ, { '%', 0, 'P', 0, '%', 0, 0, 0 }, L"%P%" },
    };
    CScratchKey scratch;
    for (const auto& row : rows)
    {
        scratch.StoreRaw(L"v", row.dwType, row.data);
        EXPECT_EQ(row.wzText, scratch.Key().GetStringValue(L"v")) << &row - rows;
    }
}

TEST(OvRegKey, AValueOfAnotherTypeIsNoText)
{
    CScratchKey scratch;
    for (DWORD dwType = REG_NONE; dwType <= REG_QWORD; ++dwType)
    {
        scratch.StoreRaw(L"v", dwType, { 1, 0, 0, 0, 0, 0, 0, 0 });
        DWORD dwFound = 99;
        EXPECT_TRUE(scratch.Key().GetOptValueType(L"v", &dwFound));
        EXPECT_EQ(dwType, dwFound);
        const bool bText = dwType == REG_SZ || dwType == REG_EXPAND_SZ;
        const std::wstring failure =
            L"0x80004005 OvRegKey | Info Msg: Unexpected value type | HKEY: HKLM | m_wzPath: SOFTWARE\\OvRegKeyTest | "
            L"tzName: v | Desired: REG_SZ or REG_EXPAND_SZ | Found: ( " +
            std::to_wstring(dwType) + L" )";
        EXPECT_EQ(bText ? L"nothing" : failure, Raised([&] { scratch.Key().GetStringValue(L"v"); }));
    }
}

TEST(OvRegKey, AMissingValueIsToldOrRaised)
{
    CScratchKey scratch;
    COvRegKey& key = scratch.Key();
    std::wstring text = L"old";
    DWORD dwType = 7;
    COvByteBuffer data;
    EXPECT_FALSE(key.GetOptStringValue(L"x", text));
    EXPECT_EQ(L"", text);
    EXPECT_FALSE(key.GetOptValueType(L"x", &dwType));
    EXPECT_EQ(7u, dwType);
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, key.QueryValue(L"x", &dwType, data, QueryReadData | QueryCheckType));
    EXPECT_EQ(0u, dwType);
    EXPECT_EQ(L"0x80004005 OvRegKey | " + ErrorItem(L"Win32 Error", ERROR_FILE_NOT_FOUND) + L" | wzName: x",
              Raised([&] { key.GetStringValue(L"x"); }));
}

TEST(OvRegKey, AQueryReadsAndChecksWhatItIsAskedTo)
{
    CScratchKey scratch;
    scratch.StoreRaw(L"n", REG_DWORD, { 1, 2, 3, 4 });
    scratch.StoreRaw(L"empty", REG_BINARY, {});
    const struct
    {
        const wchar_t* szName;
        DWORD dwAsked;
        unsigned nFlags;
        DWORD dwFound;
        std::vector<BYTE> data;
    } rows[] = {
        { L"n", REG_SZ, 0, REG_DWORD, {} },
        { L"n", REG_SZ, QueryReadData, REG_DWORD, { 1, 2, 3, 4 } },
        { L"n", REG_DWORD, QueryReadData | QueryCheckType, REG_DWORD, { 1, 2, 3, 4 } },
        { L"n", REG_DWORD, QueryCheckType, REG_DWORD, {} },
        { L"empty", REG_SZ, QueryReadData, REG_BINARY, {} },
    };
    for (const auto& row : rows)
    {
        COvByteBuffer data;
        data.Resize(100);
        DWORD dwType = row.dwAsked;
        EXPECT_EQ(ERROR_SUCCESS, scratch.Key().QueryValue(row.szName, &dwType, data, row.nFlags));
        EXPECT_EQ(row.dwFound, dwType);
        EXPECT_EQ(row.data, std::vector<BYTE>(data.Data(), data.Data() + data.Size())) << &row - rows;
    }
    COvByteBuffer data;
    DWORD dwType = REG_SZ;
    EXPECT_EQ(
        L"0x80004005 OvRegKey | Info Msg: Unexpected value type | HKEY: HKLM | m_wzPath: SOFTWARE\\OvRegKeyTest | "
        L"tzValNm: n | Desired: ( 1 ) | Found: ( 4 )",
        Raised([&] { scratch.Key().QueryValue(L"n", &dwType, data, QueryCheckType); }));
}

TEST(OvRegKey, WhatTheKeyMayNotDoIsAFailure)
{
    CScratchKey scratch;
    COvRegKey& key = scratch.Key();
    key.SetValue(L"v", L"old");
    EXPECT_TRUE(key.OpenOpt(s_szPath, HKEY_LOCAL_MACHINE, KEY_READ, NO_PROCESS));
    const std::wstring denied =
        ErrorItem(L"Win32 Error", ERROR_ACCESS_DENIED) + L" | HKEY: HKLM | m_wzPath: SOFTWARE\\OvRegKeyTest | ";
    EXPECT_EQ(L"0x80004005 OvRegKey | Method: ::RegSetValueEx | " + denied + L"wszName: v | Info Msg: REG_SZ",
              Raised([&] { key.SetValue(L"v", L"new"); }));
    EXPECT_EQ(L"old", key.GetStringValue(L"v"));
    EXPECT_TRUE(key.OpenOpt(s_szPath, HKEY_LOCAL_MACHINE, KEY_SET_VALUE, NO_PROCESS));
    EXPECT_EQ(L"0x80004005 OvRegKey | Method: ::RegQueryValueEx | " + denied + L"tzValNm: v",
              Raised([&] { key.GetStringValue(L"v"); }));
}

TEST(OvRegKey, AValueExistsByItsFullPath)
{
    CScratchKey scratch;
    scratch.Key().SetValue(L"v", L"");
    EXPECT_TRUE(COvRegKey::ValueExists(L"HKLM\\SOFTWARE\\OvRegKeyTest\\v", RegView64));
    EXPECT_TRUE(COvRegKey::ValueExists(L"hkey_local_machine\\software\\ovregkeytest\\V", RegView64));
    EXPECT_FALSE(COvRegKey::ValueExists(L"HKLM\\SOFTWARE\\OvRegKeyTest\\w", RegView64));
    EXPECT_FALSE(COvRegKey::ValueExists(L"HKLM\\SOFTWARE\\OvRegKeyTest\\NoKey\\v", RegView64));
    for (const wchar_t* szPath : { L"HKLM", L"HKLM\\v", L"" })
        EXPECT_EQ(L"0xc000b031 OvRegKey | Info Msg: Unable to parse Registry Value string | tzName: " +
                      std::wstring(szPath),
                  Raised([&] { COvRegKey::ValueExists(szPath, RegView64); }));
}

namespace
{

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

// In the machine's own registry: the scratch one has no views on every target.
TEST(OvRegKey, EachViewIsReadByProgramsOfItsWidthAlone)
{
    const struct
    {
        LONG nView;
        DWORD dwSame;
        DWORD dwOther;
    } rows[] = { { RegView64, KEY_WOW64_64KEY, KEY_WOW64_32KEY }, { RegView32, KEY_WOW64_32KEY, KEY_WOW64_64KEY } };
    for (const auto& row : rows)
    {
        {
            COvRegKey key(row.nView);
            key.Create(s_szPath, HKEY_LOCAL_MACHINE, KEY_ALL_ACCESS, NO_PROCESS);
            key.SetValue(L"v", L"1");
        }
        EXPECT_TRUE(IsSeen(row.dwSame)) << row.nView;
        EXPECT_FALSE(IsSeen(row.dwOther)) << row.nView;
        EXPECT_TRUE(COvRegKey::ValueExists(std::wstring(L"HKLM\\") + s_szPath + L"\\v", row.nView));
        EXPECT_EQ(ERROR_SUCCESS, ::RegDeleteKeyExW(HKEY_LOCAL_MACHINE, s_szPath, row.dwSame, 0));
    }
}

TEST(OvRegKey, AKeyForAProcessLiesInItsUsersHive)
{
    const wchar_t szPath[] = L"Software\\OvRegKeyTest";
    const DWORD dwSelf = ::GetCurrentProcessId();
    const std::wstring wzSid = COvProcessInfo(L"", dwSelf).GetTextualSID(false);
    EXPECT_EQ(0u, wzSid.rfind(L"S-1-", 0));
    {
        COvRegKey key(RegView64);
        key.Create(szPath, HKEY_USERS, KEY_ALL_ACCESS, dwSelf);
        EXPECT_EQ(wzSid + L"\\" + szPath, key.GetPath());
        EXPECT_EQ(dwSelf, key.GetProcessId());
        key.SetValue(L"v", L"1");
    }
    EXPECT_TRUE(COvRegKey::ValueExists(L"HKCU\\Software\\OvRegKeyTest\\v", RegView64));
    EXPECT_EQ(ERROR_SUCCESS, ::RegDeleteKeyExW(HKEY_CURRENT_USER, szPath, 0, 0));

    COvRegKey key(RegView64);
    HKEY hRoot = HKEY_USERS;
    EXPECT_EQ(L"a\\b", key.GetModifiedPath(&hRoot, L"\\\\a\\b", NO_PROCESS));
    HKEY hMachine = HKEY_LOCAL_MACHINE;
    EXPECT_EQ(L"a\\b", key.GetModifiedPath(&hMachine, L"a\\b", dwSelf));
    EXPECT_EQ(L"0x80004005 OvRegKey | dwProcessId: 4294967280 | Info Msg: Process id not found",
              Raised([&] { key.GetModifiedPath(&hRoot, L"a", 0xFFFFFFF0u); }));
    EXPECT_EQ(HKEY_USERS, hRoot);
}
