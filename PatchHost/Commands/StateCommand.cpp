// state: the recorded revision and where it is stored.
#include "PatchHost/Commands/Commands.h"
#include "PatchHost/Output.h"
#include "PatchHost/PolicyRevision.h"
#include "PatchHost/Session.h"
#include "PatchHost/Text.h"

int StateCommand(const COptions& options)
{
    const COutput out(options);
    const CStatePlace place(StateFor(options.service), options.stateFolder);
    const std::optional<std::string> revision = ReadPolicyRevision();
    out.Json({ { "revision", revision ? CJson(*revision) : CJson() }, { "place", place.Describe() } });
    out.Text("revision  " + Shown(revision.value_or("none is stored")) + "\n" + "place     " + place.Describe() + "\n");
    return ExitDone;
}
