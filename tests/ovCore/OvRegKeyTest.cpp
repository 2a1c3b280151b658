#include "ovCore/OvRegKey.h"

#include "ovCore/OVProcessInfo.h"
#include "Raised.h"
#include "TestData.h"
#include "TestPlatform.h"

#include <functional>
#include <gtest/gtest.h>
#include <vector>

namespace
{

const wchar_t s_szPath[] = L"SOFTWARE\\OvRegKeyTest";
const wchar_t s_szValuePath[] = L"HKLM\\SOFTWARE\\OvRegKeyTest\\v";
constexpr DWORD NO_PROCESS = 0;
const std::wstring s_strWhere = L" | HKEY: HKLM | m_wzPath: SOFTWARE\\OvRegKeyTest | ";

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

} // namespace

TEST(OvRegKeyNames, RootKeysHaveTwoNamesInAnyLetterCase)
{
    const std::pair<std::vector<const wchar_t*>, HKEY> rows[] = {
        { { L"HKLM", L"HKEY_LOCAL_MACHINE", L"HkLm" }, HKEY_LOCAL_MACHINE },
        { { L"HKCU", L"HKEY_CURRENT_USER", L"hkey_current_user" }, HKEY_CURRENT_USER },
        { { L"HKCR", L"HKEY_CLASSES_ROOT" }, HKEY_CLASSES_ROOT },
        { { L"HKCC", L"HKEY_CURRENT_CONFIG" }, HKEY_CURRENT_CONFIG },
        { { L"HKU", L"HKEY_USERS" }, HKEY_USERS },
        { { L"HKDD", L"HKEY_DYN_DATA" }, HKEY_DYN_DATA },
    };
    for (const auto& [names, hKey] : rows)
    {
        for (const wchar_t* szName : names)
            EXPECT_EQ(hKey, COvRegKey::Str2HKEY(szName)) << szName;
        EXPECT_EQ(names[0], COvRegKey::HKEY2Str(hKey));
    }
    EXPECT_EQ(L"0xc000b031 OvRegKey | Info Msg: Invalid HKEY string provided | strHkey: HKEY_USER\x017F",
              Raised([] { COvRegKey::Str2HKEY(L"HKEY_USER\x017F"); }));
    EXPECT_EQ(L"( 0 )( 11 )", COvRegKey::ValueType2Str(0) + COvRegKey::ValueType2Str(11));
    EXPECT_EQ(L"0x80004005 OvRegKey | Info Msg: Failed to convert enum to string | Enum: Registry Value Type | "
              L"Value to convert: 12",
              Raised([] { COvRegKey::ValueType2Str(12); }));
}

TEST(OvRegKeyNames, AFullPathIsSplitAtItsEnds)
{
    const std::pair<const wchar_t*, const wchar_t*> rows[] = {
        // the rest, the key's path and the value's name
        { L"HKLM\\SOFTWARE\\Vendor\\Level", L"SOFTWARE\\Vendor\\Level|SOFTWARE\\Vendor|Level" },
        { L"hklm\\a\\", L"a\\|a|" },
        { L"HKLM\\\\a", L"\\a||a" },
        { L"HKLM\\Level", L"Level" },
        { L"HKLM", L"" },
    };
    for (const auto& [szFull, szParts] : rows)
    {
        HKEY hRoot = nullptr;
        std::wstring wzParts, wzKeyPath, wzValueName;
        EXPECT_EQ(*szParts != L'\0', COvRegKey::Parse(szFull, &hRoot, &wzParts)) << szFull;
        EXPECT_EQ(*szParts != L'\0' ? HKEY_LOCAL_MACHINE : nullptr, hRoot);
        if (COvRegKey::Parse(szFull, &hRoot, &wzKeyPath, &wzValueName))
            wzParts += L"|" + wzKeyPath + L"|" + wzValueName;
        EXPECT_EQ(szParts, wzParts);
    }
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
    EXPECT_EQ(DWORD{ KEY_READ }, m_key.GetAccess());
    EXPECT_EQ(L"0x80004005 OvRegKey | Info Msg: There is no registry key open.",
              Raised([&] { m_key.SetValue(L"a", L"b"); }));
}

TEST_F(OvRegKey, AFailedOpenLeavesNoKeyOpen)
{
    const HKEY hNoRoot = reinterpret_cast<HKEY>(ULONG_PTR{ 0x12340 });
    const std::wstring where =
        ErrorItem(L"Win32 Error", ERROR_INVALID_HANDLE) + L" | HKEY:  | strPath: a | samDesired: 131097";
    const std::pair<std::wstring, std::function<void()>> rows[] = {
        { L"Method: ::RegOpenKeyEx | " + where, [&] { m_key.OpenOpt(L"\\a", hNoRoot, KEY_READ, NO_PROCESS); } },
        { L"Method: ::RegCreateKeyEx | " + where, [&] { m_key.Create(L"\\a", hNoRoot, KEY_READ, NO_PROCESS); } },
        { L"dwProcessId: 4294967280 | Info Msg: Process id not found",
          [&] { m_key.Create(L"\\a", HKEY_USERS, KEY_READ, 0xFFFFFFF0u); } },
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
    const std::pair<std::vector<BYTE>, std::wstring> rows[] = { { { 'a', 0, 'b', 0 }, L"ab" },
                                                                { { 'a', 0, 0, 0, 0, 0 }, std::wstring(L"a\0", 2) },
                                                                { { 0, 0 }, L"" },
                                                                { {}, L"" },
                                                                { { 'a', 0, 'b' }, L"a" },
                                                                { { 'a' }, L"" } };
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

TEST_F(OvRegKey, AValueThatIsNotWhatWasAskedForIsToldOrRaised)
{
    std::wstring text = L"old";
    DWORD dwType = 7;
    COvByteBuffer data;
    EXPECT_FALSE(m_key.GetOptStringValue(L"v", text));
    EXPECT_EQ(L"", text);
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, m_key.QueryValue(L"v", &dwType, data, QueryReadData | QueryCheckType));
    EXPECT_EQ(L"0x80004005 OvRegKey | " + ErrorItem(L"Win32 Error", ERROR_FILE_NOT_FOUND) + L" | wzName: v",
              Raised([&] { m_key.GetStringValue(L"v"); }));
    StoreRaw(REG_DWORD, { 1, 2, 3, 4 });
    EXPECT_EQ(ERROR_SUCCESS, m_key.QueryValue(L"v", &dwType, data, 0));
    EXPECT_EQ(0u, data.Size());
    EXPECT_EQ(DWORD{ REG_DWORD }, dwType);
    dwType = REG_SZ;
    const std::wstring wrong = L"0x80004005 OvRegKey | Info Msg: Unexpected value type" + s_strWhere;
    EXPECT_EQ(wrong + L"tzName: v | Desired: REG_SZ or REG_EXPAND_SZ | Found: ( 4 )",
              Raised([&] { m_key.GetStringValue(L"v"); }));
    EXPECT_EQ(wrong + L"tzValNm: v | Desired: ( 1 ) | Found: ( 4 )",
              Raised([&] { m_key.QueryValue(L"v", &dwType, data, QueryCheckType); }));
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
    if (IsSelfTest())
        GTEST_SKIP() << "needs administrator rights and writes to the machine's own keys";
    const std::pair<LONG, DWORD> rows[] = { { RegView64, KEY_WOW64_64KEY }, { RegView32, KEY_WOW64_32KEY } };
    for (const auto& [nView, dwFlag] : rows)
    {
        COvRegKey key(nView);
        key.Create(s_szPath, HKEY_LOCAL_MACHINE, KEY_ALL_ACCESS, NO_PROCESS);
        key.SetValue(L"v", L"1");
        key.Close();
        EXPECT_TRUE(COvRegKey::ValueExists(s_szValuePath, nView));
        EXPECT_FALSE(COvRegKey::ValueExists(std::wstring(s_szValuePath) + L"w", nView));
        const DWORD dwOther = dwFlag ^ (KEY_WOW64_64KEY | KEY_WOW64_32KEY);
        EXPECT_NE(ERROR_SUCCESS, ::RegDeleteKeyExW(HKEY_LOCAL_MACHINE, s_szPath, dwOther, 0)) << nView;
        EXPECT_EQ(ERROR_SUCCESS, ::RegDeleteKeyExW(HKEY_LOCAL_MACHINE, s_szPath, dwFlag, 0)) << nView;
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
    key.SetValue(L"v", L"1");
    key.Close();
    EXPECT_TRUE(COvRegKey::ValueExists(L"HKCU\\Software\\OvRegKeyTest\\v", RegView64));
    EXPECT_EQ(ERROR_SUCCESS, ::RegDeleteKeyExW(HKEY_CURRENT_USER, szPath, 0, 0));
}
