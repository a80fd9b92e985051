// How much a thread has worked, however much else the machine has to do.
#pragma once

#include <chrono>

namespace wavo::testing {

/// Processor time that the calling thread has used so far. It stands while the thread waits or
/// another one has the processor. Windows counts in steps of some 16 ms.
std::chrono::nanoseconds ThreadProcessorTime();

}  // namespace wavo::testing
