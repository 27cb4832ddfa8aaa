// The module as the agent sees it: a library that is loaded, found by name, and unloaded.
#pragma once

#include <string>
#include <vector>

#include "stpsnmp/agent.h"

class LoadedModule {
 public:
  LoadedModule();
  ~LoadedModule();
  LoadedModule(const LoadedModule &) = delete;
  LoadedModule &operator=(const LoadedModule &) = delete;

  void *symbol(const char *name) const;
  void init() const;
  int deinit() const;

  // True while the library is mapped into the process.
  static bool is_mapped();

 private:
  void *library_;
};

// The agent's side, played by the test program. Its calls join the fake platform's trace.
struct FakeAgent {
  int register_result = 0;
  int unregister_result = 0;
  int debugging = 0;
  bool registering = false;
  const char *trap_enable_text = nullptr;  // what the trap-enable file holds; null: there is none
  int trap_enable_file_opened = 0;

  std::string registered_name;
  size_t entry_size = 0;
  size_t entry_count = 0;
  std::vector<oid> registered_root;
  const void *registered_entries = nullptr;
};

FakeAgent &fake_agent();
