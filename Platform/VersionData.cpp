#include "Platform/VersionData.h"

#include "Platform/Kernel/LastError.h"
#include "Platform/Text/FileNames.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <elf.h>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

namespace OvPlatform
{

namespace
{

using CBytes = std::vector<char>;

constexpr size_t MaxBlock = 0xFFFF;     // a version block states its length in 16 bits
constexpr unsigned MaxSections = 10000; // more than any library has
constexpr char SectionName[] = ".ovversion";
constexpr size_t HeaderBytes = 6 + 32 + 2; // three lengths, the key and its NUL in UTF-16, aligned to 32 bits
constexpr DWORD FixedSignature = 0xFEEF04BD;

/// A file that may be anything: every read says whether the bytes were there.
class CReader
{
public:
    explicit CReader(const std::string& path) : m_file(path, std::ios::binary) {}

    bool Read(uint64_t nOffset, void* pTarget, size_t nBytes)
    {
        if (nOffset > static_cast<uint64_t>(std::numeric_limits<std::streamoff>::max()))
            return false;
        m_file.clear();
        m_file.seekg(static_cast<std::streamoff>(nOffset));
        m_file.read(static_cast<char*>(pTarget), static_cast<std::streamsize>(nBytes));
        return m_file.good();
    }

private:
    std::ifstream m_file;
};

/// The name of a section, as far as it can be that of the version section.
bool HasName(CReader& reader, const Elf64_Shdr& names, const Elf64_Shdr& section)
{
    char szName[sizeof(SectionName)] = {};
    return section.sh_name < names.sh_size && reader.Read(names.sh_offset + section.sh_name, szName, sizeof(szName)) &&
           std::memcmp(szName, SectionName, sizeof(SectionName)) == 0;
}

/// The block's length and its value's, which it states itself.
struct CLengths
{
    WORD nBlock;
    WORD nValue;
};

CLengths LengthsOf(LPCVOID pBlock)
{
    CLengths lengths = {};
    std::memcpy(&lengths, pBlock, sizeof(lengths));
    return lengths;
}

/// Whether all that the block tells of itself is there: who asks it later does not know its size.
bool IsWhole(const CBytes& block)
{
    return block.size() >= HeaderBytes && LengthsOf(block.data()).nBlock <= block.size();
}

/// @return 0 and the block, or the error.
DWORD ReadBlock(CReader& reader, CBytes& block)
{
    Elf64_Ehdr header = {};
    Elf64_Shdr names = {};
    const bool bLibrary = reader.Read(0, &header, sizeof(header)) &&
                          std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 && header.e_ident[EI_CLASS] == ELFCLASS64 &&
                          header.e_shentsize == sizeof(Elf64_Shdr) && header.e_shnum <= MaxSections &&
                          header.e_shstrndx < header.e_shnum &&
                          reader.Read(header.e_shoff + header.e_shstrndx * sizeof(names), &names, sizeof(names));
    if (!bLibrary)
        return ERROR_RESOURCE_DATA_NOT_FOUND;
    for (unsigned n = 0; n < header.e_shnum; ++n)
    {
        Elf64_Shdr section = {};
        if (!reader.Read(header.e_shoff + n * sizeof(section), &section, sizeof(section)))
            return ERROR_RESOURCE_DATA_NOT_FOUND;
        if (!HasName(reader, names, section))
            continue;
        block.resize(std::min<uint64_t>(section.sh_size, MaxBlock));
        return reader.Read(section.sh_offset, block.data(), block.size()) && IsWhole(block)
                   ? ERROR_SUCCESS
                   : ERROR_RESOURCE_DATA_NOT_FOUND;
    }
    return ERROR_RESOURCE_TYPE_NOT_FOUND;
}

DWORD ReadVersion(LPCWSTR szName, CBytes& block)
{
    if (!szName)
        return ERROR_INVALID_PARAMETER;
    std::string path;
    CFileId id;
    const DWORD dwError = FindFile(szName, path, id);
    if (dwError != ERROR_SUCCESS)
        return dwError;
    CReader reader(path);
    return ReadBlock(reader, block);
}

} // namespace

} // namespace OvPlatform

using namespace OvPlatform;

DWORD GetFileVersionInfoSizeW(LPCWSTR szName, LPDWORD pHandle)
{
    if (pHandle)
        *pHandle = 0;
    return OrNoMemory<DWORD>(0, [&] {
        CBytes block;
        const DWORD dwError = ReadVersion(szName, block);
        return dwError == ERROR_SUCCESS ? static_cast<DWORD>(block.size()) : Fail<DWORD>(dwError, 0);
    });
}

BOOL GetFileVersionInfoW(LPCWSTR szName, DWORD, DWORD nBytes, LPVOID pBlock)
{
    return OrNoMemory<BOOL>(FALSE, [&] {
        CBytes block;
        const DWORD dwError = ReadVersion(szName, block);
        if (dwError != ERROR_SUCCESS)
            return Fail(dwError, FALSE);
        const auto nCopied = static_cast<WORD>(std::min<size_t>(block.size(), nBytes));
        if (nCopied < LengthsOf(block.data()).nBlock) // what is cut off is not to be looked for
            std::memcpy(block.data(), &nCopied, sizeof(nCopied));
        std::memcpy(pBlock, block.data(), nCopied);
        return TRUE;
    });
}

BOOL VerQueryValueW(LPCVOID pBlock, LPCWSTR szSubBlock, LPVOID* ppValue, UINT* pnLength)
{
    *ppValue = nullptr;
    *pnLength = 0;
    if (!pBlock || !szSubBlock || std::wcscmp(szSubBlock, L"\\") != 0)
        return Fail(ERROR_RESOURCE_TYPE_NOT_FOUND, FALSE);
    const CLengths lengths = LengthsOf(pBlock);
    const char* const pFixed = static_cast<const char*>(pBlock) + HeaderBytes;
    DWORD dwSignature = 0;
    if (lengths.nValue == sizeof(VS_FIXEDFILEINFO) && lengths.nBlock >= HeaderBytes + lengths.nValue)
        std::memcpy(&dwSignature, pFixed, sizeof(dwSignature));
    if (dwSignature != FixedSignature)
        return Fail(ERROR_RESOURCE_DATA_NOT_FOUND, FALSE);
    *ppValue = const_cast<char*>(pFixed); // the platform's own type says no const
    *pnLength = sizeof(VS_FIXEDFILEINFO);
    return TRUE;
}
