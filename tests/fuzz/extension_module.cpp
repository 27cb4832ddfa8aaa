// Requests for the objects of the extensions MIB, and the messages behind its traps, while switch and process
// say what the input says: a value lies in memory, and no request buffer is left.
#include <algorithm>
#include <iterator>
#include <vector>

#include "fake_platform.h"
#include "stpsnmp/agent.h"
#include "stpsnmp/notifications.h"
#include "stpsnmp/object_table.h"
#include "support/any_platform.h"
#include "support/input.h"
#include "support/require.h"

namespace {

// A name that the agent asks with: there is room for more arcs behind it.
struct Name {
  oid arcs[MAX_OID_LEN] = {};
  size_t length = 0;

  void append(const oid *more, size_t count) {
    std::copy_n(more, count, arcs + length);
    length += count;
  }
};

void read(const uint8_t *value, size_t size) {
  // The sanitizers see what is not there.
  std::vector<uint8_t>(value, value + size).clear();
}

void ask(fuzz::Input *input) {
  const auto which = input->number<uint8_t>();
  const variable7 &entry = stp_extensions_mib_variables[which % STP_EXTENSIONS_MIB_OBJECTS];
  const auto kind = input->number<uint8_t>();
  const bool is_exact = kind % 2 == 0;
  const bool is_outside = kind % 8 == 7;
  Name column;
  column.append(stp_extensions_mib_variables_oid, STP_EXTENSIONS_MIB_ROOT_LENGTH);
  Name asked = column;
  column.append(entry.name, entry.namelen);
  const std::vector<oid> arcs = fuzz::any_arcs(input);
  if (!is_outside) {
    asked = column;
  }
  asked.append(arcs.data(), arcs.size());

  variable vp{};
  vp.magic = entry.magic;
  vp.namelen = static_cast<u_char>(column.length);
  std::copy_n(column.arcs, column.length, vp.name);
  size_t size = 0;
  WriteMethod *write_method = nullptr;
  const u_char *const value =
      entry.findVar(&vp, asked.arcs, &asked.length, is_exact ? 1 : 0, &size, &write_method);
  fuzz::require(write_method == nullptr, "nothing can be set");
  if (value == nullptr) {
    return;
  }
  read(value, size);
  // Which row it is of, is the process's to say: the module serves what it is told.
  fuzz::require(asked.length <= MAX_OID_LEN, "a name is no longer than names are");
}

void notify(fuzz::Input *input) {
  constexpr notification_handler kHandlers[] = {handle_noti_stpxInconsistencyUpdate,
                                                handle_noti_stpxLoopInconsistencyUpdate,
                                                handle_noti_stpxRootInconsistencyUpdate};
  fuzz::notify(input, kHandlers[input->number<uint8_t>() % std::size(kHandlers)]);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  fuzz::set_up_platform(&input);
  fuzz::set_context(&input);
  while (!input.is_over()) {
    if (input.number<uint8_t>() % 4 != 3) {
      ask(&input);
    } else {
      notify(&input);
    }
  }
  fake::reset();
  return 0;
}
