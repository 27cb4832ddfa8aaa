// Marks what libstpplatform.map exports; all else is hidden.
#pragma once

#define STPPLATFORM_EXPORT __attribute__((visibility("default")))
