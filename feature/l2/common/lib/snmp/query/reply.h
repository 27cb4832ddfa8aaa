// The spanning-tree process's reply to a request.
#pragma once

#include <cstdint>
#include <utility>

#include "platform/stp_protocol.h"

namespace stpsnmp::query {

// A byte string of a reply; it lives as long as the reply.
struct Octets {
  const void *data;
  uint32_t length;
};

// Owns the reply and releases it.
class Reply {
 public:
  Reply() = default;
  explicit Reply(void *handle) : handle_(handle) {}
  ~Reply() { release(); }
  Reply(const Reply &) = delete;
  Reply &operator=(const Reply &) = delete;
  Reply(Reply &&other) noexcept : handle_(other.detach()) {}
  Reply &operator=(Reply &&other) noexcept {
    release();
    handle_ = other.detach();
    return *this;
  }

  explicit operator bool() const { return handle_ != nullptr; }

  // Where the command library stores the handle.
  void **out() { return &handle_; }

  // Read an attribute. Return 0; the command library's code where the reply does not hold it; -1 where the
  // library finds it and has no value. A failure leaves the output as it was.
  int read_number(stp_attribute attribute, uint32_t *number) const;
  int read_octets(stp_attribute attribute, Octets *octets) const;

  // Finds a value whose length its token's type fixes; it lies in the reply.
  int find(stp_attribute attribute, const void **value) const;

  // The handle, for platform calls that read the reply themselves.
  void *handle() const { return handle_; }

  void release();

  // Gives the reply up without releasing it.
  void *detach() { return std::exchange(handle_, nullptr); }

 private:
  void *handle_ = nullptr;
};

}  // namespace stpsnmp::query
