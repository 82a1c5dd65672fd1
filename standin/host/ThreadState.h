// What the host keeps for each thread: its events and its unit of work.
#pragma once

#include "standin/host/EventLog.h"

namespace standin {

class UnitOfWork;

struct ThreadState {
  EventLog events;
  UnitOfWork* unit = nullptr; // the outermost one that is open
};

// The calling thread's state, made on first use.
ThreadState& CurrentThread();
// For a thread that ends.
void ReleaseThreadState() noexcept;

} // namespace standin
