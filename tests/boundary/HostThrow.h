// Throws as a host's own code would: with an exception of the platform's own compiler.
#pragma once

[[noreturn]] void ThrowAsHost();
