#include "stpsnmp/scalars.h"

#include <cstring>
#include <optional>

#include "diagnostics.h"
#include "magic.h"
#include "query/fetch.h"
#include "scalar_values.h"
#include "stpsnmp/agent.h"
#include "stpsnmp/lookup_handlers.h"
#include "stpsnmp/values.h"

#include <net-snmp/agent/util_funcs/header_generic.h>

using namespace stpsnmp;
using stpsnmp::diagnostics::kTrace;
using stpsnmp::query::fetch_number;
using stpsnmp::query::fetch_octets;

ScalarValueRecord stpsnmp::scalar_values;

namespace {

// The CIST and 64 MST instances; their identifiers are those of VLANs (IEEE 802.1Q clause 13.8).
constexpr uint32_t kMaxInstances = 65;
constexpr uint32_t kMaxInstanceId = 4094;

// How far a served string is searched for its end.
constexpr size_t kRegionNameLimit = 225;
constexpr size_t kDigestLimit = 128;
static_assert(kRegionNameLimit <= sizeof(ScalarValueRecord::region_name));
static_assert(kDigestLimit <= sizeof(ScalarValueRecord::pre_standard_digest) &&
              kDigestLimit <= sizeof(ScalarValueRecord::config_digest));

struct ScalarObject {
  Magic magic;
  int (*fetch)(ScalarValueRecord *record);
  void *value;
  size_t string_limit = 0;  // 0: a number
  void (*convert)(ScalarValueRecord *record) = nullptr;

  size_t length() const {
    return string_limit == 0 ? sizeof(int32_t) : strnlen(static_cast<const char *>(value), string_limit);
  }
};

const ScalarObject kScalarObjects[] = {
    {kMstRegionName, get_stpxMSTRegionName, scalar_values.region_name, kRegionNameLimit},
    {kSmstMaxInstances, get_stpxSMSTMaxInstances, &scalar_values.max_instances},
    {kSmstConfigPreStandardDigest, get_stpxSMSTConfigPreStandardDigest, scalar_values.pre_standard_digest,
     kDigestLimit},
    {kSmstMaxInstanceId, get_stpxSMSTMaxInstanceID, &scalar_values.max_instance_id},
    {kSmstRegionRevision, get_stpxSMSTRegionRevision, &scalar_values.region_revision},
    {kSmstMaxHopCount, get_stpxSMSTMaxHopCount, &scalar_values.max_hop_count},
    {kSmstConfigDigest, get_stpxSMSTConfigDigest, scalar_values.config_digest, kDigestLimit},
    {kSpanningTreeType, get_stpxSpanningTreeType, &scalar_values.spanning_tree_type},
    {kPathCostMode, get_stpxSpanningTreePathCostMode, &scalar_values.path_cost_mode},
    {kPathCostOperMode, get_stpxSpanningTreePathCostOperMode, &scalar_values.path_cost_oper_mode},
    {kLoopGuardGlobalDefaultMode, get_stpxLoopGuardGlobalDefaultMode, &scalar_values.loop_guard_default, 0,
     stp_loopguard_global_default_mode_2_snmp_val},
};

const ScalarObject *find_object(uint8_t magic) {
  for (const ScalarObject &object : kScalarObjects) {
    if (object.magic == magic) {
      return &object;
    }
  }
  return nullptr;
}

}  // namespace

int get_stpxMSTRegionName(ScalarValueRecord *record) {
  return fetch_octets(
      {STP_COMMAND_MST_REGION, std::nullopt, STP_ATTRIBUTE_MST_REGION_NAME, "stpxMSTRegionName"},
      record->region_name);
}

int get_stpxSMSTMaxInstances(ScalarValueRecord *record) {
  record->max_instances = kMaxInstances;
  return 0;
}

int get_stpxSMSTConfigPreStandardDigest(ScalarValueRecord *record) {
  return fetch_octets({STP_COMMAND_MST_REGION, STP_KEY_MST_DIGESTS, STP_ATTRIBUTE_MST_PRE_STANDARD_DIGEST,
                       "stpxSMSTConfigPreStandardDigest"},
                      record->pre_standard_digest);
}

int get_stpxSMSTMaxInstanceID(ScalarValueRecord *record) {
  record->max_instance_id = kMaxInstanceId;
  return 0;
}

int get_stpxSMSTRegionRevision(ScalarValueRecord *record) {
  return fetch_number(
      {STP_COMMAND_MST_REGION, std::nullopt, STP_ATTRIBUTE_MST_REGION_REVISION, "stpxSMSTRegionRevision"},
      &record->region_revision);
}

int get_stpxSMSTMaxHopCount(ScalarValueRecord *record) {
  return fetch_number(
      {STP_COMMAND_GLOBAL_SETTINGS, STP_KEY_GLOBAL_SETTINGS, STP_ATTRIBUTE_HOPS, "stpxSMSTMaxHopCount"},
      &record->max_hop_count);
}

int get_stpxSMSTConfigDigest(ScalarValueRecord *record) {
  return fetch_octets(
      {STP_COMMAND_MST_REGION, STP_KEY_MST_DIGESTS, STP_ATTRIBUTE_MST_CONFIG_DIGEST, "stpxSMSTConfigDigest"},
      record->config_digest);
}

int get_stpxSpanningTreeType(ScalarValueRecord *record) {
  return fetch_number(
      {STP_COMMAND_GLOBAL_SETTINGS, STP_KEY_GLOBAL_SETTINGS, STP_ATTRIBUTE_MODE, "stpxSpanningTreeType"},
      &record->spanning_tree_type);
}

int get_stpxSpanningTreePathCostMode(ScalarValueRecord *record) {
  return fetch_number({STP_COMMAND_GLOBAL_SETTINGS, STP_KEY_GLOBAL_SETTINGS, STP_ATTRIBUTE_PATH_COST_METHOD,
                       "stpxSpanningTreePathCostMode"},
                      &record->path_cost_mode);
}

int get_stpxSpanningTreePathCostOperMode(ScalarValueRecord *record) {
  return fetch_number({STP_COMMAND_GLOBAL_SETTINGS, STP_KEY_GLOBAL_SETTINGS,
                       STP_ATTRIBUTE_PATH_COST_OPER_METHOD, "stpxSpanningTreePathCostOperMode"},
                      &record->path_cost_oper_mode);
}

int get_stpxLoopGuardGlobalDefaultMode(ScalarValueRecord *record) {
  return fetch_number({STP_COMMAND_GLOBAL_SETTINGS, STP_KEY_GLOBAL_SETTINGS, STP_ATTRIBUTE_LOOP_GUARD_DEFAULT,
                       "stpxLoopGuardGlobalDefaultMode"},
                      &record->loop_guard_default);
}

int get_stpxMSTMaxInstanceNumber(void) { return 0; }

int get_stpxMSTMaxHopCount(void) { return 0; }

int get_stpxMSTRegionRevision(void) { return 0; }

u_char *get_vantrelStpExtensionsMIB(struct variable *vp, oid *name, size_t *length, int exact,
                                    size_t *var_len, WriteMethod **write_method) {
  if (header_generic(vp, name, length, exact, var_len, write_method) == MATCH_FAILED) {
    return nullptr;
  }
  STP_LOG(kTrace, "magic %d\n", vp->magic);
  const ScalarObject *object = find_object(vp->magic);
  if (object == nullptr || object->fetch(&scalar_values) != 0) {
    return nullptr;
  }
  if (object->convert != nullptr) {
    object->convert(&scalar_values);
  }
  *var_len = object->length();
  return static_cast<u_char *>(object->value);
}
