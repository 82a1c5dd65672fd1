// Held: an object of the data access, a recordset or a connection, that a call has taken.
//
// It is let go where its holder is left. When a failure leaves the holder, though, the frame keeps the object
// until it has voted: what belongs to a unit of work is let go after the vote against it.
#pragma once

#include <vector>

#include "com/Object.h"

namespace mbom {

// Whether an object that can be open is closed before it is let go.
enum class OnLeave : bool { Release, CloseAndRelease };

// Keeper: what failures have left behind in a call, in the order in which it was left.
class Keeper {
 public:
  // Without memory for it the object is let go at once.
  void Keep(com::Object object, OnLeave onLeave) noexcept;
  void LetGo() noexcept;

 private:
  struct Kept {
    com::Object object;
    OnLeave onLeave;
  };
  std::vector<Kept> kept_;
};

class Held {
 public:
  Held() noexcept = default;
  // `keeper` outlives this object. Without one it is let go in every case.
  explicit Held(com::Object object, Keeper* keeper = nullptr, OnLeave onLeave = OnLeave::Release) noexcept;
  Held(const Held& other) noexcept;
  Held(Held&& other) noexcept;
  Held& operator=(Held other) noexcept;
  ~Held();

  explicit operator bool() const noexcept { return static_cast<bool>(object_); }
  const com::Object& object() const noexcept { return object_; }
  Keeper* keeper() const noexcept { return keeper_; }

 private:
  com::Object object_;
  Keeper* keeper_ = nullptr;
  OnLeave onLeave_ = OnLeave::Release;
  int failures_ = 0; // that were on their way when this object was made
};

} // namespace mbom
