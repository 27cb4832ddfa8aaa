#include "injector.h"

namespace faults {
namespace {

thread_local Injection *present = nullptr;

}  // namespace

Injection::Injection(const Fault &fault) : fault_(fault) { present = this; }

void Injection::end() { present = nullptr; }

std::optional<uint32_t> Injection::count(Kind kind, const char *call, uint32_t ways) {
  if (fault_.kind != kind) {
    return std::nullopt;
  }
  ++calls_;
  const bool is_meant = fault_.lasts ? calls_ >= fault_.number : calls_ == fault_.number;
  if (!is_meant) {
    return std::nullopt;
  }
  if (struck_ == nullptr) {
    struck_ = call;
    ways_ = ways;
  }
  return fault_.way % ways;
}

bool has_struck() { return present != nullptr && present->has_struck(); }

std::optional<uint32_t> strikes(Kind kind, const char *call, uint32_t ways) {
  return present != nullptr ? present->count(kind, call, ways) : std::nullopt;
}

}  // namespace faults
