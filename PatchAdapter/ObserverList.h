// The registry of state observers, which may change while it is walked.
#pragma once

#include "PatchAdapterApi.h"

#include <cstddef>
#include <list>
#include <vector>

/// The observers in the order of their registration; the same one may have several entries. They are the host's.
///
/// Guarded by the adapter's observer lock, which a thread may take again: so an observer that is called may change the
/// list, or have it walked anew. Whoever is removed is not visited any more; whoever is added is not visited by the
/// walks that have begun.
class CObserverList
{
public:
    void Append(IStateObserver* pObserver) { m_observers.push_back(pObserver); }

    /// Removes the first entry; later equal ones stay. Nothing happens when there is none.
    void RemoveFirst(const IStateObserver* pObserver);

    /// Calls visit(pObserver) for each entry. What it throws ends the walk and leaves.
    template <class Visit>
    void ForEach(Visit&& visit)
    {
        const CWalk walk(*this);
        while (IStateObserver* const pObserver = TakeNext(walk.m_nPlace))
            visit(pObserver);
    }

private:
    using CEntry = std::list<IStateObserver*>::iterator;

    /// What is still to be visited; nothing when next is the list's end.
    struct CRange
    {
        CEntry next;
        CEntry last;
    };

    /// Has a range of its own in m_walks. By its place: what an inner walk has left there that never ended, because
    /// the host went on elsewhere, goes with it.
    struct CWalk
    {
        explicit CWalk(CObserverList& list);
        ~CWalk() { m_list.m_walks.erase(m_list.m_walks.begin() + m_nPlace, m_list.m_walks.end()); }
        CWalk(const CWalk&) = delete;
        CWalk& operator=(const CWalk&) = delete;

        CObserverList& m_list;
        const ptrdiff_t m_nPlace;
    };

    IStateObserver* TakeNext(ptrdiff_t nWalk);

    std::list<IStateObserver*> m_observers;
    std::vector<CRange> m_walks; // those that are under way, the innermost last
};
