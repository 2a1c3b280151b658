// The one rule by which a Unix user has a security identifier.
#pragma once

#include <string>
#include <sys/types.h>

namespace OvPlatform
{

/// "S-1-22-1-" and the user id in decimal: authority 22 is that of Unix users, as file servers have it.
inline std::wstring UserSidText(uid_t nUser)
{
    return L"S-1-22-1-" + std::to_wstring(nUser);
}

} // namespace OvPlatform
