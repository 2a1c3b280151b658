#include "Platform/Registry.h"

#include "Platform/Control.h"
#include "Platform/Kernel/Counters.h"
#include "Platform/Registry/Store.h"

#include <cstdlib>
#include <cstring>
#include <map>
#include <new>
#include <pwd.h>
#include <unistd.h>

using namespace OvPlatform;

namespace
{

using CStorePtr = std::shared_ptr<CRegistryStore>;

/// What a handle stands for. A predefined key is looked up at each use, as it may not exist yet.
struct CKey
{
    CStorePtr pStore;
    CKeyPath path;
    KeyId id; // NoKey: predefined
    REGSAM samGranted;
};

using CKeyPtr = std::shared_ptr<const CKey>;

/// The open keys. Their handles are no multiples of four, as kernel handles are, and none is used twice.
class CKeyTable
{
public:
    HKEY Add(CKey key)
    {
        auto pKey = std::make_shared<const CKey>(std::move(key));
        const std::lock_guard<std::mutex> lock(m_lock);
        m_nLast += HandleStep;
        m_keys.emplace(m_nLast, CEntry{ std::move(pKey), {} });
        return reinterpret_cast<HKEY>(m_nLast);
    }

    /// Null for a key that is not open.
    CKeyPtr Find(HKEY hKey)
    {
        const std::lock_guard<std::mutex> lock(m_lock);
        const auto at = m_keys.find(reinterpret_cast<ULONG_PTR>(hKey));
        return at == m_keys.end() ? nullptr : at->second.pKey;
    }

    bool Remove(HKEY hKey)
    {
        std::map<ULONG_PTR, CEntry>::node_type removed; // let go after the lock
        const std::lock_guard<std::mutex> lock(m_lock);
        removed = m_keys.extract(reinterpret_cast<ULONG_PTR>(hKey));
        return !removed.empty();
    }

private:
    static constexpr ULONG_PTR HandleStep = 4;

    struct CEntry
    {
        CKeyPtr pKey;
        CCountedHandle counted;
    };

    std::mutex m_lock;
    std::map<ULONG_PTR, CEntry> m_keys; // guarded by m_lock
    ULONG_PTR m_nLast = 2;              // guarded by m_lock
};

/// Never destroyed: keys may still be used while the process ends.
CKeyTable& Keys()
{
    static CKeyTable& s_keys = *new CKeyTable;
    return s_keys;
}

/// Empty when the variable is not set.
std::string Environment(const char* szName)
{
    const char* szValue = std::getenv(szName);
    return szValue ? szValue : "";
}

std::string HomeFolder()
{
    const std::string home = Environment("HOME");
    const passwd* pUser = home.empty() ? getpwuid(geteuid()) : nullptr;
    return pUser ? pUser->pw_dir : home;
}

std::string DefaultFile()
{
    const std::string file = Environment("OVPLATFORM_REGISTRY");
    if (!file.empty())
        return file;
    const std::string state = Environment("XDG_STATE_HOME");
    return (state.empty() ? HomeFolder() + "/.local/state" : state) + "/pyx-patch-adapter/registry.db";
}

/// The registry that predefined keys lead to.
class CCurrentStore
{
public:
    CStorePtr Get()
    {
        const std::lock_guard<std::mutex> lock(m_lock);
        if (!m_pStore)
            m_pStore = std::make_shared<CRegistryStore>(DefaultFile());
        return m_pStore;
    }

    void Set(CStorePtr pStore)
    {
        const std::lock_guard<std::mutex> lock(m_lock);
        m_pStore.swap(pStore);
    }

private:
    std::mutex m_lock;
    CStorePtr m_pStore; // guarded by m_lock
};

CCurrentStore& CurrentStore()
{
    static CCurrentStore& s_current = *new CCurrentStore;
    return s_current;
}

/// The work's code, or the code of what it throws.
template <class Work>
LSTATUS Guarded(Work&& work)
{
    try
    {
        return work();
    }
    catch (const CRegistryError& error)
    {
        return error.lCode;
    }
    catch (const std::bad_alloc&)
    {
        return ERROR_OUTOFMEMORY;
    }
}

CKeyPtr LookUp(HKEY hKey)
{
    CKeyPath path = PredefinedPath(hKey);
    if (!path.empty())
        return std::make_shared<const CKey>(CKey{ CurrentStore().Get(), std::move(path), NoKey, KEY_ALL_ACCESS });
    CKeyPtr pKey = Keys().Find(hKey);
    if (!pKey)
        throw CRegistryError{ ERROR_INVALID_HANDLE };
    return pKey;
}

void Demand(const CKey& key, REGSAM samRight)
{
    if ((key.samGranted & samRight) == 0)
        throw CRegistryError{ ERROR_ACCESS_DENIED };
}

KeyId ExistingId(CRegistryStore& store, const CKeyPath& path)
{
    const KeyId id = store.FindKey(path);
    if (id == NoKey)
        throw CRegistryError{ ERROR_FILE_NOT_FOUND };
    return id;
}

KeyId IdOf(const CKey& key)
{
    return key.id != NoKey ? key.id : ExistingId(*key.pStore, key.path);
}

/// An open key for the rights. Those to change it are refused at once, as to an ordinary user of the platform, where
/// the registry cannot be written.
HKEY NewHandle(const CStorePtr& pStore, CKeyPath path, KeyId id, REGSAM samDesired)
{
    constexpr REGSAM samToChange = KEY_ALL_ACCESS & ~(KEY_READ | KEY_CREATE_LINK);
    if ((samDesired & samToChange) != 0)
        pStore->CheckWritable();
    return Keys().Add({ pStore, std::move(path), id, samDesired });
}

/// Where a name below a key leads in the view that is asked for; fails when the key has been deleted.
CKeyPath PathBelow(const CKey& key, LPCWSTR szSubKey, REGSAM samDesired)
{
    if (key.id != NoKey)
        key.pStore->CheckKey(key.id);
    CKeyPath path = key.path;
    const CKeyPath names = SplitSubKey(szSubKey);
    path.insert(path.end(), names.begin(), names.end());
    return (samDesired & KEY_WOW64_32KEY) != 0 ? RedirectTo32(path) : path;
}

bool IsEmpty(LPCWSTR szText)
{
    return !szText || *szText == L'\0';
}

bool HasBothViews(REGSAM samDesired)
{
    return (samDesired & KEY_WOW64_32KEY) != 0 && (samDesired & KEY_WOW64_64KEY) != 0;
}

bool IsPredefined(HKEY hKey)
{
    return !PredefinedPath(hKey).empty();
}

std::wstring ValueName(LPCWSTR szName)
{
    constexpr size_t MaxValueName = 16383;
    std::wstring name = szName ? szName : L"";
    if (name.size() > MaxValueName)
        throw CRegistryError{ ERROR_INVALID_PARAMETER };
    return name;
}

/// Gives out type, size and data, each where it is asked for.
LSTATUS DeliverValue(const CRegistryValue& value, LPDWORD pType, LPBYTE pData, LPDWORD pcbData)
{
    const auto cbValue = static_cast<DWORD>(value.data.size());
    const DWORD cbRoom = pData ? *pcbData : cbValue;
    if (pType)
        *pType = value.dwType;
    if (pcbData)
        *pcbData = cbValue;
    if (cbRoom < cbValue)
        return ERROR_MORE_DATA;
    if (pData && cbValue != 0)
        std::memcpy(pData, value.data.data(), cbValue);
    return ERROR_SUCCESS;
}

} // namespace

namespace OvPlatform
{

void SetRegistryFile(const char* szPath)
{
    CurrentStore().Set(szPath ? std::make_shared<CRegistryStore>(szPath) : nullptr);
}

void SetRegistryInMemory()
{
    SetRegistryFile(CRegistryStore::InMemory);
}

} // namespace OvPlatform

LSTATUS RegCreateKeyExW(HKEY hKey, LPCWSTR lpSubKey, DWORD Reserved, LPWSTR, DWORD dwOptions, REGSAM samDesired,
                        LPSECURITY_ATTRIBUTES, PHKEY phkResult, LPDWORD lpdwDisposition)
{
    if (!phkResult || Reserved != 0 || HasBothViews(samDesired))
        return ERROR_INVALID_PARAMETER;
    return Guarded([&] {
        const CKeyPtr pKey = LookUp(hKey);
        const bool bVolatile = (dwOptions & REG_OPTION_VOLATILE) != 0;
        CKeyPath path = PathBelow(*pKey, lpSubKey, samDesired);
        bool bCreated = false;
        const KeyId id = pKey->pStore->CreateKey(path, bVolatile, &bCreated);
        *phkResult = NewHandle(pKey->pStore, std::move(path), id, samDesired);
        if (lpdwDisposition)
            *lpdwDisposition = bCreated ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
        return ERROR_SUCCESS;
    });
}

LSTATUS RegOpenKeyExW(HKEY hKey, LPCWSTR lpSubKey, DWORD, REGSAM samDesired, PHKEY phkResult)
{
    if (!phkResult || HasBothViews(samDesired))
        return ERROR_INVALID_PARAMETER;
    *phkResult = nullptr;
    return Guarded([&] {
        if (IsPredefined(hKey) && IsEmpty(lpSubKey))
        {
            *phkResult = hKey;
            return ERROR_SUCCESS;
        }
        const CKeyPtr pKey = LookUp(hKey);
        CKeyPath path = PathBelow(*pKey, lpSubKey, samDesired);
        const KeyId id = ExistingId(*pKey->pStore, path);
        *phkResult = NewHandle(pKey->pStore, std::move(path), id, samDesired);
        return ERROR_SUCCESS;
    });
}

LSTATUS RegCloseKey(HKEY hKey)
{
    return Guarded([&] { return IsPredefined(hKey) || Keys().Remove(hKey) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE; });
}

LSTATUS RegQueryValueExW(HKEY hKey, LPCWSTR lpValueName, LPDWORD lpReserved, LPDWORD lpType, LPBYTE lpData,
                         LPDWORD lpcbData)
{
    if (lpReserved || (lpData && !lpcbData))
        return ERROR_INVALID_PARAMETER;
    return Guarded([&] {
        const CKeyPtr pKey = LookUp(hKey);
        Demand(*pKey, KEY_QUERY_VALUE);
        const std::optional<CRegistryValue> value = pKey->pStore->GetValue(IdOf(*pKey), ValueName(lpValueName));
        return value ? DeliverValue(*value, lpType, lpData, lpcbData) : ERROR_FILE_NOT_FOUND;
    });
}

LSTATUS RegSetValueExW(HKEY hKey, LPCWSTR lpValueName, DWORD, DWORD dwType, const BYTE* lpData, DWORD cbData)
{
    if (!lpData && cbData != 0)
        return ERROR_NOACCESS;
    return Guarded([&] {
        const CKeyPtr pKey = LookUp(hKey);
        Demand(*pKey, KEY_SET_VALUE);
        pKey->pStore->SetValue(IdOf(*pKey), ValueName(lpValueName), dwType, lpData, cbData);
        return ERROR_SUCCESS;
    });
}

LSTATUS RegDeleteValueW(HKEY hKey, LPCWSTR lpValueName)
{
    return Guarded([&] {
        const CKeyPtr pKey = LookUp(hKey);
        Demand(*pKey, KEY_SET_VALUE);
        return pKey->pStore->DeleteValue(IdOf(*pKey), ValueName(lpValueName)) ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
    });
}

LSTATUS RegDeleteKeyExW(HKEY hKey, LPCWSTR lpSubKey, REGSAM samDesired, DWORD)
{
    if (!lpSubKey || HasBothViews(samDesired))
        return ERROR_INVALID_PARAMETER;
    return Guarded([&] {
        const CKeyPtr pKey = LookUp(hKey);
        pKey->pStore->DeleteKey(ExistingId(*pKey->pStore, PathBelow(*pKey, lpSubKey, samDesired)));
        return ERROR_SUCCESS;
    });
}

LSTATUS RegDeleteTreeW(HKEY hKey, LPCWSTR lpSubKey)
{
    return Guarded([&] {
        const CKeyPtr pKey = LookUp(hKey);
        if (!IsEmpty(lpSubKey))
            pKey->pStore->DeleteTree(ExistingId(*pKey->pStore, PathBelow(*pKey, lpSubKey, 0)));
        else
        {
            Demand(*pKey, KEY_SET_VALUE);
            pKey->pStore->EmptyKey(IdOf(*pKey));
        }
        return ERROR_SUCCESS;
    });
}
