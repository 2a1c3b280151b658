#include "PatchAdapter/PatchAdapterFactory.h"
#include "AdapterFixture.h"
#include "FailingNew.h"

namespace
{

const std::string s_entering = "4 Entering Function: PatchAdapterFactory::Initialise\n"
                               "2 Info Msg: Creating PatchAdapter\n"
                               "4 Entering Function: CPatchAdapter::CPatchAdapter\n"
                               "4 Exiting Function: CPatchAdapter::CPatchAdapter\n";
const std::string s_exiting = "4 Exiting Function: PatchAdapterFactory::Initialise\n";

class Factory : public CAdapterTest
{
protected:
    ~Factory() override { DeleteAdapterFactory(m_pFactory); }

    IAdapter* Initialise() { return m_pFactory->Initialise(nullptr, nullptr, &m_sink, nullptr); }

    IAdapterFactory* const m_pFactory = new PatchAdapterFactory;
};

} // namespace

TEST_F(Factory, AnAdapterThatCannotBeMadeLeavesRoomForTheNext)
{
    HKEY hKey = nullptr; // a stored revision that is no text
    ASSERT_EQ(ERROR_SUCCESS, ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Trevok\\Trevok Patch Agent", 0, nullptr,
                                               0, KEY_ALL_ACCESS | KEY_WOW64_64KEY, nullptr, &hKey, nullptr));
    const BYTE data[4] = {};
    EXPECT_EQ(ERROR_SUCCESS, ::RegSetValueExW(hKey, L"PolicyRevId", 0, REG_DWORD, data, sizeof data));
    EXPECT_EQ(s_entering +
                  ErrorLine("OvRegKey", "Info Msg: Unexpected value type HKEY: HKLM m_wzPath: SOFTWARE\\Trevok\\Trevok "
                                        "Patch Agent tzName: PolicyRevId Desired: REG_SZ or REG_EXPAND_SZ Found: ( 4 ) "
                                        "Stack Dump:  ") +
                  s_exiting,
              m_sink.TranscriptOf([&] { EXPECT_EQ(nullptr, Initialise()); }));
    EXPECT_FALSE(g_bAdapterCreated);
    EXPECT_EQ(ERROR_SUCCESS, ::RegDeleteValueW(hKey, L"PolicyRevId"));
    ::RegCloseKey(hKey);
    IAdapter* pAdapter = nullptr;
    EXPECT_EQ(s_entering + s_exiting, m_sink.TranscriptOf([&] { pAdapter = Initialise(); }));
    m_pFactory->Uninitialise(pAdapter);
}

TEST_F(Factory, WithoutMemoryThereIsAWholeAdapterOrNone)
{
    bool bReached = true;
    for (unsigned nFail = 1; bReached; ++nFail)
    {
        IAdapter* pAdapter = nullptr;
        m_sink.Clear();
        {
            const CFailingNew failing(nFail);
            pAdapter = Initialise();
            bReached = failing.Reached();
        }
        EXPECT_EQ(pAdapter != nullptr, g_bAdapterCreated) << nFail;
        m_pFactory->Uninitialise(pAdapter);
        EXPECT_FALSE(g_bAdapterCreated) << nFail;
    }
}
