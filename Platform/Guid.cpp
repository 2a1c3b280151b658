#include "Types.h"

#include <cstring>

bool operator==(const GUID& a, const GUID& b)
{
    return std::memcmp(&a, &b, sizeof(GUID)) == 0;
}
