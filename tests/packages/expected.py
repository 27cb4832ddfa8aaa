"""What the packages are called, and what they are built for."""

NAMES = ['libstpbridge', 'libstpplatform', 'libstpsnmp', 'libstpsnmp-dev', 'libstpsnmp-mibs', 'libstpsnmp-tools',
         'stp-switchd']

# Not the default, so that a number that is written down somewhere does not match by chance.
ENTERPRISE = 2147483647
