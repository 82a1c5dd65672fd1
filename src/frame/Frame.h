// Frame: what every public class of the component holds, and the steps that every public method begins and
// ends with.
//
// A class holds the caller info and the data context of its last set-up and nothing else between calls. A
// method that writes votes abort first, on the context it still holds, and only then sets up a fresh one:
// whatever fails from there on, the unit of work is left aborted.
#pragma once

#include <string>

#include "com/Object.h"
#include "src/frame/Ado.h"

namespace mbom {

class Frame {
 public:
  // Takes a first data context from the thread's global object. Throws the COM error of whichever call fails.
  Frame();
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;

  // The set-up: a fresh data context bound to the descriptor `sDsn`, and its caller info. The result means
  // nothing: it is False always; a failure throws.
  bool OpenDataContext(const std::wstring& sDsn);
  // The open connection of the bound descriptor.
  Connection GetConnection() const;
  // The same as a generic automation object: what reads hand to a recordset of theirs.
  Connection GetConnectionObject() const;

  void VoteAbort() const;
  void VoteComplete() const;

  // Runs `work`, a whole call with its set-up, and votes as it ends: complete, its result handed on; or
  // abort, whatever failed rising.
  template <class Work>
  auto VoteByOutcome(const Work& work) const {
    try {
      auto result = work();
      VoteComplete();
      return result;
    } catch (...) {
      VoteAbort();
      throw;
    }
  }

  const com::Object& context() const noexcept { return context_; }

 private:
  // In this order: the context is released before the caller info.
  com::Object callerInfo_;
  com::Object context_;
};

} // namespace mbom
