# The vendor's private enterprise number: the one arc of the root OID that a vendor must set.
# 32473 is reserved for documentation (RFC 5612).
set(STPSNMP_ENTERPRISE 32473 CACHE STRING "Private enterprise number of the module's root OID")
if(NOT STPSNMP_ENTERPRISE MATCHES "^[0-9]+$" OR STPSNMP_ENTERPRISE GREATER 4294967295)
  message(FATAL_ERROR "STPSNMP_ENTERPRISE must be a number from 0 to 4294967295, not '${STPSNMP_ENTERPRISE}'")
endif()

# Scripts and tests read the number from here, so that it stands in one place only. They may do so while the folder is
# configured again, which must not write it anew.
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/enterprise CONTENT "${STPSNMP_ENTERPRISE}\n" @ONLY)
