#include "model/vlan_set.h"

#include <charconv>
#include <system_error>

#include "model/refusal.h"

namespace stpswitch {
namespace {

// Steps through one list; every complaint shows the list.
class ListReader {
 public:
  explicit ListReader(std::string_view text) : text_(text), rest_(text) {}

  bool at_end() const { return rest_.empty(); }

  bool take(char expected) {
    if (rest_.empty() || rest_.front() != expected) {
      return false;
    }
    rest_.remove_prefix(1);
    return true;
  }

  uint32_t take_vlan() {
    uint32_t vlan = 0;
    const char *const end = rest_.data() + rest_.size();
    const auto [stop, error] = std::from_chars(rest_.data(), end, vlan);
    if (error == std::errc::invalid_argument) {
      refuse_syntax();
    }
    const std::string_view digits = rest_.substr(0, static_cast<size_t>(stop - rest_.data()));
    if (error != std::errc() || vlan < kMinVlan || vlan > kMaxVlan) {
      throw Refusal("VLAN " + std::string(digits) + " is not in " + std::to_string(kMinVlan) + ".." +
                    std::to_string(kMaxVlan));
    }
    rest_.remove_prefix(digits.size());
    return vlan;
  }

  [[noreturn]] void refuse_syntax() const {
    throw Refusal("'" + std::string(text_) + "' is not a list of VLANs such as 1,10-19");
  }

 private:
  std::string_view text_;
  std::string_view rest_;
};

}  // namespace

void VlanSet::insert(const VlanSet &vlans) {
  for (size_t i = 0; i < octets_.size(); ++i) {
    octets_[i] |= vlans.octets_[i];
  }
}

void VlanSet::erase(const VlanSet &vlans) {
  for (size_t i = 0; i < octets_.size(); ++i) {
    octets_[i] &= static_cast<uint8_t>(~vlans.octets_[i]);
  }
}

VlanSet parse_vlans(std::string_view text) {
  VlanSet vlans;
  ListReader reader(text);
  if (reader.at_end()) {
    return vlans;
  }
  do {
    const uint32_t first = reader.take_vlan();
    const uint32_t last = reader.take('-') ? reader.take_vlan() : first;
    if (last < first) {
      throw Refusal("the range " + std::to_string(first) + "-" + std::to_string(last) + " runs backwards");
    }
    for (uint32_t vlan = first; vlan <= last; ++vlan) {
      vlans.insert(vlan);
    }
  } while (reader.take(','));
  if (!reader.at_end()) {
    reader.refuse_syntax();
  }
  return vlans;
}

std::string print_vlans(const VlanSet &vlans) {
  std::string text;
  for (uint32_t first = kMinVlan; first <= kMaxVlan; ++first) {
    if (!vlans.contains(first)) {
      continue;
    }
    uint32_t last = first;
    while (last < kMaxVlan && vlans.contains(last + 1)) {
      ++last;
    }
    text += text.empty() ? "" : ",";
    text += std::to_string(first);
    if (last != first) {
      text += "-" + std::to_string(last);
    }
    first = last;
  }
  return text;
}

}  // namespace stpswitch
