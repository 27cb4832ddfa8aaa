// The module's one record of scalar values. Tables fetch the spanning-tree type into it, too.
#pragma once

#include "stpsnmp/rows.h"

namespace stpsnmp {

extern ScalarValueRecord scalar_values;

}  // namespace stpsnmp
