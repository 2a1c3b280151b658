#include "FuzzAdapter.h"

#include "Fuzz.h"
#include "Platform/Control.h"

CFuzzAdapter::CFuzzAdapter()
{
    StartWithService();
    m_nObjects = OvPlatform::LiveComObjects();
    m_nStrings = OvPlatform::LiveBstrs();
}

unsigned CFuzzAdapter::Errors() const
{
    unsigned nErrors = 0;
    for (const CTold& told : m_sink.All())
    {
        Demand(told.what != "unexpected format", "every line comes as a text");
        nErrors += told.what == "0" ? 1 : 0;
    }
    return nErrors;
}

void CFuzzAdapter::DemandNothingLeft() const
{
    ::SetErrorInfo(0, nullptr); // the last failing call's
    Demand(OvPlatform::LiveComObjects() == m_nObjects, "no object is left behind");
    Demand(OvPlatform::LiveBstrs() == m_nStrings, "no string is left behind");
}
