// The bridge port bitmap, which every step of a walk searches and lists, against the plain ways to do so: bit
// by bit, and with the C library's formatted print.
#include <cstdio>

#include <benchmark/benchmark.h>

#include "bitmap.h"
#include "search/base_port.h"

namespace {

using namespace stpsnmp;
using search::kBasePorts;

constexpr uint32_t kFirstPort = 129;
constexpr uint32_t kPorts = 48;
constexpr uint32_t kFirstChannel = 4097;
constexpr uint32_t kChannels = 8;

constexpr uint32_t kOctetBits = 8;

uint8_t bit_in_octet(uint32_t port) { return static_cast<uint8_t>(0x80U >> port % kOctetBits); }

bool holds(const vlan_mgr_baseport_bmp &ports, uint32_t port) {
  return (ports.bits[port / kOctetBits] & bit_in_octet(port)) != 0;
}

void add(uint32_t port, vlan_mgr_baseport_bmp *ports) {
  ports->bits[port / kOctetBits] |= bit_in_octet(port);
}

// A switch of 48 ports, every eighth of which has no VLAN, and its port-channels.
vlan_mgr_baseport_bmp make_ports() {
  constexpr uint32_t kWithoutVlan = 8;
  vlan_mgr_baseport_bmp ports{BASEPORT_BITMAP_SIZE, {}};
  for (uint32_t i = 0; i < kPorts; ++i) {
    if (i % kWithoutVlan != 0) {
      add(kFirstPort + i, &ports);
    }
  }
  for (uint32_t i = 0; i < kChannels; ++i) {
    add(kFirstChannel + i, &ports);
  }
  return ports;
}

// From the last physical port to the first port-channel.
void NextPort(benchmark::State &state) {
  const vlan_mgr_baseport_bmp ports = make_ports();
  for (auto _ : state) {
    benchmark::DoNotOptimize(bitmap::find_set(ports.bits, kBasePorts, kFirstPort + kPorts));
  }
}
BENCHMARK(NextPort);

void NextPortBitByBit(benchmark::State &state) {
  const vlan_mgr_baseport_bmp ports = make_ports();
  for (auto _ : state) {
    uint32_t port = kFirstPort + kPorts;
    while (port < kBasePorts && !holds(ports, port)) {
      ++port;
    }
    benchmark::DoNotOptimize(port);
  }
}
BENCHMARK(NextPortBitByBit);

constexpr size_t kLongestRun = sizeof "4294967294-4294967295";

// The texts of all runs.
void Runs(benchmark::State &state) {
  const vlan_mgr_baseport_bmp ports = make_ports();
  char text[kLongestRun];
  for (auto _ : state) {
    bitmap::Run run;
    for (uint32_t from = 0; bitmap::find_run(ports.bits, kBasePorts, from, &run); from = run.last + 1) {
      benchmark::DoNotOptimize(bitmap::write_run(text, run));
    }
  }
}
BENCHMARK(Runs);

void RunsWithFormattedPrint(benchmark::State &state) {
  const vlan_mgr_baseport_bmp ports = make_ports();
  char text[kLongestRun];
  for (auto _ : state) {
    bitmap::Run run;
    for (uint32_t from = 0; bitmap::find_run(ports.bits, kBasePorts, from, &run); from = run.last + 1) {
      benchmark::DoNotOptimize(run.first == run.last
                                   ? snprintf(text, sizeof text, "%u", run.first)
                                   : snprintf(text, sizeof text, "%u-%u", run.first, run.last));
    }
  }
}
BENCHMARK(RunsWithFormattedPrint);

}  // namespace
