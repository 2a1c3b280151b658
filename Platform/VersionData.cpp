#include "VersionData.h"

#include "FileNames.h"
#include "Guard.h"

#include <algorithm>
#include <cstring>
#include <elf.h>
#include <fstream>
#include <limits>
#include <optional>
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

    bool IsOpen() const { return m_file.is_open(); }

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
        return reader.Read(section.sh_offset, block.data(), block.size()) ? ERROR_SUCCESS
                                                                          : ERROR_RESOURCE_DATA_NOT_FOUND;
    }
    return ERROR_RESOURCE_TYPE_NOT_FOUND;
}

DWORD ReadVersion(LPCWSTR szName, CBytes& block)
{
    CReader reader(HostPath(szName));
    return reader.IsOpen() ? ReadBlock(reader, block) : static_cast<DWORD>(ERROR_FILE_NOT_FOUND);
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
        std::memcpy(pBlock, block.data(), std::min<size_t>(block.size(), nBytes));
        return TRUE;
    });
}

BOOL VerQueryValueW(LPCVOID pBlock, LPCWSTR szSubBlock, LPVOID* ppValue, UINT* pnLength)
{
    *ppValue = nullptr;
    *pnLength = 0;
    if (!pBlock || !szSubBlock || std::wstring(szSubBlock) != L"\\")
        return Fail(ERROR_RESOURCE_TYPE_NOT_FOUND, FALSE);
    WORD lengths[2]; // of the block, of its value
    std::memcpy(lengths, pBlock, sizeof(lengths));
    const char* const pFixed = static_cast<const char*>(pBlock) + HeaderBytes;
    DWORD dwSignature = 0;
    const bool bRoom = lengths[1] == sizeof(VS_FIXEDFILEINFO) && lengths[0] >= HeaderBytes + lengths[1];
    if (bRoom)
        std::memcpy(&dwSignature, pFixed, sizeof(dwSignature));
    if (dwSignature != FixedSignature)
        return Fail(ERROR_RESOURCE_DATA_NOT_FOUND, FALSE);
    *ppValue = const_cast<char*>(pFixed); // the platform's own type says no const
    *pnLength = sizeof(VS_FIXEDFILEINFO);
    return TRUE;
}
