#include "PatchAdapter/ObserverList.h"

#include <algorithm>

CObserverList::CWalk::CWalk(CObserverList& list) : m_list(list), m_nPlace(static_cast<ptrdiff_t>(list.m_walks.size()))
{
    std::list<IStateObserver*>& observers = list.m_observers;
    list.m_walks.push_back({ observers.begin(), observers.empty() ? observers.end() : std::prev(observers.end()) });
}

/// @return null at the walk's end; no entry is null.
IStateObserver* CObserverList::TakeNext(ptrdiff_t nWalk)
{
    CRange& range = m_walks.begin()[nWalk];
    if (range.next == m_observers.end())
        return nullptr;
    IStateObserver* const pObserver = *range.next;
    range.next = range.next == range.last ? m_observers.end() : std::next(range.next);
    return pObserver;
}

void CObserverList::RemoveFirst(const IStateObserver* pObserver)
{
    const CEntry entry = std::find(m_observers.begin(), m_observers.end(), pObserver);
    if (entry == m_observers.end())
        return;
    for (CRange& range : m_walks)
    {
        if (range.next == entry)
            range.next = range.next == range.last ? m_observers.end() : std::next(range.next);
        else if (range.last == entry && range.next != m_observers.end())
            --range.last;
    }
    m_observers.erase(entry);
}
