// Deterministic damage to packets.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

using Random = std::mt19937;

// Damaged copies of a packet, none of them as good as it, with each kind of damage at each place that it can
// have: words changed, cuts, additions, repetitions.
std::vector<std::vector<uint8_t>> damaged_everywhere(const std::vector<uint8_t> &good);

// The same seed gives the same numbers on every machine.
inline Random seeded(uint32_t seed) { return Random(seed); }

// Damages a packet in one to four ways: flipped bits, overwritten octets and words, cuts, additions,
// repetitions.
void mutate(std::vector<uint8_t> *packet, Random *random);
