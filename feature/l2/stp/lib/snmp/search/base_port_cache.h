// The bridge ports of all VLANs. A walk asks for them once a row, so they are kept for some seconds.
#pragma once

#include "platform/vlan_mgr.h"

namespace stpsnmp::search {

// Returns a record for the caller to free, or null. It may be up to ten seconds old, and then holds the ports
// of the VLANs that were asked for when it was fresh: ask for bitmap::kAllVlans only.
vlan_mgr_baseport_bmp *stp_get_cached_baseport_bitmap_all_vlans(const stp_vlan_bmp *vlan_bmp);

}  // namespace stpsnmp::search
