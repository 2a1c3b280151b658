// patchhost: loads the adapter library and drives it as the agent would.
#include "PatchHost/AdapterLibrary.h"
#include "PatchHost/CommandLine.h"
#include "PatchHost/Console.h"
#include "PatchHost/Interrupt.h"
#include "PatchHost/Output.h"
#include "PatchHost/Session.h"

#include <cstdlib>

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

int RunGuarded(int argc, char** argv)
{
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

} // namespace

int main(int argc, char** argv)
{
    NoteInterrupts();
    PrepareStreams();
    const int nResult = RunGuarded(argc, argv);
    if (CSession::IsAdapterLeft()) // its threads still run: nothing that they use may be destroyed
        std::_Exit(nResult);
    return nResult;
}
