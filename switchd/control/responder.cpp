#include "control/responder.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "base/log.h"
#include "control/control_protocol.h"
#include "control/switch_overview.h"
#include "keys/config_error.h"
#include "keys/keys.h"
#include "model/refusal.h"

namespace stpswitch {
namespace {

using nlohmann::json;

// One request, whose members are checked as they are read.
class Request {
 public:
  explicit Request(std::string_view text) : object_(json::parse(text, nullptr, false)) {
    if (!object_.is_object()) {
      throw Refusal("the request is not a JSON object");
    }
  }

  void allow_members(std::initializer_list<std::string_view> names) const {
    for (const auto &[name, value] : object_.items()) {
      if (std::find(names.begin(), names.end(), name) == names.end()) {
        throw Refusal(name + ": unknown member of the request");
      }
    }
  }

  std::string text(const char *name) const {
    const auto member = object_.find(name);
    if (member == object_.end() || !member->is_string()) {
      throw Refusal(std::string(name) + ": expected a string");
    }
    return *member;
  }

  bool has(const char *name) const { return object_.contains(name); }

  int64_t number(const char *name, int64_t max) const {
    const auto member = object_.find(name);
    if (member == object_.end() || !member->is_number_integer()) {
      throw Refusal(std::string(name) + ": expected an integer");
    }
    if (*member < 1 || *member > max) {
      throw Refusal(std::string(name) + ": " + member->dump() + " is not in 1.." + std::to_string(max));
    }
    return *member;
  }

 private:
  json object_;
};

json to_json(const Value &value) {
  return std::visit([](const auto &alternative) { return json(alternative); }, value);
}

json success() { return {{control::kOk, true}}; }

json answer_ping(const Request &request) {
  request.allow_members({control::kOperation});
  return success();
}

json answer_show(const Request &request, const Switch &the_switch) {
  request.allow_members({control::kOperation, control::kKey});
  const std::string prefix = request.has(control::kKey) ? request.text(control::kKey) : "";
  json values = json::array();
  for (const auto &[key, value] : values_below(the_switch.state(), prefix)) {
    values.push_back(json::array({key, to_json(value)}));
  }
  json answer = success();
  answer[control::kValues] = std::move(values);
  return answer;
}

json answer_overview(const Request &request, const Switch &the_switch) {
  request.allow_members({control::kOperation});
  json answer = success();
  answer[control::kOverview] = overview_of(the_switch);
  return answer;
}

// As the switch has it now; none when it was taken back.
std::string value_of(const std::string &key, const Switch &the_switch) {
  const auto section = values_below(the_switch.state(), key.substr(0, key.rfind('.')));
  const auto found =
      std::find_if(section.begin(), section.end(), [&key](const auto &value) { return value.first == key; });
  return found != section.end() ? print_value(found->second) : "";
}

json answer_set(const Request &request, const Source &source, Switch *the_switch) {
  request.allow_members({control::kOperation, control::kKey, control::kValue});
  const std::string key = request.text(control::kKey);
  the_switch->replace(source.with_value(the_switch->state(), key, request.text(control::kValue)));
  log_line(key + " = " + value_of(key, *the_switch));
  return success();
}

json answer_reset(const Request &request, const Source &source, Switch *the_switch, Faults *faults) {
  request.allow_members({control::kOperation});
  faults->order(FaultKind::kNone, {}, std::nullopt);
  if (auto original = source.original()) {
    the_switch->replace(std::move(*original));
  }
  log_line("reset");
  return success();
}

constexpr auto kFaultKinds =
    std::to_array<std::pair<const char *, FaultKind>>({{control::kFaultNone, FaultKind::kNone},
                                                       {control::kFaultDelay, FaultKind::kDelay},
                                                       {control::kFaultDrop, FaultKind::kDrop},
                                                       {control::kFaultGarbage, FaultKind::kGarbage},
                                                       {control::kFaultDisconnect, FaultKind::kDisconnect}});

json answer_ordered_fault(const Faults &faults) {
  const Fault fault = faults.ordered();
  const auto *const known = std::find_if(kFaultKinds.begin(), kFaultKinds.end(),
                                         [&fault](const auto &pair) { return pair.second == fault.kind; });
  json answer = success();
  answer[control::kFault] = known->first;
  if (fault.kind == FaultKind::kDelay) {
    answer[control::kDelayMs] = fault.delay.count();
  }
  if (faults.left()) {
    answer[control::kCount] = *faults.left();
  }
  return answer;
}

json answer_fault(const Request &request, Faults *faults) {
  request.allow_members({control::kOperation, control::kFault, control::kDelayMs, control::kCount});
  if (!request.has(control::kFault) && !request.has(control::kDelayMs) && !request.has(control::kCount)) {
    return answer_ordered_fault(*faults);
  }
  const std::string name = request.text(control::kFault);
  const auto *const kind = std::find_if(kFaultKinds.begin(), kFaultKinds.end(),
                                        [&name](const auto &known) { return name == known.first; });
  if (kind == kFaultKinds.end()) {
    throw Refusal("fault: '" + name + "' is unknown");
  }
  std::chrono::milliseconds delay{};
  if (kind->second == FaultKind::kDelay) {
    delay = std::chrono::milliseconds(request.number(control::kDelayMs, control::kMaxDelayMs));
  } else if (request.has(control::kDelayMs)) {
    throw Refusal("delay_ms: only a delay has one");
  }
  std::optional<uint32_t> count;
  if (request.has(control::kCount)) {
    count = static_cast<uint32_t>(request.number(control::kCount, control::kMaxFaultCount));
  }
  faults->order(kind->second, delay, count);
  log_line("fault " + name + (count ? ", count " + std::to_string(*count) : ""));
  return success();
}

}  // namespace

std::string ControlResponder::answer(std::string_view text) {
  try {
    const Request request(text);
    const std::string operation = request.text(control::kOperation);
    if (operation == control::kPing) {
      return answer_ping(request).dump();
    }
    if (operation == control::kShow) {
      return answer_show(request, switch_).dump();
    }
    if (operation == control::kOverview) {
      return answer_overview(request, switch_).dump();
    }
    if (operation == control::kSet) {
      return answer_set(request, source_, &switch_).dump();
    }
    if (operation == control::kReset) {
      return answer_reset(request, source_, &switch_, &faults_).dump();
    }
    if (operation == control::kFault) {
      return answer_fault(request, &faults_).dump();
    }
    return error_answer("op: '" + operation + "' is unknown");
  } catch (const Refusal &refusal) {
    return error_answer(refusal.what());
  } catch (const ConfigError &error) {
    return error_answer(error.what());
  }
}

std::string error_answer(const std::string &reason) {
  return json({{control::kOk, false}, {control::kError, reason}})
      .dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace stpswitch
