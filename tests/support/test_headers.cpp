// Only what is compiled before this is of use: the header, for all unit tests.
#include "test_headers.h"
