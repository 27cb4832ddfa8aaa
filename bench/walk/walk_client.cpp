// A manager that walks one subtree again and again, over one SNMPv2c session.
//
// Usage: bench_walk_client [-r REPETITIONS] [-s SECONDS | -p] AGENT OID
//
//   -r REPETITIONS  how many variables a GETBULK asks for (default: 50); 0 walks by GETNEXT
//   -s SECONDS      begins another walk until so much time is over (default: 0, one walk)
//   -p              prints the rows of one walk instead: OID, type and value
//
// Prints how many walks there were, how many rows in each of them, and the nanoseconds that they took
// together. A walk that does not ascend, or differs in length from the first one, is an error.
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include <net-snmp/net-snmp-config.h>
/**/
#include <net-snmp/net-snmp-includes.h>

namespace {

constexpr char kName[] = "bench_walk_client";
constexpr int kWrongCommandLine = 2;
constexpr long kPatienceMicroseconds = 120'000'000;
constexpr int64_t kNanosecondsPerSecond = 1'000'000'000;

// Members of a community of the agent's that may read.
u_char community[] = "public";

struct Options {
  long repetitions = 50;
  double seconds = 0;
  bool prints = false;
  std::string agent;
  std::string root;
};

struct ObjectId {
  oid arcs[MAX_OID_LEN];
  size_t length = MAX_OID_LEN;

  std::string text() const {
    std::string text;
    for (size_t i = 0; i < length; ++i) {
      text += '.' + std::to_string(arcs[i]);
    }
    return text;
  }
};

[[noreturn]] void fail(const std::string &message) {
  fprintf(stderr, "%s: %s\n", kName, message.c_str());
  exit(EXIT_FAILURE);
}

[[noreturn]] void refuse_command_line() {
  fprintf(stderr, "usage: %s [-r REPETITIONS] [-s SECONDS | -p] AGENT OID\n", kName);
  exit(kWrongCommandLine);
}

// Not below 0, and so that nanoseconds of as many seconds can be counted.
double parse_number(const char *text) {
  constexpr double kMost = 1e9;
  char *end = nullptr;
  const double number = std::strtod(text, &end);
  if (end == text || *end != '\0' || !(number >= 0 && number <= kMost)) {
    fail(std::string("'") + text + "' is no number from 0 to 1000000000");
  }
  return number;
}

Options parse(int argc, char **argv) {
  Options options;
  for (int option = 0; (option = getopt(argc, argv, "r:s:p")) != -1;) {
    switch (option) {
      case 'r':
        options.repetitions = static_cast<long>(parse_number(optarg));
        break;
      case 's':
        options.seconds = parse_number(optarg);
        break;
      case 'p':
        options.prints = true;
        break;
      default:
        refuse_command_line();
    }
  }
  if (argc - optind != 2) {
    refuse_command_line();
  }
  options.agent = argv[optind];
  options.root = argv[optind + 1];
  return options;
}

ObjectId parse_object_id(const std::string &text) {
  ObjectId id{};
  if (read_objid(text.c_str(), id.arcs, &id.length) == 0) {
    fail("'" + text + "' is no OID");
  }
  return id;
}

int64_t now() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return time.tv_sec * kNanosecondsPerSecond + time.tv_nsec;
}

class Session {
 public:
  explicit Session(std::string agent) {
    netsnmp_session settings{};
    snmp_sess_init(&settings);
    settings.version = SNMP_VERSION_2c;
    settings.peername = agent.data();
    settings.community = community;
    settings.community_len = sizeof community - 1;
    settings.retries = 0;
    settings.timeout = kPatienceMicroseconds;
    handle_ = snmp_sess_open(&settings);
    if (handle_ == nullptr) {
      fail("cannot speak to " + agent + ": " + snmp_api_errstring(snmp_errno));
    }
  }
  ~Session() { snmp_sess_close(handle_); }
  Session(const Session &) = delete;
  Session &operator=(const Session &) = delete;

  // What follows this OID. The caller frees it.
  netsnmp_pdu *ask(const ObjectId &after, long repetitions) {
    netsnmp_pdu *const request = snmp_pdu_create(repetitions == 0 ? SNMP_MSG_GETNEXT : SNMP_MSG_GETBULK);
    if (repetitions != 0) {
      request->non_repeaters = 0;
      request->max_repetitions = repetitions;
    }
    snmp_add_null_var(request, after.arcs, after.length);
    netsnmp_pdu *reply = nullptr;
    if (snmp_sess_synch_response(handle_, request, &reply) != STAT_SUCCESS || reply == nullptr) {
      fail("no answer to what follows " + after.text());
    }
    if (reply->errstat != SNMP_ERR_NOERROR || reply->variables == nullptr) {
      fail("error " + std::to_string(reply->errstat) + " for what follows " + after.text());
    }
    return reply;
  }

 private:
  void *handle_;
};

void print_row(const ObjectId &id, const netsnmp_variable_list &variable) {
  const std::string name = id.text();
  switch (variable.type) {
    case ASN_INTEGER:
      printf("%s INTEGER %ld\n", name.c_str(), *variable.val.integer);
      break;
    case ASN_UNSIGNED:
      printf("%s UNSIGNED %lu\n", name.c_str(), static_cast<u_long>(*variable.val.integer));
      break;
    case ASN_OCTET_STR:
      printf("%s OCTETS 0x", name.c_str());
      for (size_t i = 0; i < variable.val_len; ++i) {
        printf("%02x", variable.val.string[i]);
      }
      putchar('\n');
      break;
    default:
      fail(name + " is of a type that no object of the module has");
  }
}

class Walker {
 public:
  explicit Walker(const Options &options)
      : options_(options), session_(options.agent), root_(parse_object_id(options.root)) {}

  // Returns how many rows there are.
  uint64_t walk() {
    uint64_t rows = 0;
    ObjectId last = root_;
    for (bool is_over = false; !is_over;) {
      netsnmp_pdu *const reply = session_.ask(last, options_.repetitions);
      for (const netsnmp_variable_list *variable = reply->variables; variable != nullptr && !is_over;
           variable = variable->next_variable) {
        is_over = is_behind(*variable);
        if (!is_over) {
          step_to(*variable, &last);
          ++rows;
        }
      }
      snmp_free_pdu(reply);
    }
    return rows;
  }

 private:
  // Whether it ends the walk.
  bool is_behind(const netsnmp_variable_list &variable) const {
    return variable.type == SNMP_ENDOFMIBVIEW ||
           snmp_oidtree_compare(root_.arcs, root_.length, variable.name, variable.name_length) != 0;
  }

  void step_to(const netsnmp_variable_list &variable, ObjectId *last) const {
    const bool ascends = snmp_oid_compare(variable.name, variable.name_length, last->arcs, last->length) > 0;
    const std::string before = ascends ? "" : last->text();
    last->length = variable.name_length;
    std::copy_n(variable.name, variable.name_length, last->arcs);
    if (!ascends) {
      fail(last->text() + " does not follow " + before);
    }
    if (options_.prints) {
      print_row(*last, variable);
    }
  }

  const Options &options_;
  Session session_;
  ObjectId root_;
};

void measure(const Options &options, Walker *walker) {
  const auto wanted = static_cast<int64_t>(options.seconds * static_cast<double>(kNanosecondsPerSecond));
  const int64_t start = now();
  const uint64_t rows = walker->walk();
  int64_t last = now();
  int64_t fastest = last - start;
  long long walks = 1;
  for (; last - start < wanted; ++walks) {
    if (const uint64_t again = walker->walk(); again != rows) {
      fail("a walk has " + std::to_string(again) + " rows, and the first one had " + std::to_string(rows));
    }
    const int64_t end = now();
    fastest = std::min(fastest, end - last);
    last = end;
  }
  printf("walks %lld rows %llu nanoseconds %lld fastest %lld\n", walks, static_cast<unsigned long long>(rows),
         static_cast<long long>(last - start), static_cast<long long>(fastest));
}

}  // namespace

int main(int argc, char **argv) {
  const Options options = parse(argc, argv);
  // What goes wrong is told here; the library would tell of the files that it makes for itself.
  netsnmp_register_loghandler(NETSNMP_LOGHANDLER_NONE, LOG_DEBUG);
  init_snmp(kName);
  Walker walker(options);
  if (options.prints) {
    walker.walk();
  } else {
    measure(options, &walker);
  }
  return EXIT_SUCCESS;
}
