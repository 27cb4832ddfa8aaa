#include "model/id_set.h"

#include <bit>
#include <charconv>
#include <cstring>
#include <system_error>

#include "model/refusal.h"

namespace stpswitch {
namespace {

// Steps through one list; every complaint shows the list.
class ListReader {
 public:
  ListReader(std::string_view text, const IdKind &kind) : kind_(kind), text_(text), rest_(text) {}

  bool at_end() const { return rest_.empty(); }

  bool take(char expected) {
    if (rest_.empty() || rest_.front() != expected) {
      return false;
    }
    rest_.remove_prefix(1);
    return true;
  }

  uint32_t take_id() {
    uint32_t id = 0;
    const char *const end = rest_.data() + rest_.size();
    const auto [stop, error] = std::from_chars(rest_.data(), end, id);
    if (error == std::errc::invalid_argument) {
      refuse_syntax();
    }
    const std::string_view digits = rest_.substr(0, static_cast<size_t>(stop - rest_.data()));
    if (error != std::errc() || id < kind_.min || id > kind_.max) {
      throw Refusal(std::string(kind_.name) + " " + std::string(digits) + " is not in " +
                    std::to_string(kind_.min) + ".." + std::to_string(kind_.max));
    }
    rest_.remove_prefix(digits.size());
    return id;
  }

  [[noreturn]] void refuse_syntax() const {
    throw Refusal("'" + std::string(text_) + "' is not a list of " + std::string(kind_.name) + "s such as " +
                  std::string(kind_.example));
  }

 private:
  const IdKind &kind_;
  std::string_view text_;
  std::string_view rest_;
};

}  // namespace

void IdSet::insert(const IdSet &ids) {
  for (size_t i = 0; i < octets_.size(); ++i) {
    octets_[i] |= ids.octets_[i];
  }
}

void IdSet::erase(const IdSet &ids) {
  for (size_t i = 0; i < octets_.size(); ++i) {
    octets_[i] &= static_cast<uint8_t>(~ids.octets_[i]);
  }
}

void IdSet::intersect(const IdSet &ids) {
  for (size_t i = 0; i < octets_.size(); ++i) {
    octets_[i] &= ids.octets_[i];
  }
}

void IdSet::toggle(const IdSet &ids) {
  for (size_t i = 0; i < octets_.size(); ++i) {
    octets_[i] ^= ids.octets_[i];
  }
}

std::optional<uint32_t> IdSet::first_from(uint32_t id) const {
  if (id >= kEnd) {
    return std::nullopt;
  }
  constexpr uint32_t kAllBits = 0xFF;
  uint32_t wanted = kAllBits >> (id % kBitsPerOctet);
  for (uint32_t i = id / kBitsPerOctet; i < octets_.size(); ++i) {
    const auto found = static_cast<uint8_t>(octets_[i] & wanted);
    if (found != 0) {
      return i * kBitsPerOctet + static_cast<uint32_t>(std::countl_zero(found));
    }
    wanted = kAllBits;
  }
  return std::nullopt;
}

bool IdSet::is_empty() const { return octets_ == std::array<uint8_t, STP_VLAN_BITMAP_SIZE>{}; }

// Word by word: a change of a large switch asks it for every port and MST instance.
bool IdSet::overlaps(const IdSet &ids) const {
  using Word = uint64_t;
  static_assert(STP_VLAN_BITMAP_SIZE % sizeof(Word) == 0);
  for (size_t at = 0; at < octets_.size(); at += sizeof(Word)) {
    Word mine = 0;
    Word theirs = 0;
    std::memcpy(&mine, octets_.data() + at, sizeof mine);
    std::memcpy(&theirs, ids.octets_.data() + at, sizeof theirs);
    if ((mine & theirs) != 0) {
      return true;
    }
  }
  return false;
}

IdSet parse_ids(std::string_view text, const IdKind &kind) {
  IdSet ids;
  ListReader reader(text, kind);
  if (reader.at_end()) {
    return ids;
  }
  do {
    const uint32_t first = reader.take_id();
    const uint32_t last = reader.take('-') ? reader.take_id() : first;
    if (last < first) {
      throw Refusal("the range " + std::to_string(first) + "-" + std::to_string(last) + " runs backwards");
    }
    for (uint32_t id = first; id <= last; ++id) {
      ids.insert(id);
    }
  } while (reader.take(','));
  if (!reader.at_end()) {
    reader.refuse_syntax();
  }
  return ids;
}

std::string print_ids(const IdSet &ids) {
  std::string text;
  for (auto first = ids.first_from(0); first;) {
    uint32_t last = *first;
    while (ids.contains(last + 1)) {
      ++last;
    }
    text += text.empty() ? "" : ",";
    text += std::to_string(*first);
    if (last != *first) {
      text += "-" + std::to_string(last);
    }
    first = ids.first_from(last + 1);
  }
  return text;
}

}  // namespace stpswitch
