// The agent's handler of both groups: finds the object and the row of each binding, and answers.
#pragma once

#include "stpsnmp/agent.h"

namespace stpbridge {

// As net-snmp calls it (Netsnmp_Node_Handler), for GET and GETNEXT alone. The registration's root is the
// group, and its context the tree.
int answer_group(netsnmp_mib_handler *handler, netsnmp_handler_registration *registration,
                 netsnmp_agent_request_info *info, netsnmp_request_info *requests);

}  // namespace stpbridge
