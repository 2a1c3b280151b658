#include "ImportTable.h"

#include <cstring>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

namespace
{

/// Where a library's calls of one function go: the slots that the loader has filled with the function's address.
class CSlots
{
public:
    CSlots(HMODULE hModule, const char* szFunction, void* pNew)
        : m_nBase(reinterpret_cast<ElfW(Addr)>(hModule)), m_szFunction(szFunction), m_pNew(pNew)
    {
        ::dl_iterate_phdr(&Visit, this);
    }

    void* Old() const { return m_pOld; }

private:
    static int Visit(dl_phdr_info* pInfo, size_t, void* pSlots)
    {
        return static_cast<CSlots*>(pSlots)->PatchIn(*pInfo);
    }

    int PatchIn(const dl_phdr_info& info)
    {
        if (info.dlpi_addr != m_nBase)
            return 0;
        for (unsigned i = 0; i < info.dlpi_phnum; ++i)
            if (info.dlpi_phdr[i].p_type == PT_DYNAMIC)
                PatchTables(reinterpret_cast<const ElfW(Dyn)*>(m_nBase + info.dlpi_phdr[i].p_vaddr));
        return 1;
    }

    void PatchTables(const ElfW(Dyn) * pEntry)
    {
        ElfW(Addr) tables[2] = {};
        ElfW(Xword) sizes[2] = {};
        for (; pEntry->d_tag != DT_NULL; ++pEntry)
            switch (pEntry->d_tag)
            {
            case DT_SYMTAB:
                m_pSymbols = reinterpret_cast<const ElfW(Sym)*>(pEntry->d_un.d_ptr);
                break;
            case DT_STRTAB:
                m_pNames = reinterpret_cast<const char*>(pEntry->d_un.d_ptr);
                break;
            case DT_RELA:
                tables[0] = pEntry->d_un.d_ptr;
                break;
            case DT_RELASZ:
                sizes[0] = pEntry->d_un.d_val;
                break;
            case DT_JMPREL:
                tables[1] = pEntry->d_un.d_ptr;
                break;
            case DT_PLTRELSZ:
                sizes[1] = pEntry->d_un.d_val;
                break;
            default:
                break;
            }
        for (unsigned i = 0; i < 2; ++i)
            for (ElfW(Xword) n = 0; n < sizes[i] / sizeof(ElfW(Rela)); ++n)
                Patch(reinterpret_cast<const ElfW(Rela)*>(tables[i])[n]);
    }

    void Patch(const ElfW(Rela) & entry)
    {
        const auto nType = ELF64_R_TYPE(entry.r_info);
        if (nType != R_X86_64_JUMP_SLOT && nType != R_X86_64_GLOB_DAT)
            return;
        const char* const szName = m_pNames + m_pSymbols[ELF64_R_SYM(entry.r_info)].st_name;
        if (std::strcmp(szName, m_szFunction) != 0)
            return;
        void** const ppSlot = reinterpret_cast<void**>(m_nBase + entry.r_offset);
        const ElfW(Addr) nPage = static_cast<ElfW(Addr)>(::sysconf(_SC_PAGESIZE));
        void* const pPage = reinterpret_cast<void*>(reinterpret_cast<ElfW(Addr)>(ppSlot) & ~(nPage - 1));
        ::mprotect(pPage, nPage, PROT_READ | PROT_WRITE); // read-only since the loader was done
        m_pOld = *ppSlot;
        *ppSlot = m_pNew;
    }

    ElfW(Addr) m_nBase;
    const char* m_szFunction;
    void* m_pNew;
    void* m_pOld = nullptr;
    const ElfW(Sym) * m_pSymbols = nullptr;
    const char* m_pNames = nullptr;
};

} // namespace

void* PatchImport(HMODULE hModule, const char* szFunction, void* pNew)
{
    return CSlots(hModule, szFunction, pNew).Old();
}
