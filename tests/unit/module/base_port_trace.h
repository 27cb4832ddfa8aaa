// What the module logs and asks of the platform on its way from a bridge port number to the spanning-tree
// process's entry of that port.
#pragma once

#include <cstdint>
#include <string>

#include "search_test.h"

// The cache of base ports when it is filled, and when it holds them.
Trace base_ports_fetched();
Trace base_ports_copied();

// What follows: a list of one line, and a walk to this port.
Trace walked_to(uint16_t port, uint32_t if_index, const std::string &list, uint8_t selector = 0);

// The same, from the last of the ports.
Trace walked_to_the_end(const std::string &list);

// A port that a GET finds.
Trace exact_port(uint16_t port, uint32_t if_index);

// The question for the port's link, and what is logged of one that is down.
Trace link_asked(uint32_t if_index);
Trace link_is_down(uint32_t if_index);

// The query of the port's entry: what is asked until the answer, and afterwards where the process has an
// entry that names its interface, and where it has none.
Trace port_queried(uint32_t command, const std::string &token, uint32_t if_index);
Trace port_queried_and_found(uint32_t command, const std::string &token, uint32_t if_index);
Trace port_queried_in_vain(uint32_t command, const std::string &token, uint32_t if_index);
Trace port_queried_and_not_named(uint32_t command, const std::string &token, uint32_t if_index,
                                 uint32_t named_if_index);
