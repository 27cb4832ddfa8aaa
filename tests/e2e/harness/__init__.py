"""What the end-to-end tests stand on: private processes, the stock SNMP tools, and a raw SNMP client."""
