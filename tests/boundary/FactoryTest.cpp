// The factory's rules, on the library as built.
#include "Host.h"

namespace
{

const std::string s_initialise = "PatchAdapterFactory::Initialise";
const std::string s_uninitialise = "PatchAdapterFactory::Uninitialise";
const std::string s_twice = "Info Msg: Attempt was made to call the factory twice. It is already intialized Function: ";

std::string Refused(const std::string& function, const std::string& evidence)
{
    return Entering(function) + Error("PatchAdapterFactory", evidence + function) + Exiting(function);
}

std::string Created()
{
    return Entering(s_initialise) + Info("Creating PatchAdapter") + Entering("CPatchAdapter::CPatchAdapter") +
           Exiting("CPatchAdapter::CPatchAdapter") + Exiting(s_initialise);
}

class Factory : public CHost
{
protected:
    Factory() { m_agent.SetEventState(AgentEvent::NotSignalled); } // the monitor then looks without pause

    IAdapter* Initialise(IAdapterFactory* pFactory, std::string* pTranscript = nullptr)
    {
        IAdapter* pAdapter = nullptr;
        const std::string transcript =
            m_sink.TranscriptOf([&] { pAdapter = pFactory->Initialise(nullptr, nullptr, &m_sink, nullptr); });
        if (pTranscript != nullptr)
            *pTranscript = transcript;
        return pAdapter;
    }

    std::string Uninitialise(IAdapterFactory* pFactory, IAdapter* pAdapter)
    {
        return m_sink.TranscriptOf([&] { pFactory->Uninitialise(pAdapter); });
    }
};

} // namespace

TEST_F(Factory, TheVersionNeedsBothPointers)
{
    uint32_t nMajor = 77;
    uint32_t nMinor = 78;
    m_library.GetVersion(nullptr, &nMinor);
    m_library.GetVersion(&nMajor, nullptr);
    m_library.GetVersion(nullptr, nullptr);
    EXPECT_EQ(77u, nMajor);
    EXPECT_EQ(78u, nMinor);
    m_library.GetVersion(&nMajor, &nMinor);
    EXPECT_EQ(2u, nMajor);
    EXPECT_EQ(0u, nMinor);
}

TEST_F(Factory, OneAdapterAtATimeInAProcess)
{
    IAdapterFactory* const pFirst = m_library.MakeFactory();
    IAdapterFactory* const pSecond = m_library.MakeFactory();
    EXPECT_NE(pFirst, pSecond);
    std::string transcript;

    IAdapter* const pAdapter = Initialise(pFirst, &transcript);
    ASSERT_NE(nullptr, pAdapter);
    EXPECT_EQ(Created(), transcript);

    EXPECT_EQ(pAdapter, Initialise(pFirst, &transcript)) << "a second call gives the first one's adapter";
    EXPECT_EQ(Refused(s_initialise, s_twice), transcript);
    EXPECT_EQ(nullptr, Initialise(pSecond, &transcript));
    EXPECT_EQ(Refused(s_initialise, s_twice), transcript);

    EXPECT_EQ(Entering(s_uninitialise) + Exiting(s_uninitialise), Uninitialise(pSecond, pAdapter))
        << "a factory without an adapter leaves another one's alone";
    const std::string foreign = "Info Msg: Passed Adapter reference was not created by this factory. "
                                "Multiple adapter objects not supported in this version Function: ";
    EXPECT_EQ(Entering(s_uninitialise) + Info("Destroying PatchAdapter") +
                  Error("PatchAdapterFactory", foreign + s_uninitialise) + Exiting(s_uninitialise),
              Uninitialise(pFirst, nullptr));
    EXPECT_EQ(Entering(s_uninitialise) + Info("Destroying PatchAdapter") + Exiting(s_uninitialise),
              Uninitialise(pFirst, pAdapter));
    EXPECT_EQ(Refused(s_uninitialise, "Info Msg: Adapter has not been initialized Function: "),
              Uninitialise(pFirst, pAdapter));

    IAdapter* const pNext = Initialise(pSecond);
    EXPECT_NE(nullptr, pNext) << "once it is given back, another factory may make one";
    pSecond->Uninitialise(pNext);
    DeleteAdapterFactory(pSecond);
    DeleteAdapterFactory(pFirst);
}

TEST_F(Factory, AnUnboundFactoryIsSilent)
{
    IAdapterFactory* const pFactory = m_library.MakeFactory();
    EXPECT_EQ("", Uninitialise(pFactory, nullptr));

    IAdapter* const pAdapter = pFactory->Initialise(nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(nullptr, pAdapter) << "an adapter works without a log";
    CRecordingStatusReceiver receiver;
    EXPECT_TRUE(pAdapter->GetStatus(&receiver));
    EXPECT_EQ(1u, receiver.Count());
    pFactory->Uninitialise(pAdapter);
    DeleteAdapterFactory(pFactory);
}

TEST_F(Factory, AFactoryDeletedWithItsAdapterKeepsTheProcessTaken)
{
    IAdapterFactory* const pFirst = m_library.MakeFactory();
    ASSERT_NE(nullptr, Initialise(pFirst));
    EXPECT_EQ("", m_sink.TranscriptOf([&] { DeleteAdapterFactory(pFirst); }));

    IAdapterFactory* const pSecond = m_library.MakeFactory();
    std::string transcript;
    EXPECT_EQ(nullptr, Initialise(pSecond, &transcript));
    EXPECT_EQ(Refused(s_initialise, s_twice), transcript);
    DeleteAdapterFactory(pSecond);
}
