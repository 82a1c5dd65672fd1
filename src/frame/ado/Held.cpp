#include "src/frame/ado/Held.h"

#include <exception>
#include <new>

#include "com/ComError.h"
#include "src/frame/OutsideNames.h"
#include "src/frame/ado/Constants.h"

namespace mbom {
namespace {

using com::Object;

void Leave(const Object& object, OnLeave onLeave) noexcept {
  if (!object || onLeave == OnLeave::Release) return;
  try {
    if (object.Get(outside::ado::kState).AsLong() != ad::kStateClosed) object.Call(outside::ado::kClose);
  } catch (const com::ComError&) { // NOLINT(bugprone-empty-catch): it is let go in any case, the vote is cast
  }
}

} // namespace

void Keeper::Keep(Object object, OnLeave onLeave) noexcept {
  try {
    kept_.push_back({std::move(object), onLeave});
  } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): the object goes with the parameter
  }
}

void Keeper::LetGo() noexcept {
  for (Kept& kept : kept_) {
    Leave(kept.object, kept.onLeave);
    kept.object = Object();
  }
  kept_.clear();
}

Held::Held(Object object, Keeper* keeper, OnLeave onLeave) noexcept
    : object_(std::move(object)), keeper_(keeper), onLeave_(onLeave), failures_(std::uncaught_exceptions()) {}

// Each copy lets go of a reference of its own; the object itself is closed by the first.
Held::Held(const Held& other) noexcept
    : object_(other.object_), keeper_(other.keeper_), onLeave_(OnLeave::Release),
      failures_(std::uncaught_exceptions()) {}

Held::Held(Held&& other) noexcept
    : object_(std::move(other.object_)), keeper_(other.keeper_), onLeave_(other.onLeave_),
      failures_(std::uncaught_exceptions()) {}

Held& Held::operator=(Held other) noexcept {
  std::swap(object_, other.object_);
  std::swap(keeper_, other.keeper_);
  std::swap(onLeave_, other.onLeave_);
  return *this;
}

Held::~Held() {
  if (!object_) return;
  if (keeper_ && std::uncaught_exceptions() > failures_)
    keeper_->Keep(std::move(object_), onLeave_);
  else
    Leave(object_, onLeave_);
}

} // namespace mbom
