#include "session_number.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <cstring>

namespace stpplatform {
namespace {

// FNV-1a, 32 bits.
class Hash {
 public:
  void add(const void *data, size_t size) {
    constexpr uint32_t kPrime = 16777619;
    const auto *octets = static_cast<const uint8_t *>(data);
    for (size_t i = 0; i < size; ++i) {
      value_ = (value_ ^ octets[i]) * kPrime;
    }
  }

  template <typename T>
  void add_value(const T &value) {
    add(&value, sizeof value);
  }

  uint32_t value() const { return value_ == 0 ? kOffsetBasis : value_; }

 private:
  static constexpr uint32_t kOffsetBasis = 2166136261;

  uint32_t value_ = kOffsetBasis;
};

// Hashes what tells one peer from another. The rest of an address record is padding, or the agent's own
// address.
void add_internet_peer(Hash *hash, const netsnmp_sockaddr_storage &peer) {
  if (peer.sa.sa_family == AF_INET) {
    hash->add_value(peer.sin.sin_addr);
    hash->add_value(peer.sin.sin_port);
  } else if (peer.sa.sa_family == AF_INET6) {
    hash->add_value(peer.sin6.sin6_addr);
    hash->add_value(peer.sin6.sin6_port);
    hash->add_value(peer.sin6.sin6_scope_id);
  }
}

}  // namespace

uint32_t session_number(const netsnmp_pdu &pdu, const char *user) {
  Hash hash;
  if (pdu.tDomain != nullptr) {
    hash.add(pdu.tDomain, pdu.tDomainLen * sizeof *pdu.tDomain);
  }
  // The address record of every internet transport begins with the peer's address.
  netsnmp_sockaddr_storage peer;
  if (pdu.transport_data != nullptr && pdu.transport_data_length >= static_cast<int>(sizeof peer)) {
    std::memcpy(&peer, pdu.transport_data, sizeof peer);
    add_internet_peer(&hash, peer);
  }
  hash.add(user, std::strlen(user));
  return hash.value();
}

}  // namespace stpplatform
