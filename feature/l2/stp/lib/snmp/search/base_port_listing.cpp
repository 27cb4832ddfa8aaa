// The listing of bridge ports in the log.
#include "bitmap.h"
#include "diagnostics.h"
#include "platform/bitmap_print.h"
#include "search/base_port.h"

namespace stpsnmp::search {
namespace {

using diagnostics::kRejection;

constexpr size_t kLineSize = 80;  // with its terminator

// The lines of a listing, one after the other. What a line holds is always found, so that both sinks are
// asked for every line; it is written for a sink that takes it, and only then.
class Lines {
 public:
  explicit Lines(const vlan_mgr_baseport_bmp &members) : members_(members) { find_line(); }

  // The current line.
  const char *text() {
    char *end = text_;
    bitmap::Run run;
    for (uint32_t from = first_; from < next_; from = run.last + 1) {
      find_run(from, &run);
      if (end != text_) {
        *end++ = kSeparator;
      }
      end = bitmap::write_run(end, run);
    }
    *end = '\0';
    return text_;
  }

  // Moves to the next line. False where there is none.
  bool advance() {
    if (has_more_) {
      find_line();
      return true;
    }
    return false;
  }

 private:
  static constexpr char kSeparator = ',';

  // Every port that is listed is the resume index for a moment.
  void find_line() {
    first_ = next_;
    has_more_ = false;
    bitmap::Run run;
    for (size_t size = 0; find_run(next_, &run); next_ = run.last + 1) {
      size += (size == 0 ? 0 : sizeof kSeparator) + bitmap::run_size(run);
      if (size >= kLineSize) {
        has_more_ = true;
        return;
      }
      printf_curr_idx = static_cast<int>(run.last);
    }
  }

  bool find_run(uint32_t from, bitmap::Run *run) const {
    return bitmap::find_run(members_.bits, kBasePorts, from, run);
  }

  const vlan_mgr_baseport_bmp &members_;
  char text_[kLineSize];
  uint32_t first_ = 0;     // of the current line
  uint32_t next_ = 0;      // behind its last run
  bool has_more_ = false;  // there are runs that found no place in it
};

}  // namespace

void list_members(const vlan_mgr_baseport_bmp &members) {
  Lines lines(members);
  do {
    STP_LOG(kRejection, "%s\n", lines.text());
  } while (lines.advance());
  printf_curr_idx = 0;
}

}  // namespace stpsnmp::search
