// info: what the library says of itself, and the service's state as this process sees it.
#include "PatchHost/AdapterLibrary.h"
#include "PatchHost/Commands/Commands.h"
#include "PatchHost/Output.h"
#include "PatchHost/PatchService.h"
#include "PatchHost/Text.h"

#include <vector>

namespace
{

std::string FileVersion(const std::string& path)
{
    const std::wstring wide = Utf8ToWide(path);
    std::vector<BYTE> block(::GetFileVersionInfoSizeW(wide.c_str(), nullptr));
    LPVOID pInfo = nullptr;
    UINT nLength = 0;
    if (block.empty() || !::GetFileVersionInfoW(wide.c_str(), 0, static_cast<DWORD>(block.size()), block.data()) ||
        !::VerQueryValueW(block.data(), L"\\", &pInfo, &nLength))
        return "none";
    const auto& info = *static_cast<const VS_FIXEDFILEINFO*>(pInfo);
    return std::to_string(info.dwFileVersionMS >> 16) + "." + std::to_string(info.dwFileVersionMS & 0xFFFF) + "." +
           std::to_string(info.dwFileVersionLS >> 16) + "." + std::to_string(info.dwFileVersionLS & 0xFFFF);
}

const char* ServiceWord()
{
    switch (SeenEvent())
    {
    case AgentEvent::Signalled:
        return "runs";
    case AgentEvent::NotSignalled:
        return "hangs: its event is there, but not signalled";
    default:
        return "does not run: its event is not there";
    }
}

} // namespace

int InfoCommand(const COptions& options)
{
    const COutput out(options);
    const CAdapterLibrary library(options.library); // which has looked for both exports
    const std::string interfaceVersion = std::to_string(library.GetMajor()) + "." + std::to_string(library.GetMinor());
    const std::string fileVersion = FileVersion(library.GetPath());
    const std::string service = ServiceWord();
    out.Json({ { "path", library.GetPath() },
               { "interfaceVersion", interfaceVersion },
               { "fileVersion", fileVersion },
               { "exports", { PATCHADAPTER_GET_FACTORY_NAME, PATCHADAPTER_GET_VERSION_NAME } },
               { "installedService", service } });
    out.Text("path               " + library.GetPath() + "\n" + "interface version  " + interfaceVersion + "\n" +
             "file version       " + fileVersion + "\n" +
             "exports            " PATCHADAPTER_GET_FACTORY_NAME ", " PATCHADAPTER_GET_VERSION_NAME "\n" +
             "installed service  " + service + "\n");
    return ExitDone;
}
