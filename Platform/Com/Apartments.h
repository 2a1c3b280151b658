// The apartments of the threads.
#pragma once

#include "Platform/Types.h"

namespace OvPlatform
{

/// Tells apartments apart; never used again for another one, but for the multithreaded one, which has one for all time.
using ApartmentId = uint64_t;

constexpr ApartmentId NoApartment = 0;
constexpr ApartmentId MultithreadedApartment = 1;

/// The calling thread's apartment. A thread that entered none counts as in the multithreaded one while that exists.
ApartmentId CurrentApartment();

/// Withdraws the class objects that an apartment has registered. Called without a lock held.
void RevokeClassObjects(ApartmentId apartment);

} // namespace OvPlatform
