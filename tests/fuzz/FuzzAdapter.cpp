#include "FuzzAdapter.h"

#include "Fuzz.h"
#include "Platform/Control.h"

CFuzzAdapter::CFuzzAdapter()
{
    StartWithService();
    m_nObjects = OvPlatform::LiveComObjects();
    m_nStrings = OvPlatform::LiveBstrs();
}

void CFuzzAdapter::Reset()
{
    m_sink.Clear();
    m_agent.ClearRecords();
    m_agent.ClearFaults();
    if (StoredRevision() != OLD_REVISION) // a look costs less than to write it again
        StoreRevision(OLD_REVISION);
}

void CFuzzAdapter::DemandNothingLeft() const
{
    ::SetErrorInfo(0, nullptr); // the last failing call's
    Demand(OvPlatform::LiveComObjects() == m_nObjects, "no object is left behind");
    Demand(OvPlatform::LiveBstrs() == m_nStrings, "no string is left behind");
}
