// patchhost: loads the adapter library and drives it as the agent would.
#include "PatchHost/AdapterLibrary.h"
#include "PatchHost/CommandLine.h"
#include "PatchHost/Console.h"
#include "PatchHost/Interrupt.h"
#include "PatchHost/Output.h"

namespace
{

int Run(const std::vector<std::string>& arguments)
{
    const std::optional<CRequest> request = ParseCommandLine(arguments);
    if (!request)
        return ExitDone;
    const unsigned nCodePage = request->options.nCodePage;
    if (nCodePage != 0 && !UseAnsiCodePage(nCodePage))
        throw CCommandError(ExitUsage, "--acp " + std::to_string(nCodePage) + " is not available here");
    return request->command(request->options);
}

} // namespace

int main(int argc, char** argv)
{
    NoteInterrupts();
    PrepareStreams();
    try
    {
        return Run(Arguments(argc, argv));
    }
    catch (const CCommandError& e)
    {
        Note(e.what());
        return e.GetCode();
    }
    catch (const CLibraryError& e)
    {
        Note(e.what());
        return ExitLibrary;
    }
    catch (const std::exception& e)
    {
        Note(e.what());
        return ExitFailed;
    }
}
