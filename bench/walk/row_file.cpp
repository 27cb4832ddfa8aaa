#include "row_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "row_store.h"
#include "stpsnmp/object_table.h"

namespace bench {
namespace {

constexpr char kOctetsPrefix[] = "0x";
constexpr size_t kDigitsPerOctet = 2;
constexpr int kDecimal = 10;
constexpr int kHexadecimal = 16;

struct TypeName {
  u_char type;
  const char *name;
};

constexpr TypeName kTypeNames[] = {
    {ASN_INTEGER, "INTEGER"}, {ASN_UNSIGNED, "UNSIGNED"}, {ASN_OCTET_STR, "OCTETS"}};

// An object identifier of a file; one that is no instance of this module has too many arcs or matches
// nothing.
struct ObjectId {
  oid arcs[MAX_OID_LEN];
  size_t length;
};

const char *const kNoMemory = "no memory";

bool parse_object_id(const char *text, ObjectId *id) {
  for (id->length = 0; *text == '.' && id->length < std::size(id->arcs);) {
    char *end = nullptr;
    id->arcs[id->length++] = strtoul(text + 1, &end, kDecimal);
    if (end == text + 1) {
      return false;
    }
    text = end;
  }
  return *text == '\0' && id->length > 0;
}

size_t length_of(const variable7 &object) { return size_t{STP_EXTENSIONS_MIB_ROOT_LENGTH} + object.namelen; }

bool is_below(const ObjectId &id, const variable7 &object) {
  const oid *const root_end = id.arcs + STP_EXTENSIONS_MIB_ROOT_LENGTH;
  return id.length > length_of(object) && std::equal(id.arcs, root_end, stp_extensions_mib_variables_oid) &&
         std::equal(object.name, object.name + object.namelen, root_end);
}

const variable7 *find_object(const ObjectId &id) {
  const auto *const found =
      std::find_if(std::begin(stp_extensions_mib_variables), std::end(stp_extensions_mib_variables),
                   [&](const variable7 &object) { return is_below(id, object); });
  return found == std::end(stp_extensions_mib_variables) ? nullptr : found;
}

bool has_type(const variable7 &object, const char *name) {
  return std::any_of(std::begin(kTypeNames), std::end(kTypeNames), [&](const TypeName &known) {
    return known.type == object.type && strcmp(known.name, name) == 0;
  });
}

bool parse_number(const char *text, Row *row) {
  char *end = nullptr;
  row->number = static_cast<int32_t>(strtoll(text, &end, kDecimal));
  row->length = sizeof row->number;
  return end != text && *end == '\0';
}

// Returns what is wrong; null where nothing is.
const char *parse_octets(const char *text, Row *row) {
  constexpr size_t kPrefixLength = sizeof kOctetsPrefix - 1;
  const size_t digits = strlen(text) - std::min(strlen(text), kPrefixLength);
  if (strncmp(text, kOctetsPrefix, kPrefixLength) != 0 || digits % kDigitsPerOctet != 0) {
    return "no octets";
  }
  row->length = digits / kDigitsPerOctet;
  // Also for an empty string: that is a value, null is none.
  row->octets = static_cast<u_char *>(malloc(row->length + 1));
  if (row->octets == nullptr) {
    return kNoMemory;
  }
  for (size_t i = 0; i < row->length; ++i) {
    const char *const start = text + kPrefixLength + i * kDigitsPerOctet;
    const char pair[] = {start[0], start[1], '\0'};
    char *end = nullptr;
    row->octets[i] = static_cast<u_char>(strtoul(pair, &end, kHexadecimal));
    if (end != pair + kDigitsPerOctet) {
      free(row->octets);
      return "no octets";
    }
  }
  return nullptr;
}

// The same: what is wrong with a line.
const char *load_line(char *line) {
  char *rest = nullptr;
  const char *const name = strtok_r(line, " \n", &rest);
  const char *const type = strtok_r(nullptr, " \n", &rest);
  const char *const value = strtok_r(nullptr, " \n", &rest);
  ObjectId id{};
  if (value == nullptr || strtok_r(nullptr, " \n", &rest) != nullptr || !parse_object_id(name, &id)) {
    return "expected OID, type and value";
  }
  const variable7 *const object = find_object(id);
  if (object == nullptr) {
    return "no instance of an object of the module";
  }
  if (!has_type(*object, type)) {
    return "the object is of another type";
  }
  const size_t prefix = length_of(*object);
  Row row{};
  row.index_arcs = id.length - prefix;
  if (row.index_arcs > kMaxIndexArcs) {
    return "the index is too long";
  }
  std::copy_n(id.arcs + prefix, row.index_arcs, row.index);
  if (object->type == ASN_OCTET_STR) {
    if (const char *wrong = parse_octets(value, &row)) {
      return wrong;
    }
  } else if (!parse_number(value, &row)) {
    return "no number";
  }
  if (!add_row(object->magic, row)) {
    free(row.octets);
    return "it does not follow the object's last row, or there is no memory";
  }
  return nullptr;
}

}  // namespace

bool load_rows(const char *path) {
  FILE *const file = fopen(path, "re");
  if (file == nullptr) {
    snmp_log(LOG_ERR, "bench: error: cannot open %s: %s\n", path, strerror(errno));
    return false;
  }
  char *line = nullptr;
  size_t capacity = 0;
  const char *wrong = nullptr;
  for (unsigned number = 1; wrong == nullptr && getline(&line, &capacity, file) >= 0; ++number) {
    wrong = load_line(line);
    if (wrong != nullptr) {
      snmp_log(LOG_ERR, "bench: error: %s:%u: %s\n", path, number, wrong);
      drop_rows();
    }
  }
  free(line);
  fclose(file);
  return wrong == nullptr;
}

}  // namespace bench
