// What ovsdb-server 3.1 sent about a bridge of Open vSwitch's, recorded: the reply to a monitor request, and
// the updates that followed, in their order.
#pragma once

#include <array>

// Bridge br0: ba and ba2 lead to the root, bond0 is a bond of x0 and x1.
inline constexpr const char *kMonitorReply =
    R"({"id":1,"result":{"Interface":{"8ab9cc3f-7635-451a-85bd-31f0267bb7b5":{"new":{"name":"x0","ofport":4,
"ifindex":6,"duplex":"full","link_state":"up"}},
"791756af-e8fb-4182-8e9b-20d89f2936bd":{"new":{"name":"ba","ofport":1,"ifindex":4,"duplex":"full",
"link_state":"up"}},"d76a1978-5232-46a6-b9a1-f3a0d63c1f6b":{"new":{"name":"ba2","ofport":2,"ifindex":5,
"duplex":"full","link_state":"up"}},"04620594-4814-44de-89d2-88047ed100fd":{"new":{"name":"x1",
"ofport":3,"ifindex":7,"duplex":"full","link_state":"up"}},
"2ddcd664-d100-4d70-8267-aefb4eb267db":{"new":{"name":"br0","ofport":65534,"ifindex":3,"duplex":"full",
"link_state":"down"}}},"Port":{"d78d049b-13fc-413d-9397-0968c6930244":{"new":{"name":"bond0",
"trunks":["set",[]],"other_config":["map",[]],"interfaces":["set",[["uuid",
"04620594-4814-44de-89d2-88047ed100fd"],["uuid","8ab9cc3f-7635-451a-85bd-31f0267bb7b5"]]],
"vlan_mode":["set",[]],"rstp_statistics":["map",[]],"rstp_status":["map",[]],"tag":["set",[]]}},
"c600810f-b098-4441-bcb4-80e4315f8354":{"new":{"name":"ba","trunks":["set",[]],"other_config":["map",[]],
"interfaces":["uuid","791756af-e8fb-4182-8e9b-20d89f2936bd"],"vlan_mode":["set",[]],
"rstp_statistics":["map",[["rstp_error_count",0],["rstp_rx_count",3],["rstp_tx_count",0],["rstp_uptime",
4]]],"rstp_status":["map",[["rstp_designated_bridge_id","1.000.fa423b03944b"],
["rstp_designated_path_cost","0"],["rstp_designated_port_id","8001"],["rstp_port_id","8001"],
["rstp_port_role","Alternate"],["rstp_port_state","Discarding"]]],"tag":7}},
"100fbd4a-7a99-4f28-b1d5-a7fbc7dc4c6a":{"new":{"name":"br0","trunks":["set",[]],"other_config":["map",
[]],"interfaces":["uuid","2ddcd664-d100-4d70-8267-aefb4eb267db"],"vlan_mode":["set",[]],
"rstp_statistics":["map",[]],"rstp_status":["map",[]],"tag":["set",[]]}},
"c40b65e1-8840-4cd8-bcbf-4f4355c2df1c":{"new":{"name":"ba2","trunks":["set",[1,5,9]],
"other_config":["map",[["rstp-path-cost","777"],["rstp-port-admin-edge","false"],["rstp-port-auto-edge",
"true"],["rstp-port-priority","64"]]],"interfaces":["uuid","d76a1978-5232-46a6-b9a1-f3a0d63c1f6b"],
"vlan_mode":"native-untagged","rstp_statistics":["map",[["rstp_error_count",0],["rstp_rx_count",3],
["rstp_tx_count",2],["rstp_uptime",4]]],"rstp_status":["map",[["rstp_designated_bridge_id",
"1.000.fa423b03944b"],["rstp_designated_path_cost","0"],["rstp_designated_port_id","8002"],
["rstp_port_id","4002"],["rstp_port_role","Root"],["rstp_port_state","Forwarding"]]],"tag":30}}},
"Bridge":{"b5784ce9-947d-488a-b46a-7e3d10a23b40":{"new":{"ports":["set",[["uuid",
"100fbd4a-7a99-4f28-b1d5-a7fbc7dc4c6a"],["uuid","c40b65e1-8840-4cd8-bcbf-4f4355c2df1c"],["uuid",
"c600810f-b098-4441-bcb4-80e4315f8354"],["uuid","d78d049b-13fc-413d-9397-0968c6930244"]]],"name":"br0",
"stp_enable":false,"rstp_enable":true,"other_config":["map",[["rstp-forward-delay","12"],["rstp-max-age",
"18"],["rstp-priority","8192"],["rstp-transmit-hold-count","4"]]],"rstp_status":["map",
[["rstp_bridge_id","2.000.ea4c78b58a48"],["rstp_bridge_port_id","4002"],["rstp_designated_id",
"1.000.fa423b03944b"],["rstp_designated_port_id","8002"],["rstp_root_id","1.000.fa423b03944b"],
["rstp_root_path_cost","777"]]]}}},
"Open_vSwitch":{"13567387-01ff-4981-869e-5e4286db7b88":{"new":{"other_config":["map",[]]}}}},
"error":null})";

// The other end of ba goes down ...
inline constexpr const char *kLinkDown = R"({"id":null,"method":"update","params":["stp",
{"Interface":{"791756af-e8fb-4182-8e9b-20d89f2936bd":{"new":{"name":"ba","ofport":1,"ifindex":4,
"duplex":"full","link_state":"down"},"old":{"link_state":"up"}}}}]})";

// ... and RSTP has noticed.
inline constexpr const char *kPortDisabled = R"({"id":null,"method":"update","params":["stp",
{"Port":{"c600810f-b098-4441-bcb4-80e4315f8354":{"new":{"name":"ba","trunks":["set",[]],
"other_config":["map",[]],"interfaces":["uuid","791756af-e8fb-4182-8e9b-20d89f2936bd"],
"vlan_mode":["set",[]],"rstp_statistics":["map",[["rstp_error_count",0],["rstp_rx_count",3],
["rstp_tx_count",0],["rstp_uptime",4]]],"rstp_status":["map",[["rstp_designated_bridge_id",
"1.000.fa423b03944b"],["rstp_designated_path_cost","0"],["rstp_designated_port_id","8001"],
["rstp_port_id","8001"],["rstp_port_role","Disabled"],["rstp_port_state","Discarding"]]],"tag":7},
"old":{"rstp_status":["map",[["rstp_designated_bridge_id","1.000.fa423b03944b"],
["rstp_designated_path_cost","0"],["rstp_designated_port_id","8001"],["rstp_port_id","8001"],
["rstp_port_role","Alternate"],["rstp_port_state","Discarding"]]]}}}}]})";

// It comes up again ...
inline constexpr const char *kLinkUp = R"({"id":null,"method":"update","params":["stp",
{"Interface":{"791756af-e8fb-4182-8e9b-20d89f2936bd":{"new":{"name":"ba","ofport":1,"ifindex":4,
"duplex":"full","link_state":"up"},"old":{"link_state":"down"}}}}]})";

// ... and is designated ...
inline constexpr const char *kPortDesignated = R"({"id":null,"method":"update","params":["stp",
{"Port":{"c600810f-b098-4441-bcb4-80e4315f8354":{"new":{"name":"ba","trunks":["set",[]],
"other_config":["map",[]],"interfaces":["uuid","791756af-e8fb-4182-8e9b-20d89f2936bd"],
"vlan_mode":["set",[]],"rstp_statistics":["map",[["rstp_error_count",0],["rstp_rx_count",3],
["rstp_tx_count",0],["rstp_uptime",4]]],"rstp_status":["map",[["rstp_designated_bridge_id",
"2.000.ea4c78b58a48"],["rstp_designated_path_cost","777"],["rstp_designated_port_id","8001"],
["rstp_port_id","8001"],["rstp_port_role","Designated"],["rstp_port_state","Discarding"]]],"tag":7},
"old":{"rstp_status":["map",[["rstp_designated_bridge_id","1.000.fa423b03944b"],
["rstp_designated_path_cost","0"],["rstp_designated_port_id","8001"],["rstp_port_id","8001"],
["rstp_port_role","Disabled"],["rstp_port_state","Discarding"]]]}}}}]})";

// ... until it has heard the root.
inline constexpr const char *kPortAlternate = R"({"id":null,"method":"update","params":["stp",
{"Port":{"c600810f-b098-4441-bcb4-80e4315f8354":{"new":{"name":"ba","trunks":["set",[]],
"other_config":["map",[]],"interfaces":["uuid","791756af-e8fb-4182-8e9b-20d89f2936bd"],
"vlan_mode":["set",[]],"rstp_statistics":["map",[["rstp_error_count",0],["rstp_rx_count",3],
["rstp_tx_count",0],["rstp_uptime",4]]],"rstp_status":["map",[["rstp_designated_bridge_id",
"1.000.fa423b03944b"],["rstp_designated_path_cost","0"],["rstp_designated_port_id","8001"],
["rstp_port_id","8001"],["rstp_port_role","Alternate"],["rstp_port_state","Discarding"]]],"tag":7},
"old":{"rstp_status":["map",[["rstp_designated_bridge_id","2.000.ea4c78b58a48"],
["rstp_designated_path_cost","777"],["rstp_designated_port_id","8001"],["rstp_port_id","8001"],
["rstp_port_role","Designated"],["rstp_port_state","Discarding"]]]}}}}]})";

// Written every five seconds.
inline constexpr const char *kStatistics = R"({"id":null,"method":"update","params":["stp",
{"Port":{"c600810f-b098-4441-bcb4-80e4315f8354":{"new":{"name":"ba","trunks":["set",[]],
"other_config":["map",[]],"interfaces":["uuid","791756af-e8fb-4182-8e9b-20d89f2936bd"],
"vlan_mode":["set",[]],"rstp_statistics":["map",[["rstp_error_count",0],["rstp_rx_count",4],
["rstp_tx_count",1],["rstp_uptime",8]]],"rstp_status":["map",[["rstp_designated_bridge_id",
"1.000.fa423b03944b"],["rstp_designated_path_cost","0"],["rstp_designated_port_id","8001"],
["rstp_port_id","8001"],["rstp_port_role","Alternate"],["rstp_port_state","Discarding"]]],"tag":7},
"old":{"rstp_statistics":["map",[["rstp_error_count",0],["rstp_rx_count",3],["rstp_tx_count",0],
["rstp_uptime",4]]]}},"c40b65e1-8840-4cd8-bcbf-4f4355c2df1c":{"new":{"name":"ba2","trunks":["set",[1,5,
9]],"other_config":["map",[["rstp-path-cost","777"],["rstp-port-admin-edge","false"],
["rstp-port-auto-edge","true"],["rstp-port-priority","64"]]],"interfaces":["uuid",
"d76a1978-5232-46a6-b9a1-f3a0d63c1f6b"],"vlan_mode":"native-untagged","rstp_statistics":["map",
[["rstp_error_count",0],["rstp_rx_count",5],["rstp_tx_count",0],["rstp_uptime",8]]],"rstp_status":["map",
[["rstp_designated_bridge_id","1.000.fa423b03944b"],["rstp_designated_path_cost","0"],
["rstp_designated_port_id","8002"],["rstp_port_id","4002"],["rstp_port_role","Root"],["rstp_port_state",
"Forwarding"]]],"tag":30},"old":{"rstp_statistics":["map",[["rstp_error_count",0],["rstp_rx_count",3],
["rstp_tx_count",2],["rstp_uptime",4]]]}}}}]})";

// ovs-vsctl del-port bond0.
inline constexpr const char *kBondDeleted = R"({"id":null,"method":"update","params":["stp",
{"Interface":{"8ab9cc3f-7635-451a-85bd-31f0267bb7b5":{"old":{"name":"x0","ofport":4,"ifindex":6,
"duplex":"full","link_state":"up"}},"04620594-4814-44de-89d2-88047ed100fd":{"old":{"name":"x1",
"ofport":3,"ifindex":7,"duplex":"full","link_state":"up"}}},
"Port":{"d78d049b-13fc-413d-9397-0968c6930244":{"old":{"name":"bond0","trunks":["set",[]],
"other_config":["map",[]],"interfaces":["set",[["uuid","04620594-4814-44de-89d2-88047ed100fd"],["uuid",
"8ab9cc3f-7635-451a-85bd-31f0267bb7b5"]]],"vlan_mode":["set",[]],"rstp_statistics":["map",[]],
"rstp_status":["map",[]],"tag":["set",[]]}}},
"Bridge":{"b5784ce9-947d-488a-b46a-7e3d10a23b40":{"new":{"ports":["set",[["uuid",
"100fbd4a-7a99-4f28-b1d5-a7fbc7dc4c6a"],["uuid","c40b65e1-8840-4cd8-bcbf-4f4355c2df1c"],["uuid",
"c600810f-b098-4441-bcb4-80e4315f8354"]]],"name":"br0","stp_enable":false,"rstp_enable":true,
"other_config":["map",[["rstp-forward-delay","12"],["rstp-max-age","18"],["rstp-priority","8192"],
["rstp-transmit-hold-count","4"]]],"rstp_status":["map",[["rstp_bridge_id","2.000.ea4c78b58a48"],
["rstp_bridge_port_id","4002"],["rstp_designated_id","1.000.fa423b03944b"],["rstp_designated_port_id",
"8002"],["rstp_root_id","1.000.fa423b03944b"],["rstp_root_path_cost","777"]]]},"old":{"ports":["set",
[["uuid","100fbd4a-7a99-4f28-b1d5-a7fbc7dc4c6a"],["uuid","c40b65e1-8840-4cd8-bcbf-4f4355c2df1c"],["uuid",
"c600810f-b098-4441-bcb4-80e4315f8354"],["uuid","d78d049b-13fc-413d-9397-0968c6930244"]]]}}}}]})";

// ovs-vsctl set bridge br0 rstp_enable=false ...
inline constexpr const char *kRstpOff = R"({"id":null,"method":"update","params":["stp",
{"Bridge":{"b5784ce9-947d-488a-b46a-7e3d10a23b40":{"new":{"ports":["set",[["uuid",
"100fbd4a-7a99-4f28-b1d5-a7fbc7dc4c6a"],["uuid","c40b65e1-8840-4cd8-bcbf-4f4355c2df1c"],["uuid",
"c600810f-b098-4441-bcb4-80e4315f8354"]]],"name":"br0","stp_enable":false,"rstp_enable":false,
"other_config":["map",[["rstp-forward-delay","12"],["rstp-max-age","18"],["rstp-priority","8192"],
["rstp-transmit-hold-count","4"]]],"rstp_status":["map",[["rstp_bridge_id","2.000.ea4c78b58a48"],
["rstp_bridge_port_id","4002"],["rstp_designated_id","1.000.fa423b03944b"],["rstp_designated_port_id",
"8002"],["rstp_root_id","1.000.fa423b03944b"],["rstp_root_path_cost","777"]]]},
"old":{"rstp_enable":true}}}}]})";

// ... and what ovs-vswitchd makes of it. The statistics stay.
inline constexpr const char *kStatusCleared = R"({"id":null,"method":"update","params":["stp",
{"Port":{"c600810f-b098-4441-bcb4-80e4315f8354":{"new":{"name":"ba","trunks":["set",[]],
"other_config":["map",[]],"interfaces":["uuid","791756af-e8fb-4182-8e9b-20d89f2936bd"],
"vlan_mode":["set",[]],"rstp_statistics":["map",[["rstp_error_count",0],["rstp_rx_count",4],
["rstp_tx_count",1],["rstp_uptime",8]]],"rstp_status":["map",[]],"tag":7},"old":{"rstp_status":["map",
[["rstp_designated_bridge_id","1.000.fa423b03944b"],["rstp_designated_path_cost","0"],
["rstp_designated_port_id","8001"],["rstp_port_id","8001"],["rstp_port_role","Alternate"],
["rstp_port_state","Discarding"]]]}},"c40b65e1-8840-4cd8-bcbf-4f4355c2df1c":{"new":{"name":"ba2",
"trunks":["set",[1,5,9]],"other_config":["map",[["rstp-path-cost","777"],["rstp-port-admin-edge",
"false"],["rstp-port-auto-edge","true"],["rstp-port-priority","64"]]],"interfaces":["uuid",
"d76a1978-5232-46a6-b9a1-f3a0d63c1f6b"],"vlan_mode":"native-untagged","rstp_statistics":["map",
[["rstp_error_count",0],["rstp_rx_count",5],["rstp_tx_count",0],["rstp_uptime",8]]],"rstp_status":["map",
[]],"tag":30},"old":{"rstp_status":["map",[["rstp_designated_bridge_id","1.000.fa423b03944b"],
["rstp_designated_path_cost","0"],["rstp_designated_port_id","8002"],["rstp_port_id","4002"],
["rstp_port_role","Root"],["rstp_port_state","Forwarding"]]]}}},
"Bridge":{"b5784ce9-947d-488a-b46a-7e3d10a23b40":{"new":{"ports":["set",[["uuid",
"100fbd4a-7a99-4f28-b1d5-a7fbc7dc4c6a"],["uuid","c40b65e1-8840-4cd8-bcbf-4f4355c2df1c"],["uuid",
"c600810f-b098-4441-bcb4-80e4315f8354"]]],"name":"br0","stp_enable":false,"rstp_enable":false,
"other_config":["map",[["rstp-forward-delay","12"],["rstp-max-age","18"],["rstp-priority","8192"],
["rstp-transmit-hold-count","4"]]],"rstp_status":["map",[]]},"old":{"rstp_status":["map",
[["rstp_bridge_id","2.000.ea4c78b58a48"],["rstp_bridge_port_id","4002"],["rstp_designated_id",
"1.000.fa423b03944b"],["rstp_designated_port_id","8002"],["rstp_root_id","1.000.fa423b03944b"],
["rstp_root_path_cost","777"]]]}}}}]})";

// ovs-vsctl set bridge br0 rstp_enable=true ...
inline constexpr const char *kRstpOn = R"({"id":null,"method":"update","params":["stp",
{"Bridge":{"b5784ce9-947d-488a-b46a-7e3d10a23b40":{"new":{"ports":["set",[["uuid",
"100fbd4a-7a99-4f28-b1d5-a7fbc7dc4c6a"],["uuid","c40b65e1-8840-4cd8-bcbf-4f4355c2df1c"],["uuid",
"c600810f-b098-4441-bcb4-80e4315f8354"]]],"name":"br0","stp_enable":false,"rstp_enable":true,
"other_config":["map",[["rstp-forward-delay","12"],["rstp-max-age","18"],["rstp-priority","8192"],
["rstp-transmit-hold-count","4"]]],"rstp_status":["map",[]]},"old":{"rstp_enable":false}}}}]})";

// ... and what it makes of that ...
inline constexpr const char *kStatusBack = R"({"id":null,"method":"update","params":["stp",
{"Port":{"c600810f-b098-4441-bcb4-80e4315f8354":{"new":{"name":"ba","trunks":["set",[]],
"other_config":["map",[]],"interfaces":["uuid","791756af-e8fb-4182-8e9b-20d89f2936bd"],
"vlan_mode":["set",[]],"rstp_statistics":["map",[["rstp_error_count",0],["rstp_rx_count",4],
["rstp_tx_count",1],["rstp_uptime",8]]],"rstp_status":["map",[["rstp_designated_bridge_id",
"2.000.ea4c78b58a48"],["rstp_designated_path_cost","0"],["rstp_designated_port_id","8001"],
["rstp_port_id","8001"],["rstp_port_role","Designated"],["rstp_port_state","Discarding"]]],"tag":7},
"old":{"rstp_status":["map",[]]}},"c40b65e1-8840-4cd8-bcbf-4f4355c2df1c":{"new":{"name":"ba2",
"trunks":["set",[1,5,9]],"other_config":["map",[["rstp-path-cost","777"],["rstp-port-admin-edge",
"false"],["rstp-port-auto-edge","true"],["rstp-port-priority","64"]]],"interfaces":["uuid",
"d76a1978-5232-46a6-b9a1-f3a0d63c1f6b"],"vlan_mode":"native-untagged","rstp_statistics":["map",
[["rstp_error_count",0],["rstp_rx_count",5],["rstp_tx_count",0],["rstp_uptime",8]]],"rstp_status":["map",
[["rstp_designated_bridge_id","2.000.ea4c78b58a48"],["rstp_designated_path_cost","0"],
["rstp_designated_port_id","4002"],["rstp_port_id","4002"],["rstp_port_role","Designated"],
["rstp_port_state","Discarding"]]],"tag":30},"old":{"rstp_status":["map",[]]}}},
"Bridge":{"b5784ce9-947d-488a-b46a-7e3d10a23b40":{"new":{"ports":["set",[["uuid",
"100fbd4a-7a99-4f28-b1d5-a7fbc7dc4c6a"],["uuid","c40b65e1-8840-4cd8-bcbf-4f4355c2df1c"],["uuid",
"c600810f-b098-4441-bcb4-80e4315f8354"]]],"name":"br0","stp_enable":false,"rstp_enable":true,
"other_config":["map",[["rstp-forward-delay","12"],["rstp-max-age","18"],["rstp-priority","8192"],
["rstp-transmit-hold-count","4"]]],"rstp_status":["map",[["rstp_bridge_id","2.000.ea4c78b58a48"],
["rstp_bridge_port_id","0000"],["rstp_designated_id","2.000.ea4c78b58a48"],["rstp_designated_port_id",
"0000"],["rstp_root_id","2.000.ea4c78b58a48"],["rstp_root_path_cost","0"]]]},"old":{"rstp_status":["map",
[]]}}}}]})";

// ... until the tree is what it was.
inline constexpr const char *kStatusConverged = R"({"id":null,"method":"update","params":["stp",
{"Port":{"c600810f-b098-4441-bcb4-80e4315f8354":{"new":{"name":"ba","trunks":["set",[]],
"other_config":["map",[]],"interfaces":["uuid","791756af-e8fb-4182-8e9b-20d89f2936bd"],
"vlan_mode":["set",[]],"rstp_statistics":["map",[["rstp_error_count",0],["rstp_rx_count",4],
["rstp_tx_count",1],["rstp_uptime",8]]],"rstp_status":["map",[["rstp_designated_bridge_id",
"1.000.fa423b03944b"],["rstp_designated_path_cost","0"],["rstp_designated_port_id","8001"],
["rstp_port_id","8001"],["rstp_port_role","Alternate"],["rstp_port_state","Discarding"]]],"tag":7},
"old":{"rstp_status":["map",[["rstp_designated_bridge_id","2.000.ea4c78b58a48"],
["rstp_designated_path_cost","0"],["rstp_designated_port_id","8001"],["rstp_port_id","8001"],
["rstp_port_role","Designated"],["rstp_port_state","Discarding"]]]}},
"c40b65e1-8840-4cd8-bcbf-4f4355c2df1c":{"new":{"name":"ba2","trunks":["set",[1,5,9]],
"other_config":["map",[["rstp-path-cost","777"],["rstp-port-admin-edge","false"],["rstp-port-auto-edge",
"true"],["rstp-port-priority","64"]]],"interfaces":["uuid","d76a1978-5232-46a6-b9a1-f3a0d63c1f6b"],
"vlan_mode":"native-untagged","rstp_statistics":["map",[["rstp_error_count",0],["rstp_rx_count",5],
["rstp_tx_count",0],["rstp_uptime",8]]],"rstp_status":["map",[["rstp_designated_bridge_id",
"1.000.fa423b03944b"],["rstp_designated_path_cost","0"],["rstp_designated_port_id","8002"],
["rstp_port_id","4002"],["rstp_port_role","Root"],["rstp_port_state","Forwarding"]]],"tag":30},
"old":{"rstp_status":["map",[["rstp_designated_bridge_id","2.000.ea4c78b58a48"],
["rstp_designated_path_cost","0"],["rstp_designated_port_id","4002"],["rstp_port_id","4002"],
["rstp_port_role","Designated"],["rstp_port_state","Discarding"]]]}}},
"Bridge":{"b5784ce9-947d-488a-b46a-7e3d10a23b40":{"new":{"ports":["set",[["uuid",
"100fbd4a-7a99-4f28-b1d5-a7fbc7dc4c6a"],["uuid","c40b65e1-8840-4cd8-bcbf-4f4355c2df1c"],["uuid",
"c600810f-b098-4441-bcb4-80e4315f8354"]]],"name":"br0","stp_enable":false,"rstp_enable":true,
"other_config":["map",[["rstp-forward-delay","12"],["rstp-max-age","18"],["rstp-priority","8192"],
["rstp-transmit-hold-count","4"]]],"rstp_status":["map",[["rstp_bridge_id","2.000.ea4c78b58a48"],
["rstp_bridge_port_id","4002"],["rstp_designated_id","1.000.fa423b03944b"],["rstp_designated_port_id",
"8002"],["rstp_root_id","1.000.fa423b03944b"],["rstp_root_path_cost","777"]]]},
"old":{"rstp_status":["map",[["rstp_bridge_id","2.000.ea4c78b58a48"],["rstp_bridge_port_id","0000"],
["rstp_designated_id","2.000.ea4c78b58a48"],["rstp_designated_port_id","0000"],["rstp_root_id",
"2.000.ea4c78b58a48"],["rstp_root_path_cost","0"]]]}}}}]})";

// They begin anew.
inline constexpr const char *kStatisticsAgain = R"({"id":null,"method":"update","params":["stp",
{"Port":{"c600810f-b098-4441-bcb4-80e4315f8354":{"new":{"name":"ba","trunks":["set",[]],
"other_config":["map",[]],"interfaces":["uuid","791756af-e8fb-4182-8e9b-20d89f2936bd"],
"vlan_mode":["set",[]],"rstp_statistics":["map",[["rstp_error_count",0],["rstp_rx_count",2],
["rstp_tx_count",0],["rstp_uptime",3]]],"rstp_status":["map",[["rstp_designated_bridge_id",
"1.000.fa423b03944b"],["rstp_designated_path_cost","0"],["rstp_designated_port_id","8001"],
["rstp_port_id","8001"],["rstp_port_role","Alternate"],["rstp_port_state","Discarding"]]],"tag":7},
"old":{"rstp_statistics":["map",[["rstp_error_count",0],["rstp_rx_count",4],["rstp_tx_count",1],
["rstp_uptime",8]]]}},"c40b65e1-8840-4cd8-bcbf-4f4355c2df1c":{"new":{"name":"ba2","trunks":["set",[1,5,
9]],"other_config":["map",[["rstp-path-cost","777"],["rstp-port-admin-edge","false"],
["rstp-port-auto-edge","true"],["rstp-port-priority","64"]]],"interfaces":["uuid",
"d76a1978-5232-46a6-b9a1-f3a0d63c1f6b"],"vlan_mode":"native-untagged","rstp_statistics":["map",
[["rstp_error_count",0],["rstp_rx_count",2],["rstp_tx_count",2],["rstp_uptime",3]]],"rstp_status":["map",
[["rstp_designated_bridge_id","1.000.fa423b03944b"],["rstp_designated_path_cost","0"],
["rstp_designated_port_id","8002"],["rstp_port_id","4002"],["rstp_port_role","Root"],["rstp_port_state",
"Forwarding"]]],"tag":30},"old":{"rstp_statistics":["map",[["rstp_error_count",0],["rstp_rx_count",5],
["rstp_tx_count",0],["rstp_uptime",8]]]}}}}]})";

inline constexpr auto kRecordedUpdates = std::to_array<const char *>(
    {kLinkDown, kPortDisabled, kLinkUp, kPortDesignated, kPortAlternate, kStatistics, kBondDeleted, kRstpOff,
     kStatusCleared, kRstpOn, kStatusBack, kStatusConverged, kStatisticsAgain});
