#pragma once

#include <utility>

namespace ostrell {

// The one owner of a handle that something else gave out: move-only, closed exactly once.
//
// Traits names the kind of handle:
//   using Handle = ...;                    copyable, comparable
//   static Handle Empty();                 the value that owns nothing
//   static void Close(Handle) noexcept;    never called with Empty()
template <class Traits>
class Owner {
 public:
  using Handle = typename Traits::Handle;

  Owner() = default;
  explicit Owner(Handle owned) : handle(owned) {}
  Owner(Owner&& other) noexcept : handle(other.Release()) {}
  Owner& operator=(Owner&& other) noexcept {
    if (this != &other) {
      Reset(other.Release());
    }
    return *this;
  }
  Owner(const Owner&) = delete;
  Owner& operator=(const Owner&) = delete;
  ~Owner() { Reset(); }

  explicit operator bool() const { return handle != Traits::Empty(); }
  Handle Get() const { return handle; }
  Handle operator->() const { return handle; }

  // Gives the handle up without closing it.
  [[nodiscard]] Handle Release() { return std::exchange(handle, Traits::Empty()); }

  // Closes what is held and takes `next` in its place.
  void Reset(Handle next = Traits::Empty()) {
    const Handle old = std::exchange(handle, next);
    if (old != Traits::Empty()) {
      Traits::Close(old);
    }
  }

  // For functions that hand out a handle through an address: closes what is held first.
  Handle* Receive() {
    Reset();
    return &handle;
  }

 private:
  Handle handle = Traits::Empty();
};

// The owner of handles whose empty value is null and that one function closes, whatever it returns.
template <class T, auto close>
struct ClosedByTraits {
  using Handle = T;
  static Handle Empty() { return nullptr; }
  static void Close(Handle handle) noexcept { close(handle); }
};
template <class T, auto close>
using ClosedBy = Owner<ClosedByTraits<T, close>>;

}  // namespace ostrell
