// Frame: what every public class of the component holds, and the protocol of votes that every public method
// follows.
//
// A class holds the caller info and the data context of its last set-up and nothing else between calls. A
// method that writes votes abort first, on the context it still holds, and only then sets up a fresh one:
// whatever fails from there on, the unit of work is left aborted.
//
// A public method runs its work inside one of three members, which say what becomes of a failure:
//
//   TrapFailures     votes abort, and the caller gets the method's failure value; only a vote that fails then
//                    rises, because the host must not take the unit of work for a good one. After a refusal,
//                    which has written nothing, that vote's failure is dropped too;
//   NeverRaise       as TrapFailures, and drops the failure of that vote too: for methods that only read;
//   AbortOnFailure   votes abort, and the failure rises to the caller as it is;
//   LetFailuresRise  votes nothing, and the failure rises to the caller as it is.
//
// A work that returns has succeeded: its recordsets and its connection have been let go, and complete is
// voted. It returns through Refuse where a business check says no, through Complete where complete is to be
// voted before something is let go, and through WithoutVote where no vote is cast at all. Refusals and
// failures vote abort before anything is let go.
//
// A method that uses another one of its class runs a whole call inside its own, with its own set-up and vote.
#pragma once

#include <exception>
#include <string>
#include <type_traits>

#include "com/Object.h"
#include "src/frame/ado/Connection.h"
#include "src/frame/ado/Held.h"
#include "src/log/DiagnosticLog.h"

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

  // `failed` is the failure value, or a function that takes the failure (const std::exception&) and gives
  // the failure value; it is called before the vote. The failure goes to the diagnostic log.
  template <class Failed, class Work>
  auto TrapFailures(const Failed& failed, const Work& work) {
    return Trap(failed, work, [this] {
      if (running_->refused) return AbortFailed();
      VoteAbort();
      keeper_.LetGo();
    });
  }

  template <class Failed, class Work>
  auto NeverRaise(const Failed& failed, const Work& work) {
    return Trap(failed, work, [this] { AbortFailed(); });
  }

  template <class Work>
  auto AbortOnFailure(const Work& work) {
    const Running running(*this);
    try {
      return Finish(work);
    } catch (...) {
      AbortFailed();
      throw;
    }
  }

  template <class Work>
  auto LetFailuresRise(const Work& work) {
    const Running running(*this);
    return Finish(work);
  }

  // What `work` answers, True or False; False if it fails, and the failure goes to the diagnostic log. No
  // vote.
  template <class Work>
  static bool Succeeds(const Work& work) {
    try {
      return work();
    } catch (const std::exception& failure) {
      LogTrapped(failure);
      return false;
    }
  }

  // Inside a work, in its return statement. Each hands the result on.
  template <class Result>
  Result Refuse(Result result) const {
    EndVote();
    running_->refused = true;
    VoteAbort();
    return result;
  }
  template <class Result>
  Result Complete(Result result) const {
    EndVote();
    VoteComplete();
    return result;
  }
  template <class Result>
  Result WithoutVote(Result result) const {
    EndVote();
    return result;
  }

  const com::Object& context() const noexcept { return context_; }

 private:
  // A call while it runs; calls nest.
  class Running {
   public:
    explicit Running(Frame& frame) noexcept : frame_(frame), outer_(frame.running_) { frame.running_ = this; }
    // What a failure left behind in an inner call goes with the outer one's vote.
    ~Running() {
      frame_.running_ = outer_;
      if (!outer_) frame_.keeper_.LetGo();
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

    bool voted = false;
    bool refused = false;

   private:
    Frame& frame_;
    Running* outer_;
  };

  template <class Work>
  auto Finish(const Work& work) const {
    auto result = work();
    if (!running_->voted) VoteComplete();
    return result;
  }

  // Runs `work`. A failure becomes the failure value, and `end` votes for it.
  template <class Failed, class Work, class End>
  auto Trap(const Failed& failed, const Work& work, const End& end) {
    const Running running(*this);
    try {
      return Finish(work);
    } catch (const std::exception& failure) {
      LogTrapped(failure);
      decltype(work()) result = FailureValue(failed, failure);
      end();
      return result;
    }
  }

  template <class Failed>
  static auto FailureValue(const Failed& failed, const std::exception& failure) {
    if constexpr (std::is_invocable_v<const Failed&, const std::exception&>)
      return failed(failure);
    else
      return failed;
  }

  // The work has voted, or wants no vote: its return is the end.
  void EndVote() const noexcept { running_->voted = true; }
  // Votes abort after a failure and lets go of what that left behind. A vote that fails is reported to the
  // diagnostic log and dropped: what counts is the failure that it follows.
  void AbortFailed() noexcept;

  // In this order: the context is released before the caller info.
  com::Object callerInfo_;
  com::Object context_;
  mutable Keeper keeper_;
  Running* running_ = nullptr;
};

} // namespace mbom
