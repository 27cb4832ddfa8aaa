// Waiting for what another thread or process does.
#pragma once

#include <chrono>
#include <thread>

// Long enough that only a hang reaches it.
inline constexpr auto kHangGuard = std::chrono::seconds(60);

// Does `meanwhile` until something holds. False when nothing but a hang takes so long.
template <class Condition, class Meanwhile>
bool comes_true(const Condition &condition, const Meanwhile &meanwhile) {
  const auto give_up = std::chrono::steady_clock::now() + kHangGuard;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > give_up) {
      return false;
    }
    meanwhile();
  }
  return true;
}

template <class Condition>
bool comes_true(const Condition &condition) {
  return comes_true(condition, [] { std::this_thread::yield(); });
}
