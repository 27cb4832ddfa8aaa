#include "loaded_module.h"

#include <dlfcn.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "fake_platform.h"

LoadedModule::LoadedModule() : library_(dlopen(MODULE_PATH, RTLD_NOW)) {
  if (library_ == nullptr) {
    fprintf(stderr, "%s\n", dlerror());
    abort();
  }
}

LoadedModule::~LoadedModule() { dlclose(library_); }

void *LoadedModule::symbol(const char *name) const { return dlsym(library_, name); }

void LoadedModule::init() const {
  fake_agent().registering = true;
  reinterpret_cast<void (*)()>(symbol("init_stp_extensions_mib"))();
  fake_agent().registering = false;
}

int LoadedModule::deinit() const {
  return reinterpret_cast<int (*)()>(symbol("deinit_stp_extensions_mib"))();
}

bool LoadedModule::is_mapped() {
  void *library = dlopen(MODULE_PATH, RTLD_NOW | RTLD_NOLOAD);
  if (library != nullptr) {
    dlclose(library);
  }
  return library != nullptr;
}

FakeAgent &fake_agent() {
  static FakeAgent agent;
  return agent;
}

namespace {

std::string dotted(const oid *arcs, size_t count) {
  std::string text;
  for (size_t i = 0; i < count; ++i) {
    text += '.' + std::to_string(arcs[i]);
  }
  return text;
}

void trace_debug(const char *function, const char *token, const char *format, va_list arguments) {
  char text[512];
  vsnprintf(text, sizeof text, format, arguments);
  fake::trace(std::string(function) + "(" + token + ") " + fake::quoted(text));
}

}  // namespace

// These definitions win over the agent library's, because the program comes first in the order of symbol
// lookup.
extern "C" {

// Two definitions of the platform's data symbols are what these tests are about.
const char *__asan_default_options(void);
const char *__asan_default_options(void) { return "detect_odr_violation=0"; }

int register_mib(const char *name, const struct variable *entries, size_t entry_size, size_t entry_count,
                 const oid *root, size_t root_length) {
  FakeAgent &agent = fake_agent();
  agent.registered_name = name;
  agent.registered_entries = entries;
  agent.entry_size = entry_size;
  agent.entry_count = entry_count;
  agent.registered_root.assign(root, root + root_length);
  fake::trace("register_mib(" + dotted(root, root_length) + ")");
  return agent.register_result;
}

int unregister_mib(oid *root, size_t root_length) {
  fake::trace("unregister_mib(" + dotted(root, root_length) + ")");
  return fake_agent().unregister_result;
}

// The agent library asks, too, wherever it could print something: only the module's registration is of
// interest.
int snmp_get_do_debugging(void) {
  if (!fake_agent().registering) {
    return 0;
  }
  fake::trace("snmp_get_do_debugging");
  return fake_agent().debugging;
}

void debugmsgtoken(const char *token, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  trace_debug("debugmsgtoken", token, format, arguments);
  va_end(arguments);
}

void debugmsg(const char *token, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  trace_debug("debugmsg", token, format, arguments);
  va_end(arguments);
}

FILE *fopen(const char *path, const char *mode) {
  if (strcmp(path, "/mnt/pss/stp_trap_value") == 0) {
    FakeAgent &agent = fake_agent();
    ++agent.trap_enable_file_opened;
    fake::trace(std::string("fopen(") + path + ", " + mode + ")");
    if (agent.trap_enable_text == nullptr) {
      return nullptr;
    }
    FILE *file = tmpfile();
    fputs(agent.trap_enable_text, file);
    rewind(file);
    return file;
  }
  static const auto real = reinterpret_cast<FILE *(*)(const char *, const char *)>(dlsym(RTLD_NEXT, "fopen"));
  return real(path, mode);
}
}
