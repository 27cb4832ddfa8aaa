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

  const char *text() {
    *end_ = '\0';
    return text_;
  }

  void clear() { end_ = text_; }

 private:
  char text_[kLineSize];
  char *end_ = text_;
};

// The lines of a listing, one after the other. A line is made when it is read, and only then: nobody reads it
// where no sink takes it.
class Lines {
 public:
  explicit Lines(const vlan_mgr_baseport_bmp &members) : members_(members) {}

  // The current line. Read again, it is the same.
  const char *current() {
    if (!is_made_) {
      make();
      is_made_ = true;
    }
    return line_.text();
  }

  // Moves to the next line. False where there is none, and where the current one was not read: no sink takes
  // the next one either.
  bool advance() {
    const bool is_read = is_made_;
    is_made_ = false;
    return is_read && has_more_;
  }

 private:
  void make() {
    line_.clear();
    if (has_more_) {
      add(run_);  // fits into an empty line
    }
    has_more_ = false;
    while (bitmap::find_run(members_.bits, kBasePorts, from_, &run_)) {
      from_ = run_.last + 1;
      if (!add(run_)) {
        has_more_ = true;
        return;
      }
    }
  }

  bool add(const bitmap::Run &run) {
    const bool is_added = line_.add(run);
    if (is_added) {
      printf_curr_idx = static_cast<int>(run.last);
    }
    return is_added;
  }

  const vlan_mgr_baseport_bmp &members_;
  Line line_;
  bool is_made_ = false;
  uint32_t from_ = 0;      // where the search for runs goes on
  bitmap::Run run_{};      // the latest that was found
  bool has_more_ = false;  // it found no place in the line
};

}  // namespace

void list_members(const vlan_mgr_baseport_bmp &members) {
  Lines lines(members);
  do {
    STP_LOG(kRejection, "%s\n", lines.current());
  } while (lines.advance());
  printf_curr_idx = 0;
}

}  // namespace stpsnmp::search
