#include "ovCore/OvFile.h"

#include "ovCore/OvException.h"
#include "ovCore/OvStackTrace.h"

#include <algorithm>
#include <utility>

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvFile";
constexpr DWORD NAME_BUFFER = 1024; // characters, with the terminating zero

template <class Value>
void Store(std::wstring* pTarget, Value&& value)
{
    if (pTarget != nullptr)
        *pTarget = std::forward<Value>(value);
}

bool CanOpen(const std::wstring& strFile)
{
    const HANDLE hFile = ::CreateFileW(strFile.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                       FILE_FLAG_NO_BUFFERING, nullptr);
    if (hFile == INVALID_HANDLE_VALUE)
        return false;
    ::CloseHandle(hFile);
    return true;
}

} // namespace

bool COvFile::HasDrivePath(const std::wstring& tzFileNm, std::wstring* drive)
{
    OV_SCOPE(L"COvFile::HasDrivePath");
    if (tzFileNm.compare(std::min<size_t>(1, tzFileNm.size()), 2, L":\\") != 0)
        return false;
    Store(drive, tzFileNm.substr(0, 3));
    return true;
}

bool COvFile::HasUncPath(const std::wstring& tzFileNm, std::wstring* root, std::wstring* server, std::wstring* share)
{
    OV_SCOPE(L"COvFile::HasUncPath");
    if (tzFileNm.compare(0, 2, L"\\\\") != 0)
        return false;
    const size_t nServerEnd = tzFileNm.find(L'\\', 2);
    if (nServerEnd == std::wstring::npos)
        OvRaise(E_FAIL, s_szSource, __LINE__,
                COvEvidence(L"Info Msg", L"UNC path has server name but no share name") +
                    COvEvidence(L"tzFileNm", tzFileNm));
    const size_t nShareEnd = std::min(tzFileNm.find(L'\\', nServerEnd + 1), tzFileNm.size());
    Store(root, tzFileNm.substr(0, nShareEnd));
    Store(server, tzFileNm.substr(2, nServerEnd - 2));
    Store(share, tzFileNm.substr(nServerEnd + 1, nShareEnd - nServerEnd - 1));
    return true;
}

void COvFile::GetFileNameParts(const std::wstring& path, std::wstring* folder, std::wstring* baseName,
                               std::wstring* extension, std::wstring* fileName)
{
    OV_SCOPE(L"COvFile::GetFileNameParts");
    const size_t nSlash = path.rfind(L'\\');
    const std::wstring strFolder = nSlash != std::wstring::npos ? path.substr(0, nSlash) : std::wstring();
    const std::wstring strName = nSlash != std::wstring::npos ? path.substr(nSlash + 1) : path;
    const size_t nDot = strName.rfind(L'.');
    Store(folder, strFolder);
    Store(baseName, strName.substr(0, nDot));
    Store(extension, nDot != std::wstring::npos ? strName.substr(nDot + 1) : std::wstring());
    Store(fileName, strName);
}

std::wstring COvFile::MakeUnicodeName(const std::wstring& path)
{
    OV_SCOPE(L"COvFile::MakeUnicodeName");
    if (HasDrivePath(path, nullptr))
        return L"\\\\?\\" + path;
    if (HasUncPath(path, nullptr, nullptr, nullptr))
        return L"\\\\?\\UNC\\" + path.substr(2);
    return path;
}

std::wstring COvFile::GetModuleFileNameW(HMODULE module)
{
    OV_SCOPE(L"COvFile::GetModuleFileNameW");
    wchar_t szFile[NAME_BUFFER] = {};
    const DWORD dwLength = ::GetModuleFileNameW(module, szFile, NAME_BUFFER);
    if (dwLength == 0)
    {
        const LONG lError = static_cast<LONG>(::GetLastError());
        OvRaise(E_FAIL, s_szSource, __LINE__,
                COvEvidence(L"Method", L"GetModuleFileName()") + COvEvidence(L"Win32 GetLastError", lError, true));
    }
    return std::wstring(szFile, std::min(dwLength, NAME_BUFFER - 1));
}

std::wstring COvFile::GetModuleFileNameW(const std::wstring& moduleName)
{
    OV_SCOPE(L"COvFile::GetModuleFileNameW");
    if (moduleName.empty())
        return GetModuleFileNameW(nullptr);
    const HMODULE hModule = ::GetModuleHandleW(moduleName.c_str());
    return hModule != nullptr ? GetModuleFileNameW(hModule) : std::wstring();
}

bool COvFile::FileExists(const std::wstring& tzFileNm, bool bThrow, const wchar_t* tzDesc)
{
    OV_SCOPE(L"COvFile::FileExists");
    const std::wstring strNewFileNm = MakeUnicodeName(tzFileNm);
    const bool bExists = !tzFileNm.empty() && CanOpen(strNewFileNm);
    if (!bExists && bThrow)
    {
        COvEvidence evidence = COvEvidence(L"Info Msg", L"Specified file does not exist") +
                               COvEvidence(L"tzFileNm", tzFileNm) + COvEvidence(L"tzDesc", tzDesc);
        if (!tzFileNm.empty())
            evidence += COvEvidence(L"tzNewFileNm", strNewFileNm);
        OvRaise(E_FAIL, s_szSource, __LINE__, evidence);
    }
    return bExists;
}
