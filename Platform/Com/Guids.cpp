// GUIDs: comparison, new ones and their texts.
#include "Platform/Com.h"

#include <cstdio>
#include <cstring>
#include <unistd.h>

bool operator==(const GUID& a, const GUID& b)
{
    return std::memcmp(&a, &b, sizeof(GUID)) == 0;
}

HRESULT CoCreateGuid(GUID* pguid)
{
    if (!pguid)
        return E_INVALIDARG;
    if (getentropy(pguid, sizeof *pguid) != 0)
        return E_UNEXPECTED;
    pguid->Data3 = static_cast<uint16_t>((pguid->Data3 & 0x0FFF) | 0x4000); // version 4
    pguid->Data4[0] = static_cast<uint8_t>((pguid->Data4[0] & 0x3F) | 0x80);
    return S_OK;
}

int StringFromGUID2(REFGUID rguid, LPOLESTR lpsz, int cchMax)
{
    constexpr int Units = 39;
    if (!lpsz || cchMax < Units)
        return 0;
    const uint8_t* p = rguid.Data4;
    char text[Units];
    std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", rguid.Data1,
                  unsigned{ rguid.Data2 }, unsigned{ rguid.Data3 }, unsigned{ p[0] }, unsigned{ p[1] },
                  unsigned{ p[2] }, unsigned{ p[3] }, unsigned{ p[4] }, unsigned{ p[5] }, unsigned{ p[6] },
                  unsigned{ p[7] });
    for (int i = 0; i < Units; ++i)
        lpsz[i] = static_cast<OLECHAR>(text[i]);
    return Units;
}
