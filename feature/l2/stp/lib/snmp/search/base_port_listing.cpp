// The listing of bridge ports in the log.
#include <algorithm>

#include "bitmap.h"
#include "diagnostics.h"
#include "platform/bitmap_print.h"
#include "search/base_port.h"

namespace stpsnmp::search {
namespace {

using diagnostics::kRejection;

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
