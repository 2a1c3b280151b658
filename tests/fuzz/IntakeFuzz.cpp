// Any bytes as a policy document: applied or refused, with a line that says so, and nothing left behind.
#include "Fuzz.h"
#include "FuzzAdapter.h"

int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize)
{
    CFuzzAdapter& adapter = CFuzzAdapter::Get();
    const std::string policy(reinterpret_cast<const char*>(pData), nSize);
    const CPolicyOutcome outcome = adapter.Configure(policy.c_str());
    Demand(outcome.nErrors <= 1, "a refusal is one line");
    Demand(outcome.settings.size() + outcome.nErrors <= 1, "what is refused does not reach the service");
    Demand(!outcome.settings.empty() || outcome.wzRevId == CFuzzAdapter::OLD_REVISION,
           "a revision is recorded when its settings were received");
    adapter.DemandNothingLeft();
    return 0;
}
