// Throws as a host's own code would: with an exception of the platform's own compiler, from a module of its own.
#pragma once

[[noreturn]] void ThrowAsHost();
