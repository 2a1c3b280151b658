// Keys and values, as the platform has them.
#include "TestData.h"
#include "TestPlatform.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace
{

constexpr wchar_t s_szKey[] = L"SOFTWARE\\OvSeamTest";

using CBytes = std::vector<BYTE>;

/// An open key that is closed at the end.
class CTestKey
{
public:
    CTestKey() = default;
    explicit CTestKey(const wchar_t* szPath, REGSAM samDesired = KEY_ALL_ACCESS, DWORD dwOptions = 0,
                      HKEY hRoot = HKEY_LOCAL_MACHINE)
    {
        EXPECT_EQ(ERROR_SUCCESS, Create(szPath, samDesired, dwOptions, hRoot)) << testing::PrintToString(szPath);
    }
    ~CTestKey() { Close(); }
    CTestKey(const CTestKey&) = delete;
    CTestKey& operator=(const CTestKey&) = delete;

    LSTATUS Create(const wchar_t* szPath, REGSAM samDesired = KEY_ALL_ACCESS, DWORD dwOptions = 0,
                   HKEY hRoot = HKEY_LOCAL_MACHINE)
    {
        Close();
        return RegCreateKeyExW(hRoot, szPath, 0, nullptr, dwOptions, samDesired, nullptr, &m_hKey, &m_dwDisposition);
    }

    LSTATUS Open(const wchar_t* szPath, REGSAM samDesired = KEY_READ, HKEY hRoot = HKEY_LOCAL_MACHINE)
    {
        Close();
        return RegOpenKeyExW(hRoot, szPath, 0, samDesired, &m_hKey);
    }

    void Close()
    {
        EXPECT_EQ(ERROR_SUCCESS, m_hKey ? RegCloseKey(m_hKey) : ERROR_SUCCESS);
        m_hKey = nullptr;
    }

    HKEY Get() const { return m_hKey; }
    DWORD Disposition() const { return m_dwDisposition; }

    LSTATUS Set(const wchar_t* szName, const CBytes& data, DWORD dwType = REG_BINARY) const
    {
        return RegSetValueExW(m_hKey, szName, 0, dwType, data.data(), static_cast<DWORD>(data.size()));
    }

private:
    HKEY m_hKey = nullptr;
    DWORD m_dwDisposition = 0;
};

struct CRead
{
    LSTATUS lResult;
    DWORD dwType;
    CBytes data;
};

CRead Read(HKEY hKey, const wchar_t* szName, DWORD cbRoom = 100)
{
    CRead read = { 0, 0, CBytes(cbRoom) };
    DWORD cb = cbRoom;
    read.lResult = RegQueryValueExW(hKey, szName, nullptr, &read.dwType, read.data.data(), &cb);
    read.data.resize(read.lResult == ERROR_SUCCESS ? cb : 0);
    return read;
}

class Registry : public testing::Test
{
    CScratchRegistry m_scratch;
};

} // namespace

TEST_F(Registry, MakesAKeyOnceInAnyLetterCase)
{
    CTestKey key;
    SetLastError(77);
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, key.Open(s_szKey));
    EXPECT_FALSE(key.Get());
    EXPECT_EQ(ERROR_SUCCESS, key.Create(L"SOFTWARE\\OvSeamTest\\A\\\xC4pfel"));
    EXPECT_EQ(REG_CREATED_NEW_KEY, key.Disposition());
    EXPECT_EQ(77u, GetLastError()) << "no call changes it";
    EXPECT_EQ(ERROR_SUCCESS, key.Create(L"software\\OVSEAMTEST\\a\\\xE4PFEL\\")); // a backslash at the end is ignored
    EXPECT_EQ(REG_OPENED_EXISTING_KEY, key.Disposition());
    EXPECT_EQ(ERROR_SUCCESS, key.Open(L"SOFTWARE\\\\OvSeamTest\\\\a")); // so are doubled ones
    EXPECT_EQ(ERROR_BAD_PATHNAME, key.Open(L"\\SOFTWARE\\OvSeamTest"));
    EXPECT_EQ(ERROR_BAD_PATHNAME, key.Create(L"\\SOFTWARE\\OvSeamTest"));

    const std::wstring longName(255, L'n');
    EXPECT_EQ(ERROR_SUCCESS, key.Create((s_szKey + (L"\\" + longName)).c_str()));
    EXPECT_EQ(ERROR_INVALID_PARAMETER, key.Create((s_szKey + (L"\\" + std::wstring(300, L'n'))).c_str()));
}

TEST_F(Registry, ComparesNamesAsThePlatformDoes)
{
    // Greek and Cyrillic too; the title form has no part in it
    const std::tuple<const wchar_t*, const wchar_t*, bool> rows[] = {
        { L"Name", L"nAME", true },     { L"\xE4", L"\xC4", true },      { L"\xFF", L"\x178", true },
        { L"\x3B1", L"\x391", true },   { L"\x430", L"\x410", true },    { L"\x1C6", L"\x1C4", true },
        { L"\x1C6", L"\x1C5", false },  { L"\xDF", L"\x1E9E", false },   { L"\xB5", L"\x39C", false },
        { L"\x131", L"I", false },      { L"\x17F", L"S", false },       { L"\x3C2", L"\x3A3", false },
        { L"\xD800", L"\xD800", true }, { L"\xD800", L"\xD801", false },
    };
    const CTestKey key(s_szKey);
    for (const auto& [szWritten, szAsked, bSame] : rows)
    {
        ASSERT_EQ(ERROR_SUCCESS, key.Set(szWritten, { 1 }));
        EXPECT_EQ(bSame ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND, Read(key.Get(), szAsked).lResult)
            << testing::PrintToString(szWritten);
        EXPECT_EQ(ERROR_SUCCESS, RegDeleteValueW(key.Get(), szWritten));
    }
    EXPECT_EQ(ERROR_SUCCESS, key.Set(L"\xD801\xDC28", { 1 })); // outside the basic plane, unit by unit
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, Read(key.Get(), L"\xD801\xDC00").lResult);
    EXPECT_EQ(ERROR_SUCCESS, Read(key.Get(), L"\xD801\xDC28").lResult);
}

TEST_F(Registry, KeepsTypeAndBytesOfAValue)
{
    const std::tuple<const wchar_t*, DWORD, CBytes> rows[] = {
        { L"text", REG_SZ, { 'a', 0, 0x3D, 0xD8, 0x00, 0xDE, 0, 0 } },
        { L"no end", REG_SZ, { 'a', 0, 1, 1 } },
        { L"odd", REG_SZ, { 'a', 0, 'b' } },
        { L"two ends", REG_SZ, { 'a', 0, 0, 0, 0, 0 } },
        { L"number", REG_DWORD, { 1, 2, 3, 4 } },
        { L"short number", REG_DWORD, { 1, 2, 3 } },
        { L"large number", REG_QWORD, { 1, 2, 3, 4, 5, 6, 7, 8 } },
        { L"nothing", REG_NONE, {} },
        { L"no text", REG_SZ, {} },
        { L"unknown", 77, { 0 } },
        { L"", REG_BINARY, { 9 } },
        { L"back\\slash", REG_MULTI_SZ, { 0, 0 } },
    };
    const CTestKey key(s_szKey);
    for (const auto& [szName, dwType, data] : rows)
        EXPECT_EQ(ERROR_SUCCESS, key.Set(szName, data, dwType));
    for (const auto& [szName, dwType, data] : rows)
    {
        const CRead read = Read(key.Get(), szName);
        EXPECT_EQ(ERROR_SUCCESS, read.lResult) << testing::PrintToString(szName);
        EXPECT_EQ(dwType, read.dwType) << testing::PrintToString(szName);
        EXPECT_EQ(data, read.data) << testing::PrintToString(szName);
    }
    EXPECT_EQ(CBytes{ 9 }, Read(key.Get(), nullptr).data);
    EXPECT_EQ(ERROR_SUCCESS, key.Set(L"TEXT", { 5 }, REG_BINARY)); // in place of the old one
    EXPECT_EQ(CBytes{ 5 }, Read(key.Get(), L"text").data);
    EXPECT_EQ(ERROR_SUCCESS, RegDeleteValueW(key.Get(), L"Text"));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegDeleteValueW(key.Get(), L"text"));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, Read(key.Get(), L"text").lResult);

    EXPECT_EQ(ERROR_SUCCESS, key.Set(std::wstring(16383, L'v').c_str(), { 1 }));
    EXPECT_EQ(ERROR_INVALID_PARAMETER, key.Set(std::wstring(16384, L'v').c_str(), { 1 }));
    EXPECT_EQ(ERROR_NOACCESS, RegSetValueExW(key.Get(), L"null", 0, REG_BINARY, nullptr, 4));
}

TEST_F(Registry, TellsTheSizeOfAValue)
{
    const CTestKey key(s_szKey);
    ASSERT_EQ(ERROR_SUCCESS, key.Set(L"v", { 1, 2, 3, 4 }, REG_DWORD));
    const std::tuple<bool, DWORD, LSTATUS, DWORD, BYTE> rows[] = {
        { false, 0, ERROR_SUCCESS, 4, 0 },  { false, 2, ERROR_SUCCESS, 4, 0 }, { true, 0, ERROR_MORE_DATA, 4, 0 },
        { true, 3, ERROR_MORE_DATA, 4, 0 }, { true, 4, ERROR_SUCCESS, 4, 1 },  { true, 9, ERROR_SUCCESS, 4, 1 },
    };
    for (const auto& [bData, cbRoom, lResult, cbAnswer, first] : rows)
    {
        BYTE data[9] = {};
        DWORD dwType = 99;
        DWORD cb = cbRoom;
        EXPECT_EQ(lResult, RegQueryValueExW(key.Get(), L"v", nullptr, &dwType, bData ? data : nullptr, &cb));
        EXPECT_EQ(cbAnswer, cb) << cbRoom;
        EXPECT_EQ(first, data[0]) << cbRoom;
        EXPECT_EQ(REG_DWORD, dwType);
    }
    BYTE data[9] = {};
    DWORD cb = sizeof data;
    EXPECT_EQ(ERROR_SUCCESS, RegQueryValueExW(key.Get(), L"v", nullptr, nullptr, nullptr, nullptr)); // is it there?
    EXPECT_EQ(ERROR_INVALID_PARAMETER, RegQueryValueExW(key.Get(), L"v", nullptr, nullptr, data, nullptr));
    EXPECT_EQ(ERROR_INVALID_PARAMETER, RegQueryValueExW(key.Get(), L"v", &cb, nullptr, data, &cb));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegQueryValueExW(key.Get(), L"w", nullptr, nullptr, data, &cb));
}

TEST_F(Registry, HonoursTheAccessMask)
{
    CTestKey(s_szKey).Set(L"v", { 1 });
    const std::tuple<REGSAM, LSTATUS, LSTATUS> rows[] = {
        { KEY_READ, ERROR_SUCCESS, ERROR_ACCESS_DENIED },
        { KEY_WRITE, ERROR_ACCESS_DENIED, ERROR_SUCCESS },
        { KEY_QUERY_VALUE, ERROR_SUCCESS, ERROR_ACCESS_DENIED },
        { KEY_SET_VALUE, ERROR_ACCESS_DENIED, ERROR_SUCCESS },
        { KEY_ENUMERATE_SUB_KEYS, ERROR_ACCESS_DENIED, ERROR_ACCESS_DENIED },
        { KEY_ALL_ACCESS, ERROR_SUCCESS, ERROR_SUCCESS },
    };
    for (const auto& [samDesired, lRead, lWrite] : rows)
    {
        CTestKey key;
        ASSERT_EQ(ERROR_SUCCESS, key.Open(s_szKey, samDesired)) << samDesired;
        EXPECT_EQ(lRead, Read(key.Get(), L"v").lResult) << samDesired;
        EXPECT_EQ(lWrite, key.Set(L"w", { 2 })) << samDesired;
        EXPECT_EQ(lWrite, RegDeleteValueW(key.Get(), L"w")) << samDesired;
        ASSERT_EQ(ERROR_SUCCESS, key.Create(s_szKey, samDesired)) << samDesired;
        EXPECT_EQ(lWrite, key.Set(L"w", { 2 })) << samDesired;
    }
    EXPECT_EQ(CBytes{ 1 }, Read(CTestKey(s_szKey).Get(), L"v").data);
}

TEST_F(Registry, OpensAKeyItself)
{
    const CTestKey key(s_szKey);
    key.Set(L"v", { 1 });
    CTestKey same;
    for (const wchar_t* szNone : { static_cast<const wchar_t*>(nullptr), L"" })
    {
        EXPECT_EQ(ERROR_SUCCESS, same.Open(szNone, KEY_READ, key.Get()));
        EXPECT_NE(key.Get(), same.Get());
        EXPECT_EQ(CBytes{ 1 }, Read(same.Get(), L"v").data);
        EXPECT_EQ(ERROR_SUCCESS, same.Create(szNone, KEY_READ, 0, key.Get()));
        EXPECT_EQ(CBytes{ 1 }, Read(same.Get(), L"v").data);
    }
    EXPECT_EQ(ERROR_SUCCESS, same.Open(nullptr, KEY_READ)); // a predefined key is its own handle
    EXPECT_EQ(HKEY_LOCAL_MACHINE, same.Get());
}

TEST_F(Registry, RefusesWhatIsNoKey)
{
    HKEY hClosed = nullptr;
    ASSERT_EQ(ERROR_SUCCESS,
              RegCreateKeyExW(HKEY_LOCAL_MACHINE, s_szKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &hClosed, nullptr));
    ASSERT_EQ(ERROR_SUCCESS, RegCloseKey(hClosed));
    for (const HKEY hKey : { hClosed, static_cast<HKEY>(nullptr) })
    {
        CTestKey key;
        DWORD cb = 0;
        EXPECT_EQ(ERROR_INVALID_HANDLE, key.Open(L"x", KEY_READ, hKey));
        EXPECT_EQ(ERROR_INVALID_HANDLE, key.Create(L"x", KEY_READ, 0, hKey));
        EXPECT_EQ(ERROR_INVALID_HANDLE, RegQueryValueExW(hKey, L"x", nullptr, nullptr, nullptr, &cb));
        EXPECT_EQ(ERROR_INVALID_HANDLE, RegSetValueExW(hKey, L"x", 0, REG_NONE, nullptr, 0));
        EXPECT_EQ(ERROR_INVALID_HANDLE, RegDeleteValueW(hKey, L"x"));
        EXPECT_EQ(ERROR_INVALID_HANDLE, RegCloseKey(hKey));
    }
    EXPECT_EQ(ERROR_SUCCESS, RegCloseKey(HKEY_LOCAL_MACHINE)); // does nothing
    EXPECT_EQ(ERROR_SUCCESS, CTestKey().Open(L"SOFTWARE\\OvSeamTest"));
    EXPECT_EQ(ERROR_INVALID_PARAMETER, RegOpenKeyExW(HKEY_LOCAL_MACHINE, s_szKey, 0, KEY_READ, nullptr));
}

TEST_F(Registry, TellsThatAKeyWasDeleted)
{
    const CTestKey key(L"SOFTWARE\\OvSeamTest\\a\\b");
    key.Set(L"v", { 1 });
    EXPECT_EQ(ERROR_ACCESS_DENIED, RegDeleteKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\OvSeamTest\\a", 0, 0)); // not empty
    EXPECT_EQ(ERROR_SUCCESS, RegDeleteKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\OvSeamTest\\a\\B", 0, 0));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegDeleteKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\OvSeamTest\\a\\b", 0, 0));
    EXPECT_EQ(ERROR_INVALID_PARAMETER, RegDeleteKeyExW(HKEY_LOCAL_MACHINE, nullptr, 0, 0));

    const CTestKey again(L"SOFTWARE\\OvSeamTest\\a\\b"); // another key of that name changes nothing for the old one
    CTestKey below;
    EXPECT_EQ(ERROR_KEY_DELETED, Read(key.Get(), L"v").lResult);
    EXPECT_EQ(ERROR_KEY_DELETED, key.Set(L"v", { 1 }));
    EXPECT_EQ(ERROR_KEY_DELETED, RegDeleteValueW(key.Get(), L"v"));
    EXPECT_EQ(ERROR_KEY_DELETED, below.Open(L"x", KEY_READ, key.Get()));
    EXPECT_EQ(ERROR_KEY_DELETED, below.Open(L"", KEY_READ, key.Get()));
    EXPECT_EQ(ERROR_KEY_DELETED, below.Create(L"x", KEY_READ, 0, key.Get()));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, Read(again.Get(), L"v").lResult); // and it starts empty
}

TEST_F(Registry, DeletesATree)
{
    const CTestKey top(s_szKey);
    const CTestKey deep(L"SOFTWARE\\OvSeamTest\\a\\b\\c");
    const CTestKey other(L"SOFTWARE\\OvSeamTest\\d");
    top.Set(L"v", { 1 });
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegDeleteTreeW(top.Get(), L"none"));
    EXPECT_EQ(ERROR_SUCCESS, RegDeleteTreeW(top.Get(), L"A"));
    EXPECT_EQ(ERROR_KEY_DELETED, Read(deep.Get(), L"v").lResult);
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, CTestKey().Open(L"SOFTWARE\\OvSeamTest\\a"));
    EXPECT_EQ(ERROR_SUCCESS, CTestKey().Open(L"SOFTWARE\\OvSeamTest\\d"));
    EXPECT_EQ(ERROR_SUCCESS, RegDeleteTreeW(top.Get(), nullptr)); // what it holds, and not the key
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, Read(top.Get(), L"v").lResult);
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, CTestKey().Open(L"SOFTWARE\\OvSeamTest\\d"));
}

TEST_F(Registry, KeepsVolatileKeysAmongThemselves)
{
    const CTestKey key(L"SOFTWARE\\OvSeamTest\\p\\vol", KEY_ALL_ACCESS, REG_OPTION_VOLATILE);
    EXPECT_EQ(REG_CREATED_NEW_KEY, key.Disposition());
    EXPECT_EQ(ERROR_SUCCESS, key.Set(L"v", { 1 }));
    CTestKey below;
    EXPECT_EQ(ERROR_CHILD_MUST_BE_VOLATILE, below.Create(L"sub", KEY_READ, 0, key.Get()));
    EXPECT_EQ(ERROR_CHILD_MUST_BE_VOLATILE,
              below.Create(L"SOFTWARE\\OvSeamTest\\p\\x")); // made on the way, so volatile
    EXPECT_EQ(ERROR_SUCCESS, below.Create(L"sub", KEY_READ, REG_OPTION_VOLATILE, key.Get()));
    EXPECT_EQ(ERROR_SUCCESS, below.Create(L"SOFTWARE\\OvSeamTest\\P\\VOL")); // one that exists stays what it is
    EXPECT_EQ(REG_OPENED_EXISTING_KEY, below.Disposition());
    EXPECT_EQ(CBytes{ 1 }, Read(below.Get(), L"V").data);
    EXPECT_EQ(ERROR_SUCCESS, RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\OvSeamTest\\p"));
    EXPECT_EQ(ERROR_KEY_DELETED, Read(below.Get(), L"V").lResult);
}

// On the real HKEY_LOCAL_MACHINE: a scratch one has no views.
TEST(RegistryViews, LieApartBelowSoftware)
{
    if (IsSelfTest())
        GTEST_SKIP() << "needs administrator rights and writes to the machine's own keys";
    struct CCleanUp
    {
        CCleanUp() { Remove(); }
        ~CCleanUp() { Remove(); }
        static void Remove()
        {
            RegDeleteKeyExW(HKEY_LOCAL_MACHINE, s_szKey, KEY_WOW64_64KEY, 0);
            RegDeleteKeyExW(HKEY_LOCAL_MACHINE, s_szKey, KEY_WOW64_32KEY, 0);
        }
    } cleanUp;
    const CTestKey wide(s_szKey, KEY_ALL_ACCESS | KEY_WOW64_64KEY);
    CTestKey key;
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, key.Open(s_szKey, KEY_READ | KEY_WOW64_32KEY));
    EXPECT_EQ(ERROR_SUCCESS, key.Open(s_szKey, KEY_READ | KEY_WOW64_64KEY));
    const CTestKey narrow(s_szKey, KEY_ALL_ACCESS | KEY_WOW64_32KEY);
    EXPECT_EQ(REG_CREATED_NEW_KEY, narrow.Disposition());
    wide.Set(L"v", { 64 });
    narrow.Set(L"v", { 32 });

    const std::tuple<const wchar_t*, REGSAM, BYTE> rows[] = {
        { s_szKey, KEY_WOW64_64KEY, 64 },
        { L"software\\ovseamtest", KEY_WOW64_32KEY, 32 },
        { L"SOFTWARE\\Wow6432Node\\OvSeamTest", KEY_WOW64_64KEY, 32 }, // where the 32-bit view lies
        { L"SOFTWARE\\WOW6432NODE\\OvSeamTest", KEY_WOW64_32KEY, 32 }, // and is not redirected twice
    };
    for (const auto& [szPath, samView, value] : rows)
    {
        EXPECT_EQ(ERROR_SUCCESS, key.Open(szPath, KEY_READ | samView)) << testing::PrintToString(szPath);
        EXPECT_EQ(CBytes{ value }, Read(key.Get(), L"v").data) << testing::PrintToString(szPath);
    }
    CTestKey software; // a view is chosen by each call, not by the key that it starts from
    EXPECT_EQ(ERROR_SUCCESS, software.Open(L"SOFTWARE", KEY_READ | KEY_WOW64_64KEY));
    EXPECT_EQ(ERROR_SUCCESS, key.Open(L"OvSeamTest", KEY_READ | KEY_WOW64_32KEY, software.Get()));
    EXPECT_EQ(CBytes{ 32 }, Read(key.Get(), L"v").data);
    EXPECT_EQ(ERROR_SUCCESS, RegDeleteKeyExW(HKEY_LOCAL_MACHINE, s_szKey, KEY_WOW64_32KEY, 0));
    EXPECT_EQ(CBytes{ 64 }, Read(wide.Get(), L"v").data);
    EXPECT_EQ(ERROR_KEY_DELETED, Read(narrow.Get(), L"v").lResult);
}
