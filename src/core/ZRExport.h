// What the shared library shows: everything else stays hidden.
#pragma once

#define ZR_EXPORT __attribute__((visibility("default")))
