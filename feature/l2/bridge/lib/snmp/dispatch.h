// The agent's handler: finds the object and the row of each binding, and answers.
#pragma once

#include "stpsnmp/agent.h"

namespace stpbridge {

// As net-snmp calls it (Netsnmp_Node_Handler), for GET and GETNEXT alone. The registration's root is
// dot1dBridge or a group of it, and its context tells the tree.
int answer_requests(netsnmp_mib_handler *handler, netsnmp_handler_registration *registration,
                    netsnmp_agent_request_info *info, netsnmp_request_info *requests);

}  // namespace stpbridge
