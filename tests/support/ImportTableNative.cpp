#include "ImportTable.h"

#include <link.h>
#include <stdexcept>
#include <sys/mman.h>
#include <unistd.h>

namespace
{

/// The slots that the loader has filled for one module with a function's address.
class CSlots
{
public:
    CSlots(HMODULE hModule, const void* pFunction, const void* pNew)
        : m_nBase(reinterpret_cast<ElfW(Addr)>(hModule)), m_pFunction(pFunction), m_pNew(pNew)
    {
        ::dl_iterate_phdr(&Visit, this);
    }

    bool Found() const { return m_bFound; }

private:
    static int Visit(dl_phdr_info* pInfo, size_t, void* pSlots)
    {
        return static_cast<CSlots*>(pSlots)->ReplaceIn(*pInfo);
    }

    int ReplaceIn(const dl_phdr_info& info)
    {
        if (info.dlpi_addr != m_nBase)
            return 0;
        for (unsigned i = 0; i < info.dlpi_phnum; ++i)
            if (info.dlpi_phdr[i].p_type == PT_DYNAMIC)
                ReplaceInTables(reinterpret_cast<const ElfW(Dyn)*>(m_nBase + info.dlpi_phdr[i].p_vaddr));
        return 1;
    }

    void ReplaceInTables(const ElfW(Dyn) * pEntry)
    {
        ElfW(Addr) tables[2] = {};
        ElfW(Xword) sizes[2] = {};
        for (; pEntry->d_tag != DT_NULL; ++pEntry)
            switch (pEntry->d_tag)
            {
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
                Replace(reinterpret_cast<const ElfW(Rela)*>(tables[i])[n]);
    }

    void Replace(const ElfW(Rela) & entry)
    {
        const auto nType = ELF64_R_TYPE(entry.r_info);
        const void** const ppSlot = reinterpret_cast<const void**>(m_nBase + entry.r_offset);
        if ((nType != R_X86_64_JUMP_SLOT && nType != R_X86_64_GLOB_DAT) || *ppSlot != m_pFunction)
            return;
        const ElfW(Addr) nPage = static_cast<ElfW(Addr)>(::sysconf(_SC_PAGESIZE));
        void* const pPage = reinterpret_cast<void*>(reinterpret_cast<ElfW(Addr)>(ppSlot) & ~(nPage - 1));
        ::mprotect(pPage, nPage, PROT_READ | PROT_WRITE); // read-only since the loader was done
        *ppSlot = m_pNew;
        m_bFound = true;
    }

    ElfW(Addr) m_nBase;
    const void* m_pFunction;
    const void* m_pNew;
    bool m_bFound = false;
};

} // namespace

void ReplaceImport(HMODULE hModule, const void* pFunction, const void* pNew)
{
    if (!CSlots(hModule, pFunction, pNew).Found())
        throw std::runtime_error("the module does not import the function");
}
