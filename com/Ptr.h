// Ptr<T>: one owned reference to a COM interface.
#pragma once

#include <unknwn.h>

#include <utility>

namespace com {

template <class T>
class Ptr {
 public:
  Ptr() noexcept = default;
  Ptr(std::nullptr_t) noexcept {} // NOLINT(google-explicit-constructor): null is a value of every pointer
  explicit Ptr(T* shared) noexcept : p_(shared) {
    if (p_) p_->AddRef();
  }
  Ptr(const Ptr& other) noexcept : Ptr(other.p_) {}
  Ptr(Ptr&& other) noexcept : p_(std::exchange(other.p_, nullptr)) {}
  ~Ptr() {
    if (p_) p_->Release();
  }
  Ptr& operator=(Ptr other) noexcept {
    std::swap(p_, other.p_);
    return *this;
  }

  // Takes over a reference that the caller owns.
  static Ptr Attach(T* owned) noexcept {
    Ptr result;
    result.p_ = owned;
    return result;
  }
  T* Detach() noexcept { return std::exchange(p_, nullptr); }

  // For out parameters: releases what it holds and lends its place.
  T** Out() noexcept {
    *this = nullptr;
    return &p_;
  }
  void** OutVoid() noexcept { return reinterpret_cast<void**>(Out()); }

  T* Get() const noexcept { return p_; }
  T* operator->() const noexcept { return p_; }
  T& operator*() const noexcept { return *p_; }
  explicit operator bool() const noexcept { return p_ != nullptr; }
  bool operator==(const Ptr& other) const noexcept { return p_ == other.p_; }

 private:
  T* p_ = nullptr;
};

} // namespace com
