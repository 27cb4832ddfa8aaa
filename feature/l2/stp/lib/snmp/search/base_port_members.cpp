// The members of all VLANs, kept for some seconds, and the listing of members in the log.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "bitmap.h"
#include "diagnostics.h"
#include "platform/bitmap_print.h"
#include "search/base_port.h"

namespace stpsnmp::search {
namespace {

using diagnostics::kRejection;

constexpr char kCached[] = "stp_get_cached_baseport_bitmap_all_vlans";  // as which the cache logs

constexpr time_t kMaxAge = 10;  // seconds

// Of the whole module, and never emptied.
struct {
  time_t filled;  // 0: never
  uint32_t size;  // octets
  uint8_t bits[BASEPORT_BITMAP_SIZE];
} cache;

bool is_stale(time_t now) { return cache.filled == 0 || cache.size == 0 || now > cache.filled + kMaxAge; }

constexpr size_t kLineSize = 80;  // with its terminator

class Line {
 public:
  // False where the run does not fit, and the line stays as it was.
  bool add(const bitmap::Run &run) {
    constexpr size_t kSeparatorSize = 1;
    char item[kSeparatorSize + bitmap::kRunSize];
    char *at = item;
    if (end_ != text_) {
      *at++ = ',';
    }
    at = bitmap::write_run(at, run);
    const auto room = text_ + sizeof text_ - end_;
    if (at - item >= room) {
      return false;
    }
    end_ = std::copy(item, at, end_);
    return true;
  }

  // Logs the line and begins a new one.
  void log() {
    *end_ = '\0';
    STP_LOG(kRejection, "%s\n", text_);
    end_ = text_;
  }

 private:
  char text_[kLineSize];
  char *end_ = text_;
};

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
    cache.size = BASEPORT_BITMAP_SIZE;
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

void list_members(const vlan_mgr_baseport_bmp &members) {
  Line line;
  bitmap::Run run;
  for (uint32_t from = 0; bitmap::find_run(members.bits, kBasePorts, from, &run); from = run.last + 1) {
    if (!line.add(run)) {
      line.log();
      line.add(run);
    }
    printf_curr_idx = static_cast<int>(run.last);
  }
  line.log();
  printf_curr_idx = 0;
}

}  // namespace stpsnmp::search
