// Deterministic damage to packets.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

using Random = std::mt19937;

// The same seed gives the same numbers on every machine.
inline Random seeded(uint32_t seed) { return Random(seed); }

// Damages a packet in one to four ways: flipped bits, overwritten octets and words, cuts, additions,
// repetitions.
void mutate(std::vector<uint8_t> *packet, Random *random);
