// The bridge ports of all VLANs, kept for some seconds.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "diagnostics.h"
#include "search/base_port.h"

namespace stpsnmp::search {
namespace {

using diagnostics::kRejection;

constexpr char kCached[] = "stp_get_cached_baseport_bitmap_all_vlans";  // as which the cache logs

// Seconds. They have 64 bits: a time_t of 32 overflows when they are added in 2038.
constexpr int64_t kMaxAge = 10;

// Of the whole module, and never emptied.
struct {
  time_t filled;  // 0: never
  uint8_t bits[BASEPORT_BITMAP_SIZE];
} cache;

bool is_stale(time_t now) { return cache.filled == 0 || now > cache.filled + kMaxAge; }

}  // namespace

vlan_mgr_baseport_bmp *cached_members(const stp_vlan_bmp *vlans) {
  const time_t now = time(nullptr);
  if (vlans == nullptr) {
    STP_LOG(kRejection, "%s(%d): Null Pointer\n", kCached, __LINE__);
    return nullptr;
  }
  if (is_stale(now)) {
    vlan_mgr_baseport_bmp *const fresh = vlan_mgr_get_baseport_membership_range(vlans);
    if (fresh == nullptr) {
      STP_LOG(kRejection, "%s:%d vlan_mgr_get_baseport_membership_range returns NULL \n", kCached, __LINE__);
      return nullptr;
    }
    std::memcpy(cache.bits, fresh->bits, sizeof cache.bits);
    cache.filled = time(nullptr);
    return fresh;
  }
  auto *const copy = static_cast<vlan_mgr_baseport_bmp *>(std::malloc(sizeof(vlan_mgr_baseport_bmp)));
  if (copy == nullptr) {
    STP_LOG(kRejection, "%s(%d): Failed to malloc baseport_bmp\n", kCached, __LINE__);
    return nullptr;
  }
  copy->size = BASEPORT_BITMAP_SIZE;
  std::memcpy(copy->bits, cache.bits, sizeof copy->bits);
  return copy;
}

}  // namespace stpsnmp::search
