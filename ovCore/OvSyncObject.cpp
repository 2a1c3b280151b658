#include "ovCore/OvSyncObject.h"

COvSyncObject::~COvSyncObject()
{
    if (m_hObject != nullptr)
        ::CloseHandle(m_hObject);
}

bool COvSyncObject::Lock(DWORD dwTimeout)
{
    return ::WaitForSingleObject(m_hObject, dwTimeout) == WAIT_OBJECT_0;
}

bool COvSyncObject::Unlock(LONG, LONG*)
{
    return true;
}
